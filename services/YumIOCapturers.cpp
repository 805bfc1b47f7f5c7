// SPDX-License-Identifier: GPL-2.0-or-later

#include "services/YumIOCapturers.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <mutex>
#include <sys/ioctl.h>
#include <unistd.h>
#include <vector>

#include <QEvent>
#include <QFile>
#include <QMetaObject>
#include <QTextCodec>
#include <QThread>

namespace {

// Returns a duplicate of the descriptor, or -1. The duplicate has a number above 2, and child processes do
// not inherit it.
int saveDescriptor(int fd)
{
    return fcntl(fd, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
}

bool replaceDescriptor(int by, int fd)
{
    int result;
    do {
        result = dup2(by, fd);
    } while (result < 0 && (errno == EINTR || errno == EBUSY));
    return result >= 0;
}

void addFlag(int fd, int flag)
{
    fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) | flag);
}

// Writes the C library's buffered text now, because this text must go to the descriptors that were in use
// when the program printed the text.
void flushStreams()
{
    fflush(stdout);
    fflush(stderr);
}

// Reads only the bytes that are available at the start of the call. Otherwise a writer that never pauses
// would keep the reader in this function.
QByteArray readWaiting(const FileDescriptor& fd)
{
    int waiting = 0;
    if (ioctl(fd.get(), FIONREAD, &waiting) != 0 || waiting == 0) {
        return QByteArray();
    }
    QFile file;
    file.open(fd.get(), QIODevice::ReadOnly | QIODevice::Unbuffered, QFileDevice::DontCloseHandle);
    return file.read(waiting);
}

// All existing minions. Workers create them, and the graphical thread deletes them.
std::mutex minionsMutex;
std::vector<YumIOCapturersMinion*> minions;

} // namespace

YumIOCapturersMinion::YumIOCapturersMinion(CapturedOutput* textReceiver, int stdoutReadEnd, int stderrReadEnd)
    : receiver(textReceiver), active(false), finalizing(false), stdoutFd(stdoutReadEnd),
      stderrFd(stderrReadEnd), finished(1), stdoutDecoder(QTextCodec::codecForName("UTF-8")),
      stderrDecoder(QTextCodec::codecForName("UTF-8"))
{
    const std::lock_guard<std::mutex> lock(minionsMutex);
    minions.push_back(this);
}

YumIOCapturersMinion::~YumIOCapturersMinion()
{
    {
        const std::lock_guard<std::mutex> lock(minionsMutex);
        minions.erase(std::remove(minions.begin(), minions.end(), this), minions.end());
    }
    readStdout();
    readStderr();
}

void YumIOCapturersMinion::serveAll()
{
    std::vector<YumIOCapturersMinion*> all;
    {
        const std::lock_guard<std::mutex> lock(minionsMutex);
        all = minions;
    }
    for (YumIOCapturersMinion* minion : all) {
        if (minion->thread() != QThread::currentThread()) {
            continue; // the worker is still creating this minion
        }
        // Run initialize() and finalize() now if the worker has queued these calls. The pointer stays valid,
        // because only this thread deletes minions.
        QCoreApplication::sendPostedEvents(minion, QEvent::MetaCall);
        minion->readStdout();
        minion->readStderr();
        if (minion->finalizing) {
            // finalize() of this minion is still running, below this call on the stack: it waits for the
            // receiver, which processes events. Therefore end the capture here.
            minion->endFinalizing();
        }
    }
}

void YumIOCapturersMinion::activate()
{
    QMetaObject::invokeMethod(this, "initialize", Qt::QueuedConnection);
}

void YumIOCapturersMinion::deactivate()
{
    finished.acquire();
    QMetaObject::invokeMethod(this, "finalize", Qt::QueuedConnection);
    finished.acquire();
    finished.release();
}

void YumIOCapturersMinion::initialize()
{
    if (active) {
        return;
    }
    stdoutNotifier = std::make_unique<QSocketNotifier>(stdoutFd.get(), QSocketNotifier::Read);
    stderrNotifier = std::make_unique<QSocketNotifier>(stderrFd.get(), QSocketNotifier::Read);
    connect(stdoutNotifier.get(), SIGNAL(activated(int)), this, SLOT(readStdout()));
    connect(stderrNotifier.get(), SIGNAL(activated(int)), this, SLOT(readStderr()));
    active = true;
}

void YumIOCapturersMinion::finalize()
{
    finalizing = true;
    if (active) {
        // Disable the notifiers, because a pipe whose writers are closed is always readable.
        for (QSocketNotifier* notifier : {stdoutNotifier.get(), stderrNotifier.get()}) {
            notifier->setEnabled(false);
            disconnect(notifier, nullptr, this, nullptr);
        }
        readStdout();
        readStderr();
    }
    endFinalizing();
}

void YumIOCapturersMinion::endFinalizing()
{
    if (active) {
        receiver->captureEnded();
        active = false;
    }
    finalizing = false;
    finished.release();
}

