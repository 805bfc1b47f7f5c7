# SPDX-License-Identifier: GPL-2.0-or-later
"""Tests of dnf's plug-ins, which the script loads, calls and unloads as the dnf command does."""

import gc
import os
import shutil
import subprocess
import sys

from scenario import ScenarioTest, in_own_process

SYSTEM_PLUGINS = "/usr/lib/python3/dist-packages/dnf-plugins"

# A plug-in that records each call of its hooks, and the state of its base at that time.
PROBE = """
import os
import dnf
class Probe(dnf.Plugin):
    name = 'probe'
    def see(self, hook):
        with open(os.environ['PROBE_FILE'], 'a') as stream:
            stream.write(hook + ' repos=%d sack=%s transaction=%d\\n' % (
                len(self.base.repos), self.base.sack is not None, len(self.base.transaction or ())))
    def __init__(self, base, cli):
        super(Probe, self).__init__(base, cli)
        self.see('init')
"""
HOOKS = ("pre_config", "config", "sack", "resolved", "pre_transaction", "transaction")
PROBE += "".join("    def {0}(self):\n        self.see('{0}')\n".format(hook) for hook in HOOKS)


def raising(hook, statement, name="crooked"):
    """A plug-in that runs this statement in this hook."""
    return ("import os, sys, threading\nimport dnf\nclass Crooked(dnf.Plugin):\n    name = '%s'\n"
            "    def %s(self%s):\n        %s\n" % (name, hook, ", base, cli" if hook == "__init__" else "", statement))


class PlugInsTest(ScenarioTest):
    def enter(self):
        super(PlugInsTest, self).enter()
        self.plugins = os.path.join(self.directory, "plugins")
        self.settings = os.path.join(self.directory, "settings")
        self.seen = os.path.join(self.directory, "seen")
        os.environ["PROBE_FILE"] = self.seen
        os.makedirs(self.plugins)
        os.makedirs(self.settings)
        self.configure("plugins=1", "pluginpath=" + self.plugins, "pluginconfpath=" + self.settings)

    def write_plug_in(self, name, content, configuration=None):
        with open(os.path.join(self.plugins, name + ".py"), "w") as stream:
            stream.write(content)
        if configuration is not None:
            with open(os.path.join(self.settings, name + ".conf"), "w") as stream:
                stream.write(configuration)

    def recorded_calls(self):
        if not os.path.exists(self.seen):
            return []
        with open(self.seen) as stream:
            seen = stream.read().splitlines()
        os.unlink(self.seen)
        return seen

    def command(self, *arguments):
        root = self.sandbox.root
        subprocess.run(["/usr/bin/dnf", "--assumeyes", "--quiet", "--installroot", root, "-c", root + "/etc/yum.conf",
                        "--setopt=reposdir=%s/etc/yum.repos.d" % root] + list(arguments), check=True,
                       env=self.sandbox.environment(), stdout=subprocess.DEVNULL)

    def failure(self):
        """The message with which a collection fails."""
        self.load()
        self.yumio.lock()
        with self.assertRaises(self.dnf.exceptions.RepoError) as caught:
            self.collect()
        self.assert_no_faults()
        return str(caught.exception)


