// SPDX-License-Identifier: GPL-2.0-or-later

#include "services/ScrollableDialogs.h"

#include <memory>

#include <QApplication>
#include <QClipboard>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QScrollBar>
#include <QStyle>
#include <QTest>
#include <QWindow>

#include "widgets/FindBar.h"
#include "widgets/HScrollArea.h"
#include "widgets/LongLabel.h"
#include "widgets/Metrics.h"

namespace {

QLabel* textLabel(const QDialog& dialog)
{
    return qobject_cast<QLabel*>(dialog.findChild<HScrollArea*>()->widget());
}

QString longText()
{
    QString text;
    for (int i = 0; i < 3000; ++i) {
        text += QString("  line %1 %2\n").arg(i).arg(QString(i % 7 == 0 ? 400 : 20, 'x'));
    }
    return text;
}

// Changes the program's font until the object is destroyed; an empty name keeps the usual font.
class FontScope
{
public:
    explicit FontScope(const QString& family) : before(QApplication::font())
    {
        if (!family.isEmpty()) {
            QApplication::setFont(QFont(family));
        }
    }
    ~FontScope() { QApplication::setFont(before); }
    FontScope(const FontScope&) = delete;
    FontScope& operator=(const FontScope&) = delete;

private:
    QFont before;
};

} // namespace

class ScrollableDialogsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theConfirmDialogHasTwoCentredButtons();
    void theErrorDialogHasOneCentredButton();
    void theDialogsShowTheIconsOfMessageBoxes();
    void eachButtonOfTheConfirmDialogGivesItsAnswer();
    void enterAcceptsTheQuestionAndEscapeRejectsTheQuestion();
    void enterRejectsTheQuestionIfRejectionIsTheDefault();
    void closingTheConfirmDialogRejectsTheQuestion();
    void theDialogsShowTheirTextsAsPlainText();
    void onlyALongWesternTextIsShownWithoutShaping_data();
    void onlyALongWesternTextIsShownWithoutShaping();
    void aShortTextIsShownWithoutScrollBars();
    void aTextThatFitsOnTheScreenIsShownWithoutScrollBars_data();
    void aTextThatFitsOnTheScreenIsShownWithoutScrollBars();
    void aTooLongTextCanBeScrolledInTheDialog_data();
    void aTooLongTextCanBeScrolledInTheDialog();
    void navigationKeysScrollALongText();
    void navigationKeysScrollTheTextEvenIfAButtonHasTheFocus();
    void theNoticeAndTheSummaryAreVisibleEvenIfTheTextIsLong();
    void theUserCanSelectAndCopyTheText();
    void enterInTheFindFieldFindsTextAndDoesNotAcceptTheDialog();
};

void ScrollableDialogsTest::theConfirmDialogHasTwoCentredButtons()
{
    ScrollableConfirmDialog dialog("Is this ok?", "&Yes", "&No", nullptr);
    QVERIFY(dialog.testAttribute(Qt::WA_ShowModal));
    QCOMPARE(dialog.findChild<HScrollArea*>()->frameStyle(), 16);
    QCOMPARE(textLabel(dialog)->text(), QString("Is this ok?"));

    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog, 30000));
    const QList<QPushButton*> buttons = dialog.findChildren<QPushButton*>();
    QCOMPARE(buttons.count(), 2);
    QCOMPARE(buttons.at(0)->text(), QString("&Yes"));
    QCOMPARE(buttons.at(1)->text(), QString("&No"));
    QVERIFY(buttons.at(0)->x() < buttons.at(1)->x());
    const int left = buttons.at(0)->x();
    const int right = dialog.width() - (buttons.at(1)->x() + buttons.at(1)->width());
    QVERIFY2(qAbs(left - right) <= 1, qPrintable(QString("%1 %2").arg(left).arg(right)));
    QVERIFY(buttons.at(0)->y() >= dialog.findChild<HScrollArea*>()->geometry().bottom());
}

