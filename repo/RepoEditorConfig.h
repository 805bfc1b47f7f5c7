// SPDX-License-Identifier: GPL-2.0-or-later

// The form for one repository. The form creates the fields and keeps them consistent. The credentials in the
// URLs have separate fields, which show and edit only these parts of the URLs.
//
// The object lives on the graphical thread. Its Qt parent is the widget whose layout it fills.

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
    // Fills an empty layout, which must already belong to a widget.
    explicit Config(QGridLayout* layout);

    void setEntry(const Repo::Entry& entry);
    // Returns the repository with the values of the fields. Some fields cannot show every value exactly: for
    // example, the field for the position rounds. If the user has not changed a field, the result has the
    // exact value that setEntry() received.
    Repo::Entry toEntry() const;
    // Shows the values of the [main] section as defaults. If the section of a repository lacks an option, the
    // repository uses the default.
    void setDefaults(bool enabled, bool gpgcheck);
    // Empties and disables all fields until the next setEntry().
    void disable();
    // Shows the first problem of the repository in `label`. Returns true if a problem exists.
    bool setStatus(YumConfIO* conf, HFrameLabel* label);
    // Returns false if the fields contain text that a configuration file cannot represent as one repository.
    bool canBeWritten() const;
    void focusIdentifier();

Q_SIGNALS:
    // Emitted when the user changes a field.
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
    // Returns the reason why the repository cannot be written, or an empty string if it can be written.
    static QString refusal(const Repo::Entry& entry);
    // Enables or disables all fields except the fields for the credentials.
    void setFieldsEnabled(bool enabled);
    // Shows the credentials of the URLs in the fields for credentials. Returns true if a URL is a vantor URL.
    bool showAuth(const Repo::Entry& entry);
    void setAuthLabels(const QString& nameKey, const QString& passwordKey);

    bool updating; // true while the form fills its own fields
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
    Repo::Entry shown; // the contents of the fields immediately after setEntry()
};

} // namespace RepoEditor

#endif
