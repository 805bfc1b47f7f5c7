// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/HMenu.h"

#include <QtTest>
#include <QtWidgets>

class HMenuTest : public QObject
{
    Q_OBJECT

private:
    // The tool tip that appears when the pointer rests on the menu; empty if none appears.
    QString toolTipOf(QMenu* asked)
    {
        const QPoint pos = asked->rect().center();
        QHelpEvent event(QEvent::ToolTip, pos, asked->mapToGlobal(pos));
        QApplication::sendEvent(asked, &event);
        return QToolTip::text();
    }

    QMainWindow window;
    HMenu* menu = nullptr;
    HMenu* subMenu = nullptr;
    HMenu* innerMenu = nullptr;
    QAction* actionWithTip = nullptr;
    QAction* actionWithoutTip = nullptr;
    QAction* opening = nullptr;

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void theMenuCanBeTornOff();
    void theMenuBarIsTheParentOfTheMenu();
    void theToolTipOfAnActionIsShown();
    void theToolTipOfAnActionIsShownAsPlainText();
    void theToolTipOfAnActionIsShownAtThePointer();
    void aToolTipThatOnlyRepeatsTheTextIsNotShown_data();
    void aToolTipThatOnlyRepeatsTheTextIsNotShown();
    void noToolTipOfAnActionIsShownIfNoActionIsActive();
    void theTipOfTheActiveActionInAnOpenSubMenuIsShown();
    void theTipOfTheActiveActionInTheInnermostOpenMenuIsShown();
    void theTipOfTheParentEntryIsShownIfItsSubMenuHasNoActiveAction();
    void theTipOfTheParentEntryIsShownIfItsSubMenuIsClosed();
    void theToolTipOfTheMenuIsShownIfNoActionIsActive();
    void hoveringOverAnActionShowsItsToolTip();
};

void HMenuTest::initTestCase()
{
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    QCursor::setPos(screen.bottomRight() - QPoint(20, 20));
    menu = new HMenu(QStringLiteral("&Cache"), window.menuBar());
    window.menuBar()->addMenu(menu);
    actionWithTip = menu->addAction(QStringLiteral("Clean All"));
    actionWithoutTip = menu->addAction(QStringLiteral("&About..."));
    subMenu = new HMenu(QStringLiteral("&More"), window.menuBar());
    subMenu->menuAction()->setToolTip(QStringLiteral("more of it"));
    menu->addMenu(subMenu);
    subMenu->addAction(QStringLiteral("Inner"))->setToolTip(QStringLiteral("the inner tip"));
    innerMenu = new HMenu(QStringLiteral("Deep"), window.menuBar());
    subMenu->addMenu(innerMenu);
    opening = innerMenu->addAction(QStringLiteral("Deepest"));
    opening->setToolTip(QStringLiteral("the deepest tip"));
    window.resize(300, 200);
    window.move(50, 50);
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
}

void HMenuTest::init()
{
    actionWithTip->setToolTip(QStringLiteral("Clean all data"));
    actionWithoutTip->setToolTip(QString());
    actionWithoutTip->setText(QStringLiteral("&About..."));
    window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    QVERIFY(!QToolTip::isVisible());
    QTest::mouseClick(window.menuBar(), Qt::LeftButton, Qt::NoModifier,
                      window.menuBar()->actionGeometry(menu->menuAction()).center());
    QTRY_VERIFY(menu->isVisible());
}

void HMenuTest::cleanup()
{
    while (QWidget* popup = QApplication::activePopupWidget()) {
        popup->close();
    }
    window.menuBar()->setActiveAction(nullptr);
    QToolTip::hideText();
    QTRY_VERIFY(!QToolTip::isVisible());
}

void HMenuTest::theMenuCanBeTornOff()
{
    QVERIFY(menu->isTearOffEnabled());
    // The first entry of the menu is the tear-off line.
    QTest::mouseClick(menu, Qt::LeftButton, Qt::NoModifier, QPoint(menu->width() / 2, 4));
    QTRY_VERIFY(menu->isTearOffMenuVisible());
    menu->hideTearOffMenu();
}

void HMenuTest::theMenuBarIsTheParentOfTheMenu()
{
    QCOMPARE(menu->title(), QStringLiteral("&Cache"));
    QCOMPARE(menu->parentWidget(), window.menuBar());
}

void HMenuTest::theToolTipOfAnActionIsShown()
{
    menu->setActiveAction(actionWithTip);
    QCOMPARE(toolTipOf(menu), QStringLiteral("Clean all data"));
}

void HMenuTest::theToolTipOfAnActionIsShownAsPlainText()
{
    actionWithTip->setToolTip(QStringLiteral("Clean in /<h1>x</h1>\n<img src=\"/dev/zero\">"));
    menu->setActiveAction(actionWithTip);
    QTextDocument document;
    document.setHtml(toolTipOf(menu));
    QCOMPARE(document.toPlainText(), actionWithTip->toolTip());
}

void HMenuTest::theToolTipOfAnActionIsShownAtThePointer()
{
    menu->setActiveAction(actionWithTip);
    const QPoint pos = menu->mapToGlobal(QPoint(5, 5));
    QHelpEvent event(QEvent::ToolTip, QPoint(5, 5), pos);
    QApplication::sendEvent(menu, &event);
    const QWidget* tip = nullptr;
    for (const QWidget* widget : QApplication::topLevelWidgets()) {
        if (widget->isVisible() && widget->windowType() == Qt::ToolTip) {
            tip = widget;
        }
    }
    QVERIFY(tip != nullptr);
    QVERIFY((tip->pos() - pos).manhattanLength() < 60);
}

