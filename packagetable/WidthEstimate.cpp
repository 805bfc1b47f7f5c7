// SPDX-License-Identifier: GPL-2.0-or-later

#include "packagetable/WidthEstimate.h"

#include <QSet>

namespace PackageTable {

WidthEstimate::WidthEstimate(const QFont& itsFont)
    : font(itsFont), metrics(itsFont), widths(letters, unknown), advances(letters * letters, unknown)
{
}

qreal WidthEstimate::operator()(const QString& text)
{
    qreal sum = 0;
    int previous = -1;
    for (const QChar& character : text) {
        const int code = character.unicode() - first;
        if (code < 0 || code >= letters) {
            return unknown;
        }
        sum += previous < 0 ? width(code) : advance(previous, code);
        previous = code;
    }
    return sum;
}

std::vector<int> WidthEstimate::widestRows(int count, const std::function<QString(int row)>& textAt)
{
    std::vector<qreal> estimates(static_cast<size_t>(count));
    qreal widest = 0;
    for (int row = 0; row < count; ++row) {
        const qreal estimated = (*this)(textAt(row));
        estimates[static_cast<size_t>(row)] = estimated;
        if (estimated < unknown) {
            widest = qMax(widest, estimated);
        }
    }
    // The real width of a text differs from its estimate by at most this margin.
    const qreal margin = metrics.averageCharWidth();
    // Texts with equal estimates look equally wide only if they also end with the same letter: the right edge
    // of a letter may extend beyond its width.
    QSet<qint64> looks;
    QSet<QString> texts;
    std::vector<int> found;
    for (int row = 0; row < count; ++row) {
        const qreal estimated = estimates[static_cast<size_t>(row)];
        if (estimated == unknown) {
            const QString text = textAt(row);
            if (!texts.contains(text)) {
                texts.insert(text);
                found.push_back(row);
            }
        } else if (estimated + margin >= widest) {
            const QString text = textAt(row);
            const qint64 last = text.isEmpty() ? 0 : text.at(text.length() - 1).unicode();
            const qint64 look = qRound64(estimated * 64) * 128 + last;
            if (!looks.contains(look)) {
                looks.insert(look);
                found.push_back(row);
            }
        }
    }
    return found;
}

qreal WidthEstimate::width(int code)
{
    qreal& known = widths[static_cast<size_t>(code)];
    if (known == unknown) {
        known = measure(letter(code));
    }
    return known;
}

// Returns by how much the letter `code` widens a text that ends with the letter `before`.
qreal WidthEstimate::advance(int before, int code)
{
    qreal& known = advances[static_cast<size_t>(before) * letters + static_cast<size_t>(code)];
    if (known == unknown) {
        known = measure(QString(letter(before)) + letter(code)) - width(before);
    }
    return known;
}

qreal WidthEstimate::measure(const QString& text) const
{
#if QT_VERSION >= QT_VERSION_CHECK(5, 11, 0)
    return metrics.horizontalAdvance(text);
#else
    return metrics.width(text);
#endif
}

} // namespace PackageTable
