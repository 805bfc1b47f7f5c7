// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>

#include <QDir>
#include <QDirIterator>
#include <QTemporaryDir>

#include <sys/stat.h>
#include <unistd.h>

#include "repo/YumConfIO.h"
#include "tests/repo/RandomConfiguration.h"
#include "tests/support/AnsweringUser.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/Files.h"

namespace {

// One section of a file, with the position that determines its place in the file.
struct Placed
{
    Section section;
    double position;
};

struct ConfigurationFile
{
    QList<Placed> sections;
    // Whether the file existed before VYRE wrote it. If so, the next members are its mode and owner.
    bool existed = false;
    mode_t mode = 0;
    uid_t owner = 0;
    gid_t group = 0;
};

// The number of cases: `number`, multiplied by the environment variable VYRE_TEST_FACTOR. The seeds of the
// cases are 0 to this number - 1, and a failure shows the seed.
quint32 numberOfCases(quint32 number)
{
    bool given = false;
    const uint factor = qEnvironmentVariable("VYRE_TEST_FACTOR").toUInt(&given);
    return given ? number * factor : number;
}

QString describe(const QString& file, double position, const Section& section)
{
    return QStringList({file, QString::number(position), section.id, section.name, section.baseurl,
                        section.mirrorlist, QString::number(section.enabled),
                        QString::number(section.gpgcheck), section.options})
        .join(QLatin1Char('|'));
}

// The descriptions of all sections, sorted. The order of the files is unknown, because it depends on the
// directory.
QStringList describe(const QMap<QString, ConfigurationFile>& files)
{
    QStringList result;
    for (auto file = files.begin(); file != files.end(); ++file) {
        for (const Placed& each : file->sections) {
            result += describe(file.key(), each.position, each.section);
        }
    }
    result.sort();
    return result;
}

QStringList describe(const QList<Repo::Entry>& entries)
{
    QStringList result;
    for (const Repo::Entry& each : entries) {
        result += describe(
            each.file, each.position,
            {each.id, each.name, each.baseurl, each.mirrorlist, each.enabled, each.gpgcheck, each.options});
    }
    result.sort();
    return result;
}

QString differences(const QStringList& actual, const QStringList& expected)
{
    QString result;
    for (const QString& each : expected) {
        if (!actual.contains(each)) {
            result += QStringLiteral("\nmissing: ") + each;
        }
    }
    for (const QString& each : actual) {
        if (!expected.contains(each)) {
            result += QStringLiteral("\nunexpected: ") + each;
        }
    }
    return result;
}

} // namespace

// Tests of properties that hold for every configuration. Each test uses many random configurations.
class YumConfIOPropertiesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();

    void writtenFilesAreReadBackWithTheSameValues();
    void eachRoundOfReadingAndWritingEncodesBytesBeyondAsciiAgain();
    void editingOneValueDoesNotChangeOtherValues();
    void aNewFileWithAPasswordIsReadableOnlyByItsOwner();

private:
    QString path(const QString& relative) const { return root->path() + QLatin1Char('/') + relative; }
    QString mainPath() const { return path(QStringLiteral("etc/yum.conf")); }
    // The paths of all files below the managed root, with their contents.
    QMap<QString, QByteArray> snapshot() const;
    // Makes a random configuration, and writes its files.
    void make(RandomConfiguration& random);
    // The text that VYRE must write to this file.
    QString textOf(const QString& file) const;
    // The expected contents of all files after VYRE has written them.
    QMap<QString, QByteArray> expected() const;
    // Stores the present text and contents of each file with bytes beyond ASCII in `remembered`.
    void remember();
    // Edits each file, so that VYRE writes it.
    void editAll();
    void roundTrips(bool ascii);

    // Each of these functions makes a random change in VYRE's list of entries, and the same change in the
    // expected files.
    void edit(RandomConfiguration& random);
    void add(RandomConfiguration& random);
    void remove(RandomConfiguration& random);
    void move(RandomConfiguration& random);
    void place(RandomConfiguration& random, Repo::Entry& entry, const Section& section);
    // Chooses an entry at random. Returns its index in the list of entries, and sets its file and its index
    // in this file.
    int choose(RandomConfiguration& random, QString& file, int& index);

    // No message box is expected. This simulated user logs the text of an unexpected box and closes the box,
    // so the test fails instead of waiting.
    const AnsweringUser user{[](QDialog* box) {
        qWarning("%s", qPrintable(qobject_cast<QMessageBox*>(box)->text()));
        box->reject();
    }};
    QScopedPointer<QTemporaryDir> root;
    EnvironmentVariable managedRoot{"VYREROOT"};
    QList<YumRepoEnabled> requests;
    QHash<QString, bool> session;
    QScopedPointer<YumConfIO> conf;

    QString mainText;
    QMap<QString, ConfigurationFile> files;
    // The files with bytes beyond ASCII. VYRE writes them only if they were edited. Each value is the result
    // of textOf() and the contents of the file when remember() was called.
    QMap<QString, QPair<QString, QByteArray>> remembered;
    int added = 0;
};

