# SPDX-License-Identifier: GPL-2.0-or-later
"""Dependencies that VYRE and dnf resolve or refuse in the same way."""

from comparison import Scenario, tests

RULES = ["extra-rules"]

SCENARIOS = [
    # Rich dependencies
    Scenario("one_of_two_alternative_dependencies_is_installed", "+rich-or +rich-left", repos=RULES, install="rich-or",
             dnf="install rich-or"),
    Scenario("no_alternative_dependency_is_installed_if_one_is_present", "+rich-or", repos=RULES,
             before=["install rich-right"], install="rich-or", dnf="install rich-or"),
    Scenario("a_conditional_dependency_is_installed_if_its_condition_is_true", "+rich-if +rich-english", repos=RULES,
             install="rich-if", dnf="install rich-if"),
    Scenario("the_other_dependency_is_installed_if_the_condition_is_false", "+rich-else +lexicon-de +rich-german",
             repos=RULES, install="rich-else", dnf="install rich-else"),
    Scenario("a_dependency_with_two_version_limits_is_installed", "+rich-with +rich-api", repos=RULES,
             install="rich-with", dnf="install rich-with"),
    Scenario("a_conditional_weak_dependency_is_installed_if_its_condition_is_true", "+rich-weak +rich-english",
             repos=RULES, install="rich-weak", dnf="install rich-weak"),
    Scenario("a_conflict_is_avoided_by_installing_its_exception", "+rich-unless +lexicon-de", repos=RULES,
             before=["install rich-left"],
             install="rich-unless", dnf="install rich-unless"),
    Scenario("a_new_package_can_make_a_conditional_dependency_necessary", "+lexicon-de +rich-german", repos=RULES,
             before=["install rich-if"], install="lexicon-de", dnf="install lexicon-de"),
    # Weak dependencies
    Scenario("weak_dependencies_can_be_switched_off", "+orchard +libbough +libtwig +orchard-lang",
             config="install_weak_deps=False", install="orchard", dnf="install orchard"),
    Scenario("a_weak_dependency_can_be_excluded", "+weakling", repos=RULES, config="exclude_from_weak=weak-friend",
             install="weakling", dnf="install weakling"),
    # Providers
    Scenario("one_of_two_providers_is_installed", "+needs-provider +provider-a", repos=RULES, install="needs-provider",
             dnf="install needs-provider"),
    Scenario("the_marked_provider_is_installed", "+needs-provider +provider-b", repos=RULES,
             install="needs-provider provider-b", dnf="install needs-provider provider-b"),
    Scenario("no_provider_is_installed_if_one_is_present", "+needs-provider", repos=RULES,
             before=["install provider-b"], install="needs-provider", dnf="install needs-provider"),
    Scenario("a_package_is_downgraded_if_a_dependency_needs_its_older_version", "^steady +wants-old", repos=RULES,
             before=["install steady-2"], install="wants-old", dnf="install wants-old"),
    # Impossible operations
    Scenario("a_package_without_its_dependency_is_refused", "refused nothing provides", install="moonbridge",
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
    Scenario("only_dnf_installs_an_older_version_instead", "+lagging", repos=RULES, install="lagging",
             dnf="install lagging", differs=("The version that a mark means", "refused no-such-thing")),
    Scenario("only_vyre_reports_that_an_update_is_impossible", "nothing", repos=RULES, before=["install stuck-user"],
             update="stuck-part", dnf="upgrade stuck-part", differs=("Packages that cannot be installed",
             "refused stuck-part")),
]

SameAsDnfTest = tests(SCENARIOS)
