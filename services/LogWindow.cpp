// SPDX-License-Identifier: GPL-2.0-or-later

#include "services/LogWindow.h"

#include <QAbstractTextDocumentLayout>
#include <QCheckBox>
#include <QDateTime>
#include <QDir>
#include <QEventLoop>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QMutexLocker>
#include <QPushButton>
#include <QSaveFile>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QSpinBox>
#include <QTextCursor>
#include <QTimer>
#include <QVBoxLayout>

#include "widgets/Colors.h"
#include "widgets/FindBar.h"
#include "widgets/HMessageBox.h"
#include "widgets/HTextEdit.h"
#include "widgets/Literal.h"
#include "widgets/Metrics.h"
#include "widgets/PlainLabel.h"

namespace Log {

namespace {

const int maxLevel = 10;
const int defaultLevel = 2;
// Info entries above this level are of lesser importance, and get a less conspicuous colour than the other
// entries.
const unsigned int maxPlainLevel = 9;

} // namespace

Window::Window(EntryList& logEntries, QWidget* openedBy)
    : QWidget(nullptr), mainWindow(openedBy), levelSpinBox(new QSpinBox(this)), entries(logEntries),
      textEdit(new HTextEdit(100, 24, this)), timesBox(new QCheckBox(tr("&Times"), this)), shown(0),
      place(-1), open(false), painting(false), askedAgain(false)
{
    setWindowTitle(tr("VYRE Log"));

    textEdit->setReadOnly(true);
    textEdit->setAccessibleName(windowTitle());
    textEdit->setUndoRedoEnabled(false);
    textEdit->setLineWrapMode(QTextEdit::NoWrap);
    textEdit->setWordWrapMode(QTextOption::NoWrap);
    textEdit->setTabChangesFocus(true);
    // Without this style, rich text would show several consecutive blanks as one blank.
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

    timesBox->setToolTip(tr("Show the time of each line"));
    connect(timesBox, SIGNAL(toggled(bool)), this, SLOT(timesChanged()));

    auto* findBar = new FindBar(textEdit, this);
    auto* find = new QPushButton(tr("&Find..."), this);
    find->setToolTip(tr("Find a text in this window (Ctrl+F)"));
    connect(find, SIGNAL(clicked()), findBar, SLOT(open()));

    auto* saveButton = new QPushButton(tr("&Save..."), this);
    saveButton->setToolTip(tr("Write the lines of this window, with their times, to a file"));
    connect(saveButton, SIGNAL(clicked()), this, SLOT(save()));

    QPushButton* close = new QPushButton(tr("&Close"), this);
    close->setToolTip(tr("Close the Log Window"));
    connect(close, SIGNAL(clicked()), this, SLOT(hide()));

    QVBoxLayout* layout = new QVBoxLayout(this);
    layout->addWidget(textEdit);
    layout->addWidget(findBar);
    QHBoxLayout* row = new QHBoxLayout();
    layout->addLayout(row);
    QLabel* levelLabel = new PlainLabel(tr("Detail level"), this);
    levelLabel->setBuddy(levelSpinBox);
    row->addWidget(levelLabel);
    row->addWidget(levelSpinBox);
    row->addWidget(timesBox);
    row->addStretch(1);
    row->addWidget(find);
    row->addWidget(saveButton);
    row->addWidget(close);
    QWidget* previous = textEdit;
    for (QWidget* next :
         {static_cast<QWidget*>(levelSpinBox), static_cast<QWidget*>(timesBox), static_cast<QWidget*>(find),
          static_cast<QWidget*>(saveButton), static_cast<QWidget*>(close)}) {
        setTabOrder(previous, next);
        previous = next;
    }
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
        // Render the entries that were logged after the first call of appended(), but before the signal was
        // connected.
        appended();
        scrollToEnd();
    }
    QWidget::setVisible(visible);
    if (visible && !wasVisible) {
        // The first show event lays the window out and thereby changes the range of the scroll bar. Scroll to
        // the end again.
        scrollToEnd();
    }
    if (!visible && wasVisible) {
        // Close the dialogs of this window too. If a dialog stayed open alone, the program could not end.
        for (QDialog* dialog : findChildren<QDialog*>()) {
            dialog->reject();
        }
        {
            QMutexLocker locker(&entries);
            disconnect(&entries, SIGNAL(appended()), this, SLOT(appended()));
        }
        open = false;
        shown = 0;
        place = -1;
        textEdit->clear();
    }
}

