// SPDX-License-Identifier: GPL-2.0-or-later

// Modal dialogs for texts that can be very long: an icon and a text that scrolls inside the dialog.
//
// They live on the graphical thread. The code that runs a dialog owns it, and so does its Qt parent. The
// texts are plain text, never markup. The user can select and copy them. The keys that scroll work wherever
// the focus is. Ctrl+F finds a text.

#ifndef SERVICES_SCROLLABLEDIALOGS_H
#define SERVICES_SCROLLABLEDIALOGS_H

#include <QDialog>
#include <QList>
#include <QStyle>

class HScrollArea;
class QBoxLayout;
class QPushButton;

class ScrollableDialog : public QDialog
{
    Q_OBJECT

protected:
    ScrollableDialog(QStyle::StandardPixmap icon, const QString& text, const QStringList& buttonTexts,
                     QWidget* parent);

    void keyPressEvent(QKeyEvent* event) override;
    // Adds a text above or below the text that scrolls.
    void addAbove(QWidget* widget);
    void addBelow(QWidget* widget);
    QPushButton* button(int number) const { return buttons.at(number); }
    // Gives the dialog the size of its contents, within the screen.
    void fit();

private:
    HScrollArea* scrollArea;
    QBoxLayout* column; // of the scroll area
    QList<QPushButton*> buttons;
};

// A question. The first button accepts. The second button rejects, and so does closing the dialog. The Enter
// key accepts, unless the rejection is the default. The rejection has the focus then.
class ScrollableConfirmDialog : public ScrollableDialog
{
    Q_OBJECT

public:
    // The notice, above the text, stands out. The summary is below the text. Both do not scroll; an empty one
    // is not shown.
    ScrollableConfirmDialog(QString text, QString acceptText, QString rejectText, QWidget* parent,
                            bool rejectIsDefault = false, const QString& notice = QString(),
                            const QString& summary = QString());
};

// A failure message, with one button that closes the dialog.
class ScrollableErrorDialog : public ScrollableDialog
{
    Q_OBJECT

public:
    ScrollableErrorDialog(QString text, QWidget* parent);
};

#endif
