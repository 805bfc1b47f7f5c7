// SPDX-License-Identifier: GPL-2.0-or-later

// Starts the back end with the script of VYRESHARE, and prints what the user sees, one item per line. The
// first argument is Python code that the interpreter runs before the script. If PRINT_LOG is set, the program
// also prints the log. If PRINT_EVENTS is set, it also prints whether a timer fired while the back end
// started. If it gets a second argument, it also collects the packages.

#include <cstdio>

#include <QApplication>
#include <QTimer>

#include "tests/yumio/BackEnd.h"

namespace {

void print(const QString& text)
{
    std::printf("%s\n", QString(text).replace('\n', '|').toUtf8().constData());
}

} // namespace

int main(int argc, char** argv)
{
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ); // keeps all lines of output in order
    QApplication app(argc, argv);
    QueuedAnswers answers;
    {
        QWidget window;
        HProgressBar total(&window);
        HProgressBar item(&window);
        YumIOProbe yumIO;
        yumIO.setup(&window, &total, &item);
        if (argc > 1) {
            yumIO.startInterpreter();
            yumIO.python().py(argv[1]);
        }
        bool fired = false;
        QTimer timer;
        QObject::connect(&timer, &QTimer::timeout, [&fired] { fired = true; });
        timer.start(10);
        print(yumIO.initialize() ? "started" : "failed");
        timer.stop();
        if (qEnvironmentVariableIsSet("PRINT_EVENTS")) {
            print(fired ? "events were served" : "no event was served");
        }
        for (const ShownDialog& each : answers.take()) {
            print(each.title + ": " + each.text);
        }
        if (qEnvironmentVariableIsSet("PRINT_LOG")) {
            QMutexLocker locker(&yumIO.logEntries());
            for (const Log::Entry& entry : qAsConst(yumIO.logEntries())) {
                print(QString("log: %1 %2 %3").arg(entry.kind).arg(entry.level).arg(entry.text));
            }
        }
        print(yumIO.initialize() ? "again: started" : "again: failed");
        answers.take();
        if (argc > 2) {
            yumIO.collect({});
            for (const ShownDialog& each : answers.take()) {
                print(each.title + ": " + each.text);
            }
        }
    }
    // The dialogs that opened while the back end ended.
    for (const ShownDialog& each : answers.take()) {
        print("end: " + each.title + ": " + each.text);
    }
    return 0;
}
