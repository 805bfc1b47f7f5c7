// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/LongLabel.h"

#include <QAbstractTextDocumentLayout>
#include <QFontMetricsF>
#include <QHash>
#include <QPaintEvent>
#include <QPainter>
#include <QPair>
#include <QSet>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextLayout>

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

constexpr qreal unlimited = 1 << 20; // wider than any line

} // namespace

// Lays out the lines of the label's document on demand. Each block of the document is one line. The label has
// set the document's margin to 0.
class LongLabel::Layout : public QAbstractTextDocumentLayout
{
public:
    Layout(QTextDocument* document, const LongLabel& shown)
        : QAbstractTextDocumentLayout(document), label(shown)
    {
    }

    void draw(QPainter* painter, const PaintContext& context) override
    {
        measure();
        // The label passes no rectangle to its document. So draw the lines of the current paint event.
        const QRectF area = painter->worldTransform().inverted().mapRect(QRectF(label.painted));
        const int lines = document()->blockCount();
        const int first = qBound(0, static_cast<int>(std::floor(area.top() / lineHeight)), lines);
        const int end = qBound(0, static_cast<int>(std::ceil(area.bottom() / lineHeight)), lines);
        const QPen pen = painter->pen();
        painter->setPen(context.palette.color(QPalette::Text));
        QTextBlock block = document()->findBlockByNumber(first);
        for (int line = first; line < end; ++line, block = block.next()) {
            drawLine(painter, context, block, QPointF(0, line * lineHeight));
        }
        painter->setPen(pen);
    }

    int hitTest(const QPointF& point, Qt::HitTestAccuracy accuracy) const override
    {
        measure();
        const int number = static_cast<int>(std::floor(point.y() / lineHeight));
        const bool isInside = number >= 0 && number < document()->blockCount();
        if (!isInside) {
            return accuracy == Qt::ExactHit ? -1 : number < 0 ? 0 : document()->characterCount() - 1;
        }
        const QTextBlock block = document()->findBlockByNumber(number);
        const QTextLine line = lineOf(block);
        const QRectF text = line.naturalTextRect();
        if (accuracy == Qt::ExactHit && (point.x() < text.left() || point.x() > text.right())) {
            return -1;
        }
        return block.position() + line.xToCursor(point.x(), accuracy == Qt::ExactHit
                                                                ? QTextLine::CursorOnCharacter
                                                                : QTextLine::CursorBetweenCharacters);
    }

    int pageCount() const override { return 1; }

    QSizeF documentSize() const override
    {
        measure();
        return QSizeF(qMax(widest, document()->textWidth()), document()->blockCount() * lineHeight);
    }

    QRectF frameBoundingRect(QTextFrame*) const override { return QRectF(QPointF(), documentSize()); }

    QRectF blockBoundingRect(const QTextBlock& block) const override
    {
        if (!block.isValid()) {
            return QRectF();
        }
        measure();
        return QRectF(0, block.blockNumber() * lineHeight, lineOf(block).width(), lineHeight);
    }

    int count = 0; // the number of layouts of a line

protected:
    // Qt also calls this function if the font or the width of the text changes.
    void documentChanged(int, int, int) override
    {
        for (const int number : qAsConst(present)) {
            QTextBlock block = document()->findBlockByNumber(number);
            if (block.isValid()) {
                block.clearLayout();
            }
        }
        present.clear();
        lineHeight = 0;
        Q_EMIT update();
    }

private:
    void layOut(QTextLayout& layout, qreal width) const
    {
        QTextOption option = document()->defaultTextOption();
        option.setWrapMode(QTextOption::ManualWrap); // only at line feeds
        layout.setTextOption(option);
        layout.beginLayout();
        QTextLine line = layout.createLine();
        line.setLeadingIncluded(true);
        line.setLineWidth(width);
        line.setPosition(QPointF());
        layout.endLayout();
    }

    QTextLine lineOf(const QTextBlock& block) const
    {
        QTextLayout* const layout = block.layout();
        if (layout->lineCount() == 0) {
            layOut(*layout, documentSize().width());
            auto* const self = const_cast<Layout*>(this);
            self->present.insert(block.blockNumber());
            ++self->count;
        }
        return layout->lineAt(0);
    }

    void drawLine(QPainter* painter, const PaintContext& context, const QTextBlock& block,
                  const QPointF& place) const
    {
        lineOf(block);
        QVector<QTextLayout::FormatRange> selected;
        for (const Selection& selection : context.selections) {
            const int start = selection.cursor.selectionStart() - block.position();
            const int end = selection.cursor.selectionEnd() - block.position();
            if (start < block.length() && end > 0 && end > start) {
                selected.append({start, end - start, selection.format});
            }
        }
        block.layout()->draw(painter, place, selected);
        if (block.contains(context.cursorPosition)) {
            const QVariant width = property("cursorWidth");
            block.layout()->drawCursor(painter, place, context.cursorPosition - block.position(),
                                       width.isValid() ? width.toInt() : 1);
        }
    }

