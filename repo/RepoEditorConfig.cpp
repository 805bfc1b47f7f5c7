// SPDX-License-Identifier: GPL-2.0-or-later

#include "repo/RepoEditorConfig.h"

#include <QComboBox>
#include <QDoubleSpinBox>
#include <QGridLayout>
#include <QLineEdit>
#include <QScopedValueRollback>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <limits>

#include "repo/OneLineValidator.h"
#include "repo/PasswdField.h"
#include "repo/PasswdLineEdit.h"
#include "repo/PasswdTextEdit.h"
#include "repo/RepoVantor.h"
#include "repo/YumConfIO.h"
#include "widgets/Colors.h"
#include "widgets/HComboBox.h"
#include "widgets/HFrameLabel.h"
#include "widgets/HGroupBox.h"
#include "widgets/Literal.h"
#include "widgets/Metrics.h"
#include "widgets/PlainLabel.h"

namespace RepoEditor {

namespace {

// Adds a label and, behind it, a field. Both have the same tool tip.
QLabel* addField(QGridLayout* grid, int row, int column, const QString& text, QWidget* field,
                 const QString& toolTip)
{
    auto* label = new PlainLabel(text); // plain, because some labels show a key from a URL
    label->setToolTip(Literal::toolTip(toolTip));
    field->setToolTip(Literal::toolTip(toolTip));
    field->setAccessibleName(text);
    label->setBuddy(field);
    grid->addWidget(label, row, column);
    grid->addWidget(field, row, column + 1);
    return label;
}

// Creates a line edit that accepts text of any length. The default limit of QLineEdit would truncate long
// values.
QLineEdit* makeLineEdit(QWidget* parent)
{
    auto* edit = new QLineEdit(parent);
    edit->setMaxLength(std::numeric_limits<int>::max());
    edit->setValidator(new OneLineValidator(edit));
    return edit;
}

} // namespace

Config::Config(QGridLayout* layout) : QObject(layout->parentWidget()), updating(false)
{
    QWidget* parent = layout->parentWidget();

    idField = makeLineEdit(parent);
    addField(layout, 0, 0, tr("Identifier"), idField, tr("Unique identifier for the repository"));

    nameField = makeLineEdit(parent);
    addField(layout, 1, 0, tr("Name"), nameField, tr("Description of the repository"));

    urlsField = new PasswdTextEdit(Repo::Vantor::urlsRegExp(), 80, 4, parent);
    urlsField->setLineWrapMode(QTextEdit::NoWrap);
    urlsField->setTabChangesFocus(true);
    QLabel* urlsLabel = addField(layout, 2, 0, tr("URLs"), urlsField,
                                 tr("List of URLs to the repository.\n"
                                    "If more than one is specified, they all should be identical mirrors,\n"
                                    "and will provide redundancy if some URLs are unreachable."));
    layout->setAlignment(urlsLabel, Qt::AlignTop);
    layout->setRowStretch(2, 2);

    mirrorListField = new PasswdLineEdit(Repo::Vantor::oneUrlRegExp(), parent);
    addField(layout, 3, 0, tr("Mirror list URL"), mirrorListField,
             tr("URL to a file containing a list of URLs to the repository."));

    layout->addWidget(createAuth(parent), 4, 0, 1, 2);
    layout->addWidget(createOptions(parent), 5, 0, 1, 2);
    layout->setRowStretch(5, 3);
    layout->addWidget(createFileInfo(parent), 6, 0, 1, 2);

    connect(idField, SIGNAL(textChanged(const QString&)), this, SLOT(valueChanged(const QString&)));
    connect(nameField, SIGNAL(textChanged(const QString&)), this, SLOT(valueChanged(const QString&)));
    // Use realTextChanged() instead of textChanged(): the visible text shows dots for a password, and may
    // stay the same when the password changes.
    connect(urlsField, SIGNAL(realTextChanged()), this, SLOT(urlChanged()));
    connect(mirrorListField, SIGNAL(realTextChanged(const QString&)), this, SLOT(urlChanged(const QString&)));
    connect(authNameField, SIGNAL(textEdited(const QString&)), this, SLOT(authChanged(const QString&)));
    connect(passwordField, SIGNAL(textEdited(const QString&)), this, SLOT(authChanged(const QString&)));
    connect(otherOptionsField, SIGNAL(realTextChanged()), this, SLOT(valueChanged()));
    connect(enabledBox, SIGNAL(currentIndexChanged(int)), this, SLOT(valueChanged(int)));
    connect(gpgBox, SIGNAL(currentIndexChanged(int)), this, SLOT(valueChanged(int)));
    connect(fileField, SIGNAL(textChanged(const QString&)), this, SLOT(valueChanged(const QString&)));
    connect(positionField, SIGNAL(valueChanged(const QString&)), this, SLOT(valueChanged(const QString&)));
}

QWidget* Config::createAuth(QWidget* parent)
{
    auto* group = new HGroupBox(tr("Vantor Authentication"), parent);
    auto* grid = new QGridLayout(group);

    authNameField = makeLineEdit(group);
    authNameLabel =
        addField(grid, 0, 0, tr("Name"), authNameField,
                 tr("Authentication name for a repository using the vantor authentication method"));

    passwordField = new PasswdField(group);
    passwordLabel =
        addField(grid, 0, 2, tr("Password"), passwordField,
                 tr("Authentication password for a repository using the vantor authentication method"));
    for (QLabel* label : {authNameLabel, passwordLabel}) {
        // Remove the buddy of the label: with a buddy, "&" would mark a shortcut. The label shows a key from
        // a URL, which may contain "&".
        label->setBuddy(nullptr);
        // Limit the width: the key of a URL may have any length, and must not widen the window.
        label->setMaximumWidth(30 * Metrics::columnWidth(label->fontMetrics()));
    }
    grid->setColumnStretch(1, 1);
    grid->setColumnStretch(3, 1);
    return group;
}

QWidget* Config::createOptions(QWidget* parent)
{
    auto* group = new HGroupBox(tr("Repository Options"), parent);
    auto* grid = new QGridLayout(group);

    const QString toolTip = tr("Any other yum options for this repository.  See yum.conf(5)");
    auto* label = new PlainLabel(tr("Other Options:"), group);
    label->setToolTip(Literal::toolTip(toolTip));
    otherOptionsField = new PasswdTextEdit(Credentials::Text::Options, 50, 6, group);
    otherOptionsField->setLineWrapMode(QTextEdit::NoWrap);
    otherOptionsField->setTabChangesFocus(true);
    otherOptionsField->setToolTip(Literal::toolTip(toolTip));
    otherOptionsField->setAccessibleName(label->text());
    label->setBuddy(otherOptionsField);
    grid->addWidget(label, 0, 0);
    grid->addWidget(otherOptionsField, 1, 0);
    grid->addWidget(createSimpleOptions(group), 1, 1, Qt::AlignTop);
    grid->setColumnStretch(0, 1);
    return group;
}

QWidget* Config::createSimpleOptions(QWidget* parent)
{
    auto* area = new QWidget(parent);
    auto* grid = new QGridLayout(area);
    grid->setContentsMargins(0, 0, 0, 0);
    const auto makeBox = [area]() {
        auto* box = new HComboBox(area);
        // The items are in the order of the values of Qt::CheckState. setDefaults() appends the default value
        // to the text of the second item.
        box->addItems({tr("No"), tr("Default"), tr("Yes")});
        box->setSizeAdjustPolicy(QComboBox::AdjustToContents);
        // Qt does not update the minimum size when the text of an item becomes longer.
        box->setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Fixed);
        return box;
    };
    enabledBox = makeBox();
    addField(grid, 0, 0, tr("Enabled"), enabledBox, tr("Whether or not the repository is enabled for use"));
    gpgBox = makeBox();
    addField(grid, 1, 0, tr("Check GPG Keys"), gpgBox,
             tr("Whether or not GPG key signatures of packages from the repository are checked to ensure "
                "authenticity"));
    return area;
}

