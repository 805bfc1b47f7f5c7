// SPDX-License-Identifier: GPL-2.0-or-later

// The base class for tests of the repository form. The class shows the form in a window, and has example
// repositories for it.

#ifndef TESTS_REPO_SHOWNFORM_H
#define TESTS_REPO_SHOWNFORM_H

#include <QtTest>
#include <QtWidgets>

#include <memory>

#include "repo/RepoEditorConfig.h"
#include "repo/YumConfIO.h"
#include "tests/repo/Form.h"
#include "tests/support/EnvironmentVariable.h"
#include "widgets/HFrameLabel.h"

class ShownForm : public QObject
{
    Q_OBJECT

protected:
    const QString vantorUrl = QStringLiteral("http://h/vantor?user=bob&word=secret&path=/x");

    // Example repositories: usual() has no credentials, vantor() has vantor credentials, and withPasswords()
    // has other kinds of passwords.
    static Repo::Entry usual();
    Repo::Entry vantor() const;
    static Repo::Entry withPasswords();
    static bool sameFields(const Repo::Entry& left, const Repo::Entry& right);
    // The form's status text, and whether this text is visible.
    QString status(bool* shown = nullptr) const;

    std::unique_ptr<QTemporaryDir> root;
    EnvironmentVariable managedRoot{"VYREROOT"};
    QList<YumRepoEnabled> requests;
    QHash<QString, bool> session;
    std::unique_ptr<YumConfIO> conf;
    std::unique_ptr<QWidget> window;
    RepoEditor::Config* config = nullptr;
    std::unique_ptr<Form> form;
    std::unique_ptr<HFrameLabel> label;
    std::unique_ptr<QSignalSpy> changes;

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
};

#endif
