// SPDX-License-Identifier: GPL-2.0-or-later

// A status label: a coloured text in a frame. A label without text looks like the background.
//
// The object lives on the graphical thread; its Qt parent owns it.

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

    // Sets the text, which is plain text, never markup. If the text is empty, the label is invisible, but
    // keeps its place in the layout.
    virtual void setText(const QString& text);

    // Sets the palette that is used while the label has a text.
    virtual void setPalette(const QPalette& palette);

private:
    QHBoxLayout* box;
    QLabel* label;
    QPalette normal;
    QPalette shown;
};

#endif
