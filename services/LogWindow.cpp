// SPDX-License-Identifier: GPL-2.0-or-later

#include "services/LogWindow.h"

#include <QEventLoop>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QMutexLocker>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QSpinBox>
#include <QTextCursor>
#include <QTimer>
#include <QVBoxLayout>

#include "widgets/Colors.h"
#include "widgets/HTextEdit.h"
#include "widgets/Literal.h"
#include "widgets/PlainLabel.h"

namespace Log {

namespace {

const int maxLevel = 10;
const int defaultLevel = 2;
// If the level of an Info entry is higher than this, the entry has the colour of less important text.
const unsigned int maxPlainLevel = 9;

} // namespace

Window::Window(EntryList& logEntries, QWidget* openedBy)
    : QWidget(nullptr), mainWindow(openedBy), levelSpinBox(new QSpinBox(this)), entries(logEntries),
      textEdit(new HTextEdit(100, 24, this)), shown(0), open(false), painting(false), askedAgain(false)
{
    setWindowTitle(tr("VYRE Log"));

    textEdit->setReadOnly(true);
    textEdit->setAccessibleName(windowTitle());
    textEdit->setUndoRedoEnabled(false);
    textEdit->setLineWrapMode(QTextEdit::NoWrap);
    textEdit->setWordWrapMode(QTextOption::NoWrap);
    textEdit->setTabChangesFocus(true);
    // By default, rich text shows several blanks as one.
    textEdit->document()->setDefaultStyleSheet(QLatin1String("font { white-space: pre; }"));

    levelSpinBox->setRange(0, maxLevel);
    levelSpinBox->setValue(defaultLevel);
    levelSpinBox->setToolTip(
        Literal::toolTip(tr("Threshold beyond which more detailed log messages are omitted.\n"
                            "Higher levels show more detail.\n"
                            "The valid range is 0 .. %1.\n"
                            "The default is %2.\n"
                            "Higher levels contain debug information.\n"
                            "This corresponds to yum's debuglevel (-d) option.")
                             .arg(maxLevel)
                             .arg(defaultLevel)));
    connect(levelSpinBox, SIGNAL(valueChanged(int)), this, SLOT(levelChanged(int)));

    QPushButton* close = new QPushButton(tr("&Close"), this);
    close->setToolTip(tr("Close the Log Window"));
    connect(close, SIGNAL(clicked()), this, SLOT(hide()));

    QVBoxLayout* layout = new QVBoxLayout(this);
    layout->addWidget(textEdit);
    QHBoxLayout* row = new QHBoxLayout();
    layout->addLayout(row);
    QLabel* levelLabel = new PlainLabel(tr("Detail level"), this);
    levelLabel->setBuddy(levelSpinBox);
    row->addWidget(levelLabel);
    row->addWidget(levelSpinBox);
    row->addStretch(1);
    row->addWidget(close);
    setTabOrder(textEdit, levelSpinBox);
    setTabOrder(levelSpinBox, close);
}

void Window::htmlProtect(QString& line)
{
    line.replace(QLatin1String("<"), QLatin1String("&lt;"));
    line.replace(QLatin1String(">"), QLatin1String("&gt;"));
    line.replace(QLatin1String(" "), QLatin1String("&#x0020;"));
    line.replace(QLatin1String("\t"), QLatin1String("&#x0009;"));
}

void Window::setVisible(bool visible)
{
    const bool wasVisible = isVisible();
    if (visible && !wasVisible) {
        textEdit->clear();
        shown = 0;
        open = true;
        appended();
        {
            QMutexLocker locker(&entries);
            connect(&entries, SIGNAL(appended()), this, SLOT(appended()));
        }
        // This call renders the entries that arrived after the rendering above but before the connection.
        appended();
        scrollToEnd();
    }
    QWidget::setVisible(visible);
    if (visible && !wasVisible) {
        // The first show lays the window out, which changes the range of the scroll bar.
        scrollToEnd();
    }
    if (!visible && wasVisible) {
        {
            QMutexLocker locker(&entries);
            disconnect(&entries, SIGNAL(appended()), this, SLOT(appended()));
        }
        open = false;
        shown = 0;
        textEdit->clear();
    }
}

void Window::appended()
{
    if (!open) {
        return;
    }
    if (painting) {
        // This prevents unlimited recursion if the writer is faster than the painting.
        askedAgain = true;
        return;
    }
    if (!render()) {
        return;
    }
    QScopedValueRollback<bool> guard(painting, true);
    QEventLoop loop;
    loop.processEvents(QEventLoop::ExcludeUserInputEvents);
    if (askedAgain) {
        askedAgain = false;
        QTimer::singleShot(0, this, SLOT(appended()));
    }
}

void Window::levelChanged(int)
{
    shown = 0;
    textEdit->clear();
    appended();
}

void Window::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && open) {
        // The colours of the rendered text fit the former background.
        levelChanged(levelSpinBox->value());
    }
}

void Window::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape) {
        event->accept();
        hide();
    } else {
        QWidget::keyPressEvent(event);
    }
}

bool Window::render()
{
    QMutexLocker locker(&entries);
    const quint32 count = static_cast<quint32>(entries.count());
    if (shown >= count) {
        return false;
    }

    // With one edit block, the document is laid out once instead of once for each line. During the block, the
    // view does not follow the end of the text.
    QScrollBar* scrollBar = textEdit->verticalScrollBar();
    const bool atEnd = scrollBar->value() >= scrollBar->maximum();
    const unsigned int threshold = static_cast<unsigned int>(levelSpinBox->value());
    QTextCursor block(textEdit->document());
    block.beginEditBlock();
    for (; shown < count; ++shown) {
        const Entry& entry = entries.at(static_cast<int>(shown));
        // The program refers users to the log for these errors, whatever the level is.
        const bool isError = entry.kind == Error && entry.level <= static_cast<unsigned int>(defaultLevel);
        if (threshold >= entry.level || isError) {
            textEdit->appendCompact(toHtml(entry));
        }
    }
    block.endEditBlock();
    if (atEnd) {
        scrollToEnd();
    }
    return true;
}

QString Window::readable(const QString& color) const
{
    return Colors::readable(color, palette().color(QPalette::Base));
}

QString Window::toHtml(const Entry& entry) const
{
    QString prefix;
    QString suffix = tr("</font>");
    switch (entry.kind) {
    case Info:
        prefix = entry.level <= maxPlainLevel ? tr("<font>")
                                              : tr("<font color=\"%1\">").arg(readable(Colors::minor()));
        break;
    case OK:
        prefix = tr("<font color=\"%1\">").arg(readable(Colors::ok()));
        break;
    case Warning:
        prefix = tr("<font color=\"%1\">").arg(readable(Colors::warning()));
        break;
    case Action:
        prefix = tr("<h2><font color=\"%1\">").arg(readable(Colors::action()));
        suffix = tr("</font></h2>");
        break;
    case Error:
    default:
        prefix = tr("<font color=\"%1\">").arg(readable(Colors::error()));
        break;
    }
    QString text = entry.text;
    htmlProtect(text);
    return prefix + text + suffix;
}

void Window::scrollToEnd()
{
    QScrollBar* scrollBar = textEdit->verticalScrollBar();
    scrollBar->setValue(scrollBar->maximum());
}

} // namespace Log
