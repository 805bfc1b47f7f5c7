// SPDX-License-Identifier: GPL-2.0-or-later

// Runs each test function of a class in a process of its own. The embedded interpreter starts with the first
// main window of a process, and cannot start again.

#ifndef TESTS_APP_EACHALONE_H
#define TESTS_APP_EACHALONE_H

#include <QApplication>
#include <QMetaMethod>
#include <QProcess>
#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>

#include <cstdio>

namespace EachAlone {

inline bool isTest(const QMetaMethod& method)
{
    const QByteArray name = method.name();
    return method.methodType() == QMetaMethod::Slot && method.access() == QMetaMethod::Private &&
           method.parameterCount() == 0 && !name.endsWith("_data") && name != "init" && name != "cleanup" &&
           name != "initTestCase" && name != "cleanupTestCase";
}

// Returns the number of failed functions. If the command line has arguments for Qt Test, the functions run in
// this process instead.
template <typename Test> int run(int argc, char** argv)
{
    if (argc > 1) {
        // The settings that VYRE saves must not affect other tests.
        const QTemporaryDir settings;
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, settings.path());
        QApplication app(argc, argv);
        Test test;
        return QTest::qExec(&test, argc, argv);
    }
    int failed = 0;
    const QMetaObject& tests = Test::staticMetaObject;
    for (int i = tests.methodOffset(); i < tests.methodCount(); ++i) {
        const QMetaMethod method = tests.method(i);
        if (isTest(method) &&
            QProcess::execute(QString::fromLocal8Bit(argv[0]), {QString::fromLatin1(method.name())}) != 0) {
            std::fprintf(stderr, "FAIL!  : %s::%s()\n", tests.className(), method.name().constData());
            ++failed;
        }
    }
    return failed;
}

} // namespace EachAlone

#endif
