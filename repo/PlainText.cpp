// SPDX-License-Identifier: GPL-2.0-or-later

#include "repo/PlainText.h"

#include <QTextDocument>

namespace PlainText {

QString exact(const QTextDocument* document)
{
    QString text = document->toRawText();
    for (QChar& character : text) {
        switch (character.unicode()) {
        case QChar::ParagraphSeparator:
        case QChar::LineSeparator:
        case 0xfdd0: // Qt's mark for the beginning of a frame
        case 0xfdd1: // Qt's mark for the end of a frame
            character = QLatin1Char('\n');
            break;
        default:
            break;
        }
    }
    return text;
}

} // namespace PlainText