void ScrollableDialogsTest::theErrorDialogHasOneCentredButton()
{
    ScrollableErrorDialog dialog("It failed.", nullptr);
    QVERIFY(dialog.testAttribute(Qt::WA_ShowModal));
    QCOMPARE(dialog.findChild<HScrollArea*>()->frameStyle(), 16);
    QCOMPARE(textLabel(dialog)->text(), QString("It failed."));
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog, 30000));
    const QList<QPushButton*> buttons = dialog.findChildren<QPushButton*>();
    QCOMPARE(buttons.count(), 1);
    QCOMPARE(buttons.at(0)->text(), QString("Close"));
    QVERIFY(qAbs(buttons.at(0)->geometry().center().x() - dialog.rect().center().x()) <= 1);
}

void ScrollableDialogsTest::theDialogsShowTheIconsOfMessageBoxes()
{
    const auto shows = [](const QDialog& dialog, QStyle::StandardPixmap icon) {
        const QImage expected = dialog.style()->standardPixmap(icon).toImage();
        for (const QLabel* label : dialog.findChildren<QLabel*>()) {
            if (!expected.isNull() && label->pixmap(Qt::ReturnByValue).toImage() == expected) {
                return true;
            }
        }
        return false;
    };
    ScrollableConfirmDialog confirm("Is this ok?", "Yes", "No", nullptr);
    QVERIFY(shows(confirm, QStyle::SP_MessageBoxQuestion));
    ScrollableErrorDialog error("It failed.", nullptr);
    QVERIFY(shows(error, QStyle::SP_MessageBoxCritical));
    QVERIFY(!shows(error, QStyle::SP_MessageBoxQuestion));
}

void ScrollableDialogsTest::eachButtonOfTheConfirmDialogGivesItsAnswer()
{
    ScrollableConfirmDialog confirm("Is this ok?", "Yes", "No", nullptr);
    confirm.show();
    QVERIFY(QTest::qWaitForWindowActive(&confirm, 30000));
    QTest::mouseClick(confirm.findChildren<QPushButton*>().at(0), Qt::LeftButton);
    QCOMPARE(confirm.result(), static_cast<int>(QDialog::Accepted));
    QVERIFY(!confirm.isVisible());

    confirm.show();
    QVERIFY(QTest::qWaitForWindowActive(&confirm, 30000));
    QTest::mouseClick(confirm.findChildren<QPushButton*>().at(1), Qt::LeftButton);
    QCOMPARE(confirm.result(), static_cast<int>(QDialog::Rejected));
    QVERIFY(!confirm.isVisible());

    ScrollableErrorDialog error("It failed.", nullptr);
    error.show();
    QVERIFY(QTest::qWaitForWindowActive(&error, 30000));
    QTest::mouseClick(error.findChild<QPushButton*>(), Qt::LeftButton);
    QCOMPARE(error.result(), static_cast<int>(QDialog::Accepted));
    QVERIFY(!error.isVisible());
}

void ScrollableDialogsTest::enterAcceptsTheQuestionAndEscapeRejectsTheQuestion()
{
    ScrollableConfirmDialog dialog("Is this ok?", "Yes", "No", nullptr);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog, 30000));
    QTest::keyClick(dialog.windowHandle(), Qt::Key_Return);
    QVERIFY(!dialog.isVisible());
    QCOMPARE(dialog.result(), static_cast<int>(QDialog::Accepted));

    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog, 30000));
    QTest::keyClick(dialog.windowHandle(), Qt::Key_Escape);
    QVERIFY(!dialog.isVisible());
    QCOMPARE(dialog.result(), static_cast<int>(QDialog::Rejected));
}

void ScrollableDialogsTest::enterRejectsTheQuestionIfRejectionIsTheDefault()
{
    ScrollableConfirmDialog dialog("Is this ok?", "Yes", "No", nullptr, true);
    dialog.setResult(QDialog::Accepted);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog, 30000));
    QVERIFY(dialog.findChildren<QPushButton*>().at(1)->isDefault());
    QVERIFY(dialog.findChildren<QPushButton*>().at(1)->hasFocus());
    QTest::keyClick(dialog.windowHandle(), Qt::Key_Return);
    QVERIFY(!dialog.isVisible());
    QCOMPARE(dialog.result(), static_cast<int>(QDialog::Rejected));

    // If the user moves the focus to the Yes button, Return presses the Yes button.
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog, 30000));
    dialog.findChildren<QPushButton*>().at(0)->setFocus();
    QTest::keyClick(dialog.windowHandle(), Qt::Key_Return);
    QCOMPARE(dialog.result(), static_cast<int>(QDialog::Accepted));
}

