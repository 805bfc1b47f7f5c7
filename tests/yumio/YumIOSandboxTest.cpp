// SPDX-License-Identifier: GPL-2.0-or-later

#include <QProcess>
#include <QtTest>

#include "tests/support/TimeZone.h"
#include "tests/yumio/BackEnd.h"
#include "tests/yumio/SandboxCopy.h"

// This is a macro, because QSKIP must return from the test function itself.
#define SKIP_WITHOUT_GROUPS()                                                                                \
    if (!sandbox.withoutGroups().isEmpty()) {                                                                \
        QSKIP(sandbox.withoutGroups().constData());                                                          \
    }

// Tests of the back end with the real script and dnf, on a private copy of the sandbox. The test functions
// share one back end, and depend on their order.
class YumIOSandboxTest : public QObject
{
    Q_OBJECT

private:
    YumIOProbe& yumIO() { return backEnd->yumIO; }

    // The titles and texts of the dialogs since the previous call.
    QStringList texts()
    {
        QStringList lines;
        for (const ShownDialog& each : backEnd->answers.take()) {
            lines.append(each.title + ": " + each.text);
        }
        return lines;
    }

    // Collects the packages again, as the program does after every change.
    void collectAgain(const QHash<QString, bool>& repoEnable = {})
    {
        yumIO().clearEntries();
        yumIO().reset();
        QVERIFY(backEnd->collect(repoEnable));
        QCOMPARE(texts(), QStringList());
        // In the program, the main loop deletes the minion objects of services/.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    // The output of rpm for the copied root; the test fails if rpm fails.
    QString rpm(const QStringList& arguments)
    {
        QProcess process;
        process.start("rpm", QStringList({"--root", root, "--define", "_dbpath /var/lib/rpm"}) + arguments);
        if (!process.waitForFinished(60000) || process.exitCode() != 0) {
            QTest::qFail(qPrintable(arguments.join(' ') + ": " + process.readAllStandardError()), __FILE__,
                         __LINE__);
        }
        return QString::fromUtf8(process.readAllStandardOutput());
    }

    QSet<QString> installed()
    {
        const QStringList lines =
            rpm({"-qa", "--qf", "%{NAME}-%|EPOCH?{%{EPOCH}:}:{}|%{VERSION}-%{RELEASE}.%{ARCH}\\n"})
                .split('\n', Qt::SkipEmptyParts);
        return QSet<QString>(lines.begin(), lines.end());
    }

    // The change log that rpm prints for an installed package or a package file, in the program's format.
    QString changeLog(const QStringList& package)
    {
        QString text =
            rpm(package +
                QStringList({"--qf", "[* %{CHANGELOGTIME:day} %{CHANGELOGNAME}\\n%{CHANGELOGTEXT}\\n\\n]"}));
        // The program shows days without a leading zero.
        text.replace(QRegularExpression("^(\\* \\w+ \\w+ )0", QRegularExpression::MultilineOption), "\\1");
        return text.trimmed();
    }

    // Returns the texts that a search must find in a record, except the file list and the change log. Reads
    // these texts with text(), on the graphical thread.
    QByteArray searchedTexts(const Package::Entry& entry)
    {
        const int owner = entry.kind == Package::Group ? Fields::OfGroups : Fields::OfPackages;
        QByteArray texts;
        bool hasEmpty = false;
        for (int i = 0; i < Fields::Count; ++i) {
            const auto field = static_cast<Fields::Field>(i);
            if ((Fields::row(field).uses & owner) == 0 || (Fields::row(field).uses & Fields::Searched) == 0) {
                continue;
            }
            const QString text = yumIO().text(entry, field);
            hasEmpty = hasEmpty || text.isEmpty();
            texts += text.isEmpty() ? QByteArray() : text.toUtf8() + '\0';
        }
        return hasEmpty ? texts + '\0' : texts;
    }

    QVector<Package::Entry*> allEntries()
    {
        QVector<Package::Entry*> all;
        for (int i = 0; i < yumIO().count(); ++i) {
            all.append(yumIO()[i]);
        }
        return all;
    }

    // Lets a worker read the texts of all records, and compares them with the expected texts.
    void checkSearchTexts(int fewPackages)
    {
        const int before = YumIOProbe::fewPackages;
        YumIOProbe::fewPackages = fewPackages;
        const QVector<Package::Entry*> all = allEntries();
        for (Package::Entry* entry : all) {
            entry->searchTexts = entry->searchFiles = entry->searchChangeLog = PackedText();
        }
        yumIO().collectSearchTexts(all);
        YumIOProbe::fewPackages = before;
        QCOMPARE(texts(), QStringList());
        QCOMPARE(backEnd->bars(), QStringList({"idle", "idle"}));
        for (const Package::Entry* entry : all) {
            const QByteArray expected = searchedTexts(*entry);
            const QByteArray found = entry->searchTexts.text();
            QVERIFY2(found == expected,
                     qPrintable(entry->name + "\n" + QString::fromUtf8(QByteArray(found).replace('\0', "|")) +
                                "\n" + QString::fromUtf8(QByteArray(expected).replace('\0', "|"))));
            QCOMPARE(entry->searchFiles.text(), yumIO().getFiles(*entry).toUtf8());
            QCOMPARE(entry->searchChangeLog.text(), yumIO().getChangeLog(*entry).toUtf8());
        }
    }

    // From now on, the script returns the value of this expression as the path of every metadata file, and
    // records each request in "asked".
    void setMetadataPath(const QString& expression)
    {
        backEnd->run("import dnf\n"
                     "asked = []\n"
                     "if 'genuinePath' not in globals(): genuinePath = YumIO.metadataPath\n"
                     "def metadataPath(self, repoid, kind):\n"
                     "    asked.append((repoid, kind))\n"
                     "    return " +
                     expression + "\nYumIO.metadataPath = metadataPath");
    }

    SandboxCopy sandbox;
    QString root;
    QScopedPointer<BackEnd> backEnd;

private Q_SLOTS:
    void initTestCase()
    {
        const QByteArray share = qgetenv("VYRESHARE");
        QVERIFY(sandbox.start());
        root = sandbox.root();
        backEnd.reset(new BackEnd);
        QVERIFY(backEnd->start(share));
    }

    void cleanupTestCase()
    {
        if (backEnd) {
            yumIO().clearEntriesBeforeQuit();
        }
        backEnd.reset();
        QVERIFY(sandbox.stop());
    }

    // --- Collection

    void aCollectionWithTheRealScriptSucceeds()
    {
        QVERIFY(backEnd->collect());
        QCOMPARE(texts(), QStringList());
        QVERIFY(yumIO().locked);
        QCOMPARE(backEnd->bars(), QStringList({"idle", "idle"}));
        QCOMPARE(yumIO().basearch, QString("x86_64"));
        QStringList repos = yumIO().enabledRepos;
        repos.sort();
        QCOMPARE(repos, QStringList({"sandbox-file", "sandbox-http", "sandbox-signed", "sandbox-unreachable",
                                     "sandbox-updates"}));
        // The program ignores the unreachable repository, and logs this.
        QVERIFY(backEnd->log().contains("2 0 Ignoring repositories: sandbox-unreachable"));
        QVERIFY(yumIO().count() > 0);
        for (int row = 0; row < yumIO().count(); ++row) {
            QVERIFY(yumIO().records.find(Package::EntryKey(*yumIO()[row])) == yumIO()[row]);
        }
    }

    void onlyARepositoryInADirectoryIsLocal()
    {
        QVERIFY(yumIO().isLocalRepo("sandbox-file"));
        for (const char* const id : {"sandbox-http", "sandbox-updates", "sandbox-unreachable", "@System"}) {
            QVERIFY2(!yumIO().isLocalRepo(id), id);
        }
        QCOMPARE(backEnd->entry("corkboard")->repo, QString("sandbox-file"));
    }

    void installedRecordsMatchTheRpmDatabase()
    {
        QSet<QString> records;
        for (int i = 0; i < yumIO().count(); ++i) {
            Package::Entry* first = yumIO()[i];
            QVERIFY2(first->kind == Package::Group || first->state != Package::Updatable ||
                         first->next != nullptr,
                     qPrintable(first->name));
            if (first->kind == Package::Group) {
                continue;
            }
            for (const Package::Entry* entry = Records::installedEntry(first); entry != nullptr;
                 entry = entry->next) {
                QCOMPARE(entry->state, Package::Installed);
                QCOMPARE(entry->repo, QString("@System"));
                records.insert(entry->name + "-" + entry->verRel + "." + entry->arch);
            }
        }
        QVERIFY(records.count() > 40);
        QCOMPARE(records, installed());
    }

    void theRecordOfAnInstalledPackageHasItsValues()
    {
        const Package::Entry& entry = *backEnd->entry("gallivant");
        QCOMPARE(yumIO().getName(entry), QString("gallivant"));
        QCOMPARE(yumIO().getVerRel(entry), QString("1.0-1"));
        QCOMPARE(yumIO().getRepo(entry), QString("@System"));
        QCOMPARE(yumIO().getArch(entry), QString("noarch"));
        QCOMPARE(entry.biArch, QString("x86_64"));
        QCOMPARE(QString::number(entry.size), rpm({"-q", "gallivant", "--qf", "%{LONGSIZE}"}));
        QCOMPARE(yumIO().getSize(entry), QString::number(entry.size) + "b");
        QCOMPARE(yumIO().getSummary(entry), QString("May be installed anywhere"));
        QCOMPARE(QString::number(entry.buildTime), rpm({"-q", "gallivant", "--qf", "%{BUILDTIME}"}));
        QCOMPARE(yumIO().getBuildTime(entry), QString("Tue Sep 12 09:00:00 2023"));
        QCOMPARE(yumIO().getState(entry), QString("Installed"));
        QCOMPARE(yumIO().getKind(entry), QString("Ordinary package"));
        QVERIFY(!entry.duplicate);
        QVERIFY(entry.next == nullptr);
        QCOMPARE(yumIO().getDescription(entry), QString("May be installed anywhere."));
        QCOMPARE(yumIO().getGroup(entry), QString("Unspecified"));
        QCOMPARE(yumIO().getVendor(entry), QString("Wander Works"));
        QCOMPARE(yumIO().getBuildHost(entry), QString("builder7.larkspur.example"));
        const long installTime = rpm({"-q", "gallivant", "--qf", "%{INSTALLTIME}"}).toLong();
        QVERIFY(installTime > 1700000000);
        QCOMPARE(yumIO().getInstallTime(entry), QString(ScriptValues::timeFormat(installTime)));
        QCOMPARE(yumIO().getBinaryRpm(entry), QString());
        QCOMPARE(yumIO().getSourceRpm(entry), rpm({"-q", "gallivant", "--qf", "%{SOURCERPM}"}));
        QCOMPARE(yumIO().getLicense(entry), QString("Artistic-2.0"));
        QCOMPARE(yumIO().getPackager(entry), QString("Gil Vant <gil@larkspur.example>"));
        QCOMPARE(yumIO().getUrl(entry), QString("https://larkspur.example/gallivant"));
        QCOMPARE(yumIO().getRelocations(entry), QString("/opt/gallivant"));
        QCOMPARE(yumIO().getFiles(entry), QString("/opt/gallivant/bin/gallivant"));
        QCOMPARE(yumIO().getChangeLog(entry), changeLog({"-q", "gallivant"}));
        QCOMPARE(yumIO().getProvides(entry), QString("gallivant = 1.0-1"));
        QCOMPARE(yumIO().getConflicts(entry), QString());
        QCOMPARE(texts(), QStringList());
    }

    void theRecordOfAnAvailablePackageHasItsValues()
    {
        const Package::Entry& entry = *backEnd->entry("orchard");
        const QString file = "orchard-3.0-1.x86_64.rpm";
        const QString path = sandbox.filePath("sandbox/http/sandbox-http/" + file);
        QCOMPARE(yumIO().getState(entry), QString("Available for installation"));
        QCOMPARE(yumIO().getVerRel(entry), QString("3.0-1"));
        QCOMPARE(yumIO().getRepo(entry), QString("sandbox-http"));
        QCOMPARE(yumIO().getArch(entry), QString("x86_64"));
        // The record contains the size of the package file.
        QVERIFY(QFileInfo(path).size() > 0);
        QCOMPARE(qint64(entry.size), QFileInfo(path).size());
        QCOMPARE(QString::number(entry.buildTime), rpm({"-qp", path, "--qf", "%{BUILDTIME}"}));
        QVERIFY(entry.next == nullptr);
        QCOMPARE(yumIO().getGroup(entry), QString("Applications/Multimedia"));
        QCOMPARE(yumIO().getVendor(entry), QString("Larkspur Project"));
        QCOMPARE(yumIO().getBuildHost(entry), QString());
        QCOMPARE(yumIO().getInstallTime(entry), QString());
        QCOMPARE(yumIO().getBinaryRpm(entry), file);
        QCOMPARE(yumIO().getUrl(entry), QString());
        QCOMPARE(yumIO().getFiles(entry), QString("/usr/bin/orchard\n/usr/share/doc/orchard/README"));
        QCOMPARE(yumIO().getChangeLog(entry), changeLog({"-qp", path}));
        QCOMPARE(yumIO().getProvides(entry), QString("orchard = 3.0-1\norchard(x86-64) = 3.0-1"));
        QCOMPARE(yumIO().getRequires(entry), QString("(orchard-lang if lexicon-en)\nlibbough >= 1.1\nsetup"));
        QCOMPARE(yumIO().getRequiresPre(entry), QString("setup"));
        QCOMPARE(yumIO().getRecommends(entry), QString("orchard-plugins"));
        QCOMPARE(yumIO().getSuggests(entry), QString("orchard-samples"));
        QCOMPARE(yumIO().getEnhances(*backEnd->entry("orchard-plugins")), QString("orchard"));
        QCOMPARE(yumIO().getSupplements(*backEnd->entry("orchard-thumbnails")), QString("orchard"));
        QCOMPARE(yumIO().getConflicts(*backEnd->entry("gull-mta")), QString("tern-mta"));
        QCOMPARE(yumIO().getObsoletes(*backEnd->entry("newpost")), QString("oldpost < 2"));
        QCOMPARE(yumIO().getRelocations(entry), QString());
        QCOMPARE(texts(), QStringList());
    }

    void aLongFileListIsComplete()
    {
        const QStringList files = yumIO().getFiles(*backEnd->entry("manyfiles")).split('\n');
        QCOMPARE(files.count(), 2000);
        QCOMPARE(files.first(), QString("/usr/share/manyfiles/00/leaf 0000.txt"));
        QCOMPARE(files.last(), QString("/usr/share/manyfiles/19/leaf 1999.txt"));
    }

    void theRecordsOfUpdatesAreChainedToTheInstalledVersions()
    {
        const Package::Entry& entry = *backEnd->entry("quillbase");
        QCOMPARE(yumIO().getState(entry), QString("Available for update"));
        QCOMPARE(entry.verRel, QString("2:1.0-1"));
        QCOMPARE(entry.repo, QString("sandbox-updates"));
        QCOMPARE(entry.next->verRel, QString("1:2.4-1"));
        QCOMPARE(entry.next->state, Package::Installed);
        QVERIFY(entry.next->next == nullptr);

        const Package::Entry& kernel = *backEnd->entry("kernel");
        QCOMPARE(kernel.state, Package::Updatable);
        QStringList versions;
        for (const Package::Entry* old = kernel.next; old != nullptr; old = old->next) {
            versions.append(old->verRel);
        }
        versions.sort();
        QCOMPARE(versions, QStringList({"6.1.20-1", "6.1.25-1"}));
    }

    void theRecordWithTheWorseArchitectureIsADuplicate()
    {
        for (const char* name : {"libcairn", "libmoss", "libslate"}) {
            QVERIFY2(!backEnd->entry(name)->duplicate, name);
            QVERIFY2(backEnd->entry(name, "i386")->duplicate, name);
            QCOMPARE(backEnd->entry(name, "i386")->arch, QString("i686"));
        }
        QCOMPARE(backEnd->entry("libcairn", "i386")->state, Package::Updatable);
        QCOMPARE(backEnd->entry("libslate")->state, Package::Installed);
        QCOMPARE(backEnd->entry("libslate", "i386")->state, Package::Available);
    }

    void groupsHaveTheExpectedStates()
    {
        SKIP_WITHOUT_GROUPS();
        QCOMPARE(backEnd->group("Games")->state, Package::Available);
        QCOMPARE(backEnd->group("Arts")->state, Package::Installed);
        QCOMPARE(backEnd->group("Weaving")->state, Package::Updatable);
        QVERIFY(backEnd->group("Core") == nullptr); // the group is not visible to users
        const Package::Entry& arts = *backEnd->group("Arts");
        QCOMPARE(yumIO().getKind(arts), QString("Group of packages"));
        QCOMPARE(yumIO().getMandatoryPkgs(arts), QString("easel"));
        QCOMPARE(yumIO().getDefaultPkgs(arts), QString("palette-knife"));
        QCOMPARE(yumIO().getOptionalPkgs(arts), QString("brushwork\nvarnish-coat"));
        QCOMPARE(yumIO().getConditionalPkgs(arts), QString());
        QCOMPARE(yumIO().getFiles(arts), QString());
        QCOMPARE(yumIO().getChangeLog(arts), QString());
    }

    void suitesHaveTheExpectedKind()
    {
        QCOMPARE(yumIO().getKind(*backEnd->entry("vyre-office-suite")), QString("Suite of packages"));
        const Package::Entry& suite = *backEnd->entry("vyre-network-suite");
        QCOMPARE(suite.kind, Package::Suite);
        QCOMPARE(suite.state, Package::Updatable);
        QCOMPARE(suite.next->kind, Package::Suite);
        QCOMPARE(yumIO().getRequires(*backEnd->entry("vyre-office-suite")),
                 QString("lectern-slides\nledger-calc\nscribe-writer"));
    }

    void textsWithMarkupAndLettersOfManyAlphabetsAreUnchanged()
    {
        QCOMPARE(yumIO().getSummary(*backEnd->entry("tagsoup")),
                 QString("Shows <b>bold</b><script>alert(1)</script> & <img src=x>"));
        QCOMPARE(yumIO().getVendor(*backEnd->entry("tagsoup")), QString("Angle <b>Brackets</b> & Sons"));
        QCOMPARE(yumIO().getSummary(*backEnd->entry("emoji-rain")),
                 QString::fromUtf8("Rain of 🌧️ and 🌈 over the desktop"));
        QCOMPARE(yumIO().getChangeLog(*backEnd->entry("tagsoup-installed")),
                 changeLog({"-q", "tagsoup-installed"}));
    }

    void loadingTheExtraDataAgainAfterACollectionDoesNothing()
    {
        QSignalSpy spy(&yumIO(), SIGNAL(collectedExtraData()));
        QVERIFY(yumIO().collectFileLists());
        QVERIFY(yumIO().collectOtherData());
        QCOMPARE(spy.count(), 0);
        // The extra data can also be loaded after the collection.
        yumIO().fileListsLoaded = false;
        yumIO().otherDataLoaded = false;
        QVERIFY(yumIO().collectFileLists());
        QVERIFY(yumIO().collectOtherData());
        QCOMPARE(spy.count(), 2);
        QCOMPARE(texts(), QStringList());
    }

    void theVersionAndTheVariablesOfDnfAreKnown()
    {
        QVERIFY(yumIO().dnfVersion() >= 40000);
        QCOMPARE(yumIO().getYumVar("releasever"), QString("9"));
        QCOMPARE(yumIO().getYumVar("installroot"), root);
        QCOMPARE(texts(), QStringList());
    }

    void aCollectionUsesTheRepositoriesThatTheSessionEnables()
    {
        QVERIFY(backEnd->entry("hidden-gem") == nullptr);
        collectAgain({{"sandbox-disabled", true}, {"sandbox-http", false}, {"not-configured", true}});
        QVERIFY(backEnd->entry("hidden-gem") != nullptr);
        QVERIFY(backEnd->entry("orchard") == nullptr);
        QVERIFY(!yumIO().enabledRepos.contains("sandbox-http"));
        collectAgain();
        QVERIFY(backEnd->entry("hidden-gem") == nullptr);
        QVERIFY(backEnd->entry("orchard") != nullptr);
    }

    // --- Texts to search

    void theSearchTextsOfPackagesEqualTheTextsOfTheGetters()
    {
        setMetadataPath("genuinePath(self, repoid, kind)");
        checkSearchTexts(1 << 30);
        // Here, `fewPackages` is larger than the number of packages. So the texts come from the packages, not
        // from the metadata.
        QCOMPARE(backEnd->text("asked"), QString("[]"));
        const Package::Entry& orchard = *backEnd->entry("orchard");
        QVERIFY(
            orchard.searchTexts.text().replace('\0', "|").startsWith("orchard|3.0-1|sandbox-http|x86_64|"));
        QVERIFY(orchard.searchTexts.text().endsWith(QByteArray(2, '\0')));
        QCOMPARE(orchard.searchFiles.text(), QByteArray("/usr/bin/orchard\n/usr/share/doc/orchard/README"));
        QVERIFY(orchard.searchChangeLog.text().startsWith("* "));
    }

    void aGroupHasTheExpectedSearchTexts()
    {
        SKIP_WITHOUT_GROUPS();
        QCOMPARE(backEnd->group("Arts")->searchTexts.text().replace('\0', "|"),
                 QByteArray("Arts|easel|palette-knife|brushwork\nvarnish-coat||"));
    }

    void searchTextsFromTheMetadataEqualTheTextsOfTheGetters()
    {
        const int logged = backEnd->log().count();
        for (const char* name : {"UTC", "Pacific/Kiritimati", "Pacific/Pago_Pago"}) {
            const TimeZone zone(name);
            setMetadataPath("genuinePath(self, repoid, kind)");
            checkSearchTexts(0);
            QCOMPARE(
                backEnd->text("('sandbox-http', 'filelists') in asked, ('sandbox-http', 'other') in asked"),
                QString("(True, True)"));
        }
        const QStringList log = backEnd->log(logged);
        QCOMPARE(log.filter(QRegularExpression("^[23] ")), QStringList());
        QCOMPARE(log.count("4 0 Collecting Texts to Search"), 3);
    }

    void theSearchReadsFileListsAndChangeLogsFromTheMetadata_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("state");
        QTest::newRow("available") << "orchard" << int(Package::Available);
        QTest::newRow("update") << "loomctl" << int(Package::Updatable);
    }

