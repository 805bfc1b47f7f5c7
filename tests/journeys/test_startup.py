#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""The user starts the program with different options, environments and styles."""
import os
import resource
import shutil
import stat
import subprocess
import tempfile
import unittest

import journey
from journey import JourneyTest, driver, wait_for
from vyresandbox import needs_groups

USAGE = '''usage: {} [options...]

VYRE, Vyrecraft, is a graphical user interface which allows a user
to make modifications to the installed rpm packages on a system.

options:

   -h, -H, --help           display this help information
   -m m,   --mode=m         start with the package table mode, m:
                               filter, search
   -e r,   --regexp=r       start with the package table regexp, r
   -s s,   --state=s        start with the package table state, s:
                               updatable, installable, removable, all
   -d,     --duplicates     start with the package table omitting duplicates
   -g,     --groups         start with the package table showing groups
   -r,     --repo-editor    start by bringing up the repository configuration
                            editor
   -l,     --log            start with the log window displayed
           --disablerepo=r  disable the specified repository, r
           --enablerepo=r   enable the specified repository, r

'''


def no_core():
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


class UsageTest(unittest.TestCase):
    """In these tests, the program ends before it shows a window. Its managed root does not exist, and the program must
    not create this root.
    """

    def setUp(self):
        self.scratch = tempfile.mkdtemp(prefix='startup.')
        self.addCleanup(shutil.rmtree, self.scratch)
        self.root = os.path.join(self.scratch, 'root')

    def run_program(self, *arguments, binary=None, executable=None, environment=None, unset=(), stdout=subprocess.PIPE):
        variables = dict(os.environ, VYRESHARE=driver.SHARE, VYREROOT=self.root, HOME=self.scratch)
        variables.update(environment or {})
        for name in unset:
            variables.pop(name, None)
        done = subprocess.run([binary or os.environ['VYRE_BINARY']] + list(arguments), executable=executable,
                              env=variables, stdin=subprocess.DEVNULL, stdout=stdout, stderr=subprocess.PIPE,
                              timeout=60, preexec_fn=no_core)
        self.assertFalse(os.path.exists(self.root))
        return done

    def check_usage(self, *arguments, error='', **options):
        """Check that the program prints the error, if one is given, and the usage, and ends with status 1."""
        with self.subTest(arguments=arguments):
            done = self.run_program(*arguments, **options)
            name = os.path.basename(options.get('binary') or os.environ['VYRE_BINARY'])
            errors = os.fsdecode(done.stderr)
            self.assertEqual(errors, '{}: {}\n'.format(name, error) if error else '')
            self.assertEqual(done.stdout.decode(), USAGE.format(name))
            self.assertEqual(done.returncode, 1)

    def test_the_help_option_prints_the_usage(self):
        for arguments in (['-h'], ['-H'], ['--help'], ['--hel'], ['-gh'], ['-g', '-H'],
                          ['-s', 'all', '--help', 'left over']):
            self.check_usage(*arguments)

    def test_only_the_first_help_option_or_wrong_argument_has_an_effect(self):
        self.check_usage('-h', '-s', 'x')
        self.check_usage('-s', 'x', '-h', error='unrecogized argument to -s/--state option: x')

    def test_an_unknown_value_of_the_mode_option_is_refused(self):
        text = 'unrecogized argument to -m/--mode option: '
        for argument in ('x', 'Filter', 'filters', 'searching', ' filter', 'fs'):
            self.check_usage('-m', argument, error=text + argument)
            self.check_usage('--mode=' + argument, error=text + argument)
        self.check_usage('-mx', error=text + 'x')
        self.check_usage('--mode', 'x', error=text + 'x')
        self.check_usage('-m', '-g', error=text + '-g')

    def test_an_unknown_value_of_the_state_option_is_refused(self):
        text = 'unrecogized argument to -s/--state option: '
        for argument in ('x', 'ALL', 'alls', 'updatables', 'ua', '0'):
            self.check_usage('-s', argument, error=text + argument)
            self.check_usage('--state=' + argument, error=text + argument)
        self.check_usage('-sx', error=text + 'x')
        self.check_usage('--state', '--log', error=text + '--log')

    def test_an_invalid_value_is_refused_even_if_the_option_is_repeated_with_a_valid_value(self):
        self.check_usage('-s', 'x', '-s', 'all', error='unrecogized argument to -s/--state option: x')
        self.check_usage('-s', 'all', '-s', 'x', error='unrecogized argument to -s/--state option: x')

    def test_option_d_is_documented_but_refused(self):
        self.check_usage('-d', error='unrecognized option letter: d')
        self.check_usage('-gd', error='unrecognized option letter: d')

    def test_an_unknown_short_option_is_refused(self):
        for letter in 'xdSM?:+W':
            self.check_usage('-' + letter, error='unrecognized option letter: ' + letter)
        self.check_usage('-glx', error='unrecognized option letter: x')

    def test_the_error_about_a_missing_argument_names_the_letter_of_the_option(self):
        for letter, name in (('m', 'mode'), ('e', 'regexp'), ('s', 'state')):
            self.check_usage('-' + letter, error='unrecognized option letter: ' + letter)
            self.check_usage('-g', '-l' + letter, error='unrecognized option letter: ' + letter)
            self.check_usage('--' + name, error='unrecognized option letter: ' + letter)

    def test_the_error_about_a_missing_argument_names_an_option_that_has_no_letter(self):
        for option in ('--disablerepo', '--enablerepo'):
            self.check_usage(option, error='unrecogized option: ' + option)

    def test_an_argument_is_refused_for_an_option_that_takes_no_argument(self):
        for letter, name in (('h', 'help'), ('g', 'groups'), ('r', 'repo-editor'), ('l', 'log')):
            self.check_usage('--' + name + '=x', error='unrecognized option letter: ' + letter)
        self.check_usage('--duplicates=x', error='unrecogized option: --duplicates=x')

    def test_an_unknown_long_option_is_refused(self):
        for option in ('--unknown', '--unknown=x', '--Help', '--statex', '--d-', '--version'):
            self.check_usage(option, error='unrecogized option: ' + option)
        self.check_usage('-g', '--unknown', '-h', error='unrecogized option: --unknown')

    def test_an_ambiguous_abbreviation_is_refused(self):
        for option in ('--re', '--d', '--re=x'):
            self.check_usage(option, error='unrecogized option: ' + option)

    def test_a_superfluous_argument_is_refused(self):
        self.check_usage('foo', error='unrecognized argument: foo')
        self.check_usage('foo', 'bar', error='unrecognized argument: foo')
        self.check_usage('-g', 'foo', error='unrecognized argument: foo')
        self.check_usage('-', error='unrecognized argument: -')
        self.check_usage('', error='unrecognized argument: ')
        self.check_usage('--', 'foo', error='unrecognized argument: foo')
        self.check_usage('--', '-h', error='unrecognized argument: -h')

    def test_options_after_a_superfluous_argument_are_ignored(self):
        self.check_usage('foo', '-h', error='unrecognized argument: foo')
        self.check_usage('foo', '-s', 'x', error='unrecognized argument: foo')

    def test_the_error_message_shows_the_refused_argument_unchanged(self):
        self.check_usage(b'fo\xff\xc3\xa4o', error='unrecognized argument: ' + os.fsdecode(b'fo\xff\xc3\xa4o'))
        self.check_usage('-s', '%s%n%d', error='unrecogized argument to -s/--state option: %s%n%d')
        self.check_usage('x' * 5000, error='unrecognized argument: ' + 'x' * 5000)

    def test_error_messages_begin_with_the_name_of_the_command_that_started_the_program(self):
        link = os.path.join(self.scratch, 'another name')
        os.symlink(os.environ['VYRE_BINARY'], link)
        self.check_usage('--help', binary=link)
        self.check_usage('foo', binary=link, error='unrecognized argument: foo')
        # A shell passes the name of the program without its directory.
        self.check_usage('foo', binary='bare', executable=os.environ['VYRE_BINARY'],
                         error='unrecognized argument: foo')

    def test_qt_removes_its_options_before_vyre_reads_the_other_options(self):
        self.check_usage('-style', 'windows', 'foo', error='unrecognized argument: foo')
        self.check_usage('-style=windows', '-s', 'x', error='unrecogized argument to -s/--state option: x')

    def test_an_error_is_reported_if_the_usage_cannot_be_written(self):
        with open('/dev/full', 'wb') as full:
            done = self.run_program('--help', stdout=full)
        self.assertEqual((done.returncode, done.stderr), (1, b''))

    def test_a_missing_display_is_reported(self):
        for environment in ({}, {'DISPLAY': ':54321'}):
            with self.subTest(environment=environment):
                done = self.run_program(unset=() if environment else ('DISPLAY', 'WAYLAND_DISPLAY'),
                                        environment=environment)
                self.assertEqual(done.returncode, 1)
                self.assertEqual(done.stderr.decode().splitlines(),
                                 ['vyre: the X display :54321 cannot be opened: no server answers there, or it does '
                                  'not let this user in' if environment
                                  else 'vyre: there is no X display: DISPLAY is not set'])
                self.assertEqual(done.stdout, b'')

    def test_the_runtime_directory_is_not_removed_if_the_program_only_prints_the_usage(self):
        self.check_usage('--help', unset=['XDG_RUNTIME_DIR'], environment={'TMPDIR': self.scratch})
        self.assertTrue(os.path.isdir(os.path.join(self.scratch, 'xdg_runtime.{}'.format(os.geteuid()))))


