// SPDX-License-Identifier: GPL-2.0-or-later

// Estimates the width of a text from the widths of pairs of characters. An estimate is much faster than
// measuring the text. The estimate may be slightly wrong if a font combines three or more characters.
//
// Any thread may create a WidthEstimate, but then only this thread may use it.

#ifndef PACKAGETABLE_WIDTHESTIMATE_H
#define PACKAGETABLE_WIDTHESTIMATE_H

#include <functional>
#include <vector>

#include <QFont>
#include <QFontMetricsF>
#include <QString>

namespace PackageTable {

class WidthEstimate
{
public:
    // The result for a text that contains characters other than printable ASCII. For example, Arabic letters
    // change their widths inside a word, so the sum of the widths would be wrong.
    static constexpr qreal unknown = 1e9;

    explicit WidthEstimate(const QFont& itsFont);

    const QFont& usedFont() const { return font; }

    // Returns the width in pixels, or `unknown`.
    qreal operator()(const QString& text);
    // Returns some rows, one of which has the widest text. `textAt` returns the text of each of the `count`
    // rows. If several texts have the same estimate and the same last letter, the result contains one of
    // them.
    std::vector<int> widestRows(int count, const std::function<QString(int row)>& textAt);

private:
    static constexpr int first = ' ';
    static constexpr int letters = '~' - first + 1;

    static QChar letter(int code) { return QChar(first + code); }
    qreal width(int code);
    qreal advance(int before, int code);
    qreal measure(const QString& text) const;

    QFont font;
    QFontMetricsF metrics;
    std::vector<qreal> widths;   // by character; measured at its first use
    std::vector<qreal> advances; // by pair of characters; measured at its first use
};

} // namespace PackageTable

#endif
