# SPDX-License-Identifier: GPL-2.0-or-later
"""Groups that VYRE and dnf install, update or remove in the same way."""

from comparison import Scenario, tests

HABITATS = ["extra-environments"]

SCENARIOS = [
    Scenario("a_group_is_installed", "+pebble-go +hedgerow +orrery", group_install="games", dnf="group install games"),
    Scenario("conditional_members_are_installed_if_their_conditions_are_true",
             "+scribe-writer +ledger-calc +scribe-lexicon", group_install="office", dnf="group install office"),
    Scenario("a_group_installation_keeps_members_that_are_already_installed",
             "+nettle-scan +weir-limit", group_install="network-tools",
             dnf="group install network-tools"),
    Scenario("only_mandatory_members_are_installed_if_group_package_types_demands_this",
             "+pebble-go", config="group_package_types=mandatory",
             group_install="games", dnf="group install games"),
    Scenario("a_group_is_installed_without_its_excluded_member", "+pebble-go +hedgerow", config="exclude=orrery",
             group_install="games", dnf="group install games"),
    Scenario("two_groups_are_installed_together", "+pebble-go +hedgerow +orrery +nettle-scan +weir-limit",
             group_install="games network-tools", dnf="group install games network-tools"),
    Scenario("a_group_and_a_package_are_installed_together", "+pebble-go +hedgerow +orrery +astrolabe",
             group_install="games", install="astrolabe", dnf="shell group install games; install astrolabe"),
    Scenario("a_group_is_removed_with_its_members", "-easel -palette-knife", group_remove="arts",
             dnf="group remove arts"),
    Scenario("a_removed_group_keeps_a_member_that_the_user_installed", "-pebble-go -hedgerow",
             before=["group install games", "mark install orrery"], group_remove="games", dnf="group remove games"),
    Scenario("a_removed_group_keeps_a_member_of_another_group", "-nettle-scan -weir-limit",
             before=["group install network-tools"], group_remove="network-tools", dnf="group remove network-tools"),
    Scenario("a_group_member_can_be_removed_without_its_group",
             "-easel", groups=True, remove="easel", dnf="remove easel"),
    Scenario("an_installed_group_without_installed_members_is_removed", "", before=["remove easel palette-knife"],
             group_remove="arts", dnf="group remove arts"),
    Scenario("a_member_of_an_installed_group_can_be_updated_without_the_group", "^loomctl", groups=True,
             before=["--disablerepo=sandbox-updates group install weaving"], update="loomctl",
             dnf="upgrade loomctl"),
    Scenario("only_dnf_updates_an_installed_group", "^loomctl",
             before=["--disablerepo=sandbox-updates group install weaving"], group_update="weaving",
             dnf="group upgrade weaving",
             differs=("Groups that are installed", "refused not permitted: update of weaving, which is installed")),
    Scenario("the_update_of_an_uninstalled_group_equals_the_update_of_its_installed_members",
             "^loomctl", group_update="weaving",
             dnf="upgrade loomctl"),
    Scenario("only_vyre_updates_an_uninstalled_group", "refused not installed", group_update="weaving",
             dnf="group upgrade weaving", differs=("Groups that are not installed", "^loomctl")),
    # Environments
    Scenario("only_dnf_records_that_an_environment_is_installed", "+habitat-sea +habitat-shore", repos=HABITATS,
             group_install="habitat-waters", dnf="group install habitats",
             differs=("Environments", "+habitat-sea +habitat-shore")),
    Scenario("a_group_of_an_environment_is_installed", "+habitat-sea +habitat-shore", repos=HABITATS,
             group_install="habitat-waters", dnf="group install habitat-waters"),
    Scenario("a_group_of_an_environment_is_removed", "-habitat-sea -habitat-shore", repos=HABITATS,
             before=["group install habitats"], group_remove="habitat-waters", dnf="group remove habitat-waters"),
    Scenario("an_optional_group_of_an_environment_is_installed", "+habitat-cave", repos=HABITATS,
             before=["group install habitats"], group_install="habitat-rocks", dnf="group install habitat-rocks"),
    Scenario("a_package_of_an_environment_is_removed", "-habitat-sea", repos=HABITATS,
             groups=True, before=["group install habitats"], remove="habitat-sea", dnf="remove habitat-sea"),
]

SameAsDnfTest = tests(SCENARIOS)
