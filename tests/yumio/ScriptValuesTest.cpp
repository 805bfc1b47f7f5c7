// SPDX-License-Identifier: GPL-2.0-or-later

#include <clocale>
#include <cstdio>

#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include "python/CPython.h"
#include "tests/support/EnvironmentVariable.h"
#include "yumio/DateTime.h"
#include "yumio/ScriptValues.h"

// this header must follow Python.h
#include <datetime.h>

namespace {

// Records the messages that ScriptValues reports.
class RecordingValues : public ScriptValues
{
public:
    void error(const char* text) override { errors.append(QString::fromUtf8(text)); }
    void warning(const char* text) override { warning(QString::fromUtf8(text)); }
    void warning(const QString& text) override { warnings.append(text); }

    QStringList errors;
    QStringList warnings;
};

} // namespace

class ScriptValuesTest : public QObject
{
    Q_OBJECT

private:
    // The messages since the previous call of this function.
    QStringList warnings()
    {
        QStringList taken;
        taken.swap(values->warnings);
        return taken;
    }
    void run(const QString& statements)
    {
        if (values->py(statements.toUtf8().constData()) != 0) {
            QTest::qFail(qPrintable("failed: " + statements), __FILE__, __LINE__);
        }
    }
    PyRef value(const QString& expression)
    {
        PyRef result(values->pyr(expression.toUtf8().constData()));
        if (!result) {
            QTest::qFail(qPrintable("failed: " + expression), __FILE__, __LINE__);
        }
        return result;
    }
    // Evaluates the expression, and converts its value.
    QString pyString(const char* expression) { return values->pyString(value(expression).get()); }
    QString pyStringX(const char* expression) { return values->pyStringX(value(expression).get()); }

    QScopedPointer<RecordingValues> values;

private Q_SLOTS:
    void initTestCase()
    {
        values.reset(new RecordingValues);
        QVERIFY(values->initialize());
        QVERIFY(DateTime::import());
        run("import datetime\n"
            "from types import SimpleNamespace as Thing\n"
            "def item(action, name, **attributes):\n"
            "    known = dict(action=action, name=name, arch='x86_64', epoch=0, version='1.0', release='1')\n"
            "    known.update(attributes)\n"
            "    return Thing(**known)\n");
    }

    void cleanupTestCase() { values.reset(); }

    void cleanup()
    {
        QVERIFY(PyErr_Occurred() == nullptr);
        QCOMPARE(values->errors, QStringList());
        QCOMPARE(values->warnings, QStringList());
    }

    // --- Texts

    void pythonStringsAreConvertedToTexts()
    {
        QCOMPARE(pyString("'plain'"), QString("plain"));
        QCOMPARE(pyString("''"), QString(""));
        QCOMPARE(pyString("'caf\\u00e9 \\u65e5\\u672c \\U0001f327'"), QString::fromUtf8("café 日本 🌧"));
        QCOMPARE(pyString("b'bytes \\xc3\\xa9'"), QString::fromUtf8("bytes é"));
        QCOMPARE(pyString("b'cut\\0off'"), QString("cut"));
        QCOMPARE(pyString("None"), QString());
        QCOMPARE(pyString("type('Text', (str,), {})('subclass')"), QString("subclass"));
    }

    void aFileNameThatIsNotUtf8IsConvertedWithoutLoss()
    {
        const QString text = pyString("b'/usr/\\xff'.decode('utf-8', 'surrogateescape')");
        QCOMPARE(text.length(), 6);
        QCOMPARE(text.at(5).unicode(), ushort(0xdcff));
    }

    void conversionOfAnObjectThatIsNoStringCausesAWarning()
    {
        QCOMPARE(values->pyString(nullptr), QString());
        QCOMPARE(warnings(), QStringList("Internal error: YumIO::pyString called with NULL"));
        QCOMPARE(pyString("4"), QString());
        QCOMPARE(warnings(), QStringList("Internal error: YumIO::pyString did not understand type: int"));
        QCOMPARE(pyString("['a']"), QString());
        QCOMPARE(warnings(), QStringList("Internal error: YumIO::pyString did not understand type: list"));
    }

