// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/Colors.h"

#include <QtTest>

#include <cmath>

namespace {

// As long as an object of this class exists, it translates the name of one colour to the name of another
// colour.
class ColorTranslator : public QTranslator
{
public:
    ColorTranslator(const char* from, const char* to) : source(from), target(to)
    {
        QCoreApplication::installTranslator(this);
    }
    bool isEmpty() const override { return false; }
    QString translate(const char* context, const char* text, const char*, int) const override
    {
        const bool ours = qstrcmp(context, "Colors") == 0 && source == text;
        return ours ? QString::fromLatin1(target) : QString();
    }

private:
    QByteArray source;
    QByteArray target;
};

const QPalette::ColorGroup groups[] = {QPalette::Active, QPalette::Inactive, QPalette::Disabled};

} // namespace

class ColorsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void eachColourFunctionReturnsTheExpectedColour_data();
    void eachColourFunctionReturnsTheExpectedColour();
    void aTranslationCanReplaceAColour();
    void aRequiredFieldIsColouredUnlessItIsDisabled();
    void makeRequiredReadsTheTranslatedColourOnlyOnce();
    void aStatusLabelHasItsColourInEveryColourGroup_data();
    void aStatusLabelHasItsColourInEveryColourGroup();
    void textIsWhiteOnADarkColourAndBlackOnALightColour_data();
    void textIsWhiteOnADarkColourAndBlackOnALightColour();
    void coloursAreUnchangedOnALightBackground();
    void coloursAreReadableOnADarkBackground_data();
    void coloursAreReadableOnADarkBackground();
    void disabledTextHasLessContrastThanEnabledText();
};

using Name = QString (*)();
using Maker = QPalette (*)(const QPalette&);
Q_DECLARE_METATYPE(Name)
Q_DECLARE_METATYPE(Maker)

void ColorsTest::eachColourFunctionReturnsTheExpectedColour_data()
{
    QTest::addColumn<Name>("function");
    QTest::addColumn<QString>("name");
    QTest::newRow("action") << &Colors::action << "blue";
    QTest::newRow("error") << &Colors::error << "red";
    QTest::newRow("errorDisabled") << &Colors::errorDisabled << "#ffa9b8";
    QTest::newRow("warning") << &Colors::warning << "darkorange";
    QTest::newRow("minor") << &Colors::minor << "#8b5a2b";
    QTest::newRow("minorDisabled") << &Colors::minorDisabled << "#ffbd94";
    QTest::newRow("ok") << &Colors::ok << "green";
    QTest::newRow("requiredBg") << &Colors::requiredBg << "#fffacd";
    QTest::newRow("errorBg") << &Colors::errorBg << "#ff6060";
    QTest::newRow("warningBg") << &Colors::warningBg << "yellow";
    QTest::newRow("okBg") << &Colors::okBg << "lightgreen";
}

void ColorsTest::eachColourFunctionReturnsTheExpectedColour()
{
    QFETCH(Name, function);
    QFETCH(QString, name);
    QCOMPARE(function(), name);
    QVERIFY(QColor::isValidColor(function()));
}

void ColorsTest::aTranslationCanReplaceAColour()
{
    ColorTranslator translator("darkorange", "purple");
    QCOMPARE(Colors::warning(), QStringLiteral("purple"));
    QCOMPARE(Colors::error(), QStringLiteral("red"));
}

void ColorsTest::aRequiredFieldIsColouredUnlessItIsDisabled()
{
    const QPalette before(Qt::cyan);
    const QPalette made = Colors::makeRequired(before);
    QCOMPARE(made.color(QPalette::Active, QPalette::Base), QColor(0xff, 0xfa, 0xcd));
    QCOMPARE(made.color(QPalette::Inactive, QPalette::Base), QColor(0xff, 0xfa, 0xcd));
    QCOMPARE(made.color(QPalette::Disabled, QPalette::Base),
             before.color(QPalette::Disabled, QPalette::Base));
    QCOMPARE(made.color(QPalette::Active, QPalette::Window),
             before.color(QPalette::Active, QPalette::Window));
    QCOMPARE(made.color(QPalette::Active, QPalette::Text), before.color(QPalette::Active, QPalette::Text));
}

void ColorsTest::makeRequiredReadsTheTranslatedColourOnlyOnce()
{
    const QPalette first = Colors::makeRequired(QPalette());
    ColorTranslator translator("#fffacd", "#010203");
    QCOMPARE(Colors::requiredBg(), QStringLiteral("#010203"));
    QCOMPARE(Colors::makeRequired(QPalette()).color(QPalette::Base), first.color(QPalette::Base));
}

