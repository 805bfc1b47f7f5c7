// SPDX-License-Identifier: GPL-2.0-or-later

// The back end with the stand-in script, a window and its bars, and a simulated user who answers the dialogs.

#ifndef TESTS_YUMIO_BACKEND_H
#define TESTS_YUMIO_BACKEND_H

#include <QHash>
#include <QMessageBox>
#include <QStringList>
#include <QWidget>

#include "python/CPython.h"
#include "python/PyRef.h"
#include "services/HProgressBar.h"
#include "tests/support/AnsweringUser.h"
#include "tests/yumio/YumIOProbe.h"

// The texts and buttons of a dialog.
struct ShownDialog
{
    QString title;
    QString text;
    // `notice` is the text above the listing of a transaction, and `summary` is the text below it.
    QString notice;
    QString summary;
    QStringList buttons;
    QString defaultButton;
    QMessageBox::Icon icon = QMessageBox::NoIcon; // only for a message box
};

// Answers every dialog as soon as the dialog opens, by a click on the next button that press() has named. If
// press() has named no further button, clicks the first button. The answers "Escape" and "Enter" stand for
// keys.
class QueuedAnswers
{
public:
    void press(const QString& answer) { answers.append(answer); }
    // The dialogs that have opened since the previous call of this function.
    QList<ShownDialog> take();
    // The texts of the dialogs that take() returns. All of them must have the given title.
    QStringList takeTexts(const QString& title);

private:
    void answer(QDialog* dialog);

    QStringList answers;
    QList<ShownDialog> shown;
    AnsweringUser user{[this](QDialog* dialog) { answer(dialog); }, AnsweringUser::EveryDialog};
};

class BackEnd
{
public:
    BackEnd();

    // Returns false if the back end did not start. If no share directory is given, the back end runs the
    // stand-in script. The script gets five more functions, which all threads may call:
    //
    // look() returns the result of bars(). tip() returns the result of the C++ function tip(). captured()
    // returns the unfinished lines of captured standard output and standard error. counted() returns the
    // number of records that the graphical thread sees. state() returns a dictionary of some members of the
    // back end, with their names as keys.
    bool start(const QByteArray& share = QByteArray());

    // The state of the total bar and of the item bar, each as "text value/maximum" or "idle".
    QStringList bars() const;
    // The rows "text: state" of the tip that the item bar shows during downloads.
    QStringList tip();

    // Runs Python statements, in which "it" is the script's object. An exception makes the test fail.
    void run(const QString& statements);
    PyRef value(const QString& expression);
    // The value of the expression, as str() shows it.
    QString text(const QString& expression);

    // Removes all records, and resets the script's object to its initial state.
    void renew();
    // Collects the packages. "answers" records the dialogs.
    bool collect(const QHash<QString, bool>& repoEnable = {});
    // The record of the ordinary package with this name and bi-arch class; null if it is missing.
    Package::Entry* entry(const QString& name, const QString& biArch = QStringLiteral("x86_64"));
    Package::Entry* group(const QString& name);

    // The log entries from this number on, each as "kind level text".
    QStringList log(int from = 0);

    QWidget window;
    HProgressBar total;
    HProgressBar item;
    QueuedAnswers answers;
    YumIOProbe yumIO;
};

#endif
