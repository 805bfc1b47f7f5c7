# SPDX-License-Identifier: GPL-2.0-or-later
"""Recorded transactions that VYRE and dnf undo and repeat in the same way."""

import os

from comparison import Scenario, tests

MODULES = ["extra-modules"]


def without_files(root):
    """Makes a repository unknown by removing its file."""
    os.unlink(os.path.join(root, "etc/yum.repos.d/sandbox-file.repo"))


SCENARIOS = [
    Scenario("an_installation_is_undone", "-astrolabe", before=["install astrolabe"], replay=("undo", 0),
             dnf="history undo last"),
    Scenario("an_installation_with_dependencies_is_undone", "-libbough -libtwig", before=["install libbough"],
             replay=("undo", 0), dnf="history undo last"),
    Scenario("an_update_is_undone", "^anvil-make", before=["upgrade anvil-make"], replay=("undo", 0),
             dnf="history undo last"),
    Scenario("a_downgrade_is_undone", "^anvil-make", before=["upgrade anvil-make", "downgrade anvil-make"],
             replay=("undo", 0), dnf="history undo last"),
    Scenario("a_removal_is_undone", "+trellis-editor +libtrellis", before=["remove trellis-editor"], replay=("undo", 0),
             dnf="history undo last"),
    Scenario("the_replacement_of_an_obsoleted_package_is_undone",
             "-newpost +oldpost", before=["install newpost"], replay=("undo", 0),
             dnf="history undo last"),
    Scenario("a_change_of_an_installation_reason_is_undone", "", before=["install libbough", "mark install libtwig"],
             replay=("undo", 0), dnf="history undo last"),
    Scenario("a_group_installation_is_undone", "-pebble-go -hedgerow -orrery", before=["group install games"],
             groups=True, replay=("undo", 0), dnf="history undo last"),
    Scenario("a_group_removal_is_undone", "+easel +palette-knife", before=["group remove arts"], groups=True,
             replay=("undo", 0), dnf="history undo last"),
    Scenario("an_installation_from_a_module_stream_is_undone", "-grove-cli -grove-data", repos=MODULES,
             before=["install grove-cli"], replay=("undo", 0), dnf="history undo last"),
    Scenario("a_transaction_older_than_the_last_one_is_undone",
             "-astrolabe", before=["install astrolabe", "install loupe"],
             replay=("undo", 1), dnf="history undo last-1"),
    Scenario("an_undo_is_undone", "+astrolabe", before=["install astrolabe", "history undo last"],
             replay=("undo", 0), dnf="history undo last"),
    Scenario("a_rollback_undoes_all_transactions_after_the_chosen_one", "-loupe ^anvil-make +almanac",
             before=["install astrolabe", "install loupe", "upgrade anvil-make", "remove almanac"],
             replay=("rollback", 3), dnf="history rollback last-3"),
    Scenario("an_installation_is_repeated", "+astrolabe", before=["install astrolabe", "remove astrolabe"],
             replay=("redo", 1), dnf="history redo last-1"),
    Scenario("an_update_is_repeated", "^anvil-make", before=["upgrade anvil-make", "downgrade anvil-make"],
             replay=("redo", 1), dnf="history redo last-1"),
    Scenario("a_removal_is_repeated", "-almanac", before=["remove almanac", "install almanac"], replay=("redo", 1),
             dnf="history redo last-1"),
    Scenario("an_undo_is_refused_if_it_would_remove_a_package_that_another_package_needs", "refused libbough",
             before=["install libtwig", "install libbough"], replay=("undo", 1), dnf="history undo last-1"),
    Scenario("an_undo_is_refused_if_no_repository_has_the_removed_package",
             "refused Cannot find rpm nevra \"lexicon-en-2023.1-1.noarch\"",
             before=["remove lexicon-en", without_files], replay=("undo", 0), dnf="history undo last"),
    Scenario("only_vyre_undoes_the_possible_part_of_a_transaction",
             "refused Cannot find rpm nevra \"lexicon-en-2023.1-1.noarch\"",
             before=["remove lexicon-en almanac", without_files], replay=("undo", 0),
             dnf="history undo last", differs=("Transactions that can only partly be undone", "+almanac")),
]

SameAsDnfTest = tests(SCENARIOS)
