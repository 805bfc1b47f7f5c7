// SPDX-License-Identifier: GPL-2.0-or-later

#include "repo/RepoEditorConfigDialog.h"

#include <QtTest>
#include <QtWidgets>

#include <functional>
#include <memory>

#include "repo/YumConfIO.h"
#include "tests/repo/Form.h"
#include "tests/support/AnsweringUser.h"
#include "tests/support/Buttons.h"
#include "tests/support/EnvironmentVariable.h"
#include "widgets/Colors.h"
#include "widgets/HFrameLabel.h"

class RepoEditorConfigDialogTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void theWindowHasTheExpectedContents();
    void theFormFitsASmallScreen();
    void theIdentifierHasTheFocusWheneverTheFormOpens();
    void tabGoesThroughTheFieldsInOrder();
    void theBoxesShowTheDefaultsOfTheMainSection();
    void okHasTheSameResultAsCancelIfNothingHasChanged();
    void okStoresTheEditedEntryAndTheSessionState_data();
    void okStoresTheEditedEntryAndTheSessionState();
    void aNewIdentifierDoesNotChangeTheSessionStateOfTheOldIdentifier();
    void anUnspecifiedValueStaysUnspecifiedIfItsBoxIsNotChanged();
    void okIsEnabledIfTheStatusIsOnlyAWarning();
    void okIsDisabledIfTheRepositoryCannotBeWritten();
    void theCancelButtonStoresNothing();
    void closingAnUnchangedFormAsksNoQuestion_data();
    void closingAnUnchangedFormAsksNoQuestion();
    void closingAChangedFormAsksWhetherToDiscardTheChanges_data();
    void closingAChangedFormAsksWhetherToDiscardTheChanges();
    void theResetButtonRestoresTheOriginalValues();
    void theReturnKeyInAFieldDoesNotPressOk();
    void theStatusLineChangesWithTheValuesInTheFields();
    void theFormCanBeUsedForSeveralRepositoriesInTurn();

private:
    // Opens the dialog for the entry. The function `use` acts as the user, and closes the dialog.
    int run(const std::function<void()>& use)
    {
        bool used = false;
        dialog->setEntry(&entry);
        QTimer::singleShot(0, dialog.get(), [this, &use, &used] {
            used = waitForFocus(dialog.get());
            use();
            if (dialog->isVisible()) {
                click("Cancel");
            }
        });
        const int result = dialog->exec();
        used = waitForFocus(window.get()) && used;
        return used ? result : -1;
    }
    void click(const char* text) const { QTest::mouseClick(buttonOf(dialog.get(), text), Qt::LeftButton); }
    void closeForm(bool byEscape) const
    {
        if (byEscape) {
            QTest::keyClick(form->urls, Qt::Key_Escape);
        } else {
            dialog->close();
        }
    }
    QString status() const { return dialog->findChild<HFrameLabel*>()->text(); }

    QTemporaryDir root;
    EnvironmentVariable managedRoot{"VYREROOT"};
    QList<YumRepoEnabled> requests;
    QHash<QString, bool> session;
    std::unique_ptr<YumConfIO> conf;
    std::unique_ptr<QWidget> window;
    std::unique_ptr<RepoEditor::ConfigDialog> dialog;
    std::unique_ptr<Form> form;
    Repo::Entry entry;
};

void RepoEditorConfigDialogTest::init()
{
    managedRoot.set(QFile::encodeName(root.path()));
    session.clear();
    conf = std::make_unique<YumConfIO>(requests, session);
    conf->reposdir = QStringList{QStringLiteral("/etc/yum.repos.d")};
    conf->enabled = true;
    conf->gpgcheck = false;
    window = std::make_unique<QWidget>();
    window->resize(200, 100);
    window->show();
    QVERIFY(waitForFocus(window.get()));
    dialog = std::make_unique<RepoEditor::ConfigDialog>(conf.get(), window.get());
    form = std::make_unique<Form>(dialog.get());
    entry = Repo::Entry();
    entry.id = QStringLiteral("updates");
    entry.baseurl = QStringLiteral("http://h/vantor?user=bob&word=secret&path=/x");
    entry.file = QStringLiteral("/etc/yum.repos.d/updates.repo");
    entry.position = 1.0;
}