void Window::appended()
{
    if (!open) {
        return;
    }
    if (painting) {
        // Painting serves events, so this function may be called again before it has returned. Without this
        // check, a program that writes fast would cause endless recursion.
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

void Window::showFrom(int index)
{
    const QTextBlock block = blockOf(index);
    if (block.isValid()) {
        scrollTo(block);
        textEdit->setFocus();
    }
}

int Window::topEntry() const
{
    const QScrollBar* scrollBar = textEdit->verticalScrollBar();
    if (scrollBar->value() >= scrollBar->maximum()) {
        return -1;
    }
    // Look at the middle of the first line: a line counts only if more than half of it is visible. Only the
    // first line of an entry has the entry's index.
    const QPoint top(0, textEdit->fontMetrics().lineSpacing() / 2);
    QTextBlock block = textEdit->cursorForPosition(top).block();
    while (block.isValid() && block.userState() < 0) {
        block = block.previous();
    }
    return block.userState();
}

QTextBlock Window::blockOf(int index) const
{
    QTextBlock block = textEdit->document()->firstBlock();
    while (block.isValid() && block.userState() < index) {
        block = block.next();
    }
    return block;
}

void Window::scrollTo(const QTextBlock& block)
{
    textEdit->setTextCursor(QTextCursor(block));
    const QRectF lines = textEdit->document()->documentLayout()->blockBoundingRect(block);
    textEdit->verticalScrollBar()->setValue(static_cast<int>(lines.top()));
}

void Window::levelChanged(int)
{
    if (place < 0) { // if `place` is set, render() has not scrolled to it yet
        place = topEntry();
    }
    shown = 0;
    textEdit->clear();
    appended();
}

void Window::timesChanged()
{
    levelChanged(levelSpinBox->value());
}

void Window::save()
{
    // Do not wait for the answer in a nested event loop. If an operation ended while the dialog was open, the
    // function of the operation could return only after this loop.
    auto* dialog = new QFileDialog(this, tr("Save the Log"), QDir::homePath(), QString());
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setFileMode(QFileDialog::AnyFile);
    dialog->setOption(QFileDialog::DontUseNativeDialog);
    dialog->setOption(QFileDialog::DontConfirmOverwrite); // saveInto() asks before it replaces a file
    dialog->selectFile(QStringLiteral("vyre-log.txt"));
    // The dialog's own size does not depend on the font, so at 192 dpi its columns would be cut off.
    const QFontMetrics metrics = dialog->fontMetrics();
    dialog->resize(QSize(90 * Metrics::columnWidth(metrics), 24 * metrics.lineSpacing())
                       .boundedTo(Metrics::maxWindowSize()));
    connect(dialog, SIGNAL(fileSelected(const QString&)), this, SLOT(saveInto(const QString&)));
    dialog->open();
}

void Window::saveInto(const QString& path)
{
    savePath = path;
    if (!QFileInfo::exists(path)) {
        writeFile();
        return;
    }
    auto* question = new HMessageBox(QMessageBox::Warning, tr("Save the Log"),
                                     tr("The file %1 exists. Do you wish to replace it?").arg(path),
                                     QMessageBox::NoButton, this);
    question->setAttribute(Qt::WA_DeleteOnClose);
    const QPushButton* replace = question->addButton(tr("&Replace"), QMessageBox::AcceptRole);
    question->setDefaultButton(question->addButton(QMessageBox::Cancel));
    connect(replace, SIGNAL(clicked()), this, SLOT(writeFile()));
    question->open();
}

void Window::writeFile()
{
    QString text;
    {
        QMutexLocker locker(&entries);
        for (const Entry& entry : qAsConst(static_cast<QList<Entry>&>(entries))) {
            if (isShown(entry)) {
                text += QDateTime::fromMSecsSinceEpoch(entry.time).toString(Qt::ISODate) +
                        QLatin1String("  ") + entry.text + QLatin1Char('\n');
            }
        }
    }
    QSaveFile file(savePath);
    const bool isNew = !QFileInfo::exists(savePath);
    bool written = file.open(QIODevice::WriteOnly);
    if (written && isNew) {
        // Only the owner may read the saved log, because it describes the system.
        file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    }
    written = written && file.write(text.toUtf8()) >= 0 && file.commit();
    if (!written) {
        auto* box = new HMessageBox(QMessageBox::Critical, tr("Save the Log"),
                                    tr("Unable to write the file %1: %2").arg(savePath, file.errorString()),
                                    QMessageBox::Ok, this);
        box->setAttribute(Qt::WA_DeleteOnClose);
        box->open();
    }
}

void Window::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && open) {
        // The palette has changed. Render the text again with colours that fit the new background.
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

    // Inside an edit block, Qt lays the document out once instead of once for each line, and the view does
    // not scroll with the text.
    QScrollBar* scrollBar = textEdit->verticalScrollBar();
    const bool atEnd = scrollBar->value() >= scrollBar->maximum();
    QTextCursor block(textEdit->document());
    block.beginEditBlock();
    for (; shown < count; ++shown) {
        const Entry& entry = entries.at(static_cast<int>(shown));
        if (isShown(entry)) {
            const QTextDocument* document = textEdit->document();
            const int firstLine = document->isEmpty() ? 0 : document->blockCount();
            textEdit->appendCompact(toHtml(entry));
            document->findBlockByNumber(firstLine).setUserState(static_cast<int>(shown));
        }
    }
    block.endEditBlock();
    const QTextBlock top = place >= 0 ? blockOf(place) : QTextBlock();
    place = -1;
    if (top.isValid()) {
        scrollTo(top);
    } else if (atEnd) {
        scrollToEnd();
    }
    return true;
}

bool Window::isShown(const Entry& entry) const
{
    // Show the errors up to the default level, even if the user has chosen a lower level: messages of the
    // program refer the user to the log for these errors.
    const bool isError = entry.kind == Error && entry.level <= static_cast<unsigned int>(defaultLevel);
    return static_cast<unsigned int>(levelSpinBox->value()) >= entry.level || isError;
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
    if (timesBox->isChecked()) {
        const QTime time = QDateTime::fromMSecsSinceEpoch(entry.time).time();
        text.prepend(time.toString(QStringLiteral("HH:mm:ss")) + QLatin1String("  "));
    }
    htmlProtect(text);
    return prefix + text + suffix;
}

void Window::scrollToEnd()
{
    QScrollBar* scrollBar = textEdit->verticalScrollBar();
    scrollBar->setValue(scrollBar->maximum());
}

} // namespace Log