class HooksTest(PlugInsTest):
    @in_own_process
    def test_a_plug_in_gets_the_same_calls_from_the_script_as_from_dnf(self):
        self.write_plug_in("probe", PROBE)
        self.command("install", "astrolabe")
        expected = self.recorded_calls()
        self.assertEqual([line.split()[0] for line in expected], ["init"] + list(HOOKS))
        self.command("remove", "astrolabe")
        self.recorded_calls()
        self.started()
        self.apply(installs=["astrolabe"])
        self.assertEqual(self.recorded_calls(), expected)
        self.assertIn("astrolabe-5.6-1.x86_64", self.sandbox.installed())

    @in_own_process
    def test_plug_ins_are_loaded_again_after_a_reset(self):
        self.write_plug_in("probe", PROBE)
        self.started()
        first = self.recorded_calls()
        self.assertEqual([line.split()[0] for line in first], ["init", "pre_config", "config", "sack"])
        self.again()
        self.assertEqual(self.recorded_calls(), first)
        # After a change to the plug-in's file, the script loads the changed plug-in.
        self.write_plug_in("probe", PROBE.replace("hook +", "'new ' + hook +"))
        self.again()
        self.assertEqual(self.recorded_calls(), ["new " + line for line in first])
        self.write_plug_in("probe", PROBE, "[main]\nenabled=0\n")
        self.again()
        self.assertEqual(self.recorded_calls(), [])
        os.unlink(os.path.join(self.settings, "probe.conf"))
        self.configure("plugins=0")
        self.again()
        self.assertEqual(self.recorded_calls(), [])
        self.assertEqual([name for name in sys.modules if name.startswith("dnf.plugin.dynamic")], [])

    @in_own_process
    def test_a_second_collection_does_not_load_plug_ins_again(self):
        self.write_plug_in("probe", PROBE)
        self.started()
        first = self.recorded_calls()
        self.collect()
        self.assertEqual(self.recorded_calls(), first[-1:])

    @in_own_process
    def test_plug_ins_are_loaded_again_after_a_transaction_has_replaced_a_plug_in(self):
        self.write_plug_in("probe", PROBE)
        self.write_plug_in("other", raising("transaction", "os.rename(%r, %r)" % (
            os.path.join(self.plugins, "probe.py"), os.path.join(self.plugins, "moved.py"))))
        self.started()
        self.apply(installs=["astrolabe"])
        self.recorded_calls()
        self.collect()
        self.assertEqual([line.split()[0] for line in self.recorded_calls()], ["init", "pre_config", "config", "sack"])
        # A reset loads the plug-ins only once, after the end of the old dnf base. The end of VYRE loads no plug-ins.
        for action, expected in ((self.again, ["init", "pre_config", "config", "sack"]), (self.yumio.unlock, [])):
            self.write_plug_in("probe", PROBE)
            self.write_plug_in("other", raising("transaction", "os.rename(%r, %r)" % (
                os.path.join(self.plugins, "probe.py"), os.path.join(self.plugins, "moved.py"))))
            self.again()
            self.apply(**{"removes" if "astrolabe" in [each.name for each in self.installed] else "installs":
                          ["astrolabe"]})
            self.recorded_calls()
            action()
            self.assertEqual([line.split()[0] for line in self.recorded_calls()], expected)

    @in_own_process
    def test_plug_ins_disabled_by_their_settings_are_not_loaded(self):
        self.write_plug_in("probe", PROBE, "[main]\nenabled=0\n")
        self.started()
        self.assertEqual(self.recorded_calls(), [])

    @in_own_process
    def test_no_plug_in_is_loaded_if_the_plugins_option_is_0(self):
        self.write_plug_in("probe", PROBE)
        self.configure("plugins=0")
        self.started()
        self.assertEqual(self.recorded_calls(), [])

    @in_own_process
    def test_old_plug_ins_are_freed_after_each_reset(self):
        self.write_plug_in("probe", PROBE)
        self.write_plug_in("command", "import dnf, dnf.cli\n@dnf.plugin.register_command\n"
                           "class Command(dnf.cli.Command):\n    aliases = ('mine',)\n")
        self.started()

        def classes():
            gc.collect()
            return sorted(found.__name__ for found in self.dnf.plugin.Plugin.__subclasses__())

        def modules():
            return sorted(name for name in sys.modules if name.startswith("dnf.plugin."))

        first = classes(), modules()
        self.assertIn("Probe", first[0])
        self.assertIn("dnf.plugin.dynamic.probe", first[1])
        for _ in range(3):
            self.again()
            self.assertEqual((classes(), modules()), first)
        # Even while another object refers to the old plug-in, the script calls only the new one.
        held = self.dnf.plugin.Plugin.__subclasses__()
        self.recorded_calls()
        self.again()
        self.assertEqual([line.split()[0] for line in self.recorded_calls()], ["init", "pre_config", "config", "sack"])
        del held

    @in_own_process
    def test_a_managed_root_uses_the_plug_ins_of_the_running_system(self):
        """Like dnf --installroot, the script uses neither the code nor the settings of plug-ins in the managed root.
        """
        self.write_plug_in("probe", PROBE)
        for directory in (SYSTEM_PLUGINS, self.plugins):
            self.write(directory + "/evil.py", PROBE.replace("hook +", "'evil ' + hook +"))
        self.write(self.settings + "/probe.conf", "[main]\nenabled=0\n")
        self.command("makecache")
        expected = self.recorded_calls()
        self.assertEqual([line.split()[0] for line in expected], ["init", "pre_config", "config", "sack"])
        self.started()
        self.assertEqual([line.split()[0] for line in self.recorded_calls()], ["init", "pre_config", "config", "sack"])

    @in_own_process
    def test_packages_of_a_repository_that_a_plug_in_adds_are_collected(self):
        self.write_plug_in("adder", raising("pre_config", "self.base.repos.add_new_repo('added', self.base.conf, "
                                            "baseurl=['file://%s/'])" % self.sandbox.repository("sandbox-disabled")))
        self.started()
        self.assertIn("added", self.yumio.base.repos)
        self.assertIn("added", [package.repoid for package in self.available])


