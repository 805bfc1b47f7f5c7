// The back end on the stand-in script, with its window and bars, and a user who answers its dialogs.

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

// What a dialog showed.
struct ShownDialog
{
    QString title;
    QString text;
    QStringList buttons;
    QMessageBox::Icon icon = QMessageBox::NoIcon; // of a message box
};

// Answers every dialog as soon as it is shown: presses the button of the next answer or, when there is none,
// the first one. The answers "Escape" and "Enter" are the keys.
class Answers : public QObject
{
    Q_OBJECT

public:
    Answers();

    void press(const QString& answer) { answers.append(answer); }
    // What was shown since the last time.
    QList<ShownDialog> take();
    // The texts of that; the titles must be the given one.
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

    // False when the back end did not start. Without a share directory it runs the stand-in script, whose
    // callers have five functions more: look() gives bars(), tip() gives tip(), captured() the unfinished
    // lines of captured standard output and standard error, counted() the number of records that the
    // graphical thread sees, state() some members of the back end by name. They may be called on any thread.
    bool start(const QByteArray& share = QByteArray());

    // What the bars show: "text value/maximum" of the total bar and of the item bar, or "idle".
    QStringList bars() const;
    // The rows of the tip that the item bar shows while packages are downloaded: "text: state".
    QStringList tip();

    // Runs statements of Python, in which "it" is the script's object; fails the test when they fail.
    void run(const QString& statements);
    PyRef value(const QString& expression);
    // str() of it.
    QString text(const QString& expression);

    // Removes all records, and makes the script's object as it was at the start.
    void renew();
    // Collects; whatever is reported is left in answers.
    bool collect(const QHash<QString, bool>& repoEnable = {});
    // The ordinary record of that name and bi-arch class, or null.
    Package::Entry* entry(const QString& name, const QString& biArch = QStringLiteral("x86_64"));
    Package::Entry* group(const QString& name);

    // "kind level text" of the entries from the given one on.
    QStringList log(int from = 0);

    QWidget window;
    HProgressBar total;
    HProgressBar item;
    Answers answers;
    YumIOProbe yumIO;
};

#endif
