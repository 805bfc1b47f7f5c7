// SPDX-License-Identifier: GPL-2.0-or-later

// A message next to the menus. A message box would interrupt the user. Most messages disappear after a while.
// A message about the log stays until the user opens the log or starts an operation.
//
// The row of the menus has space for only one text. A new text replaces the visible text immediately. When
// the new text disappears, the replaced text is visible again, because the user may not have read it yet. If
// the window is too narrow for the text, the tool tip shows the whole text.
//
// The object lives on the graphical thread; its Qt parent owns it.

#ifndef APP_NOTICE_H
#define APP_NOTICE_H

#include <QList>
#include <QString>
#include <QTimer>

#include "widgets/ElidedLabel.h"

class Notice : public ElidedLabel
{
    Q_OBJECT

public:
    // Each text is visible for this number of milliseconds.
    explicit Notice(QWidget* parent, int duration = 15000);

    void showText(const QString& text);
    // Shows a text that refers to the log.
    void showTextAboutLog(const QString& text);
    // Removes this text, even if a newer text has replaced it.
    void withdraw(const QString& text);
    // Call this function when the user has opened the log. All texts that refer to the log disappear.
    void logOpened();
    // Call this function when the user has started an operation. The visible text disappears, because it
    // describes the state before the operation. Then the previous text becomes visible again.
    void beginOperation();

private Q_SLOTS:
    void showNext();

private:
    struct Message
    {
        QString text;
        bool isAboutLog = false;
    };

    void showMessage(const Message& message);
    void present(const Message& message);
    // Removes this text from the replaced texts.
    void forget(const QString& text);

    QTimer end;
    Message current;
    QList<Message> waiting; // the replaced texts; the last one is visible next
};

#endif
