// SPDX-License-Identifier: GPL-2.0-or-later

// Modal dialogs for texts that can be very long: an icon and a text that scrolls inside the dialog.
//
// They live on the graphical thread. The code that runs a dialog owns it, and so does its Qt parent. The text
// is plain text, never markup. The user can select and copy it.

#ifndef SERVICES_SCROLLABLEDIALOGS_H
#define SERVICES_SCROLLABLEDIALOGS_H

#include <QDialog>

// A question. The first button accepts. The second button rejects, and so does closing the dialog. The Enter
// key accepts, unless the rejection is the default.
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
