// The text of a document, exactly as it was put in.
//
// Graphical thread; no state.

#ifndef REPO_PLAINTEXT_H
#define REPO_PLAINTEXT_H

#include <QString>

class QTextDocument;

namespace PlainText {

// One character for each place of the document, with line feeds between the paragraphs. Unlike the document's
// own plain text, this one keeps no-break spaces, which stand for halves of letters in files that are read
// byte by byte.
QString exact(const QTextDocument* document);

} // namespace PlainText

#endif
