// SPDX-License-Identifier: GPL-2.0-or-later

// Finds the fields of the repository form by their labels, and simulates user input.

#ifndef TESTS_REPO_FORM_H
#define TESTS_REPO_FORM_H

#include <QApplication>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QProcess>
#include <QRegularExpression>
#include <QTextEdit>
#include <QWindow>
#include <QtTest>

#include "repo/PasswdLineEdit.h"
#include "repo/PasswdTextEdit.h"

// The list of windows that the window manager has stored in a property of the root window.
inline QList<WId> windowsIn(const char* property)
{
    QProcess xprop;
    xprop.start(QStringLiteral("xprop"), {QStringLiteral("-root"), QLatin1String(property)});
    xprop.waitForFinished();
    QList<WId> windows;
    QRegularExpressionMatchIterator numbers =
        QRegularExpression(QStringLiteral("0x[0-9a-f]+")).globalMatch(QString::fromLatin1(xprop.readAll()));
    while (numbers.hasNext()) {
        windows.append(numbers.next().captured().toULongLong(nullptr, 16));
    }
    return windows;
}

// Whether the window manager has removed the hidden windows and has given the focus to `active`. If a test
// shows a hidden window again too early, the window may never get the focus. Without a window manager, the
// result is always true.
inline bool windowManagerHasSettled(const QWidget* active)
{
    if (QGuiApplication::platformName() != QLatin1String("xcb")) {
        return true;
    }
    const QList<WId> managed = windowsIn("_NET_CLIENT_LIST");
    for (const QWidget* window : QApplication::topLevelWidgets()) {
        if (window->windowHandle() != nullptr && !window->isVisible() &&
            managed.contains(window->internalWinId())) {
            return false;
        }
    }
    return windowsIn("_NET_ACTIVE_WINDOW").contains(active->internalWinId());
}

// Waits until a window itself has the focus: Qt reports a dialog as active even if only its parent is active.
inline bool waitForFocus(const QWidget* window)
{
    const auto active = [window] {
        return QApplication::activeWindow() == window && windowManagerHasSettled(window);
    };
    if (!QTest::qWaitFor(active) && window->windowHandle() != nullptr) {
        // A window manager that has just started may have missed the request for the focus.
        window->windowHandle()->requestActivate();
    }
    return QTest::qWaitFor(active, 20000);
}

class Form
{
public:
    explicit Form(QWidget* window)
        : id(find<QLineEdit>(window, "Unique identifier for the repository")),
          name(find<QLineEdit>(window, "Description of the repository")),
          urls(find<PasswdTextEdit>(window,
                                    "List of URLs to the repository.\n"
                                    "If more than one is specified, they all should be identical mirrors,\n"
                                    "and will provide redundancy if some URLs are unreachable.")),
          mirrorList(
              find<PasswdLineEdit>(window, "URL to a file containing a list of URLs to the repository.")),
          authName(find<QLineEdit>(
              window, "Authentication name for a repository using the vantor authentication method")),
          password(find<QLineEdit>(
              window, "Authentication password for a repository using the vantor authentication method")),
          options(find<QTextEdit>(window, "Any other yum options for this repository.  See yum.conf(5)")),
          enabled(find<QComboBox>(window, "Whether or not the repository is enabled for use")),
          gpgcheck(find<QComboBox>(window,
                                   "Whether or not GPG key signatures of packages from the repository "
                                   "are checked to ensure authenticity")),
          file(find<QLineEdit>(
              window,
              "Name of the yum configuration file into which to place this repository configuration.\n"
              "If left blank, defaults to the repository's identifier")),
          position(find<QDoubleSpinBox>(
              window, "A numeric sort key which determines the order of this repository configuration\n"
                      "in a configuration file which contains multiple configurations")),
          authNameLabel(find<QLabel>(
              window, "Authentication name for a repository using the vantor authentication method")),
          passwordLabel(find<QLabel>(
              window, "Authentication password for a repository using the vantor authentication method"))
    {
    }

    // All fields in the order in which the form shows them.
    QList<QWidget*> fields() const
    {
        return {id, name, urls, mirrorList, authName, password, options, enabled, gpgcheck, file, position};
    }

    // Replaces the text of a field, as a user does.
    static void type(QWidget* field, const QString& text)
    {
        field->setFocus();
        QTest::keySequence(field, QKeySequence(QKeySequence::SelectAll));
        QTest::keyClick(field, Qt::Key_Delete);
        for (const QChar character : text) {
            if (character == QLatin1Char('\n')) {
                QTest::keyClick(field, Qt::Key_Return);
            } else {
                QTest::keyClicks(field, QString(character));
            }
        }
    }

    template <typename Widget> static Widget* find(QWidget* window, const char* toolTip)
    {
        Widget* found = nullptr;
        for (Widget* each : window->findChildren<Widget*>()) {
            if (each->toolTip() == QLatin1String(toolTip)) {
                if (found != nullptr) {
                    qFatal("two widgets have the tool tip %s", toolTip);
                }
                found = each;
            }
        }
        if (found == nullptr) {
            qFatal("no widget has the tool tip %s", toolTip);
        }
        return found;
    }

    QLineEdit* id;
    QLineEdit* name;
    PasswdTextEdit* urls;
    PasswdLineEdit* mirrorList;
    QLineEdit* authName;
    QLineEdit* password;
    QTextEdit* options;
    QComboBox* enabled;
    QComboBox* gpgcheck;
    QLineEdit* file;
    QDoubleSpinBox* position;
    QLabel* authNameLabel;
    QLabel* passwordLabel;
};

#endif