void RepoEditorConfigDialogTest::cleanup()
{
    form.reset();
    dialog.reset();
    window.reset();
    conf.reset();
}

void RepoEditorConfigDialogTest::theWindowHasTheExpectedContents()
{
    QCOMPARE(dialog->windowTitle(), QStringLiteral("VYRE Repository Configuration"));
    for (const QWidget* field : form->fields()) {
        QVERIFY(!field->isEnabled());
    }
    run([this] {
        QVERIFY(dialog->isModal());
        QCOMPARE(buttonOf(dialog.get(), "Reset")->toolTip(),
                 QStringLiteral("Undo changes to this repository configuration"));
        QCOMPARE(buttonOf(dialog.get(), "Cancel")->toolTip(),
                 QStringLiteral("Undo changes to this repository configuration and close the window"));
        QCOMPARE(buttonOf(dialog.get(), "OK")->toolTip(),
                 QStringLiteral("Apply changes to all repository configurations, and close the window"));
        QVERIFY(buttonOf(dialog.get(), "OK")->isDefault());
        QVERIFY(!buttonOf(dialog.get(), "Reset")->isEnabled());
        const HFrameLabel* label = dialog->findChild<HFrameLabel*>();
        int last = label->mapTo(dialog.get(), QPoint(0, 0)).x();
        for (const char* text : {"Reset", "Cancel", "OK"}) {
            const int x = buttonOf(dialog.get(), text)->x();
            QVERIFY(last < x);
            last = x;
        }
        QVERIFY(buttonOf(dialog.get(), "OK")->y() > form->position->mapTo(dialog.get(), QPoint(0, 0)).y());
    });
}

void RepoEditorConfigDialogTest::theFormFitsASmallScreen()
{
    run([this] {
        QVERIFY(dialog->width() <= 921);
        QVERIFY(dialog->height() <= 691);
        Form::type(form->id, QString());
        QVERIFY(dialog->width() <= 921);
        // The initial window is large enough for each field.
        for (const QWidget* field : form->fields()) {
            QVERIFY(field->width() >= field->minimumSizeHint().width());
            QVERIFY(field->height() >= field->minimumSizeHint().height());
        }
    });
}

void RepoEditorConfigDialogTest::theIdentifierHasTheFocusWheneverTheFormOpens()
{
    for (int time = 0; time < 2; ++time) {
        run([this] {
            QTRY_COMPARE(QApplication::focusWidget(), form->id);
            form->file->setFocus();
        });
    }
}

void RepoEditorConfigDialogTest::tabGoesThroughTheFieldsInOrder()
{
    run([this] {
        QList<QWidget*> visited;
        for (int i = 0; i < form->fields().size(); ++i) {
            visited << QApplication::focusWidget();
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        }
        QCOMPARE(visited, form->fields());
        QCOMPARE(QApplication::focusWidget(), buttonOf(dialog.get(), "Cancel"));
        QVERIFY(!buttonOf(dialog.get(), "Reset")->isEnabled());
    });
}

void RepoEditorConfigDialogTest::theBoxesShowTheDefaultsOfTheMainSection()
{
    run([this] {
        QCOMPARE(form->enabled->currentText(), QStringLiteral("Default (Yes)"));
        QCOMPARE(form->gpgcheck->currentText(), QStringLiteral("Default (No)"));
    });
    conf->enabled = false;
    conf->gpgcheck = true;
    run([this] {
        QCOMPARE(form->enabled->currentText(), QStringLiteral("Default (No)"));
        QCOMPARE(form->gpgcheck->currentText(), QStringLiteral("Default (Yes)"));
    });
}

