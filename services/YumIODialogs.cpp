// SPDX-License-Identifier: GPL-2.0-or-later

#include "services/YumIODialogs.h"

#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QMetaObject>
#include <QPushButton>

#include "services/QuestionGuard.h"
#include "services/ScrollableDialogs.h"
#include "widgets/HMessageBox.h"
#include "widgets/Literal.h"

YumIODialogsMinion::YumIODialogsMinion(QWidget* parent) : parentWidget(parent) {}

void YumIODialogsMinion::confirm(const QString& caption, const QString& text, const QString& acceptText,
                                 const QString& rejectText, bool rejectIsDefault, const QString& notice,
                                 const QString& summary)
{
    ScrollableConfirmDialog dialog(text, acceptText, rejectText, parentWidget, rejectIsDefault, notice,
                                   summary);
    dialog.setWindowTitle(Literal::title(caption));
    const QuestionGuard guard(&dialog);
    const int code = dialog.exec();
    Q_EMIT setResult(code);
}

void YumIODialogsMinion::warning(const QString& caption, const QString& text, const QString& button0Text,
                                 const QString& button1Text, const QString& button2Text,
                                 int defaultButtonNumber, int escapeButtonNumber)
{
    Q_EMIT setResult(message(QMessageBox::Warning, caption, text, {button0Text, button1Text, button2Text},
                             defaultButtonNumber, escapeButtonNumber));
}

void YumIODialogsMinion::critical(const QString& caption, const QString& text, const QString& button0Text,
                                  const QString& button1Text, const QString& button2Text,
                                  int defaultButtonNumber, int escapeButtonNumber)
{
    Q_EMIT setResult(message(QMessageBox::Critical, caption, text, {button0Text, button1Text, button2Text},
                             defaultButtonNumber, escapeButtonNumber));
}

void YumIODialogsMinion::scrollable(const QString& caption, const QString& text)
{
    ScrollableErrorDialog dialog(text, parentWidget);
    dialog.setWindowTitle(Literal::title(caption));
    const QuestionGuard guard(&dialog);
    dialog.exec();
    Q_EMIT setResult(0);
}

// Does the same as QMessageBox::warning() and critical() with three buttons, but never interprets markup,
// because the text comes from packages and failures.
int YumIODialogsMinion::message(QMessageBox::Icon icon, const QString& caption, const QString& text,
                                const QStringList& buttonTexts, int defaultButtonNumber,
                                int escapeButtonNumber)
{
    HMessageBox box(icon, caption, text, QMessageBox::NoButton, parentWidget);
    QList<QPushButton*> buttons;
    for (const QString& buttonText : buttonTexts) {
        if (!buttonText.isEmpty()) {
            buttons.append(box.addButton(buttonText, QMessageBox::ActionRole));
        } else if (buttons.isEmpty()) {
            buttons.append(box.addButton(QDialogButtonBox::tr("OK"), QMessageBox::ActionRole));
        }
    }
    box.setDefaultButton(buttons.value(defaultButtonNumber));
    box.setEscapeButton(buttons.value(escapeButtonNumber));
    const QuestionGuard guard(&box);
    const int number = box.exec();
    // If the program has ended the box, no button was clicked. Return the safe answer, because the 0 that
    // exec() returns would mean button 0.
    return box.clickedButton() != nullptr ? number : escapeButtonNumber;
}

YumIODialogs::YumIODialogs(QWidget* parent)
    : minion(new YumIODialogsMinion(parent)), haveResult(false), result(0), safeResult(0)
{
    minion->moveToThread(QCoreApplication::instance()->thread());

    connect(minion, SIGNAL(setResult(int)), this, SLOT(setResult(int)));
    connect(this,
            SIGNAL(confirmSig(const QString&, const QString&, const QString&, const QString&, bool,
                              const QString&, const QString&)),
            minion,
            SLOT(confirm(const QString&, const QString&, const QString&, const QString&, bool, const QString&,
                         const QString&)));
    connect(this,
            SIGNAL(warningSig(const QString&, const QString&, const QString&, const QString&, const QString&,
                              int, int)),
            minion,
            SLOT(warning(const QString&, const QString&, const QString&, const QString&, const QString&, int,
                         int)));
    connect(this,
            SIGNAL(criticalSig(const QString&, const QString&, const QString&, const QString&, const QString&,
                               int, int)),
            minion,
            SLOT(critical(const QString&, const QString&, const QString&, const QString&, const QString&, int,
                          int)));
    connect(this, SIGNAL(scrollableSig(const QString&, const QString&)), minion,
            SLOT(scrollable(const QString&, const QString&)));
}

YumIODialogs::~YumIODialogs()
{
    minion->deleteLater();
}

template <typename Request> int YumIODialogs::ask(int safe, const Request& request)
{
    safeResult = safe;
    if (!Unattended::add(this)) {
        return safe;
    }
    haveResult = false;
    request();
    waitForResult();
    Unattended::remove(this);
    return result;
}

int YumIODialogs::confirm(const QString& caption, const QString& text, const QString& acceptText,
                          const QString& rejectText, bool rejectIsDefault, const QString& notice,
                          const QString& summary)
{
    return ask(QDialog::Rejected, [&] {
        Q_EMIT confirmSig(caption, text, acceptText, rejectText, rejectIsDefault, notice, summary);
    });
}

int YumIODialogs::warning(const QString& caption, const QString& text, const QString& button0Text,
                          const QString& button1Text, const QString& button2Text, int defaultButtonNumber,
                          int escapeButtonNumber)
{
    return ask(escapeButtonNumber, [&] {
        Q_EMIT warningSig(caption, text, button0Text, button1Text, button2Text, defaultButtonNumber,
                          escapeButtonNumber);
    });
}

int YumIODialogs::critical(const QString& caption, const QString& text, const QString& button0Text,
                           const QString& button1Text, const QString& button2Text, int defaultButtonNumber,
                           int escapeButtonNumber)
{
    return ask(escapeButtonNumber, [&] {
        Q_EMIT criticalSig(caption, text, button0Text, button1Text, button2Text, defaultButtonNumber,
                           escapeButtonNumber);
    });
}

int YumIODialogs::scrollable(const QString& caption, const QString& text)
{
    return ask(0, [&] { Q_EMIT scrollableSig(caption, text); });
}

void YumIODialogs::setResult(int answer)
{
    result = answer;
    haveResult = true;
    loop.quit();
}

void YumIODialogs::waitForResult()
{
    // If the graphical thread asks the question itself, the dialog has already run inside the emitted signal.
    if (!haveResult) {
        loop.exec(QEventLoop::ExcludeUserInputEvents);
    }
}

void YumIODialogs::giveUpWaiting()
{
    // Queue the call, so that the event loop of the waiting thread delivers the answer.
    QMetaObject::invokeMethod(this, "setResult", Qt::QueuedConnection, Q_ARG(int, safeResult));
}

YumIODialogsUser::YumIODialogsUser(YumIODialogs*& dialogsPointer, QWidget* parent)
    : slot(dialogsPointer), former(dialogsPointer)
{
    slot = new YumIODialogs(parent);
}

YumIODialogsUser::~YumIODialogsUser()
{
    delete slot;
    slot = former;
}
