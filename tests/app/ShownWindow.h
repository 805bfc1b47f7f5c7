// SPDX-License-Identifier: GPL-2.0-or-later

// The main window with the stand-in script. ShownWindow reads the visible contents of the window, and uses
// the window as a user does.

#ifndef TESTS_APP_SHOWNWINDOW_H
#define TESTS_APP_SHOWNWINDOW_H

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QTimer>
#include <QWindow>
#include <QtTest>

#include <functional>

#include "app/MainWindow.h"
#include "packagetable/Model.h"
#include "packagetable/SortFilterProxyModel.h"
#include "packagetable/View.h"
#include "tests/support/AnsweringUser.h"
#include "tests/support/Buttons.h"
#include "tests/support/StandIn.h"
#include "widgets/HFrameLabel.h"

class ShownWindow
{
public:
    // Makes a window, but does not show it yet. As in the program, nobody deletes the window.
    ShownWindow() : window(new MainWindow)
    {
        // Leak checkers do not report the window, because this list refers to it.
        static auto* const windows = new QList<MainWindow*>;
        windows->append(window);
        for (QComboBox* box : window->findChildren<QComboBox*>()) {
            (box->itemText(0) == QLatin1String("Filter") ? modeBox : stateBox) = box;
        }
        for (QCheckBox* box : window->findChildren<QCheckBox*>()) {
            (box->text() == QLatin1String("Include Groups") ? groupsBox : dupsBox) = box;
        }
        regexpEdit = window->findChild<QLineEdit*>();
        view = window->findChild<PackageTable::View*>();
        proxy = window->findChild<PackageTable::SortFilterProxyModel*>();
        model = window->findChild<PackageTable::Model*>();
        label = window->findChild<HFrameLabel*>();
        area = view->parentWidget();
    }

    // Shows the window and waits until its controls can be used.
    void start()
    {
        window->show();
        QApplication::setActiveWindow(window);
        if (!QTest::qWaitForWindowActive(window) || !QTest::qWaitFor([this] { return isReady(); }, 20000)) {
            qFatal("the window does not start");
        }
    }

    bool isReady() const { return area->isVisible() && area->isEnabled(); }

    QPushButton* button(const QString& text) const { return buttonOf(area, text); }
    // The button that applies the expression; its text depends on the mode.
    QPushButton* filterButton() const
    {
        return button(modeBox->currentIndex() == PackageTable::Search ? "Search" : "Filter");
    }

    QMenu* menu(const QString& title) const
    {
        for (const QAction* action : window->menuBar()->actions()) {
            if (action->text() == title) {
                return action->menu();
            }
        }
        qFatal("the menu %s is missing", qPrintable(title));
        return nullptr;
    }
    QAction* action(const QString& title, const QString& text) const
    {
        for (QAction* entry : menu(title)->actions()) {
            if (entry->text() == text) {
                return entry;
            }
        }
        qFatal("the entry %s is missing", qPrintable(text));
        return nullptr;
    }

    // The following functions send clicks and keys through the window system, as if a user made them.
    void click(const QWidget* widget) const { click(widget, widget->rect().center()); }
    void click(const QWidget* widget, const QPoint& place, Qt::KeyboardModifiers modifiers = {}) const
    {
        QTest::mouseClick(window->windowHandle(), Qt::LeftButton, modifiers, widget->mapTo(window, place));
    }
    void press(const QString& text) const { click(button(text)); }
    void click(const QString& name, int column, Qt::KeyboardModifiers modifiers = {}) const
    {
        const QRect cell = view->visualRect(proxy->index(listed().indexOf(name), column));
        if (!cell.isValid()) {
            qFatal("%s is not listed", qPrintable(name));
        }
        click(view->viewport(), cell.center(), modifiers);
    }
    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) const
    {
        QTest::keyClick(window->windowHandle(), key, modifiers);
    }
    // Opens a menu by a click, and chooses an entry by another click.
    void choose(const QString& title, const QString& text) const
    {
        QMenu* opened = menu(title);
        click(window->menuBar(), window->menuBar()->actionGeometry(opened->menuAction()).center());
        if (!QTest::qWaitForWindowExposed(opened)) {
            qFatal("the menu %s does not open", qPrintable(title));
        }
        const QPoint place = opened->actionGeometry(action(title, text)).center();
        QTest::mouseMove(opened, place);
        QTest::mouseClick(opened, Qt::LeftButton, {}, place);
    }
    // Selects an entry of a combo box with keys.
    void choose(QComboBox* box, int index) const
    {
        box->setFocus();
        while (box->currentIndex() != index) {
            key(box->currentIndex() < index ? Qt::Key_Down : Qt::Key_Up);
        }
    }
    // Types the expression, but does not apply it.
    void type(const QString& expression) const
    {
        click(regexpEdit);
        regexpEdit->selectAll();
        key(Qt::Key_Delete);
        QTest::keyClicks(regexpEdit, expression);
    }
    void filter(const QString& expression) const
    {
        type(expression);
        key(Qt::Key_Return);
    }

    // The names in the listed rows, in the order of the rows.
    QStringList listed() const
    {
        QStringList names;
        for (int row = 0; row < proxy->rowCount(); ++row) {
            names << proxy->index(row, PackageTable::NameColumn).data().toString();
        }
        return names;
    }
    QStringList sorted() const
    {
        QStringList names = listed();
        names.sort();
        return names;
    }
    // The marked records as "name action", sorted by name.
    QStringList marks() const
    {
        static const char* const actions[] = {"update", "install", "remove"};
        QStringList found;
        for (int row = 0; row < model->rowCount(); ++row) {
            const Package::Entry* entry = model->entry(row);
            if (entry->action != Package::None) {
                found << entry->name + QLatin1Char(' ') + QLatin1String(actions[entry->action]);
            }
        }
        found.sort();
        return found;
    }

    MainWindow* window;
    QWidget* area;
    QComboBox* modeBox = nullptr;
    QLineEdit* regexpEdit;
    QComboBox* stateBox = nullptr;
    QCheckBox* dupsBox = nullptr;
    QCheckBox* groupsBox = nullptr;
    PackageTable::View* view;
    PackageTable::SortFilterProxyModel* proxy;
    PackageTable::Model* model;
    HFrameLabel* label;
};

// Runs the program's event loop, and calls the action as its first event. The window may already be visible.
// Returns the exit status of the loop, or -1 if the loop has not ended after 20 seconds.
inline int runToTheEnd(const std::function<void()>& action)
{
    QTimer::singleShot(0, qApp, action);
    QTimer::singleShot(20000, qApp, [] { QApplication::exit(-1); });
    return QApplication::exec();
}

// As soon as the condition is true, calls the action once, even if the program waits in an inner event loop
// at that time. The Once object must exist until it calls the action.
class Once
{
public:
    Once(std::function<bool()> condition, std::function<void()> action)
    {
        QObject::connect(&timer, &QTimer::timeout, [this, condition, action] {
            if (!done && condition()) {
                done = true;
                timer.stop();
                action();
            }
        });
        timer.start(5);
    }

    bool isDone() const { return done; }

private:
    QTimer timer;
    bool done = false;
};

// While an object of this class exists, it presses the button with this text in each dialog that opens, and
// records the texts of the dialogs.
class Answers : public AnsweringUser
{
public:
    explicit Answers(const QString& button) : AnsweringUser(click(button), EveryDialog) {}
};

#endif
