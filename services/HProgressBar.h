// SPDX-License-Identifier: GPL-2.0-or-later

// A progress bar that also names the activity it measures. Another object shows its tool tip.
//
// Graphical thread; owned by its Qt parent.

#ifndef SERVICES_HPROGRESSBAR_H
#define SERVICES_HPROGRESSBAR_H

#include <QProgressBar>

class HProgressBar : public QProgressBar
{
    Q_OBJECT

public:
    explicit HProgressBar(QWidget* parent = nullptr);

    void setActivity(QString text);
    // The activity with the percentage in parentheses, or only one of the two if the other is missing.
    QString text() const override;
    // Also removes the activity.
    void reset();

Q_SIGNALS:
    // The pointer rests on the bar at this position, in the bar's coordinates.
    void toolTip(const QPoint& pos);

protected:
    bool event(QEvent* event) override;

private:
    QString activity;
};

#endif
