// SPDX-License-Identifier: GPL-2.0-or-later

// The exact text of a document, without replaced characters.
//
// Graphical thread; no state.

#ifndef REPO_PLAINTEXT_H
#define REPO_PLAINTEXT_H

#include <QString>

class QTextDocument;

namespace PlainText {

// The text with one character for each position in the document, and line feeds between the paragraphs.
// QTextDocument::toPlainText() replaces no-break spaces; this function keeps them. In files that are read
// byte by byte, a no-break space is one byte of a longer character.
QString exact(const QTextDocument* document);

} // namespace PlainText

#endif