QWidget* Config::createFileInfo(QWidget* parent)
{
    auto* group = new HGroupBox(tr("Configuration File (expert)"), parent);
    auto* grid = new QGridLayout(group);

    fileField = makeLineEdit(group);
    addField(grid, 0, 0, tr("File"), fileField,
             tr("Name of the yum configuration file into which to place this repository configuration.\n"
                "If left blank, defaults to the repository's identifier"));

    positionField = new QDoubleSpinBox(group);
    positionField->setDecimals(1);
    positionField->setSingleStep(1.0);
    positionField->setMinimum(0.0);
    positionField->setValue(0.0);
    addField(grid, 0, 2, tr("Sort Position"), positionField,
             tr("A numeric sort key which determines the order of this repository configuration\n"
                "in a configuration file which contains multiple configurations"));
    grid->setColumnStretch(1, 1);
    return group;
}

void Config::setAuthLabels(const QString& nameKey, const QString& passwordKey)
{
    authNameLabel->setText(nameKey.isEmpty() ? tr("Name") : nameKey);
    authNameField->setAccessibleName(authNameLabel->text());
    passwordLabel->setText(passwordKey.isEmpty() ? tr("Password") : passwordKey);
    passwordField->setAccessibleName(passwordLabel->text());
}

bool Config::showAuth(const Repo::Entry& entry)
{
    QString nameKey;
    QString name;
    QString passwordKey;
    QString password;
    const bool found = Repo::Vantor::getAuth(entry, nameKey, name, passwordKey, password);
    setAuthLabels(nameKey, passwordKey);
    authNameField->setText(name);
    passwordField->setText(password);
    authNameField->setEnabled(found);
    passwordField->setEnabled(found);
    return found;
}