    void aFunctionWithTheSuffixDecReleasesItsArgument()
    {
        for (const char* expression : {"'some text'", "3000000000"}) {
            const PyRef object = value(expression);
            const auto before = Py_REFCNT(object.get());
            values->pyStringX(object.get());
            values->pyTime(object.get());
            QCOMPARE(Py_REFCNT(object.get()), before);
            Py_INCREF(object.get());
            values->pyStringXDec(object.get());
            QCOMPARE(Py_REFCNT(object.get()), before);
            Py_INCREF(object.get());
            values->pyStringDec(object.get());
            QCOMPARE(Py_REFCNT(object.get()), before);
            Py_INCREF(object.get());
            values->pyLongDec(object.get());
            QCOMPARE(Py_REFCNT(object.get()), before);
            Py_INCREF(object.get());
            values->pyTimeDec(object.get());
            QCOMPARE(Py_REFCNT(object.get()), before);
        }
        warnings();
    }

    void numbersAndPythonSequencesAreConvertedToTexts()
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

    void pythonIntegersAreNarrowedToInt()
    {
        QCOMPARE(values->pyLongDec(value("17").release()), 17);
        QCOMPARE(values->pyLongDec(value("-17").release()), -17);
        QCOMPARE(values->pyLongDec(value("2 ** 32 + 5").release()), 5);
        QCOMPARE(values->pyLongDec(value("2 ** 31").release()), int(-2147483647 - 1));
    }

    void valuesInADictionaryAreFoundByTheirKeys()
    {
        const PyRef mapping = value("{'key': 'value', 'caf\\u00e9': 'drink'}");
        QCOMPARE(values->pyMappingString(mapping.get(), "key"), QString("value"));
        PyObject* drink = values->pyDictGetItem(mapping.get(), QString::fromUtf8("café"));
        QCOMPARE(values->pyString(drink), QString("drink"));
        QVERIFY(values->pyDictGetItem(mapping.get(), "nothing") == nullptr);
    }

    // --- Times

    void timesAreConvertedFromNumbersAndTexts()
    {
        QCOMPARE(values->pyTime(value("5000000000").get()), quint64(5000000000));
        QCOMPARE(values->pyTime(value("'86400'").get()), quint64(86400));
        QCOMPARE(values->pyTimeDec(value("5000000000").release()), quint64(5000000000));
        QCOMPARE(values->pyTimeDec(value("'86400'").release()), quint64(86400));
    }

    void invalidTimesCauseAWarning()
    {
        QCOMPARE(values->pyTime(value("'noon'").get()), quint64(0));
        QCOMPARE(warnings(), QStringList("Internal error: YumIO::pyTimeDec did not understand: noon"));
        QCOMPARE(values->pyTimeDec(value("'noon'").release()), quint64(0));
        QCOMPARE(warnings(), QStringList("Internal error: YumIO::pyTimeDec did not understand: noon"));
        QCOMPARE(values->pyTime(value("1.5").get()), quint64(0));
        QCOMPARE(warnings(), QStringList("Internal error: YumIO::pyTime did not understand type: float"));
        QCOMPARE(values->pyTimeDec(value("None").release()), quint64(0));
        QCOMPARE(warnings(),
                 QStringList("Internal error: YumIO::pyTimeDec did not understand type: NoneType"));
    }

    void timesAndDatesAreFormatted()
    {
        const QString time = ScriptValues::timeFormat(1700000000);
        QCOMPARE(time, QString("Tue Nov 14 22:13:20 2023"));
        QCOMPARE(QString(ScriptValues::dateFormat(1700000000)), QString("Tue Nov 14 2023"));
        QCOMPARE(QString(ScriptValues::timeFormat(0)), QString("Thu Jan  1 00:00:00 1970"));
    }

