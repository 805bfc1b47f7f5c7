# SPDX-License-Identifier: GPL-2.0-or-later
"""Groups that VYRE and dnf install, update or remove in the same way."""

from comparison import Scenario, tests

HABITATS = ["extra-environments"]

SCENARIOS = [
    Scenario("a_group", "+pebble-go +hedgerow +orrery", group_install="games", dnf="group install games"),
    Scenario("a_group_with_conditional_members", "+scribe-writer +ledger-calc +scribe-lexicon", group_install="office",
             dnf="group install office"),
    Scenario("a_group_with_installed_members", "+nettle-scan +weir-limit", group_install="network-tools",
             dnf="group install network-tools"),
    Scenario("the_mandatory_members_of_a_group", "+pebble-go", config="group_package_types=mandatory",
             group_install="games", dnf="group install games"),
    Scenario("a_group_and_an_excluded_member", "+pebble-go +hedgerow", config="exclude=orrery", group_install="games",
             dnf="group install games"),
    Scenario("two_groups", "+pebble-go +hedgerow +orrery +nettle-scan +weir-limit", group_install="games network-tools",
             dnf="group install games network-tools"),
    Scenario("a_group_and_a_package", "+pebble-go +hedgerow +orrery +astrolabe", group_install="games",
             install="astrolabe", dnf="shell group install games; install astrolabe"),
    Scenario("the_removal_of_a_group", "-easel -palette-knife", group_remove="arts", dnf="group remove arts"),
    Scenario("the_removal_of_a_group_with_a_member_that_the_user_installed", "-pebble-go -hedgerow",
             before=["group install games", "mark install orrery"], group_remove="games", dnf="group remove games"),
    Scenario("the_removal_of_one_of_two_groups_of_a_package", "-nettle-scan -weir-limit",
             before=["group install network-tools"], group_remove="network-tools", dnf="group remove network-tools"),
    Scenario("the_removal_of_a_member", "-easel", groups=True, remove="easel", dnf="remove easel"),
    Scenario("the_removal_of_a_group_without_installed_members", "", before=["remove easel palette-knife"],
             group_remove="arts", dnf="group remove arts"),
    Scenario("the_update_of_a_member_of_an_installed_group", "^loomctl", groups=True,
             before=["--disablerepo=sandbox-updates group install weaving"], update="loomctl",
             dnf="upgrade loomctl"),
    Scenario("the_update_of_an_installed_group", "^loomctl",
             before=["--disablerepo=sandbox-updates group install weaving"], group_update="weaving",
             dnf="group upgrade weaving",
             differs=("Groups that are installed", "refused not permitted: update of weaving, which is installed")),
    Scenario("the_update_of_a_group_that_is_not_installed", "^loomctl", group_update="weaving",
             dnf="upgrade loomctl"),
    Scenario("the_update_of_a_group_that_dnf_refuses", "refused not installed", group_update="weaving",
             dnf="group upgrade weaving", differs=("Groups that are not installed", "^loomctl")),
    # Environments
    Scenario("an_environment", "+habitat-sea +habitat-shore", repos=HABITATS, group_install="habitat-waters",
             dnf="group install habitats", differs=("Environments", "+habitat-sea +habitat-shore")),
    Scenario("a_group_of_an_environment", "+habitat-sea +habitat-shore", repos=HABITATS,
             group_install="habitat-waters", dnf="group install habitat-waters"),
    Scenario("the_removal_of_a_group_of_an_environment", "-habitat-sea -habitat-shore", repos=HABITATS,
             before=["group install habitats"], group_remove="habitat-waters", dnf="group remove habitat-waters"),
    Scenario("an_optional_group_of_an_installed_environment", "+habitat-cave", repos=HABITATS,
             before=["group install habitats"], group_install="habitat-rocks", dnf="group install habitat-rocks"),
    Scenario("the_removal_of_a_package_of_an_environment", "-habitat-sea", repos=HABITATS,
             groups=True, before=["group install habitats"], remove="habitat-sea", dnf="remove habitat-sea"),
]

SameAsDnfTest = tests(SCENARIOS)
