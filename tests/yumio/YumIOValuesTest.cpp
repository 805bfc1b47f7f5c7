#include <cerrno>
#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

#include <clocale>
#include <cstdio>

#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include "tests/yumio/BackEnd.h"

// It needs Python.h before it.
#include <datetime.h>

// Of values, formats and messages.
class YumIOValuesTest : public QObject
{
    Q_OBJECT

private:
    QStringList warnings() { return backEnd->answers.takeTexts("VYRE Yum Warning"); }
    QStringList errors() { return backEnd->answers.takeTexts("VYRE Yum Error"); }
    // What the conversion makes of the value of an expression.
    QString pyString(const char* expression) { return yumIO().pyString(backEnd->value(expression).get()); }
    QString pyStringX(const char* expression) { return yumIO().pyStringX(backEnd->value(expression).get()); }
    YumIOProbe& yumIO() { return backEnd->yumIO; }
    int logLength() { return backEnd->log().count(); }

    // Calls a function that raises, as an operation of the script is called, and has the failure explained.
    bool explain(const QString& exception, const QString& what = "do something")
    {
        backEnd->run("def failing():\n    raise " + exception + "\n");
        YumIOProbe::ExceptScope scope(yumIO().python());
        yumIO().commExceptSetup();
        const PyRef result(yumIO().pyCall("failing", "()"));
        return yumIO().commExceptRaised(result.get(), what);
    }

    QScopedPointer<BackEnd> backEnd;

private Q_SLOTS:
    void initTestCase()
    {
        backEnd.reset(new BackEnd);
        QVERIFY(backEnd->start());
        QCOMPARE(backEnd->answers.take().count(), 0);
    }

    void cleanupTestCase() { backEnd.reset(); }

    void cleanup()
    {
        QVERIFY(PyErr_Occurred() == nullptr);
        for (const ShownDialog& each : backEnd->answers.take()) {
            QTest::qFail(qPrintable("not expected: " + each.text), __FILE__, __LINE__);
        }
    }

    // --- Texts

    void textsOfStrings()
    {
        QCOMPARE(pyString("'plain'"), QString("plain"));
        QCOMPARE(pyString("''"), QString(""));
        QCOMPARE(pyString("'caf\\u00e9 \\u65e5\\u672c \\U0001f327'"), QString::fromUtf8("café 日本 🌧"));
        QCOMPARE(pyString("b'bytes \\xc3\\xa9'"), QString::fromUtf8("bytes é"));
        QCOMPARE(pyString("b'cut\\0off'"), QString("cut"));
        QCOMPARE(pyString("None"), QString());
        QCOMPARE(pyString("type('Text', (str,), {})('subclass')"), QString("subclass"));
    }

    void textOfAnUndecodableFileNameIsNotLost()
    {
        const QString text = pyString("b'/usr/\\xff'.decode('utf-8', 'surrogateescape')");
        QCOMPARE(text.length(), 6);
        QCOMPARE(text.at(5).unicode(), ushort(0xdcff));
    }

    void textOfNothingAndOfOtherTypesIsWarnedOf()
    {
        QCOMPARE(yumIO().pyString(nullptr), QString());
        QCOMPARE(warnings(), QStringList("Internal error: YumIO::pyString called with NULL"));
        QCOMPARE(pyString("4"), QString());
        QCOMPARE(warnings(), QStringList("Internal error: YumIO::pyString did not understand type: int"));
        QCOMPARE(pyString("['a']"), QString());
        QCOMPARE(warnings(), QStringList("Internal error: YumIO::pyString did not understand type: list"));
    }

    void conversionsNamedDecReleaseTheirObject()
    {
        for (const char* expression : {"'some text'", "3000000000"}) {
            const PyRef object = backEnd->value(expression);
            const auto before = Py_REFCNT(object.get());
            yumIO().pyStringX(object.get());
            yumIO().pyTime(object.get());
            QCOMPARE(Py_REFCNT(object.get()), before);
            Py_INCREF(object.get());
            yumIO().pyStringXDec(object.get());
            QCOMPARE(Py_REFCNT(object.get()), before);
            Py_INCREF(object.get());
            yumIO().pyStringDec(object.get());
            QCOMPARE(Py_REFCNT(object.get()), before);
            Py_INCREF(object.get());
            yumIO().pyLongDec(object.get());
            QCOMPARE(Py_REFCNT(object.get()), before);
            Py_INCREF(object.get());
            yumIO().pyTimeDec(object.get());
            QCOMPARE(Py_REFCNT(object.get()), before);
        }
        backEnd->answers.take();
    }