void RepoEditorConfigDialogTest::okHasTheSameResultAsCancelIfNothingHasChanged()
{
    QCOMPARE(run([this] { click("OK"); }), int(QDialog::Rejected));
    QCOMPARE(session, (QHash<QString, bool>()));
}

void RepoEditorConfigDialogTest::okStoresTheEditedEntryAndTheSessionState_data()
{
    QTest::addColumn<int>("enabled");
    QTest::addColumn<bool>("byDefault");
    QTest::addColumn<bool>("used");
    QTest::newRow("yes") << 2 << false << true;
    QTest::newRow("no") << 0 << true << false;
    QTest::newRow("not specified, on by default") << 1 << true << true;
    QTest::newRow("not specified, off by default") << 1 << false << false;
}

void RepoEditorConfigDialogTest::okStoresTheEditedEntryAndTheSessionState()
{
    QFETCH(int, enabled);
    QFETCH(bool, byDefault);
    QFETCH(bool, used);
    conf->enabled = byDefault;
    session.insert(QStringLiteral("updates"), !used);
    const int result = run([this, enabled] {
        Form::type(form->name, QStringLiteral("Updates"));
        form->enabled->setFocus();
        QTest::keyClick(form->enabled, Qt::Key_Home);
        for (int i = 0; i < enabled; ++i) {
            QTest::keyClick(form->enabled, Qt::Key_Down);
        }
        QVERIFY(entry.name.isEmpty());
        click("OK");
    });
    QCOMPARE(result, int(QDialog::Accepted));
    QCOMPARE(entry.name, QStringLiteral("Updates"));
    QCOMPARE(entry.enabled, enabled);
    QCOMPARE(session, (QHash<QString, bool>{{QStringLiteral("updates"), used}}));
}

void RepoEditorConfigDialogTest::aNewIdentifierDoesNotChangeTheSessionStateOfTheOldIdentifier()
{
    session.insert(QStringLiteral("updates"), false);
    run([this] {
        Form::type(form->id, QStringLiteral("other"));
        click("OK");
    });
    QCOMPARE(session,
             (QHash<QString, bool>{{QStringLiteral("updates"), false}, {QStringLiteral("other"), true}}));
}

void RepoEditorConfigDialogTest::anUnspecifiedValueStaysUnspecifiedIfItsBoxIsNotChanged()
{
    run([this] {
        QCOMPARE(form->enabled->currentText(), QStringLiteral("Default (Yes)"));
        Form::type(form->name, QStringLiteral("Updates"));
        click("OK");
    });
    QCOMPARE(entry.enabled, 1);
    QCOMPARE(entry.gpgcheck, 1);
    QCOMPARE(entry.name, QStringLiteral("Updates"));
}

void RepoEditorConfigDialogTest::okIsEnabledIfTheStatusIsOnlyAWarning()
{
    QCOMPARE(run([this] {
                 Form::type(form->urls, QString());
                 QCOMPARE(status(), QStringLiteral("No URLs or Mirror list URL specified"));
                 click("OK");
             }),
             int(QDialog::Accepted));
    QCOMPARE(entry.baseurl, QString());
    QCOMPARE(run([this] {
                 Form::type(form->id, QString());
                 click("OK");
             }),
             int(QDialog::Accepted));
    QCOMPARE(entry.id, QString());
}

