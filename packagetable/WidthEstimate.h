// SPDX-License-Identifier: GPL-2.0-or-later

// Estimates the width of a text from the widths of pairs of characters. An estimate is much faster than
// measuring the text. The estimate may be slightly wrong if a font combines three or more characters.
//
// Any thread may create a WidthEstimate, but until endMeasuring(), only this thread may use it: Qt keeps data
// of a font for each thread. The same is true for WidestRows, which finds the rows with the widest texts.

#ifndef PACKAGETABLE_WIDTHESTIMATE_H
#define PACKAGETABLE_WIDTHESTIMATE_H

#include <array>
#include <optional>
#include <vector>

#include <QFont>
#include <QFontMetricsF>
#include <QSet>
#include <QString>

namespace PackageTable {

class WidthEstimate
{
public:
    // The result for a text that contains characters other than printable ASCII. For example, Arabic letters
    // change their widths inside a word, so the sum of the widths would be wrong.
    static constexpr qreal unknown = 1e9;

    explicit WidthEstimate(const QFont& itsFont);

    // Must not be called after endMeasuring().
    const QFont& usedFont() const { return *font; }

    // From now on, the object measures no further characters, so any other thread may use it. The estimate of
    // a text with another pair of characters is `unknown`.
    void endMeasuring();

    // Returns the width in pixels, or `unknown`.
    qreal operator()(const QString& text);
    // The real width of a text differs from its estimate by at most this number of pixels.
    qreal margin() const { return averageWidth; }

private:
    static constexpr int first = ' ';
    static constexpr int letters = '~' - first + 1;

    static QChar letter(int code) { return QChar(first + code); }
    qreal width(int code);
    qreal advance(int before, int code);
    qreal measure(const QString& text) const;

    // Both are empty after endMeasuring().
    std::optional<QFont> font;
    std::optional<QFontMetricsF> metrics;
    qreal averageWidth;
    std::vector<qreal> widths;   // by character; measured at its first use
    std::vector<qreal> advances; // by pair of characters; measured at its first use
};

class WidestRows
{
public:
    // The WidthEstimate must exist as long as this object.
    explicit WidestRows(WidthEstimate& itsEstimate) : estimate(itsEstimate) {}

    void add(int row, const QString& text);
    // Returns some of the added rows, in the order of the calls. One of these rows has the widest text. If
    // several texts have the same estimate and the same last letter, the result contains only one of their
    // rows.
    std::vector<int> rows() const;

private:
    // A row that may have the widest text.
    struct Candidate
    {
        int row;
        qreal estimated;
        QChar last; // the last letter
    };

    bool isKnown(const QString& text);
    void add(const Candidate& candidate);
    bool mayBeWidest(const Candidate& candidate) const;
    void removeNarrow();

    WidthEstimate& estimate;
    qreal widest = 0; // the greatest estimate
    std::vector<Candidate> candidates;
    size_t most = 64;         // the number of candidates that calls removeNarrow()
    QSet<QString> unmeasured; // the texts without an estimate
    // Thousands of rows may share the memory of one text. These are some of the last texts, by their
    // addresses. A QString in this array keeps its memory, so no other text can get the same address.
    std::array<QString, 64> known;
};

} // namespace PackageTable

#endif