QMap<QString, QByteArray> YumConfIOPropertiesTest::snapshot() const
{
    QMap<QString, QByteArray> result;
    QDirIterator listing(root->path(), QDir::Files | QDir::Hidden | QDir::System,
                         QDirIterator::Subdirectories);
    while (listing.hasNext()) {
        QFile file(listing.next());
        if (!file.open(QIODevice::ReadOnly)) {
            qFatal("cannot read %s", qPrintable(file.fileName()));
        }
        result.insert(file.fileName(), file.readAll());
    }
    return result;
}

void YumConfIOPropertiesTest::make(RandomConfiguration& random)
{
    for (const QString& old : snapshot().keys()) {
        QFile::remove(old);
    }
    files.clear();
    session.clear();
    added = 0;
    const auto makeFile = [this](const QString& name, const QByteArray& contents,
                                 const QList<Section>& sections) {
        Files::put(name, contents);
        ConfigurationFile& file = files[name];
        file.existed = true;
        for (const Section& each : sections) {
            file.sections.append({each, file.sections.size() + 1.0});
        }
    };
    const QByteArray mainPart = random.mainPart();
    mainText = QString::fromLatin1(mainPart);
    QList<Section> sections;
    const QByteArray ofMain = random.sections(sections);
    makeFile(mainPath(), mainPart + ofMain, sections);
    for (const char* name : {"etc/yum.repos.d/a.repo", "etc/yum.repos.d/b.repo", "etc/yum/repos.d/a.repo"}) {
        sections.clear();
        const QByteArray contents = random.repoFile(sections);
        makeFile(path(QString::fromLatin1(name)), contents, sections);
    }
    remember();
}

QString YumConfIOPropertiesTest::textOf(const QString& file) const
{
    QStringList texts;
    for (const Placed& each : files.value(file).sections) {
        texts += each.section.text();
    }
    return (file == mainPath() ? mainText : QString()) + texts.join(QLatin1Char('\n'));
}

QMap<QString, QByteArray> YumConfIOPropertiesTest::expected() const
{
    QMap<QString, QByteArray> result;
    for (auto file = files.begin(); file != files.end(); ++file) {
        const QString text = textOf(file.key());
        if (remembered.contains(file.key()) && remembered.value(file.key()).first == text) {
            result.insert(file.key(), remembered.value(file.key()).second);
        } else if (!file->sections.isEmpty() || file.key() == mainPath()) {
            result.insert(file.key(), text.toUtf8());
        }
    }
    return result;
}

void YumConfIOPropertiesTest::remember()
{
    remembered.clear();
    const QMap<QString, QByteArray> present = snapshot();
    for (auto file = present.begin(); file != present.end(); ++file) {
        const auto isBeyond = [](char byte) { return (byte & 0x80) != 0; };
        if (std::any_of(file->begin(), file->end(), isBeyond)) {
            remembered.insert(file.key(), {textOf(file.key()), *file});
        }
    }
}

void YumConfIOPropertiesTest::editAll()
{
    const QString line = QStringLiteral("# edited %1\n").arg(++added);
    conf->mainText += line;
    mainText += line;
    for (Repo::Entry& entry : conf->entries) {
        entry.options += line;
    }
    for (ConfigurationFile& file : files) {
        for (Placed& each : file.sections) {
            each.section.options += line;
        }
    }
}

