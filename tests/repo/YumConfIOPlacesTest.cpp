// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/repo/ScratchConfiguration.h"

// Tests of the files and directories that VYRE reads and writes, and of files and directories with several
// paths.
class YumConfIOPlacesTest : public ScratchConfiguration
{
    Q_OBJECT

private Q_SLOTS:
    void aNewObjectHasNoRepositoriesAndNoMainSettings();
    void thePathsHaveNoPrefixIfNoManagedRootIsSet();
    void theMainFileInEtcYumIsPreferredToTheMainFileInEtc();
    void theMainFileInEtcIsUsedIfEtcYumHasNone();
    void theFirstExistingMainFileIsUsed();
    void dnfConfIsReadAndWrittenIfNoOtherMainFileExists();
    void noMainFileOfLowerPrecedenceIsUsedIfTheFirstMainFileIsUnreadable();
    void theDirectoryEtcDistroReposDIsReadIfItExists();
    void theDefaultsApplyIfTheMainFileIsEmpty();
    void aConfiguredDirectoryIsLookedUpInTheManagedRootFirst();
    void aWarningNamesEachValueThatVyreAndThePackageManagerReadDifferently();
    void readingTheFilesAgainDiscardsAllFormerValues();
    void theValuesOfTheMainSectionAreRead();
    void theHeaderOfTheMainSectionIsNotRequired();
    void configuredDirectoriesReplaceTheDefaultDirectories();
    void noDirectoryIsSearchedIfTheSettingReposdirIsEmpty();
    void repositoriesAreReadFromTheMainFileAndThenFromBothDefaultDirectories();
    void missingDirectoriesAreSkipped();
    void onlyFilesWithTheSuffixRepoAreRead();
    void pipesAndDevicesAreNotRead();
    void fileNamesWithLettersBeyondAsciiAreKept();
    void aDirectoryIsReadOnceEvenIfTwoPathsLeadToIt_data();
    void aDirectoryIsReadOnceEvenIfTwoPathsLeadToIt();
    void severalPathsToOneFileAreTreatedAsOneFile_data();
    void severalPathsToOneFileAreTreatedAsOneFile();
    void removingARepositoryFileRemovesAllLinksToIt();
    void danglingLinksAndLinksToDevicesOrPipesAreNotReadOrChanged();
};

void YumConfIOPlacesTest::aNewObjectHasNoRepositoriesAndNoMainSettings()
{
    QCOMPARE(conf->cachedir, QString());
    QCOMPARE(conf->reposdir, QStringList());
    QVERIFY(!conf->enabled);
    QVERIFY(!conf->gpgcheck);
    QCOMPARE(conf->entries.size(), 0);
    QCOMPARE(conf->mainText, QString());
    QCOMPARE(conf->pendingLines, QStringList());
    QVERIFY(!conf->parent);
    QCOMPARE(&conf->enableRequests, static_cast<const QList<YumRepoEnabled>*>(&requests));
    QCOMPARE(&conf->sessionEnabled, &session);
}

void YumConfIOPlacesTest::thePathsHaveNoPrefixIfNoManagedRootIsSet()
{
    managedRoot.unset();
    QString expected = QStringLiteral("/etc/yum.conf");
    for (const char* file : {"/etc/dnf/dnf.conf", "/etc/yum.conf", "/etc/yum/yum.conf"}) {
        struct stat status;
        if (stat(file, &status) == 0) {
            expected = QString::fromLatin1(file);
        }
    }
    QCOMPARE(YumConfIO::fileName(), expected);
    if (!QFile::exists(YumConfIO::fileName())) {
        QVERIFY(!conf->read(window.get()));
        user->seen.clear();
    } else {
        QVERIFY(conf->read(window.get()));
    }
    // This test reads the configuration of the running system, which may name directories of its own.
    if (!conf->mainText.contains(QStringLiteral("cachedir"))) {
        QCOMPARE(conf->cachedir, QStringLiteral("/var/cache/yum"));
    }
    if (!conf->mainText.contains(QStringLiteral("reposdir"))) {
        QStringList directories{QStringLiteral("/etc/yum.repos.d"), QStringLiteral("/etc/yum/repos.d")};
        for (const char* optional : {"/etc/distro.repos.d", "/usr/share/dnf5/repos.d"}) {
            if (QFileInfo(QString::fromLatin1(optional)).isDir()) {
                directories.append(QString::fromLatin1(optional));
            }
        }
        QCOMPARE(conf->reposdir, directories);
    }
}

