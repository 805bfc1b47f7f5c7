// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/Colors.h"

#include <QColor>
#include <QCoreApplication>

#include <cmath>

namespace Colors {

namespace {

// If the grey value of a background is at least this number, black text is easier to read on it than white
// text.
const int darkestGreyForBlackText = 124;

QPalette makeLabel(const QPalette& palette, const QColor& background)
{
    QPalette made(palette);
    made.setColor(QPalette::Window, background);
    made.setColor(QPalette::WindowText,
                  qGray(background.rgb()) < darkestGreyForBlackText ? Qt::white : Qt::black);
    return made;
}

// If the luminance of a background is less than this number, white text has more contrast on it than black
// text.
const double darkestLightBackground = 0.179;

// The minimum contrast at which text of an ordinary size is readable on its background.
const double leastContrast = 4.5;

// Returns the perceived luminance of a colour, from 0 for black to 1 for white.
double luminance(const QColor& color)
{
    const auto linear = [](double part) {
        return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

bool isDark(const QColor& background)
{
    return luminance(background) < darkestLightBackground;
}

// Returns the contrast between a colour and a darker background.
double contrast(const QColor& color, const QColor& background)
{
    return (luminance(color) + 0.05) / (luminance(background) + 0.05);
}

} // namespace

QString action()
{
    return QCoreApplication::translate("Colors", "blue");
}

QString error()
{
    return QCoreApplication::translate("Colors", "red");
}

QString errorDisabled()
{
    return QCoreApplication::translate("Colors", "#ffa9b8");
}

QString warning()
{
    return QCoreApplication::translate("Colors", "darkorange");
}

QString minor()
{
    return QCoreApplication::translate("Colors", "#8b5a2b");
}

QString minorDisabled()
{
    return QCoreApplication::translate("Colors", "#ffbd94");
}

QString ok()
{
    return QCoreApplication::translate("Colors", "green");
}

QString requiredBg()
{
    return QCoreApplication::translate("Colors", "#fffacd");
}

QString errorBg()
{
    return QCoreApplication::translate("Colors", "#ff6060");
}

QString warningBg()
{
    return QCoreApplication::translate("Colors", "yellow");
}

QString okBg()
{
    return QCoreApplication::translate("Colors", "lightgreen");
}

QPalette makeRequired(const QPalette& palette)
{
    // Store this colour, because the repository form calls this function at each key press.
    static const QColor background(requiredBg());
    QPalette made(palette);
    made.setColor(QPalette::Active, QPalette::Base, background);
    made.setColor(QPalette::Inactive, QPalette::Base, background);
    return made;
}

QPalette makeError(const QPalette& palette)
{
    return makeLabel(palette, QColor(errorBg()));
}

QPalette makeWarning(const QPalette& palette)
{
    return makeLabel(palette, QColor(warningBg()));
}

QPalette makeOK(const QPalette& palette)
{
    return makeLabel(palette, QColor(okBg()));
}

QString readable(const QString& name, const QColor& background)
{
    QColor color(name);
    if (!isDark(background) || contrast(color, background) >= leastContrast) {
        return name;
    }
    while (contrast(color, background) < leastContrast) {
        const int lightness = color.lightness();
        color.setHsl(color.hslHue(), color.hslSaturation(), qMin(lightness + 4, 255));
    }
    return color.name();
}

QString readableDisabled(const QString& name, const QString& enabledName, const QColor& background)
{
    if (!isDark(background)) {
        return name;
    }
    const QColor color(readable(enabledName, background));
    return QColor((color.red() + background.red()) / 2, (color.green() + background.green()) / 2,
                  (color.blue() + background.blue()) / 2)
        .name();
}

} // namespace Colors