void YumConfIOPropertiesTest::initTestCase()
{
    umask(022);
}

void YumConfIOPropertiesTest::init()
{
    root.reset(new QTemporaryDir(Files::scratchTemplate()));
    QVERIFY(root->isValid());
    managedRoot.set(QFile::encodeName(root->path()));
    QVERIFY(QDir(root->path()).mkpath(QStringLiteral("etc/yum.repos.d")));
    QVERIFY(QDir(root->path()).mkpath(QStringLiteral("etc/yum/repos.d")));
    conf.reset(new YumConfIO(requests, session));
}

void YumConfIOPropertiesTest::roundTrips(bool ascii)
{
    const quint32 cases = numberOfCases(ascii ? 4000 : 2000);
    quint32 sections = 0;
    for (quint32 seed = 0; seed < cases; ++seed) {
        const QByteArray context = "seed " + QByteArray::number(seed);
        RandomConfiguration random(seed, ascii);
        make(random);

        QVERIFY2(conf->read(nullptr), context);
        sections += quint32(conf->entries.size());
        QVERIFY2(describe(conf->entries) == describe(files),
                 context + differences(describe(conf->entries), describe(files)).toUtf8());
        QVERIFY2(conf->mainText == mainText, context);

        if (!ascii) {
            editAll();
        }
        QVERIFY2(conf->write(nullptr), context);
        const auto written = snapshot();
        QVERIFY2(written == expected(), context);

        for (ConfigurationFile& file : files) {
            for (Placed& each : file.sections) {
                each.section = readBack(each.section);
            }
        }
        mainText = readBack(mainText);
        remember();
        QVERIFY2(conf->read(nullptr), context);
        QVERIFY2(describe(conf->entries) == describe(files),
                 context + differences(describe(conf->entries), describe(files)).toUtf8());
        QVERIFY2(conf->mainText == mainText, context);

        if (!ascii) {
            editAll();
        }
        QVERIFY2(conf->write(nullptr), context);
        QVERIFY2(snapshot() == expected(), context);
        if (ascii) {
            QVERIFY2(snapshot() == written, context);
        }
    }
    qInfo("%u configurations with %u sections", cases, sections);
    // The test is meaningful only if the random configurations contain enough values.
    QVERIFY(sections > 5 * cases);
}

void YumConfIOPropertiesTest::writtenFilesAreReadBackWithTheSameValues()
{
    roundTrips(true);
}

void YumConfIOPropertiesTest::eachRoundOfReadingAndWritingEncodesBytesBeyondAsciiAgain()
{
    roundTrips(false);
}

int YumConfIOPropertiesTest::choose(RandomConfiguration& random, QString& file, int& index)
{
    const int chosen = random.below(conf->entries.size());
    const QString id = conf->entries.at(chosen).id;
    for (auto i = files.begin(); i != files.end(); ++i) {
        for (index = 0; index < i->sections.size(); ++index) {
            if (i->sections.at(index).section.id == id) {
                file = i.key();
                return chosen;
            }
        }
    }
    qFatal("no section %s is expected", qPrintable(id));
}

void YumConfIOPropertiesTest::edit(RandomConfiguration& random)
{
    if (conf->entries.isEmpty()) {
        return;
    }
    QString file;
    int index = 0;
    Repo::Entry& entry = conf->entries[choose(random, file, index)];
    Section& section = files[file].sections[index].section;
    switch (random.below(7)) {
    case 0:
        entry.name = section.name = random.chance(20) ? QString() : random.typed();
        break;
    case 1: {
        static const QRegularExpression blanks(QStringLiteral("[ \\t]+"));
        entry.baseurl = section.baseurl = random.typed().replace(blanks, QStringLiteral("\n"));
        break;
    }
    case 2:
        entry.mirrorlist = section.mirrorlist = random.chance(20) ? QString() : random.typed();
        break;
    case 3:
        entry.enabled = section.enabled = random.below(3);
        break;
    case 4:
        entry.gpgcheck = section.gpgcheck = random.below(3);
        break;
    case 5: {
        const QString line = random.optionLine();
        entry.options += line;
        section.options += line;
        break;
    }
    default:
        if (entry.file.isEmpty()) {
            // The entry has no file yet, and the identifier decides the name of its file. So the identifier
            // must not change.
            break;
        }
        entry.id = section.id = QStringLiteral("renamed%1").arg(++added);
        break;
    }
}