    void theSearchReadsFileListsAndChangeLogsFromTheMetadata()
    {
        QFETCH(QString, name);
        QFETCH(int, state);
        Package::Entry* entry = backEnd->entry(name);
        QCOMPARE(int(entry->state), state);
        const PyRef checksum(PyObject_GetAttrString(entry->pyObject, "chksum"));
        PyObject* digest = PyTuple_GetItem(checksum.get(), 1);
        const QByteArray id =
            QByteArray(PyBytes_AsString(digest), static_cast<int>(PyBytes_Size(digest))).toHex();
        const auto make = [this, id](const char* kind, const QByteArray& element,
                                     const QByteArray& contents) {
            QFile made(sandbox.filePath(QStringLiteral("made-") + kind));
            QVERIFY(made.open(QIODevice::WriteOnly));
            made.write('<' + element + "><package pkgid=\"" + id + "\">" + contents + "</package></" +
                       element + '>');
        };
        make("filelists", "filelists", "<file>/made/up</file>");
        make("other", "otherdata", "<changelog author=\"Nobody\" date=\"0\">made up</changelog>");
        setMetadataPath("'" + sandbox.filePath("made-") + "' + kind if repoid == '" + entry->repo +
                        "' else None");
        entry->searchTexts = PackedText();
        const int before = YumIOProbe::fewPackages;
        YumIOProbe::fewPackages = 0;
        yumIO().collectSearchTexts({entry});
        YumIOProbe::fewPackages = before;
        QCOMPARE(entry->searchFiles.text(), QByteArray("/made/up"));
        QCOMPARE(entry->searchChangeLog.text(), QByteArray("* Thu Jan 1 1970 Nobody\nmade up"));
    }

