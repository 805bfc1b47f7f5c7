# SPDX-License-Identifier: GPL-2.0-or-later
"""Tests of the list of transactions, of their details, and of the questions before the script undoes or repeats
transactions.
"""

import contextlib
import os
import sqlite3
import sys

from scenario import ScenarioTest, german, in_own_process
from vyresandbox import needs_groups

SUCCEEDED, FAILED, INTERRUPTED = range(3)
MANY = 5000


class ReplayTest(ScenarioTest):
    @property
    def path(self):
        return self.sandbox.root + "/var/lib/dnf/history.sqlite"

    @contextlib.contextmanager
    def database(self):
        with contextlib.closing(sqlite3.connect(self.path)) as database, database:
            yield database

    def newest(self):
        return self.yumio.transactions()[0]

    def replay(self, kind, number, answers=(1,)):
        self.recording.answers = list(answers)
        result = self.yumio.replay(kind, number)
        self.assert_no_faults()
        return result


class TransactionListTest(ReplayTest):
    @needs_groups
    @in_own_process
    def test_each_listed_transaction_has_its_changes_and_result(self):
        self.started()
        self.apply(installs=["astrolabe", "libbough"], updates=["abacus-cli"], removes=["almanac"])
        self.again()
        with self.assertRaises(self.dnf.exceptions.Error):
            self.apply(installs=["brokenlatch"])
        self.again()
        self.apply(installs=["chatterbox"], group_installs=["games"])
        found = self.yumio.transactions()
        self.assertEqual([row[0] for row in found], list(range(len(found), 0, -1)))
        chatty, broken, first = found[:3]
        self.assertTrue(chatty[1] >= broken[1] >= first[1] > 1000000000)
        self.assertEqual(first[3], "vyre: install astrolabe libbough; upgrade abacus-cli; remove almanac")
        self.assertEqual(first[4], "Install: astrolabe, libbough, libtwig; Upgrade: abacus-cli; Removed: almanac")
        self.assertEqual(first[5], "abacus-cli almanac astrolabe libbough libtwig")
        self.assertEqual(first[6:], (SUCCEEDED, 0))
        self.assertEqual((broken[4], broken[5], broken[6]), ("Install (failed): brokenlatch", "brokenlatch", FAILED))
        # The group and four packages are more items than the summary has room for.
        self.assertEqual(chatty[4], "Install: 5")
        self.assertEqual(chatty[5], "@games chatterbox hedgerow orrery pebble-go")
        self.assertEqual(chatty[6], SUCCEEDED)
        self.assertGreater(chatty[7], 0)
        self.assertTrue(chatty[2])

    @in_own_process
    def test_the_changes_that_were_not_made_are_listed_separately(self):
        self.started()
        with self.assertRaises(self.dnf.exceptions.Error):
            self.apply(installs=["astrolabe", "brokenlatch", "loupe"], updates=["abacus-cli"],
                       removes=["almanac", "stickyburr"])
        number, *_, changes, names, result, _ = self.newest()
        self.assertEqual(changes, "Install: astrolabe, loupe; Install (failed): brokenlatch; Upgrade: abacus-cli; "
                                  "Removed: almanac; Removed (failed): stickyburr")
        self.assertEqual(names, "abacus-cli almanac astrolabe brokenlatch loupe stickyburr")
        self.assertEqual(result, FAILED)
        # rpm's database agrees.
        installed = {name.rsplit("-", 2)[0] for name in self.sandbox.installed()}
        self.assertLessEqual({"astrolabe", "loupe", "abacus-cli", "stickyburr"}, installed)
        self.assertFalse({"brokenlatch", "almanac"} & installed)
        lines = self.yumio.describeTransaction(number).split("\n")
        for line in ("    Install\tastrolabe-5.6-1.x86_64 @sandbox-http",
                     "    Install\tbrokenlatch-1.0-1.noarch @sandbox-http (failed)",
                     "    Removed\tstickyburr-1.0-1.noarch @System (failed)"):
            self.assertIn(line, lines)

    @in_own_process
    def test_the_changes_of_an_interrupted_transaction_have_no_recorded_result(self):
        self.started()
        self.apply(installs=["astrolabe", "loupe"])
        number = self.newest()[0]
        with self.database() as database:
            database.execute("update trans set dt_end = null, state = 0 where id = ?", (number,))
            database.execute("update trans_item set state = 0 where trans_id = ?", (number,))
        self.assertEqual(self.newest()[4], "Install (result not recorded): astrolabe, loupe")
        # Without the end of the transaction, only the result of one item is known.
        with self.database() as database:
            database.execute("update trans_item set state = 1 where trans_id = ? and id = "
                             "(select min(id) from trans_item where trans_id = ?)", (number, number))
        self.assertEqual(sorted(self.newest()[4].replace(" (result not recorded)", "").split("; ")),
                         ["Install: astrolabe", "Install: loupe"])
        # Items without a result are no reason for a remark if the end of the transaction is recorded.
        with self.database() as database:
            database.execute("update trans set dt_end = dt_begin, state = 1 where id = ?", (number,))
        self.assertEqual(self.newest()[4], "Install: astrolabe, loupe")
        with self.database() as database:
            database.execute("update trans set dt_end = null, state = 0 where id = ?", (number,))
            database.execute("update trans_item set state = 0 where trans_id = ?", (number,))
        self.assertIn("\n    Install\tloupe-45.0-1.x86_64 @sandbox-http (result not recorded)\n",
                      self.yumio.describeTransaction(number) + "\n")
        # The changes that "Redo" makes are the expected result, and need no remark.
        self.sandbox.rpm("--erase", "loupe")
        self.assertIn("completes it with these changes:\n    Install\tloupe-45.0-1.x86_64 @sandbox-http\n\n",
                      self.yumio.describeTransaction(number))

    @in_own_process
    def test_user_numbers_are_shown_as_names_if_the_users_are_known(self):
        self.load()
        name = self.module("transactions").userName
        self.assertEqual([name(number, {}) for number in (0, -1, 0xFFFFFFFF, 3999999, 2 ** 70)],
                         ["root", "System <unset>", "System <unset>", "3999999", str(2 ** 70)])

    @in_own_process
    def test_texts_from_the_history_are_shown_without_control_characters(self):
        self.started()
        self.apply(installs=["astrolabe"])
        with self.database() as database:
            database.execute("update trans set cmdline = ? where id = (select max(id) from trans)",
                             ("a\n\x1b[2Jb\u202e\tc",))
            database.execute("update trans set comment = cast(x'ff41' as text)")
        self.assertEqual(self.newest()[3], "a [2Jb c")
        self.assertIn("Comment: \ufffdA", self.yumio.describeTransaction(self.newest()[0]))

    @in_own_process
    def test_the_list_is_empty_and_no_history_is_created_if_the_history_is_missing(self):
        self.load()
        self.yumio.base.conf.persistdir = os.path.join(self.directory, "nothing")
        self.yumio.base.history.close()
        self.yumio.base.history._db_dir = self.yumio.base.conf.persistdir
        self.assertEqual(self.yumio.transactions(), [])
        self.assertEqual(self.yumio.describeTransaction(1), "")
        self.assertFalse(os.path.exists(self.yumio.base.conf.persistdir))

    @in_own_process
    def test_a_damaged_history_is_reported(self):
        self.load()
        for ending in ("-wal", "-shm"):
            if os.path.exists(self.path + ending):
                os.unlink(self.path + ending)
        with open(self.path, "wb") as stream:
            stream.write(b"no database" * 1000)
        for call in (self.yumio.transactions, lambda: self.yumio.describeTransaction(1)):
            with self.assertRaisesRegex(self.dnf.exceptions.Error, "The transaction history is damaged: .*sqlite"):
                call()

    @in_own_process
    def test_a_user_who_cannot_write_the_history_can_read_it(self):
        self.started()
        self.apply(installs=["astrolabe"])
        self.yumio.base.history.close()
        with contextlib.closing(sqlite3.connect(self.path)) as database:
            database.execute("pragma wal_checkpoint(truncate)")
        directory = os.path.dirname(self.path)
        for ending in ("-wal", "-shm"):
            if os.path.exists(self.path + ending):
                os.unlink(self.path + ending)
        # In this test, other users may open the directories above the history.
        place = directory
        while place.startswith(self.directory):
            os.chmod(place, 0o755)
            place = os.path.dirname(place)
        os.chmod(self.path, 0o644)
        modes = []
        while place != "/":
            modes.append((place, os.stat(place).st_mode & 0o7777))
            os.chmod(place, modes[-1][1] | 0o011)
            place = os.path.dirname(place)
        try:
            os.setegid(65534)
            os.seteuid(65534)
            try:
                self.assertIn("install astrolabe", self.newest()[3])
                self.assertEqual(os.listdir(directory).count("history.sqlite-wal"), 0)
            finally:
                os.seteuid(0)
                os.setegid(0)
        finally:
            for place, mode in modes:
                os.chmod(place, mode)

    @contextlib.contextmanager
    def locked(self):
        """Within this scope, another program locks the history file."""
        with contextlib.closing(sqlite3.connect(self.path, isolation_level=None, check_same_thread=False)) as holder:
            holder.execute("pragma locking_mode = exclusive")
            holder.execute("begin exclusive")
            yield holder

    @in_own_process
    def test_a_locked_history_is_read_as_soon_as_its_lock_is_released(self):
        self.started()
        self.apply(installs=["astrolabe"])
        self.yumio.base.history.close()
        transactions = self.module("transactions")
        attempts = []

        def endIfStopped():
            attempts.append(None)
            if len(attempts) == 3:
                holder.close()

        transactions.endIfStopped = endIfStopped
        with self.locked() as holder:
            self.assertIn("install astrolabe", self.newest()[3])
        self.assertEqual(len(attempts), 3)
        transactions.PATIENCE = 0.5
        with self.locked():
            with self.assertRaisesRegex(self.dnf.exceptions.Error, "history.sqlite: database is locked"):
                self.yumio.transactions()

    @in_own_process
    def test_the_user_can_stop_the_wait_for_a_locked_history(self):
        wanted = [False]
        self.load(stopWanted=lambda last: wanted[0])
        self.yumio.lock()
        self.collect()
        self.apply(installs=["astrolabe"])
        self.yumio.base.history.close()
        self.module("transactions").PATIENCE = 3600
        with self.locked():
            wanted[0] = True
            for read in (self.yumio.transactions, lambda: self.yumio.describeTransaction(1)):
                with self.assertRaisesRegex(self.dnf.exceptions.Error, "^Stopped[.]$"):
                    read()

    @in_own_process
    def test_five_thousand_transactions_are_read_with_few_queries(self):
        self.started()
        self.apply(installs=["astrolabe", "libbough"])
        with self.database() as database:
            first = database.execute("select max(id) from trans").fetchone()[0]
            columns = [row[1] for row in database.execute("pragma table_info(trans)") if row[1] != "id"]
            items = [row[1] for row in database.execute("pragma table_info(trans_item)") if row[1] not in (
                "id", "trans_id")]
            database.execute(
                "with recursive n(i) as (select 1 union all select i + 1 from n where i < %d) "
                "insert into trans(%s) select %s from n, trans where id = %d" % (
                    MANY, ", ".join(columns), ", ".join(columns), first))
            database.execute("insert into trans_item(trans_id, %s) select t.id, %s from trans t, trans_item ti "
                             "where t.id > %d and ti.trans_id = %d" % (
                                 ", ".join(items), ", ".join("ti." + name for name in items), first, first))
        queries = []
        connect = sqlite3.connect

        def counted(*arguments, **named):
            connection = connect(*arguments, **named)
            connection.set_trace_callback(queries.append)
            return connection

        self.module("transactions").sqlite3.connect = counted
        try:
            found = self.yumio.transactions()
        finally:
            self.module("transactions").sqlite3.connect = connect
        self.assertEqual(len(found), first + MANY)
        self.assertEqual({row[4] for row in found[:MANY]}, {"Install: astrolabe, libbough, libtwig"})
        self.assertLess(len(queries), 8)
        self.assertIn("libtwig", self.yumio.describeTransaction(found[0][0]))


