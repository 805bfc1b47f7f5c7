// SPDX-License-Identifier: GPL-2.0-or-later

// The colours of the program: one name for each meaning, so that an error looks the same in every window.
//
// Graphical thread; no state, except that makeRequired() reads requiredBg() only once per run.

#ifndef WIDGETS_COLORS_H
#define WIDGETS_COLORS_H

#include <QColor>
#include <QPalette>
#include <QString>

namespace Colors {

// Each is a name or "#rrggbb"; both QColor and the colour attribute of rich text accept it. All colours are
// translatable, so a translation may choose other colours.
QString action();        // headings, action markers
QString error();         // error text
QString errorDisabled(); // error text in a disabled item
QString warning();       // warning text
QString minor();         // text of lesser importance
QString minorDisabled(); // text of lesser importance in a disabled item
QString ok();            // success text
QString requiredBg();    // background of a required input field
QString errorBg();       // background of an error label
QString warningBg();     // background of a warning label
QString okBg();          // background of a success label

// A copy of the palette for a required input field. A disabled field keeps its colour.
QPalette makeRequired(const QPalette& palette);

// Copies of the palette for a label that shows an error, a warning or a success. The background has the
// colour of that meaning. The text is black or white, whichever is easier to read on it.
QPalette makeError(const QPalette& palette);
QPalette makeWarning(const QPalette& palette);
QPalette makeOK(const QPalette& palette);

// A text colour that is readable on the background: the name itself, except if it cannot be read on a dark
// background. Then it is "#rrggbb" of the same hue, as light as necessary.
QString readable(const QString& name, const QColor& background);

// The text colour of a disabled item, usually the name itself. On a dark background that colour may be more
// conspicuous than the colour of an enabled item. Then it is half way between the latter and the background.
QString readableDisabled(const QString& name, const QString& enabledName, const QColor& background);

} // namespace Colors

#endif