    void searchTextsComeFromThePackagesIfMetadataAreUnreadable_data()
    {
        QTest::addColumn<QString>("expression");
        QTest::addColumn<bool>("warned");
        QTest::newRow("no path") << "None" << false;
        QTest::newRow("a missing file") << "'/nonexistent/metadata.xml.gz'" << true;
        QTest::newRow("a directory") << "'/'" << true;
        QTest::newRow("a file without metadata") << "'/bin/sh'" << true;
        QTest::newRow("metadata of another repository") << "genuinePath(self, 'sandbox-file', kind)" << false;
        QTest::newRow("metadata of another kind")
            << "genuinePath(self, repoid, 'other' if kind == 'filelists' else 'filelists')" << true;
        QTest::newRow("file that is cut off") << "cutOff(genuinePath(self, repoid, kind))" << true;
    }

    void searchTextsComeFromThePackagesIfMetadataAreUnreadable()
    {
        QFETCH(QString, expression);
        QFETCH(bool, warned);
        backEnd->run("def cutOff(path):\n"
                     "    if path is None: return None\n"
                     "    with open(path, 'rb') as stream: content = stream.read()\n"
                     "    short = '" +
                     sandbox.filePath("short") +
                     "-' + path.replace('/', '-')\n"
                     "    with open(short, 'wb') as stream: stream.write(content[:len(content) // 2])\n"
                     "    return short\n");
        setMetadataPath(expression);
        const int logged = backEnd->log().count();
        checkSearchTexts(0);
        QVERIFY(backEnd->text("len(asked) > 0") == "True");
        QCOMPARE(!backEnd->log(logged).filter(QRegularExpression("^2 1 Unable to read /[^:]*: .")).isEmpty(),
                 warned);
    }

