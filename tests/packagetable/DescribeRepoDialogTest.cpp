// SPDX-License-Identifier: GPL-2.0-or-later

#include "packagetable/DescribeRepoDialog.h"

#include <QtTest>
#include <QtWidgets>

#include "app/base/Fonts.h"
#include "app/base/Share.h"
#include "tests/packagetable/ShownDescription.h"
#include "tests/repo/Assistive.h"
#include "tests/support/Buttons.h"

class DescribeRepoDialogTest : public ShownDescription
{
    Q_OBJECT

private Q_SLOTS:
    void theDetailsShowTheRepositoryOfThePackage();
    void theDetailsButtonShowsAMessageIfTheRepositoryIsNotConfigured();
    void passwordsInTheDetailsAreMaskedAndMarkupIsShownAsPlainText();
    void openingTheDetailsAgainReplacesTheFormerDetails();
    void theKeysScrollTheUrlsWhileAButtonHasTheFocus();
    void theBrowseButtonOpensTheUrlOfTheRepositoryInTheBrowser();
    void theBrowseButtonShowsAMessageIfTheRepositoryHasNoUrl();

private:
    // The texts of all labels in the description of the repository from which the package comes.
    QStringList repositoryOf(const QString& name)
    {
        QStringList found;
        describe(name, [&found](Dialog& shown) {
            withDialog<RepoDialog>([&shown] { press(buttonBeside(shown, "Repository")); },
                                   [&found](RepoDialog& details) {
                                       for (const QLabel* label : details.findChildren<QLabel*>()) {
                                           found << label->text();
                                       }
                                   });
        });
        return found;
    }
    // Calls `action`, which opens a message box. Returns the title and the text of this box.
    static QStringList messageOf(const std::function<void()>& action)
    {
        QStringList found;
        withDialog<QMessageBox>(action, [&found](QMessageBox& box) {
            found << box.windowTitle() << box.text();
            QTest::mouseClick(box.button(QMessageBox::Ok), Qt::LeftButton);
        });
        return found;
    }
};

void DescribeRepoDialogTest::theDetailsShowTheRepositoryOfThePackage()
{
    available({{"repoid", "base"}});
    repo("other", "not this one", "http://other", "");
    repo("base", "The base", "http://one/\nhttp://two/", "http://mirrors");
    QCOMPARE(repositoryOf("it"), (QStringList{"base", "Name", "The base", "URLs", "http://one/\nhttp://two/",
                                              "Mirror list URL", "http://mirrors"}));
    describe("it", [](Dialog& shown) {
        withDialog<RepoDialog>(
            [&shown] { press(buttonBeside(shown, "Repository")); },
            [](RepoDialog& details) {
                QCOMPARE(details.windowTitle(), QString("VYRE Repository Description"));
                QVERIFY(details.isModal());
                QLabel* header = details.findChild<QLabel*>();
                QCOMPARE(header->text(), QString("base"));
                QCOMPARE(header->font(), Fonts::makeHeader(QApplication::font("QLabel")));
                QCOMPARE(buttonOf(&details, "Browse Repository")->toolTip(),
                         QString("Browse the first URL specified for the selected repository using an "
                                 "external web browser"));
                press(buttonOf(&details, "Close"));
                QVERIFY(!details.isVisible());
                QCOMPARE(details.result(), int(QDialog::Accepted));
            });
    });
}

void DescribeRepoDialogTest::theDetailsButtonShowsAMessageIfTheRepositoryIsNotConfigured()
{
    available({{"repoid", "<b>gone</b>"}});
    repo("base", "", "http://one/", "");
    describe("it", [](Dialog& shown) {
        QCOMPARE(messageOf([&shown] { press(buttonBeside(shown, "Repository")); }),
                 (QStringList{"Error", "There is no configured repository \"<b>gone</b>\""}));
        QVERIFY(shown.isVisible());
    });
    // If VYRE has read no configuration, the button also shows a message.
    conf.reset();
    describe("it", [](Dialog& shown) {
        QCOMPARE(messageOf([&shown] { press(buttonBeside(shown, "Repository")); }).count(), 2);
    });
}