void Config::setEntry(const Repo::Entry& entry)
{
    const QScopedValueRollback<bool> guard(updating, true);
    idField->setText(entry.id);
    nameField->setText(entry.name);
    urlsField->setRealPlainText(entry.baseurl);
    mirrorListField->setRealText(entry.mirrorlist);
    enabledBox->setCurrentIndex(entry.enabled);
    gpgBox->setCurrentIndex(entry.gpgcheck);
    otherOptionsField->setRealPlainText(entry.options);
    fileField->setText(entry.file);
    positionField->setValue(entry.position);
    setFieldsEnabled(true);
    showAuth(entry);
    given = entry;
    shown = fieldsToEntry();
}

Repo::Entry Config::fieldsToEntry() const
{
    Repo::Entry entry;
    entry.id = idField->text();
    entry.name = nameField->text();
    entry.baseurl = urlsField->realPlainText();
    entry.mirrorlist = mirrorListField->realText();
    entry.enabled = enabledBox->currentIndex();
    entry.gpgcheck = gpgBox->currentIndex();
    entry.options = otherOptionsField->realPlainText();
    entry.file = fileField->text();
    entry.position = positionField->value();
    return entry;
}

Repo::Entry Config::toEntry() const
{
    Repo::Entry entry = fieldsToEntry();
    const auto restore = [this, &entry](auto field) {
        if (entry.*field == shown.*field) {
            entry.*field = given.*field;
        }
    };
    for (auto field : {&Repo::Entry::id, &Repo::Entry::name, &Repo::Entry::baseurl, &Repo::Entry::mirrorlist,
                       &Repo::Entry::options, &Repo::Entry::file}) {
        restore(field);
    }
    restore(&Repo::Entry::position);
    return entry;
}

void Config::setDefaults(bool enabled, bool gpgcheck)
{
    const auto text = [](bool on) { return tr("%1 %2").arg(tr("Default"), on ? tr("(Yes)") : tr("(No)")); };
    enabledBox->setItemText(Qt::PartiallyChecked, text(enabled));
    gpgBox->setItemText(Qt::PartiallyChecked, text(gpgcheck));
}

void Config::disable()
{
    setEntry(Repo::Entry());
    setFieldsEnabled(false);
}

void Config::setFieldsEnabled(bool enabled)
{
    for (QWidget* field :
         std::initializer_list<QWidget*>{idField, nameField, urlsField, mirrorListField, enabledBox, gpgBox,
                                         otherOptionsField, fileField, positionField}) {
        field->setEnabled(enabled);
    }
}

