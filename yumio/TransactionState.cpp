// SPDX-License-Identifier: GPL-2.0-or-later

#include "yumio/TransactionState.h"

#include "yumio/Transaction.h"

using Transaction::atLeast;

void TransactionState::weighNew(quint64 size, bool local)
{
    (local ? cachedSize : downloadSize) += size;
    downloadWeight += atLeast(size);
    rpmWeight += atLeast(3 * size);
}

void TransactionState::weighRemote(quint64 size, bool delta)
{
    ++remoteCount;
    remoteWeight += atLeast(size);
    if (delta) {
        remoteWeight += atLeast(size / 3);
    }
}

void TransactionState::shareDownloadSteps()
{
    if (downloadWeight != 0) {
        downloadSteps = static_cast<quint32>(remoteWeight * Transaction::downloadSteps / downloadWeight);
    }
}

void TransactionState::startDownloads()
{
    downloading = true;
    threadCount = remoteCount;
    threadsMax = remoteWeight;
    clearSlots();
}

void TransactionState::endDownloads()
{
    downloading = false;
    clearSlots();
}

void TransactionState::clearSlots()
{
    nextSlot = 0;
    payloadSlots.clear();
}
