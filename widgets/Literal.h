// SPDX-License-Identifier: GPL-2.0-or-later

// Makes Qt show a foreign text unchanged where Qt would interpret it. Foreign texts come from packages,
// repositories, files, servers and failures. In other places the widget does this: a label is a
// PlainLabel, a box is an HMessageBox.
//
// Any thread; no state.

#ifndef WIDGETS_LITERAL_H
#define WIDGETS_LITERAL_H

#include <QString>

namespace Literal {

// A tool tip that shows the text. Qt would interpret a text that looks like rich text, and load the pictures
// that it names. Call it once, in the place that shows or sets the tool tip.
QString toolTip(const QString& text);

// A window title that shows the text. Qt gives "[*]" in titles a meaning.
QString title(QString text);

} // namespace Literal

#endif
