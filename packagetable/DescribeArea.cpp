// SPDX-License-Identifier: GPL-2.0-or-later

#include "packagetable/DescribeArea.h"

#include "yumio/YumIO.h"

#include <QApplication>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QPushButton>
#include <QScrollBar>
#include <QVBoxLayout>

#include <algorithm>

#include "app/base/Fonts.h"
#include "packagetable/DescribeHost.h"
#include "packagetable/DescribeRepoDialog.h"
#include "packagetable/PackageTable.h"
#include "repo/RepoBrowse.h"
#include "widgets/HScrollArea.h"
#include "widgets/Literal.h"
#include "widgets/Metrics.h"
#include "widgets/PlainLabel.h"
#include "widgets/TextDialog.h"

namespace PackageTable {
namespace Describe {
namespace Instance {

namespace {

constexpr int columns = 80;
constexpr int rows = 24;
constexpr int fewestRows = 12;

enum GridColumn { LabelColumn, ValueColumn, OverflowColumn, GridColumnCount };

} // namespace

// The widget that contains the labels and values. Its size hint is wide enough for the widest value without
// wrapped lines, but never wider than `widest`.
class Area::Pairs : public QWidget
{
public:
    QSize sizeHint() const override
    {
        const int width = qMin(wholeLines, widest);
        return QSize(width, layout()->heightForWidth(width));
    }