class TransactionDetailsTest(ReplayTest):
    @in_own_process
    def test_the_details_of_a_transaction_show_its_packages_and_output(self):
        self.started()
        self.apply(installs=["chatterbox"], updates=["abacus-cli"])
        text = self.yumio.describeTransaction(self.newest()[0])
        lines = text.split("\n")
        self.assertEqual(lines[0], "Transaction ID: %d" % self.newest()[0])
        for line in ("Return-Code: Success", "Command Line: vyre: install chatterbox; upgrade abacus-cli",
                     "Packages Altered:", "    Install\tchatterbox-1.0-1.noarch @sandbox-http",
                     "    Upgrade\tabacus-cli-3.3.0-2.x86_64 @sandbox-updates", "Scriptlet output:",
                     "    chatterbox: post to standard output"):
            self.assertIn(line, lines, text)
        self.assertRegex(text, r"\n    Upgraded\tabacus-cli-3\.2\.1-1\.x86_64")
        self.assertNotIn("without dnf", text)
        self.assertEqual(self.yumio.describeTransaction(10 ** 9), "")

    @in_own_process
    def test_the_details_report_package_changes_that_were_made_without_dnf(self):
        self.started()
        self.apply(installs=["astrolabe"])
        self.sandbox.rpm("--erase", "almanac")
        self.again()
        self.apply(installs=["loupe"])
        second, first = [row[0] for row in self.yumio.transactions()[:2]]
        self.assertIn("Packages were changed without dnf between the previous transaction and this transaction.",
                      self.yumio.describeTransaction(second))
        self.assertIn("Packages were changed without dnf between this transaction and the next transaction.",
                      self.yumio.describeTransaction(first))

    @in_own_process
    def test_the_details_of_an_interrupted_transaction_contain_the_changes_that_a_redo_completes(self):
        self.started()
        self.apply(installs=["astrolabe", "loupe"], removes=["almanac"])
        with self.database() as database:
            database.execute("update trans set dt_end = null, state = 0 where id = (select max(id) from trans)")
        number = self.newest()[0]
        self.assertEqual(self.newest()[6], INTERRUPTED)
        self.assertIn("This transaction was interrupted. All its packages are in the intended state.",
                      self.yumio.describeTransaction(number))
        self.sandbox.rpm("--erase", "loupe")
        text = self.yumio.describeTransaction(number)
        self.assertIn("This transaction was interrupted. \"Redo\" completes it with these changes:\n"
                      "    Install\tloupe-45.0-1.x86_64 @sandbox-http\n\n", text)
        # "Redo" makes exactly the changes that the details list. Its listing says that it completes the transaction.
        self.again()
        introduced = []
        self.module("program").addBeforeListing = introduced.append
        self.assertEqual(self.changes(self.replay, "redo", number), ({"loupe-45.0-1.x86_64"}, set()))
        # Only the first line is compared: the other lines are dnf's warnings about changes that were already made.
        self.assertEqual("".join(introduced).split("\n")[0], "This completes transaction %d." % number)
        # After "Redo", and after a later change to the package, the details list no missing change.
        self.again()
        self.assertIn("All its packages are in the intended state.", self.yumio.describeTransaction(number))
        self.apply(removes=["loupe"])
        self.assertIn("All its packages are in the intended state.", self.yumio.describeTransaction(number))


