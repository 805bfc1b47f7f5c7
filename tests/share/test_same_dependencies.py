# SPDX-License-Identifier: GPL-2.0-or-later
"""Dependencies that VYRE and dnf resolve or refuse in the same way."""

from comparison import Scenario, tests

RULES = ["extra-rules"]

SCENARIOS = [
    # Rich dependencies
    Scenario("either_of_two_dependencies", "+rich-or +rich-left", repos=RULES, install="rich-or",
             dnf="install rich-or"),
    Scenario("either_of_two_dependencies_if_one_is_installed", "+rich-or", repos=RULES, before=["install rich-right"],
             install="rich-or", dnf="install rich-or"),
    Scenario("a_dependency_if_another_package_is_installed", "+rich-if +rich-english", repos=RULES, install="rich-if",
             dnf="install rich-if"),
    Scenario("a_dependency_if_another_package_is_installed_or_else_a_third", "+rich-else +lexicon-de +rich-german",
             repos=RULES, install="rich-else", dnf="install rich-else"),
    Scenario("a_dependency_within_two_bounds", "+rich-with +rich-api", repos=RULES, install="rich-with",
             dnf="install rich-with"),
    Scenario("a_weak_dependency_if_another_package_is_installed", "+rich-weak +rich-english", repos=RULES,
             install="rich-weak", dnf="install rich-weak"),
    Scenario("a_conflict_unless_another_package_is_installed", "+rich-unless +lexicon-de", repos=RULES,
             before=["install rich-left"],
             install="rich-unless", dnf="install rich-unless"),
    Scenario("a_dependency_that_a_new_package_makes_necessary", "+lexicon-de +rich-german", repos=RULES,
             before=["install rich-if"], install="lexicon-de", dnf="install lexicon-de"),
    # Weak dependencies
    Scenario("weak_dependencies_off", "+orchard +libbough +libtwig +orchard-lang", config="install_weak_deps=False",
             install="orchard", dnf="install orchard"),
    Scenario("weak_dependencies_excluded", "+weakling", repos=RULES, config="exclude_from_weak=weak-friend",
             install="weakling", dnf="install weakling"),
    # Providers
    Scenario("one_of_two_providers", "+needs-provider +provider-a", repos=RULES, install="needs-provider",
             dnf="install needs-provider"),
    Scenario("the_marked_provider", "+needs-provider +provider-b", repos=RULES,
             install="needs-provider provider-b", dnf="install needs-provider provider-b"),
    Scenario("the_installed_provider", "+needs-provider", repos=RULES, before=["install provider-b"],
             install="needs-provider", dnf="install needs-provider"),
    Scenario("a_dependency_on_an_older_version", "^steady +wants-old", repos=RULES, before=["install steady-2"],
             install="wants-old", dnf="install wants-old"),
    # Impossible operations
    Scenario("a_missing_dependency", "refused nothing provides", install="moonbridge", dnf="install moonbridge"),
    Scenario("a_conflict_with_an_installed_package", "refused conflict", install="sandstone", dnf="install sandstone"),
    Scenario("a_dependency_on_an_older_version_that_is_excluded", "refused steady", config="exclude=steady-1*",
             repos=RULES, before=["install steady-2"], install="wants-old", dnf="install wants-old"),
    Scenario("an_update_that_breaks_another_package", "refused stuck-part", config="best=True", repos=RULES,
             before=["install stuck-user"], update="stuck-part", dnf="upgrade stuck-part"),
    Scenario("a_removal_of_a_protected_package", "refused protected", config="protected_packages=loomctl",
             remove="loomctl", dnf="remove loomctl"),
    Scenario("a_removal_of_a_dependency_of_a_protected_package", "refused protected",
             config="protected_packages=trellis-editor", remove="libtrellis", dnf="remove libtrellis"),
    # Intended differences
    Scenario("a_conflict_of_two_marked_packages", "refused conflict", install="tern-mta gull-mta",
             dnf="install tern-mta gull-mta", differs=("Packages that cannot be installed", "+tern-mta")),
    Scenario("a_mark_means_the_version_of_its_row", "+lagging", repos=RULES, install="lagging",
             dnf="install lagging", differs=("The version of a mark", "refused no-such-thing")),
    Scenario("a_marked_update_that_is_impossible", "nothing", repos=RULES, before=["install stuck-user"],
             update="stuck-part", dnf="upgrade stuck-part", differs=("Packages that cannot be installed",
             "refused stuck-part")),
]

SameAsDnfTest = tests(SCENARIOS)
