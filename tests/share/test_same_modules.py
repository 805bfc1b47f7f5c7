# SPDX-License-Identifier: GPL-2.0-or-later
"""Module streams that VYRE and dnf use in the same way."""

from comparison import Scenario, tests

MODULES = ["extra-modules"]

# If a stream is inactive, neither program offers its packages.
HIDDEN = "refused modular filtering|not in the table"

SCENARIOS = [
    Scenario("a_package_of_the_default_stream_is_installed", "+grove-cli +grove-data", repos=MODULES,
             install="grove-cli", dnf="install grove-cli"),
    Scenario("a_dependency_in_the_default_stream_is_installed", "+grove-map +grove-cli +grove-data", repos=MODULES,
             install="grove-map", dnf="install grove-map"),
    Scenario("a_package_of_the_enabled_stream_is_installed", "+grove-cli +grove-data", repos=MODULES,
             before=["module enable grove:2"], install="grove-cli-2.2", dnf="install grove-cli"),
    Scenario("a_package_outside_modules_is_installed_if_its_module_is_disabled", "+grove-cli", repos=MODULES,
             before=["module disable grove"], install="grove-cli-3.0", dnf="install grove-cli"),
    Scenario("a_package_of_an_inactive_stream_cannot_be_installed", HIDDEN, repos=MODULES, install="orangery",
             dnf="install orangery"),
    Scenario("only_dnf_can_install_a_whole_module_stream",
             "+grove-cli +grove-data", repos=MODULES, install="grove-cli-2.2",
             dnf="module install grove:2/common", differs=("Module streams", "refused not in the table")),
    Scenario("an_enabled_stream_is_used_if_its_module_has_no_default", "+orangery", repos=MODULES,
             before=["module enable orangery:5"], install="orangery", dnf="install orangery"),
    Scenario("a_stream_cannot_be_used_if_it_needs_an_inactive_stream", HIDDEN, repos=MODULES,
             install="tidepool", dnf="install tidepool"),
    Scenario("a_stream_can_be_used_if_it_needs_the_enabled_stream", "+tidepool +grove-cli +grove-data", repos=MODULES,
             before=["module enable grove:2"], install="tidepool", dnf="install tidepool"),
    Scenario("a_stream_cannot_be_used_if_another_stream_of_its_dependency_is_enabled", HIDDEN, repos=MODULES,
             before=["install grove-cli"], install="tidepool", dnf="install tidepool"),
    Scenario("a_conflict_with_a_package_of_a_stream_is_refused", "refused conflict", repos=MODULES,
             before=["install grove-cli"], install="grove-axe", dnf="install grove-axe"),
    Scenario("packages_are_updated_to_the_newly_enabled_stream", "^grove-cli ^grove-data", repos=MODULES,
             before=["install grove-cli", "module reset grove", "module enable grove:2"],
             update="grove-cli grove-data", dnf="upgrade grove-cli grove-data"),
    Scenario("a_newer_package_outside_the_module_is_not_an_update",
             "nothing", repos=MODULES, before=["install grove-cli"],
             update="grove-cli", dnf="upgrade grove-cli"),
    Scenario("a_removal_leaves_the_stream_enabled", "-grove-cli -grove-data", repos=MODULES,
             before=["install grove-cli"], remove="grove-cli", dnf="remove grove-cli"),
    Scenario("a_package_of_an_installed_module_profile_is_removed", "-grove-cli -grove-data", repos=MODULES,
             before=["module install grove:1/common"], remove="grove-cli", dnf="remove grove-cli"),
    Scenario("a_package_outside_modules_is_installed_if_module_hotfixes_is_set", "+grove-cli",
             repos=[("extra-modules", "module_hotfixes=1")], install="grove-cli", dnf="install grove-cli"),
    Scenario("a_package_of_an_enabled_obsolete_stream_is_installed", "+grove-cli +grove-data", repos=MODULES,
             before=["module enable grove:0"], install="grove-cli", dnf="install grove-cli"),
    Scenario("a_stream_switch_is_refused_by_default", "refused not possible to switch", repos=MODULES,
             config="module_obsoletes=True", before=["module enable grove:0"], install="grove-cli",
             dnf="install grove-cli"),
    Scenario("a_stream_switch_is_applied_if_module_stream_switch_is_set", "+grove-cli +grove-data", repos=MODULES,
             config="module_obsoletes=True; module_stream_switch=True", before=["module enable grove:0"],
             install="grove-cli", dnf="install grove-cli"),
    Scenario("no_streams_are_saved_if_rpm_refuses_the_transaction", "refused palette.conf", repos=MODULES,
             install="grove-cli inkwell-classic inkwell-modern",
             dnf="install grove-cli inkwell-classic inkwell-modern"),
    Scenario("the_streams_are_saved_if_the_transaction_partly_fails", "failed brokenlatch +grove-cli +grove-data",
             repos=MODULES, install="grove-cli brokenlatch", dnf="install grove-cli brokenlatch"),
]

SameAsDnfTest = tests(SCENARIOS)