void ScrollableDialogsTest::closingTheConfirmDialogRejectsTheQuestion()
{
    ScrollableConfirmDialog dialog("Is this ok?", "Yes", "No", nullptr);
    dialog.setResult(QDialog::Accepted);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog, 30000));
    dialog.close();
    QCOMPARE(dialog.result(), static_cast<int>(QDialog::Rejected));
}

void ScrollableDialogsTest::theDialogsShowTheirTextsAsPlainText()
{
    const QString text("<b>bold</b>\n<img src=\"/etc/passwd\"> & <h1>large</h1>");
    ScrollableConfirmDialog confirm(text, "Yes", "No", nullptr);
    QCOMPARE(textLabel(confirm)->textFormat(), Qt::PlainText);
    QCOMPARE(textLabel(confirm)->text(), text);
    ScrollableErrorDialog error(text, nullptr);
    QCOMPARE(textLabel(error)->textFormat(), Qt::PlainText);
    QCOMPARE(textLabel(error)->text(), text);
}

void ScrollableDialogsTest::onlyALongWesternTextIsShownWithoutShaping_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<int>("lines");
    QTest::addColumn<bool>("isShaped");
    QTest::newRow("short text") << QString("Upgrade: tool") << 100 << true;
    QTest::newRow("long ASCII text") << QString("\tUpgrade: tool") << 2000 << false;
    QTest::newRow("long German text") << QString::fromUtf8("f\u00fcr: tool") << 2000 << false;
    QTest::newRow("long text with tabs") << QString("Upgrade:\ttool") << 2000 << true;
    QTest::newRow("long text in a script with joined letters")
        << QString::fromUtf8("\u062a\u062d") << 2000 << true;
}

void ScrollableDialogsTest::onlyALongWesternTextIsShownWithoutShaping()
{
    QFETCH(QString, line);
    QFETCH(int, lines);
    QFETCH(bool, isShaped);
    QString text;
    for (int number = 0; number < lines; ++number) {
        text += line + '\n';
    }
    ScrollableConfirmDialog dialog(text, "Yes", "No", nullptr);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog, 30000));
    QCOMPARE(qobject_cast<LongLabel*>(textLabel(dialog)) == nullptr, isShaped);
    const QFont font = textLabel(dialog)->font();
    QCOMPARE((font.styleStrategy() & QFont::PreferNoShaping) == 0, isShaped);
    QCOMPARE(font.family(), dialog.font().family());
    QCOMPARE(font.pointSizeF(), dialog.font().pointSizeF());
}

void ScrollableDialogsTest::aShortTextIsShownWithoutScrollBars()
{
    ScrollableConfirmDialog dialog("Install 3 packages\nRemove 1 package\nIs this ok?", "Yes", "No", nullptr);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog, 30000));
    const HScrollArea* area = dialog.findChild<HScrollArea*>();
    QVERIFY(!area->verticalScrollBar()->isVisible());
    QVERIFY(!area->horizontalScrollBar()->isVisible());
}

void ScrollableDialogsTest::aTextThatFitsOnTheScreenIsShownWithoutScrollBars_data()
{
    QTest::addColumn<QString>("family");
    QTest::newRow("usual font") << QString();
    for (const QString& family : QFontDatabase().families()) {
        const QFontMetrics metrics{QFont(family)};
        if (metrics.lineSpacing() < metrics.height()) {
            QTest::newRow("line spacing smaller than the letters") << family;
            break;
        }
    }
}

