// SPDX-License-Identifier: GPL-2.0-or-later

// Modal dialogs for texts that can be very long: an icon and a text that scrolls inside the dialog.
//
// Graphical thread; owned by the code that runs them, and by their Qt parent. The text is plain text, never
// markup, and can be selected and copied.

#ifndef SERVICES_SCROLLABLEDIALOGS_H
#define SERVICES_SCROLLABLEDIALOGS_H

#include <QDialog>

// A question. The first button accepts it; the second button or closing the dialog rejects it. The Enter key
// accepts it, unless the rejection is the default.
class ScrollableConfirmDialog : public QDialog
{
    Q_OBJECT

public:
    ScrollableConfirmDialog(QString text, QString acceptText, QString rejectText, QWidget* parent,
                            bool rejectIsDefault = false);
};

// A failure message, with one button that closes the dialog.
class ScrollableErrorDialog : public QDialog
{
    Q_OBJECT

public:
    ScrollableErrorDialog(QString text, QWidget* parent);
};

#endif
