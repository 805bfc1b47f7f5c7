// SPDX-License-Identifier: GPL-2.0-or-later

#include <algorithm>

#include <QtTest>

#include "yumio/Records.h"

class RecordsTest : public QObject
{
    Q_OBJECT

private:
    // Adds a record with an invented script object.
    Package::Entry* add(const QString& name, const QString& biArch, Package::State state = Package::Available)
    {
        Package::Entry*& place = records->place(Package::EntryKey(false, name, biArch));
        if (place != nullptr) {
            QTest::qFail(qPrintable(name + " is there already"), __FILE__, __LINE__);
        }
        place = make(name, biArch, state);
        records->added(place);
        return place;
    }
    Package::Entry* make(const QString& name, const QString& biArch, Package::State state)
    {
        auto* entry = new Package::Entry;
        entry->name = name;
        entry->biArch = biArch;
        entry->state = state;
        entry->pyObject = object();
        return entry;
    }
    // An invented pointer, which differs from all others. No code dereferences it.
    PyObject* object()
    {
        objects.append(QByteArray(1, 'x'));
        return reinterpret_cast<PyObject*>(objects.last().data());
    }

    QScopedPointer<Records> records;
    QList<QByteArray> objects;

private Q_SLOTS:
    void init() { records.reset(new Records); }

    void cleanup()
    {
        records->clear();
        records.reset();
        objects.clear();
    }

    void recordsAreInvisibleBeforeTheyArePublished()
    {
        records->reserve(10);
        Package::Entry* first = add("b", "x86_64");
        Package::Entry* second = add("a", "x86_64");
        QCOMPARE(records->count(), 0);
        QVERIFY(records->all().isEmpty());
        QVERIFY(records->find(Package::EntryKey(*first)) == first);
        QVERIFY(records->find(Package::EntryKey(*second)) == second);
        records->publish();
        QCOMPARE(records->count(), 2);
        QVERIFY(records->at(0) == first);
        QVERIFY(records->at(1) == second);
        QCOMPARE(records->all(), QList<Package::Entry*>({first, second}));
    }

    void eachRecordIsFoundByItsKey()
    {
        Package::Entry* package = add("a", "x86_64");
        Package::Entry*& place = records->place(Package::EntryKey(true, "a", QString()));
        QVERIFY(place == nullptr);
        Package::Entry* group = place = make("a", QString(), Package::Available);
        group->kind = Package::Group;
        records->added(group);
        QVERIFY(records->find(Package::EntryKey(false, "a", "x86_64")) == package);
        QVERIFY(records->find(Package::EntryKey(true, "a", QString())) == group);
        QVERIFY(records->find(Package::EntryKey(false, "a", "i386")) == nullptr);
        QVERIFY(records->find(Package::EntryKey(*package)) == package);
        QVERIFY(records->find(Package::EntryKey(*group)) == group);
        QVERIFY(records->place(Package::EntryKey(false, "a", "x86_64")) == package);
    }

    void aRecordIsFoundByASecondKeyIfNoOtherRecordHasThisKey()
    {
        Package::Entry* record = add("a", "x86_64");
        Package::Entry* other = add("b", "i386");
        records->addKey(Package::EntryKey(false, "a", "i386"), record);
        records->addKey(Package::EntryKey(false, "b", "i386"), record);
        records->publish();
        QVERIFY(records->find(Package::EntryKey(false, "a", "i386")) == record);
        QVERIFY(records->find(Package::EntryKey(false, "b", "i386")) == other);
        QVERIFY(records->find(Package::EntryKey(false, "a", "x86_64")) == record);
        QCOMPARE(records->count(), 2);
    }

    void recordsWithTheSameNameAreFoundAlsoIfThereAreMany()
    {
        const auto key = [](int number) {
            return Package::EntryKey(false, "lib", "arch" + QString::number(number));
        };
        const auto isBetter = [](const Package::Entry& best, const Package::Entry&) {
            return best.biArch == "arch70";
        };
        const int count = 100;
        QList<Package::Entry*> all;
        for (int i = 0; i < count; ++i) {
            all.append(add("lib", "arch" + QString::number(i)));
            records->rank(all.last(), isBetter);
            QVERIFY(records->find(key(i + 1)) == nullptr);
        }
        Package::Entry* other = add("other", "arch1");
        records->rank(other, isBetter);
        records->addKey(key(count), other);
        records->addKey(key(70), other); // this key has a record
        for (int i = 0; i < count; ++i) {
            QVERIFY(records->find(key(i)) == all.at(i));
            QVERIFY(records->place(key(i)) == all.at(i));
            QCOMPARE(all.at(i)->duplicate, i != 70);
        }
        QVERIFY(records->find(key(count)) == other);
        QVERIFY(records->place(key(count)) == other);
        QVERIFY(records->findPackage("lib", "arch99") == all.at(99));
        QVERIFY(!other->duplicate);
        records->publish();
        QCOMPARE(records->count(), count + 1);
    }

