// The colours of the program: one name for each meaning, so that an error looks the same in every window.
//
// Graphical thread; no state, except that requiredBg() is read for makeRequired() once per run.

#ifndef WIDGETS_COLORS_H
#define WIDGETS_COLORS_H

#include <QColor>
#include <QPalette>
#include <QString>

namespace Colors {

// Each is a name or "#rrggbb" that both QColor and the colour attribute of rich text accept. All of them go
// through translation, so a translation may choose other colours.
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

// A copy of the palette for an input field that must be filled in. A disabled field keeps its colour.
QPalette makeRequired(const QPalette& palette);

// Copies of the palette for a label that tells of an error, a warning or a success: the background says
// which, and the text is black or white, whichever can be read on it.
QPalette makeError(const QPalette& palette);
QPalette makeWarning(const QPalette& palette);
QPalette makeOK(const QPalette& palette);

// The colour, given by name, as it is to be used for text on the background: the name itself, except on a
// dark background that it cannot be read on; then "#rrggbb" of the same hue, as light as it has to be.
QString readable(const QString& name, const QColor& background);

// The text colour of a disabled item: the name itself, except on a dark background, where it would stand out
// more than that of an enabled one; then the latter, half way to the background.
QString readableDisabled(const QString& name, const QString& enabledName, const QColor& background);

} // namespace Colors

#endif
