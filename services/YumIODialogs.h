// SPDX-License-Identifier: GPL-2.0-or-later

// Lets a worker thread ask the user a question and wait for the answer.
//
// YumIODialogs lives on the thread that asks, and waits for the answer in an event loop of that thread.
// YumIODialogsMinion lives on the graphical thread and runs the dialogs. YumIODialogsUser installs a
// YumIODialogs of the worker for the length of one operation.

#ifndef SERVICES_YUMIODIALOGS_H
#define SERVICES_YUMIODIALOGS_H

#include <QEventLoop>
#include <QMessageBox>
#include <QObject>
#include <QString>

#include "services/Unattended.h"

// Graphical thread; its YumIODialogs makes it and has it deleted there later.
class YumIODialogsMinion : public QObject
{
    Q_OBJECT

public:
    // The parent of every dialog is not owned.
    explicit YumIODialogsMinion(QWidget* parent);

public Q_SLOTS:
    void confirm(const QString& caption, const QString& text, const QString& acceptText,
                 const QString& rejectText, bool rejectIsDefault = false);
    void warning(const QString& caption, const QString& text, const QString& button0Text,
                 const QString& button1Text, const QString& button2Text, int defaultButtonNumber,
                 int escapeButtonNumber);
    void critical(const QString& caption, const QString& text, const QString& button0Text,
                  const QString& button1Text, const QString& button2Text, int defaultButtonNumber,
                  int escapeButtonNumber);
    void scrollable(const QString& caption, const QString& text);

Q_SIGNALS:
    void setResult(int result);

private:
    // Runs a message box and returns the number of the pressed button.
    int message(QMessageBox::Icon icon, const QString& caption, const QString& text,
                const QStringList& buttonTexts, int defaultButtonNumber, int escapeButtonNumber);

    QWidget* parentWidget;
};

// Only the thread that made it uses it; one request at a time. On the graphical thread the dialog runs inside
// the request. While the program is unattended, no dialog is shown. Each request then returns the safe answer
// at once: rejected, or the escape button.
class YumIODialogs : public QObject, private Unattended::Waiter
{
    Q_OBJECT

public:
    // The parent of every dialog is not owned.
    explicit YumIODialogs(QWidget* parent);
    ~YumIODialogs() override;

    // Returns 1 if the user accepts, 0 if the user rejects or closes the dialog. The Enter key accepts,
    // unless the rejection is the default.
    int confirm(const QString& caption, const QString& text, const QString& acceptText,
                const QString& rejectText, bool rejectIsDefault = false);
    // Returns the number of the pressed button. A button without a text is omitted, except that button 0 is
    // then "OK". With -1 as the number of the escape button there is none, unless there is only one button.
    // The number of the escape button is also the answer if the program ends before the user gives one.
    int warning(const QString& caption, const QString& text, const QString& button0Text,
                const QString& button1Text, const QString& button2Text, int defaultButtonNumber,
                int escapeButtonNumber);
    int critical(const QString& caption, const QString& text, const QString& button0Text,
                 const QString& button1Text, const QString& button2Text, int defaultButtonNumber,
                 int escapeButtonNumber);
    // Always returns 0.
    int scrollable(const QString& caption, const QString& text);

public Q_SLOTS:
    void setResult(int answer);

Q_SIGNALS:
    void confirmSig(const QString& caption, const QString& text, const QString& acceptText,
                    const QString& rejectText, bool rejectIsDefault = false);
    void warningSig(const QString& caption, const QString& text, const QString& button0Text,
                    const QString& button1Text, const QString& button2Text, int defaultButtonNumber,
                    int escapeButtonNumber);
    void criticalSig(const QString& caption, const QString& text, const QString& button0Text,
                     const QString& button1Text, const QString& button2Text, int defaultButtonNumber,
                     int escapeButtonNumber);
    void scrollableSig(const QString& caption, const QString& text);

private:
    // Sends the request and waits for its answer. Returns "safe" if nobody can answer.
    template <typename Request> int ask(int safe, const Request& request);
    void waitForResult();
    void giveUpWaiting() override;

    YumIODialogsMinion* minion;
    QEventLoop loop;
    bool haveResult;
    int result;
    int safeResult; // the safe answer of the waiting request
};

// Sets the slot to a YumIODialogs for the length of a scope, then restores its former value. Scopes nest.
class YumIODialogsUser
{
public:
    YumIODialogsUser(YumIODialogs*& dialogsSlot, QWidget* parent);
    ~YumIODialogsUser();
    YumIODialogsUser(const YumIODialogsUser&) = delete;
    YumIODialogsUser& operator=(const YumIODialogsUser&) = delete;

private:
    YumIODialogs*& slot;
    YumIODialogs* former;
};

#endif