class FailuresTest(PlugInsTest):
    NEEDS_DNF = "The plug-in crooked needs the dnf command and does not work in VYRE (sack)."

    def reports(self):
        """The messages in the log that mention a plug-in."""
        return [text for text in self.recording.errors() if "plug-in" in text]

    @in_own_process
    def test_a_plug_in_that_cannot_be_imported_is_left_out(self):
        self.write_plug_in("crooked", "raise ValueError('wrong')\n")
        self.write_plug_in("probe", PROBE)
        self.load()
        self.collect()
        self.assertTrue(self.recorded_calls())
        self.assertEqual([text for text in self.recording.errors() if "crooked" in text],
                         ['Failed loading plugin "crooked": wrong'])

    @in_own_process
    def test_the_message_names_a_plug_in_that_exits_during_its_import(self):
        self.write_plug_in("crooked", "import sys\nsys.exit('enough')\n")
        self.assertEqual(self.failure(), "The plug-in crooked cannot be loaded: enough")

    @in_own_process
    def test_the_message_names_a_plug_in_that_cannot_be_created(self):
        self.write_plug_in("crooked", raising("__init__", "raise ValueError('wrong')"))
        self.assertEqual(self.failure(), "The plug-in crooked cannot be loaded: wrong")
        # After the plug-in is removed, the next collection succeeds.
        os.unlink(os.path.join(self.plugins, "crooked.py"))
        self.again()
        self.package(self.available, "astrolabe")

    @in_own_process
    def test_a_plug_in_with_damaged_settings_is_reported(self):
        self.write_plug_in("probe", PROBE, "enabled\n")
        self.assertRegex(self.failure(), "^The plug-ins cannot be loaded: .*probe.conf")

    @in_own_process
    def test_the_message_names_a_plug_in_that_exits_in_a_hook(self):
        for hook in ("pre_config", "config", "sack"):
            self.write_plug_in("crooked", raising(hook, "sys.exit(3)"))
            self.assertEqual(self.failure(), "The plug-in crooked has ended the operation: 3")
            self.yumio.unlock()
        self.write_plug_in("crooked", raising("sack", "raise dnf.exceptions.Error('no')"))
        self.assertEqual(self.failure(), "The plug-in crooked has ended the operation: no")

    @in_own_process
    def test_the_message_names_a_plug_in_that_interrupts_the_program(self):
        self.load()
        for raised, said in (("KeyboardInterrupt", "KeyboardInterrupt"), ("KeyboardInterrupt('stop')", "stop"),
                             ("BaseException('all')", "all")):
            for content, text in (
                    ("raise %s\n" % raised, "cannot be loaded"),
                    (raising("__init__", "raise " + raised), "cannot be loaded"),
                    (raising("pre_config", "raise " + raised), "has ended the operation"),
                    (raising("sack", "raise " + raised), "has ended the operation")):
                self.write_plug_in("crooked", content)
                self.yumio.reset()
                with self.assertRaises(self.dnf.exceptions.RepoError) as caught:
                    self.collect()
                self.assertEqual(str(caught.exception), "The plug-in crooked %s: %s" % (text, said))
        self.assert_no_faults()

    @in_own_process
    def test_a_plug_in_that_fails_in_a_hook_does_not_stop_the_operation(self):
        for hook in HOOKS:
            self.write_plug_in("crooked" + hook, raising(hook, "raise ValueError('wrong')", "crooked" + hook))
        self.load()
        self.collect()
        self.assertEqual(self.changes(self.apply, installs=["astrolabe"]), ({"astrolabe-5.6-1.x86_64"}, set()))
        for hook in HOOKS:
            reports = [text for text in self.recording.errors() if "crooked" + hook in text]
            self.assertEqual(len(reports), 1, reports)
            self.assertTrue(reports[0].startswith("The plug-in crooked%s has failed (%s):\nTraceback" % (hook, hook)))
            self.assertIn("ValueError: wrong", reports[0])
        self.assertEqual(self.yumio.remarks, [])

    @in_own_process
    def test_one_message_names_a_plug_in_that_needs_the_dnf_command(self):
        self.write_plug_in("crooked", raising("sack", "self.cli.demands.resolving = True"))
        self.write_plug_in("probe", PROBE)
        self.load()
        self.collect()
        self.assertEqual([each for each in self.recording.of("errorlog") if "plug-in" in each[1]],
                         [(2, self.NEEDS_DNF)])
        self.assertEqual([line.split()[0] for line in self.recorded_calls()], ["init", "pre_config", "config", "sack"])
        self.recording.clear()
        self.yumio.reset()
        self.collect()
        self.assertEqual(self.reports(), [])
        # Another plug-in, or another hook of the same plug-in, causes a new message.
        self.write_plug_in("crooked", raising("config", "cli = self.cli; cli.demands.resolving = True"))
        self.write_plug_in("other", raising("sack", "self.cli.demands.resolving = True", "other"))
        self.yumio.reset()
        self.collect()
        self.assertEqual(sorted(self.reports()), [
            self.NEEDS_DNF.replace("sack", "config"), self.NEEDS_DNF.replace("crooked", "other")])

    @in_own_process
    def test_a_plug_in_that_needs_the_dnf_command_causes_a_warning_and_no_error(self):
        warnings = []
        self.write_plug_in("crooked", raising("sack", "self.cli.demands.resolving = True"))
        self.load(logWarning=lambda level, text: warnings.append((level, text)))
        self.collect()
        self.assertEqual([each for each in warnings if "plug-in" in each[1]], [(2, self.NEEDS_DNF)])
        self.assertEqual(self.reports(), [])

    @in_own_process
    def test_an_exception_not_caused_by_the_missing_dnf_command_is_reported_as_a_fault_of_the_plug_in(self):
        self.load()
        for statement in ("self.cli.demands.resolving = self.base.missing", "self.base.cli.demands",
                          "cli = self.base; cli.demands", "self.other = None; self.other.demands",
                          "self.other = None; self.other.demands  # not of self.cli.demands",
                          "cli = 1; cli.demands", "len(self.cli)", "vars(self.cli)", "raise AttributeError('wrong')",
                          "dnf.plugin.Plugin.read_config(self.cli)"):
            self.write_plug_in("crooked", raising("sack", statement))
            self.recording.clear()
            self.yumio.reset()
            self.collect()
            text, = self.reports()
            self.assertTrue(text.startswith("The plug-in crooked has failed (sack):\nTraceback"), (statement, text))

    @in_own_process
    def test_no_plug_in_is_reported_if_the_program_ends_while_a_plug_in_runs(self):
        import functools
        import signal

        call = "sys.modules['vyre.output'].showActivity('x')"
        for content in ("import sys\n" + call + "\n", raising("__init__", call), raising("pre_config", call),
                        raising("sack", call)):
            self.write_plug_in("patient", content)
            self.load()
            # Like the program's real function, this function has no Python frame.
            self.module("program").changeActivity = functools.partial(signal.default_int_handler, signal.SIGINT)
            with self.assertRaises(KeyboardInterrupt):
                self.collect()

    @in_own_process
    def test_a_plug_in_that_exits_before_a_transaction_prevents_the_transaction(self):
        for hook in ("resolved", "pre_transaction"):
            for statement in ("sys.exit('enough')", "raise KeyboardInterrupt('enough')"):
                self.write_plug_in("crooked", raising(hook, statement))
                self.load()
                self.yumio.lock()
                self.collect()
                self.assert_refused("^The plug-in crooked has ended the operation: enough$", installs=["astrolabe"])
                self.assertFalse(self.yumio.systemChanged)
                self.yumio.unlock()

    @in_own_process
    def test_the_message_names_a_plug_in_that_exits_after_a_transaction(self):
        for statement in ("sys.exit('enough')", "raise KeyboardInterrupt('enough')"):
            self.write_plug_in("crooked", raising("transaction", statement))
            self.started()
            actions = {"removes" if "astrolabe" in [each.name for each in self.installed] else "installs":
                       ["astrolabe"]}
            self.assertNotEqual(self.changes(self.apply, **actions), (set(), set()))
            self.assertEqual(self.yumio.remarks, [
                "The packages were changed.\nThe plug-in crooked has ended the operation: enough"])
            self.assertTrue(self.yumio.systemChanged)
            self.yumio.unlock()

    @in_own_process
    def test_the_output_of_plug_ins_is_in_the_log(self):
        self.write_plug_in("crooked", raising("sack", "print('printed'); print('wrong', file=sys.stderr)"))
        self.started()
        self.collect()
        self.assertIn("printed", self.recording.printed())
        self.assertIn("wrong", "".join(text for text, in self.recording.of("stderrWrite")))

    @in_own_process
    def test_a_plug_in_that_reads_standard_input_fails(self):
        self.write_plug_in("crooked", raising("sack", "input('why? ')"))
        self.load()
        self.collect()
        self.assertEqual(len([text for text in self.recording.errors() if "EOFError" in text]), 1)

    @in_own_process
    def test_a_plug_in_whose_thread_fails_does_not_stop_the_operation(self):
        self.write_plug_in("crooked", raising("sack", "thread = threading.Thread(target=lambda: 1 / 0); "
                                              "thread.start(); thread.join()"))
        self.load()
        self.collect()
        self.package(self.available, "astrolabe")
        self.assertIn("ZeroDivisionError", "".join(text for text, in self.recording.of("stderrWrite")))


