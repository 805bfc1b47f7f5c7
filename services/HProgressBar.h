// SPDX-License-Identifier: GPL-2.0-or-later

// A progress bar that also names the current activity. The bar shows no tool tip itself; it emits toolTip()
// instead.
//
// The object lives on the graphical thread; its Qt parent owns it.

#ifndef SERVICES_HPROGRESSBAR_H
#define SERVICES_HPROGRESSBAR_H

#include <QElapsedTimer>
#include <QProgressBar>

class HProgressBar : public QProgressBar
{
    Q_OBJECT

public:
    explicit HProgressBar(QWidget* parent = nullptr);

    void setActivity(QString text);
    // Returns the activity, followed by the percentage in parentheses. Leaves out the activity or the
    // percentage if it does not exist.
    QString text() const override;
    // Resets the bar and removes the activity.
    void reset();

Q_SIGNALS:
    // Emitted when the bar must show a tool tip. The position is in the bar's coordinates.
    void toolTip(const QPoint& pos);

protected:
    bool event(QEvent* event) override;

private:
    QString activity;
    QElapsedTimer
        sinceAnimation; // the time since the last step of the animation; invalid before the first step
};

#endif
