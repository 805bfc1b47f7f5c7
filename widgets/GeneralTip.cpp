// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/GeneralTip.h"

#include <QApplication>
#include <QDesktopWidget>
#include <QEvent>
#include <QKeyEvent>
#include <QLayout>
#include <QScreen>
#include <QStyle>
#include <QTimerEvent>
#include <QWindow>

namespace {

const int hideDelay = 10000; // milliseconds
const int deleteDelay = 250; // milliseconds

const QPalette& tipPalette()
{
    static const QPalette palette = [] {
        const QColor background(255, 255, 220);
        QPalette made;
        made.setColor(QPalette::WindowText, Qt::black);
        made.setColor(QPalette::Window, background);
        made.setColor(QPalette::Light, QColor(96, 96, 96));
        made.setColor(QPalette::Dark, Qt::black);
        made.setColor(QPalette::Mid, Qt::black);
        made.setColor(QPalette::Text, Qt::black);
        made.setColor(QPalette::Base, background);
        return made;
    }();
    return palette;
}

// Returns the index in QGuiApplication::screens() of the screen on which the tip appears.
int screenFor(const QPoint& pos, const QWidget* w)
{
    const QList<QScreen*> screens = QGuiApplication::screens();
    const bool isVirtual = QGuiApplication::primaryScreen()->virtualSiblings().size() > 1;
    if (isVirtual) {
        for (int i = 0; i < screens.size(); ++i) {
            if (screens.at(i)->geometry().contains(pos)) {
                return i;
            }
        }
    }
    const QWindow* window = w != nullptr ? w->window()->windowHandle() : nullptr;
    QScreen* screen = window != nullptr ? window->screen() : QGuiApplication::primaryScreen();
    return qMax(0, screens.indexOf(screen));
}

bool isModifier(int key)
{
    return key == Qt::Key_Shift || key == Qt::Key_Control || key == Qt::Key_Meta || key == Qt::Key_Alt;
}

bool isModifierHeld(const QKeyEvent* event)
{
    // Ignore the keypad modifier: Qt sets it for each key of the number pad, although the user holds no
    // modifier key.
    return (event->modifiers() & ~Qt::KeypadModifier) != Qt::NoModifier;
}

} // namespace

GeneralTip* GeneralTip::current = nullptr;

GeneralTip::GeneralTip(QWidget* parent, bool sticky) : QFrame(parent, Qt::ToolTip)
{
    delete current;
    current = this;
    ensurePolished();
    setFrameStyle(QFrame::Box);
    resize(sizeHint() + QSize(1, 0));
    qApp->installEventFilter(this);
    if (!sticky) {
        hideTimer.start(hideDelay, this);
    }
    setWindowOpacity(style()->styleHint(QStyle::SH_ToolTipLabel_Opacity, nullptr, this) / 255.0);
    setPalette(tipPalette());
}

GeneralTip::~GeneralTip()
{
    current = nullptr;
}

void GeneralTip::showTip(const QPoint& pos, void (*fill)(GeneralTip*, void*), void* data, QWidget* w,
                         bool sticky)
{
    const int number = screenFor(pos, w);
    // The screen's desktop widget becomes the parent only because it determines the screen of the tip. A
    // widget that has no window yet offers no other way to choose its screen.
    QT_WARNING_PUSH
    QT_WARNING_DISABLE_DEPRECATED
    QWidget* parent = QApplication::desktop()->screen(number);
    QT_WARNING_POP
    GeneralTip* tip = new GeneralTip(parent, sticky);
    fill(tip, data);
    if (tip->layout() != nullptr) {
        tip->resize(tip->sizeHint() + QSize(1, 0));
    }
    tip->place(pos, QGuiApplication::screens().at(number)->geometry());
    tip->show();
}

void GeneralTip::place(const QPoint& pos, const QRect& screen)
{
    // Do not use QRect::right() and bottom(), whose results are one pixel too small.
    const int screenRight = screen.x() + screen.width();
    const int screenBottom = screen.y() + screen.height();
    QPoint corner = pos + QPoint(2, 16);
    if (corner.x() + width() > screenRight) {
        corner.rx() -= width() + 4;
    }
    if (corner.y() + height() > screenBottom) {
        corner.ry() -= height() + 24;
    }
    if (corner.y() < screen.y()) {
        corner.setY(screen.y());
    }
    if (corner.x() + width() > screenRight) {
        corner.setX(screenRight - width());
    }
    if (corner.x() < screen.x()) {
        corner.setX(screen.x());
    }
    if (corner.y() + height() > screenBottom) {
        corner.setY(screenBottom - height());
    }
    move(corner);
}

void GeneralTip::hideTip()
{
    hide();
    deleteTimer.start(deleteDelay, this);
}

void GeneralTip::enterEvent(QEvent*)
{
    hideTip();
}

void GeneralTip::timerEvent(QTimerEvent* event)
{
    if (event->timerId() == hideTimer.timerId()) {
        hideTimer.stop();
        hideTip();
    } else if (event->timerId() == deleteTimer.timerId()) {
        deleteTimer.stop();
        deleteLater();
    } else {
        QFrame::timerEvent(event);
    }
}

bool GeneralTip::eventFilter(QObject*, QEvent* event)
{
    switch (event->type()) {
    case QEvent::KeyPress:
    case QEvent::KeyRelease: {
        const QKeyEvent* keyEvent = static_cast<const QKeyEvent*>(event);
        if (!isModifier(keyEvent->key()) && !isModifierHeld(keyEvent)) {
            hideTip();
        }
        break;
    }
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::FocusIn:
    case QEvent::FocusOut:
    case QEvent::Leave:
    case QEvent::WindowActivate:
    case QEvent::WindowDeactivate:
    case QEvent::Wheel:
        hideTip();
        break;
    default:
        break;
    }
    return false;
}
