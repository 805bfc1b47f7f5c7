// SPDX-License-Identifier: GPL-2.0-or-later

// The form for one repository: its fields, and the logic that keeps the fields consistent. The credentials in
// the URLs have their own fields, which only show and edit these parts of the URLs.
//
// Graphical thread; a child of the widget whose layout it fills.

#ifndef REPO_REPOEDITORCONFIG_H
#define REPO_REPOEDITORCONFIG_H

#include <QList>
#include <QObject>

#include "repo/RepoEntry.h"

class HFrameLabel;
class PasswdLineEdit;
class PasswdTextEdit;
class QComboBox;
class QDoubleSpinBox;
class QGridLayout;
class QLabel;
class QLineEdit;
class YumConfIO;

namespace RepoEditor {

class Config : public QObject
{
    Q_OBJECT

public:
    // Fills an empty layout, which already belongs to a widget.
    explicit Config(QGridLayout* layout);

    void setEntry(const Repo::Entry& entry);
    // The repository of the form. Some fields show a value in another form than the file. If the user has not
    // changed such a field, the result has the original value.
    Repo::Entry toEntry() const;
    // Shows the values of the [main] section, which apply to a repository without own values.
    void setDefaults(bool enabled, bool gpgcheck);
    // Empties and disables all fields until the next setEntry().
    void disable();
    // Shows the first problem of the repository, if any; returns true if it has one.
    bool setStatus(YumConfIO* conf, HFrameLabel* label);
    // False if a configuration file cannot represent the contents of the form as one repository.
    bool canBeWritten() const;
    void focusIdentifier();

Q_SIGNALS:
    // The user has changed something.
    void changed();

public Q_SLOTS:
    void authChanged(const QString& text);
    void urlChanged();
    void urlChanged(const QString& text);
    void valueChanged();
    void valueChanged(const QString& text);
    void valueChanged(int index);

private:
    QWidget* createAuth(QWidget* parent);
    QWidget* createOptions(QWidget* parent);
    QWidget* createSimpleOptions(QWidget* parent);
    QWidget* createFileInfo(QWidget* parent);

    Repo::Entry fieldsToEntry() const;
    // The reason why the repository cannot be written; empty if it can.
    static QString refusal(const Repo::Entry& entry);
    // All fields except those of the credentials.
    void setFieldsEnabled(bool enabled);
    // Shows the credentials of the URLs in their fields. Returns true if the URLs are of a kind that contains
    // credentials.
    bool showAuth(const Repo::Entry& entry);
    void setAuthLabels(const QString& nameKey, const QString& passwordKey);

    bool updating; // true while the form itself fills its fields
    QLineEdit* idField;
    QLineEdit* nameField;
    PasswdTextEdit* urlsField;
    PasswdLineEdit* mirrorListField;
    QLabel* authNameLabel;
    QLineEdit* authNameField;
    QLabel* passwordLabel;
    QLineEdit* passwordField;
    QComboBox* enabledBox;
    QComboBox* gpgBox;
    PasswdTextEdit* otherOptionsField;
    QLineEdit* fileField;
    QDoubleSpinBox* positionField;

    Repo::Entry given; // the argument of setEntry()
    Repo::Entry shown; // the contents of the fields right after setEntry()
};

} // namespace RepoEditor

#endif
