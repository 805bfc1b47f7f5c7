// A progress bar that also names the activity it measures, and lets somebody else draw its tool tip.
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
    // The activity with the percentage in parentheses, or whichever of the two there is.
    QString text() const override;
    // Also forgets the activity.
    void reset();

Q_SIGNALS:
    // The pointer rests on the bar, at this position in the bar's coordinates.
    void toolTip(const QPoint& pos);

protected:
    bool event(QEvent* event) override;

private:
    QString activity;
};

#endif
