// SPDX-License-Identifier: GPL-2.0-or-later

// The window that asks the user for the credentials of one repository after another.
//
// The object lives on the graphical thread; the checker owns it.

#ifndef REPO_REPOAUTHDIALOG_H
#define REPO_REPOAUTHDIALOG_H

#include <QDialog>
#include <QEventLoop>
#include <QList>

#include "repo/PasswdMask.h"

class HScrollArea;
class QBoxLayout;
class QLabel;
class QLineEdit;
class QPushButton;

namespace Repo {
struct Entry;
}

namespace RepoAuth {

class Dialog : public QDialog
{
    Q_OBJECT

public:
    // The user's decision. If the user closes the window, the decision is SkipAll.
    enum Result { SkipAll = 0, OK = 1, ApplyAll = 2, ApplyHost = 3, Disable = 4, Quit = 5 };

    explicit Dialog(QWidget* parent);

    using QDialog::exec;
    // Shows the repository `asked`, waits until the user presses a button, and returns the decision. After
    // OK, ApplyAll and ApplyHost, the entry contains the credentials. The window stays open for the next
    // repository. For the first moment, the window ignores keys and clicks; see QuestionGuard.
    int exec(Repo::Entry* asked);
    // Ends exec() with this result. Does nothing if the dialog does not ask about a repository.
    void done(int result) override;

public Q_SLOTS:
    void authChanged(const QString& text);
    void handleQuit();
    void handleDisable();
    void handleSkipAll();
    void handleApplyAll();
    void handleApplyHost();
    void handleOK();

private:
    QBoxLayout* createButtons();
    void addButton(QBoxLayout* row, const QString& text, const char* slot);
    // Writes the credentials into the entry's URLs.
    void setUrls();
    void showUrls(const QString& baseurl, const QString& mirrorlist);
    void setButtonsEnabled(bool enabled);

    HScrollArea* area;
    QLabel* idLabel;
    QLabel* nameLabel;
    QLabel* urlsLabel;
    QLabel* mirrorListLabel;
    QLabel* authNameLabel;
    QLineEdit* authNameField;
    QLabel* passwordLabel;
    QLineEdit* passwordField;
    QLabel* fileLabel;
    QList<QPushButton*> buttons;

    Repo::Entry* entry; // the argument of exec(), whose caller owns it; null outside exec()
    QString nameKey;
    QString passwordKey;
    PasswdMask mask;
    QEventLoop loop;
};

} // namespace RepoAuth

#endif
