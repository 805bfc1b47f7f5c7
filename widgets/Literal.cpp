// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/Literal.h"

#include <QTextDocument>

QString Literal::toolTip(const QString& text)
{
    // Return plain text unchanged, because Qt interprets only text that looks like rich text.
    if (!Qt::mightBeRichText(text)) {
        return text;
    }
    return QStringLiteral("<p style=\"white-space: pre\">%1</p>").arg(text.toHtmlEscaped());
}

QString Literal::title(QString text)
{
    return text.replace(QStringLiteral("[*]"), QStringLiteral("[*][*]"));
}
