// SPDX-License-Identifier: GPL-2.0-or-later

#include "services/Unattended.h"

#include <QByteArray>
#include <QString>
#include <QtDebug>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <vector>

#include <syslog.h>

namespace Unattended {

namespace {

std::atomic<bool> unattended(false);
std::atomic<bool> everything(false);
std::atomic<void (*)(const QString&)> reporter(nullptr);
std::mutex mutex; // guards `waiters`, and every change to the unattended state
std::vector<Waiter*> waiters;

} // namespace

bool is()
{
    return unattended;
}

bool reportsEverything()
{
    return unattended && everything;
}

void begin(Reported what)
{
    const std::lock_guard<std::mutex> lock(mutex);
    everything = what == Reported::Everything;
    if (unattended.exchange(true)) {
        return;
    }
    for (Waiter* waiter : waiters) {
        waiter->giveUpWaiting();
    }
}

bool add(Waiter* waiter)
{
    const std::lock_guard<std::mutex> lock(mutex);
    if (unattended) {
        return false;
    }
    waiters.push_back(waiter);
    return true;
}

void remove(Waiter* waiter)
{
    const std::lock_guard<std::mutex> lock(mutex);
    waiters.erase(std::remove(waiters.begin(), waiters.end(), waiter), waiters.end());
}

void report(const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    if (void (*const function)(const QString&) = reporter) {
        function(text);
    } else {
        qWarning("%s", bytes.constData());
    }
    // syslog() itself adds the program's name.
    syslog(LOG_USER | LOG_WARNING, "%s", bytes.constData());
}

void reportThrough(void (*function)(const QString& text))
{
    reporter = function;
}

} // namespace Unattended
