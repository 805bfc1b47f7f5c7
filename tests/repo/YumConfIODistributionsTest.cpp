// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>

#include "tests/repo/ScratchConfiguration.h"

// Tests that VYRE keeps the contents of files that distributions ship.
class YumConfIODistributionsTest : public ScratchConfiguration
{
    Q_OBJECT

private Q_SLOTS:
    void writingARepositoryFileOfADistributionKeepsItsContents_data();
    void writingARepositoryFileOfADistributionKeepsItsContents();
    void editingOneValueInAFileOfADistributionChangesOnlyItsLine();
};

void YumConfIODistributionsTest::writingARepositoryFileOfADistributionKeepsItsContents_data()
{
    QTest::addColumn<QByteArray>("read");
    QTest::addColumn<QByteArray>("written");
    // A description of each repository: "identifier, enabled, gpgcheck, number of URLs".
    QTest::addColumn<QStringList>("repositories");

    QTest::newRow("a release with debug and source sections")
        << QByteArray(
               "# larkspur.repo\n"
               "#\n"
               "# The mirror system uses the address of the client; to use one mirror, comment out\n"
               "# the metalink line and uncomment the baseurl line.\n"
               "\n"
               "[larkspur]\n"
               "name=Larkspur $releasever - $basearch\n"
               "#baseurl=http://download.example/pub/larkspur/releases/$releasever/Everything/$basearch/os/\n"
               "metalink=https://mirrors.larkspur.example/metalink?repo=larkspur-$releasever&arch=$basearch\n"
               "enabled=1\n"
               "countme=1\n"
               "metadata_expire=7d\n"
               "repo_gpgcheck=0\n"
               "type=rpm\n"
               "gpgcheck=1\n"
               "gpgkey=file:///etc/pki/rpm-gpg/RPM-GPG-KEY-larkspur-$releasever-$basearch\n"
               "skip_if_unavailable=False\n"
               "\n"
               "[larkspur-debuginfo]\n"
               "name=Larkspur $releasever - $basearch - Debug\n"
               "enabled=0\n"
               "gpgcheck=1\n"
               "gpgkey=file:///etc/pki/rpm-gpg/RPM-GPG-KEY-larkspur-$releasever-$basearch\n"
               "\n"
               "# the sources of it\n"
               "[larkspur-source]\n"
               "name=Larkspur $releasever - Source\n"
               "enabled=0\n"
               "gpgcheck=1\n")
        << QByteArray(
               "[larkspur]\n"
               "name=Larkspur $releasever - $basearch\n"
               "enabled=1\n"
               "gpgcheck=1\n"
               "#baseurl=http://download.example/pub/larkspur/releases/$releasever/Everything/$basearch/os/\n"
               "metalink=https://mirrors.larkspur.example/metalink?repo=larkspur-$releasever&arch=$basearch\n"
               "countme=1\n"
               "metadata_expire=7d\n"
               "repo_gpgcheck=0\n"
               "type=rpm\n"
               "gpgkey=file:///etc/pki/rpm-gpg/RPM-GPG-KEY-larkspur-$releasever-$basearch\n"
               "skip_if_unavailable=False\n"
               "\n"
               "[larkspur-debuginfo]\n"
               "name=Larkspur $releasever - $basearch - Debug\n"
               "enabled=0\n"
               "gpgcheck=1\n"
               "gpgkey=file:///etc/pki/rpm-gpg/RPM-GPG-KEY-larkspur-$releasever-$basearch\n"
               "# the sources of it\n"
               "\n"
               "[larkspur-source]\n"
               "name=Larkspur $releasever - Source\n"
               "enabled=0\n"
               "gpgcheck=1\n")
        << QStringList({QStringLiteral("larkspur, 2, 2, 0"), QStringLiteral("larkspur-debuginfo, 0, 2, 0"),
                        QStringLiteral("larkspur-source, 0, 2, 0")});

    QTest::newRow("written by a subscription manager")
        << QByteArray("#\n"
                      "# Certificate-Based Repositories\n"
                      "# Managed by the subscription service\n"
                      "#\n"
                      "# *** This file is auto-generated.  Changes made here will be over-written. ***\n"
                      "#\n"
                      "\n"
                      "[heath-9-for-x86_64-baseos-rpms]\n"
                      "name = Heath 9 for x86_64 - BaseOS (RPMs)\n"
                      "baseurl = https://cdn.heath.example/content/dist/heath9/$releasever/x86_64/baseos/os\n"
                      "enabled = 1\n"
                      "gpgcheck = 1\n"
                      "gpgkey = file:///etc/pki/rpm-gpg/RPM-GPG-KEY-heath-release\n"
                      "sslverify = 1\n"
                      "sslcacert = /etc/rhsm/ca/heath-uep.pem\n"
                      "sslclientkey = /etc/pki/entitlement/8142-key.pem\n"
                      "sslclientcert = /etc/pki/entitlement/8142.pem\n"
                      "metadata_expire = 86400\n"
                      "enabled_metadata = 1\n"
                      "\n"
                      "\n"
                      "[heath-9-for-x86_64-supplementary-rpms]\n"
                      "name = Heath 9 for x86_64 - Supplementary (RPMs)\n"
                      "enabled = 0\n"
                      "proxy = \n"
                      "\n")
        << QByteArray("[heath-9-for-x86_64-baseos-rpms]\n"
                      "name=Heath 9 for x86_64 - BaseOS (RPMs)\n"
                      "baseurl=https://cdn.heath.example/content/dist/heath9/$releasever/x86_64/baseos/os\n"
                      "enabled=1\n"
                      "gpgcheck=1\n"
                      "gpgkey = file:///etc/pki/rpm-gpg/RPM-GPG-KEY-heath-release\n"
                      "sslverify = 1\n"
                      "sslcacert = /etc/rhsm/ca/heath-uep.pem\n"
                      "sslclientkey = /etc/pki/entitlement/8142-key.pem\n"
                      "sslclientcert = /etc/pki/entitlement/8142.pem\n"
                      "metadata_expire = 86400\n"
                      "enabled_metadata = 1\n"
                      "\n"
                      "[heath-9-for-x86_64-supplementary-rpms]\n"
                      "name=Heath 9 for x86_64 - Supplementary (RPMs)\n"
                      "enabled=0\n"
                      "proxy = \n")
        << QStringList({QStringLiteral("heath-9-for-x86_64-baseos-rpms, 2, 2, 1"),
                        QStringLiteral("heath-9-for-x86_64-supplementary-rpms, 0, 1, 0")});

    QTest::newRow("several URLs and keys on lines of their own")
        << QByteArray(
               "[moor-base]\n"
               "name=Moor - Base\n"
               "mirrorlist=http://mirrorlist.moor.example/?release=$releasever&arch=$basearch&repo=os\n"
               "baseurl=http://a.moor.example/$releasever/os/$basearch/\n"
               "        http://b.moor.example/$releasever/os/$basearch/\n"
               "\tftp://c.moor.example/$releasever/os/$basearch/   \n"
               "gpgcheck=1\n"
               "gpgkey=file:///etc/pki/rpm-gpg/RPM-GPG-KEY-moor\n"
               "       file:///etc/pki/rpm-gpg/RPM-GPG-KEY-moor-testing\n"
               "exclude=kernel*\n"
               "    # not a comment, but a part of the list\n"
               "    [moor-plus]\n"
               "\n"
               "#additional packages\n"
               "[moor-extras]\n"
               "name:Moor - Extras\n"
               ";priority=10\n"
               "gpgcheck:0")
        << QByteArray(
               "[moor-base]\n"
               "name=Moor - Base\n"
               "baseurl=http://a.moor.example/$releasever/os/$basearch/\n"
               "        http://b.moor.example/$releasever/os/$basearch/\n"
               "        ftp://c.moor.example/$releasever/os/$basearch/\n"
               "        \n"
               "mirrorlist=http://mirrorlist.moor.example/?release=$releasever&arch=$basearch&repo=os\n"
               "gpgcheck=1\n"
               "gpgkey=file:///etc/pki/rpm-gpg/RPM-GPG-KEY-moor\n"
               "       file:///etc/pki/rpm-gpg/RPM-GPG-KEY-moor-testing\n"
               "exclude=kernel*\n"
               "    # not a comment, but a part of the list\n"
               "    [moor-plus]\n"
               "#additional packages\n"
               "\n"
               "[moor-extras]\n"
               "name=Moor - Extras\n"
               "gpgcheck=0\n"
               ";priority=10\n")
        << QStringList({QStringLiteral("moor-base, 1, 2, 4"), QStringLiteral("moor-extras, 1, 0, 0")});

    QTest::newRow("written by a repository service")
        << QByteArray("[repo-oss]\n"
                      "name=Main Repository\n"
                      "enabled=1\n"
                      "autorefresh=1\n"
                      "baseurl=https://download.fen.example/tumble/repo/oss/\n"
                      "path=/\n"
                      "type=rpm-md\n"
                      "keeppackages=0\n"
                      "\n"
                      "[people:someone:editor_(nightly)]\n"
                      "name=Nightly builds; use at your own risk = yours\n"
                      "enabled=yes\n"
                      "gpgcheck=no\n"
                      "baseurl=dir:///srv/rpms?mediahandler=file\n"
                      "priority = 90\n")
        << QByteArray("[repo-oss]\n"
                      "name=Main Repository\n"
                      "baseurl=https://download.fen.example/tumble/repo/oss/\n"
                      "enabled=1\n"
                      "autorefresh=1\n"
                      "path=/\n"
                      "type=rpm-md\n"
                      "keeppackages=0\n"
                      "\n"
                      "[people:someone:editor_(nightly)]\n"
                      "name=Nightly builds; use at your own risk = yours\n"
                      "baseurl=dir:///srv/rpms?mediahandler=file\n"
                      "enabled=1\n"
                      "gpgcheck=1\n"
                      "priority = 90\n")
        << QStringList({QStringLiteral("repo-oss, 2, 1, 1"),
                        QStringLiteral("people:someone:editor_(nightly), 2, 2, 1")});

    QTest::newRow("written on another system") << QByteArray("\xEF\xBB\xBF# D\xC3\xA9p\xC3\xB4t\r\n"
                                                             "[depot]\n"
                                                             "name=D\xC3\xA9p\xC3\xB4t\r\n"
                                                             "baseurl=http://depot.example/\r\n"
                                                             "enabled=0\r\n"
                                                             "\r\n"
                                                             "cost=1\r\n")
                                               << QByteArray("\xEF\xBB\xBF# D\xC3\xA9p\xC3\xB4t\r\n"
                                                             "[depot]\n"
                                                             "name=D\xC3\xA9p\xC3\xB4t\r\n"
                                                             "baseurl=http://depot.example/\r\n"
                                                             "enabled=0\r\n"
                                                             "\r\n"
                                                             "cost=1\r\n")
                                               << QStringList({QStringLiteral("depot, 0, 1, 1")});
}

