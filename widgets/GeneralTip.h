// A pop-up that looks and goes away like a tool tip but holds whatever widgets its caller puts on it.
//
// Graphical thread. At most one exists at a time; nobody owns it: it deletes itself soon after it was hidden.

#ifndef WIDGETS_GENERALTIP_H
#define WIDGETS_GENERALTIP_H

#include <QBasicTimer>
#include <QFrame>

class GeneralTip : public QFrame
{
    Q_OBJECT

public:
    // Shows a new tip near the global position pos, in place of the one that exists, if any. fill(tip, data)
    // puts a layout with the contents on the tip; data is handed to it as it is. w is the widget that the tip
    // is about: it tells the screen where the desktop is not one virtual area. A sticky tip stays until the
    // user does something; any other also goes away after ten seconds.
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

    static GeneralTip* current; // null: no tip exists

    QBasicTimer hideTimer;
    QBasicTimer deleteTimer;
};

#endif
