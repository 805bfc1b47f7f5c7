// SPDX-License-Identifier: GPL-2.0-or-later

// The base class for tests of the repository editor. The class opens the editor with three repositories,
// reads the editor's contents, and simulates the user's input.

#ifndef TESTS_REPO_SHOWNEDITOR_H
#define TESTS_REPO_SHOWNEDITOR_H

#include <QtTest>
#include <QtWidgets>

#include <functional>
#include <memory>

#include "repo/RepoEditorConfigDialog.h"
#include "repo/RepoEditorDialog.h"
#include "repo/RepoEditorModel.h"
#include "repo/RepoEditorView.h"
#include "tests/repo/Editor.h"
#include "tests/repo/Form.h"
#include "tests/support/AnsweringUser.h"
#include "tests/support/Buttons.h"

class ShownEditor : public QObject
{
    Q_OBJECT

protected:
    using Use = std::function<void()>;

    // Opens the editor. The function `use` acts as the user. If the editor is still open after that, closes
    // it.
    int run(const Use& use);
    // The function `open` opens the form, and `use` acts as the user in the form. If the form is still open
    // after that, cancels it.
    bool withForm(const Use& open, const Use& use);
    // Calls `open`, and clicks this button in each message box that appears. Returns the message boxes.
    QList<ShownBox> withBoxes(const Use& open, const char* button = "&Yes");
    // The button of the editor itself. Its form, a window of its own, has other buttons.
    QPushButton* button(const QString& text) const
    {
        return buttonOf(dialog.get(), text, Qt::FindDirectChildrenOnly);
    }
    void click(const char* text) const { QTest::mouseClick(button(text), Qt::LeftButton); }
    void clickForm(const char* text) const { QTest::mouseClick(buttonOf(form, text), Qt::LeftButton); }
    int listedRow(const QString& id) const;
    QPoint place(const QString& id, int column) const;
    void click(const QString& id, int column = RepoEditor::IdentifierColumn,
               Qt::KeyboardModifiers modifiers = Qt::NoModifier) const;
    QStringList listed(int column = RepoEditor::IdentifierColumn) const;
    QStringList ids() const;
    const Repo::Entry& entry(const QString& id) const;
    QString current() const;
    QString status() const;
    QColor statusColor() const;
    bool isClean() const;
    bool isUnapplied() const;

    std::unique_ptr<BackEnd> backEnd;
    QList<YumRepoEnabled> requests;
    QHash<QString, bool> session;
    std::unique_ptr<YumConfIO> conf;
    std::unique_ptr<QWidget> window;
    std::unique_ptr<RepoEditor::Dialog> dialog;
    RepoEditor::View* view = nullptr;
    RepoEditor::ConfigDialog* form = nullptr;
    std::unique_ptr<Form> fields;
    std::unique_ptr<QSignalSpy> reposChangedSpy;

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();
};

#endif