    void theSearchTextsOfARecordAreReadOnce()
    {
        setMetadataPath("genuinePath(self, repoid, kind)");
        checkSearchTexts(1 << 30);
        const int logged = backEnd->log().count();
        yumIO().collectSearchTexts(allEntries());
        QCOMPARE(backEnd->log(logged), QStringList()); // nothing had to be read
        Package::Entry* orchard = backEnd->entry("orchard");
        Package::Entry* easel = backEnd->entry("easel");
        const QByteArray texts = orchard->searchTexts.text();
        orchard->searchTexts = PackedText();
        easel->searchTexts = PackedText("as it is");
        yumIO().collectSearchTexts(allEntries());
        QCOMPARE(orchard->searchTexts.text(), texts);
        QCOMPARE(easel->searchTexts.text(), QByteArray("as it is"));
        easel->searchTexts = PackedText();
        // If the file lists or the other data are not loaded, the worker collects no texts.
        for (bool* loaded : {&yumIO().fileListsLoaded, &yumIO().otherDataLoaded}) {
            *loaded = false;
            yumIO().collectSearchTexts(allEntries());
            QVERIFY(easel->searchTexts.isNull());
            *loaded = true;
        }
        yumIO().collectSearchTexts({easel});
        QCOMPARE(easel->searchTexts.text(), searchedTexts(*easel));
        backEnd->run("YumIO.metadataPath = genuinePath");
    }

