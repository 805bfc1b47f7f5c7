// SPDX-License-Identifier: GPL-2.0-or-later

// The back end with the stand-in script, a window and bars, and a simulated user who answers its dialogs.

#ifndef TESTS_YUMIO_BACKEND_H
#define TESTS_YUMIO_BACKEND_H

#include <QHash>
#include <QMessageBox>
#include <QStringList>
#include <QTimer>
#include <QWidget>

#include "python/CPython.h"
#include "python/PyRef.h"
#include "services/HProgressBar.h"
#include "tests/yumio/YumIOProbe.h"

// The content of a dialog.
struct ShownDialog
{
    QString title;
    QString text;
    // The texts above and below a listing.
    QString notice;
    QString summary;
    QStringList buttons;
    QString defaultButton;
    QMessageBox::Icon icon = QMessageBox::NoIcon; // of a message box
};

// Answers every dialog as soon as the dialog appears. It presses the button of the next answer. If no answer
// is left, it presses the first button. The answers "Escape" and "Enter" are keys.
class Answers : public QObject
{
    Q_OBJECT

public:
    Answers();

    void press(const QString& answer) { answers.append(answer); }
    // The dialogs that were shown since the previous call of this function.
    QList<ShownDialog> take();
    // The texts of these dialogs. Their title must be the given title.
    QStringList takeTexts(const QString& title);

private Q_SLOTS:
    void answer();

private:
    QTimer timer;
    QStringList answers;
    QList<ShownDialog> shown;
};

class BackEnd
{
public:
    BackEnd();

    // Returns false if the back end did not start. Without a share directory it runs the stand-in script.
    // The functions of that script have five more globals: look() returns bars(), tip() returns tip(), and
    // captured() returns the unfinished lines of captured standard output and standard error. counted()
    // returns the number of records that the graphical thread sees. state() returns some members of the back
    // end by name. All threads may call these functions.
    bool start(const QByteArray& share = QByteArray());

    // The content of the bars: "text value/maximum" of the total bar and of the item bar, or "idle".
    QStringList bars() const;
    // The rows of the item bar's tip during downloads: "text: state".
    QStringList tip();

    // Runs Python statements. In these statements, "it" is the script's object. If the statements fail, the
    // test fails.
    void run(const QString& statements);
    PyRef value(const QString& expression);
    // The result of str() for the value of the expression.
    QString text(const QString& expression);

    // Removes all records and resets the script's object to its initial state.
    void renew();
    // Collects the packages. "answers" keeps the messages.
    bool collect(const QHash<QString, bool>& repoEnable = {});
    // The ordinary record of this name and bi-arch class, or null.
    Package::Entry* entry(const QString& name, const QString& biArch = QStringLiteral("x86_64"));
    Package::Entry* group(const QString& name);

    // "kind level text" of the entries, beginning with the given entry.
    QStringList log(int from = 0);

    QWidget window;
    HProgressBar total;
    HProgressBar item;
    Answers answers;
    YumIOProbe yumIO;
};

#endif