void YumConfIODistributionsTest::writingARepositoryFileOfADistributionKeepsItsContents()
{
    QFETCH(QByteArray, read);
    QFETCH(QByteArray, written);
    // As on real systems, /etc/yum.conf is a link to /etc/dnf/dnf.conf.
    const QByteArray mainText("[main]\ngpgcheck=1\ninstallonly_limit=3\nclean_requirements_on_remove=True\n"
                              "best=True\nskip_if_unavailable=False\n");
    QVERIFY(QDir(root->path()).mkpath(QStringLiteral("etc/dnf")));
    put(path(QStringLiteral("etc/dnf/dnf.conf")), mainText);
    QVERIFY(QFile::remove(mainPath()));
    linkTo(QStringLiteral("dnf/dnf.conf"), mainPath());
    putRepo(QStringLiteral("shipped.repo"), read);

    QVERIFY(conf->read(window.get()));
    QVERIFY(conf->gpgcheck);
    QStringList found;
    for (const Repo::Entry& each : qAsConst(conf->entries)) {
        const int urls = each.baseurl.isEmpty() ? 0 : each.baseurl.count(QLatin1Char('\n')) + 1;
        found += QStringLiteral("%1, %2, %3, %4").arg(each.id).arg(each.enabled).arg(each.gpgcheck).arg(urls);
    }
    QTEST(found, "repositories");
    QVERIFY(conf->write(window.get()));
    QCOMPARE(getRepo(QStringLiteral("shipped.repo")), written);
    QVERIFY(QFileInfo(mainPath()).isSymLink());
    QCOMPARE(get(path(QStringLiteral("etc/dnf/dnf.conf"))), mainText);
}