    void textsOfLists()
    {
        QCOMPARE(pyStringX("'plain'"), QString("plain"));
        QCOMPARE(pyStringX("['a', 'b', 3]"), QString("(a,\n b,\n 3)"));
        QCOMPARE(pyStringX("('a', 'b', 3)"), QString("(a,b,3)"));
        QCOMPARE(pyStringX("['a', ('b', ['c'])]"), QString("(a,\n (b,(c)))"));
        QCOMPARE(pyStringX("[]"), QString());
        QCOMPARE(pyStringX("()"), QString());
        QCOMPARE(pyStringX("-12"), QString("-12"));
        QCOMPARE(pyStringX("2 ** 70"), QString("1180591620717411303424"));
        QCOMPARE(pyStringX("True"), QString("1"));
        QCOMPARE(pyStringX("b'bytes'"), QString());
        QCOMPARE(warnings(), QStringList("Internal error: YumIO::pyStringX did not understand type: bytes"));
        QCOMPARE(pyStringX("1.5"), QString());
        QCOMPARE(warnings(), QStringList("Internal error: YumIO::pyStringX did not understand type: float"));
    }

    void integersAreNarrowed()
    {
        QCOMPARE(yumIO().pyLongDec(backEnd->value("17").release()), 17);
        QCOMPARE(yumIO().pyLongDec(backEnd->value("-17").release()), -17);
        QCOMPARE(yumIO().pyLongDec(backEnd->value("2 ** 32 + 5").release()), 5);
        QCOMPARE(yumIO().pyLongDec(backEnd->value("2 ** 31").release()), int(-2147483647 - 1));
    }

    void itemsOfMappings()
    {
        const PyRef mapping = backEnd->value("{'key': 'value', 'caf\\u00e9': 'drink'}");
        QCOMPARE(yumIO().pyMappingString(mapping.get(), "key"), QString("value"));
        PyObject* drink = yumIO().pyDictGetItem(mapping.get(), QString::fromUtf8("café"));
        QCOMPARE(yumIO().pyString(drink), QString("drink"));
        QVERIFY(yumIO().pyDictGetItem(mapping.get(), "nothing") == nullptr);
    }

    // --- Times

    void timesAreNumbersOrTexts()
    {
        QCOMPARE(yumIO().pyTime(backEnd->value("5000000000").get()), quint64(5000000000));
        QCOMPARE(yumIO().pyTime(backEnd->value("'86400'").get()), quint64(86400));
        QCOMPARE(yumIO().pyTimeDec(backEnd->value("5000000000").release()), quint64(5000000000));
        QCOMPARE(yumIO().pyTimeDec(backEnd->value("'86400'").release()), quint64(86400));
    }

    void timesThatAreNotUnderstood()
    {
        QCOMPARE(yumIO().pyTime(backEnd->value("'noon'").get()), quint64(0));
        QCOMPARE(warnings(), QStringList("Internal error: YumIO::pyTimeDec did not understand: noon"));
        QCOMPARE(yumIO().pyTimeDec(backEnd->value("'noon'").release()), quint64(0));
        QCOMPARE(warnings(), QStringList("Internal error: YumIO::pyTimeDec did not understand: noon"));
        QCOMPARE(yumIO().pyTime(backEnd->value("1.5").get()), quint64(0));
        QCOMPARE(warnings(), QStringList("Internal error: YumIO::pyTime did not understand type: float"));
        QCOMPARE(yumIO().pyTimeDec(backEnd->value("None").release()), quint64(0));
        QCOMPARE(warnings(),
                 QStringList("Internal error: YumIO::pyTimeDec did not understand type: NoneType"));
    }

    void timeAndDateFormats()
    {
        const QString time = yumIO().timeFormat(1700000000);
        QCOMPARE(time, QString("Tue Nov 14 22:13:20 2023"));
        QCOMPARE(QString(yumIO().dateFormat(1700000000)), QString("Tue Nov 14 2023"));
        QCOMPARE(QString(yumIO().timeFormat(0)), QString("Thu Jan  1 00:00:00 1970"));
    }

    void timeAndDateHaveBuffersOfTheirOwn()
    {
        const char* time = yumIO().timeFormat(0);
        const char* date = yumIO().dateFormat(1700000000);
        QCOMPARE(QString(time), QString("Thu Jan  1 00:00:00 1970"));
        QCOMPARE(QString(date), QString("Tue Nov 14 2023"));
    }