void ScrollableDialogsTest::aTextThatFitsOnTheScreenIsShownWithoutScrollBars()
{
    QFETCH(QString, family);
    const FontScope font(family);
    // Qt limits a new window to two thirds of the screen; this text needs more than that.
    const QSize wanted = Metrics::maxWindowSize() * 85 / 100;
    QLabel measured;
    measured.setTextFormat(Qt::PlainText);
    QString line;
    do {
        line += QString(1, 'x');
        measured.setText(line);
    } while (measured.sizeHint().width() < wanted.width());
    QString text = line;
    do {
        text += "\nx";
        measured.setText(text);
    } while (measured.sizeHint().height() < wanted.height());

    ScrollableErrorDialog dialog(text, nullptr);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog, 30000));
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    QVERIFY(dialog.width() > screen.width() * 2 / 3);
    QVERIFY(dialog.height() > screen.height() * 2 / 3);
    const HScrollArea* area = dialog.findChild<HScrollArea*>();
    QVERIFY(!area->horizontalScrollBar()->isVisible());
    QVERIFY(!area->verticalScrollBar()->isVisible());
    QTRY_VERIFY(screen.contains(dialog.frameGeometry()));
}

void ScrollableDialogsTest::aTooLongTextCanBeScrolledInTheDialog_data()
{
    QTest::addColumn<bool>("confirm");
    QTest::newRow("confirm") << true;
    QTest::newRow("error") << false;
}

void ScrollableDialogsTest::aTooLongTextCanBeScrolledInTheDialog()
{
    QFETCH(bool, confirm);
    std::unique_ptr<QDialog> dialog;
    if (confirm) {
        dialog = std::make_unique<ScrollableConfirmDialog>(longText(), "Yes", "No", nullptr);
    } else {
        dialog = std::make_unique<ScrollableErrorDialog>(longText(), nullptr);
    }
    dialog->show();
    QVERIFY(QTest::qWaitForWindowActive(dialog.get(), 30000));
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    QTRY_VERIFY2(screen.contains(dialog->frameGeometry()),
                 qPrintable(QString("%1x%2 at %3,%4")
                                .arg(dialog->frameGeometry().width())
                                .arg(dialog->frameGeometry().height())
                                .arg(dialog->frameGeometry().x())
                                .arg(dialog->frameGeometry().y())));
    const HScrollArea* area = dialog->findChild<HScrollArea*>();
    QVERIFY(area->verticalScrollBar()->isVisible());
    QVERIFY(area->horizontalScrollBar()->isVisible());
    QVERIFY(area->viewport()->height() > 200);
    // The user can scroll to the end of the text.
    const QLabel* label = textLabel(*dialog);
    area->verticalScrollBar()->setValue(area->verticalScrollBar()->maximum());
    QVERIFY(label->y() + label->height() <= area->viewport()->height());
    for (const QPushButton* button : dialog->findChildren<QPushButton*>()) {
        QVERIFY(dialog->rect().contains(button->geometry()));
    }
}

void ScrollableDialogsTest::navigationKeysScrollALongText()
{
    ScrollableConfirmDialog dialog(longText(), "Yes", "No", nullptr);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog, 30000));
    const QScrollBar* scrollBar = dialog.findChild<HScrollArea*>()->verticalScrollBar();
    // Moves the focus with Tab, until the text has the focus and Page Down scrolls it.
    for (int i = 0; i < 4 && scrollBar->value() == 0; ++i) {
        QTest::keyClick(dialog.windowHandle(), Qt::Key_PageDown);
        QTest::keyClick(dialog.windowHandle(), Qt::Key_Tab);
    }
    QVERIFY(scrollBar->value() > 0);
    QVERIFY(dialog.isVisible());
}

void ScrollableDialogsTest::navigationKeysScrollTheTextEvenIfAButtonHasTheFocus()
{
    ScrollableConfirmDialog dialog(longText(), "Yes", "No", nullptr, true);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog, 30000));
    const QScrollBar* scrollBar = dialog.findChild<HScrollArea*>()->verticalScrollBar();
    for (QPushButton* button : dialog.findChildren<QPushButton*>()) {
        button->setFocus();
        QTest::keyClick(dialog.windowHandle(), Qt::Key_End);
        QCOMPARE(scrollBar->value(), scrollBar->maximum());
        QTest::keyClick(dialog.windowHandle(), Qt::Key_Home);
        QCOMPARE(scrollBar->value(), 0);
        QTest::keyClick(dialog.windowHandle(), Qt::Key_End, Qt::ControlModifier);
        QCOMPARE(scrollBar->value(), scrollBar->maximum());
        QTest::keyClick(dialog.windowHandle(), Qt::Key_Home, Qt::ControlModifier);
        QCOMPARE(scrollBar->value(), 0);
        QTest::keyClick(dialog.windowHandle(), Qt::Key_PageDown);
        QCOMPARE(scrollBar->value(), scrollBar->pageStep());
        QTest::keyClick(dialog.windowHandle(), Qt::Key_PageUp);
        QCOMPARE(scrollBar->value(), 0);
        QVERIFY(button->hasFocus());
    }
    QVERIFY(dialog.isVisible());
}

