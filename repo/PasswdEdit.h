// SPDX-License-Identifier: GPL-2.0-or-later

// The common base of the two masking edits, PasswdLineEdit and PasswdTextEdit. The visible edit shows a text
// with masked passwords. A hidden edit of the same kind contains the real text and performs the editing. The
// screen, the clipboard and assistive programs get only the masked text.
//
// The object lives on the graphical thread. The parameter Edit is the base class and the type of the visible
// edit. The parameter Inner is the type of the hidden edit. The visible edit owns the hidden edit, which has
// the same parent, font and geometry.

#ifndef REPO_PASSWDEDIT_H
#define REPO_PASSWDEDIT_H

#include <QClipboard>
#include <QGuiApplication>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QPointer>
#include <QScopedValueRollback>
#include <QStyle>

#include "app/base/Fonts.h"
#include "repo/PasswdInner.h"
#include "repo/PasswdMask.h"

template <typename Edit, typename Inner> class PasswdEdit : public Edit
{
public:
    ~PasswdEdit() override
    {
        // A parent may already have destroyed the hidden edit; the pointer is then null.
        delete inner;
    }

protected:
    // The arguments after `parent` are passed to the constructor of Edit.
    template <typename... Arguments>
    explicit PasswdEdit(QWidget* parent, Arguments... arguments)
        : Edit(arguments..., parent), inner(new Inner(parent)), showing(false)
    {
        this->setFont(Fonts::makeFixed(this->font()));
        this->setAcceptDrops(false);
        this->setContextMenuPolicy(Qt::NoContextMenu);
        this->setInputMethodHints(this->inputMethodHints() | Qt::ImhSensitiveData | Qt::ImhNoPredictiveText |
                                  Qt::ImhNoAutoUppercase);
        inner->setFont(this->font());
        inner->setGeometry(this->geometry());
    }

    // Returns the real text of the hidden edit, with one character for each cursor position.
    QString real() const { return PasswdInner::text(inner); }

    void showText()
    {
        const QScopedValueRollback<bool> guard(showing, true);
        shown = mask.masked(real(), passwordCharacter());
        if (PasswdInner::text(this) != shown) {
            PasswdInner::show(this, shown);
        }
    }

    // Subclasses call this function after each change to the visible text. If other code, for example an
    // assistive program, has changed the visible text, this function changes the real text accordingly.
    void applyVisibleText()
    {
        if (showing) {
            return;
        }
        const QString own = PasswdInner::text(this);
        const PasswdInner::Difference difference(shown, own);
        shown = own;
        if (difference.removed != 0 || difference.added != 0) {
            PasswdInner::replace(inner, difference, own);
        }
    }

    // applyVisibleSelection() copies the cursor and the selection from the visible edit to the hidden edit.
    // showRealSelection() copies them back.
    void applyVisibleSelection()
    {
        const QString text = real();
        const PasswdInner::Selection own = PasswdInner::selection(this);
        const PasswdInner::Selection wanted{PasswdInner::characterBoundary(text, own.anchor),
                                            PasswdInner::characterBoundary(text, own.position)};
        // If the selection is already right, leave it alone: a move of the cursor would split one undo step
        // into two.
        if (PasswdInner::selection(inner) != wanted) {
            PasswdInner::separateUndo(inner);
            PasswdInner::select(inner, wanted);
        }
    }
    void showRealSelection() { PasswdInner::select(this, PasswdInner::selection(inner)); }

    // Returns the selected text for the clipboard. The caller owns the result. Only the masking edits can
    // read the real text in the result.
    QMimeData* makeMimeData() const
    {
        const PasswdInner::Selection own = PasswdInner::selection(this);
        return new PasswdMimeData(shown.mid(own.begin(), own.length()),
                                  real().mid(own.begin(), own.length()));
    }
    void copySelection(QClipboard::Mode mode)
    {
        if (PasswdInner::selection(this).length() > 0) {
            QGuiApplication::clipboard()->setMimeData(makeMimeData(), mode);
        }
    }
    void removeSelection()
    {
        if (PasswdInner::selection(this).length() > 0) {
            applyVisibleSelection();
            PasswdInner::removeSelected(inner);
            showRealSelection();
        }
    }
    // Replaces the selection by the text, as a separate undo step.
    void insertReal(const QString& text)
    {
        PasswdInner::separateUndo(inner);
        applyVisibleSelection();
        PasswdInner::insert(inner, text);
        PasswdInner::separateUndo(inner);
        showRealSelection();
    }

    // Returns true if the key removes more than one character. In this case, the function first selects the
    // text that the key removes. The function finds this text in the visible edit, by the word boundaries of
    // the masked text. If the key also copies the removed text, the function copies the masked text to the
    // clipboard.
    virtual bool selectForRemoval(QKeyEvent* event)
    {
        const bool hasSelection = PasswdInner::selection(this).length() > 0;
        if (event->matches(QKeySequence::Cut)) {
            copySelection(QClipboard::Clipboard);
        } else if (event->matches(QKeySequence::DeleteStartOfWord)) {
            if (!hasSelection) {
                PasswdInner::selectWordBefore(this);
            }
        } else if (event->matches(QKeySequence::DeleteEndOfWord)) {
            if (!hasSelection) {
                PasswdInner::selectWordAfter(this);
            }
        } else {
            return false;
        }
        return true;
    }

    void keyPressEvent(QKeyEvent* event) override
    {
        if (PasswdInner::movesCursor(event)) {
            Edit::keyPressEvent(event);
            applyVisibleSelection();
        } else if (event->matches(QKeySequence::Copy)) {
            copySelection(QClipboard::Clipboard);
        } else if (event->matches(QKeySequence::Paste)) {
            insertReal(PasswdMimeData::realText(QGuiApplication::clipboard()->mimeData()));
        } else if (selectForRemoval(event)) {
            removeSelection();
        } else {
            applyVisibleSelection();
            inner->keyPressEvent(event);
            showRealSelection();
        }
    }
    void keyReleaseEvent(QKeyEvent* event) override
    {
        inner->keyReleaseEvent(event);
        Edit::keyReleaseEvent(event);
    }
    void mousePressEvent(QMouseEvent* event) override
    {
        Edit::mousePressEvent(event);
        applyVisibleSelection();
    }
    void mouseReleaseEvent(QMouseEvent* event) override
    {
        Edit::mouseReleaseEvent(event);
        applyVisibleSelection();
    }
    void mouseDoubleClickEvent(QMouseEvent* event) override
    {
        Edit::mouseDoubleClickEvent(event);
        applyVisibleSelection();
    }

    // An input method composes text in the visible edit. Only the finished text reaches the hidden edit.
    void inputMethodEvent(QInputMethodEvent* event) override
    {
        if (!event->commitString().isEmpty() || event->replacementLength() > 0 ||
            !event->preeditString().isEmpty()) {
            QInputMethodEvent nothingComposed;
            Edit::inputMethodEvent(&nothingComposed);
            removeSelection();
            applyVisibleSelection();
            QInputMethodEvent commit;
            commit.setCommitString(event->commitString(), event->replacementStart(),
                                   event->replacementLength());
            inner->inputMethodEvent(&commit);
            showRealSelection();
        }
        QString composed = event->preeditString();
        if (mask.hides(real(), PasswdInner::selection(this).position)) {
            composed.fill(passwordCharacter());
        }
        QInputMethodEvent preedit(composed, event->attributes());
        Edit::inputMethodEvent(&preedit);
        event->accept();
    }

    bool event(QEvent* event) override
    {
        const bool handled = Edit::event(event);
        if (inner == nullptr) {
            return handled;
        }
        switch (event->type()) {
        case QEvent::Move:
        case QEvent::Resize:
            inner->setGeometry(this->geometry());
            break;
        case QEvent::ParentChange:
            inner->setParent(this->parentWidget());
            inner->setGeometry(this->geometry());
            break;
        case QEvent::FontChange:
            inner->setFont(this->font());
            break;
        case QEvent::StyleChange:
            showText();
            showRealSelection();
            break;
        default:
            break;
        }
        return handled;
    }

    PasswdMask mask;
    QPointer<Inner> inner;

private:
    QChar passwordCharacter() const
    {
        return QChar(this->style()->styleHint(QStyle::SH_LineEdit_PasswordCharacter, nullptr, this));
    }

    QString shown; // the masked text that showText() has set
    bool showing;
};

#endif