    void aLookUpByNamePrefersTheGivenBiArchClass()
    {
        Package::Entry* narrow = add("lib", "i386");
        Package::Entry* wide = add("lib", "x86_64");
        Package::Entry* only = add("only", "i386");
        QVERIFY(records->findPackage("lib", "x86_64") == wide);
        QVERIFY(records->findPackage("lib", "i386") == narrow);
        QVERIFY(records->findPackage("only", "x86_64") == only);
        QVERIFY(records->findPackage("nobody", "x86_64") == nullptr);
    }

    void aLookUpByNameIgnoresGroups()
    {
        Package::Entry*& place = records->place(Package::EntryKey(true, "a", QString()));
        place = make("a", QString(), Package::Available);
        place->kind = Package::Group;
        records->added(place);
        QVERIFY(records->findPackage("a", "x86_64") == nullptr);
        QVERIFY(records->findPackage("a", QString()) == nullptr);
    }

    void installedVersionsAreChainedToAnUpdateInOrder()
    {
        Package::Entry* update = add("a", "x86_64", Package::Updatable);
        QVERIFY(Records::installedEntry(update) == nullptr);
        QCOMPARE(Records::installedSize(update), quint64(0));
        QCOMPARE(Records::installedSize(nullptr), quint64(0));
        Package::Entry* first = make("a", "x86_64", Package::Installed);
        first->size = 5;
        Package::Entry* second = make("a", "x86_64", Package::Installed);
        Records::endOfChain(update) = first;
        Records::endOfChain(update) = second;
        QVERIFY(update->next == first);
        QVERIFY(first->next == second);
        QVERIFY(second->next == nullptr);
        QVERIFY(Records::installedEntry(update) == first);
        QVERIFY(Records::installedEntry(first) == first);
        QCOMPARE(Records::installedSize(update), quint64(5));
        records->publish();
        QCOMPARE(records->count(), 1);
    }

    void aRecordIsADuplicateIfABetterRecordHasItsName()
    {
        QStringList compared;
        const auto isBetter = [&compared](const Package::Entry& best, const Package::Entry& other) {
            compared.append(best.biArch + ' ' + other.biArch);
            return best.biArch == "x86_64";
        };
        Package::Entry* narrow = add("lib", "i386");
        records->rank(narrow, isBetter);
        records->rank(add("other", "i386"), isBetter);
        QVERIFY(compared.isEmpty());
        QVERIFY(!narrow->duplicate);
        Package::Entry* wide = add("lib", "x86_64");
        records->rank(wide, isBetter);
        QVERIFY(narrow->duplicate);
        QVERIFY(!wide->duplicate);
        Package::Entry* third = add("lib", "s390x");
        records->rank(third, isBetter);
        QVERIFY(third->duplicate);
        QVERIFY(!wide->duplicate);
        QCOMPARE(compared, QStringList({"i386 x86_64", "x86_64 s390x"}));
    }

    void equalSharedTextsUseTheSameMemory()
    {
        const QString first = records->shared(QString("re") + "po");
        const QString second = records->shared(QString("rep") + "o");
        QCOMPARE(second, QString("repo"));
        QVERIFY(first.constData() == second.constData());
    }

    void replacedAndReplacingPackagesAreNotMarkedAutomatically()
    {
        const Package::Entry* old = add("old", "x86_64", Package::Installed);
        const Package::Entry* other = add("new", "x86_64");
        const Package::Entry* third = add("installed", "x86_64", Package::Installed);
        records->addReplacement(old, "old-1", other, "new-2");
        records->addReplacement(nullptr, "gone-1", other, "new-2");
        records->addReplacement(old, "old-1", nullptr, "hidden-3");
        records->addReplacement(nullptr, "gone-1", third, "installed-1");
        QCOMPARE(records->replacement(*old).by, QStringList({"new-2", "hidden-3"}));
        QCOMPARE(records->replacement(*old).of, QStringList());
        QCOMPARE(records->replacement(*other).of, QStringList({"old-1", "gone-1"}));
        QVERIFY(records->isLeftToUser(*old));
        QVERIFY(records->isLeftToUser(*other));
        QVERIFY(!records->isLeftToUser(*third)); // this package is already installed
        QVERIFY(!records->isLeftToUser(*add("none", "x86_64")));
    }