void ScrollableDialogsTest::theNoticeAndTheSummaryAreVisibleEvenIfTheTextIsLong()
{
    ScrollableConfirmDialog dialog(longText(), "OK", "Cancel", nullptr, true, "Removals: <b>2</b>",
                                   "Install: 3 <i>");
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog, 30000));
    const HScrollArea* area = dialog.findChild<HScrollArea*>();
    const QLabel* notice = dialog.findChild<QLabel*>("notice");
    const QLabel* summary = dialog.findChild<QLabel*>("summary");
    QCOMPARE(notice->text(), QString("Removals: <b>2</b>"));
    QCOMPARE(summary->text(), QString("Install: 3 <i>"));
    for (const QLabel* label : {notice, summary}) {
        QCOMPARE(label->textFormat(), Qt::PlainText);
        QVERIFY(dialog.rect().contains(label->geometry()));
        QVERIFY(label->height() >= label->sizeHint().height());
    }
    QVERIFY(notice->geometry().bottom() < area->geometry().top());
    QVERIFY(summary->geometry().top() > area->geometry().bottom());
    QVERIFY(notice->palette().color(notice->backgroundRole()) != dialog.palette().color(QPalette::Window));

    const ScrollableConfirmDialog plain("Go on?", "Yes", "No", nullptr);
    QVERIFY(plain.findChild<QLabel*>("notice") == nullptr);
    QVERIFY(plain.findChild<QLabel*>("summary") == nullptr);
}

void ScrollableDialogsTest::theUserCanSelectAndCopyTheText()
{
    QGuiApplication::clipboard()->clear();
    ScrollableErrorDialog dialog("Traceback: line 17", nullptr);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog, 30000));
    const QLabel* label = textLabel(dialog);
    QWindow* window = dialog.windowHandle();
    const QPoint left = label->mapTo(&dialog, QPoint(0, label->height() / 2));
    const QPoint right = label->mapTo(&dialog, QPoint(label->width() - 1, label->height() / 2));
    QTest::mousePress(window, Qt::LeftButton, Qt::NoModifier, left);
    QTest::mouseMove(window, right);
    QTest::mouseRelease(window, Qt::LeftButton, Qt::NoModifier, right);
    QCOMPARE(label->selectedText(), QString("Traceback: line 17"));
    QTest::keyClick(dialog.windowHandle(), Qt::Key_C, Qt::ControlModifier);
    QTRY_COMPARE(QGuiApplication::clipboard()->text(), QString("Traceback: line 17"));
}

void ScrollableDialogsTest::enterInTheFindFieldFindsTextAndDoesNotAcceptTheDialog()
{
    ScrollableConfirmDialog dialog(longText(), "OK", "Cancel", nullptr);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    QTest::keyClick(&dialog, Qt::Key_F, Qt::ControlModifier);
    auto* bar = dialog.findChild<FindBar*>();
    QTRY_VERIFY(bar->isVisible());
    auto* field = bar->findChild<QLineEdit*>();
    QTest::keyClicks(field, "line 2500");
    QCOMPARE(textLabel(dialog)->selectedText(), QString("line 2500"));
    QVERIFY(dialog.findChild<HScrollArea*>()->verticalScrollBar()->value() > 0);
    QTest::keyClick(field, Qt::Key_Return);
    QTest::keyClick(field, Qt::Key_Escape);
    QVERIFY(dialog.isVisible());
    QVERIFY(!bar->isVisible());
    QTest::keyClick(&dialog, Qt::Key_Escape);
    QCOMPARE(dialog.result(), static_cast<int>(QDialog::Rejected));
}

QTEST_MAIN(ScrollableDialogsTest)
#include "ScrollableDialogsTest.moc"
