// Lets a worker thread ask the user something and wait for the answer.
//
// YumIODialogs lives on the thread that asks; its requests wait in an event loop of that thread.
// YumIODialogsMinion lives on the graphical thread and runs the dialogs. YumIODialogsUser installs a
// YumIODialogs of the worker for the length of one operation.

#ifndef SERVICES_YUMIODIALOGS_H
#define SERVICES_YUMIODIALOGS_H

#include <QEventLoop>
#include <QMessageBox>
#include <QObject>
#include <QString>

#include "services/Unattended.h"

// Graphical thread; made by its YumIODialogs and deleted there later.
class YumIODialogsMinion : public QObject
{
    Q_OBJECT

public:
    // The parent of every dialog; not owned.
    explicit YumIODialogsMinion(QWidget* parent);

public Q_SLOTS:
    void confirm(const QString& caption, const QString& text, const QString& acceptText,
                 const QString& rejectText);
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
    // Runs a message box and returns the number of the button pressed.
    int message(QMessageBox::Icon icon, const QString& caption, const QString& text,
                const QStringList& buttonTexts, int defaultButtonNumber, int escapeButtonNumber);

    QWidget* parentWidget;
};

// Used only from the thread that made it; one request at a time. Made in the graphical thread it works too:
// the dialog then runs inside the request. While the program is unattended, nothing is shown, and each
// request returns the safe answer at once: rejected, or the escape button.
class YumIODialogs : public QObject, private Unattended::Waiter
{
    Q_OBJECT

public:
    // The parent of every dialog; not owned.
    explicit YumIODialogs(QWidget* parent);
    ~YumIODialogs() override;

    // 1 when the user accepted, 0 when he rejected or closed the dialog.
    int confirm(const QString& caption, const QString& text, const QString& acceptText,
                const QString& rejectText);
    // The number of the button pressed. A button without a text is left out, except that button 0 is then
    // called "OK". An escape button number of -1: none, unless there is only one button. It is the answer too
    // when the program ends before the user has given one.
    int warning(const QString& caption, const QString& text, const QString& button0Text,
                const QString& button1Text, const QString& button2Text, int defaultButtonNumber,
                int escapeButtonNumber);
    int critical(const QString& caption, const QString& text, const QString& button0Text,
                 const QString& button1Text, const QString& button2Text, int defaultButtonNumber,
                 int escapeButtonNumber);
    // Always 0.
    int scrollable(const QString& caption, const QString& text);

public Q_SLOTS:
    void setResult(int answer);

Q_SIGNALS:
    void confirmSig(const QString& caption, const QString& text, const QString& acceptText,
                    const QString& rejectText);
    void warningSig(const QString& caption, const QString& text, const QString& button0Text,
                    const QString& button1Text, const QString& button2Text, int defaultButtonNumber,
                    int escapeButtonNumber);
    void criticalSig(const QString& caption, const QString& text, const QString& button0Text,
                     const QString& button1Text, const QString& button2Text, int defaultButtonNumber,
                     int escapeButtonNumber);
    void scrollableSig(const QString& caption, const QString& text);

private:
    // Sends the request and waits for its answer. Returns "safe" when nobody can answer.
    template <typename Request> int ask(int safe, const Request& request);
    void waitForResult();
    void giveUpWaiting() override;

    YumIODialogsMinion* minion;
    QEventLoop loop;
    bool haveResult;
    int result;
    int safeResult; // of the request that waits
};

// Gives the slot a YumIODialogs for the length of a scope, then puts its former value back. Scopes nest.
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
