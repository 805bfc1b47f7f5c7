// Starts external programs that go on by themselves.
//
// Graphical thread; the kept descriptors live as long as the process.

#ifndef REPO_EXECUTE_H
#define REPO_EXECUTE_H

#include <QCoreApplication>

class QWidget;

class Execute
{
    Q_DECLARE_TR_FUNCTIONS(Execute)

public:
    // From now on programs are started with what standard output and standard error lead to at this moment.
    // Later these may be pipes that end with an operation: a program that still wrote to one would be killed.
    static void keepOutput();

    // Runs argv[0], a path, with these arguments, of which the last is followed by a null pointer; they are
    // needed only until this returns, which it does at once. The program becomes nobody's child, has a
    // session of its own, no open descriptors but the standard three and every signal as at a start from
    // scratch. When not even a process can be had, a window of `parent` shows it. Nothing waits for that
    // window: an operation that ends meanwhile has to go on. Any later failure is reported on standard error
    // only.
    static void execute(QWidget* parent, char* const* argv);
};

#endif
