// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>
#include <QtWidgets>

#include "tests/repo/Assistive.h"
#include "tests/repo/ShownForm.h"

// Tests of the credentials in the form. Fields of their own show the name and the password; every other text
// masks the password.
class RepoEditorConfigCredentialsTest : public ShownForm
{
    Q_OBJECT

private Q_SLOTS:
    void theFormShowsTheNameAndThePasswordOfTheUrlsInSeparateFields();
    void theFieldsAreDisabledIfTheUrlHasNoCredentials();
    void theFieldsShowCredentialsThatOnlyTheMirrorListHas();
    void typingAUrlWithCredentialsEnablesTheFields();
    void changingThePasswordInTheUrlChangesThePasswordField();
    void aTypedPasswordChangesEveryCredentialUrl();
    void aTypedNameChangesEveryCredentialUrl();
    void typingANameDoesNotMoveTheCursorInItsField();
    void theLabelsAreNameAndPasswordIfTheParameterNamesInTheUrlAreEmpty();
    void theLabelsShowTheParameterNamesAsPlainTextWithoutShortcuts();
    void noVisibleTextOrToolTipContainsThePassword();
    void passwordsInTheUrlsAndTheOptionsAreMasked();
    void optionsWithAPasswordCanBeEdited();
    void typingInFieldsWithHugeTextsDoesNotBlockTheForm();
    void assistiveProgramsDoNotGetThePassword();
};

void RepoEditorConfigCredentialsTest::theFormShowsTheNameAndThePasswordOfTheUrlsInSeparateFields()
{
    config->setEntry(vantor());
    QCOMPARE(form->authNameLabel->text(), QStringLiteral("user"));
    QCOMPARE(form->authName->text(), QStringLiteral("bob"));
    QCOMPARE(form->passwordLabel->text(), QStringLiteral("word"));
    QCOMPARE(form->password->text(), QStringLiteral("secret"));
    QVERIFY(form->authName->isEnabled());
    QVERIFY(form->password->isEnabled());
    QCOMPARE(form->urls->toPlainText(), QString::fromUtf8("http://h/vantor?user=bob&word=●●●●●●&path=/x\n"
                                                          "http://k/vantor?user=bob&word=●●●●●●&path=y"));
    QCOMPARE(form->mirrorList->text(), QString::fromUtf8("http://m/vantor?user=bob&word=●●●●●●&path=/list"));
    QVERIFY(sameFields(config->toEntry(), vantor()));
}

void RepoEditorConfigCredentialsTest::theFieldsAreDisabledIfTheUrlHasNoCredentials()
{
    config->setEntry(vantor());
    config->setEntry(usual());
    QCOMPARE(form->authNameLabel->text(), QStringLiteral("Name"));
    QCOMPARE(form->passwordLabel->text(), QStringLiteral("Password"));
    QVERIFY(form->authName->text().isEmpty());
    QVERIFY(form->password->text().isEmpty());
    QVERIFY(!form->authName->isEnabled());
    QVERIFY(!form->password->isEnabled());
}

void RepoEditorConfigCredentialsTest::theFieldsShowCredentialsThatOnlyTheMirrorListHas()
{
    Repo::Entry entry = usual();
    entry.mirrorlist = vantorUrl;
    config->setEntry(entry);
    QCOMPARE(form->authName->text(), QStringLiteral("bob"));
    Form::type(form->password, QStringLiteral("new"));
    QCOMPARE(config->toEntry().mirrorlist, QStringLiteral("http://h/vantor?user=bob&word=new&path=/x"));
    QCOMPARE(config->toEntry().baseurl, usual().baseurl);
}

