// SPDX-License-Identifier: GPL-2.0-or-later

// Modal dialogs for texts that can be very long. Each dialog shows an icon and a text that scrolls inside the
// dialog.
//
// The dialogs live on the graphical thread. The code that runs a dialog deletes the dialog. If that code does
// not delete the dialog, the Qt parent does. The texts are plain text, never markup. The user can select and
// copy them. The scroll keys work wherever the focus is. Ctrl+F finds a text.

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
    // addAbove() adds a widget above the scrolling text, and addBelow() below it.
    void addAbove(QWidget* widget);
    void addBelow(QWidget* widget);
    QPushButton* button(int number) const { return buttons.at(number); }
    // Makes the dialog as large as its contents, but not larger than the screen.
    void fit();

private:
    HScrollArea* scrollArea;
    QBoxLayout* column; // the layout of the scroll area
    QList<QPushButton*> buttons;
};

// A question. The first button accepts. The second button rejects; closing the dialog does the same. The
// Enter key accepts, unless `rejectIsDefault` is true. In that case, the second button has the focus.
class ScrollableConfirmDialog : public ScrollableDialog
{
    Q_OBJECT

public:
    // The highlighted notice is above the text, and the summary is below it. Neither of them scrolls. An
    // empty notice or summary is not shown.
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
