// What the two masking edits have in common: the edit that is seen shows a text with its passwords masked,
// and a hidden edit of the same kind beside it holds the real text and does the editing. Everything that
// shows up on the screen, on the clipboard or in an assistive program is the masked text.
//
// Graphical thread. A base class: Edit is the kind of edit that is seen, Inner the hidden one. Owns the
// hidden edit, which has the same parent, font and geometry.

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
        // A parent that is being destroyed may have destroyed it first.
        delete inner;
    }

protected:
    // What comes behind the parent is for the edit's own constructor.
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

    // One character for each place of the cursor.
    QString real() const { return PasswdInner::text(inner); }

    void showText()
    {
        const QScopedValueRollback<bool> guard(showing, true);
        shown = mask.masked(real(), passwordCharacter());
        if (PasswdInner::text(this) != shown) {
            PasswdInner::show(this, shown);
        }
    }

    // To be called whenever the text that is seen has changed. Whoever sets it, an assistive program for
    // instance, means the real text.
    void takeText()
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

    // The hidden edit takes over the cursor and the selection that the user has made here, and back.
    void passSelection()
    {
        const QString text = real();
        const PasswdInner::Selection own = PasswdInner::selection(this);
        const PasswdInner::Selection wanted{PasswdInner::characterBoundary(text, own.anchor),
                                            PasswdInner::characterBoundary(text, own.position)};
        // Going where it is already would split what is undone at once.
        if (PasswdInner::selection(inner) != wanted) {
            PasswdInner::separateUndo(inner);
            PasswdInner::select(inner, wanted);
        }
    }
    void takeSelection() { PasswdInner::select(this, PasswdInner::selection(inner)); }

    // Masked for everybody but the masking edits; owned by the caller.
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
            passSelection();
            PasswdInner::removeSelected(inner);
            takeSelection();
        }
    }
    // In place of the selection; undone by itself.
    void insertReal(const QString& text)
    {
        PasswdInner::separateUndo(inner);
        passSelection();
        PasswdInner::insert(inner, text);
        PasswdInner::separateUndo(inner);
        takeSelection();
    }

    // Whether the key removes something else than one character. These keys are taken apart: what is to be
    // removed is selected here, as the masked text shows it, and copied masked if the key copies it.
    virtual bool selectsToRemove(QKeyEvent* event)
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
            passSelection();
        } else if (event->matches(QKeySequence::Copy)) {
            copySelection(QClipboard::Clipboard);
        } else if (event->matches(QKeySequence::Paste)) {
            insertReal(PasswdMimeData::realText(QGuiApplication::clipboard()->mimeData()));
        } else if (selectsToRemove(event)) {
            removeSelection();
        } else {
            passSelection();
            inner->keyPressEvent(event);
            takeSelection();
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
        passSelection();
    }
    void mouseReleaseEvent(QMouseEvent* event) override
    {
        Edit::mouseReleaseEvent(event);
        passSelection();
    }
    void mouseDoubleClickEvent(QMouseEvent* event) override
    {
        Edit::mouseDoubleClickEvent(event);
        passSelection();
    }

    // What is being composed is shown here, what is composed goes to the hidden edit.
    void inputMethodEvent(QInputMethodEvent* event) override
    {
        if (!event->commitString().isEmpty() || event->replacementLength() > 0 ||
            !event->preeditString().isEmpty()) {
            QInputMethodEvent nothingComposed;
            Edit::inputMethodEvent(&nothingComposed);
            removeSelection();
            passSelection();
            QInputMethodEvent commit;
            commit.setCommitString(event->commitString(), event->replacementStart(),
                                   event->replacementLength());
            inner->inputMethodEvent(&commit);
            takeSelection();
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
            takeSelection();
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

    QString shown; // what showText() has made of the real text
    bool showing;
};

#endif