class OptionsTest(JourneyTest):
    """Each option has its effect on the window."""

    DEFAULTS = {'mode': 'Filter', 'expression': '.*', 'state': 'View Updatable', 'duplicates': True, 'groups': False}

    def settings(self, window):
        return {'mode': window.combo(0).name, 'expression': driver.text_of(window.edit()),
                'state': window.combo(1).name, 'duplicates': driver.checked(window.check_box('Include Duplicates')),
                'groups': driver.checked(window.check_box('Include Groups'))}

    def check_settings(self, *arguments, names=None, count=None, **changed):
        """Check that these settings have these values, that all other settings have their defaults, and that the table
        lists these names.
        """
        with self.subTest(arguments=arguments), self.program(*arguments) as program:
            window = program.ready()
            self.assertEqual(self.settings(window), dict(self.DEFAULTS, **changed))
            self.assertEqual(window.button('Search' if changed.get('mode') == 'Search' else 'Filter').name.strip('&'),
                             changed.get('mode', 'Filter'))
            if names is not None:
                window.wait_names(names)
            self.assertEqual(program.titles(), [driver.main_title()])
            self.quit(window)

    def test_controls_have_their_defaults_if_no_options_are_given(self):
        self.check_settings()

    def test_the_state_option_selects_the_entry_of_the_state_box(self):
        for argument, state in (('updatable', 'View Updatable'), ('installable', 'View Installable'),
                                ('removable', 'View Removable'), ('all', 'View All'),
                                ('u', 'View Updatable'), ('i', 'View Installable'), ('r', 'View Removable'),
                                ('a', 'View All'), ('insta', 'View Installable'), ('', 'View Updatable')):
            self.check_settings('-s', argument, state=state)

    def test_all_forms_of_an_option_have_the_same_effect(self):
        for arguments in (['-sr'], ['--state=removable'], ['--state', 'rem'], ['--sta=rem'], ['-gs', 'r'],
                          ['--state=r', '--']):
            groups = arguments[0] == '-gs'
            self.check_settings(*arguments, state='View Removable', groups=groups)

    def test_the_state_option_decides_which_packages_are_listed(self):
        expression = '^abacus-cli |^pergola |^cinder-backup '
        self.check_settings('-e', expression, expression=expression, names=['abacus-cli'])
        self.check_settings('-si', '-e', expression, expression=expression, state='View Installable',
                            names=['pergola'])
        self.check_settings('-sr', '-e', expression, expression=expression, state='View Removable',
                            names=['abacus-cli', 'cinder-backup'])
        self.check_settings('-sa', '-e', expression, expression=expression, state='View All',
                            names=['abacus-cli', 'cinder-backup', 'pergola'])

    def test_the_mode_option_selects_the_filter_mode_or_the_search_mode(self):
        for arguments, mode in ((['-m', 'filter'], 'Filter'), (['-m', 'search'], 'Search'), (['-m', 'f'], 'Filter'),
                                (['-ms'], 'Search'), (['--mode='], 'Filter'), (['-m', ''], 'Filter'),
                                (['--mode=sea'], 'Search'), (['--mode', 'search'], 'Search')):
            self.check_settings(*arguments, mode=mode)

    def test_the_regexp_option_sets_the_expression(self):
        self.check_settings('--regexp=^pergola ', '--state=all', expression='^pergola ', state='View All',
                            names=['pergola'])
        self.check_settings('-e', '', '-sa', expression='', state='View All')
        self.check_settings('-e-x', expression='-x', names=[])
        self.check_settings('--regexp', '-sall', expression='-sall', names=[])
        self.check_settings('-e', 'häßlich %s', expression='häßlich %s', names=[])

    def test_in_search_mode_vyre_searches_for_the_expression_of_the_regexp_option(self):
        # This text is part of a path in one package; no column of the table contains it.
        expression = 'bin/pergola'
        for arguments in (['-m', 'search', '-e', expression], ['-e', expression, '-m', 'search']):
            self.check_settings(*arguments, '-s', 'all', mode='Search', expression=expression, state='View All',
                                names=['pergola'])
        self.check_settings('-e', expression, '-s', 'all', expression=expression, state='View All', names=[])

    def test_a_search_reads_the_update_or_without_its_repository_the_newest_installed_version(self):
        # 6.1.20 and 6.1.25 are installed, and 6.1.31 is the update. The name of the file contains the version.
        for repositories, found in (((), '6.1.31'), (('--disablerepo=*updates*',), '6.1.25')):
            for version in ('6.1.20', '6.1.25', '6.1.31'):
                with self.subTest(repositories=repositories, version=version), \
                        self.program('--state=removable', '--mode=search', '--regexp=/boot/vmlinuz-' + version,
                                     *repositories) as program:
                    window = program.ready()
                    window.wait_names(['kernel'] if version == found else [])
                    if version == found:
                        self.assertEqual(window.rows()[0][1], version + '-1 *')
                    self.quit(window)

    def test_the_duplicates_option_hides_duplicates(self):
        expression = '^libmoss '
        self.check_settings('-sa', '-e', expression, state='View All', expression=expression,
                            names=['libmoss', 'libmoss'])
        for option in ('--duplicates', '--dup'):
            self.check_settings(option, '-sa', '-e', expression, state='View All', expression=expression,
                                duplicates=False, names=['libmoss'])

    @needs_groups
    def test_the_groups_option_lists_groups(self):
        expression = '^Games( |$)'
        self.check_settings('-si', '-e', expression, state='View Installable', expression=expression, names=[])
        for option in ('-g', '--groups', '--gr'):
            self.check_settings(option, '-si', '-e', expression, state='View Installable', expression=expression,
                                groups=True, names=['Games'])

    def test_the_last_value_of_a_repeated_option_is_used(self):
        self.check_settings('-sa', '-mf', '-e', 'x', '--state=u', '--mode=s', '--regexp=^abacus', '-s', 'r',
                            state='View Removable', mode='Search', expression='^abacus')
        self.check_settings('-g', '-g', '--duplicates', '--duplicates', groups=True, duplicates=False)

    @needs_groups
    def test_all_options_for_the_filter_row_can_be_combined(self):
        expression = '^(libmoss|Games)( |$)'
        for arguments in (['-m', 'f', '-e', expression, '-s', 'a', '--duplicates', '-g'],
                          ['-gsall', '--duplicates', '-mfilter', '-e' + expression],
                          ['--groups', '--duplicates', '--state=all', '--regexp=' + expression, '--mode=filter']):
            self.check_settings(*arguments, expression=expression, state='View All', duplicates=False, groups=True,
                                names=['libmoss', 'Games'])

    def test_the_log_option_shows_the_log_window(self):
        for option in ('-l', '--log', '--lo'):
            with self.subTest(option=option), self.program(option) as program:
                window = program.main()
                log = program.window('VYRE Log')
                window.wait_ready()
                texts = log.find_all(driver.pyatspi.ROLE_TEXT)
                wait_for(lambda: any('Initialization' in driver.text_of(text) for text in texts), 'the log')
                log.click_button('Close')
                program.no_window('VYRE Log')
                self.quit(window)

    def test_the_log_window_is_shown_while_packages_are_collected(self):
        gate = journey.Gate()
        self.sandbox.server.faults['/sandbox-http/repodata/repomd.xml'] = gate
        with self.program('-l') as program:
            window = program.main()
            program.window('VYRE Log')
            gate.wait_reached()
            gate.open()
            window.wait_ready()
            log = program.window('VYRE Log')
            log.click_button('Close')
            program.no_window('VYRE Log')
            self.quit(window)

    def test_quitting_closes_the_log_window(self):
        with self.program('-l') as program:
            program.ready()
            program.window('VYRE Log')
            number = driver.xdotool('search', '--onlyvisible', '--pid', program.process.pid, '--name',
                                    '^' + driver.main_title() + '$').split()[0]
            driver.xdotool('windowfocus', '--sync', number)
            self.assertEqual(len(program.titles()), 2)
            driver.key('ctrl+q')
            self.check_ended(program)


