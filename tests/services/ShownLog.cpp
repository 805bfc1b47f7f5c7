// SPDX-License-Identifier: GPL-2.0-or-later

#include "tests/services/ShownLog.h"

#include <QMutexLocker>

void ShownLog::WatchedEntries::note()
{
    const bool gotIt = tryLock();
    if (gotIt) {
        unlock();
    }
    locked.append(!gotIt);
}

void ShownLog::init()
{
    entries = std::make_unique<WatchedEntries>();
    window = std::make_unique<Log::Window>(*entries, nullptr);
    pane = window->findChild<HTextEdit*>();
    level = window->findChild<QSpinBox*>();
}

void ShownLog::cleanup()
{
    window.reset();
    entries.reset();
}

void ShownLog::log(Log::Kind kind, unsigned int entryLevel, const QString& text)
{
    {
        QMutexLocker locker(entries.get());
        entries->append(Log::Entry(kind, entryLevel, text));
    }
    entries->emitAppended();
}

void ShownLog::open()
{
    window->show();
    QVERIFY(QTest::qWaitForWindowActive(window.get(), 30000));
}

QStringList ShownLog::lines() const
{
    const QString text = pane->toPlainText();
    return text.isEmpty() ? QStringList() : text.split('\n');
}

QColor ShownLog::colourOf(int line) const
{
    const QTextBlock block = pane->document()->findBlockByNumber(line);
    const QTextCharFormat format = block.begin().fragment().charFormat();
    return format.hasProperty(QTextFormat::ForegroundBrush) ? format.foreground().color() : QColor();
}
