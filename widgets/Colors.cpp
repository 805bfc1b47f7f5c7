#include "widgets/Colors.h"

#include <QColor>
#include <QCoreApplication>

namespace Colors {

namespace {

// On a background of this grey value or above, black text reads better than white.
const int darkestGreyForBlackText = 124;

QPalette makeLabel(const QPalette& palette, const QColor& background)
{
    QPalette made(palette);
    made.setColor(QPalette::Window, background);
    made.setColor(QPalette::WindowText,
                  qGray(background.rgb()) < darkestGreyForBlackText ? Qt::white : Qt::black);
    return made;
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
    // The form asks for it with every key that is typed.
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

} // namespace Colors