class WordsTest(ReplayTest):
    @in_own_process
    def test_all_actions_have_the_words_of_the_german_program_and_not_the_words_of_dnf(self):
        os.environ["LANGUAGE"] = "de"
        os.environ["LC_ALL"] = "C.UTF-8"
        self.load(translations=german())
        self.yumio.lock()
        self.collect()
        self.apply(installs=["astrolabe", "libbough"], updates=["abacus-cli"], removes=["almanac"])
        self.again()
        self.assertEqual(self.newest()[4], "Installieren: astrolabe, libbough, libtwig; Aktualisieren: abacus-cli; "
                                           "Entfernen: almanac")
        self.replay("undo", self.newest()[0])
        number, *_, changes, names, result, lines = self.newest()
        self.assertEqual(changes, "Installieren: almanac; Herabstufen: abacus-cli; Entfernen: astrolabe, libbough, "
                                  "libtwig")
        details = self.yumio.describeTransaction(number).split("\n")
        self.assertIn("    Herabstufen\tabacus-cli-3.2.1-1.x86_64 @sandbox-http", details)
        self.assertIn("    Herabgestuft\tabacus-cli-3.3.0-2.x86_64 @System", details)
        words = list(self.module("transactions").ACTIONS.values())
        self.assertEqual(words, ["Installieren", "Aktualisieren", "Herabstufen", "Erneut installieren", "Entfernen",
                                 "Ersetzen", "Grund ändern", "Aktualisiert", "Herabgestuft", "Erneut installiert",
                                 "Ersatz"])


