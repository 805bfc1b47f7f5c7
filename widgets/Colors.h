// SPDX-License-Identifier: GPL-2.0-or-later

// The colours of the program. Each meaning has one colour, so an error looks the same in every window.
//
// Only the graphical thread calls these functions. They have no state, except that makeRequired() calls
// requiredBg() only once per run.

#ifndef WIDGETS_COLORS_H
#define WIDGETS_COLORS_H

#include <QColor>
#include <QPalette>
#include <QString>

namespace Colors {

// Each function returns a colour name or "#rrggbb". Both QColor and the colour attribute of rich text accept
// these values. A translation may choose other colours.
QString action();        // headings and action markers
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

// Returns a copy of the palette for a required input field. While the field is disabled, its background has
// the usual colour of a disabled field. This function completes the set; no window needs it now.
QPalette makeRequired(const QPalette& palette);

// Each function returns a copy of the palette for a label that reports an error, a warning or a success. The
// colour of the background shows the meaning. The text is black or white, so that it is easy to read.
QPalette makeError(const QPalette& palette);
QPalette makeWarning(const QPalette& palette);
QPalette makeOK(const QPalette& palette);

// Returns a text colour that is readable on the background. Usually this is the colour `name`. If that colour
// is too dark for a dark background, the result is "#rrggbb" with the same hue, as light as necessary.
QString readable(const QString& name, const QColor& background);

// Returns the text colour of a disabled item. On a light background, this is the colour `name`. On a dark
// background, `name` could be more conspicuous than `enabledName`, the text colour of an enabled item.
// Therefore the result is then the middle between the background and the readable form of `enabledName`.
QString readableDisabled(const QString& name, const QString& enabledName, const QColor& background);

} // namespace Colors

#endif
