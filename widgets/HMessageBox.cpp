// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/HMessageBox.h"

#include <QAbstractButton>
#include <QEvent>
#include <QFontMetrics>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "widgets/FindBar.h"
#include "widgets/HScrollArea.h"
#include "widgets/HTextEdit.h"
#include "widgets/Metrics.h"

namespace {

// The size of a text that scrolls. Longer lines are wrapped. No screen has this number of rows, so the box
// has the height of the screen.
const int scrolledColumns = 100;
const int scrolledRows = 1000;

} // namespace

HMessageBox::HMessageBox(Icon icon, const QString& title, const QString& text, StandardButtons buttons,
                         QWidget* parent)
    : QMessageBox(icon, title, QString(), buttons, parent), edit(nullptr)
{
    setTextFormat(Qt::PlainText);
    setText(text);
}

bool HMessageBox::event(QEvent* event)
{
    const bool layoutChanged = event->type() == QEvent::LayoutRequest;
    // If the text scrolls, QMessageBox would shrink the box to its smallest size.
    const bool handled = edit != nullptr && layoutChanged ? QDialog::event(event) : QMessageBox::event(event);
    if (layoutChanged) {
        fit();
    }
    return handled;
}

void HMessageBox::showEvent(QShowEvent* event)
{
    // Count the lines first, because QMessageBox needs a second to measure 5,000 lines.
    const int lines = text().count(QLatin1Char('\n'));
    if (edit == nullptr && lines > Metrics::maxWindowSize().height() / fontMetrics().lineSpacing()) {
        makeScrollable();
    }
    QMessageBox::showEvent(event);
    fit();
}

void HMessageBox::keyPressEvent(QKeyEvent* event)
{
    if (edit == nullptr || !HScrollArea::scrollByKey(edit, event)) {
        QMessageBox::keyPressEvent(event);
    }
}

// Widens the box up to the width of the screen. QMessageBox itself limits the width, and truncates long words
// such as file names. If the box is still higher than the screen, lets its text scroll.
void HMessageBox::fit()
{
    const QSize most = Metrics::maxWindowSize();
    const int width = qMin(layout()->totalMinimumSize().width(), most.width());
    if (width > this->width()) {
        const int height = layout()->hasHeightForWidth() ? layout()->totalHeightForWidth(width)
                                                         : layout()->totalMinimumSize().height();
        setFixedSize(width, height);
    }
    if (height() > most.height() && edit == nullptr) {
        makeScrollable();
    }
    if (edit != nullptr) {
        setFixedSize(layout()->totalSizeHint().expandedTo(layout()->totalMinimumSize()).boundedTo(most));
    }
}

// Replaces the label of QMessageBox by a text that scrolls.
void HMessageBox::makeScrollable()
{
    auto* label = findChild<QLabel*>(QStringLiteral("qt_msgbox_label"));
    auto* grid = qobject_cast<QGridLayout*>(layout());
    if (label == nullptr || grid == nullptr) {
        return; // another version of Qt builds the box differently
    }
    edit = new HTextEdit(scrolledColumns, scrolledRows, this);
    edit->setReadOnly(true);
    edit->setTabChangesFocus(true);
    edit->setAccessibleName(windowTitle());
    edit->setPlainText(text());

    int row = 0;
    int column = 0;
    int rows = 0;
    int columns = 0;
    grid->getItemPosition(grid->indexOf(label), &row, &column, &rows, &columns);
    label->hide();
    grid->removeWidget(label);
    auto* place = new QVBoxLayout;
    place->addWidget(edit, 1);
    place->addWidget(new FindBar(edit, this));
    grid->addLayout(place, row, column, rows, columns);
    edit->show(); // at once, so that the layout includes it
    // Without the label, the first widget in the order of the Tab key is the text. Keep the focus on a
    // button.
    if (focusWidget() == nullptr) {
        const QList<QAbstractButton*> all = buttons();
        QAbstractButton* first = defaultButton() != nullptr ? defaultButton() : all.value(0);
        if (first != nullptr) {
            first->setFocus();
        }
    }
}