    void marksThatAreStillPossibleAreRestored()
    {
        add("install", "x86_64")->action = Package::Install;
        add("remove", "x86_64", Package::Installed)->action = Package::Remove;
        add("none", "x86_64");
        QVERIFY(records->marks().isEmpty());
        records->publish();
        const Package::Marks marks = records->marks();
        const Package::EntryKey install(false, "install", "x86_64");
        const Package::EntryKey remove(false, "remove", "x86_64");
        QCOMPARE(marks, Package::Marks({{install, Package::Install}, {remove, Package::Remove}}));
        records->clear();
        const Package::Entry* again = add("install", "x86_64");
        const Package::Entry* removed = add("remove", "x86_64");
        records->restoreMarks(marks);
        QCOMPARE(again->action, Package::Install);
        QCOMPARE(removed->action, Package::None);
    }

    void clearingTheRecordsReleasesEveryReferenceOnce()
    {
        Package::Entry* update = add("a", "x86_64", Package::Updatable);
        Records::endOfChain(update) = make("a", "x86_64", Package::Installed);
        records->addKey(Package::EntryKey(false, "a", "i386"), update);
        add("b", "x86_64");
        records->addReplacement(update, "a-1", nullptr, "c-1");
        records->publish();
        QList<PyObject*> dropped;
        records->clear([&dropped](PyObject* object) { dropped.append(object); });
        QList<PyObject*> expected;
        for (QByteArray& each : objects) {
            expected.append(reinterpret_cast<PyObject*>(each.data()));
        }
        std::sort(dropped.begin(), dropped.end());
        std::sort(expected.begin(), expected.end());
        QCOMPARE(dropped.count(), 3);
        QCOMPARE(dropped, expected);
        QCOMPARE(records->count(), 0);
        for (const auto& key :
             {qMakePair(QString("a"), QString("x86_64")), qMakePair(QString("a"), QString("i386")),
              qMakePair(QString("b"), QString("x86_64"))}) {
            QVERIFY(records->find(Package::EntryKey(false, key.first, key.second)) == nullptr);
        }
        QVERIFY(records->findPackage("a", "x86_64") == nullptr);
        records->rank(add("a", "x86_64"), [](const Package::Entry&, const Package::Entry&) {
            QTest::qFail("a deleted record is compared", __FILE__, __LINE__);
            return true;
        });
    }

    void clearingManyRecordsReleasesEveryReferenceOnceInTheCallingThread()
    {
        constexpr int many = 10000;
        for (int number = 0; number < many; ++number) {
            Package::Entry* entry = add(QString("name-%1").arg(number), "x86_64");
            if (number % 2 == 0) {
                Records::endOfChain(entry) = make(entry->name, "x86_64", Package::Installed);
            }
        }
        records->publish();
        QSet<PyObject*> dropped;
        int calls = 0;
        const Qt::HANDLE thread = QThread::currentThreadId();
        bool elsewhere = false;
        records->clear([&](PyObject* object) {
            dropped.insert(object);
            ++calls;
            elsewhere = elsewhere || QThread::currentThreadId() != thread;
        });
        QCOMPARE(calls, many + many / 2);
        QCOMPARE(dropped.count(), calls);
        QVERIFY(!elsewhere);
        QCOMPARE(records->count(), 0);
        QVERIFY(records->find(Package::EntryKey(false, "name-7", "x86_64")) == nullptr);
        // At the end of the program, the references are not released.
        add("again", "x86_64");
        records->publish();
        QCOMPARE(records->count(), 1);
        records->clear();
        QCOMPARE(records->count(), 0);
    }

    void recordsCanBeAddedAfterAllRecordsWereCleared()
    {
        add("a", "x86_64");
        records->publish();
        records->clear();
        Package::Entry* again = add("a", "x86_64");
        records->publish();
        QCOMPARE(records->all(), QList<Package::Entry*>{again});
    }
};

QTEST_GUILESS_MAIN(RecordsTest)
#include "RecordsTest.moc"