    int wholeLines = 0; // the width at which no line is wrapped
    int widest = 0;     // the upper limit of the width
};

class Area::Busy
{
public:
    explicit Busy(Area& ofArea) : host(ofArea.host) { host->setReady(false); }
    ~Busy() { host->setReady(true); }
    Busy(const Busy&) = delete;
    Busy& operator=(const Busy&) = delete;

private:
    Describe::Host* host;
};

Area::Area(Describe::Host* window, QVBoxLayout* layout, YumIO* backEnd, const Package::Entry& record,
           YumConfIO* configuration, bool primary)
    : host(window), yumIO(backEnd), entry(&record), yumConfIO(configuration),
      dialogParent(layout->parentWidget()), textDialog(nullptr), repoDialog(nullptr), inner(new Pairs),
      grid(new QGridLayout(inner)), scrollArea(new HScrollArea(columns, rows, nullptr)),
      nextRow(0), filesButton{QString(), nullptr}, changeLogButton{QString(), nullptr}, repoButton(nullptr),
      labelWidth(0), valueWidth(0)
{
    scrollArea->setFrameStyle(QFrame::Plain | QFrame::NoFrame);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setColumnStretch(ValueColumn, 1);
    grid->setHorizontalSpacing(2 * Metrics::columnWidth(scrollArea->fontMetrics()));
    addHeader(nextRow, yumIO->getState(*entry));
    const int owner = entry->kind == Package::Group ? Fields::OfGroups : Fields::OfPackages;
    Fields::forEachUntil(owner | (primary ? Fields::Described : Fields::InShortDescription),
                         [this](Fields::Field field) {
                             addField(field);
                             return false; // go on to the next field
                         });
    grid->setRowStretch(nextRow, 1);
    updateButtons();
    layOut();

    scrollArea->setWidgetResizable(true);
    scrollArea->setWidget(inner);
    // If the screen is too small for all areas, the dialog scrolls. The primary area always keeps a minimum
    // number of visible lines, and the other areas keep their whole height.
    const int all = scrollArea->sizeHint().height();
    scrollArea->setMinimumHeight(primary ? qMin(fewestRows * scrollArea->fontMetrics().height(), all) : all);
    layout->addWidget(scrollArea, primary ? 1 : 0);
}

void Area::addField(Fields::Field field)
{
    const QString label = Fields::label(field);
    switch (field) {
    case Fields::Files:
        filesButton = {tr("Show"), addButton(nextRow, label, tr("Show"))};
        connect(filesButton.button, SIGNAL(clicked()), this, SLOT(handleFiles()));
        return;
    case Fields::ChangeLog:
        changeLogButton = {tr("Show"), addButton(nextRow, label, tr("Show"))};
        connect(changeLogButton.button, SIGNAL(clicked()), this, SLOT(handleChangeLog()));
        return;
    default:
        break;
    }
    const QString text = yumIO->text(*entry, field);
    if (field != Fields::Repository || text == QLatin1String(localRepository)) {
        addPair(nextRow, label, text);
        return;
    }
    repoButton = addPairButton(nextRow, label, text, tr("Details"));
    if (repoButton != nullptr) {
        connect(repoButton, SIGNAL(clicked()), this, SLOT(handleRepo()));
    }
}

void Area::addHeader(int& row, QString text)
{
    auto* label = new PlainLabel(text, inner);
    label->setFont(Fonts::makeBold(label->font()));
    grid->addWidget(label, row, LabelColumn, 1, GridColumnCount);
    ++row;
}

QLabel* Area::addLabel(int row, const QString& text, Qt::Alignment vertical)
{
    auto* label = new PlainLabel(text, inner);
    labelWidth = qMax(labelWidth, label->sizeHint().width());
    grid->addWidget(label, row, LabelColumn, Qt::AlignLeft | vertical);
    return label;
}

QLabel* Area::makeValue(const QString& value)
{
    auto* label = new PlainLabel(value, inner);
    valueWidth = qMax(valueWidth, label->sizeHint().width());
    label->setWordWrap(true);
    // Permit selection with the mouse only. If the user could also select with the keyboard, the Tab key
    // would stop at each value.
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    values.append(label);
    return label;
}

QPushButton* Area::makeButton(const QString& label, const QString& buttonText)
{
    auto* button = new QPushButton(buttonText, inner);
    button->setAutoDefault(false);
    button->setAccessibleDescription(label);
    return button;
}

void Area::addPair(int& row, QString label, QString value)
{
    if (value.isEmpty()) {
        return;
    }
    addLabel(row, label, Qt::AlignTop);
    grid->addWidget(makeValue(value), row, ValueColumn);
    ++row;
}

QPushButton* Area::addButton(int& row, QString label, QString buttonText)
{
    QPushButton* button = makeButton(label, buttonText);
    addLabel(row, label, Qt::AlignVCenter)->setBuddy(button);
    grid->addWidget(button, row, ValueColumn, Qt::AlignLeft);
    ++row;
    return button;
}

QPushButton* Area::addPairButton(int& row, QString label, QString value, QString buttonText)
{
    if (value.isEmpty()) {
        return nullptr;
    }
    QPushButton* button = makeButton(label, buttonText);
    addLabel(row, label, Qt::AlignVCenter)->setBuddy(button);
    auto* line = new QHBoxLayout;
    line->setSpacing(grid->horizontalSpacing());
    line->addWidget(makeValue(value), 0, Qt::AlignVCenter);
    line->addWidget(button);
    line->addStretch(1);
    grid->addLayout(line, row, ValueColumn);
    ++row;
    return button;
}

void Area::layOut()
{
    const int before = labelWidth + grid->horizontalSpacing();
    // Add the width of one letter, because some styles leave a gap next to scroll bars.
    inner->wholeLines = before + valueWidth + Metrics::columnWidth(scrollArea->fontMetrics());
    inner->widest = columns * Metrics::columnWidth(scrollArea->fontMetrics()) -
                    scrollArea->verticalScrollBar()->sizeHint().width();

    // A value may contain a word that is wider than the area, for example a long name. In this case, only
    // this value extends beyond the visible width, and the area scrolls horizontally. All other values are
    // wrapped within the visible width.
    const auto wider = [](const QWidget* one, const QWidget* other) {
        return one->minimumSizeHint().width() < other->minimumSizeHint().width();
    };
    const int room = inner->widest - before;
    const auto widest = std::max_element(values.cbegin(), values.cend(), wider);
    if (widest == values.cend() || (*widest)->minimumSizeHint().width() <= room) {
        return;
    }
    for (QLabel* value : qAsConst(values)) {
        const int place = grid->indexOf(value);
        if (place >= 0 && value->minimumSizeHint().width() > room) {
            int row = 0;
            int unused = 0;
            grid->getItemPosition(place, &row, &unused, &unused, &unused);
            grid->removeWidget(value);
            grid->addWidget(value, row, ValueColumn, 1, 2);
        } else {
            value->setMaximumWidth(room);
        }
    }
    grid->setColumnMinimumWidth(ValueColumn, room);
    grid->setColumnStretch(ValueColumn, 0);
    grid->setColumnStretch(OverflowColumn, 1);
}

void Area::updateButtons()
{
    if (entry->kind != Package::Group) {
        updateButton(filesButton, yumIO->haveFileLists());
        updateButton(changeLogButton, yumIO->haveOtherData());
    }
}

void Area::updateButton(Button& button, bool loaded)
{
    if (button.button != nullptr) {
        // The data of an installed package are in the local package database, so nothing must be loaded.
        const bool mustLoad = entry->state != Package::Installed && !loaded;
        button.button->setText(mustLoad ? tr("%1 (must load extra data)").arg(button.label) : button.label);
    }
}

void Area::setReady(bool ready)
{
    for (QPushButton* button : {filesButton.button, changeLogButton.button, repoButton}) {
        if (button != nullptr) {
            button->setEnabled(ready);
        }
    }
}

void Area::showText(const QString& title, const QString& text)
{
    if (textDialog == nullptr) {
        textDialog = new TextDialog(dialogParent);
    }
    textDialog->setWindowTitle(Literal::title(title));
    textDialog->setText(text);
    textDialog->exec();
}

void Area::handleFiles()
{
    const Busy busy(*this);
    const QString text = yumIO->getFiles(*entry);
    updateButtons();
    showText(tr("%1 %2 File List").arg(yumIO->getName(*entry), yumIO->getVerRel(*entry)), text);
}

void Area::handleChangeLog()
{
    const Busy busy(*this);
    yumIO->loadChangeLog(*entry);
    if (host->isClosing()) {
        return;
    }
    const QString text = yumIO->getChangeLog(*entry);
    updateButtons();
    showText(tr("%1 %2 Change Log").arg(yumIO->getName(*entry), yumIO->getVerRel(*entry)), text);
}

void Area::handleRepo()
{
    const QString id = yumIO->getRepo(*entry);
    const Repo::Entry* repo = RepoBrowse::find(id, yumConfIO);
    if (repo == nullptr) {
        RepoBrowse::reportUnknown(dialogParent, id);
        return;
    }
    if (repoDialog == nullptr) {
        repoDialog = new RepoDialog(yumIO, dialogParent);
    }
    repoDialog->config(*repo);
    repoDialog->exec();
}

} // namespace Instance
} // namespace Describe
} // namespace PackageTable