    void datesOfTheScript()
    {
        QCOMPARE(yumIO().pyDate(backEnd->value("datetime.datetime(2023, 9, 2)").get()),
                 QString("Sat Sep 2 2023"));
        const char* const days[] = {"Mon", "Tue", "Wed", "Thu", "Fri", "Sat", "Sun"};
        for (int i = 0; i < 7; ++i) {
            QCOMPARE(yumIO().pyDate(
                         backEnd->value(QString("datetime.datetime(2024, 1, %1, 23, 59)").arg(i + 1)).get()),
                     QString("%1 Jan %2 2024").arg(days[i]).arg(i + 1));
        }
        const QStringList months{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                 "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
        for (int i = 0; i < 12; ++i) {
            QCOMPARE(yumIO()
                         .pyDate(backEnd->value(QString("datetime.datetime(2024, %1, 1)").arg(i + 1)).get())
                         .mid(4),
                     months[i] + " 1 2024");
        }
    }

    void objectsThatAreNoDate()
    {
        QCOMPARE(yumIO().pyDate(backEnd->value("datetime.date(2023, 9, 2)").get()), QString());
        QCOMPARE(warnings(),
                 QStringList("Internal error: YumIO::pyDate did not understand type: datetime.date"));
        QCOMPARE(yumIO().pyDate(backEnd->value("'today'").get()), QString());
        QCOMPARE(warnings(), QStringList("Internal error: YumIO::pyDate did not understand type: str"));
    }

    void dateOfMonthThirteen()
    {
        backEnd->run("class Odd(datetime.datetime):\n    def weekday(self): return 2\n");
        const PyRef date = backEnd->value("Odd(2023, 9, 2)");
        // No Python code can make such an object.
        reinterpret_cast<PyDateTime_DateTime*>(date.get())->data[2] = 13;
        QCOMPARE(yumIO().pyDate(date.get()), QString("Wed  2 2023"));
        QCOMPARE(warnings(), QStringList("Internal error: YumIO::pyDate found out-of-bounds month: 13"));
    }

    void dateOfAnOddWeekday()
    {
        backEnd->run("class Odd(datetime.datetime):\n    def weekday(self): return Odd.day_of_week\n");
        backEnd->run("Odd.day_of_week = 7");
        QCOMPARE(yumIO().pyDate(backEnd->value("Odd(2023, 9, 2)").get()), QString("Mon Sep 2 2023"));
        QCOMPARE(warnings(), QStringList("Internal error: YumIO::pyDate found out-of-bounds weekday: 7"));
        backEnd->run("Odd.day_of_week = -1");
        QCOMPARE(yumIO().pyDate(backEnd->value("Odd(2023, 9, 2)").get()), QString("Mon Sep 2 2023"));
        QCOMPARE(warnings(), QStringList("Internal error: YumIO::pyDate found out-of-bounds weekday: -1"));
        backEnd->run("Odd.day_of_week = 'Caturday'");
        QCOMPARE(yumIO().pyDate(backEnd->value("Odd(2023, 9, 2)").get()), QString("Mon Sep 2 2023"));
        QCOMPARE(warnings(),
                 QStringList("Internal error: YumIO::pyDate did not understand weekday type: str"));
    }

    void descriptions()
    {
        backEnd->run("class Named:\n    def __str__(self): return 'name'\n"
                     "class Nameless:\n    def __str__(self): raise ValueError\n");
        QCOMPARE(QString(yumIO().pyDescribe(backEnd->value("'text'").get())), QString("text"));
        QCOMPARE(QString(yumIO().pyDescribe(backEnd->value("-5000000000").get())), QString("-5000000000"));
        QCOMPARE(QString(yumIO().pyDescribe(backEnd->value("None").get())), QString("*None*"));
        QCOMPARE(QString(yumIO().pyDescribe(backEnd->value("Named()").get())), QString("name(*Obj*)"));
        QCOMPARE(QString(yumIO().pyDescribe(backEnd->value("Nameless()").get())), QString("*Obj-no-str*"));
        QCOMPARE(QString(yumIO().pyDescribe(backEnd->value("Thing(__class__=list, x='y' * 3000).x").get()))
                     .length(),
                 3000);
    }

    void simpleStrings()
    {
        const PyRef thing =
            backEnd->value("Thing(text='two\\nlines\\n\\n', number=7, none=None, list=['a', 'b'])");
        QCOMPARE(yumIO().simpleString(thing.get(), "text"), QString("two\nlines"));
        QCOMPARE(yumIO().simpleString(thing.get(), "number"), QString("7"));
        QCOMPARE(yumIO().simpleString(thing.get(), "none"), QString());
        QCOMPARE(yumIO().simpleString(thing.get(), "missing"), QString());
        QCOMPARE(yumIO().simpleString(thing.get(), "list"), QString("(a,\n b)"));
    }

    void relations()
    {
        const PyRef pairs = backEnd->value("[('x', 'one'), ('y', 'two'), ('z', 'two')]");
        QCOMPARE(yumIO().pyStringDec(yumIO().findRelation(pairs.get(), "two")), QString("y"));
        QVERIFY(yumIO().findRelation(pairs.get(), "three") == nullptr);
        QVERIFY(yumIO().findRelation(Py_None, "three") == nullptr);
    }

    void installedCounterparts()
    {
        Package::Entry entry;
        Package::Entry* old = new Package::Entry;
        entry.next = old;
        entry.state = Package::Installed;
        QVERIFY(yumIO().installedEntry(&entry) == &entry);
        entry.state = Package::Updatable;
        QVERIFY(yumIO().installedEntry(&entry) == old);
    }

    // --- Packages

    void versions_data()
    {
        QTest::addColumn<QString>("package");
        QTest::addColumn<QString>("expected");
        QTest::newRow("epoch 0") << "Package('a', '1.2', release='3')"
                                 << "1.2-3";
        QTest::newRow("text epoch 0") << "Package('a', '1.2', release='3', epoch='0')"
                                      << "1.2-3";
        QTest::newRow("no epoch") << "Package('a', '1.2', release='3', epoch=None)"
                                  << "1.2-3";
        QTest::newRow("epoch 2") << "Package('a', '1.2', release='3', epoch=2)"
                                 << "2:1.2-3";
        QTest::newRow("text epoch 2") << "Package('a', '1.2', release='3', epoch='2')"
                                      << "2:1.2-3";
        QTest::newRow("no release") << "Package('a', '1.2', release='')"
                                    << "1.2";
    }

    void versions()
    {
        QFETCH(QString, package);
        QFETCH(QString, expected);
        QCOMPARE(yumIO().getVerRel(backEnd->value(package).get()), expected);
    }

    void versionsOfTransactionItems()
    {
        QCOMPARE(yumIO().getVerRelTxitem(backEnd->value("item(1, 'a')").get()), QString("1.0-1"));
        QCOMPARE(yumIO().getVerRelTxitem(backEnd->value("item(1, 'a', epoch=3)").get()), QString("3:1.0-1"));
        QCOMPARE(yumIO().getVerRelTxitem(backEnd->value("item(1, 'a', release='')").get()), QString("1.0"));
    }

    void classesOfArchitectures()
    {
        QCOMPARE(yumIO().getBiArch("i586"), QString("i386"));
        QCOMPARE(yumIO().getBiArch("noarch"), QString("x86_64"));
        QCOMPARE(yumIO().getBiArch("s390x"), QString("s390x"));
    }

    void sizes_data()
    {
        QTest::addColumn<QString>("size");
        QTest::addColumn<quint64>("expected");
        QTest::addColumn<QString>("warning");
        const QString notUnderstood = "Internal error: package size not understood";
        QTest::newRow("number") << "5000000000" << quint64(5000000000) << "";
        QTest::newRow("text") << "'123'" << quint64(123) << "";
        QTest::newRow("odd text") << "'many'" << quint64(0) << notUnderstood + ": many";
        QTest::newRow("function") << "lambda: 77" << quint64(77) << "";
        QTest::newRow("function with a text") << "lambda: '78'" << quint64(78) << "";
        QTest::newRow("function with an odd text")
            << "lambda: 'few'" << quint64(0) << notUnderstood + ": few";
        QTest::newRow("function with something else")
            << "lambda: None" << quint64(0) << "Internal error: package size result not understood";
        QTest::newRow("something else") << "None" << quint64(0) << notUnderstood;
    }

    void sizes()
    {
        QFETCH(QString, size);
        QFETCH(quint64, expected);
        QFETCH(QString, warning);
        QCOMPARE(yumIO().sizeOf(backEnd->value("Thing(size=" + size + ")").get()), expected);
        QCOMPARE(warnings(), warning.isEmpty() ? QStringList() : QStringList(warning));
    }

    void sizeThatIsMissing()
    {
        QCOMPARE(yumIO().sizeOf(backEnd->value("Thing()").get()), quint64(0));
        QCOMPARE(warnings(), QStringList("Internal error: package size not understood"));
    }

    void byteFormats_data()
    {
        QTest::addColumn<quint64>("bytes");
        QTest::addColumn<QString>("expected");
        const auto row = [](quint64 bytes, const char* expected) {
            QTest::newRow(expected) << bytes << expected;
        };
        row(0, "0b");
        row(5, "5.0b");
        row(10, "10b");
        row(999, "999b");
        row(1000, "1.0Kb");
        row(10188, "9.9Kb");
        row(10189, "10Kb");
        row(1023999, "1000Kb");
        row(1024000, "1.0Mb");
        row(1000ULL << 20, "1.0Gb");
        row((1000ULL << 20) - 1, "1000Mb");
        row(1000ULL << 30, "1.0Tb");
        row(1000ULL << 40, "1.0Pb");
        row(1000ULL << 50, "1.0Eb");
        row(~0ULL, "16Eb");
    }

    void byteFormats()
    {
        QFETCH(quint64, bytes);
        QFETCH(QString, expected);
        QCOMPARE(yumIO().bytesFormat(bytes), expected);
    }

    void byteFormatsHaveAPointInEveryLocale()
    {
        QTemporaryDir locales;
        QCOMPARE(
            QProcess::execute("localedef", {"-i", "de_DE", "-f", "UTF-8", locales.filePath("de_DE.UTF-8")}),
            0);
        qputenv("LOCPATH", locales.path().toLocal8Bit());
        const QByteArray before = setlocale(LC_NUMERIC, nullptr);
        QVERIFY(setlocale(LC_NUMERIC, "de_DE.UTF-8") != nullptr);
        const QString formatted = yumIO().bytesFormat(1536);
        char after[16];
        std::snprintf(after, sizeof after, "%.1f", 1.5);
        setlocale(LC_NUMERIC, before.constData());
        qunsetenv("LOCPATH");
        QCOMPARE(QString(after), QString("1,5"));
        QCOMPARE(formatted, QString("1.5Kb"));
    }

    void buildTimes()
    {
        QCOMPARE(yumIO().buildTimeOf(backEnd->value("Thing(buildtime=1700000000)").get()),
                 quint64(1700000000));
        QCOMPARE(yumIO().buildTimeOf(backEnd->value("Thing()").get()), quint64(0));
        QCOMPARE(warnings(), QStringList("Internal error: YumIO::pyTimeDec did not understand type: NULL"));
    }

    void transactionItems()
    {
        QCOMPARE(yumIO().txitemFormat(backEnd->value("item(1, 'pkg', release='2.fc9')").get()),
                 QString("pkg 1.0-2.fc9 (x86_64)"));
        QCOMPARE(yumIO().txitemFormat(backEnd->value("item(1, '%2', epoch=4)").get()),
                 QString("%2 4:1.0-1 (x86_64)"));
        QCOMPARE(yumIO().txitemRepoFormat(backEnd->value("item(1, 'pkg', from_repo='updates')").get()),
                 QString("pkg 1.0-1 (x86_64) [updates]"));
    }

    // --- The package manager's version

    void versionsAsNumbers()
    {
        QCOMPARE(yumIO().splitVersion("4.7.0"), quint64(40700));
        QCOMPARE(yumIO().splitVersion("4.14"), quint64(41400));
        QCOMPARE(yumIO().splitVersion("4"), quint64(40000));
        QCOMPARE(yumIO().splitVersion("4.14.3.99"), quint64(41403));
    }

    void versionThatIsNotUnderstoodIsWarnedOfOnce()
    {
        QCOMPARE(yumIO().splitVersion("4.x.3"), quint64(40003));
        const QStringList once = warnings();
        QCOMPARE(once.count(), 1);
        QVERIFY2(once[0].startsWith("Internal error: yum/dnf version not understood: 4.x.3 errno=0 ("),
                 qPrintable(once[0]));
        QCOMPARE(yumIO().splitVersion("4.14b"), quint64(41400));
        QCOMPARE(warnings(), QStringList());
    }

    void versionOfThePackageManager()
    {
        QCOMPARE(yumIO().dnfVersionStr(), backEnd->text("dnf.__version__"));
        QVERIFY(yumIO().dnfVersion() >= 40000);
        backEnd->run("dnf.__version__ = 'changed'");
        QVERIFY(yumIO().dnfVersion() >= 40000);
    }

    void unknownVersionOfThePackageManagerIsWarnedOfOnce()
    {
        const QString known = yumIO().dnfVersionStr();
        yumIO().dnfVersionText.clear();
        QCOMPARE(yumIO().dnfVersionStr(), QString()); // it is looked up once
        yumIO().dnfVersionLooked = false;
        backEnd->run("former = dnf.__version__\ndel dnf.__version__");
        QCOMPARE(yumIO().dnfVersion(), quint64(0));
        QCOMPARE(warnings(), QStringList("Internal error: dnf version not found"));
        QCOMPARE(yumIO().dnfVersion(), quint64(0));
        QCOMPARE(warnings(), QStringList());
        QVERIFY(yumIO().dnfVersionLooked);
        backEnd->run("dnf.__version__ = former");
        yumIO().dnfVersionText = known;
    }

    // --- Messages

    void passwordsAreHiddenInMessages()
    {
        const QString text = "404 for http://h/vantor?u=joe&p=secret&path=/x and ftp://joe:secret@h/ %1";
        const QString hidden =
            QString::fromUtf8("404 for http://h/vantor?u=joe&p=●●●&path=/x and ftp://joe:●●●@h/ %1");
        const int before = backEnd->log().count();
        yumIO().error(text);
        QCOMPARE(errors(), QStringList(hidden));
        yumIO().error(text.toUtf8().constData());
        QCOMPARE(errors(), QStringList(hidden));
        yumIO().warning(text);
        QCOMPARE(warnings(), QStringList(hidden));
        yumIO().warning(text.toUtf8().constData());
        QCOMPARE(warnings(), QStringList(hidden));
        yumIO().pythonException(text);
        QCOMPARE(errors(), QStringList(hidden));
        QCOMPARE(backEnd->log(before), QStringList({"3 0 " + hidden, "3 0 " + hidden, "2 0 " + hidden,
                                                    "2 0 " + hidden, "3 0 " + hidden}));
    }

    void errorIsLoggedAndShown()
    {
        const int before = logLength();
        yumIO().error(QString("this failed: [Errno 2] No such file\nand <b>that</b>"));
        const QList<ShownDialog> shown = backEnd->answers.take();
        QCOMPARE(shown.count(), 1);
        QCOMPARE(shown[0].title, QString("VYRE Yum Error"));
        QCOMPARE(shown[0].text, QString("this failed: [Errno 2] No such file\nand <b>that</b>"));
        QCOMPARE(shown[0].icon, QMessageBox::Critical);
        QCOMPARE(shown[0].buttons, QStringList("OK"));
        QCOMPARE(backEnd->log(before),
                 QStringList({"3 0 this failed:", "3 0 [Errno 2] No such file", "3 0 and <b>that</b>"}));
    }

    void warningIsLoggedAndShown()
    {
        const int before = logLength();
        yumIO().warning("careful");
        const QList<ShownDialog> shown = backEnd->answers.take();
        QCOMPARE(shown.count(), 1);
        QCOMPARE(shown[0].title, QString("VYRE Yum Warning"));
        QCOMPARE(shown[0].text, QString("careful"));
        QCOMPARE(shown[0].icon, QMessageBox::Warning);
        QCOMPARE(backEnd->log(before), QStringList("2 0 careful"));
    }

    void bridgeReportsTheSameWay()
    {
        QVERIFY(yumIO().pyLookup("dnf.nothing", false) == nullptr);
        QCOMPARE(errors(), QStringList("Internal error: pyLookup nothing: nothing not found\n"));
    }

    void classesAreLookedUp()
    {
        const QHash<int, QString> expected{{YumIOProbe::BdbQuit, "bdb.BdbQuit"},
                                           {YumIOProbe::DnfError, "dnf.exceptions.Error"},
                                           {YumIOProbe::MiscError, "dnf.exceptions.MiscError"},
                                           {YumIOProbe::RepoError, "dnf.exceptions.RepoError"},
                                           {YumIOProbe::LockError, "dnf.exceptions.LockError"},
                                           {YumIOProbe::DeltaPayload, "dnf.drpm.DeltaPayload"},
                                           {YumIOProbe::MDPayload, "dnf.repo.MDPayload"},
                                           {YumIOProbe::RPMPayload, "dnf.repo.RPMPayload"}};
        QCOMPARE(int(YumIOProbe::ClassCount), 10);
        for (int slot = 0; slot < YumIOProbe::ClassCount; ++slot) {
            if (expected.contains(slot)) {
                QVERIFY2(yumIO().classes[slot] == backEnd->value(expected[slot]).get(),
                         qPrintable(expected[slot]));
            } else {
                QVERIFY(yumIO().classes[slot] == nullptr);
            }
        }
        QVERIFY(yumIO().classes[4] == nullptr);
        QVERIFY(yumIO().classes[6] == nullptr);
    }

    void pythonExceptionShowsTheErrorsSinceTheExpectation()
    {
        yumIO().error(QString("long ago"));
        errors();
        YumIOProbe::ExceptScope scope(yumIO().python());
        yumIO().commExceptSetup();
        backEnd->run("yumIOC.errorlog(0, 'first')\n"
                     "yumIOC.errorlog(2, 'second')\n"
                     "yumIOC.errorlog(3, 'a detail')\n"
                     "yumIOC.log(0, 'no error')\n");
        yumIO().pythonException("It failed");
        const QList<ShownDialog> shown = backEnd->answers.take();
        QCOMPARE(shown.count(), 1);
        QCOMPARE(shown[0].title, QString("VYRE Yum Error"));
        QCOMPARE(shown[0].text, QString("first\nsecond\nIt failed"));
        QCOMPARE(shown[0].buttons, QStringList("Close"));
        QVERIFY(yumIO().logEntries().tryLock());
        yumIO().logEntries().unlock();
    }

    void pythonExceptionWithoutAnExpectationShowsItsText()
    {
        QCOMPARE(int(yumIO().exceptLogStart), -1);
        backEnd->run("yumIOC.errorlog(0, 'before')");
        yumIO().pythonException("It failed");
        QCOMPARE(errors(), QStringList("It failed"));
    }

    void pythonExceptionWithItsValue()
    {
        PyErr_SetString(PyExc_ValueError, "the value");
        yumIO().pythonExceptionV("It failed");
        QVERIFY(PyErr_Occurred() != nullptr);
        PyErr_Clear();
        QCOMPARE(errors(), QStringList("the value\nIt failed"));
    }

    void expectationBeginsAtTheEndOfTheLog()
    {
        YumIOProbe::ExceptScope scope(yumIO().python());
        yumIO().pyExceptExpect(PyExc_ValueError);
        QCOMPARE(int(yumIO().exceptLogStart), logLength());
        backEnd->run("yumIOC.log(0, 'one more')");
        yumIO().pyExceptExpect(PyExc_KeyError);
        QCOMPARE(int(yumIO().exceptLogStart), logLength());
    }

    // --- The common exceptions

    void inputOutputErrors()
    {
        const int before = logLength();
        QVERIFY(explain("IOError(2, 'No such file')"));
        QCOMPARE(errors(),
                 QStringList("Unable to do something: I/O Error: [Errno 2] No such file\n\nEmitting a "
                             "walkback to the Log window."));
        const QStringList log = backEnd->log(before);
        QVERIFY2(log.contains("3 0 Traceback (most recent call last):"), qPrintable(log.join('\n')));
        QVERIFY2(log.join('\n').contains("in failing"), qPrintable(log.join('\n')));
    }

    void interrupts()
    {
        const int before = logLength();
        QVERIFY(explain("KeyboardInterrupt()"));
        QCOMPARE(errors(),
                 QStringList(
                     "Unable to do something: KeyboardInterrupt\n\nThis usually means VYRE was sent signal "
                     "SIGINT, SIGTERM, or similar.\n\nBut urlgrabber also can raise this error for several "
                     "situations where it is just guessing.\nSo, emitting a walkback to the Log window."));
        QVERIFY(backEnd->log(before).contains("3 0 KeyboardInterrupt"));
    }

    void assertions()
    {
        const int before = logLength();
        QVERIFY(explain("AssertionError('no')"));
        QCOMPARE(errors(),
                 QStringList("Internal error: python assertion failed\nWhen reporting this issue, please "
                             "include the contents of the\nLog window, which should contain a walkback."));
        QVERIFY(backEnd->log(before).contains("3 0 AssertionError: no"));
    }

    void runtimeErrors()
    {
        const int before = logLength();
        QVERIFY(explain("RuntimeError('out of %1')"));
        QCOMPARE(errors(), QStringList("Unable to do something: Runtime Error:\n\nout of %1"));
        QVERIFY(!backEnd->log(before).join('\n').contains("Traceback"));
    }

    void lockedDatabaseOfARepository()
    {
        const int before = logLength();
        backEnd->run("def failing():\n"
                     "    yumIOC.errorlog(1, 'what the package manager said')\n"
                     "    yumIOC.errorlog(3, 'a detail')\n"
                     "    raise dnf.exceptions.RepoError('sorry, database is locked by x')\n");
        YumIOProbe::ExceptScope scope(yumIO().python());
        yumIO().commExceptSetup();
        const PyRef result(yumIO().pyCall("failing", "()"));
        QVERIFY(yumIO().commExceptRaised(result.get(), "do something"));
        QCOMPARE(errors(),
                 QStringList("what the package manager said\nUnable to do something: a repository's sqlite "
                             "database was locked unexpectedly\nOn some distributions, PackageKit has been "
                             "known to cause this."));
        QVERIFY(!backEnd->log(before).join('\n').contains("Traceback"));
    }

    void otherRepositoryErrorsAreReportedAsUnexpected()
    {
        for (const char* text : {"no mirrors", "Database is locked"}) {
            const int before = logLength();
            QVERIFY(explain(QString("dnf.exceptions.RepoError('%1')").arg(text)));
            QCOMPARE(errors(),
                     QStringList(
                         "Internal error: python exception occurred from C code.\nWhen reporting this issue, "
                         "please include the contents of the\nLog window, which should contain a walkback."));
            QVERIFY(backEnd->log(before).contains("3 0 dnf.exceptions.RepoError: " + QString(text)));
        }
    }

    void errorsOfThePackageManager()
    {
        QVERIFY(explain("dnf.exceptions.DepsolveError('nothing provides x')"));
        QCOMPARE(errors(), QStringList("nothing provides x\nUnable to do something"));
        QVERIFY(explain("dnf.exceptions.LockError('held')"));
        QCOMPARE(errors(), QStringList("held\nUnable to do something"));
        QVERIFY(explain("bdb.BdbQuit('enough')"));
        QCOMPARE(errors(), QStringList("enough\nUnable to do something"));
    }

    void firstOfTheCommonExceptionsDecides()
    {
        backEnd->run("class OfBoth(dnf.exceptions.RepoError, IOError): pass\n"
                     "class Odd(dnf.exceptions.Error, RuntimeError): pass\n"
                     "class Failed(AssertionError, RuntimeError): pass\n"
                     "class Stopped(KeyboardInterrupt, AssertionError): pass\n");
        const QList<QPair<QString, QString>> expected{
            {"OfBoth", "Unable to do something: I/O Error: "},
            {"Odd", "Unable to do something: Runtime Error:\n\n"},
            {"Failed", "Internal error: python assertion failed\n"},
            {"Stopped", "Unable to do something: KeyboardInterrupt\n\n"}};
        for (const auto& each : expected) {
            QVERIFY(explain(each.first + "('x')"));
            const QStringList shown = errors();
            QCOMPARE(shown.count(), 1);
            QVERIFY2(shown[0].startsWith(each.second), qPrintable(shown[0]));
        }
    }

    void valueAttributeOfAnExceptionGoesBeforeItsText()
    {
        backEnd->run("class Valued(bdb.BdbQuit):\n    value = ['a', 'b']\n");
        QVERIFY(explain("Valued('text')"));
        QCOMPARE(errors(), QStringList("(a,\n b)\nUnable to do something"));
    }

    void exceptionOutsideTheTableIsLeftToTheCaller()
    {
        const int before = logLength();
        QVERIFY(!explain("KeyError('odd')"));
        // The call itself has reported it already.
        QCOMPARE(errors().count(), 1);
        QVERIFY(backEnd->log(before).contains("3 0 KeyError: 'odd'"));
    }

    void callThatGaveAResultHasNotFailed()
    {
        YumIOProbe::ExceptScope scope(yumIO().python());
        yumIO().commExceptSetup();
        QVERIFY(!yumIO().commExceptRaised(Py_None, "do something"));
        QVERIFY(!yumIO().commExceptRaised(nullptr, "do something"));
    }

    void emptySlotsAreInert()
    {
        backEnd->run("class Meta(Exception): pass\n");
        PyObject*& metadata = yumIO().classes[YumIOProbe::MetadataError];
        QVERIFY(!explain("Meta('gone')"));
        errors();
        metadata = backEnd->value("Meta").get(); // __main__ keeps it
        const bool explained = explain("Meta('gone')");
        metadata = nullptr;
        QVERIFY(explained);
        QCOMPARE(errors(),
                 QStringList("Unable to do something: metadata unavailable from all repo mirrors:\ngone"));

        PyObject*& repository = yumIO().classes[YumIOProbe::OtherRepoError];
        repository = backEnd->value("Meta").get();
        const bool locked = explain("Meta('database is locked')");
        repository = nullptr;
        QVERIFY(locked);
        QCOMPARE(errors(),
                 QStringList("Unable to do something: a repository's sqlite database was locked "
                             "unexpectedly\nOn some distributions, PackageKit has been known to cause "
                             "this."));
    }

    void failedCallIsNotKeptAlive()
    {
        backEnd->run("import weakref\n"
                     "class Witness: pass\n"
                     "def failing():\n"
                     "    global witness\n"
                     "    local = Witness()\n"
                     "    witness = weakref.ref(local)\n"
                     "    raise IOError('x')\n");
        {
            YumIOProbe::ExceptScope scope(yumIO().python());
            yumIO().commExceptSetup();
            const PyRef result(yumIO().pyCall("failing", "()"));
            QVERIFY(yumIO().commExceptRaised(result.get(), "do something"));
        }
        errors();
        QCOMPARE(backEnd->text("witness() is None"), QString("True"));
    }

    // --- Child processes

    void childSignalHasItsDefaultInBetween()
    {
        struct sigaction mine = {};
        mine.sa_handler = SIG_IGN;
        struct sigaction original;
        sigaction(SIGCHLD, &mine, &original);
        QVERIFY(yumIO().sigchldDisable());
        struct sigaction now;
        sigaction(SIGCHLD, nullptr, &now);
        QVERIFY(now.sa_handler == SIG_DFL);
        QCOMPARE(now.sa_flags & (SA_SIGINFO | SA_NOCLDWAIT | SA_NOCLDSTOP), 0);
        yumIO().sigchldRestore();
        sigaction(SIGCHLD, nullptr, &now);
        QVERIFY(now.sa_handler == SIG_IGN);
        sigaction(SIGCHLD, &original, nullptr);
    }

    void childrenThatEndedAreReaped()
    {
        const int before = logLength();
        const pid_t child = fork();
        if (child == 0) {
            _exit(0);
        }
        siginfo_t info;
        QCOMPARE(waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOWAIT), 0);
        QVERIFY(yumIO().reapChildren());
        QVERIFY(backEnd->log(before).contains(QString("2 0 Reaped zombie child %1").arg(child)));
        errno = 0;
        QCOMPARE(waitpid(child, nullptr, WNOHANG), -1);
        QCOMPARE(errno, ECHILD);
    }

    void childrenThatRunAreLeftAlone()
    {
        const int before = logLength();
        const pid_t child = fork();
        if (child == 0) {
            pause();
            _exit(0);
        }
        QVERIFY(yumIO().reapChildren());
        QCOMPARE(backEnd->log(before), QStringList());
        QCOMPARE(kill(child, SIGKILL), 0);
        QCOMPARE(waitpid(child, nullptr, 0), child);
        QVERIFY(yumIO().reapChildren());
    }
};

QTEST_MAIN(YumIOValuesTest)
#include "YumIOValuesTest.moc"