class UndoTest(ReplayTest):
    @in_own_process
    def test_an_installation_and_an_update_are_undone(self):
        self.started()
        self.assertEqual(self.yumio.lacksReplay(), "")
        self.apply(installs=["libbough"], updates=["abacus-cli"])
        self.again()
        number = self.newest()[0]
        added, gone = self.changes(self.replay, "undo", number)
        self.assertEqual(added, {"abacus-cli-3.2.1-1.x86_64"})
        self.assertEqual(gone, {"abacus-cli-3.3.0-2.x86_64", "libbough-1.1-1.x86_64", "libtwig-1.0-1.x86_64"})
        self.assertTrue(self.yumio.systemChanged)
        self.assertEqual(self.newest()[3], "vyre: history undo %d" % number)
        # An undo goes through the same steps as a transaction that applies marks.
        names = self.recording.names()
        for name in ("listTransaction", "userconfirm", "downloadRemotePayloads", "gpgsigcheck", "rpmtransInit",
                     "postTransactionOutput"):
            self.assertIn(name, names)

    @in_own_process
    def test_refusing_the_listing_of_an_undo_changes_nothing(self):
        self.started()
        self.apply(installs=["astrolabe"])
        self.again()
        self.assertEqual(self.changes(self.replay, "undo", self.newest()[0], answers=[0]), (set(), set()))
        self.assertFalse(self.yumio.systemChanged)
        self.assertIn("install astrolabe", self.newest()[3])

    def removed_from_two_repositories(self):
        """Removes two packages of different repositories, and then makes one of these repositories unavailable."""
        self.started()
        self.apply(removes=["lexicon-en", "almanac"])
        os.unlink(self.repository_file("sandbox-file"))
        self.again()
        return self.newest()[0]

    @in_own_process
    def test_a_question_before_the_listing_names_the_impossible_changes_of_an_undo(self):
        number = self.removed_from_two_repositories()
        self.assertEqual(self.changes(self.replay, "undo", number, answers=[0]), (set(), set()))
        question = ("These changes are impossible:\n  Cannot find rpm nevra \"lexicon-en-2023.1-1.noarch\".\n\n"
                    "Go on without them?\n")
        self.assertIn(question, self.recording.printed())
        self.assertEqual(self.recording.of("listTransaction"), [])
        self.recording.clear()
        self.assertEqual(self.changes(self.replay, "undo", number, answers=[1, 1]),
                         ({"almanac-1.9-1.noarch"}, set()))
        self.assertIn(question, self.recording.printed())
        self.assertEqual([item["name"] for items in self.recording.of("listTransaction") for item in items],
                         ["almanac"])

    @in_own_process
    def test_the_message_about_an_impossible_undo_gives_the_reason(self):
        self.started()
        self.apply(removes=["lexicon-en"])
        os.unlink(self.repository_file("sandbox-file"))
        self.again()
        with self.assertRaises(self.dnf.exceptions.Error) as caught:
            self.replay("undo", self.newest()[0])
        self.assertEqual(str(caught.exception), "The transaction is impossible:\n  Cannot find rpm nevra "
                         "\"lexicon-en-2023.1-1.noarch\".\nNothing was changed. VYRE keeps all marks.")
        self.assertEqual(self.recording.of("userconfirm"), [])

    @in_own_process
    def test_the_message_about_an_impossible_undo_names_a_package_that_needs_a_removed_package(self):
        self.started()
        self.apply(installs=["libtwig"])
        self.again()
        number = self.newest()[0]
        self.apply(installs=["libbough"])
        self.again()
        with self.assertRaisesRegex(self.dnf.exceptions.Error, "The transaction is impossible:\n.*libbough"):
            self.replay("undo", number)

    @in_own_process
    def test_the_listing_of_an_undo_begins_with_the_warnings_of_dnf(self):
        self.started()
        self.apply(installs=["astrolabe"])
        self.again()
        before = self.newest()[0]
        self.apply(installs=["loupe"])
        self.sandbox.rpm("--erase", "almanac")
        self.again()
        self.apply(installs=["sextant"])
        self.again()
        introduced = []
        self.module("program").addBeforeListing = introduced.append
        self.assertEqual(self.changes(self.replay, "rollback", before),
                         (set(), {"loupe-45.0-1.x86_64", "sextant-1.0-1.x86_64"}))
        self.assertEqual(introduced, ["This undoes all transactions after transaction %d.\n"
                                      "Transaction history is incomplete, before %d.\n"
                                      "Transaction history is incomplete, after %d.\n\n"
                                      % (before, before + 2, before + 1)])

    @in_own_process
    def test_the_listing_of_an_undo_names_the_recorded_transaction(self):
        self.started()
        self.apply(installs=["astrolabe"])
        self.again()
        number = self.newest()[0]
        introduced = []

        def introduce(text):
            # The program accepts these lines only after listTransaction().
            self.assertEqual(self.recording.names()[-1], "listTransaction")
            introduced.append(text)

        self.module("program").addBeforeListing = introduce
        self.replay("undo", number)
        self.again()
        self.replay("redo", number)
        self.assertEqual(introduced, ["This undoes transaction %d.\n\n" % number,
                                      "This repeats transaction %d.\n\n" % number])

    @in_own_process
    def test_an_undo_or_redo_without_changes_is_refused(self):
        self.started()
        self.apply(installs=["astrolabe"])
        self.again()
        number = self.newest()[0]
        for kind in ("redo", "rollback"):
            with self.assertRaisesRegex(self.dnf.exceptions.Error, "^There is nothing to do.$"):
                self.replay(kind, number)
        with self.assertRaisesRegex(self.dnf.exceptions.Error, "10000"):
            self.replay("undo", 10000)

    @in_own_process
    def test_the_message_names_the_version_of_dnf_if_dnf_lacks_the_history_commands(self):
        self.started()
        self.apply(installs=["astrolabe"])
        self.again()
        from dnf.cli.commands.history import HistoryCommand
        del HistoryCommand._hcmd_rollback
        fault = ("VYRE does not support version %s of dnf. It cannot undo transactions, because dnf lacks "
                 "_hcmd_rollback." % self.dnf.const.VERSION)
        self.assertEqual(self.yumio.lacksReplay(), fault)
        with self.assertRaises(self.dnf.exceptions.Error) as caught:
            self.replay("undo", self.newest()[0])
        self.assertEqual(str(caught.exception), fault)
        sys.modules["dnf.cli.commands.history"] = None
        self.assertIn("It cannot undo transactions", self.yumio.lacksReplay())


