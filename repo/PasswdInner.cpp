#include "repo/PasswdInner.h"

#include <QKeyEvent>

#include <algorithm>
#include <iterator>

#include "repo/PasswdAccessible.h"

namespace {

template <size_t Count>
bool matchesOneOf(const QKeyEvent* event, const QKeySequence::StandardKey (&keys)[Count])
{
    return std::any_of(std::begin(keys), std::end(keys),
                       [event](QKeySequence::StandardKey key) { return event->matches(key); });
}

} // namespace

PasswdInnerLineEdit::PasswdInnerLineEdit(QWidget* parent) : QLineEdit(parent)
{
    PasswdAccessible::install();
    setFocusPolicy(Qt::NoFocus);
    hide();
}

PasswdInnerTextEdit::PasswdInnerTextEdit(QWidget* parent) : QTextEdit(parent)
{
    PasswdAccessible::install();
    setAcceptRichText(false);
    setFocusPolicy(Qt::NoFocus);
    hide();
}

PasswdMimeData::PasswdMimeData(const QString& masked, const QString& realPiece) : real(realPiece)
{
    setText(masked);
}

QString PasswdMimeData::realText(const QMimeData* source)
{
    if (source == nullptr) {
        return QString();
    }
    const auto* own = qobject_cast<const PasswdMimeData*>(source);
    return own != nullptr ? own->real : source->text();
}

namespace PasswdInner {

bool movesCursor(const QKeyEvent* event)
{
    static const QKeySequence::StandardKey keys[] = {
        QKeySequence::MoveToNextChar,
        QKeySequence::MoveToPreviousChar,
        QKeySequence::MoveToNextWord,
        QKeySequence::MoveToPreviousWord,
        QKeySequence::MoveToNextLine,
        QKeySequence::MoveToPreviousLine,
        QKeySequence::MoveToNextPage,
        QKeySequence::MoveToPreviousPage,
        QKeySequence::MoveToStartOfLine,
        QKeySequence::MoveToEndOfLine,
        QKeySequence::MoveToStartOfBlock,
        QKeySequence::MoveToEndOfBlock,
        QKeySequence::MoveToStartOfDocument,
        QKeySequence::MoveToEndOfDocument,
        QKeySequence::SelectNextChar,
        QKeySequence::SelectPreviousChar,
        QKeySequence::SelectNextWord,
        QKeySequence::SelectPreviousWord,
        QKeySequence::SelectNextLine,
        QKeySequence::SelectPreviousLine,
        QKeySequence::SelectNextPage,
        QKeySequence::SelectPreviousPage,
        QKeySequence::SelectStartOfLine,
        QKeySequence::SelectEndOfLine,
        QKeySequence::SelectStartOfBlock,
        QKeySequence::SelectEndOfBlock,
        QKeySequence::SelectStartOfDocument,
        QKeySequence::SelectEndOfDocument,
        QKeySequence::SelectAll,
        QKeySequence::Deselect,
    };
    return matchesOneOf(event, keys);
}

bool copies(const QKeyEvent* event)
{
    return event->matches(QKeySequence::Copy);
}

int characterBoundary(const QString& text, int position)
{
    const bool within = position > 0 && position < text.size() && text.at(position).isLowSurrogate() &&
                        text.at(position - 1).isHighSurrogate();
    return within ? position + 1 : position;
}

Difference::Difference(const QString& from, const QString& to)
{
    const int shorter = std::min(from.size(), to.size());
    begin = 0;
    while (begin < shorter && from.at(begin) == to.at(begin)) {
        ++begin;
    }
    int same = 0;
    while (same < shorter - begin && from.at(from.size() - 1 - same) == to.at(to.size() - 1 - same)) {
        ++same;
    }
    removed = from.size() - begin - same;
    added = to.size() - begin - same;
}

} // namespace PasswdInner
