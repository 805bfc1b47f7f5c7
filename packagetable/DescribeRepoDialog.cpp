// SPDX-License-Identifier: GPL-2.0-or-later

#include "packagetable/DescribeRepoDialog.h"

#include "yumio/YumIO.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

#include "app/base/Fonts.h"
#include "repo/PasswdMask.h"
#include "repo/RepoBrowse.h"
#include "widgets/HScrollArea.h"
#include "widgets/HSeparator.h"
#include "widgets/Metrics.h"
#include "widgets/PlainLabel.h"

namespace PackageTable {
namespace Describe {
namespace Instance {

RepoDialog::RepoDialog(YumIO* backEnd, QWidget* parent)
    : QDialog(parent), yumIO(backEnd), top(new QVBoxLayout), content(nullptr), pairs(nullptr), grid(nullptr),
      area(nullptr)
{
    setWindowTitle(tr("VYRE Repository Description"));
    setAttribute(Qt::WA_ShowModal);
    auto* column = new QVBoxLayout(this);
    column->addLayout(top, 1);
    column->addWidget(new HSeparator);
    auto* buttons = new QHBoxLayout;
    column->addLayout(buttons);
    auto* browseButton = new QPushButton(tr("Browse Repository"));
    browseButton->setToolTip(
        tr("Browse the first URL specified for the selected repository using an external web browser"));
    browseButton->setAutoDefault(false);
    // Widen the button, because some styles leave no space between a long label and the border.
    browseButton->setMinimumWidth(browseButton->sizeHint().width() +
                                  2 * Metrics::columnWidth(browseButton->fontMetrics()));
    buttons->addWidget(browseButton);
    buttons->addStretch(1);
    auto* close = new QPushButton(tr("Close"));
    buttons->addWidget(close);
    connect(browseButton, SIGNAL(clicked()), this, SLOT(browse()));
    connect(close, SIGNAL(clicked()), this, SLOT(accept()));
    close->setDefault(true);
}

void RepoDialog::config(const Repo::Entry& repository)
{
    clear();
    repo = repository;
    content = new QWidget;
    auto* column = new QVBoxLayout(content);
    column->setContentsMargins(0, 0, 0, 0);
    auto* header = new PlainLabel(repo.id);
    header->setTextInteractionFlags(Qt::TextSelectableByMouse);
    header->setWordWrap(true);
    header->setFont(Fonts::makeHeader(header->font()));
    column->addWidget(header);
    column->addWidget(new HSeparator);

    pairs = new QWidget;
    grid = new QGridLayout(pairs);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setHorizontalSpacing(2 * Metrics::columnWidth(fontMetrics()));
    grid->setColumnStretch(1, 1);
    const PasswdMask mask;
    const QChar passwordCharacter =
        QChar(style()->styleHint(QStyle::SH_LineEdit_PasswordCharacter, nullptr, this));
    int row = 0;
    addPair(row, tr("Name"), repo.name);
    addPair(row, tr("URLs"), mask.masked(repo.baseurl, passwordCharacter));
    addPair(row, tr("Mirror list URL"), mask.masked(repo.mirrorlist, passwordCharacter));
    grid->setRowStretch(row, 1);
    // Scroll the values, because a repository may have dozens of mirrors.
    area = new HScrollArea(80, 24, nullptr);
    area->setFrameStyle(QFrame::Plain | QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setWidget(pairs);
    column->addWidget(area, 1);
    top->addWidget(content);
    layout()->activate(); // updates the size hint for the new content
    resize(sizeHint().boundedTo(Metrics::maxWindowSize()));
}

void RepoDialog::addPair(int& row, QString label, QString value)
{
    if (value.isEmpty()) {
        return;
    }
    auto* left = new PlainLabel(label, pairs);
    auto* right = new PlainLabel(value, pairs);
    // Do not wrap words: each URL has a line of its own.
    right->setTextInteractionFlags(Qt::TextSelectableByMouse);
    grid->addWidget(left, row, 0, Qt::AlignLeft | Qt::AlignTop);
    grid->addWidget(right, row, 1, Qt::AlignLeft | Qt::AlignTop);
    ++row;
}

void RepoDialog::clear()
{
    if (content != nullptr) {
        top->removeWidget(content);
        delete content;
        content = nullptr;
        pairs = nullptr;
        grid = nullptr;
        area = nullptr;
    }
    repo = Repo::Entry();
}

void RepoDialog::setVisible(bool visible)
{
    if (!visible) {
        clear();
    }
    QDialog::setVisible(visible);
}

void RepoDialog::keyPressEvent(QKeyEvent* event)
{
    if (area == nullptr || !HScrollArea::scrollByKey(area, event)) {
        QDialog::keyPressEvent(event);
    }
}

void RepoDialog::browse()
{
    RepoBrowse::browse(this, repo, yumIO);
}

} // namespace Instance
} // namespace Describe
} // namespace PackageTable
