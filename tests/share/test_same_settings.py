# SPDX-License-Identifier: GPL-2.0-or-later
"""Options of the configuration that have the same effect in VYRE and dnf."""

from comparison import Scenario, tests

RULES = ["extra-rules"]

SIGNED = ("sandbox-signed", "gpgcheck=1; gpgkey=file://{root}/etc/pki/rpm-gpg/RPM-GPG-KEY-larkspur")

# All updates except an impossible update.
ALL = ("^abacus-cli ^amberfont-sans ^anvil-make ^atrium-web ^barometer ^beacon-dns ^chisel-diff ^doorkeeper +kernel "
       "^libcairn ^libcairn.i686 ^libgranite ^loomctl ^meridian-tz +nettle-scan ^parrot ^quillbase ^sluice-fw "
       "^vyre-network-suite")

SCENARIOS = [
    Scenario("all_updates", ALL, config="exclude=tidewatch newpost", update="all", dnf="upgrade"),
    # Excluded packages
    Scenario("an_excluded_package", "refused exclude filtering|not in the table", config="exclude=astrolabe",
             install="astrolabe", dnf="install astrolabe"),
    Scenario("an_excluded_update", "nothing", config="exclude=abacus-cli*3.3*", update="abacus-cli",
             dnf="upgrade abacus-cli"),
    Scenario("an_excluded_dependency", "refused libbough", config="excludepkgs=libbough", install="orchard",
             dnf="install orchard"),
    Scenario("an_excluded_weak_dependency", "+weakling", repos=RULES, config="exclude=weak-friend", install="weakling",
             dnf="install weakling"),
    Scenario("an_update_excluded_by_its_repository", "nothing", repos=[("sandbox-updates", "exclude=abacus-cli")],
             update="abacus-cli", dnf="upgrade abacus-cli"),
    Scenario("a_package_not_included_by_its_repository", "refused exclude filtering|not in the table",
             repos=[("sandbox-http", "includepkgs=loupe")], install="astrolabe", dnf="install astrolabe"),
    Scenario("a_package_included_by_its_repository", "+loupe", repos=[("sandbox-http", "includepkgs=loupe")],
             install="loupe", dnf="install loupe"),
    Scenario("disabled_excludes", "+astrolabe", config="exclude=astrolabe; disable_excludes=all",
             install="astrolabe", dnf="install astrolabe"),
    Scenario("a_replacement_of_an_excluded_package", "+newpost -oldpost", config="exclude=oldpost", install="newpost",
             dnf="install newpost"),
    Scenario("a_removal_of_an_excluded_package", "nothing", config="exclude=almanac", remove="almanac",
             dnf="remove almanac"),
    # Choice of the repository
    Scenario("the_cheaper_repository", "+steady", repos=[("extra-rules", "cost=900"), ("extra-rival", "cost=500")],
             install="steady", dnf="install steady"),
    Scenario("the_cheaper_repository_with_exchanged_costs", "+steady",
             repos=[("extra-rules", "cost=500"), ("extra-rival", "cost=900")], install="steady", dnf="install steady"),
    Scenario("the_repository_of_higher_priority", "+shared",
             repos=[("extra-rules", "priority=10"), ("extra-rival", "priority=90")], install="shared",
             dnf="install shared"),
    Scenario("no_update_from_a_repository_of_lower_priority", "nothing",
             repos=[("extra-rules", "priority=10"), ("extra-rival", "priority=90")], before=["install shared-1"],
             update="shared", dnf="upgrade shared"),
    Scenario("an_update_from_a_repository_of_equal_priority", "^shared", repos=["extra-rules", "extra-rival"],
             before=["install shared-1"], update="shared", dnf="upgrade shared"),
    Scenario("a_missing_repository", "+astrolabe", repos=[
        ("extra-rival", "baseurl=file:///nowhere; skip_if_unavailable=1")], install="astrolabe",
             dnf="install astrolabe"),
    # Best, strict
    Scenario("an_impossible_update_with_best", "refused tidewatch", config="best=True", update="tidewatch",
             dnf="upgrade tidewatch"),
    Scenario("an_update_with_best", "^leading ^leading-part", config="best=True", repos=RULES,
             before=["install leading-1 leading-part-1"], update="leading", dnf="upgrade leading"),
    Scenario("an_install_with_best", "refused no-such-thing", config="best=True", repos=RULES, install="lagging",
             dnf="install lagging"),
    Scenario("an_install_beside_an_impossible_one_with_skip_broken", "+astrolabe", config="skip_broken=1",
             install="moonbridge astrolabe", dnf="install moonbridge astrolabe"),
    Scenario("an_install_beside_an_impossible_one_without_strict", "+astrolabe", config="strict=0",
             install="moonbridge astrolabe", dnf="install moonbridge astrolabe"),
    # Options of the transaction
    Scenario("no_documentation", "+handbook", config="tsflags=nodocs", repos=RULES, install="handbook",
             dnf="install handbook"),
    Scenario("documentation", "+handbook", repos=RULES, install="handbook", dnf="install handbook"),
    Scenario("no_scripts", "+stamper", config="tsflags=noscripts", repos=RULES, install="stamper",
             dnf="install stamper"),
    Scenario("scripts", "+stamper", repos=RULES, install="stamper", dnf="install stamper"),
    Scenario("no_obsoletes", "+newpost -oldpost", config="obsoletes=False", install="newpost", dnf="install newpost"),
    Scenario("a_forbidden_change_of_the_vendor", "nothing", config="allow_vendor_change=False", repos=RULES,
             before=["install vendor-kept-1"], update="vendor-kept", dnf="upgrade vendor-kept",
             differs=("Packages that cannot be installed", "refused vendor-kept")),
    Scenario("a_test_transaction", "nothing", config="tsflags=test", install="astrolabe", dnf="install astrolabe"),
    # The plug-in versionlock
    Scenario("a_locked_version", "nothing", config="plugins=1; pluginconfpath={plugins}", update="abacus-cli",
             dnf="upgrade abacus-cli"),
    Scenario("all_updates_except_a_locked_package", ALL.replace("^abacus-cli ", ""),
             config="plugins=1; pluginconfpath={plugins}; exclude=tidewatch newpost", update="all", dnf="upgrade"),
    # Signatures
    Scenario("a_key_is_imported", "+wax-tablet +gpg-pubkey", repos=[SIGNED], install="wax-tablet",
             dnf="install wax-tablet"),
    Scenario("an_unsigned_package", "refused wax-blank", repos=[SIGNED], install="wax-blank",
             dnf="install wax-blank"),
    # Kinds of metadata
    Scenario("metadata_in_zchunk", "+chunky", repos=["extra-zchunk"], install="chunky", dnf="install chunky"),
    Scenario("metadata_in_zstd", "+zesty", repos=["extra-zstd"], install="zesty", dnf="install zesty"),
    Scenario("advisories", "^adviser", repos=["extra-advisories"], before=["install adviser-1.0 unadvised-1.0"],
             update="adviser", dnf="upgrade adviser"),
    Scenario("delta_rpms", "^delta-tides", repos=["extra-deltas"], before=["install delta-tides-1.0"],
             update="delta-tides", dnf="upgrade delta-tides"),
    # Intended differences
    Scenario("all_updates_without_packages_that_replace_others", ALL + " +newpost -oldpost", config="exclude=tidewatch",
             update="all", dnf="upgrade", differs=("Replaced packages", ALL)),
    Scenario("a_mark_means_one_architecture", "+libmoss +libmoss.i686", config="multilib_policy=all",
             install="libmoss.x86_64", dnf="install libmoss", differs=("The architecture of a mark", "+libmoss")),
]

SameAsDnfTest = tests(SCENARIOS)