void DescribeRepoDialogTest::passwordsInTheDetailsAreMaskedAndMarkupIsShownAsPlainText()
{
    available({{"repoid", "base"}});
    repo("base", markup, "https://me:secret@h/\nhttp://h/vantor?u=me&p=hidden&path=x", "http://a:b1@h/");
    const QStringList shown = repositoryOf("it");
    QCOMPARE(shown.value(2), QString(markup));
    const QString dot(QChar(0x25cf));
    QCOMPARE(shown.value(4),
             "https://me:" + dot.repeated(6) + "@h/\nhttp://h/vantor?u=me&p=" + dot.repeated(6) + "&path=x");
    QCOMPARE(shown.value(6), "http://a:" + dot.repeated(2) + "@h/");
    describe("it", [](Dialog& description) {
        withDialog<RepoDialog>(
            [&description] { press(buttonBeside(description, "Repository")); },
            [&description](RepoDialog& details) {
                const QStringList texts = readableTexts(&details) + readableTexts(&description);
                QVERIFY(texts.contains("Mirror list URL"));
                for (const QString& text : texts) {
                    QVERIFY2(!text.contains(QRegExp("secret|hidden|b1")), qPrintable(text));
                }
            });
    });
}

void DescribeRepoDialogTest::openingTheDetailsAgainReplacesTheFormerDetails()
{
    available({{"repoid", "base"}});
    repo("base", "", "http://one/", "");
    describe("it", [this](Dialog& shown) {
        for (const char* url : {"http://one/", "http://two/"}) {
            conf->entries.first().baseurl = QLatin1String(url);
            QStringList texts;
            withDialog<RepoDialog>([&shown] { press(buttonBeside(shown, "Repository")); },
                                   [&texts](RepoDialog& details) {
                                       for (const QLabel* label : details.findChildren<QLabel*>()) {
                                           texts << label->text();
                                       }
                                   });
            QCOMPARE(texts, (QStringList{"base", "URLs", url}));
        }
        QCOMPARE(shown.findChildren<RepoDialog*>().count(), 1);
        QCOMPARE(shown.findChild<RepoDialog*>()->findChildren<QLabel*>().count(), 0);
    });
}

void DescribeRepoDialogTest::theKeysScrollTheUrlsWhileAButtonHasTheFocus()
{
    available({{"repoid", "base"}});
    QStringList urls;
    for (int number = 0; number < 200; ++number) {
        urls << QString("http://mirror%1/").arg(number);
    }
    repo("base", "The base", urls.join(QLatin1Char('\n')), "");
    describe("it", [](Dialog& shown) {
        withDialog<RepoDialog>([&shown] { press(buttonBeside(shown, "Repository")); },
                               [](RepoDialog& details) {
                                   QVERIFY(QTest::qWaitForWindowActive(&details));
                                   const QScrollBar* bar =
                                       details.findChild<QScrollArea*>()->verticalScrollBar();
                                   QVERIFY(bar->maximum() > bar->pageStep());
                                   const auto placeAfter = [&details, bar](Qt::Key key) {
                                       QTest::keyClick(details.focusWidget(), key);
                                       return bar->value();
                                   };
                                   QCOMPARE(placeAfter(Qt::Key_End), bar->maximum());
                                   QCOMPARE(placeAfter(Qt::Key_Home), 0);
                                   QCOMPARE(placeAfter(Qt::Key_PageDown), bar->pageStep());
                               });
    });
}

void DescribeRepoDialogTest::theBrowseButtonOpensTheUrlOfTheRepositoryInTheBrowser()
{
    const QString browser = Share::absolute("webbrowser");
    QFile program(browser);
    QVERIFY(program.open(QIODevice::WriteOnly));
    program.write("#!/bin/sh\nprintf '%s\\n' \"$@\" > \"$0.part\" && mv \"$0.part\" \"$0.called\"\n");
    program.close();
    QVERIFY(program.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
    available({{"repoid", "base"}});
    repo("base", "", "http://me:secret@h/$basearch/\nhttp://two/", "");
    describe("it", [](Dialog& shown) {
        withDialog<RepoDialog>([&shown] { press(buttonBeside(shown, "Repository")); },
                               [](RepoDialog& details) { press(buttonOf(&details, "Browse Repository")); });
    });
    QTRY_VERIFY(QFile::exists(browser + ".called"));
    QFile called(browser + ".called");
    QVERIFY(called.open(QIODevice::ReadOnly));
    QCOMPARE(called.readAll(), QByteArray("http://h/x86_64/\n"));
}

void DescribeRepoDialogTest::theBrowseButtonShowsAMessageIfTheRepositoryHasNoUrl()
{
    available({{"repoid", "base"}});
    repo("base", "name", "", "");
    describe("it", [](Dialog& shown) {
        withDialog<RepoDialog>(
            [&shown] { press(buttonBeside(shown, "Repository")); },
            [](RepoDialog& details) {
                QCOMPARE(messageOf([&details] { press(buttonOf(&details, "Browse Repository")); }),
                         (QStringList{"Error", "Repository configuration has no URL"}));
            });
    });
}

QTEST_MAIN(DescribeRepoDialogTest)
#include "DescribeRepoDialogTest.moc"