void RepoEditorConfigCredentialsTest::typingAUrlWithCredentialsEnablesTheFields()
{
    config->setEntry(Repo::Entry());
    Form::type(form->urls, QStringLiteral("http://h/vantor?u=a%20b&p=pw&path"));
    QVERIFY(!form->authName->isEnabled());
    QTest::keyClicks(form->urls, QStringLiteral("="));
    QVERIFY(form->authName->isEnabled());
    QVERIFY(form->password->isEnabled());
    QCOMPARE(form->authNameLabel->text(), QStringLiteral("u"));
    QCOMPARE(form->authName->text(), QStringLiteral("a b"));
    QCOMPARE(form->password->text(), QStringLiteral("pw"));
    QTest::keyClick(form->urls, Qt::Key_Backspace);
    QVERIFY(!form->password->isEnabled());
    QVERIFY(form->password->text().isEmpty());
    QCOMPARE(form->passwordLabel->text(), QStringLiteral("Password"));
    Form::type(form->urls, QString());
    Form::type(form->mirrorList, QStringLiteral("http://h/vantor?u=eve&p=pw&path=/l"));
    QCOMPARE(form->authName->text(), QStringLiteral("eve"));
}

void RepoEditorConfigCredentialsTest::changingThePasswordInTheUrlChangesThePasswordField()
{
    config->setEntry(vantor());
    form->urls->setFocus();
    QTest::keyClick(form->urls, Qt::Key_Home, Qt::ControlModifier);
    for (int i = 0; i < vantorUrl.indexOf(QStringLiteral("secret")); ++i) {
        QTest::keyClick(form->urls, Qt::Key_Right);
    }
    // The typed letter is masked, so the URL field looks the same as before.
    QTest::keyClick(form->urls, Qt::Key_Right, Qt::ShiftModifier);
    QTest::keyClicks(form->urls, QStringLiteral("S"));
    QCOMPARE(form->password->text(), QStringLiteral("Secret"));
    QCOMPARE(changes->size(), 1);
    QVERIFY(config->toEntry().baseurl.startsWith(QStringLiteral("http://h/vantor?user=bob&word=Secret&")));
}

void RepoEditorConfigCredentialsTest::aTypedPasswordChangesEveryCredentialUrl()
{
    config->setEntry(vantor());
    changes->clear();
    form->password->setFocus();
    QTest::keyClick(form->password, Qt::Key_End);
    QTest::keyClicks(form->password, QStringLiteral("&1"));
    QCOMPARE(changes->size(), 2);
    QCOMPARE(config->toEntry().baseurl, QStringLiteral("http://h/vantor?user=bob&word=secret%261&path=/x\n"
                                                       "http://k/vantor?user=bob&word=secret%261&path=y"));
    QCOMPARE(config->toEntry().mirrorlist,
             QStringLiteral("http://m/vantor?user=bob&word=secret%261&path=/list"));
    // The URL contains the password as "secret%261", so 10 characters are masked.
    QCOMPARE(form->urls->toPlainText(), QString::fromUtf8("http://h/vantor?user=bob&word=●●●●●●●●●●&path=/x\n"
                                                          "http://k/vantor?user=bob&word=●●●●●●●●●●&path=y"));
    QCOMPARE(form->mirrorList->text(),
             QString::fromUtf8("http://m/vantor?user=bob&word=●●●●●●●●●●&path=/list"));
    QCOMPARE(form->password->text(), QStringLiteral("secret&1"));
    Form::type(form->password, QString());
    QCOMPARE(config->toEntry().mirrorlist, QStringLiteral("http://m/vantor?user=bob&word=&path=/list"));
    QTest::keyClicks(form->password, QStringLiteral("x"));
    QCOMPARE(config->toEntry().mirrorlist, QStringLiteral("http://m/vantor?user=bob&word=x&path=/list"));
}

void RepoEditorConfigCredentialsTest::aTypedNameChangesEveryCredentialUrl()
{
    config->setEntry(vantor());
    Form::type(form->authName, QStringLiteral("a b"));
    QCOMPARE(config->toEntry().baseurl, QStringLiteral("http://h/vantor?user=a%20b&word=secret&path=/x\n"
                                                       "http://k/vantor?user=a%20b&word=secret&path=y"));
    QCOMPARE(config->toEntry().mirrorlist,
             QStringLiteral("http://m/vantor?user=a%20b&word=secret&path=/list"));
    QCOMPARE(form->authName->text(), QStringLiteral("a b"));
    QCOMPARE(form->password->text(), QStringLiteral("secret"));
}