    void aStoppedSearchReadsNoTexts()
    {
        for (const int fewPackages : {0, 1 << 30}) {
            YumIOProbe::fewPackages = fewPackages;
            for (Package::Entry* entry : allEntries()) {
                entry->searchTexts = entry->searchFiles = entry->searchChangeLog = PackedText();
            }
            const int logged = backEnd->log().count();
            // The event loop calls this function before it lets the worker begin.
            QTimer::singleShot(0, [this] { yumIO().stop(); });
            QVERIFY(!yumIO().collectSearchTexts(allEntries()));
            QVERIFY(yumIO().wasStopped());
            QCOMPARE(backEnd->log(logged), QStringList({"4 0 Collecting Texts to Search", "4 0 Stopped."}));
            for (const Package::Entry* entry : allEntries()) {
                QVERIFY(entry->searchTexts.isNull());
                QVERIFY(entry->searchFiles.isNull());
                QVERIFY(entry->searchChangeLog.isNull());
            }
            QVERIFY(yumIO().collectSearchTexts(allEntries()));
            QVERIFY(!backEnd->entry("orchard")->searchTexts.isNull());
            QVERIFY(!backEnd->entry("orchard")->searchFiles.isNull());
        }
        YumIOProbe::fewPackages = 300;
    }

    // --- Transactions

