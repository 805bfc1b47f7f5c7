// SPDX-License-Identifier: GPL-2.0-or-later

#include "packagetable/WidthEstimate.h"

#include <algorithm>

namespace PackageTable {

WidthEstimate::WidthEstimate(const QFont& itsFont)
    : font(itsFont), metrics(itsFont), averageWidth(metrics->averageCharWidth()), widths(letters, unknown),
      advances(letters * letters, unknown)
{
}

void WidthEstimate::endMeasuring()
{
    metrics.reset();
    font.reset();
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
        const qreal added = previous < 0 ? width(code) : advance(previous, code);
        if (added == unknown) {
            return unknown;
        }
        sum += added;
        previous = code;
    }
    return sum;
}

qreal WidthEstimate::width(int code)
{
    qreal& known = widths[static_cast<size_t>(code)];
    if (known == unknown && metrics) {
        known = measure(letter(code));
    }
    return known;
}

// Returns by how much the letter `code` widens a text that ends with the letter `before`.
qreal WidthEstimate::advance(int before, int code)
{
    qreal& known = advances[static_cast<size_t>(before) * letters + static_cast<size_t>(code)];
    if (known == unknown && metrics) {
        known = measure(QString(letter(before)) + letter(code)) - width(before);
    }
    return known;
}

qreal WidthEstimate::measure(const QString& text) const
{
#if QT_VERSION >= QT_VERSION_CHECK(5, 11, 0)
    return metrics->horizontalAdvance(text);
#else
    return metrics->width(text);
#endif
}

// Returns whether add() has already had a text with the same memory. If the text is new, remembers it.
bool WidestRows::isKnown(const QString& text)
{
    const auto address = reinterpret_cast<quintptr>(text.constData());
    QString& place = known[address / 32 % known.size()]; // strings have a distance of at least 32 bytes
    if (place.constData() == text.constData()) {
        return true;
    }
    place = text;
    return false;
}

void WidestRows::add(int row, const QString& text)
{
    if (isKnown(text)) {
        return;
    }
    const qreal estimated = estimate(text);
    if (estimated == WidthEstimate::unknown) {
        if (unmeasured.contains(text)) {
            return;
        }
        unmeasured.insert(text);
    }
    add({row, estimated, text.isEmpty() ? QChar() : text.at(text.length() - 1)});
}

void WidestRows::add(const Candidate& candidate)
{
    if (!mayBeWidest(candidate)) {
        return;
    }
    if (candidate.estimated != WidthEstimate::unknown) {
        widest = qMax(widest, candidate.estimated);
    }
    candidates.push_back(candidate);
    if (candidates.size() >= most) {
        removeNarrow();
        most = 2 * candidates.size() + 64;
    }
}

bool WidestRows::mayBeWidest(const Candidate& candidate) const
{
    return candidate.estimated + estimate.margin() >= widest;
}

void WidestRows::removeNarrow()
{
    candidates.erase(std::remove_if(candidates.begin(), candidates.end(),
                                    [this](const Candidate& each) { return !mayBeWidest(each); }),
                     candidates.end());
}

std::vector<int> WidestRows::rows() const
{
    // Texts with equal estimates look equally wide only if they also end with the same letter: the right edge
    // of a letter may extend beyond its width.
    QSet<qint64> looks;
    std::vector<int> found;
    for (const Candidate& each : candidates) {
        if (each.estimated == WidthEstimate::unknown) {
            found.push_back(each.row);
        } else if (mayBeWidest(each)) {
            const qint64 look = qRound64(each.estimated * 64) * 128 + each.last.unicode();
            if (!looks.contains(look)) {
                looks.insert(look);
                found.push_back(each.row);
            }
        }
    }
    return found;
}

} // namespace PackageTable
