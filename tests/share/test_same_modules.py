# SPDX-License-Identifier: GPL-2.0-or-later
"""Module streams that VYRE and dnf use in the same way."""

from comparison import Scenario, tests

MODULES = ["extra-modules"]

# Neither program offers a package of a stream that is not active.
HIDDEN = "refused modular filtering|not in the table"

SCENARIOS = [
    Scenario("a_package_of_the_default_stream", "+grove-cli +grove-data", repos=MODULES, install="grove-cli",
             dnf="install grove-cli"),
    Scenario("a_dependency_of_the_default_stream", "+grove-map +grove-cli +grove-data", repos=MODULES,
             install="grove-map", dnf="install grove-map"),
    Scenario("a_package_of_the_enabled_stream", "+grove-cli +grove-data", repos=MODULES,
             before=["module enable grove:2"], install="grove-cli-2.2", dnf="install grove-cli"),
    Scenario("a_package_outside_its_disabled_module", "+grove-cli", repos=MODULES,
             before=["module disable grove"], install="grove-cli-3.0", dnf="install grove-cli"),
    Scenario("a_package_of_a_stream_that_is_not_the_default", HIDDEN, repos=MODULES, install="orangery",
             dnf="install orangery"),
    Scenario("a_stream_has_no_row", "+grove-cli +grove-data", repos=MODULES, install="grove-cli-2.2",
             dnf="module install grove:2/common", differs=("Streams of modules", "refused not in the table")),
    Scenario("a_package_of_an_enabled_module_without_a_default", "+orangery", repos=MODULES,
             before=["module enable orangery:5"], install="orangery", dnf="install orangery"),
    Scenario("a_package_of_a_stream_that_needs_a_stream_other_than_the_default", HIDDEN, repos=MODULES,
             install="tidepool", dnf="install tidepool"),
    Scenario("a_package_of_a_stream_that_needs_the_enabled_stream", "+tidepool +grove-cli +grove-data", repos=MODULES,
             before=["module enable grove:2"], install="tidepool", dnf="install tidepool"),
    Scenario("a_package_of_a_stream_that_needs_a_stream_other_than_the_enabled", HIDDEN, repos=MODULES,
             before=["install grove-cli"], install="tidepool", dnf="install tidepool"),
    Scenario("a_conflict_with_a_package_of_a_stream", "refused conflict", repos=MODULES,
             before=["install grove-cli"], install="grove-axe", dnf="install grove-axe"),
    Scenario("an_update_to_the_newly_enabled_stream", "^grove-cli ^grove-data", repos=MODULES,
             before=["install grove-cli", "module reset grove", "module enable grove:2"],
             update="grove-cli grove-data", dnf="upgrade grove-cli grove-data"),
    Scenario("no_update_to_a_package_outside_the_module", "nothing", repos=MODULES, before=["install grove-cli"],
             update="grove-cli", dnf="upgrade grove-cli"),
    Scenario("a_removal_leaves_the_stream_enabled", "-grove-cli -grove-data", repos=MODULES,
             before=["install grove-cli"], remove="grove-cli", dnf="remove grove-cli"),
    Scenario("a_removal_of_a_package_of_a_profile", "-grove-cli -grove-data", repos=MODULES,
             before=["module install grove:1/common"], remove="grove-cli", dnf="remove grove-cli"),
    Scenario("a_package_of_a_repository_with_module_hotfixes", "+grove-cli",
             repos=[("extra-modules", "module_hotfixes=1")], install="grove-cli", dnf="install grove-cli"),
    Scenario("an_obsolete_stream", "+grove-cli +grove-data", repos=MODULES, before=["module enable grove:0"],
             install="grove-cli", dnf="install grove-cli"),
    Scenario("a_refused_switch", "refused not possible to switch", repos=MODULES,
             config="module_obsoletes=True", before=["module enable grove:0"], install="grove-cli",
             dnf="install grove-cli"),
    Scenario("an_allowed_switch", "+grove-cli +grove-data", repos=MODULES,
             config="module_obsoletes=True; module_stream_switch=True", before=["module enable grove:0"],
             install="grove-cli", dnf="install grove-cli"),
    Scenario("a_transaction_that_rpm_refuses_saves_no_streams", "refused palette.conf", repos=MODULES,
             install="grove-cli inkwell-classic inkwell-modern",
             dnf="install grove-cli inkwell-classic inkwell-modern"),
    Scenario("a_transaction_that_partly_fails_saves_the_streams", "failed brokenlatch +grove-cli +grove-data",
             repos=MODULES, install="grove-cli brokenlatch", dnf="install grove-cli brokenlatch"),
]

SameAsDnfTest = tests(SCENARIOS)
