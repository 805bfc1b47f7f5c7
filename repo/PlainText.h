// SPDX-License-Identifier: GPL-2.0-or-later

// Reads the exact text of a document.
//
// Only the graphical thread calls these functions. They have no state.

#ifndef REPO_PLAINTEXT_H
#define REPO_PLAINTEXT_H

#include <QString>

class QTextDocument;

namespace PlainText {

// Returns the text with one character for each position in the document, and with line feeds between the
// paragraphs. QTextDocument::toPlainText() replaces no-break spaces by blanks, but exact() keeps them.
// Configuration files are read as Latin-1, so a no-break space may be one byte of a longer UTF-8 character.
QString exact(const QTextDocument* document);

} // namespace PlainText

#endif