    void theSystemIsNotChangedIfTheUserRefusesTheListing()
    {
        const QSet<QString> before = installed();
        backEnd->entry("chatterbox")->action = Package::Install;
        backEnd->answers.press("Cancel");
        QVERIFY(!yumIO().apply());
        QCOMPARE(backEnd->answers.takeTexts("Apply").count(), 1);
        QVERIFY(!yumIO().systemChanged());
        QCOMPARE(installed(), before);
        backEnd->entry("chatterbox")->action = Package::None;
    }

    void aMessageExplainsWhyATransactionIsImpossible()
    {
        const QSet<QString> before = installed();
        backEnd->entry("moonbridge")->action = Package::Install;
        QVERIFY(!yumIO().apply());
        const QStringList shown = backEnd->answers.takeTexts("VYRE Yum Error");
        QCOMPARE(shown.count(), 1);
        QVERIFY2(shown[0].contains("gravity >= 6") && shown[0].endsWith("Unable to apply changes"),
                 qPrintable(shown[0]));
        QCOMPARE(installed(), before);
        backEnd->entry("moonbridge")->action = Package::None;
    }

    void oneTransactionCanInstallUpdateAndRemovePackages()
    {
        const QSet<QString> before = installed();
        const int logged = backEnd->log().count();
        backEnd->entry("chatterbox")->action = Package::Install;
        backEnd->entry("abacus-cli")->action = Package::Update;
        backEnd->entry("almanac")->action = Package::Remove;
        const quint64 download = backEnd->entry("chatterbox")->size + backEnd->entry("abacus-cli")->size;
        const QString repositories = sandbox.filePath("sandbox/http/");
        const quint64 size =
            rpm({"-qp", repositories + "sandbox-http/chatterbox-1.0-1.noarch.rpm", "--qf", "%{LONGSIZE}"})
                .toULongLong() +
            rpm({"-qp", repositories + "sandbox-updates/abacus-cli-3.3.0-2.x86_64.rpm", "--qf",
                 "%{LONGSIZE}"})
                .toULongLong();
        QVERIFY(yumIO().apply());
        QCOMPARE(backEnd->answers.takeTexts("Apply"),
                 QStringList("Transaction to be performed:\n"
                             "\tUpgrade: abacus-cli 3.3.0-2 (x86_64) [sandbox-updates]\n"
                             "\tRemove: almanac 1.9-1 (noarch)\n"
                             "\tInstall: chatterbox 1.0-1 (noarch) [sandbox-http]\n"
                             "\nCached size: 0b\nTotal download size: " +
                             ScriptValues::bytesFormat(download) +
                             "\nInstalled size: " + ScriptValues::bytesFormat(size) + "\n"));
        QVERIFY(yumIO().systemChanged());
        QCOMPARE(backEnd->bars(), QStringList({"idle", "idle"}));

        const QSet<QString> after = installed();
        QCOMPARE(after - before, QSet<QString>({"chatterbox-1.0-1.noarch", "abacus-cli-3.3.0-2.x86_64"}));
        QCOMPARE(before - after, QSet<QString>({"almanac-1.9-1.noarch", "abacus-cli-3.2.1-1.x86_64"}));
        QFile program(root + "/usr/bin/abacus-cli");
        QVERIFY(program.open(QIODevice::ReadOnly));
        QVERIFY(program.readAll().contains("abacus-cli 3.3.0"));

        const QStringList log = backEnd->log(logged);
        for (const char* line :
             {"4 0 Applying", "4 0 Applying: OK", "0 1 Installing chatterbox", "0 1 Upgrading abacus-cli",
              "0 1 Completing upgrade of abacus-cli", "0 1 Removing almanac"}) {
            QVERIFY2(log.count(line) == 1, line);
        }
        QVERIFY(log.contains("0 1 Executing scriptlet for chatterbox"));
        for (const char* said :
             {"chatterbox: pre to standard output", "chatterbox: post to standard error"}) {
            QVERIFY2(log.filter(said).count() == 1, qPrintable(log.join('\n')));
        }
        // The progress has ended exactly at the calculated weight.
        QCOMPARE(yumIO().transaction.actCounter, yumIO().transaction.rpmWeight);
        QCOMPARE(yumIO().transaction.remoteCount, 2U);
        QVERIFY(yumIO().transaction.payloadSlots.isEmpty());

        collectAgain();
        QCOMPARE(backEnd->entry("chatterbox")->state, Package::Installed);
        QCOMPARE(backEnd->entry("abacus-cli")->state, Package::Installed);
        QCOMPARE(backEnd->entry("abacus-cli")->verRel, QString("3.3.0-2"));
        QVERIFY(backEnd->entry("abacus-cli")->next == nullptr);
        QCOMPARE(backEnd->entry("almanac")->state, Package::Available);
    }

