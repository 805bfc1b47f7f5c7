// Modal dialogs for texts that can be very long: a text beside an icon, which scrolls inside the dialog.
//
// Graphical thread; owned by whoever runs them, and by their Qt parent. The text is plain text, never markup,
// and can be selected and copied.

#ifndef SERVICES_SCROLLABLEDIALOGS_H
#define SERVICES_SCROLLABLEDIALOGS_H

#include <QDialog>

// A question: accepted by the first button, rejected by the second or by closing the dialog.
class ScrollableConfirmDialog : public QDialog
{
    Q_OBJECT

public:
    ScrollableConfirmDialog(QString text, QString acceptText, QString rejectText, QWidget* parent);
};

// A failure, with one button that closes the dialog.
class ScrollableErrorDialog : public QDialog
{
    Q_OBJECT

public:
    ScrollableErrorDialog(QString text, QWidget* parent);
};

#endif
