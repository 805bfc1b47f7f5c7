// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>
#include <QtWidgets>

#include "tests/repo/ShownForm.h"

// Tests of the form's fields: they show all values of a repository, and return the values that the user
// types.
class RepoEditorConfigFieldsTest : public ShownForm
{
    Q_OBJECT

private Q_SLOTS:
    void disablingTheFormClearsItsFields();
    void theFieldsHaveTheExpectedLabels();
    void eachComboBoxHasThreeItems();
    void theDefaultItemOfEachBoxShowsTheDefaultValue_data();
    void theDefaultItemOfEachBoxShowsTheDefaultValue();
    void theArrowKeysChangeTheSortPositionInWholeSteps();
    void settingAnEntryFillsTheFields();
    void settingAnEntryEmitsNoSignal();
    void theFormReturnsTheValuesOfAnEntryUnchanged_data();
    void theFormReturnsTheValuesOfAnEntryUnchanged();
    void everyTypedChangeIsSignalledAndReturned();
    void optionsAreStoredExactlyAsTheUserTypesThem();
    void theFormReturnsTheExactOriginalValueOfAnUnchangedField();
    void aPastedIdentifierBecomesOneLine();
    void theFormCanBeFilledAgainAfterItWasCleared();
};

void RepoEditorConfigFieldsTest::disablingTheFormClearsItsFields()
{
    config->disable();
    QVERIFY(sameFields(config->toEntry(), Repo::Entry()));
    for (const QWidget* field : form->fields()) {
        QVERIFY2(!field->isEnabled(), qPrintable(field->toolTip()));
    }
    QCOMPARE(form->authNameLabel->text(), QStringLiteral("Name"));
    QCOMPARE(form->passwordLabel->text(), QStringLiteral("Password"));
    QCOMPARE(changes->size(), 0);
}

void RepoEditorConfigFieldsTest::theFieldsHaveTheExpectedLabels()
{
    QStringList labels;
    for (const QLabel* each : window->findChildren<QLabel*>()) {
        labels << each->text();
        QVERIFY(each->isVisible());
    }
    QCOMPARE(labels.size(), 11);
    for (const char* text : {"Identifier", "Name", "URLs", "Mirror list URL", "Password",
                             "Other Options:", "Enabled", "Check GPG Keys", "File", "Sort Position"}) {
        QVERIFY2(labels.contains(QLatin1String(text)), text);
    }
    QCOMPARE(labels.count(QStringLiteral("Name")), 2);
    QStringList groups;
    for (const QGroupBox* each : window->findChildren<QGroupBox*>()) {
        groups << each->title();
    }
    QCOMPARE(groups,
             (QStringList{"Vantor Authentication", "Repository Options", "Configuration File (expert)"}));
    QVERIFY(window->findChildren<QGroupBox*>().at(0)->isAncestorOf(form->password));
    QVERIFY(window->findChildren<QGroupBox*>().at(1)->isAncestorOf(form->gpgcheck));
    QVERIFY(window->findChildren<QGroupBox*>().at(2)->isAncestorOf(form->position));
    QCOMPARE(form->password->echoMode(), QLineEdit::Password);
}

void RepoEditorConfigFieldsTest::eachComboBoxHasThreeItems()
{
    for (const QComboBox* box : {form->enabled, form->gpgcheck}) {
        QCOMPARE(box->count(), 3);
        QCOMPARE(box->itemText(0), QStringLiteral("No"));
        QCOMPARE(box->itemText(1), QStringLiteral("Default"));
        QCOMPARE(box->itemText(2), QStringLiteral("Yes"));
        QVERIFY(!box->isEditable());
    }
}

void RepoEditorConfigFieldsTest::theDefaultItemOfEachBoxShowsTheDefaultValue_data()
{
    QTest::addColumn<bool>("enabled");
    QTest::addColumn<bool>("gpgcheck");
    QTest::addColumn<QStringList>("texts");
    QTest::newRow("yes, no") << true << false << QStringList{"Default (Yes)", "Default (No)"};
    QTest::newRow("no, yes") << false << true << QStringList{"Default (No)", "Default (Yes)"};
}