    void aGroupIsInstalledTogetherWithItsPackages()
    {
        SKIP_WITHOUT_GROUPS();
        const QSet<QString> before = installed();
        backEnd->group("Games")->action = Package::Install;
        QVERIFY(yumIO().apply());
        const QStringList shown = backEnd->answers.takeTexts("Apply");
        QCOMPARE(shown.count(), 1);
        QVERIFY2(shown[0].contains(
                     "Performing the following to resolve dependencies:\n\tInstall (group): hedgerow "),
                 qPrintable(shown[0]));
        QStringList names;
        for (const QString& package : installed() - before) {
            names.append(package.section('-', 0, -3));
        }
        names.sort();
        QCOMPARE(names, QStringList({"hedgerow", "orrery", "pebble-go"}));
        collectAgain();
        QCOMPARE(backEnd->group("Games")->state, Package::Installed);
    }

    void aCollectionFillsTheCachesAgainAfterCleaning()
    {
        const auto metadata = [this] {
            int count = 0;
            QDirIterator files(root + "/var/cache", {"*.solv", "*.solvx", "repomd.xml"}, QDir::Files,
                               QDirIterator::Subdirectories);
            for (; files.hasNext(); files.next()) {
                ++count;
            }
            return count;
        };
        const int count = yumIO().count();
        QVERIFY(metadata() > 0);
        QVERIFY(yumIO().cleanDbcache());
        QVERIFY(yumIO().cleanPackages());
        QVERIFY(yumIO().cleanMetadata());
        QVERIFY(yumIO().cleanAll());
        QCOMPARE(metadata(), 0);
        collectAgain();
        QVERIFY(metadata() > 0);
        QCOMPARE(yumIO().count(), count);
    }

