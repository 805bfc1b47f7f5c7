# SPDX-License-Identifier: GPL-2.0-or-later
"""Installs, updates and removals with the same result in VYRE and dnf."""

import os

from comparison import Scenario, tests


def change_confetti(root):
    with open(os.path.join(root, "etc/confetti.conf"), "a") as stream:
        stream.write("glitter=yes\n")


RULES = ["extra-rules"]

SCENARIOS = [
    # Installs
    Scenario("a_package_with_dependencies_of_all_kinds", "+orchard +libbough +libtwig +orchard-lang +orchard-plugins "
             "+orchard-thumbnails", install="orchard", dnf="install orchard"),
    Scenario("a_package_of_the_other_architecture", "+libslate.i686", install="libslate.i686",
             dnf="install libslate.i686"),
    Scenario("a_package_of_both_architectures", "+libmoss +libmoss.i686", install="libmoss.x86_64 libmoss.i686",
             dnf="install libmoss.x86_64 libmoss.i686"),
    Scenario("a_dependency_of_the_other_architecture", "+pair-user.i686 +twin +twin.i686", repos=RULES,
             install="pair-user.i686", dnf="install pair-user"),
    Scenario("a_failing_script_before_the_installation", "refused brokenlatch", install="brokenlatch",
             dnf="install brokenlatch"),
    Scenario("a_failing_script_and_another_package", "failed brokenlatch +astrolabe",
             install="astrolabe brokenlatch", dnf="install astrolabe brokenlatch"),
    Scenario("two_packages_with_the_same_file", "refused palette.conf", install="inkwell-classic inkwell-modern",
             dnf="install inkwell-classic inkwell-modern"),
    # Obsoletes
    Scenario("a_package_that_replaces_another", "+newpost -oldpost", install="newpost",
             dnf="install newpost"),
    Scenario("a_package_that_replaces_two_others", "+obsoleter -obsolete-one -obsolete-two", repos=RULES,
             before=["--exclude=obsoleter install obsolete-one obsolete-two"], install="obsoleter",
             dnf="install obsoleter"),
    # Updates
    Scenario("an_update", "^abacus-cli", update="abacus-cli", dnf="upgrade abacus-cli"),
    Scenario("an_update_to_a_higher_epoch", "^quillbase", update="quillbase", dnf="upgrade quillbase"),
    Scenario("an_update_of_both_architectures", "^libcairn ^libcairn.i686", update="libcairn", dnf="upgrade libcairn"),
    Scenario("an_update_of_one_of_two_architectures", "^twin ^twin.i686", repos=RULES,
             before=["install twin-1-1.x86_64 twin-1-1.i686"], update="twin.x86_64", dnf="upgrade twin.x86_64"),
    Scenario("an_update_with_its_subpackage", "^leading ^leading-part", repos=RULES,
             before=["install leading-1 leading-part-1"], update="leading", dnf="upgrade leading"),
    Scenario("an_update_of_a_suite_with_a_new_member", "^vyre-network-suite +nettle-scan", update="vyre-network-suite",
             dnf="upgrade vyre-network-suite"),
    Scenario("an_update_with_a_changed_configuration_file", "^confetti", repos=RULES,
             before=["install confetti-1", change_confetti], update="confetti", dnf="upgrade confetti"),
    # Two versions of different architectures are installed, and the newer version is also available without an
    # architecture. Without best, the order in rpm's database decides whether dnf replaces both packages.
    Scenario("a_change_to_no_architecture", "refused cannot install both", repos=RULES, config="best=True",
             before=["install unsettled-1-1.i686", "install unsettled-2-1.x86_64"], update="unsettled",
             dnf="upgrade unsettled", differs=("Updates to packages without an architecture", "nothing")),
    # Packages that are installed beside their older versions
    Scenario("a_kernel_beside_the_installed_kernels", "+kernel", update="kernel", dnf="upgrade kernel"),
    Scenario("a_kernel_in_place_of_the_oldest", "^kernel", config="installonly_limit=2", update="kernel",
             dnf="upgrade kernel"),
    Scenario("kernels_without_a_limit", "+kernel", config="installonly_limit=0", update="kernel", dnf="upgrade kernel"),
    Scenario("another_package_of_several_versions", "+stacked", repos=RULES,
             config="installonlypkgs=stacked", before=["install stacked-1"], update="stacked", dnf="upgrade stacked"),
    Scenario("a_removal_of_all_kernels", "-kernel", remove="kernel", dnf="remove kernel"),
    # Removals
    Scenario("a_removal_with_an_unused_dependency", "-trellis-editor -libtrellis", remove="trellis-editor",
             dnf="remove trellis-editor"),
    Scenario("a_removal_that_keeps_the_unused_dependency", "-trellis-editor",
             config="clean_requirements_on_remove=False", remove="trellis-editor", dnf="remove trellis-editor"),
    Scenario("a_removal_with_a_dependent_package", "-libtrellis -trellis-editor", remove="libtrellis",
             dnf="remove libtrellis"),
    Scenario("a_removal_of_two_packages", "-almanac -cinder-backup", remove="almanac cinder-backup",
             dnf="remove almanac cinder-backup"),
    Scenario("a_removal_of_one_of_two_dependents", "-user-of-part", repos=RULES,
             before=["install user-of-part other-user-of-part"], remove="user-of-part", dnf="remove user-of-part"),
    Scenario("a_removal_of_both_dependents", "-user-of-part -other-user-of-part -part-of-two", repos=RULES,
             before=["install user-of-part other-user-of-part"], remove="user-of-part other-user-of-part",
             dnf="remove user-of-part other-user-of-part"),
    Scenario("a_removal_with_a_weak_dependency", "-weakling -weak-friend", repos=RULES, before=["install weakling"],
             remove="weakling", dnf="remove weakling"),
    Scenario("a_removal_of_one_of_two_architectures", "-libcairn.i686", remove="libcairn.i686",
             dnf="remove libcairn.i686"),
    Scenario("a_failing_script_before_the_removal", "refused stickyburr", remove="stickyburr",
             dnf="remove stickyburr"),
    # All actions together
    Scenario("an_install_an_update_and_a_removal", "+astrolabe ^abacus-cli -almanac", install="astrolabe",
             update="abacus-cli", remove="almanac", dnf="shell install astrolabe; upgrade abacus-cli; remove almanac"),
]

SameAsDnfTest = tests(SCENARIOS)
