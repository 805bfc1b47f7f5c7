// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>

#include <QFontDatabase>
#include <QFontInfo>
#include <QTranslator>

#include "app/base/Fonts.h"

namespace {

// A translator that replaces the names of the well-known fixed-pitch families, as a catalogue may do.
class FamilyTranslator : public QTranslator
{
public:
    explicit FamilyTranslator(const QStringList& translated) : families(translated)
    {
        QCoreApplication::installTranslator(this);
    }
    ~FamilyTranslator() override { QCoreApplication::removeTranslator(this); }
    FamilyTranslator(const FamilyTranslator&) = delete;
    FamilyTranslator& operator=(const FamilyTranslator&) = delete;

    bool isEmpty() const override { return false; }
    QString translate(const char* context, const char* source, const char*, int) const override
    {
        static const QStringList sources = {"Bitstream Vera Sans Mono", "DejaVu Sans Mono", "Monospace",
                                            "Courier"};
        return qstrcmp(context, "Fonts") == 0 ? families.value(sources.indexOf(source)) : QString();
    }

private:
    QStringList families;
};

// The known font families that Qt does not replace by other families.
QStringList resolvingFamilies()
{
    QStringList resolving;
    for (const QString& family : QFontDatabase().families()) {
        if (QFontInfo(QFont(family)).family() == family) {
            resolving.append(family);
        }
    }
    return resolving;
}

} // namespace

class FontsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theHeaderFontIsBoldAndHasTheHelveticaStyleHint()
    {
        QFont font("Some Family", 10);
        font.setFixedPitch(true);
        font.setItalic(true);
        const QFont header = Fonts::makeHeader(font);
        QVERIFY(!header.fixedPitch());
        QCOMPARE(header.styleHint(), QFont::Helvetica);
        QCOMPARE(header.styleStrategy(), QFont::PreferDefault);
        QCOMPARE(header.weight(), 75);
        QCOMPARE(header.family(), QStringLiteral("Some Family"));
        QVERIFY(header.italic());
        QVERIFY2(font.fixedPitch() && font.pointSize() == 10 && !font.bold(),
                 "makeHeader() has changed the given font");
    }

    void theHeaderFontIsOneAndAHalfTimesAsLargeAsTheGivenFont_data()
    {
        QTest::addColumn<int>("pixels");
        QTest::addColumn<int>("points");
        QTest::addColumn<int>("headerPixels");
        QTest::addColumn<int>("headerPoints");
        QTest::newRow("pixels") << 12 << -1 << 18 << -1;
        QTest::newRow("odd pixels") << 11 << -1 << 16 << -1;
        QTest::newRow("points") << -1 << 10 << -1 << 15;
        QTest::newRow("odd points") << -1 << 9 << -1 << 13;
    }

    void theHeaderFontIsOneAndAHalfTimesAsLargeAsTheGivenFont()
    {
        QFETCH(int, pixels);
        QFETCH(int, points);
        QFETCH(int, headerPixels);
        QFETCH(int, headerPoints);
        QFont font("Some Family");
        if (pixels != -1) {
            font.setPixelSize(pixels);
        } else {
            font.setPointSize(points);
        }
        const QFont header = Fonts::makeHeader(font);
        QCOMPARE(header.pixelSize(), headerPixels);
        QCOMPARE(header.pointSize(), headerPoints);
    }

    void theFixedFontHasTheFirstInstalledFamilyOfTheGivenList_data()
    {
        QTest::addColumn<QStringList>("families");
        QTest::addColumn<QString>("chosen");
        const QStringList there = resolvingFamilies();
        QVERIFY2(there.size() >= 2, "too few fonts are installed");
        QTest::newRow("the first") << QStringList({there[0], there[1], "No Such A", "No Such B"}) << there[0];
        QTest::newRow("the second") << QStringList({"No Such A", there[1], there[0], "No Such B"})
                                    << there[1];
        QTest::newRow("the third") << QStringList({"No Such A", "No Such B", there[0], there[1]}) << there[0];
        QTest::newRow("the last") << QStringList({"No Such A", "No Such B", "No Such C", there[1]})
                                  << there[1];
        QTest::newRow("none") << QStringList({"No Such A", "No Such B", "No Such C", "No Such D"})
                              << "No Such D";
    }

    void theFixedFontHasTheFirstInstalledFamilyOfTheGivenList()
    {
        QFETCH(QStringList, families);
        QFETCH(QString, chosen);
        const FamilyTranslator translator(families);
        const QFont fixed = Fonts::makeFixed(QFont("Some Family", 10));
        QCOMPARE(fixed.family(), chosen);
        QVERIFY(fixed.fixedPitch());
        QCOMPARE(fixed.pointSize(), 10);
        QVERIFY(!fixed.bold());
    }

    void theFixedFontHasTheFirstInstalledFamilyOfTheBuiltInList()
    {
        const QStringList known = {"Bitstream Vera Sans Mono", "DejaVu Sans Mono", "Monospace", "Courier"};
        const QString family = Fonts::makeFixed(QFont("Some Family", 10)).family();
        const int index = known.indexOf(family);
        QVERIFY2(index != -1, qPrintable(family));
        for (int i = 0; i < index; ++i) {
            QVERIFY2(QFontInfo(QFont(known[i])).family() != known[i], qPrintable(known[i]));
        }
    }

    void aBoldFontDiffersFromTheGivenFontOnlyInItsWeight()
    {
        QFont font("Some Family", 9);
        font.setItalic(true);
        font.setFixedPitch(true);
        const QFont bold = Fonts::makeBold(font);
        QCOMPARE(bold.weight(), 75);
        QFont again(bold);
        again.setWeight(font.weight());
        QCOMPARE(again, font);
    }
};

QTEST_MAIN(FontsTest)
#include "FontsTest.moc"
