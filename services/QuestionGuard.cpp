// SPDX-License-Identifier: GPL-2.0-or-later

#include "services/QuestionGuard.h"

#include <QAbstractButton>
#include <QCoreApplication>
#include <QDialog>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWindow>

namespace {

// Returns the number of a physical key. Modifiers do not change this number. If the window system does not
// report it, returns Qt's code of the key.
quint32 number(const QKeyEvent* event)
{
    return event->nativeScanCode() != 0 ? event->nativeScanCode() : static_cast<quint32>(event->key());
}

} // namespace

QuestionGuard::QuestionGuard(QDialog* dialog)
    : question(dialog), isOpen(true), painted(false), activated(false)
{
    end.setSingleShot(true);
    connect(&end, SIGNAL(timeout()), this, SLOT(open()));
    close();
    // Events reach the window first, and then its widgets.
    QCoreApplication::instance()->installEventFilter(this);
}

void QuestionGuard::close()
{
    if (!isOpen) {
        return;
    }
    isOpen = false;
    question->setProperty(takesInput, false);
    keys.clear();
    mouseButtons = Qt::NoButton;
    focus = question->focusWidget();
    // A screen reader presses a button without any event, but it cannot press a disabled button.
    for (QAbstractButton* button : question->findChildren<QAbstractButton*>()) {
        if (button->isEnabled()) {
            disabled.append(button);
            button->setEnabled(false);
        }
    }
}

void QuestionGuard::open()
{
    isOpen = true;
    for (const QPointer<QAbstractButton>& button : qAsConst(disabled)) {
        if (!button.isNull()) {
            button->setEnabled(true);
        }
    }
    disabled.clear();
    if (!focus.isNull()) {
        focus->setFocus();
    }
    question->setProperty(takesInput, true);
}

void QuestionGuard::beginPause()
{
    close();
    end.start(pause);
}

bool QuestionGuard::belongsToQuestion(const QObject* object) const
{
    if (object->isWindowType()) {
        return object == question->windowHandle();
    }
    return object->isWidgetType() && static_cast<const QWidget*>(object)->window() == question;
}

bool QuestionGuard::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    case QEvent::Paint:
    case QEvent::WindowActivate:
        if (watched == question) {
            bool& happened = event->type() == QEvent::Paint ? painted : activated;
            if (!happened) {
                happened = true;
                close();
                if (painted) {
                    // This call is queued, because painting a long text takes time. The question must still
                    // ignore input that arrives during the painting.
                    QMetaObject::invokeMethod(this, "beginPause", Qt::QueuedConnection);
                }
            }
        }
        return false;
    case QEvent::ShortcutOverride:
        if (belongsToQuestion(watched) && ignoresKey(static_cast<QKeyEvent*>(event))) {
            event->accept(); // Qt then sends a key press instead of a shortcut
            return true;
        }
        return false;
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
        return belongsToQuestion(watched) && ignoresKey(static_cast<QKeyEvent*>(event));
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseButtonRelease:
        return belongsToQuestion(watched) && ignoresMouse(static_cast<QMouseEvent*>(event));
    case QEvent::Shortcut:
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::TabletPress:
    case QEvent::TabletRelease:
        return !isOpen && belongsToQuestion(watched);
    default:
        return false;
    }
}

bool QuestionGuard::ignoresKey(const QKeyEvent* event)
{
    const quint32 key = number(event);
    const bool released = event->type() == QEvent::KeyRelease;
    if (released) {
        releases.insert(key, event->timestamp());
    }
    if (!isOpen) {
        return true;
    }
    if (!released && !repeats(event)) {
        keys.insert(key);
        return false;
    }
    // A held key repeats, and its release belongs to its press.
    return !keys.contains(key);
}

bool QuestionGuard::repeats(const QKeyEvent* event) const
{
    // The X server sends a release and a press of the same time for each repetition. Qt recognises them only
    // if both have arrived when it reads the release.
    return event->isAutoRepeat() ||
           (event->timestamp() != 0 && releases.value(number(event)) == event->timestamp());
}

bool QuestionGuard::ignoresMouse(const QMouseEvent* event)
{
    if (!isOpen) {
        return true;
    }
    if (event->type() != QEvent::MouseButtonRelease) {
        mouseButtons |= event->button();
        return false;
    }
    return !mouseButtons.testFlag(event->button());
}