void RepoEditorConfigDialogTest::okIsDisabledIfTheRepositoryCannotBeWritten()
{
    const auto okIsEnabled = [this] { return buttonOf(dialog.get(), "OK")->isEnabled(); };
    QCOMPARE(run([this, okIsEnabled] {
                 Form::type(form->id, QStringLiteral("upd[ates]"));
                 QCOMPARE(status(),
                          QStringLiteral("Identifier has characters other than letters, digits and -_.:"));
                 QVERIFY(!okIsEnabled());
                 dialog->ok();
                 QVERIFY(dialog->isVisible());
                 QCOMPARE(entry.id, QStringLiteral("updates"));
                 Form::type(form->id, QStringLiteral("new"));
                 QVERIFY(okIsEnabled());
                 Form::type(form->options, QStringLiteral("[other]"));
                 QVERIFY(!okIsEnabled());
                 click("Reset");
                 QVERIFY(okIsEnabled());
                 Form::type(form->id, QStringLiteral("new"));
                 click("OK");
             }),
             int(QDialog::Accepted));
    QCOMPARE(entry.id, QStringLiteral("new"));
    QCOMPARE(entry.options, QString());
    // If an invalid entry comes from a file, and the user has changed nothing, OK is enabled and only closes
    // the form.
    entry.id = QStringLiteral("a[b");
    QCOMPARE(run([this, okIsEnabled] {
                 QVERIFY(okIsEnabled());
                 click("OK");
                 QVERIFY(!dialog->isVisible());
             }),
             int(QDialog::Rejected));
    QCOMPARE(session, (QHash<QString, bool>{{QStringLiteral("new"), true}}));
}

void RepoEditorConfigDialogTest::theCancelButtonStoresNothing()
{
    QCOMPARE(run([this] {
                 Form::type(form->id, QStringLiteral("other"));
                 click("Cancel");
             }),
             int(QDialog::Rejected));
    QCOMPARE(entry.id, QStringLiteral("updates"));
    QVERIFY(session.isEmpty());
}

void RepoEditorConfigDialogTest::closingAnUnchangedFormAsksNoQuestion_data()
{
    QTest::addColumn<bool>("byEscape");
    QTest::newRow("Escape") << true;
    QTest::newRow("window closed by the window manager") << false;
}

void RepoEditorConfigDialogTest::closingAnUnchangedFormAsksNoQuestion()
{
    QFETCH(bool, byEscape);
    for (const bool hasReset : {false, true}) {
        QCOMPARE(run([this, byEscape, hasReset] {
                     const AnsweringUser user(AnsweringUser::clickIfThere(QStringLiteral("No")));
                     if (hasReset) {
                         Form::type(form->name, QStringLiteral("a name"));
                         click("Reset");
                     }
                     closeForm(byEscape);
                     QCOMPARE(user.seen.size(), 0);
                     QVERIFY(!dialog->isVisible());
                 }),
                 int(QDialog::Rejected));
    }
}

void RepoEditorConfigDialogTest::closingAChangedFormAsksWhetherToDiscardTheChanges_data()
{
    closingAnUnchangedFormAsksNoQuestion_data();
}

void RepoEditorConfigDialogTest::closingAChangedFormAsksWhetherToDiscardTheChanges()
{
    QFETCH(bool, byEscape);
    QCOMPARE(run([this, byEscape] {
                 Form::type(form->urls, QStringLiteral("http://h/other"));
                 for (const char* answer : {"No", "Return", "Escape", "Yes"}) {
                     AnsweringUser user(AnsweringUser::clickIfThere(QLatin1String(answer)));
                     if (qstrcmp(answer, "Escape") == 0) {
                         user.answer = AnsweringUser::key(Qt::Key_Escape);
                     }
                     closeForm(byEscape);
                     QCOMPARE(user.seen.size(), 1);
                     QCOMPARE(user.seen.at(0).title, QStringLiteral("Repository Editor"));
                     QCOMPARE(user.seen.at(0).text,
                              QStringLiteral("The changes to the repository are not applied. Close the "
                                             "window and drop the changes?"));
                     QCOMPARE(user.seen.at(0).defaultButton, QMessageBox::No);
                     QCOMPARE(user.seen.at(0).parent, dialog.get());
                     QCOMPARE(dialog->isVisible(), qstrcmp(answer, "Yes") != 0);
                     QVERIFY(!dialog->isVisible() ||
                             form->urls->realPlainText() == QLatin1String("http://h/other"));
                 }
             }),
             int(QDialog::Rejected));
    QVERIFY(entry.baseurl.contains(QStringLiteral("secret")));
    QVERIFY(session.isEmpty());
}