// The receiver may process events, which may finalize and delete this minion. Therefore this function uses no
// member after it has called the receiver.
void YumIOCapturersMinion::readStdout()
{
    const QString text = stdoutDecoder.toUnicode(readWaiting(stdoutFd));
    if (!text.isEmpty()) {
        receiver->stdoutCapturedWrite(text);
    }
}

void YumIOCapturersMinion::readStderr()
{
    const QString text = stderrDecoder.toUnicode(readWaiting(stderrFd));
    if (!text.isEmpty()) {
        receiver->stderrCapturedWrite(text);
    }
}

bool YumIOCapturers::Pipe::open()
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        return false;
    }
    readEnd.reset(ends[0]);
    writeEnd.reset(ends[1]);
    return true;
}

YumIOCapturers::YumIOCapturers(CapturedOutput* textReceiver)
    : minion(nullptr), receiver(textReceiver), savedStdout(saveDescriptor(STDOUT_FILENO)),
      savedStderr(saveDescriptor(STDERR_FILENO)), stdoutRedirected(false), stderrRedirected(false)
{
    if (!stdoutPipe.open() || !stderrPipe.open()) {
        receiver->error(tr("Unable to open pipe to capture rpm transaction output"));
        return;
    }

    flushStreams();
    // Redirect the descriptors only if their duplicates are saved, because restore() needs the duplicates.
    if (savedStdout.isOpen() && savedStderr.isOpen()) {
        stdoutRedirected = replaceDescriptor(stdoutPipe.writeEnd.get(), STDOUT_FILENO);
        stderrRedirected = stdoutRedirected && replaceDescriptor(stderrPipe.writeEnd.get(), STDERR_FILENO);
    }
    if (!stderrRedirected) {
        // Nobody reads this pipe, so a write must fail when the pipe is full, instead of waiting for ever.
        addFlag(stdoutPipe.writeEnd.get(), O_NONBLOCK);
        receiver->error(tr("Unable to dup2 pipe to capture rpm transaction output"));
        return;
    }

    addFlag(stdoutPipe.readEnd.get(), O_NONBLOCK);
    addFlag(stderrPipe.readEnd.get(), O_NONBLOCK);
    startPump();
    minion = new YumIOCapturersMinion(receiver, stdoutPipe.readEnd.release(), stderrPipe.readEnd.release());
    minion->moveToThread(QCoreApplication::instance()->thread());
    minion->activate();
}

// Puts an OutputPump between the two pipes and their reader. Afterwards, the readEnd of each pipe reads what
// the pump writes. If the pump cannot be created, the minion reads the pipes directly.
void YumIOCapturers::startPump()
{
    Pipe behind[OutputPump::channelCount];
    OutputPump::Channel channels[OutputPump::channelCount];
    Pipe* const before[] = {&stdoutPipe, &stderrPipe};
    for (int i = 0; i < OutputPump::channelCount; ++i) {
        if (!behind[i].open()) {
            return;
        }
    }
    for (int i = 0; i < OutputPump::channelCount; ++i) {
        addFlag(behind[i].readEnd.get(), O_NONBLOCK);
        addFlag(behind[i].writeEnd.get(), O_NONBLOCK);
        channels[i].from.reset(before[i]->readEnd.release());
        channels[i].to.reset(behind[i].writeEnd.release());
    }
    pump = std::make_unique<OutputPump>();
    const bool started = pump->start(channels);
    for (int i = 0; i < OutputPump::channelCount; ++i) {
        before[i]->readEnd.reset(started ? behind[i].readEnd.release() : channels[i].from.release());
    }
    if (!started) {
        pump.reset();
    }
}

YumIOCapturers::~YumIOCapturers()
{
    flushStreams();
    if (!restore(savedStdout, STDOUT_FILENO, stdoutRedirected) ||
        !restore(savedStderr, STDERR_FILENO, stderrRedirected)) {
        (void)pump.release(); // a descriptor is still redirected, so the pump must run until the program ends
        return;
    }
    stdoutPipe.writeEnd.close();
    stderrPipe.writeEnd.close();
    if (pump) {
        pump->stop();
    }
    if (minion != nullptr) {
        minion->deactivate();
        minion->deleteLater();
    }
}

bool YumIOCapturers::restore(const FileDescriptor& saved, int fd, bool redirected)
{
    if (redirected && !replaceDescriptor(saved.get(), fd)) {
        // The message names stderr for both descriptors.
        receiver->error(tr("Unable to dup2 to restore stderr"));
        return false;
    }
    return true;
}

YumIOCapturersUser::YumIOCapturersUser(YumIOCapturers*& capturersSlot, CapturedOutput* receiver)
    : slot(capturersSlot), former(capturersSlot)
{
    slot = new YumIOCapturers(receiver);
}

YumIOCapturersUser::~YumIOCapturersUser()
{
    delete slot;
    slot = former;
}