QString Config::refusal(const Repo::Entry& entry)
{
    // Permit only the characters that the package manager permits in an identifier, and the characters of
    // variables ("$", "{" and "}"). The package manager expands the variables first. Then it ignores a
    // repository whose identifier contains a character that it does not permit. If an identifier contained a
    // closing bracket, the package manager would reject the whole file. Bytes beyond ASCII are refused
    // because the package manager decodes them differently from VYRE.
    const auto unusable = [](QChar character) {
        const char sign = character.unicode() <= 0x7f ? character.toLatin1() : '\0';
        return std::isalnum(static_cast<unsigned char>(sign)) == 0 &&
               (sign == '\0' || std::strchr("-_.:${}", sign) == nullptr);
    };
    if (std::any_of(entry.id.cbegin(), entry.id.cend(), unusable)) {
        return tr("Identifier has characters other than letters, digits and -_.:");
    }
    if (entry.id == QLatin1String("main")) {
        return tr("Identifier main is reserved for the main section");
    }
    if (entry.options.startsWith(QLatin1Char('[')) || entry.options.contains(QLatin1String("\n["))) {
        return tr("Other Options have a line that begins with a bracket");
    }
    // Refuse white space before the first option: in the configuration file, this white space would make the
    // line a continuation of the option above the line.
    if (entry.options.startsWith(QLatin1Char(' ')) || entry.options.startsWith(QLatin1Char('\t'))) {
        return tr("Other Options begin with a blank");
    }
    return QString();
}

bool Config::canBeWritten() const
{
    return refusal(toEntry()).isEmpty();
}

bool Config::setStatus(YumConfIO* conf, HFrameLabel* label)
{
    const auto show = [label](const QPalette& palette, const QString& text) {
        label->setPalette(palette);
        label->setText(text);
        return true;
    };
    const auto error = [label, show](const QString& text) {
        return show(Colors::makeError(label->palette()), text);
    };
    const auto warning = [label, show](const QString& text) {
        return show(Colors::makeWarning(label->palette()), text);
    };

    const Repo::Entry entry = toEntry();
    if (entry.id.isEmpty()) {
        return error(tr("No Identifier specified"));
    }
    if (!refusal(entry).isEmpty()) {
        return error(refusal(entry));
    }
    if (entry.baseurl.isEmpty() && entry.mirrorlist.isEmpty()) {
        return warning(tr("No URLs or Mirror list URL specified"));
    }
    if (!entry.file.isEmpty() && entry.file != YumConfIO::fileName()) {
        const bool inReposdir =
            std::any_of(conf->reposdir.cbegin(), conf->reposdir.cend(), [&entry](const QString& directory) {
                return entry.file.startsWith(directory + QLatin1Char('/'));
            });
        if (!inReposdir) {
            return warning(tr("File is not in any reposdir directory"));
        }
        if (!entry.file.endsWith(QLatin1String(".repo"))) {
            return warning(tr("File lacks .repo suffix"));
        }
    }
    QString nameKey;
    QString name;
    QString passwordKey;
    QString password;
    if (Repo::Vantor::getAuth(entry, nameKey, name, passwordKey, password)) {
        if (name.isEmpty()) {
            return warning(tr("No Vantor Authentication Name specified"));
        }
        if (password.isEmpty()) {
            return warning(tr("No Vantor Authentication Password specified"));
        }
    }
    return false;
}

void Config::focusIdentifier()
{
    idField->setFocus();
}

void Config::authChanged(const QString&)
{
    {
        const QScopedValueRollback<bool> guard(updating, true);
        const QString name = authNameField->text();
        const QString password = passwordField->text();
        urlsField->setRealPlainText(Repo::Vantor::replaceAuth(urlsField->realPlainText(), name, password));
        mirrorListField->setRealText(Repo::Vantor::replaceAuth(mirrorListField->realText(), name, password));
    }
    Q_EMIT changed();
}

void Config::urlChanged()
{
    if (!updating) {
        showAuth(fieldsToEntry());
        Q_EMIT changed();
    }
}

void Config::urlChanged(const QString&)
{
    urlChanged();
}

void Config::valueChanged()
{
    if (!updating) {
        Q_EMIT changed();
    }
}

void Config::valueChanged(const QString&)
{
    valueChanged();
}

void Config::valueChanged(int)
{
    valueChanged();
}

} // namespace RepoEditor