void RepoEditorConfigCredentialsTest::typingANameDoesNotMoveTheCursorInItsField()
{
    config->setEntry(vantor());
    form->authName->setFocus();
    QTest::keyClick(form->authName, Qt::Key_Home);
    QTest::keyClicks(form->authName, QStringLiteral("xy"));
    QCOMPARE(form->authName->text(), QStringLiteral("xybob"));
    QCOMPARE(form->authName->cursorPosition(), 2);
}

void RepoEditorConfigCredentialsTest::theLabelsAreNameAndPasswordIfTheParameterNamesInTheUrlAreEmpty()
{
    Repo::Entry entry = usual();
    entry.baseurl = QStringLiteral("http://h/vantor?=bob&=secret&path=/x");
    config->setEntry(entry);
    QCOMPARE(form->authNameLabel->text(), QStringLiteral("Name"));
    QCOMPARE(form->passwordLabel->text(), QStringLiteral("Password"));
    QCOMPARE(form->password->text(), QStringLiteral("secret"));
    QVERIFY(form->password->isEnabled());
}

void RepoEditorConfigCredentialsTest::theLabelsShowTheParameterNamesAsPlainTextWithoutShortcuts()
{
    Repo::Entry entry = usual();
    entry.baseurl = QStringLiteral("http://h/vantor?<b>u%26x</b>=bob&%26p=secret&path=/x");
    config->setEntry(entry);
    QCOMPARE(form->authNameLabel->text(), QStringLiteral("<b>u&x</b>"));
    QCOMPARE(form->authNameLabel->textFormat(), Qt::PlainText);
    QVERIFY(form->authNameLabel->buddy() == nullptr);
    QVERIFY(form->passwordLabel->buddy() == nullptr);
    const int width = window->minimumSizeHint().width();
    entry.baseurl =
        QStringLiteral("http://h/vantor?%1=bob&%1=secret&path=/x").arg(QString(500, QLatin1Char('k')));
    config->setEntry(entry);
    QVERIFY(window->minimumSizeHint().width() < width + 500);
}

void RepoEditorConfigCredentialsTest::noVisibleTextOrToolTipContainsThePassword()
{
    config->setEntry(vantor());
    config->setStatus(conf.get(), label.get());
    for (const QString& typed : {QString(), QStringLiteral("secret2")}) {
        if (!typed.isEmpty()) {
            Form::type(form->password, typed);
        }
        const QStringList texts = readableTexts(window.get()) + readableTexts(label.get());
        QVERIFY(texts.contains(form->urls->toPlainText()));
        for (const QString& text : texts) {
            QVERIFY2(!text.contains(QStringLiteral("secret")), qPrintable(text));
        }
    }
    // After Undo, the password is still masked.
    form->password->setFocus();
    QTest::keySequence(form->password, QKeySequence(QKeySequence::Undo));
    form->urls->setFocus();
    QTest::keySequence(form->urls, QKeySequence(QKeySequence::Undo));
    for (const QString& text : readableTexts(window.get())) {
        QVERIFY2(!text.contains(QStringLiteral("secret")), qPrintable(text));
    }
}

void RepoEditorConfigCredentialsTest::passwordsInTheUrlsAndTheOptionsAreMasked()
{
    const Repo::Entry entry = withPasswords();
    config->setEntry(entry);
    QCOMPARE(form->urls->toPlainText(),
             QString::fromUtf8("http://joe:●●●●●●@h/x\nhttp://h/?password=●●●●●●&x=y"));
    QCOMPARE(form->mirrorList->text(), QString::fromUtf8("https://joe:●●●●●●@m/"));
    QCOMPARE(form->options->toPlainText(),
             QString::fromUtf8("proxy=http://me:●●●●●●@p:3120\nproxy_username=me\nproxy_password = ●●●●●●\n"
                               "username=joe\npassword=●●●●●●\n  ●●●●●●\nretries=1\n"));
    QVERIFY(sameFields(config->toEntry(), entry));
}

