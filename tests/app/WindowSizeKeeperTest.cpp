// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>

#include <QTemporaryDir>
#include <QWidget>

#include <memory>

#include "app/Settings.h"
#include "app/WindowSizeKeeper.h"
#include "widgets/Metrics.h"

namespace {

// Makes a window whose size is saved and restored. As the program does, this function sets a first size, 300
// by 200 pixels.
std::unique_ptr<QWidget> makeWindow()
{
    auto window = std::make_unique<QWidget>();
    new WindowSizeKeeper("Some", window.get());
    window->resize(300, 200);
    return window;
}

void show(QWidget& window)
{
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
}

} // namespace

class WindowSizeKeeperTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir directory;

private Q_SLOTS:
    void initTestCase();
    void init();
    void aNewWindowHasTheSavedSize();
    void aWindowKeepsItsSizeIfItIsHiddenAndShownAgain();
    void aResizeByTheProgramIsNotSaved();
    void aTooLargeSavedSizeIsReducedToTheScreen();
    void anInvalidSavedSizeChangesNothing();
    void aMaximizedWindowDoesNotChangeTheSavedSize();
};

void WindowSizeKeeperTest::initTestCase()
{
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, directory.path());
}

void WindowSizeKeeperTest::init()
{
    Settings().clear();
}

void WindowSizeKeeperTest::aNewWindowHasTheSavedSize()
{
    auto window = makeWindow();
    show(*window);
    window->resize(410, 230);
    QTRY_COMPARE(window->size(), QSize(410, 230));
    window->close();
    QCOMPARE(Settings().value("Some/size").toSize(), QSize(410, 230));
    window = makeWindow();
    show(*window);
    QTRY_COMPARE(window->size(), QSize(410, 230));
}

void WindowSizeKeeperTest::aWindowKeepsItsSizeIfItIsHiddenAndShownAgain()
{
    const auto window = makeWindow();
    show(*window);
    window->resize(410, 230);
    window->hide();
    window->resize(300, 200); // some windows adapt their size to their contents before they open
    show(*window);
    QTRY_COMPARE(window->size(), QSize(410, 230));
}

void WindowSizeKeeperTest::aResizeByTheProgramIsNotSaved()
{
    const auto window = makeWindow();
    show(*window);
    window->hide();
    QVERIFY(!Settings().contains("Some/size"));
}

void WindowSizeKeeperTest::aTooLargeSavedSizeIsReducedToTheScreen()
{
    Settings().setValue("Some/size", QSize(100000, 250));
    const auto window = makeWindow();
    show(*window);
    QTRY_COMPARE(window->size(), QSize(Metrics::maxWindowSize().width(), 250));
}

void WindowSizeKeeperTest::anInvalidSavedSizeChangesNothing()
{
    for (const QVariant& nonsense : {QVariant("wide"), QVariant(QSize(-5, 7)), QVariant(QSize(0, 0))}) {
        Settings().setValue("Some/size", nonsense);
        const auto window = makeWindow();
        show(*window);
        QTest::qWait(50);
        QCOMPARE(window->size(), QSize(300, 200));
    }
}

void WindowSizeKeeperTest::aMaximizedWindowDoesNotChangeTheSavedSize()
{
    Settings().setValue("Some/size", QSize(410, 230));
    const auto window = makeWindow();
    window->showMaximized();
    QVERIFY(QTest::qWaitForWindowExposed(window.get()));
    QTRY_VERIFY(window->width() > 410);
    window->close();
    QCOMPARE(Settings().value("Some/size").toSize(), QSize(410, 230));
}

QTEST_MAIN(WindowSizeKeeperTest)
#include "WindowSizeKeeperTest.moc"
