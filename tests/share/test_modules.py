# SPDX-License-Identifier: GPL-2.0-or-later
"""Tests of module streams in transactions."""

import os

from scenario import ScenarioTest, in_own_process


class ModuleScenario(ScenarioTest):
    def enter(self):
        super(ModuleScenario, self).enter()
        self.configure("module_platform_id=platform:larkspur9")
        self.sandbox.use("extra-modules")

    def started(self):
        self.added = []
        self.load(addToListing=self.added.append)
        self.yumio.lock()
        self.collect()
        self.recording.clear()

    def streams(self):
        """The states and streams of modules, read from the files of the managed system."""
        directory = os.path.join(self.sandbox.root, "etc/dnf/modules.d")
        found = {}
        for name in os.listdir(directory) if os.path.isdir(directory) else ():
            with open(os.path.join(directory, name)) as stream:
                values = dict(line.strip().split("=") for line in stream if "=" in line)
            found[name[:-len(".module")]] = values["state"], values["stream"]
        return found


class ModulesTest(ModuleScenario):
    @in_own_process
    def test_below_the_packages_the_listing_has_the_stream_that_the_transaction_enables(self):
        self.started()
        at = []
        self.module("program").addToListing = lambda text: (
            at.append(self.recording.names()[-1]), self.added.append(text))
        self.apply(installs=["grove-cli"])
        self.assertEqual(at, ["listTransaction"])
        self.assertEqual("".join(self.added), "Enabling module streams:\n\tgrove 1\n")
        self.assertEqual(self.streams()["grove"], ("enabled", "1"))
        self.assertEqual((self.yumio.outcome["installed"], self.yumio.outcome["modules"]), (2, 1))

    @in_own_process
    def test_refusing_the_listing_does_not_change_the_streams(self):
        self.started()
        before = self.streams()
        self.apply(installs=["grove-cli"], answers=[0])
        self.assertEqual(self.streams(), before)
        # The next transaction does not enable the refused stream.
        del self.added[:]
        self.apply(installs=["astrolabe"])
        self.assertEqual(self.added, [])
        self.assertNotIn("grove", {name for name, state in self.streams().items() if state[0]})

    @in_own_process
    def test_an_impossible_transaction_does_not_change_the_streams(self):
        self.started()
        before = self.streams()
        self.assert_refused("palette.conf", installs=["grove-cli", "inkwell-classic", "inkwell-modern"])
        self.assertEqual(self.streams(), before)

    def enable_obsolete_stream(self):
        """Enables an obsolete stream, and configures dnf to switch from this stream to its successor."""
        self.write("/etc/dnf/modules.d/grove.module", "[grove]\nname=grove\nstream=0\nprofiles=\nstate=enabled\n")
        self.configure("module_obsoletes=True")

    @in_own_process
    def test_a_stream_switch_is_refused_with_the_text_of_dnf(self):
        self.enable_obsolete_stream()
        self.started()
        before = self.streams()
        self.assert_refused(
            "^The operation would result in switching of module 'grove' stream '0' to stream '1'\n"
            "It is not possible to switch enabled streams of a module unless explicitly enabled via configuration "
            "option module_stream_switch.\nIt is recommended to rather remove all installed content from the module, "
            "and reset the module using 'dnf module reset <module_name>' command. After you reset the module, you can "
            "install the other stream.\n"
            r"These marked packages belong to streams that are not enabled: grove-cli-[^ ,]*$",
            installs=["grove-cli", "astrolabe"])
        self.assertNotIn("userconfirm", self.recording.names())
        self.assertEqual(self.streams(), before)

    @in_own_process
    def test_the_listing_names_a_stream_switch_that_the_configuration_allows(self):
        self.enable_obsolete_stream()
        self.configure("module_stream_switch=True")
        self.started()
        self.apply(installs=["grove-cli"])
        self.assertEqual("".join(self.added), "Switching module streams:\n\tgrove 0 -> 1\n")
        self.assertEqual(self.streams()["grove"], ("enabled", "1"))


class StreamsTest(ModuleScenario):
    def streams_of(self, name):
        return {package.modulestreams for package in self.available if package.name == name}

    @in_own_process
    def test_a_package_has_the_names_of_the_streams_that_contain_it(self):
        self.started()
        self.assertEqual(self.streams_of("grove-cli"), {"grove:1"})
        self.assertEqual(self.streams_of("astrolabe"), {""})
        self.apply(installs=["grove-cli"])
        self.collect()
        installed = [package for package in self.installed if package.name == "grove-cli"]
        self.assertEqual([package.modulestreams for package in installed], ["grove:1"])

    @in_own_process
    def test_reading_the_streams_of_a_package_after_a_collection_makes_no_new_index(self):
        self.started()

        def refuse(base):
            raise AssertionError("The graphical thread must not make the index.")

        self.module("streams").StreamIndex._load = staticmethod(refuse)
        self.assertEqual(self.streams_of("grove-cli"), {"grove:1"})

    @in_own_process
    def test_stream_names_are_updated_by_each_collection(self):
        self.started()
        self.assertEqual(self.streams_of("grove-cli"), {"grove:1"})
        for repo in self.yumio.base.repos.iter_enabled():
            if "modules" in repo.id:
                repo.disable()
        self.collect()
        self.assertEqual({package.modulestreams for package in self.available + self.installed}, {""})


class EndingPlugInTest(ModuleScenario):
    def enter(self):
        super(EndingPlugInTest, self).enter()
        plugins = os.path.join(self.directory, "plugins")
        os.makedirs(plugins)
        with open(os.path.join(plugins, "crooked.py"), "w") as stream:
            stream.write("import dnf, sys\nclass Crooked(dnf.Plugin):\n    name = 'crooked'\n"
                         "    def pre_transaction(self):\n        sys.exit('enough')\n")
        self.configure("plugins=1", "pluginpath=" + plugins, "pluginconfpath=" + plugins)

    @in_own_process
    def test_the_message_names_the_saved_streams_if_a_plug_in_ends_the_operation(self):
        self.started()
        self.assert_refused("^The plug-in crooked has ended the operation: enough\nNo packages were changed, "
                            "but dnf had already saved these changes:\nEnabling module streams: grove 1$",
                            installs=["grove-cli"])
        self.assertEqual(self.streams()["grove"], ("enabled", "1"))
        # Because of systemChanged, the program collects the packages again.
        self.assertTrue(self.yumio.systemChanged)
        self.assertEqual([self.yumio.outcome[name] for name in ("installed", "modules", "failed")], [0, 1, 2])

    @in_own_process
    def test_no_change_is_reported_if_a_plug_in_ends_an_operation_without_streams(self):
        self.started()
        self.assert_refused("^The plug-in crooked has ended the operation: enough$", installs=["astrolabe"])
        self.assertFalse(self.yumio.systemChanged)


class LanguageTest(ModuleScenario):
    def enter(self):
        # dnf looks for its translations only when it is imported.
        os.environ["LANGUAGE"] = "fr"
        super(LanguageTest, self).enter()

    @in_own_process
    def test_the_heading_of_the_streams_is_the_translation_by_dnf(self):
        self.started()
        self.apply(installs=["grove-cli"], answers=[0])
        self.assertEqual("".join(self.added), "Activation des flux de modules:\n\tgrove 1\n")
