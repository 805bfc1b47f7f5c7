# SPDX-License-Identifier: GPL-2.0-or-later
"""Installations, updates and removals with the same result in VYRE and dnf."""

import os

from comparison import Scenario, tests


def change_confetti(root):
    with open(os.path.join(root, "etc/confetti.conf"), "a") as stream:
        stream.write("glitter=yes\n")


RULES = ["extra-rules"]

SCENARIOS = [
    # Installations
    Scenario("dependencies_of_all_kinds_are_installed", "+orchard +libbough +libtwig +orchard-lang +orchard-plugins "
             "+orchard-thumbnails", install="orchard", dnf="install orchard"),
    Scenario("a_32_bit_package_is_installed", "+libslate.i686", install="libslate.i686",
             dnf="install libslate.i686"),
    Scenario("a_package_is_installed_for_both_architectures_at_once", "+libmoss +libmoss.i686",
             install="libmoss.x86_64 libmoss.i686", dnf="install libmoss.x86_64 libmoss.i686"),
    Scenario("a_32_bit_package_installs_its_32_bit_dependency", "+pair-user.i686 +twin +twin.i686", repos=RULES,
             install="pair-user.i686", dnf="install pair-user"),
    Scenario("a_failing_pre_install_script_prevents_the_installation", "refused brokenlatch", install="brokenlatch",
             dnf="install brokenlatch"),
    Scenario("if_the_script_of_one_package_fails_the_other_package_is_installed", "failed brokenlatch +astrolabe",
             install="astrolabe brokenlatch", dnf="install astrolabe brokenlatch"),
    Scenario("two_packages_with_different_versions_of_one_file_are_refused", "refused palette.conf",
             install="inkwell-classic inkwell-modern", dnf="install inkwell-classic inkwell-modern"),
    # Obsoletes
    Scenario("a_package_replaces_the_package_that_it_obsoletes", "+newpost -oldpost", install="newpost",
             dnf="install newpost"),
    Scenario("a_package_replaces_both_packages_that_it_obsoletes", "+obsoleter -obsolete-one -obsolete-two",
             repos=RULES, before=["--exclude=obsoleter install obsolete-one obsolete-two"], install="obsoleter",
             dnf="install obsoleter"),
    # Updates
    Scenario("an_update_is_installed", "^abacus-cli", update="abacus-cli", dnf="upgrade abacus-cli"),
    Scenario("a_higher_epoch_is_an_update", "^quillbase", update="quillbase", dnf="upgrade quillbase"),
    Scenario("both_installed_architectures_of_a_package_are_updated",
             "^libcairn ^libcairn.i686", update="libcairn", dnf="upgrade libcairn"),
    Scenario("an_update_of_one_architecture_also_updates_the_other_architecture", "^twin ^twin.i686", repos=RULES,
             before=["install twin-1-1.x86_64 twin-1-1.i686"], update="twin.x86_64", dnf="upgrade twin.x86_64"),
    Scenario("an_update_of_a_package_also_updates_its_subpackage", "^leading ^leading-part", repos=RULES,
             before=["install leading-1 leading-part-1"], update="leading", dnf="upgrade leading"),
    Scenario("an_update_of_a_suite_installs_its_new_member", "^vyre-network-suite +nettle-scan",
             update="vyre-network-suite", dnf="upgrade vyre-network-suite"),
    Scenario("an_update_handles_a_changed_configuration_file_as_dnf_does", "^confetti", repos=RULES,
             before=["install confetti-1", change_confetti], update="confetti", dnf="upgrade confetti"),
    # The package "unsettled" is installed in two versions with different architectures. The newer version is also
    # available without an architecture. If "best" is not set, dnf replaces one or both packages, depending on the order
    # in rpm's database.
    Scenario("only_dnf_reports_an_impossible_update_to_a_noarch_package", "refused cannot install both", repos=RULES,
             config="best=True", before=["install unsettled-1-1.i686", "install unsettled-2-1.x86_64"],
             update="unsettled", dnf="upgrade unsettled",
             differs=("Updates to packages without an architecture", "nothing")),
    # Packages whose older versions are kept
    Scenario("a_new_kernel_does_not_replace_installed_kernels", "+kernel", update="kernel", dnf="upgrade kernel"),
    Scenario("a_new_kernel_replaces_the_oldest_kernel_if_installonly_limit_is_reached",
             "^kernel", config="installonly_limit=2", update="kernel",
             dnf="upgrade kernel"),
    Scenario("a_new_kernel_replaces_no_kernel_if_installonly_limit_is_0", "+kernel", config="installonly_limit=0",
             update="kernel", dnf="upgrade kernel"),
    Scenario("a_package_in_installonlypkgs_keeps_its_older_version", "+stacked", repos=RULES,
             config="installonlypkgs=stacked", before=["install stacked-1"], update="stacked", dnf="upgrade stacked"),
    Scenario("the_removal_of_the_kernel_removes_all_its_versions", "-kernel", remove="kernel", dnf="remove kernel"),
    # Removals
    Scenario("a_removal_also_removes_an_unused_dependency", "-trellis-editor -libtrellis", remove="trellis-editor",
             dnf="remove trellis-editor"),
    Scenario("an_unused_dependency_is_kept_if_clean_requirements_on_remove_is_off", "-trellis-editor",
             config="clean_requirements_on_remove=False", remove="trellis-editor", dnf="remove trellis-editor"),
    Scenario("a_removal_also_removes_a_dependent_package", "-libtrellis -trellis-editor", remove="libtrellis",
             dnf="remove libtrellis"),
    Scenario("two_packages_are_removed_together", "-almanac -cinder-backup", remove="almanac cinder-backup",
             dnf="remove almanac cinder-backup"),
    Scenario("a_removal_keeps_a_dependency_that_another_package_needs", "-user-of-part", repos=RULES,
             before=["install user-of-part other-user-of-part"], remove="user-of-part", dnf="remove user-of-part"),
    Scenario("a_dependency_is_removed_with_both_dependent_packages", "-user-of-part -other-user-of-part -part-of-two",
             repos=RULES, before=["install user-of-part other-user-of-part"], remove="user-of-part other-user-of-part",
             dnf="remove user-of-part other-user-of-part"),
    Scenario("a_removal_also_removes_an_unused_weak_dependency", "-weakling -weak-friend", repos=RULES,
             before=["install weakling"], remove="weakling", dnf="remove weakling"),
    Scenario("one_of_two_installed_architectures_is_removed", "-libcairn.i686", remove="libcairn.i686",
             dnf="remove libcairn.i686"),
    Scenario("a_failing_pre_removal_script_prevents_the_removal", "refused stickyburr", remove="stickyburr",
             dnf="remove stickyburr"),
    # All actions together
    Scenario("an_installation_an_update_and_a_removal_are_applied_together", "+astrolabe ^abacus-cli -almanac",
             install="astrolabe", update="abacus-cli", remove="almanac",
             dnf="shell install astrolabe; upgrade abacus-cli; remove almanac"),
]

SameAsDnfTest = tests(SCENARIOS)
