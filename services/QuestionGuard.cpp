// SPDX-License-Identifier: GPL-2.0-or-later

#include "services/QuestionGuard.h"

#include <QAbstractButton>
#include <QCoreApplication>
#include <QDialog>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWindow>

namespace {

// Returns a number that identifies the physical key, regardless of modifiers. If the window system reports no
// such number, returns Qt's code of the key.
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
    // Filter the events of the whole application, because the window system sends events to the window before
    // Qt passes them to its widgets.
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
    // Disable all buttons: a screen reader can press an enabled button without an event that QuestionGuard
    // can filter.
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
                    // Queue the call of beginPause(), because painting a long text takes time. Input that
                    // arrives while the text is painted must still be ignored.
                    QMetaObject::invokeMethod(this, "beginPause", Qt::QueuedConnection);
                }
            }
        }
        return false;
    case QEvent::ShortcutOverride:
        if (belongsToQuestion(watched) && ignoresKey(static_cast<QKeyEvent*>(event))) {
            event->accept(); // makes Qt send a key press instead of activating a shortcut
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
    // If a key was pressed while input was ignored, ignore also its repetitions and its release.
    return !keys.contains(key);
}

bool QuestionGuard::repeats(const QKeyEvent* event) const
{
    // While a key is held down, the X server sends a release and a press with equal times for each
    // repetition. Qt sets isAutoRepeat() only if both have arrived, so this function also compares the times.
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