class ReplayStepsTest(ReplayTest):
    """Tests of the steps before the listing, which take seconds if an operation undoes thousands of transactions."""

    def two_transactions(self, **given):
        """Carries out two transactions. Returns the number of the transaction before them."""
        self.load(**given)
        self.yumio.lock()
        self.collect()
        self.apply(installs=["astrolabe"])
        before = self.newest()[0] - 1
        self.again()
        self.apply(installs=["loupe"], updates=["abacus-cli"])
        self.again()
        return before

    def counted(self, place, name):
        """Replaces a function of dnf. The result is a list that gets an item for each call."""
        calls = []
        function = getattr(place, name)

        def count(*arguments):
            calls.append(arguments)
            return function(*arguments)

        setattr(place, name, count)
        return calls

    @in_own_process
    def test_the_progress_bar_shows_each_step_before_the_listing(self):
        before = self.two_transactions()
        shown = []
        self.module("program").changeActivity = shown.append
        self.replay("rollback", before, answers=[0])
        self.assertEqual(shown, ["Reading the recorded transactions",
                                 "Finding the packages of the recorded transactions", "Resolve Dependencies"])

    @in_own_process
    def test_a_stop_takes_effect_between_two_packages_of_the_recorded_transactions(self):
        wanted = [False]
        before = self.two_transactions(stopWanted=lambda last: wanted[0])
        from dnf.cli.commands import history
        find = history.TransactionReplay._replay_pkg_action
        serialize = history.serialize_transaction
        for last in (0, 1, 3):
            found = []

            def count(*arguments):
                found.append(None)
                wanted[0] = len(found) == last
                return find(*arguments)

            history.TransactionReplay._replay_pkg_action = count
            wanted[0] = last == 0
            reads = self.counted(history, "serialize_transaction")
            installed = self.sandbox.installed()
            with self.assertRaisesRegex(self.dnf.exceptions.Error, "^Stopped[.]$"):
                self.replay("rollback", before, answers=())
            # If the stop is requested before the first package, the script does not read the transactions either.
            self.assertEqual((len(found), len(reads)), (last, int(last > 0)))
            self.assertEqual(self.recording.of("listTransaction"), [])
            self.assertEqual(self.sandbox.installed(), installed)
            history.serialize_transaction = serialize
        # After a stop, the same transactions can be undone.
        wanted[0] = False
        history.TransactionReplay._replay_pkg_action = find
        self.assertEqual(self.changes(self.replay, "rollback", before),
                         ({"abacus-cli-3.2.1-1.x86_64"},
                          {"abacus-cli-3.3.0-2.x86_64", "astrolabe-5.6-1.x86_64", "loupe-45.0-1.x86_64"}))

    @in_own_process
    def test_the_recorded_transactions_are_read_once_even_if_some_changes_are_impossible(self):
        self.started()
        self.apply(installs=["astrolabe"])
        self.again()
        before = self.newest()[0]
        self.apply(removes=["lexicon-en"])
        self.again()
        self.apply(removes=["almanac"])
        os.unlink(self.repository_file("sandbox-file"))
        self.again()
        from dnf.cli.commands import history
        reads = self.counted(history, "serialize_transaction")
        function = history.serialize_transaction
        introduced = []
        self.module("program").addBeforeListing = introduced.append
        self.assertEqual(self.changes(self.replay, "rollback", before, answers=[1, 1]),
                         ({"almanac-1.9-1.noarch"}, set()))
        self.assertIn("Cannot find rpm nevra \"lexicon-en-2023.1-1.noarch\".", self.recording.printed())
        self.assertEqual(len(reads), 1)
        # The question has named the impossible change, so the listing does not repeat it.
        self.assertEqual(introduced, ["This undoes all transactions after transaction %d.\n\n" % before])
        # The script has restored dnf's function.
        self.assertIs(history.serialize_transaction, function)