void ColorsTest::aStatusLabelHasItsColourInEveryColourGroup_data()
{
    QTest::addColumn<Maker>("make");
    QTest::addColumn<QColor>("background");
    QTest::newRow("error") << &Colors::makeError << QColor(0xff, 0x60, 0x60);
    QTest::newRow("warning") << &Colors::makeWarning << QColor(0xff, 0xff, 0x00);
    QTest::newRow("ok") << &Colors::makeOK << QColor(0x90, 0xee, 0x90);
}

void ColorsTest::aStatusLabelHasItsColourInEveryColourGroup()
{
    QFETCH(Maker, make);
    QFETCH(QColor, background);
    const QPalette before(Qt::cyan);
    const QPalette made = make(before);
    for (QPalette::ColorGroup group : groups) {
        QCOMPARE(made.color(group, QPalette::Window), background);
        QCOMPARE(made.color(group, QPalette::WindowText), QColor(Qt::black));
        QCOMPARE(made.color(group, QPalette::Base), before.color(group, QPalette::Base));
        QCOMPARE(made.color(group, QPalette::Button), before.color(group, QPalette::Button));
    }
}

void ColorsTest::textIsWhiteOnADarkColourAndBlackOnALightColour_data()
{
    QTest::addColumn<Maker>("make");
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("error") << &Colors::makeError << QByteArray("#ff6060");
    QTest::newRow("warning") << &Colors::makeWarning << QByteArray("yellow");
    QTest::newRow("ok") << &Colors::makeOK << QByteArray("lightgreen");
}

void ColorsTest::textIsWhiteOnADarkColourAndBlackOnALightColour()
{
    QFETCH(Maker, make);
    QFETCH(QByteArray, name);
    {
        ColorTranslator grey123(name, "#7b7b7b");
        const QPalette made = make(QPalette());
        for (QPalette::ColorGroup group : groups) {
            QCOMPARE(made.color(group, QPalette::Window), QColor(123, 123, 123));
            QCOMPARE(made.color(group, QPalette::WindowText), QColor(Qt::white));
        }
    }
    {
        ColorTranslator grey124(name, "#7c7c7c");
        QCOMPARE(make(QPalette()).color(QPalette::WindowText), QColor(Qt::black));
    }
}

void ColorsTest::coloursAreUnchangedOnALightBackground()
{
    for (const char* background : {"white", "#f7f7f7", "#efefef", "#c0c0c0"}) {
        for (Name name : {&Colors::action, &Colors::error, &Colors::warning, &Colors::minor, &Colors::ok}) {
            QCOMPARE(Colors::readable(name(), QColor(background)), name());
        }
        QCOMPARE(Colors::readableDisabled(Colors::errorDisabled(), Colors::error(), QColor(background)),
                 Colors::errorDisabled());
    }
}

void ColorsTest::coloursAreReadableOnADarkBackground_data()
{
    QTest::addColumn<QString>("background");
    QTest::newRow("black") << "#000000";
    QTest::newRow("dark grey") << "#232323";
    QTest::newRow("dark blue grey") << "#2d3640";
    QTest::newRow("medium grey") << "#5a5a5a";
}

void ColorsTest::coloursAreReadableOnADarkBackground()
{
    QFETCH(QString, background);
    // Luminance and contrast are defined as in the accessibility guidelines for web contents.
    const auto luminance = [](const QColor& color) {
        double sum = 0;
        const double parts[] = {color.redF(), color.greenF(), color.blueF()};
        const double weights[] = {0.2126, 0.7152, 0.0722};
        for (int i = 0; i < 3; ++i) {
            sum += weights[i] *
                   (parts[i] <= 0.03928 ? parts[i] / 12.92 : std::pow((parts[i] + 0.055) / 1.055, 2.4));
        }
        return sum;
    };
    const double dark = luminance(QColor(background));
    for (Name name : {&Colors::action, &Colors::error, &Colors::warning, &Colors::minor, &Colors::ok}) {
        const QColor color(Colors::readable(name(), QColor(background)));
        QVERIFY((luminance(color) + 0.05) / (dark + 0.05) >= 4.5);
        // The readable colour has the hue of the original colour; only its lightness differs.
        QVERIFY(qAbs(color.hslHue() - QColor(name()).hslHue()) <= 4);
    }
    // If a colour is readable on the background, readable() returns this colour unchanged.
    if (background == "#232323") {
        QCOMPARE(Colors::readable("darkorange", QColor(background)), QString("darkorange"));
    }
}

void ColorsTest::disabledTextHasLessContrastThanEnabledText()
{
    const QColor background("#232323");
    const QColor enabled(Colors::readable(Colors::error(), background));
    const QColor disabled(Colors::readableDisabled(Colors::errorDisabled(), Colors::error(), background));
    QVERIFY(disabled.lightness() < enabled.lightness());
    QVERIFY(disabled.lightness() > background.lightness());
}

QTEST_MAIN(ColorsTest)
#include "ColorsTest.moc"
