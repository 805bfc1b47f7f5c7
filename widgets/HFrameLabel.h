// A status label: a framed, coloured text that cannot be told from the background while it has nothing to
// say.
//
// Graphical thread; owned by its Qt parent.

#ifndef WIDGETS_HFRAMELABEL_H
#define WIDGETS_HFRAMELABEL_H

#include <QFrame>
#include <QPalette>

class QHBoxLayout;
class QLabel;

class HFrameLabel : public QFrame
{
    Q_OBJECT

public:
    explicit HFrameLabel(QWidget* parent = nullptr, Qt::WindowFlags flags = Qt::WindowFlags());
    explicit HFrameLabel(const QString& text, QWidget* parent = nullptr,
                         Qt::WindowFlags flags = Qt::WindowFlags());

    QString text() const;

    // Plain text, whatever it looks like. An empty one makes the label vanish into its surroundings; it keeps
    // its place in the layout.
    virtual void setText(const QString& text);

    // The palette for the times when there is a text.
    virtual void setPalette(const QPalette& palette);

private:
    QHBoxLayout* box;
    QLabel* label;
    QPalette normal;
    QPalette shown;
};

#endif
