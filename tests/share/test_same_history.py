# SPDX-License-Identifier: GPL-2.0-or-later
"""Transactions of the history undone and carried out again, by VYRE and by dnf."""

import os

from comparison import Scenario, tests

MODULES = ["extra-modules"]


def without_files(root):
    """A step that takes a repository away."""
    os.unlink(os.path.join(root, "etc/yum.repos.d/sandbox-file.repo"))


SCENARIOS = [
    Scenario("an_undone_installation", "-astrolabe", before=["install astrolabe"], replay=("undo", 0),
             dnf="history undo last"),
    Scenario("an_undone_installation_with_dependencies", "-libbough -libtwig", before=["install libbough"],
             replay=("undo", 0), dnf="history undo last"),
    Scenario("an_undone_update", "^anvil-make", before=["upgrade anvil-make"], replay=("undo", 0),
             dnf="history undo last"),
    Scenario("an_undone_downgrade", "^anvil-make", before=["upgrade anvil-make", "downgrade anvil-make"],
             replay=("undo", 0), dnf="history undo last"),
    Scenario("an_undone_removal", "+trellis-editor +libtrellis", before=["remove trellis-editor"], replay=("undo", 0),
             dnf="history undo last"),
    Scenario("an_undone_replacement", "-newpost +oldpost", before=["install newpost"], replay=("undo", 0),
             dnf="history undo last"),
    Scenario("an_undone_change_of_reasons", "", before=["install libbough", "mark install libtwig"],
             replay=("undo", 0), dnf="history undo last"),
    Scenario("an_undone_installation_of_a_group", "-pebble-go -hedgerow -orrery", before=["group install games"],
             groups=True, replay=("undo", 0), dnf="history undo last"),
    Scenario("an_undone_removal_of_a_group", "+easel +palette-knife", before=["group remove arts"], groups=True,
             replay=("undo", 0), dnf="history undo last"),
    Scenario("an_undone_installation_from_a_stream", "-grove-cli -grove-data", repos=MODULES,
             before=["install grove-cli"], replay=("undo", 0), dnf="history undo last"),
    Scenario("an_older_transaction_undone", "-astrolabe", before=["install astrolabe", "install loupe"],
             replay=("undo", 1), dnf="history undo last-1"),
    Scenario("an_undone_undo", "+astrolabe", before=["install astrolabe", "history undo last"], replay=("undo", 0),
             dnf="history undo last"),
    Scenario("all_transactions_since_one", "-loupe ^anvil-make +almanac",
             before=["install astrolabe", "install loupe", "upgrade anvil-make", "remove almanac"],
             replay=("rollback", 3), dnf="history rollback last-3"),
    Scenario("an_installation_again", "+astrolabe", before=["install astrolabe", "remove astrolabe"],
             replay=("redo", 1), dnf="history redo last-1"),
    Scenario("an_update_again", "^anvil-make", before=["upgrade anvil-make", "downgrade anvil-make"],
             replay=("redo", 1), dnf="history redo last-1"),
    Scenario("a_removal_again", "-almanac", before=["remove almanac", "install almanac"], replay=("redo", 1),
             dnf="history redo last-1"),
    Scenario("a_package_that_another_one_needs_now", "refused libbough",
             before=["install libtwig", "install libbough"], replay=("undo", 1), dnf="history undo last-1"),
    Scenario("a_package_that_no_repository_has", "refused Cannot find rpm nevra \"lexicon-en-2023.1-1.noarch\"",
             before=["remove lexicon-en", without_files], replay=("undo", 0),
             dnf="history undo last"),
    Scenario("a_transaction_that_is_partly_impossible",
             "refused Cannot find rpm nevra \"lexicon-en-2023.1-1.noarch\"",
             before=["remove lexicon-en almanac", without_files], replay=("undo", 0),
             dnf="history undo last", differs=("Undoing what is only partly possible", "+almanac")),
]

SameAsDnfTest = tests(SCENARIOS)
