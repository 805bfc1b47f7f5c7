// SPDX-License-Identifier: GPL-2.0-or-later

#include "repo/RepoAuthDialog.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

#include <limits>

#include "app/base/Fonts.h"
#include "repo/OneLineValidator.h"
#include "repo/PasswdField.h"
#include "repo/RepoEntry.h"
#include "repo/RepoVantor.h"
#include "services/QuestionGuard.h"
#include "widgets/HScrollArea.h"
#include "widgets/HSeparator.h"
#include "widgets/PlainLabel.h"

namespace RepoAuth {

namespace {

QLabel* makeLabel(const QString& text = QString())
{
    auto* label = new PlainLabel(text);
    label->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    return label;
}

QLabel* addLine(QGridLayout* grid, const QString& caption)
{
    const int row = grid->rowCount();
    QLabel* value = makeLabel();
    grid->addWidget(makeLabel(caption), row, 0);
    grid->addWidget(value, row, 1);
    return value;
}

} // namespace

Dialog::Dialog(QWidget* parent) : QDialog(parent), entry(nullptr)
{
    setWindowTitle(tr("VYRE Authentication"));
    setModal(true);

    auto* layout = new QVBoxLayout(this);
    auto* heading = new PlainLabel(tr("Some configured repositories require authentication"));
    heading->setFont(Fonts::makeHeader(heading->font()));
    heading->setAlignment(Qt::AlignCenter);
    layout->addWidget(heading);

    // Scroll the URLs, because a repository may have many or long URLs.
    area = new HScrollArea(90, 12, this);
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setFocusPolicy(Qt::NoFocus);
    auto* repository = new QWidget;
    auto* lines = new QGridLayout(repository);
    lines->setContentsMargins(0, 0, 0, 0);
    idLabel = addLine(lines, tr("Identifier"));
    nameLabel = addLine(lines, tr("Name"));
    urlsLabel = addLine(lines, tr("URLs"));
    mirrorListLabel = addLine(lines, tr("Mirror list URL"));
    lines->setColumnStretch(1, 1);
    lines->setRowStretch(lines->rowCount(), 1);
    area->setWidget(repository);
    layout->addWidget(area, 1);

    auto* fields = new QGridLayout;
    authNameLabel = makeLabel();
    authNameField = new QLineEdit;
    authNameField->setMaxLength(std::numeric_limits<int>::max());
    authNameField->setValidator(new OneLineValidator(authNameField));
    authNameField->setToolTip(
        tr("Authentication name for a repository using the vantor authentication method"));
    passwordLabel = makeLabel();
    passwordField = new PasswdField;
    passwordField->setToolTip(
        tr("Authentication password for a repository using the vantor authentication method"));
    fields->addWidget(authNameLabel, 0, 0);
    fields->addWidget(authNameField, 0, 1);
    fields->addWidget(passwordLabel, 1, 0);
    fields->addWidget(passwordField, 1, 1);
    for (QLabel* label : {authNameLabel, passwordLabel}) {
        label->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
        // Limit the width of the label: it shows a key from the URL, which may have any length.
        label->setMaximumWidth(30 * label->fontMetrics().averageCharWidth());
    }
    layout->addLayout(fields);
    fileLabel = makeLabel();
    fileLabel->setWordWrap(true);
    // Ignore the width of the path, because a long path would widen the window.
    fileLabel->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    layout->addWidget(fileLabel);
    layout->addWidget(new HSeparator(this));
    layout->addLayout(createButtons());

    connect(authNameField, SIGNAL(textEdited(const QString&)), this, SLOT(authChanged(const QString&)));
    connect(passwordField, SIGNAL(textEdited(const QString&)), this, SLOT(authChanged(const QString&)));
}

void Dialog::addButton(QBoxLayout* row, const QString& text, const char* slot)
{
    auto* button = new QPushButton(text, this);
    // Widen the button, because some styles leave no space between a long label and the border.
    button->setMinimumWidth(button->sizeHint().width() + 2 * button->fontMetrics().averageCharWidth());
    connect(button, SIGNAL(clicked()), this, slot);
    row->addWidget(button);
    buttons.append(button);
}

QBoxLayout* Dialog::createButtons()
{
    auto* row = new QHBoxLayout;
    row->addStretch(1);
    addButton(row, tr("Quit"), SLOT(handleQuit()));
    addButton(row, tr("Disable for Session"), SLOT(handleDisable()));
    addButton(row, tr("Skip All"), SLOT(handleSkipAll()));
    addButton(row, tr("Apply to All"), SLOT(handleApplyAll()));
    addButton(row, tr("Apply to All with this Host"), SLOT(handleApplyHost()));
    addButton(row, tr("OK"), SLOT(handleOK()));
    buttons.last()->setDefault(true);
    setButtonsEnabled(false);
    return row;
}

void Dialog::setButtonsEnabled(bool enabled)
{
    for (QPushButton* button : qAsConst(buttons)) {
        button->setEnabled(enabled);
    }
}

void Dialog::showUrls(const QString& baseurl, const QString& mirrorlist)
{
    const QChar character =
        QChar(style()->styleHint(QStyle::SH_LineEdit_PasswordCharacter, nullptr, passwordField));
    urlsLabel->setText(mask.masked(baseurl, character));
    mirrorListLabel->setText(mask.masked(mirrorlist, character));
}

int Dialog::exec(Repo::Entry* asked)
{
    entry = asked;
    QString name;
    QString password;
    Repo::Vantor::getAuth(*entry, nameKey, name, passwordKey, password);
    idLabel->setText(entry->id);
    nameLabel->setText(entry->name);
    showUrls(entry->baseurl, entry->mirrorlist);
    area->updateGeometry();
    authNameLabel->setText(nameKey.isEmpty() ? tr("Name") : nameKey);
    authNameField->setAccessibleName(authNameLabel->text());
    authNameField->setText(name);
    passwordLabel->setText(passwordKey.isEmpty() ? tr("Password") : passwordKey);
    passwordField->setAccessibleName(passwordLabel->text());
    passwordField->setText(password);
    fileLabel->setText(
        tr("VYRE will write the name and the password to the file %1. Then only the file's owner and group "
           "can read the file.")
            .arg(entry->file));

    setButtonsEnabled(true);
    // A button that gets the focus becomes the default button. Make the last button the default again for
    // each repository.
    buttons.last()->setDefault(true);
    authNameField->setFocus();
    setResult(SkipAll);
    // The program asks at its start, and then about one repository after another. A key or a click that is
    // meant for another window or for the previous repository must not answer the question.
    const QuestionGuard guard(this);
    show();
    update(); // the guard waits until the window is painted
    loop.exec();
    // Clear the pointer here too: if the program ends during the loop, done() does not run.
    entry = nullptr;
    return result();
}

void Dialog::done(int result)
{
    if (entry == nullptr) {
        return;
    }
    entry = nullptr;
    setResult(result);
    setButtonsEnabled(false);
    loop.quit();
}

void Dialog::authChanged(const QString&)
{
    if (entry == nullptr) {
        return;
    }
    const QChar character =
        QChar(style()->styleHint(QStyle::SH_LineEdit_PasswordCharacter, nullptr, passwordField));
    const QString password(passwordField->text().size(), character);
    const auto replaced = [this, &password](const QString& url) {
        return Repo::Vantor::replaceAuth(url, nameKey, authNameField->text(), passwordKey, password);
    };
    showUrls(replaced(entry->baseurl), replaced(entry->mirrorlist));
}

void Dialog::setUrls()
{
    for (QString* url : {&entry->baseurl, &entry->mirrorlist}) {
        *url = Repo::Vantor::replaceAuth(*url, nameKey, authNameField->text(), passwordKey,
                                         passwordField->text());
    }
}

void Dialog::handleQuit()
{
    done(Quit);
}

void Dialog::handleDisable()
{
    done(Disable);
}

void Dialog::handleSkipAll()
{
    done(SkipAll);
}

void Dialog::handleApplyAll()
{
    setUrls();
    done(ApplyAll);
}

void Dialog::handleApplyHost()
{
    setUrls();
    done(ApplyHost);
}

void Dialog::handleOK()
{
    setUrls();
    done(OK);
}

} // namespace RepoAuth