void RepoEditorConfigFieldsTest::theDefaultItemOfEachBoxShowsTheDefaultValue()
{
    QFETCH(bool, enabled);
    QFETCH(bool, gpgcheck);
    config->setEntry(Repo::Entry());
    config->setDefaults(enabled, gpgcheck);
    QTEST((QStringList{form->enabled->currentText(), form->gpgcheck->currentText()}), "texts");
    QCOMPARE(form->enabled->itemText(0), QStringLiteral("No"));
    QCOMPARE(form->enabled->itemText(2), QStringLiteral("Yes"));
    QCOMPARE(config->toEntry().enabled, 1);
    QCOMPARE(config->toEntry().gpgcheck, 1);
    QCOMPARE(changes->size(), 0);
}

void RepoEditorConfigFieldsTest::theArrowKeysChangeTheSortPositionInWholeSteps()
{
    QCOMPARE(form->position->decimals(), 1);
    QCOMPARE(form->position->singleStep(), 1.0);
    QCOMPARE(form->position->minimum(), 0.0);
    QCOMPARE(form->position->value(), 0.0);
    config->setEntry(usual());
    QTest::keyClick(form->position, Qt::Key_Up);
    QCOMPARE(config->toEntry().position, 4.0);
    Form::type(form->position->findChild<QLineEdit*>(), QStringLiteral("1.5"));
    QCOMPARE(config->toEntry().position, 1.5);
}

void RepoEditorConfigFieldsTest::settingAnEntryFillsTheFields()
{
    config->setEntry(usual());
    QCOMPARE(form->id->text(), usual().id);
    QCOMPARE(form->name->text(), usual().name);
    QCOMPARE(form->urls->realPlainText(), usual().baseurl);
    QCOMPARE(form->urls->toPlainText(), usual().baseurl);
    QCOMPARE(form->mirrorList->realText(), usual().mirrorlist);
    QCOMPARE(form->enabled->currentIndex(), 2);
    QCOMPARE(form->gpgcheck->currentIndex(), 0);
    QCOMPARE(form->options->toPlainText(), usual().options);
    QCOMPARE(form->file->text(), usual().file);
    QCOMPARE(form->position->value(), 3.0);
    for (const QWidget* field : form->fields()) {
        QCOMPARE(field->isEnabled(), field != form->authName && field != form->password);
    }
}

void RepoEditorConfigFieldsTest::settingAnEntryEmitsNoSignal()
{
    config->setEntry(vantor());
    config->setEntry(usual());
    config->disable();
    QCOMPARE(changes->size(), 0);
}

void RepoEditorConfigFieldsTest::theFormReturnsTheValuesOfAnEntryUnchanged_data()
{
    QTest::addColumn<QString>("options");
    QTest::addColumn<QString>("url");
    QTest::addColumn<double>("position");
    QTest::newRow("usual") << usual().options << usual().baseurl << 1.0;
    QTest::newRow("credentials") << usual().options << vantor().baseurl << 1.0;
    QTest::newRow("carriage returns") << "a=b\r\nc=d\r\n"
                                      << "http://h/x\r" << 1.0;
    QTest::newRow("continued options") << "a=b\n\tc\n  d\n"
                                       << "http://h/x" << 1.0;
    QTest::newRow("bytes of an accented letter")
        << QString::fromLatin1("#voil\xc3\xa0\n") << "http://h/x" << 1.0;
    QTest::newRow("a fractional position") << usual().options << "http://h/x" << 1.25;
    QTest::newRow("a large position") << usual().options << "http://h/x" << 250.0;
    QTest::newRow("separators") << QString(QChar(0x2028)) + QChar(0x2029) << "http://h/x" << 0.0;
}

void RepoEditorConfigFieldsTest::theFormReturnsTheValuesOfAnEntryUnchanged()
{
    QFETCH(QString, options);
    QFETCH(QString, url);
    QFETCH(double, position);
    Repo::Entry entry = usual();
    entry.options = options;
    entry.baseurl = url;
    entry.position = position;
    entry.name = QString(40000, QLatin1Char('n')) + QStringLiteral("\n continued\r");
    entry.mirrorlist = QString(40000, QLatin1Char('m'));
    config->setEntry(entry);
    QVERIFY(sameFields(config->toEntry(), entry));
}