void RepoEditorConfigCredentialsTest::optionsWithAPasswordCanBeEdited()
{
    Repo::Entry entry = withPasswords();
    entry.options = QStringLiteral("password=secret\nretries=1\n");
    config->setEntry(entry);
    form->options->setFocus();
    QTest::keyClick(form->options, Qt::Key_Home, Qt::ControlModifier);
    for (int i = 0; i < QStringLiteral("password=se").size(); ++i) {
        QTest::keyClick(form->options, Qt::Key_Right);
    }
    QTest::keyClicks(form->options, QStringLiteral("XY"));
    QCOMPARE(config->toEntry().options, QStringLiteral("password=seXYcret\nretries=1\n"));
    QCOMPARE(form->options->toPlainText(), QString::fromUtf8("password=●●●●●●●●\nretries=1\n"));
    QTest::keySequence(form->options, QKeySequence(QKeySequence::SelectAll));
    QTest::keySequence(form->options, QKeySequence(QKeySequence::Copy));
    QCOMPARE(QGuiApplication::clipboard()->text(), form->options->toPlainText());
    QTest::keySequence(form->options, QKeySequence(QKeySequence::Undo));
    QTest::keySequence(form->options, QKeySequence(QKeySequence::Undo));
    QVERIFY(sameFields(config->toEntry(), entry));
    Form::type(form->options, QStringLiteral("password: 12\na=b"));
    QCOMPARE(config->toEntry().options, QStringLiteral("password: 12\na=b"));
    QCOMPARE(form->options->toPlainText(), QString::fromUtf8("password: ●●\na=b"));
}

void RepoEditorConfigCredentialsTest::typingInFieldsWithHugeTextsDoesNotBlockTheForm()
{
    Repo::Entry entry = vantor();
    entry.baseurl += QLatin1Char('\n') + QStringLiteral("/vantor?").repeated(16000);
    entry.mirrorlist = QStringLiteral("/vantor?a=").repeated(16000);
    entry.options = QStringLiteral("password=/vantor?a=&://u:p@h/").repeated(3000);
    const auto typeAtEnd = [](QWidget* field) {
        field->setFocus();
        QTest::keyClick(field, Qt::Key_End, Qt::ControlModifier);
        QTest::keyClick(field, Qt::Key_End);
        QTest::keyClicks(field, QStringLiteral("x"));
    };
    QElapsedTimer timer;
    timer.start();
    config->setEntry(entry);
    typeAtEnd(form->password);
    typeAtEnd(form->mirrorList);
    typeAtEnd(form->options);
    QVERIFY2(timer.elapsed() < 20000, qPrintable(QString::number(timer.elapsed())));
    QVERIFY(config->toEntry().baseurl.startsWith(
        QStringLiteral("http://h/vantor?user=bob&word=secretx&path=/x")));
}

void RepoEditorConfigCredentialsTest::assistiveProgramsDoNotGetThePassword()
{
    reportedTexts.clear();
    QAccessible::installUpdateHandler(recordReport);
    config->setEntry(withPasswords());
    Form::type(form->options, QStringLiteral("password=789"));
    config->setEntry(vantor());
    Form::type(form->password, QStringLiteral("789"));
    QAccessible::installUpdateHandler(nullptr);
    QVERIFY(reportsAsExpected());
    QStringList texts = reportedTexts;
    collectTexts(QAccessible::queryAccessibleInterface(window.get()), texts);
    QVERIFY(texts.contains(form->urls->toPlainText()));
    for (const QString& text : qAsConst(texts)) {
        QVERIFY2(!text.contains(QRegExp(QStringLiteral("secret|7|8|9"))), qPrintable(text));
    }
}

QTEST_MAIN(RepoEditorConfigCredentialsTest)
#include "RepoEditorConfigCredentialsTest.moc"