void YumConfIOPropertiesTest::place(RandomConfiguration& random, Repo::Entry& entry, const Section& section)
{
    QStringList places = files.keys();
    places += path(QStringLiteral("etc/yum.repos.d/new%1.repo").arg(random.below(3)));
    const QString& file = places.at(random.below(places.size()));
    QList<Placed>& sections = files[file].sections;
    const int index = random.below(sections.size() + 1);
    // At the beginning or the end of the file, the new section has only one neighbour. Its position then
    // differs by 1 from the position of this neighbour.
    const double first = sections.isEmpty() ? 1.0 : sections.first().position;
    const double before = index == 0 ? first - 2.0 : sections.at(index - 1).position;
    const double after = index == sections.size() ? before + 2.0 : sections.at(index).position;
    entry.file = file;
    entry.position = (before + after) / 2;
    sections.insert(index, {section, entry.position});
    // VYRE completes a relative path with the first directory.
    const QString directory = path(QStringLiteral("etc/yum.repos.d/"));
    if (file.startsWith(directory) && random.chance(30)) {
        entry.file = file.mid(directory.size());
    }
}

void YumConfIOPropertiesTest::add(RandomConfiguration& random)
{
    Section section;
    random.section(section);
    section.id = QStringLiteral("added%1").arg(++added);
    Repo::Entry entry;
    entry.id = section.id;
    entry.name = section.name;
    entry.baseurl = section.baseurl;
    entry.mirrorlist = section.mirrorlist;
    entry.enabled = section.enabled;
    entry.gpgcheck = section.gpgcheck;
    entry.options = section.options;
    if (random.chance(30)) {
        // An entry without a file gets a new file, which is named after the identifier.
        files[path(QStringLiteral("etc/yum.repos.d/%1.repo").arg(section.id))].sections = {{section, 0.0}};
    } else {
        place(random, entry, section);
    }
    conf->entries.insert(random.below(conf->entries.size() + 1), entry);
}

void YumConfIOPropertiesTest::remove(RandomConfiguration& random)
{
    if (conf->entries.isEmpty()) {
        return;
    }
    QString file;
    int index = 0;
    conf->entries.removeAt(choose(random, file, index));
    files[file].sections.removeAt(index);
}

void YumConfIOPropertiesTest::move(RandomConfiguration& random)
{
    if (conf->entries.isEmpty()) {
        return;
    }
    QString file;
    int index = 0;
    Repo::Entry& entry = conf->entries[choose(random, file, index)];
    const Section section = files[file].sections.takeAt(index).section;
    place(random, entry, section);
}

