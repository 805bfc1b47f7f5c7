// SPDX-License-Identifier: GPL-2.0-or-later

#include "packagetable/DescribeDialog.h"

#include "yumio/YumIO.h"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPushButton>
#include <QScrollBar>
#include <QTimer>
#include <QVBoxLayout>

#include "app/base/Fonts.h"
#include "packagetable/DescribeArea.h"
#include "widgets/HScrollArea.h"
#include "widgets/HSeparator.h"
#include "widgets/Metrics.h"
#include "widgets/PlainLabel.h"

namespace PackageTable {
namespace Describe {

Dialog::Dialog(QWidget* parent)
    : QDialog(parent), backEnd(nullptr), top(new QHBoxLayout), content(nullptr), ready(true), closing(false),
      closeButton(new QPushButton(tr("Close")))
{
    setWindowTitle(tr("VYRE Package Description"));
    setAttribute(Qt::WA_ShowModal);
    auto* column = new QVBoxLayout(this);
    column->addLayout(top, 1);
    auto* buttons = new QHBoxLayout;
    column->addLayout(buttons);
    buttons->addStretch(1);
    buttons->addWidget(closeButton);
    connect(closeButton, SIGNAL(clicked()), this, SLOT(accept()));
}

Dialog::~Dialog()
{
    clear();
}

void Dialog::config(YumIO* yumIO, const Package::Entry& entry, YumConfIO* yumConfIO)
{
    clear();
    backEnd = yumIO;
    content = new QWidget;
    auto* whole = new QVBoxLayout(content);
    whole->setContentsMargins(0, 0, 0, 0);
    auto* name = new PlainLabel(yumIO->getName(entry));
    name->setTextInteractionFlags(Qt::TextSelectableByMouse);
    name->setWordWrap(true);
    name->setFont(Fonts::makeHeader(name->font()));
    whole->addWidget(name);
    whole->addWidget(new HSeparator);

    // If many versions are installed, all areas together are higher than the screen, so the dialog scrolls.
    auto* scrolled = new HScrollArea;
    scrolled->setFrameStyle(QFrame::Plain | QFrame::NoFrame);
    scrolled->setWidgetResizable(true);
    scrolled->setFocusPolicy(Qt::NoFocus);
    auto* inner = new QWidget;
    auto* column = new QVBoxLayout(inner);
    column->setContentsMargins(0, 0, 0, 0);
    areas.append(new Instance::Area(this, column, yumIO, entry, yumConfIO, true));
    for (const Package::Entry* version = entry.next; version != nullptr; version = version->next) {
        column->addWidget(new HSeparator);
        areas.append(new Instance::Area(this, column, yumIO, *version, yumConfIO, false));
    }
    scrolled->setWidget(inner);
    whole->addWidget(scrolled, 1);
    top->addWidget(content);
    closeButton->setFocus();
    layout()->activate(); // updates the size hint for the new content
    resize(sizeHint().boundedTo(Metrics::maxWindowSize()));
}

void Dialog::keyPressEvent(QKeyEvent* event)
{
    // A button has the focus, but the keys that scroll must act on the text. In a small window, the first
    // area and the area around it both have a scroll bar. Home and End move both scroll bars; all other keys
    // move only the outer scroll bar.
    const bool toAnEnd = event->key() == Qt::Key_Home || event->key() == Qt::Key_End;
    bool scrolled = false;
    for (HScrollArea* area : findChildren<HScrollArea*>()) {
        if ((!scrolled || toAnEnd) && area->verticalScrollBar()->maximum() > 0) {
            scrolled = HScrollArea::scrollByKey(area, event) || scrolled;
        }
    }
    if (!scrolled) {
        QDialog::keyPressEvent(event);
    }
}

void Dialog::clear()
{
    if (content != nullptr) {
        top->removeWidget(content);
        delete content;
        content = nullptr;
    }
    qDeleteAll(areas);
    areas.clear();
}

void Dialog::setReady(bool isReady)
{
    ready = isReady;
    closeButton->setEnabled(ready);
    for (Instance::Area* area : qAsConst(areas)) {
        area->setReady(ready);
    }
    if (ready && closing) {
        closing = false;
        // reject() deletes the areas. A function of an area is still waiting on the stack, so call reject()
        // only after that function has returned.
        QTimer::singleShot(0, this, SLOT(reject()));
    }
}

void Dialog::closeLater()
{
    closing = closing || (backEnd != nullptr && backEnd->stop());
}

void Dialog::setVisible(bool visible)
{
    if (!visible) {
        clear();
    }
    QDialog::setVisible(visible);
}

void Dialog::done(int result)
{
    if (ready) {
        QDialog::done(result);
    } else {
        closeLater();
    }
}

void Dialog::closeEvent(QCloseEvent* event)
{
    if (!ready) {
        closeLater();
        event->ignore();
        return;
    }
    QDialog::closeEvent(event);
}

} // namespace Describe
} // namespace PackageTable
