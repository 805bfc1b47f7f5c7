// SPDX-License-Identifier: GPL-2.0-or-later

// A pop-up that looks and disappears like a tool tip, but contains widgets of the caller.
//
// The object lives on the graphical thread. At most one tip exists at a time. A tip has no owner: it deletes
// itself soon after it is hidden.

#ifndef WIDGETS_GENERALTIP_H
#define WIDGETS_GENERALTIP_H

#include <QBasicTimer>
#include <QFrame>

class GeneralTip : public QFrame
{
    Q_OBJECT

public:
    // Shows a new tip near the global position `pos`, and removes an existing tip. fill(tip, data) adds a
    // layout with the contents to the tip. `w` is the widget that the tip describes. If the desktop is not
    // one virtual area, `w` determines the screen. Each tip disappears when, for example, the user presses a
    // key or a mouse button. A tip that is not sticky also disappears after ten seconds.
    static void showTip(const QPoint& pos, void (*fill)(GeneralTip*, void*), void* data, QWidget* w,
                        bool sticky);

    ~GeneralTip() override;

    // Hides the tip, which is deleted a quarter of a second later.
    void hideTip();

    bool eventFilter(QObject* watched, QEvent* event) override;

protected:
    void enterEvent(QEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

private:
    GeneralTip(QWidget* parent, bool sticky);

    void place(const QPoint& pos, const QRect& screen);

    static GeneralTip* current; // null if no tip exists

    QBasicTimer hideTimer;
    QBasicTimer deleteTimer;
};

#endif
