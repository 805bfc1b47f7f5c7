// The form for one repository: its fields, and the logic that keeps them in step with each other. The
// credentials that its URLs carry have fields of their own, which are but a view of the URLs.
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
    // Puts the form into an empty layout, which already belongs to a widget.
    explicit Config(QGridLayout* layout);

    void setEntry(const Repo::Entry& entry);
    // What a field shows in another form than it was given, and the user has not changed, is returned as it
    // was given.
    Repo::Entry toEntry() const;
    // Tells what a repository that specifies nothing gets: the values of the [main] section.
    void setDefaults(bool enabled, bool gpgcheck);
    // Blanks all fields, until there is a repository to show.
    void disable();
    // Shows what is wrong with the repository, if anything; returns whether something is.
    bool setStatus(YumConfIO* conf, HFrameLabel* label);
    // False when a configuration file would not give back what the form says as one repository.
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
    // Why it cannot be written; empty when it can.
    static QString refusal(const Repo::Entry& entry);
    // All but those of the credentials.
    void setFieldsEnabled(bool enabled);
    // Shows the credentials of the URLs in their fields; returns whether the URLs are of the kind that
    // carries some.
    bool showAuth(const Repo::Entry& entry);
    void setAuthLabels(const QString& nameKey, const QString& passwordKey);

    bool updating; // the form itself fills its fields
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

    Repo::Entry given;      // as setEntry() got it
    Repo::Entry afterwards; // what the fields then said
};

} // namespace RepoEditor

#endif
