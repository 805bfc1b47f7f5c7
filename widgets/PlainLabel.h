// A label that shows its text as it is: what comes from packages, repositories, files and servers is never
// markup. Every label of the program is one.
//
// Graphical thread; owned by its Qt parent.

#ifndef WIDGETS_PLAINLABEL_H
#define WIDGETS_PLAINLABEL_H

#include <QLabel>

class PlainLabel : public QLabel
{
    Q_OBJECT

public:
    explicit PlainLabel(QWidget* parent = nullptr);
    explicit PlainLabel(const QString& text, QWidget* parent = nullptr);

private:
    using QLabel::setTextFormat; // it stays Qt::PlainText
};

#endif