    // Finds the height of the lines, and the width of the widest line.
    void measure() const
    {
        if (lineHeight > 0) {
            return;
        }
        auto* const self = const_cast<Layout*>(this);
        self->widest = 0;
        for (const int number : candidates()) {
            QTextBlock block = document()->findBlockByNumber(number);
            layOut(*block.layout(), unlimited);
            const QTextLine line = block.layout()->lineAt(0);
            self->widest = qMax(widest, line.naturalTextWidth());
            self->lineHeight = line.height();
            block.clearLayout();
        }
    }

    // Returns the numbers of a few lines, one of which is the widest line. Without shaping, the width of a
    // text is the sum of the advances of its characters. But if the last letter extends beyond its advance,
    // the line is wider. And the advance of a tab is unknown. So these lines are the widest lines with each
    // last letter and each number of tabs.
    std::vector<int> candidates() const
    {
        const QString text = document()->toPlainText();
        const std::vector<qreal> advances = advancesOf(text);
        struct Line
        {
            qreal width;
            int number;
        };
        QHash<QPair<ushort, int>, Line> widestWith;
        int number = 0;
        for (int start = 0; start <= text.length(); ++number) {
            int end = text.indexOf(QLatin1Char('\n'), start);
            end = end < 0 ? text.length() : end;
            qreal width = 0;
            int tabs = 0;
            for (int i = start; i < end; ++i) {
                const ushort code = text.at(i).unicode();
                tabs += code == '\t' ? 1 : 0;
                width += code < advances.size() ? advances[code] : 0;
            }
            const QPair<ushort, int> key(end > start ? text.at(end - 1).unicode() : 0, tabs);
            const auto found = widestWith.constFind(key);
            if (found == widestWith.constEnd() || width > found->width) {
                widestWith.insert(key, {width, number});
            }
            start = end + 1;
        }
        std::vector<int> numbers;
        for (const Line& each : qAsConst(widestWith)) {
            numbers.push_back(each.number);
        }
        return numbers;
    }

    // Returns the advance of each character of the text, except tabs.
    std::vector<qreal> advancesOf(const QString& text) const
    {
        std::vector<qreal> advances(0x100, -1);
        QString all;
        for (const QChar each : text) {
            const ushort code = each.unicode();
            if (code < advances.size() && advances[code] < 0) {
                advances[code] = 0;
                if (code >= ' ') {
                    all += each;
                }
            }
        }
        QTextLayout layout(all, document()->defaultFont());
        layOut(layout, unlimited);
        const QTextLine line = layout.lineAt(0);
        for (int i = 0; i < all.length(); ++i) {
            advances[all.at(i).unicode()] = line.cursorToX(i + 1) - line.cursorToX(i);
        }
        return advances;
    }

    const LongLabel& label;
    qreal lineHeight = 0; // 0 if the lines must be measured
    qreal widest = 0;
    QSet<int> present; // the numbers of the blocks that have a layout
};

LongLabel::LongLabel(const QString& text, QWidget* parent) : PlainLabel(text, parent), lines(nullptr)
{
    // QLabel creates its document when its text becomes selectable. Later it fills the document.
    QFont unshaped;
    unshaped.setStyleStrategy(QFont::PreferNoShaping);
    setFont(unshaped);
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    if (auto* document = findChild<QTextDocument*>()) {
        lines = new Layout(document, *this);
        document->setDocumentLayout(lines);
    }
}

bool LongLabel::isSuitable(const QString& text, const QFont& font)
{
    QSet<ushort> known;
    bool isBeginning = true; // of a line
    for (const QChar each : text) {
        const ushort code = each.unicode();
        const bool isAscii = code >= 0x20 && code < 0x7f;
        const bool isWestern = code > 0xa0 && code <= 0xff && code != QChar::SoftHyphen;
        const bool isIndent = code == '\t' && isBeginning;
        if (!isAscii && !isWestern && !isIndent && code != '\n') {
            return false;
        }
        if (isWestern) {
            known.insert(code);
        }
        isBeginning = isIndent || code == '\n';
    }
    const QFontMetricsF metrics(font);
    return std::all_of(known.cbegin(), known.cend(),
                       [&metrics](ushort code) { return metrics.inFont(QChar(code)); });
}

int LongLabel::layoutCount() const
{
    return lines != nullptr ? lines->count : 0;
}

void LongLabel::paintEvent(QPaintEvent* event)
{
    painted = event->rect();
    PlainLabel::paintEvent(event);
}
