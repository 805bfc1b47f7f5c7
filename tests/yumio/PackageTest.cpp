// SPDX-License-Identifier: GPL-2.0-or-later

#include "yumio/Package.h"

#include <cstdio>
#include <unistd.h>

#include <QTemporaryFile>
#include <QtTest>

#include "yumio/YumIO.h"

namespace {

// The text that the function writes to standard error.
template <typename Function> QString standardErrorOf(const Function& function)
{
    QTemporaryFile file;
    if (!file.open()) {
        return QStringLiteral("no file");
    }
    std::fflush(stderr);
    const int saved = dup(STDERR_FILENO);
    dup2(file.handle(), STDERR_FILENO);
    function();
    std::fflush(stderr);
    dup2(saved, STDERR_FILENO);
    close(saved);
    file.seek(0);
    return QString::fromUtf8(file.readAll());
}

// A record whose name shares its memory with the argument. So isDetached() of the argument is false until the
// record is deleted.
Package::Entry* named(const QString& name)
{
    auto* entry = new Package::Entry;
    entry->name = name;
    return entry;
}

QString uniqueText(int number)
{
    return QString("record %1").arg(number);
}

} // namespace

class PackageTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theEnumeratorsHaveTheExpectedNumbers()
    {
        QCOMPARE(int(Package::Updatable), 0);
        QCOMPARE(int(Package::Available), 1);
        QCOMPARE(int(Package::Installed), 2);
        QCOMPARE(int(Package::Suite), 0);
        QCOMPARE(int(Package::Group), 1);
        QCOMPARE(int(Package::Ordinary), 2);
        QCOMPARE(int(Package::Update), 0);
        QCOMPARE(int(Package::Install), 1);
        QCOMPARE(int(Package::Remove), 2);
        QCOMPARE(int(Package::None), 3);
        QCOMPARE(sizeof(Package::State), size_t(4));
        QCOMPARE(sizeof(Package::Kind), size_t(4));
        QCOMPARE(sizeof(Package::Action), size_t(4));
    }

    void aNewRecordIsEmpty()
    {
        const Package::Entry entry;
        for (const QString& text : {entry.name, entry.verRel, entry.repo, entry.arch, entry.biArch,
                                    entry.sizeText, entry.summary, entry.buildTimeText}) {
            QVERIFY(text.isEmpty());
        }
        QCOMPARE(entry.size, quint64(0));
        QVERIFY(entry.pyObject == nullptr);
        QVERIFY(!entry.duplicate);
        QVERIFY(entry.next == nullptr);
    }

    void deletingARecordDeletesTheVersionsInItsChain()
    {
        QStringList names;
        for (int i = 0; i < 4; ++i) {
            names.append(uniqueText(i));
        }
        Package::Entry* first = named(names[0]);
        first->next = named(names[1]);
        first->next->next = named(names[2]);
        first->next->next->next = named(names[3]);
        for (const QString& name : qAsConst(names)) {
            QVERIFY(!name.isDetached());
        }
        delete first;
        for (const QString& name : qAsConst(names)) {
            QVERIFY2(name.isDetached(), qPrintable(name));
        }
    }

    void deletingALongChainNeedsNoDeepRecursion()
    {
        Package::Entry* first = named(uniqueText(0));
        Package::Entry* last = first;
        for (int i = 0; i < 1000000; ++i) {
            last->next = new Package::Entry;
            last = last->next;
        }
        const QString name = uniqueText(1);
        last->name = name;
        delete first;
        QVERIFY(name.isDetached());
    }

    void deletingAListDeletesItsRecords()
    {
        const QString name = uniqueText(0);
        const QString chained = uniqueText(1);
        {
            Package::EntryList list;
            QVERIFY(list.isEmpty());
            list.append(named(name));
            list.last()->next = named(chained);
        }
        QVERIFY(name.isDetached());
        QVERIFY(chained.isDetached());
    }

    void deletingRecordsWithUnreleasedPythonObjectsIsReportedOnlyOnce()
    {
        // The destructor may run without the interpreter lock, so it must not dereference this pointer.
        auto* object = reinterpret_cast<PyObject*>(quintptr(0x1234));
        auto* first = new Package::Entry;
        first->pyObject = object;
        auto* second = new Package::Entry;
        second->pyObject = object;
        char expected[200];
        std::snprintf(expected, sizeof expected,
                      "Internal error: attempt to delete Package::Entry %p with extant python obj %p\n",
                      static_cast<void*>(first), static_cast<void*>(object));
        QCOMPARE(standardErrorOf([first] { delete first; }), QString(expected));
        QCOMPARE(standardErrorOf([second] { delete second; }), QString());
        QCOMPARE(standardErrorOf([] { delete new Package::Entry; }), QString());
    }

    void aPackageAndAGroupOfTheSameNameHaveDifferentKeys()
    {
        const YumIO::EntryKey package(false, "base", QString());
        const YumIO::EntryKey group(true, "base", QString());
        QVERIFY(group.arch.isEmpty());
        QVERIFY(!(package == group));
        QVERIFY(package == YumIO::EntryKey(package));
        QVERIFY(!(package == YumIO::EntryKey(false, "base", "i386")));
        QVERIFY(!(package == YumIO::EntryKey(false, "other", QString())));
        QHash<YumIO::EntryKey, int> hash;
        hash[package] = 1;
        hash[group] = 2;
        QCOMPARE(hash.count(), 2);
        QCOMPARE(hash.value(YumIO::EntryKey(true, "base", QString())), 2);
    }

    void theHashOfAKeyDependsOnAllItsParts()
    {
        const QString name = "kernel";
        const QString arch = "x86_64";
        const uint plain = qHash(name) * 2 + qHash(arch) * 4;
        QCOMPARE(qHash(YumIO::EntryKey(false, name, arch)), plain);
        QCOMPARE(qHash(YumIO::EntryKey(true, name, arch)), plain + 1);
        QCOMPARE(qHash(YumIO::EntryKey(true, name, arch), 0x5aa5f00fu), (plain + 1) ^ 0x5aa5f00fu);
    }

    void recordPointersCanBeStoredInVariants()
    {
        const YumIO yumIO;
        // qMetaTypeId() would register the type, so the test first looks for the type by its name.
        const int registered = QMetaType::type("Package::Entry*");
        QVERIFY(registered != QMetaType::UnknownType);
        QCOMPARE(qMetaTypeId<Package::Entry*>(), registered);
        Package::Entry entry;
        const QVariant variant = QVariant::fromValue(&entry);
        QCOMPARE(variant.typeName(), "Package::Entry*");
        QVERIFY(variant.value<Package::Entry*>() == &entry);
    }

    void statesAndKindsHaveTheExpectedTexts()
    {
        const YumIO yumIO;
        Package::Entry entry;
        const QHash<int, QString> states{{0, "Available for update"},
                                         {1, "Available for installation"},
                                         {2, "Installed"},
                                         {3, ""},
                                         {-1, ""}};
        for (auto i = states.begin(); i != states.end(); ++i) {
            entry.state = static_cast<Package::State>(i.key());
            QCOMPARE(yumIO.getState(entry), i.value());
        }
        const QHash<int, QString> kinds{
            {0, "Suite of packages"}, {1, "Group of packages"}, {2, "Ordinary package"}, {3, ""}, {-1, ""}};
        for (auto i = kinds.begin(); i != kinds.end(); ++i) {
            entry.kind = static_cast<Package::Kind>(i.key());
            QCOMPARE(yumIO.getKind(entry), i.value());
        }
    }
};

QTEST_MAIN(PackageTest)
#include "PackageTest.moc"
