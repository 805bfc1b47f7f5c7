// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>

#include "tests/yumio/BackEndFixture.h"

class YumIOSearchTest : public BackEndFixture
{
    Q_OBJECT

private Q_SLOTS:
    // A search reads most attributes without text(), but must get the same texts for values of all kinds.
    void theSearchTextsEqualTheTextsOfTheFieldsForValuesOfAllKinds_data()
    {
        QTest::addColumn<QString>("attributes");
        QTest::newRow("usual texts") << "";
        QTest::newRow("line ends") << "description='One\\n\\nTwo\\n\\n\\n', summary='\\n', vendor='\\n\\n'";
        QTest::newRow("characters beyond ASCII") << "description='Gr\\u00fc\\u00dfe \\u20ac \\U0001f327\\n', "
                                                    "vendor='\\u00e9'";
        QTest::newRow("bytes that are no text") << "description='a\\udcff', vendor='\\udcff\\n'";
        QTest::newRow("missing texts") << "description=None, vendor=None, packager='', url=''";
        QTest::newRow("texts that are lists") << "license=['MIT', 'BSD'], vendor=7";
        QTest::newRow("times") << "installtime=1693656000";
        QTest::newRow("no time") << "installtime=0";
        QTest::newRow("unknown time") << "installtime=None";
        QTest::newRow("a time that is a text") << "installtime='1693656000'";
        QTest::newRow("lists") << "provides=['b', 'a(x) >= 1', 'B', 'a'], requires=['only'], recommends=[]";
        QTest::newRow("equal items")
            << "provides=['same', 'other', 'same'], conflicts=['', ''], obsoletes=['']";
        QTest::newRow("items beyond ASCII")
            << "provides=['z', '\\uff21', '\\U0001f327', '\\u00e9'], requires=['a', '\\u00e9']";
        QTest::newRow("objects") << "provides=[7, 30, Member('tool'), Member('lib')]";
        QTest::newRow("tuples") << "provides=('b', 'a'), requires=(x for x in ())";
    }

    void theSearchTextsEqualTheTextsOfTheFieldsForValuesOfAllKinds()
    {
        QFETCH(QString, attributes);
        backEnd->run("values = dict(" + emptyLists() + ", " + attributes + ")\n" +
                     "it.available = [Package('tool', **values)]\n"
                     "it.installed = [Package('other', **values)]");
        QVERIFY(backEnd->collect());
        for (const char* name : {"tool", "other"}) {
            Package::Entry* entry = backEnd->entry(name);
            QVERIFY(yumIO().collectSearchTexts({entry}));
            QByteArray expected;
            for (int i = 0; i < Fields::Count; ++i) {
                const auto field = static_cast<Fields::Field>(i);
                const int uses = Fields::OfPackages | Fields::Searched;
                if ((Fields::row(field).uses & uses) == uses) {
                    const QByteArray text = yumIO().text(*entry, field).toUtf8();
                    expected += text.isEmpty() ? QByteArray() : text + '|';
                }
            }
            expected += '|'; // at least one field is empty
            QCOMPARE(entry->searchTexts.text().replace('\0', '|'), expected);
        }
    }
};

QTEST_MAIN(YumIOSearchTest)
#include "YumIOSearchTest.moc"
