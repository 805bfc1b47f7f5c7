// SPDX-License-Identifier: GPL-2.0-or-later

// Prepares a text from outside the program so that Qt shows it unchanged in tool tips and window titles. Such
// texts come from packages, repositories, files, servers and failures. For labels and message boxes, use
// PlainLabel and HMessageBox.
//
// Any thread may call these functions. They have no state.

#ifndef WIDGETS_LITERAL_H
#define WIDGETS_LITERAL_H

#include <QString>

namespace Literal {

// Returns a tool tip that shows the text unchanged. Without this function, Qt would interpret a text that
// looks like rich text, and load the pictures in it. Call this function only once for each text: in the code
// that shows or sets the tool tip.
QString toolTip(const QString& text);

// Returns a window title that shows the text unchanged. Without this function, Qt would replace "[*]".
QString title(QString text);

} // namespace Literal

#endif