void RepoEditorConfigDialogTest::theResetButtonRestoresTheOriginalValues()
{
    QCOMPARE(run([this] {
                 Form::type(form->id, QString());
                 Form::type(form->password, QStringLiteral("new"));
                 QVERIFY(buttonOf(dialog.get(), "Reset")->isEnabled());
                 QCOMPARE(status(), QStringLiteral("No Identifier specified"));
                 click("Reset");
                 QVERIFY(!buttonOf(dialog.get(), "Reset")->isEnabled());
                 QCOMPARE(status(), QString());
                 QCOMPARE(form->id->text(), QStringLiteral("updates"));
                 QCOMPARE(form->password->text(), QStringLiteral("secret"));
                 QCOMPARE(form->urls->realPlainText(), entry.baseurl);
                 click("OK");
             }),
             int(QDialog::Rejected));
}

void RepoEditorConfigDialogTest::theReturnKeyInAFieldDoesNotPressOk()
{
    run([this] {
        for (QWidget* field : {static_cast<QWidget*>(form->id), static_cast<QWidget*>(form->mirrorList),
                               static_cast<QWidget*>(form->password)}) {
            field->setFocus();
            QTest::keyClick(field, Qt::Key_Return);
            QVERIFY(dialog->isVisible());
        }
        form->urls->setFocus();
        QTest::keyClick(form->urls, Qt::Key_End);
        QTest::keyClick(form->urls, Qt::Key_Return);
        QVERIFY(dialog->isVisible());
        QCOMPARE(form->urls->realPlainText(), entry.baseurl + QLatin1Char('\n'));
    });
}

void RepoEditorConfigDialogTest::theStatusLineChangesWithTheValuesInTheFields()
{
    run([this] {
        const HFrameLabel* label = dialog->findChild<HFrameLabel*>();
        QCOMPARE(status(), QString());
        Form::type(form->id, QString());
        QCOMPARE(status(), QStringLiteral("No Identifier specified"));
        QCOMPARE(label->palette().color(QPalette::Window), QColor(Colors::errorBg()));
        Form::type(form->id, QStringLiteral("x"));
        QCOMPARE(status(), QString());
        Form::type(form->file, QStringLiteral("/tmp/x.repo"));
        QCOMPARE(status(), QStringLiteral("File is not in any reposdir directory"));
        QCOMPARE(label->palette().color(QPalette::Window), QColor(Colors::warningBg()));
        Form::type(form->file, QStringLiteral("/etc/yum.repos.d/x"));
        QCOMPARE(status(), QStringLiteral("File lacks .repo suffix"));
        Form::type(form->file, QString());
        Form::type(form->password, QString());
        QCOMPARE(status(), QStringLiteral("No Vantor Authentication Password specified"));
        Form::type(form->authName, QString());
        QCOMPARE(status(), QStringLiteral("No Vantor Authentication Name specified"));
        Form::type(form->urls, QString());
        QCOMPARE(status(), QStringLiteral("No URLs or Mirror list URL specified"));
        Form::type(form->mirrorList, QStringLiteral("http://h/l"));
        QCOMPARE(status(), QString());
    });
}

void RepoEditorConfigDialogTest::theFormCanBeUsedForSeveralRepositoriesInTurn()
{
    run([this] {
        Form::type(form->id, QStringLiteral("other"));
        click("Cancel");
    });
    Repo::Entry second;
    dialog->setEntry(&second);
    QCOMPARE(status(), QStringLiteral("No Identifier specified"));
    entry = second;
    QCOMPARE(run([this] {
                 QCOMPARE(form->id->text(), QString());
                 QCOMPARE(form->urls->realPlainText(), QString());
                 QVERIFY(!form->password->isEnabled());
                 QVERIFY(!buttonOf(dialog.get(), "Reset")->isEnabled());
                 click("OK");
             }),
             int(QDialog::Rejected));
}

QTEST_MAIN(RepoEditorConfigDialogTest)
#include "RepoEditorConfigDialogTest.moc"
