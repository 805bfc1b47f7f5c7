// SPDX-License-Identifier: GPL-2.0-or-later

// Lets a worker thread ask the user a question and wait for the answer.
//
// A YumIODialogs lives on the thread that asks the question, and waits for the answer in an event loop of
// that thread. YumIODialogsMinion lives on the graphical thread and runs the dialogs. YumIODialogsUser
// creates a YumIODialogs on the worker for one operation.

#ifndef SERVICES_YUMIODIALOGS_H
#define SERVICES_YUMIODIALOGS_H

#include <QEventLoop>
#include <QMessageBox>
#include <QObject>
#include <QString>

#include "services/Unattended.h"

// Runs the dialogs on the graphical thread. A YumIODialogs creates its YumIODialogsMinion, and the graphical
// thread deletes the minion. A QuestionGuard protects each dialog from input that is meant for something
// else.
class YumIODialogsMinion : public QObject
{
    Q_OBJECT

public:
    // The argument, which the caller owns, becomes the Qt parent of every dialog.
    explicit YumIODialogsMinion(QWidget* parent);

public Q_SLOTS:
    void confirm(const QString& caption, const QString& text, const QString& acceptText,
                 const QString& rejectText, bool rejectIsDefault = false, const QString& notice = QString(),
                 const QString& summary = QString());
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

// Only the thread that created a YumIODialogs may use it, with one request at a time. If this is the
// graphical thread, the request itself runs the dialog. While the program is unattended, no dialog is shown,
// and each request immediately returns the safe answer: the rejection or the escape button.
class YumIODialogs : public QObject, private Unattended::Waiter
{
    Q_OBJECT

public:
    // The argument, which the caller owns, becomes the Qt parent of every dialog.
    explicit YumIODialogs(QWidget* parent);
    ~YumIODialogs() override;

    // Returns 1 if the user accepts, and 0 if the user rejects or closes the dialog. The Enter key accepts,
    // unless the rejection is the default. The notice and the summary are visible without scrolling; see
    // ScrollableConfirmDialog.
    int confirm(const QString& caption, const QString& text, const QString& acceptText,
                const QString& rejectText, bool rejectIsDefault = false, const QString& notice = QString(),
                const QString& summary = QString());
    // warning() and critical() return the number of the pressed button. A button without a text is omitted,
    // except button 0, which then has the text "OK". If `escapeButtonNumber` is -1, no button is the escape
    // button, unless the box has only one button. If the program ends before the user answers, the result is
    // the number of the escape button.
    int warning(const QString& caption, const QString& text, const QString& button0Text,
                const QString& button1Text, const QString& button2Text, int defaultButtonNumber,
                int escapeButtonNumber);
    int critical(const QString& caption, const QString& text, const QString& button0Text,
                 const QString& button1Text, const QString& button2Text, int defaultButtonNumber,
                 int escapeButtonNumber);
    // Shows a long text in a dialog with one button. Always returns 0.
    int scrollable(const QString& caption, const QString& text);

public Q_SLOTS:
    void setResult(int answer);

Q_SIGNALS:
    void confirmSig(const QString& caption, const QString& text, const QString& acceptText,
                    const QString& rejectText, bool rejectIsDefault = false,
                    const QString& notice = QString(), const QString& summary = QString());
    void warningSig(const QString& caption, const QString& text, const QString& button0Text,
                    const QString& button1Text, const QString& button2Text, int defaultButtonNumber,
                    int escapeButtonNumber);
    void criticalSig(const QString& caption, const QString& text, const QString& button0Text,
                     const QString& button1Text, const QString& button2Text, int defaultButtonNumber,
                     int escapeButtonNumber);
    void scrollableSig(const QString& caption, const QString& text);

private:
    // Sends the request and waits for the answer. If no user can answer, returns `safe`.
    template <typename Request> int ask(int safe, const Request& request);
    void waitForResult();
    void giveUpWaiting() override;

    YumIODialogsMinion* minion;
    QEventLoop loop;
    bool haveResult;
    int result;
    int safeResult; // the safe answer to the current request
};

// While a YumIODialogsUser exists, `dialogsPointer` points to a new YumIODialogs. After that,
// `dialogsPointer` has its former value again. Several of these objects can be nested.
class YumIODialogsUser
{
public:
    YumIODialogsUser(YumIODialogs*& dialogsPointer, QWidget* parent);
    ~YumIODialogsUser();
    YumIODialogsUser(const YumIODialogsUser&) = delete;
    YumIODialogsUser& operator=(const YumIODialogsUser&) = delete;

private:
    YumIODialogs*& slot;
    YumIODialogs* former;
};

#endif
