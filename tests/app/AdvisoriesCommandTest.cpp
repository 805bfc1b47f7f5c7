// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>
#include <QtWidgets>

#include "advisories/AdvisoryDialog.h"
#include "tests/app/EachAlone.h"
#include "tests/app/StandInWindow.h"
#include "tests/packagetable/Described.h"

using namespace PackageTable;

// Tests of the command that shows the advisories and marks their updates.
class AdvisoriesCommandTest : public StandInWindow
{
    Q_OBJECT

private Q_SLOTS:
    void theButtonInTheAdvisoriesWindowMarksTheSecurityUpdates();
    void theAdvisoriesAreReadAgainAfterARefresh();
    void advisoriesAreNotShownIfThePackagesCouldNotBeRead();
};

void AdvisoriesCommandTest::theButtonInTheAdvisoriesWindowMarksTheSecurityUpdates()
{
    standIn->setAdvisories({StandIn::advisory("A-1", true, {StandIn::advised("tool", 0)}),
                            StandIn::advisory("B-2", false, {StandIn::advised("many", 0)})});
    shown->start();
    shown->filter("many");
    QVERIFY(withDialog<AdvisoryDialog>([this] { shown->choose("&Windows", "&Advisories"); },
                                       [this](AdvisoryDialog& dialog) {
                                           QCOMPARE(shown->marks(), QStringList());
                                           QTest::mouseClick(buttonOf(&dialog, "Mark All &Security Updates"),
                                                             Qt::LeftButton);
                                           QCOMPARE(shown->marks(), QStringList{"tool update"});
                                           QTest::keyClick(&dialog, Qt::Key_Escape);
                                       }));
    QVERIFY(shown->button("&Apply Actions")->isEnabled());
    QCOMPARE(shown->label->text(), QString("Unlisted Actions"));
    QVERIFY(shown->isReady());
}

void AdvisoriesCommandTest::theAdvisoriesAreReadAgainAfterARefresh()
{
    standIn->setAdvisories({StandIn::advisory("A-1", true, {StandIn::advised("tool", 0)})});
    shown->start();
    const auto titles = [this] {
        QString text;
        withDialog<AdvisoryDialog>(
            [this] { shown->choose("&Windows", "&Advisories"); },
            [&text](AdvisoryDialog& dialog) { text = dialog.findChild<QTextEdit*>()->toPlainText(); });
        return text.section('\n', 0, 0);
    };
    QCOMPARE(titles(), QString("A-1: About A-1"));
    QCOMPARE(titles(), QString("A-1: About A-1"));
    QCOMPARE(standIn->calls("collectAdvisories"), 1);
    standIn->setAdvisories({StandIn::advisory("C-3", true, {StandIn::advised("tool", 0)})});
    shown->press("Re&fresh");
    QCOMPARE(titles(), QString("C-3: About C-3"));
    QCOMPARE(standIn->calls("collectAdvisories"), 2);
}

void AdvisoriesCommandTest::advisoriesAreNotShownIfThePackagesCouldNotBeRead()
{
    startWithoutPackages();
    shown->key(Qt::Key_D, Qt::ControlModifier);
    QVERIFY(QApplication::activeModalWidget() == nullptr);
    shown->action("&Windows", "&Log")->trigger();
    QVERIFY(logWindow()->findChild<QTextEdit*>()->toPlainText().contains(
        "VYRE cannot show advisories, because it could not read the packages."));
}

int main(int argc, char** argv)
{
    return EachAlone::run<AdvisoriesCommandTest>(argc, argv);
}

#include "AdvisoriesCommandTest.moc"