void RepoEditorConfigFieldsTest::everyTypedChangeIsSignalledAndReturned()
{
    config->setEntry(usual());
    Repo::Entry expected = usual();
    const auto typed = [this](QWidget* field, const QString& text) {
        changes->clear();
        field->setFocus();
        QTest::keyClick(field, Qt::Key_End);
        QTest::keyClicks(field, text);
        QCOMPARE(changes->size(), text.size());
    };
    typed(form->id, QStringLiteral("-2"));
    expected.id += QStringLiteral("-2");
    typed(form->name, QStringLiteral("!"));
    expected.name += QLatin1Char('!');
    typed(form->urls, QStringLiteral("x"));
    expected.baseurl = QStringLiteral("http://h/onex\nhttp://h/two");
    typed(form->mirrorList, QStringLiteral("yz"));
    expected.mirrorlist += QStringLiteral("yz");
    typed(form->options, QStringLiteral("0"));
    expected.options = QStringLiteral("metadata_expire=6h0\n# note\n");
    typed(form->file, QStringLiteral("x"));
    expected.file += QLatin1Char('x');
    changes->clear();
    form->enabled->setFocus();
    QTest::keyClick(form->enabled, Qt::Key_Up);
    QCOMPARE(changes->size(), 1);
    expected.enabled = 1;
    QTest::keyClick(form->gpgcheck, Qt::Key_Down);
    QCOMPARE(changes->size(), 2);
    expected.gpgcheck = 1;
    QTest::keyClick(form->position, Qt::Key_Down);
    QCOMPARE(changes->size(), 3);
    expected.position = 2.0;
    QVERIFY(sameFields(config->toEntry(), expected));
}

void RepoEditorConfigFieldsTest::optionsAreStoredExactlyAsTheUserTypesThem()
{
    config->setEntry(Repo::Entry());
    Form::type(form->options, QStringLiteral("a=b\n\n c=<i>d"));
    QCOMPARE(config->toEntry().options, QStringLiteral("a=b\n\n c=<i>d"));
}

void RepoEditorConfigFieldsTest::theFormReturnsTheExactOriginalValueOfAnUnchangedField()
{
    Repo::Entry entry = usual();
    entry.options = QString::fromLatin1("a=b\r\n#voil\xc3\xa0\n");
    entry.name = QStringLiteral("Updates\r");
    config->setEntry(entry);
    form->options->setFocus();
    QTest::keyClick(form->options, Qt::Key_End, Qt::ControlModifier);
    QTest::keyClicks(form->options, QStringLiteral("c=d"));
    entry.options = QString::fromLatin1("a=b\n#voil\xc3\xa0\nc=d");
    QVERIFY(sameFields(config->toEntry(), entry));
}

void RepoEditorConfigFieldsTest::aPastedIdentifierBecomesOneLine()
{
    config->setEntry(Repo::Entry());
    QGuiApplication::clipboard()->setText(QStringLiteral("updates\n"));
    form->id->setFocus();
    QTest::keySequence(form->id, QKeySequence(QKeySequence::Paste));
    QCOMPARE(config->toEntry().id, QStringLiteral("updates"));
}

void RepoEditorConfigFieldsTest::theFormCanBeFilledAgainAfterItWasCleared()
{
    config->setEntry(vantor());
    config->disable();
    QVERIFY(sameFields(config->toEntry(), Repo::Entry()));
    QVERIFY(form->password->text().isEmpty());
    config->setEntry(vantor());
    QVERIFY(sameFields(config->toEntry(), vantor()));
    QVERIFY(form->id->isEnabled());
    // setEntry() clears the undo history, so Undo does not restore the values of the previous entry.
    config->setEntry(usual());
    for (QWidget* field : {static_cast<QWidget*>(form->urls), static_cast<QWidget*>(form->mirrorList),
                           static_cast<QWidget*>(form->options), static_cast<QWidget*>(form->id)}) {
        field->setFocus();
        QTest::keySequence(field, QKeySequence(QKeySequence::Undo));
    }
    QVERIFY(sameFields(config->toEntry(), usual()));
}

QTEST_MAIN(RepoEditorConfigFieldsTest)
#include "RepoEditorConfigFieldsTest.moc"