class EnvironmentTest(JourneyTest):

    def check_starts(self, environment=None, unset=()):
        with self.program(environment=environment, unset=unset) as program:
            window = program.ready()
            self.check_usable(window)
            self.quit(window)

    def check_no_script(self, environment=None, unset=()):
        """Check that the program reports the missing share directory, and ends."""
        with self.program(environment=environment, unset=unset) as program:
            dialog = self.read_dialog(program, 'VYRE Yum Error', 'Internal error: unable to open YumIO.py')
            dialog.click_button('OK')
            self.check_ended(program)

    def test_the_variable_vyreshare_sets_the_share_directory(self):
        copy = os.path.join(self.scratch, 'share of another name')
        shutil.copytree(driver.SHARE, copy)
        self.check_starts({'VYRESHARE': copy})
        self.check_starts({'VYRESHARE': copy + '/'})

    def test_the_default_share_directory_is_used_if_vyreshare_is_not_set(self):
        self.assertFalse(os.path.exists('/usr/share/vyre'))
        self.check_no_script(unset=['VYRESHARE'])

    def test_an_empty_vyreshare_does_not_select_the_default_share_directory(self):
        self.check_no_script({'VYRESHARE': ''})

    def test_vyreroot_may_be_a_link_or_a_relative_path_and_may_end_with_a_slash(self):
        self.check_starts({'VYREROOT': self.sandbox.root + '/'})
        self.check_starts({'VYREROOT': os.path.relpath(self.sandbox.root)})
        link = os.path.join(self.scratch, 'link')
        os.symlink(self.sandbox.root, link)
        self.check_starts({'VYREROOT': link})

    def test_environment_variables_for_the_python_command_are_ignored(self):
        self.check_starts({'PYTHONHOME': '/nonexistent', 'PYTHONPATH': self.scratch, 'PYTHONSTARTUP': '/nonexistent'})

    def test_the_program_starts_even_if_the_locale_is_missing_or_not_utf_8(self):
        for locale in ('C', 'POSIX', 'xx_XX.nonsense'):
            with self.subTest(locale=locale), self.program(environment={'LC_ALL': locale}) as program:
                window = program.ready()
                self.check_usable(window)
                driver.key('ctrl+q')
                # Do not call quit(): it would report the warning that Qt may print about the locale.
                self.assertEqual(program.wait(), 0)
                self.assertEqual(self.locks(), [])

    # The runtime directory

    def name(self):
        return 'xdg_runtime.{}'.format(os.geteuid())

    def check_runtime_directory(self, path, environment=None, unset=()):
        """Check that the directory exists while the program runs, and that the program then removes it with its
        contents.
        """
        with self.program(environment=environment, unset=unset) as program:
            window = program.ready()
            self.assertEqual(stat.S_IMODE(os.stat(path).st_mode), 0o700)
            outside = os.path.join(self.scratch, 'outside')
            os.makedirs(outside, exist_ok=True)
            os.makedirs(os.path.join(path, 'deep', 'deeper'))
            for place in (os.path.join(path, 'deep', 'deeper', 'file'), os.path.join(outside, 'file')):
                with open(place, 'w'):
                    pass
            os.symlink(outside, os.path.join(path, 'deep', 'link'))
            self.quit(window)
            self.assertFalse(os.path.lexists(path))
            self.assertEqual(os.listdir(outside), ['file'])

    def test_a_missing_runtime_directory_is_created_in_tmpdir(self):
        temporary = os.path.join(self.scratch, 'temporary')
        os.mkdir(temporary)
        path = os.path.join(temporary, self.name())
        self.check_runtime_directory(path, {'TMPDIR': temporary}, ['XDG_RUNTIME_DIR'])
        self.check_runtime_directory(path, {'TMPDIR': temporary, 'XDG_RUNTIME_DIR': ''})
        self.assertEqual(os.listdir(temporary), [])

    def test_a_missing_runtime_directory_is_created_in_tmp_if_tmpdir_is_not_set(self):
        path = os.path.join('/tmp', self.name())
        self.check_runtime_directory(path, unset=['XDG_RUNTIME_DIR', 'TMPDIR'])
        self.check_runtime_directory(path, {'TMPDIR': ''}, ['XDG_RUNTIME_DIR'])

    def test_the_runtime_directory_of_a_killed_vyre_is_used_and_removed(self):
        temporary = os.path.join(self.scratch, 'temporary')
        path = os.path.join(temporary, self.name())
        os.makedirs(os.path.join(path, 'from before'))
        os.chmod(path, 0o700)
        self.check_runtime_directory(path, {'TMPDIR': temporary}, ['XDG_RUNTIME_DIR'])

    def test_the_runtime_directory_of_the_session_is_not_removed(self):
        temporary = os.path.join(self.scratch, 'temporary')
        session = os.path.join(self.scratch, 'session')
        for directory in (temporary, session):
            os.mkdir(directory, 0o700)
        with open(os.path.join(session, 'file'), 'w'):
            pass
        with self.program(environment={'TMPDIR': temporary, 'XDG_RUNTIME_DIR': session}) as program:
            self.quit(program.ready())
        self.assertIn('file', os.listdir(session))
        self.assertNotIn(self.name(), os.listdir(temporary))

    def test_the_program_runs_if_the_runtime_directory_cannot_be_created(self):
        # If Qt finds no runtime directory, it prints a warning, but works.
        with self.program(environment={'TMPDIR': os.path.join(self.scratch, 'nothing')},
                          unset=['XDG_RUNTIME_DIR']) as program:
            program.ready()
            driver.key('ctrl+q')
            self.assertEqual(program.wait(), 0)
        self.assertFalse(os.path.exists(os.path.join(self.scratch, 'nothing')))


