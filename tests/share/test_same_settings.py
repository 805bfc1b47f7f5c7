# SPDX-License-Identifier: GPL-2.0-or-later
"""Configuration options that have the same effect in VYRE and dnf."""

from comparison import Scenario, tests

RULES = ["extra-rules"]

SIGNED = ("sandbox-signed", "gpgcheck=1; gpgkey=file://{root}/etc/pki/rpm-gpg/RPM-GPG-KEY-larkspur")

# All updates, without the impossible update of tidewatch, which the scenarios exclude.
ALL = ("^abacus-cli ^amberfont-sans ^anvil-make ^atrium-web ^barometer ^beacon-dns ^chisel-diff ^doorkeeper +kernel "
       "^libcairn ^libcairn.i686 ^libgranite ^loomctl ^meridian-tz +nettle-scan ^parrot ^quillbase ^sluice-fw "
       "^vyre-network-suite")

SCENARIOS = [
    Scenario("all_updates_are_installed", ALL, config="exclude=tidewatch newpost", update="all", dnf="upgrade"),
    # Excluded packages
    Scenario("an_excluded_package_cannot_be_installed", "refused exclude filtering|not in the table",
             config="exclude=astrolabe", install="astrolabe", dnf="install astrolabe"),
    Scenario("an_excluded_update_is_not_installed", "nothing", config="exclude=abacus-cli*3.3*", update="abacus-cli",
             dnf="upgrade abacus-cli"),
    Scenario("a_package_is_refused_if_its_dependency_is_excluded", "refused libbough", config="excludepkgs=libbough",
             install="orchard", dnf="install orchard"),
    Scenario("an_excluded_weak_dependency_is_not_installed", "+weakling", repos=RULES, config="exclude=weak-friend",
             install="weakling", dnf="install weakling"),
    Scenario("an_update_that_its_repository_excludes_is_not_installed", "nothing",
             repos=[("sandbox-updates", "exclude=abacus-cli")], update="abacus-cli", dnf="upgrade abacus-cli"),
    Scenario("a_package_outside_includepkgs_cannot_be_installed", "refused exclude filtering|not in the table",
             repos=[("sandbox-http", "includepkgs=loupe")], install="astrolabe", dnf="install astrolabe"),
    Scenario("a_package_in_includepkgs_is_installed", "+loupe", repos=[("sandbox-http", "includepkgs=loupe")],
             install="loupe", dnf="install loupe"),
    Scenario("an_excluded_package_is_installed_if_disable_excludes_is_set", "+astrolabe",
             config="exclude=astrolabe; disable_excludes=all", install="astrolabe", dnf="install astrolabe"),
    Scenario("an_excluded_installed_package_is_replaced_by_a_package_that_obsoletes_it",
             "+newpost -oldpost", config="exclude=oldpost",
             install="newpost", dnf="install newpost"),
    Scenario("an_excluded_installed_package_is_not_removed", "nothing", config="exclude=almanac", remove="almanac",
             dnf="remove almanac"),
    # The choice between repositories
    Scenario("the_repository_extra_rival_is_used_if_its_cost_is_lower", "+steady",
             repos=[("extra-rules", "cost=900"), ("extra-rival", "cost=500")], install="steady", dnf="install steady"),
    Scenario("the_repository_extra_rules_is_used_if_its_cost_is_lower", "+steady",
             repos=[("extra-rules", "cost=500"), ("extra-rival", "cost=900")], install="steady", dnf="install steady"),
    Scenario("the_repository_with_the_higher_priority_is_used", "+shared",
             repos=[("extra-rules", "priority=10"), ("extra-rival", "priority=90")], install="shared",
             dnf="install shared"),
    Scenario("a_repository_with_a_lower_priority_offers_no_update", "nothing",
             repos=[("extra-rules", "priority=10"), ("extra-rival", "priority=90")], before=["install shared-1"],
             update="shared", dnf="upgrade shared"),
    Scenario("a_repository_with_the_same_priority_offers_an_update", "^shared", repos=["extra-rules", "extra-rival"],
             before=["install shared-1"], update="shared", dnf="upgrade shared"),
    Scenario("a_missing_repository_is_skipped_if_skip_if_unavailable_is_set", "+astrolabe", repos=[
        ("extra-rival", "baseurl=file:///nowhere; skip_if_unavailable=1")], install="astrolabe",
             dnf="install astrolabe"),
    # best, strict, skip_broken
    Scenario("an_impossible_update_is_refused_if_best_is_set", "refused tidewatch", config="best=True",
             update="tidewatch", dnf="upgrade tidewatch"),
    Scenario("an_update_is_installed_if_best_is_set", "^leading ^leading-part", config="best=True", repos=RULES,
             before=["install leading-1 leading-part-1"], update="leading", dnf="upgrade leading"),
    Scenario("an_older_version_is_not_installed_if_best_is_set", "refused no-such-thing", config="best=True",
             repos=RULES, install="lagging", dnf="install lagging"),
    Scenario("an_impossible_package_is_left_out_if_skip_broken_is_set", "+astrolabe", config="skip_broken=1",
             install="moonbridge astrolabe", dnf="install moonbridge astrolabe"),
    Scenario("an_impossible_package_is_left_out_if_strict_is_off", "+astrolabe", config="strict=0",
             install="moonbridge astrolabe", dnf="install moonbridge astrolabe"),
    # Transaction options
    Scenario("documentation_is_left_out_if_nodocs_is_set", "+handbook", config="tsflags=nodocs", repos=RULES,
             install="handbook", dnf="install handbook"),
    Scenario("documentation_is_installed_by_default", "+handbook", repos=RULES, install="handbook",
             dnf="install handbook"),
    Scenario("scripts_do_not_run_if_noscripts_is_set", "+stamper", config="tsflags=noscripts", repos=RULES,
             install="stamper", dnf="install stamper"),
    Scenario("scripts_run_by_default", "+stamper", repos=RULES, install="stamper", dnf="install stamper"),
    Scenario("a_marked_package_replaces_obsoleted_packages_even_if_the_obsoletes_option_is_off", "+newpost -oldpost",
             config="obsoletes=False", install="newpost", dnf="install newpost"),
    Scenario("an_update_from_another_vendor_is_not_installed_if_allow_vendor_change_is_off",
             "nothing", config="allow_vendor_change=False",
             repos=RULES, before=["install vendor-kept-1"], update="vendor-kept", dnf="upgrade vendor-kept",
             differs=("Packages that cannot be installed", "refused vendor-kept")),
    Scenario("a_transaction_changes_nothing_if_tsflags_contains_test",
             "nothing", config="tsflags=test", install="astrolabe",
             dnf="install astrolabe"),
    # The versionlock plug-in
    Scenario("a_package_with_a_version_lock_is_not_updated", "nothing", config="plugins=1; pluginconfpath={plugins}",
             update="abacus-cli", dnf="upgrade abacus-cli"),
    Scenario("all_updates_except_the_locked_package_are_installed", ALL.replace("^abacus-cli ", ""),
             config="plugins=1; pluginconfpath={plugins}; exclude=tidewatch newpost", update="all", dnf="upgrade"),
    # Signatures
    Scenario("the_key_of_a_signed_package_is_imported", "+wax-tablet +gpg-pubkey", repos=[SIGNED], install="wax-tablet",
             dnf="install wax-tablet"),
    Scenario("an_unsigned_package_is_refused", "refused wax-blank", repos=[SIGNED], install="wax-blank",
             dnf="install wax-blank"),
    # Metadata formats
    Scenario("metadata_in_zchunk_format_can_be_read", "+chunky", repos=["extra-zchunk"], install="chunky",
             dnf="install chunky"),
    Scenario("metadata_in_zstd_format_can_be_read", "+zesty", repos=["extra-zstd"], install="zesty",
             dnf="install zesty"),
    Scenario("an_update_with_advisories_is_installed", "^adviser", repos=["extra-advisories"],
             before=["install adviser-1.0 unadvised-1.0"], update="adviser", dnf="upgrade adviser"),
    Scenario("an_update_with_a_delta_rpm_is_installed", "^delta-tides", repos=["extra-deltas"],
             before=["install delta-tides-1.0"], update="delta-tides", dnf="upgrade delta-tides"),
    # Intended differences
    Scenario("only_dnf_replaces_obsoleted_packages_in_an_update_of_all_packages", ALL + " +newpost -oldpost",
             config="exclude=tidewatch", update="all", dnf="upgrade", differs=("Replaced packages", ALL)),
    Scenario("only_dnf_installs_both_architectures_if_multilib_policy_is_all",
             "+libmoss +libmoss.i686", config="multilib_policy=all",
             install="libmoss.x86_64", dnf="install libmoss",
             differs=("The architecture that a mark means", "+libmoss")),
]

SameAsDnfTest = tests(SCENARIOS)
