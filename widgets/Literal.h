// Makes a text from elsewhere, of a package, a repository, a file, a server or a failure, be shown as it is
// where Qt would look for a meaning in it. Everywhere else it is up to the widget: a label gets
// setTextFormat(Qt::PlainText), a box is an HMessageBox.
//
// Any thread; no state.

#ifndef WIDGETS_LITERAL_H
#define WIDGETS_LITERAL_H

#include <QString>

namespace Literal {

// A tool tip that shows the text. Rich text would be taken for some, and load the pictures that it names; to
// be applied once, where the tool tip is shown or set.
QString toolTip(const QString& text);

// A title of a window that shows the text: "[*]" has a meaning there.
QString title(QString text);

} // namespace Literal

#endif