class StyleTest(JourneyTest):

    def look(self, *arguments, environment=None, expected=None):
        """A picture of a check box, which each style draws differently. If a picture is expected, waits until the box
        looks like this.
        """
        with self.program(*arguments, environment=environment, unset=['XDG_CONFIG_HOME']) as program:
            window = program.ready()
            driver.xdotool('mousemove', 0, 0)
            box = driver.rectangle(window.check_box('Include Duplicates'))
            pictures = [driver.pixels(*box)]

            def settled():
                pictures.append(driver.pixels(*box))
                if expected is not None:
                    return pictures[-1] == expected
                # When ten successive pictures are equal, the box is completely drawn.
                return len(pictures) >= 10 and len(set(pictures[-10:])) == 1
            wait_for(settled, 'the final look of the check box')
            self.quit(window)
            return pictures[-1]

    def test_the_style_of_the_user_has_priority_over_the_style_of_the_session(self):
        override = {'QT_STYLE_OVERRIDE': 'windows'}
        fusion = self.look('-style=fusion')
        windows = self.look('-style=windows')
        self.assertNotEqual(fusion, windows)
        self.look(expected=fusion)
        self.look('-style', 'windows', expected=windows)
        # The program's own default replaces the style of the session, unless the user has chosen a style.
        self.look(environment=override, expected=fusion)
        settings = os.path.join(self.sandbox.environment()['HOME'], '.config', 'Trolltech.conf')
        os.makedirs(os.path.dirname(settings), exist_ok=True)
        with open(settings, 'w') as stream:
            stream.write('[Qt]\nfont=sans\n')
        self.look(environment=override, expected=fusion)
        with open(settings, 'w') as stream:
            stream.write('[Qt]\nstyle=windows\n')
        self.look(environment=override, expected=windows)


if __name__ == '__main__':
    journey.main()