class RealPlugInsTest(ScenarioTest):
    """Tests of the plug-ins that the distribution has installed."""

    @in_own_process
    def test_all_installed_plug_ins_can_be_loaded(self):
        settings = os.path.join(self.directory, "settings")
        shutil.copytree("/etc/dnf/plugins", settings)
        # By default, the local plug-in copies every installed package to a directory outside the managed system. So
        # the test configures another directory.
        with open(os.path.join(settings, "local.conf"), "w") as stream:
            stream.write("[main]\nenabled=1\nrepodir=%s\n[createrepo]\nenabled=0\n" %
                         os.path.join(self.directory, "kept"))
        self.use_settings(settings)
        self.load()
        self.yumio.lock()
        self.collect()
        self.apply(installs=["astrolabe"])
        faults = [text for text in self.recording.errors() if "plug" in text.lower()]
        self.again()
        loaded = [name for name in sys.modules if name.startswith("dnf.plugin.dynamic.")]
        self.assertEqual(len(loaded), len([name for name in os.listdir(SYSTEM_PLUGINS) if name.endswith(".py")]))
        self.assertGreater(len(loaded), 10)
        # Debian's show-leaves plug-in uses a command of another plug-in.
        self.assertEqual(faults, [
            "The plug-in show-leaves needs the dnf command and does not work in VYRE (resolved)."]
            if "dnf.plugin.dynamic.show_leaves" in loaded else [])
        self.assertEqual(os.listdir(os.path.join(self.directory, "kept")), ["astrolabe-5.6-1.x86_64.rpm"])

    def use_settings(self, settings):
        # Even for a managed root, this plug-in writes a list of the available packages to a file of the running system.
        with open(os.path.join(settings, "generate_completion_cache.conf"), "w") as stream:
            stream.write("[main]\nenabled=0\n")
        self.configure("plugins=1", "pluginconfpath=" + settings)

    def lock_versions(self, *names):
        settings = os.path.join(self.directory, "settings")
        locks = os.path.join(self.directory, "locks")
        os.makedirs(settings, exist_ok=True)
        with open(os.path.join(settings, "versionlock.conf"), "w") as stream:
            stream.write("[main]\nenabled=1\nlocklist=%s\n" % locks)
        with open(locks, "w") as stream:
            stream.write("".join(line + "\n" for line in names))
        self.use_settings(settings)

    def upgradable(self):
        """The packages for which "dnf check-update" lists an update."""
        root = self.sandbox.root
        done = subprocess.run(["/usr/bin/dnf", "--quiet", "--installroot", root, "-c", root + "/etc/yum.conf",
                               "--setopt=reposdir=%s/etc/yum.repos.d" % root, "check-update"],
                              env=self.sandbox.environment(), stdout=subprocess.PIPE, universal_newlines=True)
        lines = done.stdout.partition("Obsoleting Packages")[0].splitlines()
        return set(line.split()[0] for line in lines if len(line.split()) == 3)

    @in_own_process
    def test_a_package_locked_by_the_versionlock_plug_in_has_no_update(self):
        self.started()
        self.package(self.updates, "abacus-cli")
        self.lock_versions("abacus-cli-0:3.2.1-1.*")
        self.yumio.reset()
        self.collect()
        self.assertEqual([package for package in self.updates if package.name == "abacus-cli"], [])
        self.assertEqual(set("%s.%s" % (package.name, package.arch) for package in self.updates), self.upgradable())
        self.assertIn("quillbase.x86_64", self.upgradable())

    @in_own_process
    def test_a_new_version_lock_takes_effect_in_the_next_collection(self):
        self.started()
        self.package(self.updates, "abacus-cli")
        self.lock_versions("!astrolabe-0:5.6-1.*")
        self.again()
        self.assertEqual([package for package in self.available if package.name == "astrolabe"], [])