    void formattingADateDoesNotChangeAFormattedTime()
    {
        const char* time = ScriptValues::timeFormat(0);
        const char* date = ScriptValues::dateFormat(1700000000);
        QCOMPARE(QString(time), QString("Thu Jan  1 00:00:00 1970"));
        QCOMPARE(QString(date), QString("Tue Nov 14 2023"));
    }

    void pythonDatesAreFormatted()
    {
        QCOMPARE(values->pyDate(value("datetime.datetime(2023, 9, 2)").get()), QString("Sat Sep 2 2023"));
        const char* const days[] = {"Mon", "Tue", "Wed", "Thu", "Fri", "Sat", "Sun"};
        for (int i = 0; i < 7; ++i) {
            QCOMPARE(
                values->pyDate(value(QString("datetime.datetime(2024, 1, %1, 23, 59)").arg(i + 1)).get()),
                QString("%1 Jan %2 2024").arg(days[i]).arg(i + 1));
        }
        const QStringList months{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                 "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
        for (int i = 0; i < 12; ++i) {
            QCOMPARE(values->pyDate(value(QString("datetime.datetime(2024, %1, 1)").arg(i + 1)).get()).mid(4),
                     months[i] + " 1 2024");
        }
    }

    void anObjectThatIsNoDatetimeCausesAWarning()
    {
        QCOMPARE(values->pyDate(value("datetime.date(2023, 9, 2)").get()), QString());
        QCOMPARE(warnings(),
                 QStringList("Internal error: YumIO::pyDate did not understand type: datetime.date"));
        QCOMPARE(values->pyDate(value("'today'").get()), QString());
        QCOMPARE(warnings(), QStringList("Internal error: YumIO::pyDate did not understand type: str"));
    }

    void aDateWithAnInvalidMonthCausesAWarning()
    {
        run("class Odd(datetime.datetime):\n    def weekday(self): return 2\n");
        const PyRef date = value("Odd(2023, 9, 2)");
        // Python code cannot create a date with month 13, so write the month into the object's memory.
        reinterpret_cast<PyDateTime_DateTime*>(date.get())->data[2] = 13;
        QCOMPARE(values->pyDate(date.get()), QString("Wed  2 2023"));
        QCOMPARE(warnings(), QStringList("Internal error: YumIO::pyDate found out-of-bounds month: 13"));
    }

    void aDateWithAnInvalidWeekdayCausesAWarning()
    {
        run("class Odd(datetime.datetime):\n    def weekday(self): return Odd.day_of_week\n");
        run("Odd.day_of_week = 7");
        QCOMPARE(values->pyDate(value("Odd(2023, 9, 2)").get()), QString("Mon Sep 2 2023"));
        QCOMPARE(warnings(), QStringList("Internal error: YumIO::pyDate found out-of-bounds weekday: 7"));
        run("Odd.day_of_week = -1");
        QCOMPARE(values->pyDate(value("Odd(2023, 9, 2)").get()), QString("Mon Sep 2 2023"));
        QCOMPARE(warnings(), QStringList("Internal error: YumIO::pyDate found out-of-bounds weekday: -1"));
        run("Odd.day_of_week = 'Caturday'");
        QCOMPARE(values->pyDate(value("Odd(2023, 9, 2)").get()), QString("Mon Sep 2 2023"));
        QCOMPARE(warnings(),
                 QStringList("Internal error: YumIO::pyDate did not understand weekday type: str"));
    }

    void theDescriptionOfAnObjectDependsOnItsType()
    {
        run("class Named:\n    def __str__(self): return 'name'\n"
            "class Nameless:\n    def __str__(self): raise ValueError\n");
        QCOMPARE(QString(values->pyDescribe(value("'text'").get())), QString("text"));
        QCOMPARE(QString(values->pyDescribe(value("-5000000000").get())), QString("-5000000000"));
        QCOMPARE(QString(values->pyDescribe(value("None").get())), QString("*None*"));
        QCOMPARE(QString(values->pyDescribe(value("Named()").get())), QString("name(*Obj*)"));
        QCOMPARE(QString(values->pyDescribe(value("Nameless()").get())), QString("*Obj-no-str*"));
        QCOMPARE(QString(values->pyDescribe(value("'y' * 3000").get())).length(), 3000);
    }

    void attributesOfAllTypesAreReadAsTexts()
    {
        const PyRef thing = value("Thing(text='two\\nlines\\n\\n', number=7, none=None, list=['a', 'b'])");
        QCOMPARE(values->simpleString(thing.get(), "text"), QString("two\nlines"));
        QCOMPARE(values->simpleString(thing.get(), "number"), QString("7"));
        QCOMPARE(values->simpleString(thing.get(), "none"), QString());
        QCOMPARE(values->simpleString(thing.get(), "missing"), QString());
        QCOMPARE(values->simpleString(thing.get(), "list"), QString("(a,\n b)"));
    }

    void theFirstValueOfAPairIsFoundByTheSecondValue()
    {
        const PyRef pairs = value("[('x', 'one'), ('y', 'two'), ('z', 'two')]");
        QCOMPARE(values->pyStringDec(values->findRelation(pairs.get(), "two")), QString("y"));
        QVERIFY(values->findRelation(pairs.get(), "three") == nullptr);
        QVERIFY(values->findRelation(Py_None, "three") == nullptr);
    }

    // --- Packages

    void versionsOfPackagesAreFormatted_data()
    {
        QTest::addColumn<QString>("package");
        QTest::addColumn<QString>("expected");
        QTest::newRow("epoch 0") << "Thing(version='1.2', release='3', epoch=0)"
                                 << "1.2-3";
        QTest::newRow("epoch 0 as a text") << "Thing(version='1.2', release='3', epoch='0')"
                                           << "1.2-3";
        QTest::newRow("no epoch") << "Thing(version='1.2', release='3', epoch=None)"
                                  << "1.2-3";
        QTest::newRow("epoch 2") << "Thing(version='1.2', release='3', epoch=2)"
                                 << "2:1.2-3";
        QTest::newRow("epoch 2 as a text") << "Thing(version='1.2', release='3', epoch='2')"
                                           << "2:1.2-3";
        QTest::newRow("all parts in one text") << "Thing(evr='1.2-3')"
                                               << "1.2-3";
        QTest::newRow("a text with an epoch") << "Thing(evr='2:1.2-3', version='1.2', release='3', epoch=2)"
                                              << "2:1.2-3";
        QTest::newRow("a text with the epoch 0")
            << "Thing(evr='0:1.2-3', version='1.2', release='3', epoch=0)"
            << "1.2-3";
        QTest::newRow("a text without a release") << "Thing(evr='1.2', version='1.2', release='', epoch=0)"
                                                  << "1.2";
        QTest::newRow("no release") << "Thing(version='1.2', release='', epoch=0)"
                                    << "1.2";
    }

    void versionsOfPackagesAreFormatted()
    {
        QFETCH(QString, package);
        QFETCH(QString, expected);
        QCOMPARE(values->getVerRel(value(package).get()), expected);
    }

    void versionsOfTransactionItemsAreFormatted()
    {
        QCOMPARE(values->getVerRelTxitem(value("item(1, 'a')").get()), QString("1.0-1"));
        QCOMPARE(values->getVerRelTxitem(value("item(1, 'a', epoch=3)").get()), QString("3:1.0-1"));
        QCOMPARE(values->getVerRelTxitem(value("item(1, 'a', release='')").get()), QString("1.0"));
    }

    void aPackageSizeMayBeANumberATextOrAFunction_data()
    {
        QTest::addColumn<QString>("size");
        QTest::addColumn<quint64>("expected");
        QTest::addColumn<QString>("warning");
        const QString notUnderstood = "Internal error: package size not understood";
        QTest::newRow("number") << "5000000000" << quint64(5000000000) << "";
        QTest::newRow("text") << "'123'" << quint64(123) << "";
        QTest::newRow("invalid text") << "'many'" << quint64(0) << notUnderstood + ": many";
        QTest::newRow("function") << "lambda: 77" << quint64(77) << "";
        QTest::newRow("function with a text") << "lambda: '78'" << quint64(78) << "";
        QTest::newRow("function with an invalid text")
            << "lambda: 'few'" << quint64(0) << notUnderstood + ": few";
        QTest::newRow("function without a number")
            << "lambda: None" << quint64(0) << "Internal error: package size result not understood";
        QTest::newRow("no number") << "None" << quint64(0) << notUnderstood;
    }

    void aPackageSizeMayBeANumberATextOrAFunction()
    {
        QFETCH(QString, size);
        QFETCH(quint64, expected);
        QFETCH(QString, warning);
        QCOMPARE(values->sizeOf(value("Thing(size=" + size + ")").get()), expected);
        QCOMPARE(warnings(), warning.isEmpty() ? QStringList() : QStringList(warning));
    }

    void aPackageWithoutASizeCausesAWarning()
    {
        QCOMPARE(values->sizeOf(value("Thing()").get()), quint64(0));
        QCOMPARE(warnings(), QStringList("Internal error: package size not understood"));
    }

    void numbersOfBytesAreFormattedWithAUnit_data()
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

    void numbersOfBytesAreFormattedWithAUnit()
    {
        QFETCH(quint64, bytes);
        QFETCH(QString, expected);
        QCOMPARE(ScriptValues::bytesFormat(bytes), expected);
    }

    void formattedNumbersOfBytesHaveADecimalPointInEveryLocale()
    {
        QTemporaryDir locales;
        QCOMPARE(
            QProcess::execute("localedef", {"-i", "de_DE", "-f", "UTF-8", locales.filePath("de_DE.UTF-8")}),
            0);
        const EnvironmentVariable localePath("LOCPATH", locales.path().toLocal8Bit());
        const QByteArray before = setlocale(LC_NUMERIC, nullptr);
        QVERIFY(setlocale(LC_NUMERIC, "de_DE.UTF-8") != nullptr);
        const QString formatted = ScriptValues::bytesFormat(1536);
        char after[16];
        std::snprintf(after, sizeof after, "%.1f", 1.5);
        setlocale(LC_NUMERIC, before.constData());
        QCOMPARE(QString(after), QString("1,5"));
        QCOMPARE(formatted, QString("1.5Kb"));
    }

    void buildTimesOfPackagesAreRead()
    {
        QCOMPARE(values->buildTimeOf(value("Thing(buildtime=1700000000)").get()), quint64(1700000000));
        QCOMPARE(values->buildTimeOf(value("Thing()").get()), quint64(0));
        QCOMPARE(warnings(), QStringList("Internal error: YumIO::pyTimeDec did not understand type: NULL"));
    }

    void transactionItemsAreFormatted()
    {
        QCOMPARE(values->txitemFormat(value("item(1, 'pkg', release='2.fc9')").get()),
                 QString("pkg 1.0-2.fc9 (x86_64)"));
        QCOMPARE(values->txitemFormat(value("item(1, '%2', epoch=4)").get()), QString("%2 4:1.0-1 (x86_64)"));
        QCOMPARE(values->txitemRepoFormat(value("item(1, 'pkg', from_repo='updates')").get()),
                 QString("pkg 1.0-1 (x86_64) [updates]"));
    }

    // --- The package manager's version

    void theVersionOfDnfIsConvertedToANumber()
    {
        QCOMPARE(values->splitVersion("4.7.0"), quint64(40700));
        QCOMPARE(values->splitVersion("4.14"), quint64(41400));
        QCOMPARE(values->splitVersion("4"), quint64(40000));
        QCOMPARE(values->splitVersion("4.14.3.99"), quint64(41403));
    }

    void anInvalidVersionOfDnfCausesOneWarning()
    {
        QCOMPARE(values->splitVersion("4.x.3"), quint64(40003));
        const QStringList once = warnings();
        QCOMPARE(once.count(), 1);
        QVERIFY2(once[0].startsWith("Internal error: yum/dnf version not understood: 4.x.3 errno=0 ("),
                 qPrintable(once[0]));
        QCOMPARE(values->splitVersion("4.14b"), quint64(41400));
        QCOMPARE(warnings(), QStringList());
    }

    void comparisonFlagsBecomeOperators()
    {
        const QHash<QString, QString> signs{{"GT", ">"},  {"GE", ">="}, {"LT", "<"},
                                            {"LE", "<="}, {"EQ", "="},  {"eq", "eq"}};
        for (auto i = signs.begin(); i != signs.end(); ++i) {
            const PyRef flags = value("'" + i.key() + "'");
            QCOMPARE(QString(ScriptValues::decodePrcoFlags(flags.get())), i.value());
        }
    }

    void sortedListsAreJoinedToOneText()
    {
        QStringList list{"b", "a", "B", "b"};
        QCOMPARE(ScriptValues::makeSorted(list), QString("B\na\nb\nb"));
        QCOMPARE(list, QStringList({"B", "a", "b", "b"}));
        QStringList repeats{"b", "a", "B", "b"};
        QCOMPARE(ScriptValues::makeSortedUniq(repeats), QString("B\na\nb"));
    }

    void packagesInTheRpmGroupSuiteAreSuites()
    {
        QCOMPARE(values->getPkgKind(value("Thing(group='Suite')").get()), Package::Suite);
        QCOMPARE(values->getPkgKind(value("Thing(group='suite')").get()), Package::Ordinary);
        QCOMPARE(values->getPkgKind(value("Thing(group=None)").get()), Package::Ordinary);
        QCOMPARE(values->getPkgKind(value("Thing()").get()), Package::Ordinary);
    }

    void checksumsAreConvertedToHexadecimalDigits()
    {
        QCOMPARE(values->checksumOf(value("Thing(chksum=(2, b'\\x01\\xab'))").get()), QByteArray("01ab"));
        for (const char* odd : {"None", "(2,)", "(2, 'text')", "[2, b'x']"}) {
            QCOMPARE(values->checksumOf(value(QString("Thing(chksum=%1)").arg(odd)).get()), QByteArray());
        }
        QCOMPARE(values->checksumOf(value("Thing()").get()), QByteArray());
    }

    void anAttributeCanBeReadByItsNumberOrByItsName()
    {
        QCOMPARE(QString(ScriptValues::attributeName(ScriptValues::RepoIdAttribute)), QString("repoid"));
        for (int i = 0; i < ScriptValues::PackageAttributeCount; ++i) {
            const auto which = static_cast<ScriptValues::PackageAttribute>(i);
            const char* name = ScriptValues::attributeName(which);
            const PyRef thing = value(QString("Thing(%1='it')").arg(QLatin1String(name)));
            const PyRef found(values->attribute(thing.get(), which));
            const PyRef named(values->attribute(thing.get(), name));
            QCOMPARE(values->pyString(found.get()), QString("it"));
            QVERIFY(named.get() == found.get());
        }
        const PyRef nothing = value("Thing()");
        QVERIFY(values->attribute(nothing.get(), "name") == nullptr);
        QVERIFY(values->attribute(nothing.get(), ScriptValues::NameAttribute) == nullptr);
    }
};

QTEST_GUILESS_MAIN(ScriptValuesTest)
#include "ScriptValuesTest.moc"
