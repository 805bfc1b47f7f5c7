#include "widgets/Literal.h"

#include <QTextDocument>

QString Literal::toolTip(const QString& text)
{
    // What is no rich text is shown as it is.
    if (!Qt::mightBeRichText(text)) {
        return text;
    }
    return QStringLiteral("<p style=\"white-space: pre\">%1</p>").arg(text.toHtmlEscaped());
}

QString Literal::title(QString text)
{
    return text.replace(QStringLiteral("[*]"), QStringLiteral("[*][*]"));
}