    // --- Plug-ins of the package manager

    void theLogContainsTheOutputOfPlugInsAndTheirPrograms()
    {
        const QString directory = sandbox.filePath("plugins");
        QVERIFY(QDir().mkpath(directory));
        QFile plugIn(directory + "/noisy.py");
        QVERIFY(plugIn.open(QIODevice::WriteOnly));
        plugIn.write("import os, dnf\n"
                     "class Noisy(dnf.Plugin):\n"
                     "    name = 'noisy'\n"
                     "    def config(self):\n"
                     "        print('config printed')\n"
                     "        os.system('echo config ran; echo config complained >&2')\n"
                     "    def sack(self):\n"
                     "        os.system('echo sack ran')\n");
        plugIn.close();
        QFile configuration(root + "/etc/yum.conf");
        QVERIFY(configuration.open(QIODevice::Append));
        configuration.write("plugins=1\npluginpath=" + directory.toUtf8() + "\n");
        configuration.close();
        const int from = yumIO().logEntries().count();
        collectAgain();
        const QStringList log = backEnd->log(from);
        for (const char* line :
             {"1 0 config printed", "1 0 config ran", "3 0 config complained", "1 0 sack ran"}) {
            QVERIFY2(log.contains(line), qPrintable(log.join('\n')));
        }
    }

    void onlyTheCollectionEndsIfAPlugInCallsSysExit()
    {
        QFile plugIn(sandbox.filePath("plugins/ender.py"));
        QVERIFY(plugIn.open(QIODevice::WriteOnly));
        plugIn.write("import sys, dnf\n"
                     "class Ender(dnf.Plugin):\n"
                     "    name = 'ender'\n"
                     "    def config(self):\n"
                     "        sys.exit('enough')\n");
        plugIn.close();
        yumIO().clearEntries();
        yumIO().reset();
        QVERIFY(!backEnd->collect());
        QCOMPARE(texts(), QStringList({"VYRE Yum Error: The plug-in ender has ended the operation: enough\n"
                                       "Unable to initialize"}));
        QVERIFY(plugIn.remove());
        collectAgain();
        QVERIFY(yumIO().count() > 0);
    }

    // The browser must open the address from which dnf downloads. Newer versions of dnf replace more
    // variables than older versions.
    void variablesInTheUrlForTheBrowserHaveTheValuesOfDnf()
    {
        QVERIFY(QDir().mkpath(root + "/etc/dnf/vars"));
        QFile variable(root + "/etc/dnf/vars/place");
        QVERIFY(variable.open(QIODevice::WriteOnly));
        variable.write("north\n");
        variable.close();
        const QStringList urls{"http://h/$releasever/$basearch/$arch/",
                               "http://h/$releasever_major/$releasever_minor/$releasever.x",
                               "http://h/$place/${place}/${basearch}s/$places",
                               "http://h/${nothing:-else}/${place:+there}/$nothing/$BaseArch/$",
                               QString::fromUtf8("http://h/\xc3\xa4$place?a=%20b")};
        QFile file(root + "/etc/yum.repos.d/expanded.repo");
        QVERIFY(file.open(QIODevice::WriteOnly));
        for (int i = 0; i < urls.count(); ++i) {
            file.write(QString("[expanded%1]\nname=x\nenabled=0\nbaseurl=%2\n").arg(i).arg(urls[i]).toUtf8());
        }
        file.close();
        yumIO().clearEntries();
        yumIO().reset();
        backEnd->run("import gc\n"
                     "readAgain = [each for each in gc.get_objects() if isinstance(each, YumIO)][0].base");
        for (int i = 0; i < urls.count(); ++i) {
            QCOMPARE(yumIO().expandVariables(urls[i]),
                     backEnd->text(QString("readAgain.repos['expanded%1'].baseurl[0]").arg(i)));
        }
        QCOMPARE(yumIO().expandVariables("$basearch $releasever $place"), QString("x86_64 9 north"));
        QCOMPARE(texts(), QStringList());
        backEnd->run("del readAgain");
        QVERIFY(file.remove() && variable.remove());
        collectAgain();
    }
};

QTEST_MAIN(YumIOSandboxTest)
#include "YumIOSandboxTest.moc"
