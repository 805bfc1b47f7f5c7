# SPDX-License-Identifier: GPL-2.0-or-later
"""Dependencies that VYRE and dnf resolve or refuse in the same way."""

from comparison import Scenario, tests

RULES = ["extra-rules"]

SCENARIOS = [
    # Rich dependencies
    Scenario("one_of_two_alternative_dependencies_is_installed", "+rich-or +rich-left", repos=RULES, install="rich-or",
             dnf="install rich-or"),
    Scenario("no_alternative_dependency_is_installed_if_one_is_already_installed", "+rich-or", repos=RULES,
             before=["install rich-right"], install="rich-or", dnf="install rich-or"),
    Scenario("a_conditional_dependency_is_installed_if_its_condition_is_true", "+rich-if +rich-english", repos=RULES,
             install="rich-if", dnf="install rich-if"),
    Scenario("the_dependency_after_else_is_installed_if_the_condition_is_false", "+rich-else +lexicon-de +rich-german",
             repos=RULES, install="rich-else", dnf="install rich-else"),
    Scenario("a_dependency_with_two_version_limits_is_installed", "+rich-with +rich-api", repos=RULES,
             install="rich-with", dnf="install rich-with"),
    Scenario("a_conditional_weak_dependency_is_installed_if_its_condition_is_true", "+rich-weak +rich-english",
             repos=RULES, install="rich-weak", dnf="install rich-weak"),
    Scenario("a_package_that_prevents_a_conditional_conflict_is_installed", "+rich-unless +lexicon-de", repos=RULES,
             before=["install rich-left"],
             install="rich-unless", dnf="install rich-unless"),
    Scenario("installing_a_package_also_installs_a_dependency_whose_condition_it_fulfils",
             "+lexicon-de +rich-german", repos=RULES,
             before=["install rich-if"], install="lexicon-de", dnf="install lexicon-de"),
    # Weak dependencies
    Scenario("weak_dependencies_are_not_installed_if_install_weak_deps_is_off",
             "+orchard +libbough +libtwig +orchard-lang",
             config="install_weak_deps=False", install="orchard", dnf="install orchard"),
    Scenario("a_weak_dependency_is_not_installed_if_exclude_from_weak_lists_it",
             "+weakling", repos=RULES, config="exclude_from_weak=weak-friend",
             install="weakling", dnf="install weakling"),
    # Providers
    Scenario("one_of_two_providers_is_installed", "+needs-provider +provider-a", repos=RULES, install="needs-provider",
             dnf="install needs-provider"),
    Scenario("of_two_providers_the_marked_one_is_installed", "+needs-provider +provider-b", repos=RULES,
             install="needs-provider provider-b", dnf="install needs-provider provider-b"),
    Scenario("no_provider_is_installed_if_one_is_already_installed", "+needs-provider", repos=RULES,
             before=["install provider-b"], install="needs-provider", dnf="install needs-provider"),
    Scenario("a_package_is_downgraded_if_a_dependency_needs_its_older_version", "^steady +wants-old", repos=RULES,
             before=["install steady-2"], install="wants-old", dnf="install wants-old"),
    # Impossible operations
    Scenario("a_package_whose_dependency_no_repository_has_is_refused",
             "refused nothing provides", install="moonbridge",
             dnf="install moonbridge"),
    Scenario("a_conflict_with_an_installed_package_is_refused", "refused conflict", install="sandstone",
             dnf="install sandstone"),
    Scenario("a_dependency_on_an_excluded_older_version_is_refused", "refused steady", config="exclude=steady-1*",
             repos=RULES, before=["install steady-2"], install="wants-old", dnf="install wants-old"),
    Scenario("an_update_that_breaks_another_package_is_refused", "refused stuck-part", config="best=True", repos=RULES,
             before=["install stuck-user"], update="stuck-part", dnf="upgrade stuck-part"),
    Scenario("a_protected_package_is_not_removed", "refused protected", config="protected_packages=loomctl",
             remove="loomctl", dnf="remove loomctl"),
    Scenario("a_dependency_of_a_protected_package_is_not_removed", "refused protected",
             config="protected_packages=trellis-editor", remove="libtrellis", dnf="remove libtrellis"),
    # Intended differences
    Scenario("vyre_leaves_out_one_of_two_conflicting_packages", "refused conflict", install="tern-mta gull-mta",
             dnf="install tern-mta gull-mta", differs=("Packages that cannot be installed", "+tern-mta")),
    Scenario("only_dnf_installs_an_older_version_if_the_newest_version_is_impossible",
             "+lagging", repos=RULES, install="lagging",
             dnf="install lagging", differs=("The version that a mark means", "refused no-such-thing")),
    Scenario("only_vyre_reports_that_a_marked_update_is_impossible",
             "nothing", repos=RULES, before=["install stuck-user"],
             update="stuck-part", dnf="upgrade stuck-part",
             differs=("Packages that cannot be installed", "refused stuck-part")),
]

SameAsDnfTest = tests(SCENARIOS)