void YumConfIODistributionsTest::editingOneValueInAFileOfADistributionChangesOnlyItsLine()
{
    putMain("[main]\n# limits\ntimeout=30\n\n[local]\nname=Local\nbaseurl=file:///srv/rpms\n# ours\n");
    putRepo(QStringLiteral("larkspur.repo"),
            "[larkspur]\nname=Larkspur\nenabled=1\ngpgcheck=1\nmetalink=http://m/\n"
            "gpgkey=file:///k\n file:///l\n\n[larkspur-source]\nname=Source\nenabled=0\ntype=rpm\n");
    putRepo(QStringLiteral("vendor.repo"), "[vendor]\nbaseurl=http://v/\nenabled=0\n#priority=1\n");
    QMap<QString, QByteArray> expected = snapshot();
    QByteArray& larkspur = expected[repoPath(QStringLiteral("larkspur.repo"))];
    larkspur.replace("enabled=0", "enabled=1");
    QVERIFY(conf->read(window.get()));
    entry(QStringLiteral("larkspur-source")).enabled = Qt::Checked;
    QVERIFY(conf->write(window.get()));
    QCOMPARE(snapshot(), expected);
}

QTEST_MAIN(YumConfIODistributionsTest)
#include "YumConfIODistributionsTest.moc"