void HMenuTest::aToolTipThatOnlyRepeatsTheTextIsNotShown_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("toolTip");
    QTest::addColumn<bool>("shown");
    const auto row = [](const char* name, const char* text, const char* toolTip, bool shown) {
        QTest::newRow(name) << QString::fromLatin1(text) << QString::fromLatin1(toolTip) << shown;
    };
    row("no tool tip", "Quit", "", false);
    row("no tool tip, text with mnemonic and dots", "&About...", "", false);
    row("tool tip equal to the text", "Quit", "Quit", false);
    row("tool tip equal to the text without mnemonic", "E&xit", "Exit", false);
    row("tool tip equal to the text without dots", "Open...", "Open", false);
    row("tool tip equal to the text without all mnemonics and dots", "&a...&b...", "ab", false);
    row("neither text nor tool tip", "", "", false);
    row("different letter case", "Quit", "quit", true);
    row("tool tip with the mnemonic", "&Quit", "&Quit", true);
    row("tool tip with the dots", "Open...", "Open...", true);
    row("tool tip longer than the text", "Quit", "Quit the program", true);
}

void HMenuTest::aToolTipThatOnlyRepeatsTheTextIsNotShown()
{
    QFETCH(QString, text);
    QFETCH(QString, toolTip);
    QFETCH(bool, shown);
    actionWithoutTip->setText(text);
    actionWithoutTip->setToolTip(toolTip);
    menu->setActiveAction(actionWithoutTip);
    QCOMPARE(menu->activeAction(), actionWithoutTip);
    QCOMPARE(toolTipOf(menu), shown ? toolTip : QString());
}

void HMenuTest::noToolTipOfAnActionIsShownIfNoActionIsActive()
{
    menu->setActiveAction(nullptr);
    QCOMPARE(toolTipOf(menu), QString());
}

void HMenuTest::theTipOfTheActiveActionInAnOpenSubMenuIsShown()
{
    menu->setActiveAction(subMenu->menuAction());
    QTest::keyClick(menu, Qt::Key_Right);
    QTRY_VERIFY(subMenu->isVisible());
    subMenu->setActiveAction(subMenu->actions().first());
    QCOMPARE(toolTipOf(menu), QStringLiteral("the inner tip"));
}

void HMenuTest::theTipOfTheActiveActionInTheInnermostOpenMenuIsShown()
{
    menu->setActiveAction(subMenu->menuAction());
    QTest::keyClick(menu, Qt::Key_Right);
    QTRY_VERIFY(subMenu->isVisible());
    subMenu->setActiveAction(innerMenu->menuAction());
    QTest::keyClick(subMenu, Qt::Key_Right);
    QTRY_VERIFY(innerMenu->isVisible());
    innerMenu->setActiveAction(opening);
    QCOMPARE(toolTipOf(menu), QStringLiteral("the deepest tip"));
    QToolTip::hideText();
    QTRY_VERIFY(!QToolTip::isVisible());
    QCOMPARE(toolTipOf(innerMenu), QStringLiteral("the deepest tip"));
}

void HMenuTest::theTipOfTheParentEntryIsShownIfItsSubMenuHasNoActiveAction()
{
    menu->setActiveAction(subMenu->menuAction());
    QTest::keyClick(menu, Qt::Key_Right);
    QTRY_VERIFY(subMenu->isVisible());
    subMenu->setActiveAction(nullptr);
    QCOMPARE(menu->activeAction(), subMenu->menuAction());
    QCOMPARE(toolTipOf(menu), QStringLiteral("more of it"));
}

void HMenuTest::theTipOfTheParentEntryIsShownIfItsSubMenuIsClosed()
{
    menu->setActiveAction(subMenu->menuAction());
    QTest::keyClick(menu, Qt::Key_Right);
    QTRY_VERIFY(subMenu->isVisible());
    subMenu->setActiveAction(subMenu->actions().first());
    QTest::keyClick(subMenu, Qt::Key_Left);
    QTRY_VERIFY(!subMenu->isVisible());
    QCOMPARE(menu->activeAction(), subMenu->menuAction());
    QCOMPARE(toolTipOf(menu), QStringLiteral("more of it"));
}

void HMenuTest::theToolTipOfTheMenuIsShownIfNoActionIsActive()
{
    // If no entry is active, QMenu shows the tool tip of the menu itself.
    HMenu plain(QStringLiteral("Plain"));
    plain.addAction(QStringLiteral("entry"));
    plain.setToolTip(QStringLiteral("tip of the menu"));
    plain.popup(window.mapToGlobal(QPoint(150, 150)));
    QTRY_VERIFY(plain.isVisible());
    QCOMPARE(toolTipOf(&plain), QStringLiteral("tip of the menu"));
}

void HMenuTest::hoveringOverAnActionShowsItsToolTip()
{
    const QPoint target = menu->mapToGlobal(menu->actionGeometry(actionWithTip).center());
    // The pointer moves in small steps, as a user moves it.
    for (int distance = 20; distance > 0; distance -= 5) {
        QCursor::setPos(target - QPoint(distance, 0));
        QTest::qWait(20);
    }
    QTRY_COMPARE(menu->activeAction(), actionWithTip);
    QCursor::setPos(target);
    QTRY_COMPARE(QToolTip::text(), QStringLiteral("Clean all data"));
    QCursor::setPos(QGuiApplication::primaryScreen()->geometry().bottomRight() - QPoint(20, 20));
}

QTEST_MAIN(HMenuTest)
#include "HMenuTest.moc"
