// A group box whose title is shown to its end: some styles leave a pixel or two less room than the text
// takes, the more letters the more.
//
// Graphical thread; owned by its Qt parent.

#ifndef WIDGETS_HGROUPBOX_H
#define WIDGETS_HGROUPBOX_H

#include <QGroupBox>

class HGroupBox : public QGroupBox
{
    Q_OBJECT

public:
    explicit HGroupBox(const QString& title, QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
};

#endif