void YumConfIOPlacesTest::theMainFileInEtcYumIsPreferredToTheMainFileInEtc()
{
    QCOMPARE(YumConfIO::fileName(), mainPath());
    QVERIFY(QDir(root->path()).mkpath(QStringLiteral("etc/yum")));
    QCOMPARE(YumConfIO::fileName(), mainPath());
    put(path(QStringLiteral("etc/yum/yum.conf")), "[main]\ncachedir=/first\n");
    putMain("[main]\ncachedir=/second\n");
    QCOMPARE(YumConfIO::fileName(), path(QStringLiteral("etc/yum/yum.conf")));
    QVERIFY(conf->read(window.get()));
    QCOMPARE(conf->cachedir, path(QStringLiteral("first")));
    conf->mainText += QStringLiteral("retries=3\n");
    QVERIFY(conf->write(window.get()));
    QCOMPARE(get(path(QStringLiteral("etc/yum/yum.conf"))),
             QByteArray("[main]\ncachedir=/first\nretries=3\n"));
    QCOMPARE(get(mainPath()), QByteArray("[main]\ncachedir=/second\n"));
}

void YumConfIOPlacesTest::theMainFileInEtcIsUsedIfEtcYumHasNone()
{
    putMain("[main]\ncachedir=/second\n");
    QVERIFY(conf->read(window.get()));
    QCOMPARE(conf->cachedir, path(QStringLiteral("second")));
    conf->mainText += QStringLiteral("retries=3\n");
    QVERIFY(conf->write(window.get()));
    QCOMPARE(get(mainPath()), QByteArray("[main]\ncachedir=/second\nretries=3\n"));
    QVERIFY(!QFile::exists(path(QStringLiteral("etc/yum"))));
}