void YumConfIOPropertiesTest::editingOneValueDoesNotChangeOtherValues()
{
    const quint32 cases = numberOfCases(5000);
    quint32 edits = 0;
    quint32 kept = 0;
    quint32 made = 0;
    quint32 removed = 0;
    const bool privileged = geteuid() == 0;
    for (quint32 seed = 0; seed < cases; ++seed) {
        const QByteArray context = "seed " + QByteArray::number(seed);
        RandomConfiguration random(1000000000 + seed, seed % 2 == 0);
        make(random);
        static const mode_t modes[] = {0600, 0604, 0640, 0644, 0664, 0755};
        for (auto file = files.begin(); file != files.end(); ++file) {
            const QByteArray name = QFile::encodeName(file.key());
            file->mode = modes[random.below(int(std::size(modes)))];
            file->owner = privileged ? uid_t(random.below(3)) * 1000 : geteuid();
            file->group = privileged ? gid_t(random.below(3)) * 100 : getegid();
            QVERIFY2(chown(name.constData(), file->owner, file->group) == 0, name);
            QVERIFY2(chmod(name.constData(), file->mode) == 0, name);
        }
        QVERIFY2(conf->read(nullptr), context);

        for (int i = 1 + random.below(5); i > 0; --i, ++edits) {
            const int kind = random.below(6);
            kind < 3 ? edit(random) : kind == 3 ? add(random) : kind == 4 ? remove(random) : move(random);
        }
        QVERIFY2(conf->write(nullptr), context);
        const QMap<QString, QByteArray> after = expected();
        const QMap<QString, QByteArray> written = snapshot();
        QVERIFY2(written.keys() == after.keys(), context);
        for (auto file = after.begin(); file != after.end(); ++file) {
            QVERIFY2(written.value(file.key()) == *file, context + ", " + QFile::encodeName(file.key()) +
                                                             ", is\n" + written.value(file.key()) +
                                                             "expected\n" + *file);
        }

        for (auto file = files.begin(); file != files.end(); ++file) {
            if (!after.contains(file.key())) {
                removed += file->existed ? 1 : 0;
                continue;
            }
            struct stat status;
            QVERIFY2(stat(QFile::encodeName(file.key()).constData(), &status) == 0, context);
            if (file->existed) {
                // Random text with an "@" may look like a password. Then VYRE removes the rights of other
                // users.
                const mode_t mode = status.st_mode & 07777;
                QVERIFY2(mode == file->mode ||
                             (mode == (file->mode & ~mode_t(07)) && after.value(file.key()).contains('@')),
                         context);
                QVERIFY2(status.st_uid == file->owner && status.st_gid == file->group, context);
                ++kept;
            } else {
                // Random text with an "@" may look like a password.
                const QByteArray& text = after.value(file.key());
                const mode_t mode = status.st_mode & 07777;
                QVERIFY2(mode == 0644 || (mode == 0600 && text.contains('@')), context);
                QVERIFY2(status.st_uid == geteuid(), context);
                ++made;
            }
        }

        // Writing makes only one change to the list in memory: new entries get their files.
        QVERIFY2(describe(conf->entries) == describe(files),
                 context + differences(describe(conf->entries), describe(files)).toUtf8());
    }
    qInfo("%u configurations with %u edits; files: %u written again, %u new, %u removed", cases, edits, kept,
          made, removed);
    QVERIFY(kept > cases && made > cases / 4 && removed > cases / 20);
}

void YumConfIOPropertiesTest::aNewFileWithAPasswordIsReadableOnlyByItsOwner()
{
    static const char* const secrets[] = {"https://user:%1@host/", "http://h/vantor?u=n&p=%1&path=/",
                                          "password=%1", "proxy_password : %1", "proxy=http://u:%1@h:8080"};
    const quint32 cases = numberOfCases(2000);
    for (quint32 seed = 0; seed < cases; ++seed) {
        const QByteArray context = "seed " + QByteArray::number(seed);
        RandomConfiguration random(2000000000 + seed, true);
        make(random);
        QVERIFY2(conf->read(nullptr), context);
        // Up to four new sections share one new file. Only one of them contains the password.
        const QString file = path(QStringLiteral("etc/yum.repos.d/new.repo"));
        const int count = 1 + random.below(4);
        const int chosen = random.below(count);
        const int kind = random.below(int(std::size(secrets)));
        const QString password = QStringLiteral("x%1y").arg(random.below(1000000));
        const QString secret = QString::fromLatin1(secrets[kind]).arg(password);
        for (int i = 0; i < count; ++i) {
            Repo::Entry entry;
            entry.id = QStringLiteral("private%1").arg(i);
            entry.file = file;
            while (random.chance(50)) {
                entry.options += random.optionLine();
            }
            if (i == chosen && kind >= 2) {
                entry.options += secret + QLatin1Char('\n');
            } else if (i == chosen && random.chance(50)) {
                entry.mirrorlist = secret;
            } else if (i == chosen) {
                entry.baseurl = QStringLiteral("http://first/\n") + secret;
            }
            conf->entries.append(entry);
        }
        QVERIFY2(conf->write(nullptr), context);
        QVERIFY2(snapshot().value(file).contains(password.toUtf8()), context);
        struct stat status;
        QVERIFY2(stat(QFile::encodeName(file).constData(), &status) == 0, context);
        QVERIFY2((status.st_mode & 07777) == 0600, context);
    }
    qInfo("%u new files with a password", cases);
}

QTEST_MAIN(YumConfIOPropertiesTest)
#include "YumConfIOPropertiesTest.moc"