void YumConfIOPlacesTest::theFirstExistingMainFileIsUsed()
{
    QFile file(QFINDTESTDATA("../support/main-files"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QStringList lines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    int tried = 0;
    for (const QString& line : lines) {
        if (line.startsWith(QLatin1Char('#'))) {
            continue;
        }
        const QStringList pair = line.split(QLatin1Char('\t'));
        QCOMPARE(pair.size(), 2);
        QVERIFY(QDir(path(QStringLiteral("etc"))).removeRecursively());
        for (QString name : pair.first().split(QLatin1Char(' '))) {
            const QStringList link = name.split(QLatin1Char('>'));
            const bool isLink = link.size() == 2;
            const QChar kind = isLink ? QLatin1Char('>') : name.at(name.size() - 1);
            if (isLink) {
                name = link.first();
            } else if (QStringLiteral("=!/").contains(kind)) {
                name.chop(1);
            }
            if (name == QLatin1String("-")) {
                continue;
            }
            QVERIFY(QDir().mkpath(QFileInfo(path(name)).path()));
            if (isLink) {
                linkTo(link.last(), path(name));
            } else if (kind == QLatin1Char('/')) {
                QVERIFY(QDir().mkpath(path(name)));
            } else {
                put(path(name), kind == QLatin1Char('=') ? "" : "[main]\n");
            }
            if (kind == QLatin1Char('!')) {
                QCOMPARE(chmod(QFile::encodeName(path(name)).constData(), 0), 0);
            }
        }
        const QString expected =
            pair.last() == QLatin1String("-") ? QStringLiteral("etc/yum.conf") : pair.last();
        QVERIFY2(YumConfIO::fileName() == path(expected), qPrintable(line));
        ++tried;
    }
    QVERIFY(tried > 20);
}

void YumConfIOPlacesTest::dnfConfIsReadAndWrittenIfNoOtherMainFileExists()
{
    QVERIFY(QFile::remove(mainPath()));
    const QString file = path(QStringLiteral("etc/dnf/dnf.conf"));
    QVERIFY(QDir(root->path()).mkpath(QStringLiteral("etc/dnf")));
    put(file, "# see the manual\n[main]\ngpgcheck=1\nbest=True\n\n[inside]\nbaseurl=file:///inside\n");
    putRepo(QStringLiteral("a.repo"), "[a]\nname=A\n");
    QVERIFY(conf->read(window.get()));
    QVERIFY(conf->gpgcheck);
    QCOMPARE(conf->cachedir, path(QStringLiteral("var/cache/yum")));
    QCOMPARE(conf->reposdir,
             QStringList({path(QStringLiteral("etc/yum.repos.d")), path(QStringLiteral("etc/yum/repos.d"))}));
    QCOMPARE(ids(), QStringList({QStringLiteral("inside"), QStringLiteral("a")}));
    entry(QStringLiteral("inside")).name = QStringLiteral("Inside");
    entry(QStringLiteral("a")).name = QStringLiteral("Other");
    QVERIFY(conf->write(window.get()));
    QCOMPARE(get(file), QByteArray("# see the manual\n[main]\ngpgcheck=1\nbest=True\n\n"
                                   "[inside]\nname=Inside\nbaseurl=file:///inside\n"));
    QCOMPARE(getRepo(QStringLiteral("a.repo")), QByteArray("[a]\nname=Other\n"));
    QVERIFY(!QFile::exists(mainPath()));
    QVERIFY(!QFile::exists(path(QStringLiteral("etc/yum"))));
}

void YumConfIOPlacesTest::noMainFileOfLowerPrecedenceIsUsedIfTheFirstMainFileIsUnreadable()
{
    QVERIFY(QDir(root->path()).mkpath(QStringLiteral("etc/dnf")));
    put(path(QStringLiteral("etc/dnf/dnf.conf")), "[main]\n");
    QCOMPARE(chmod(QFile::encodeName(root->path()).constData(), 0755), 0);
    QCOMPARE(chmod(QFile::encodeName(mainPath()).constData(), 0), 0);
    {
        const OrdinaryUser unprivileged;
        QVERIFY(!conf->read(window.get()));
    }
    compareError(withErrno(QStringLiteral("Unable to read yum configuration file ") + mainPath(), EACCES));
}

void YumConfIOPlacesTest::theDirectoryEtcDistroReposDIsReadIfItExists()
{
    const QString directory = path(QStringLiteral("etc/distro.repos.d"));
    QVERIFY(QDir().mkpath(directory));
    put(directory + QStringLiteral("/d.repo"), "[d]\nname=D\n");
    QVERIFY(conf->read(window.get()));
    QCOMPARE(conf->reposdir, QStringList({path(QStringLiteral("etc/yum.repos.d")),
                                          path(QStringLiteral("etc/yum/repos.d")), directory}));
    QCOMPARE(ids(), QStringList({QStringLiteral("d")}));
    // A new repository still goes to the first default directory.
    conf->entries.append(made(QStringLiteral("n")));
    entry(QStringLiteral("d")).name = QStringLiteral("E");
    QVERIFY(conf->write(window.get()));
    QCOMPARE(get(directory + QStringLiteral("/d.repo")), QByteArray("[d]\nname=E\n"));
    QVERIFY(QFile::exists(repoPath(QStringLiteral("n.repo"))));
    // If the main configuration file sets `reposdir`, VYRE reads only the directories in this setting.
    putMain("[main]\nreposdir=/etc/yum.repos.d\n");
    QVERIFY(conf->read(window.get()));
    QCOMPARE(conf->reposdir, QStringList({path(QStringLiteral("etc/yum.repos.d"))}));
    // VYRE also reads the directory of newer distributions if this directory exists.
    putMain("");
    const QString newer = path(QStringLiteral("usr/share/dnf5/repos.d"));
    QVERIFY(QDir().mkpath(newer));
    QVERIFY(conf->read(window.get()));
    QCOMPARE(conf->reposdir, QStringList({path(QStringLiteral("etc/yum.repos.d")),
                                          path(QStringLiteral("etc/yum/repos.d")), directory, newer}));
    // If dnf has reported its directories, VYRE reads only these directories.
    conf->knownDirectories =
        QStringList{QStringLiteral("/etc/yum.repos.d"), QStringLiteral("/etc/distro.repos.d")};
    QVERIFY(conf->read(window.get()));
    QCOMPARE(conf->reposdir, QStringList({path(QStringLiteral("etc/yum.repos.d")),
                                          path(QStringLiteral("etc/yum/repos.d")), directory}));
}

void YumConfIOPlacesTest::theDefaultsApplyIfTheMainFileIsEmpty()
{
    putMain("");
    QVERIFY(conf->read(window.get()));
    QCOMPARE(conf->cachedir, path(QStringLiteral("var/cache/yum")));
    QCOMPARE(conf->reposdir,
             QStringList({path(QStringLiteral("etc/yum.repos.d")), path(QStringLiteral("etc/yum/repos.d"))}));
    QVERIFY(conf->enabled);
    QVERIFY(!conf->gpgcheck);
    QCOMPARE(conf->entries.size(), 0);
    QCOMPARE(conf->mainText, QString());
}

void YumConfIOPlacesTest::aConfiguredDirectoryIsLookedUpInTheManagedRootFirst()
{
    // Both systems have /etc, and VYRE uses /etc of the managed root. Only the running system has /dev, so
    // VYRE uses this /dev.
    QVERIFY(QDir(path(QString())).mkpath(QStringLiteral("etc")));
    putMain("[main]\ncachedir=/srv/cache\nreposdir=/etc /dev\n");
    QVERIFY(conf->read(window.get()));
    QCOMPARE(conf->cachedir, path(QStringLiteral("srv/cache")));
    QCOMPARE(conf->reposdir, QStringList({path(QStringLiteral("etc")), QStringLiteral("/dev")}));
}

void YumConfIOPlacesTest::aWarningNamesEachValueThatVyreAndThePackageManagerReadDifferently()
{
    putMain("[main]\nenabled = No\ngpgcheck=0\n[a]\nenabled=0 \ngpgcheck=FALSE\n[b]\nenabled=0\ngpgcheck=1\n"
            "[c]\nenabled=off\nname=Gr\xc3\xb6\xc3\x9f"
            "e\n[d]\nenabled=yes\ngpgcheck=true\n#\xc3\xbc\n");
    for (int i = 0; i < 2; ++i) {
        QVERIFY(conf->read(window.get()));
        const QString file = path(QStringLiteral("etc/yum.conf"));
        const QString warning =
            file +
            QStringLiteral(", section [%1]: VYRE reads \"%2\" as enabled, and writes it as enabled. Only 0 "
                           "disables it.");
        QCOMPARE(conf->warnings,
                 (QStringList{
                     file + " contains letters outside ASCII. If VYRE writes the file, each of these letters "
                            "becomes two wrong letters.",
                     warning.arg("main", "enabled = No"), warning.arg("a", "enabled=0"),
                     warning.arg("a", "gpgcheck=FALSE"), warning.arg("c", "enabled=off")}));
    }
    putMain("[main]\n[a]\nenabled=0\n");
    QVERIFY(conf->read(window.get()));
    QCOMPARE(conf->warnings, QStringList());
}

void YumConfIOPlacesTest::readingTheFilesAgainDiscardsAllFormerValues()
{
    putMain("[main]\ncachedir=/c\nreposdir=/r\nenabled=0\ngpgcheck=1\n[x]\n");
    QVERIFY(conf->read(window.get()));
    QCOMPARE(conf->entries.size(), 1);
    putMain("[main]\n");
    QVERIFY(conf->read(window.get()));
    QCOMPARE(conf->cachedir, path(QStringLiteral("var/cache/yum")));
    QCOMPARE(conf->reposdir.size(), 2);
    QVERIFY(conf->enabled);
    QVERIFY(!conf->gpgcheck);
    QCOMPARE(conf->entries.size(), 0);
    QCOMPARE(conf->mainText, QStringLiteral("[main]\n"));
}

void YumConfIOPlacesTest::theValuesOfTheMainSectionAreRead()
{
    putMain("[main]\ncachedir = /somewhere\nenabled=0\ngpgcheck: yes\n");
    QVERIFY(conf->read(window.get()));
    // VYRE does not check whether the cache directory exists in the managed root.
    QCOMPARE(conf->cachedir, path(QStringLiteral("somewhere")));
    QVERIFY(!conf->enabled);
    QVERIFY(conf->gpgcheck);
}

void YumConfIOPlacesTest::theHeaderOfTheMainSectionIsNotRequired()
{
    putMain("enabled=0\n\ngpgcheck=1\n[x]\nenabled=1\ngpgcheck=0\n");
    QVERIFY(conf->read(window.get()));
    QVERIFY(!conf->enabled);
    QVERIFY(conf->gpgcheck);
    QCOMPARE(conf->mainText, QStringLiteral("enabled=0\n\ngpgcheck=1\n"));
    QCOMPARE(ids(), QStringList(QStringLiteral("x")));
}

void YumConfIOPlacesTest::configuredDirectoriesReplaceTheDefaultDirectories()
{
    putMain("[main]\nreposdir=/a,/b /c\n");
    putRepo(QStringLiteral("x.repo"), "[x]\n");
    QVERIFY(conf->read(window.get()));
    QCOMPARE(conf->reposdir, QStringList({QStringLiteral("/a"), QStringLiteral("/b"), QStringLiteral("/c")}));
    QCOMPARE(ids(), QStringList());

    for (const char* name : {"one", "two"}) {
        QVERIFY(QDir(root->path()).mkpath(QString::fromLatin1(name)));
        put(path(QString::fromLatin1(name)) + QStringLiteral("/file.repo"),
            QByteArray("[") + name + QByteArray("]\n"));
    }
    putMain("[main]\nreposdir=" + QFile::encodeName(path(QStringLiteral("two"))) + " , ,  " +
            QFile::encodeName(path(QStringLiteral("one"))) + "\n");
    QVERIFY(conf->read(window.get()));
    QCOMPARE(ids(), QStringList({QStringLiteral("two"), QStringLiteral("one")}));
    QCOMPARE(conf->entries.first().file, path(QStringLiteral("two/file.repo")));
}

void YumConfIOPlacesTest::noDirectoryIsSearchedIfTheSettingReposdirIsEmpty()
{
    putMain("[main]\nreposdir=\n");
    putRepo(QStringLiteral("x.repo"), "[x]\n");
    QVERIFY(conf->read(window.get()));
    QCOMPARE(conf->reposdir, QStringList());
    QCOMPARE(conf->entries.size(), 0);
    QVERIFY(conf->write(window.get()));
    QCOMPARE(getRepo(QStringLiteral("x.repo")), QByteArray("[x]\n"));
}

void YumConfIOPlacesTest::repositoriesAreReadFromTheMainFileAndThenFromBothDefaultDirectories()
{
    QVERIFY(QDir(root->path()).mkpath(QStringLiteral("etc/yum/repos.d")));
    put(path(QStringLiteral("etc/yum/repos.d/a.repo")), "[second]\n");
    putRepo(QStringLiteral("b.repo"), "[first]\n");
    putMain("[main]\n[main-file]\n");
    QVERIFY(conf->read(window.get()));
    QCOMPARE(ids(),
             QStringList({QStringLiteral("main-file"), QStringLiteral("first"), QStringLiteral("second")}));
}

void YumConfIOPlacesTest::missingDirectoriesAreSkipped()
{
    QVERIFY(QDir(path(QStringLiteral("etc/yum.repos.d"))).removeRecursively());
    QVERIFY(conf->read(window.get()));
    QCOMPARE(conf->entries.size(), 0);
    QVERIFY(conf->write(window.get()));
}

void YumConfIOPlacesTest::onlyFilesWithTheSuffixRepoAreRead()
{
    putRepo(QStringLiteral("a.repo"), "[a]\n");
    putRepo(QStringLiteral("b.repo.rpmsave"), "[b]\n");
    putRepo(QStringLiteral("c.REPO"), "[c]\n");
    putRepo(QStringLiteral("drepo"), "[d]\n");
    putRepo(QStringLiteral(".repo"), "[hidden]\n");
    QVERIFY(QDir().mkdir(repoPath(QStringLiteral("directory.repo"))));
    QVERIFY(conf->read(window.get()));
    QStringList found = ids();
    found.sort();
    QCOMPARE(found, QStringList({QStringLiteral("a"), QStringLiteral("hidden")}));
}

void YumConfIOPlacesTest::pipesAndDevicesAreNotRead()
{
    // The pipe and the device contain a section, but never an end of file: reading one of them would block.
    const QByteArray pipe = QFile::encodeName(path(QStringLiteral("pipe")));
    QCOMPARE(mkfifo(pipe.constData(), 0644), 0);
    const int writer = open(pipe.constData(), O_RDWR | O_CLOEXEC);
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    QVERIFY(writer >= 0 && terminal >= 0);
    QCOMPARE(grantpt(terminal) + unlockpt(terminal), 0);
    for (const int end : {writer, terminal}) {
        QCOMPARE(write(end, "[endless]\n", 10), ssize_t(10));
    }
    const QString device = QString::fromLocal8Bit(ptsname(terminal));
    QVERIFY(QFileInfo::exists(device));
    linkTo(device, repoPath(QStringLiteral("a.repo")));
    linkTo(QFile::decodeName(pipe), repoPath(QStringLiteral("b.repo")));
    QCOMPARE(mkfifo(QFile::encodeName(repoPath(QStringLiteral("c.repo"))).constData(), 0644), 0);
    putRepo(QStringLiteral("e.repo"), "[e]\n");
    QVERIFY(conf->read(window.get()));
    QCOMPARE(ids(), QStringList(QStringLiteral("e")));
    close(writer);
    close(terminal);
}

void YumConfIOPlacesTest::fileNamesWithLettersBeyondAsciiAreKept()
{
    const QString name = QString::fromUtf8("größe.repo");
    putRepo(name, "[x]\n");
    QVERIFY(conf->read(window.get()));
    QCOMPARE(conf->entries.size(), 1);
    QCOMPARE(conf->entries.first().file, repoPath(name));
    conf->entries.first().name = QStringLiteral("X");
    QVERIFY(conf->write(window.get()));
    QCOMPARE(getRepo(name), QByteArray("[x]\nname=X\n"));
}

void YumConfIOPlacesTest::aDirectoryIsReadOnceEvenIfTwoPathsLeadToIt_data()
{
    QTest::addColumn<QStringList>("names");
    QTest::newRow("a link and its target")
        << QStringList({QStringLiteral("etc/yum.repos.d"), QStringLiteral("etc/link")});
    QTest::newRow("the link before its target")
        << QStringList({QStringLiteral("etc/link"), QStringLiteral("etc/yum.repos.d")});
    QTest::newRow("the same path twice")
        << QStringList({QStringLiteral("etc/yum.repos.d"), QStringLiteral("etc/yum.repos.d")});
    QTest::newRow("two spellings of a path")
        << QStringList({QStringLiteral("etc/yum.repos.d"), QStringLiteral("etc/./yum.repos.d/"),
                        QStringLiteral("etc/../etc//yum.repos.d/.")});
}

void YumConfIOPlacesTest::aDirectoryIsReadOnceEvenIfTwoPathsLeadToIt()
{
    QFETCH(QStringList, names);
    linkTo(QStringLiteral("yum.repos.d"), path(QStringLiteral("etc/link")));
    for (QString& name : names) {
        name = path(name);
    }
    putMain("[main]\nreposdir=" + QFile::encodeName(names.join(QLatin1Char(','))) + "\n");
    putRepo(QStringLiteral("a.repo"), "[a]\n");
    putRepo(QStringLiteral("b.repo"), "[b]\n");
    QVERIFY(conf->read(window.get()));
    QStringList found = ids();
    found.sort();
    QCOMPARE(found, QStringList({QStringLiteral("a"), QStringLiteral("b")}));
    entry(QStringLiteral("a")).name = QStringLiteral("A");
    conf->entries.append(made(QStringLiteral("c")));
    QVERIFY(conf->write(window.get()));
    QCOMPARE(getRepo(QStringLiteral("a.repo")), QByteArray("[a]\nname=A\n"));
    QCOMPARE(getRepo(QStringLiteral("b.repo")), QByteArray("[b]\n"));
    QCOMPARE(getRepo(QStringLiteral("c.repo")), QByteArray("[c]\n"));
    conf->entries.removeAll(made(QStringLiteral("a")));
    conf->entries.removeAll(made(QStringLiteral("c")));
    QVERIFY(conf->write(window.get()));
    QCOMPARE(QDir(path(QStringLiteral("etc/yum.repos.d"))).entryList(QDir::Files),
             QStringList(QStringLiteral("b.repo")));
}

void YumConfIOPlacesTest::severalPathsToOneFileAreTreatedAsOneFile_data()
{
    QTest::addColumn<QString>("reposdir");
    QTest::addColumn<QString>("file");
    const QString plain = QStringLiteral("etc/yum.repos.d");
    QTest::newRow("slash at the end") << plain + QStringLiteral("/") << plain + QStringLiteral("/x.repo");
    QTest::newRow("two slashes") << plain << plain + QStringLiteral("//x.repo");
    QTest::newRow("a dot") << plain + QStringLiteral("/.") << plain + QStringLiteral("/./x.repo");
    QTest::newRow("two dots") << plain << QStringLiteral("etc/../etc/yum.repos.d/x.repo");
    QTest::newRow("path through a link") << plain << QStringLiteral("etc/link/x.repo");
    QTest::newRow("two dots behind a link") << plain << QStringLiteral("etc/far/../yum.repos.d/x.repo");
}

void YumConfIOPlacesTest::severalPathsToOneFileAreTreatedAsOneFile()
{
    QFETCH(QString, reposdir);
    QFETCH(QString, file);
    linkTo(QStringLiteral("yum.repos.d"), path(QStringLiteral("etc/link")));
    QVERIFY(QDir(root->path()).mkpath(QStringLiteral("etc/deep")));
    linkTo(QStringLiteral("deep"), path(QStringLiteral("etc/far")));
    putMain("[main]\nreposdir=" + QFile::encodeName(path(reposdir)) + "\n");
    putRepo(QStringLiteral("x.repo"), "[x]\n");
    QVERIFY(conf->read(window.get()));
    // VYRE adds the new section "y" to the existing file. The test then changes the file of the section "x"
    // to another path of the same file. VYRE recognizes the file, and does not move the section.
    Repo::Entry added = made(QStringLiteral("y"));
    added.file = path(file);
    added.position = 2.0;
    conf->entries.append(added);
    QVERIFY(conf->write(window.get()));
    QCOMPARE(getRepo(QStringLiteral("x.repo")), QByteArray("[x]\n\n[y]\n"));
    entry(QStringLiteral("x")).file = path(file);
    QVERIFY(conf->write(window.get()));
    QCOMPARE(getRepo(QStringLiteral("x.repo")), QByteArray("[x]\n\n[y]\n"));
    // Two new repositories name the same file by different paths.
    Repo::Entry one = made(QStringLiteral("one"));
    one.file = path(QStringLiteral("etc/yum.repos.d/new.repo"));
    Repo::Entry two = made(QStringLiteral("two"));
    two.file = path(file).replace(QStringLiteral("x.repo"), QStringLiteral("new.repo"));
    two.position = 1.0;
    conf->entries += {two, one};
    QVERIFY(conf->write(window.get()));
    QCOMPARE(getRepo(QStringLiteral("new.repo")), QByteArray("[one]\n\n[two]\n"));
    QCOMPARE(getRepo(QStringLiteral("x.repo")), QByteArray("[x]\n\n[y]\n"));
}

void YumConfIOPlacesTest::removingARepositoryFileRemovesAllLinksToIt()
{
    putRepo(QStringLiteral("a.repo"), "[a]\n");
    QCOMPARE(link(QFile::encodeName(repoPath(QStringLiteral("a.repo"))).constData(),
                  QFile::encodeName(repoPath(QStringLiteral("b.repo"))).constData()),
             0);
    linkTo(QStringLiteral("a.repo"), repoPath(QStringLiteral("c.repo")));
    put(path(QStringLiteral("elsewhere.txt")), "[d]\n");
    linkTo(path(QStringLiteral("elsewhere.txt")), repoPath(QStringLiteral("d.repo")));
    linkTo(mainPath(), repoPath(QStringLiteral("main.repo")));
    QVERIFY(conf->read(window.get()));
    QCOMPARE(conf->entries.size(), 2);
    entry(QStringLiteral("a")).name = QStringLiteral("A");
    QVERIFY(conf->write(window.get()));
    for (const char* name : {"a.repo", "b.repo", "c.repo"}) {
        QCOMPARE(getRepo(QLatin1String(name)), QByteArray("[a]\nname=A\n"));
    }
    conf->entries.clear();
    QVERIFY(conf->write(window.get()));
    QCOMPARE(QDir(path(QStringLiteral("etc/yum.repos.d"))).entryList(QDir::Files | QDir::System),
             QStringList(QStringLiteral("main.repo")));
    // VYRE removes a link, but keeps the target of the link.
    QCOMPARE(get(path(QStringLiteral("elsewhere.txt"))), QByteArray("[d]\n"));
}

void YumConfIOPlacesTest::danglingLinksAndLinksToDevicesOrPipesAreNotReadOrChanged()
{
    linkTo(QStringLiteral("/dev/null"), repoPath(QStringLiteral("mask.repo")));
    linkTo(QStringLiteral("/nowhere"), repoPath(QStringLiteral("dangling.repo")));
    linkTo(QStringLiteral("loop.repo"), repoPath(QStringLiteral("loop.repo")));
    linkTo(QStringLiteral("/proc/kmsg"), repoPath(QStringLiteral("kernel.repo")));
    QCOMPARE(mkfifo(QFile::encodeName(repoPath(QStringLiteral("pipe.repo"))).constData(), 0644), 0);
    putRepo(QStringLiteral("a.repo"), "[a]\n");
    QVERIFY(conf->read(window.get()));
    QCOMPARE(ids(), QStringList(QStringLiteral("a")));
    QStringList warnings = conf->warnings;
    warnings.sort();
    const auto regular = [this](const char* name) {
        return repoPath(QLatin1String(name)) + QStringLiteral(" is left alone: it is not a regular file.");
    };
    const auto nowhere = [this](const char* name) {
        return repoPath(QLatin1String(name)) + QStringLiteral(" is left alone: it is a broken link.");
    };
    if (warnings.size() ==
        5) { // the fifth warning appears only on systems where the test may read the kernel's messages
        QVERIFY(warnings.removeAll(warnings.filter(QStringLiteral("kernel.repo")).value(0)) == 1);
    }
    QCOMPARE(warnings, QStringList({nowhere("dangling.repo"), nowhere("loop.repo"), regular("mask.repo"),
                                    regular("pipe.repo")}));
    conf->entries.clear();
    QVERIFY(conf->write(window.get()));
    QCOMPARE(
        QDir(path(QStringLiteral("etc/yum.repos.d"))).entryList(QDir::Files | QDir::System),
        QStringList({QStringLiteral("dangling.repo"), QStringLiteral("kernel.repo"),
                     QStringLiteral("loop.repo"), QStringLiteral("mask.repo"), QStringLiteral("pipe.repo")}));
    QCOMPARE(QFile::symLinkTarget(repoPath(QStringLiteral("mask.repo"))), QStringLiteral("/dev/null"));
}

QTEST_MAIN(YumConfIOPlacesTest)
#include "YumConfIOPlacesTest.moc"
