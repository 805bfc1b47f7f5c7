// SPDX-License-Identifier: GPL-2.0-or-later

#include "services/YumIOCapturers.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <functional>
#include <memory>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

#include <QDir>
#include <QMutex>
#include <QMutexLocker>
#include <QTemporaryFile>
#include <QTest>
#include <QThread>
#include <QTimer>

namespace {

class Receiver final : public CapturedOutput
{
public:
    void stdoutCapturedWrite(const QString& text) override { append(out, text); }
    void stderrCapturedWrite(const QString& text) override { append(err, text); }
    void captureEnded() override
    {
        QMutexLocker locker(&mutex);
        ended.append(out + '|' + err);
        otherThread = otherThread || QThread::currentThread() != QCoreApplication::instance()->thread();
    }
    void error(const QString& text) override
    {
        QMutexLocker locker(&mutex);
        errors.append(text);
    }

    QString output() const
    {
        QMutexLocker locker(&mutex);
        return out;
    }

    // If true, each write processes events, as an open log window does.
    bool processEventsWhenWritten = false;
    // The first write calls this function.
    std::function<void()> onceWritten;

    mutable QMutex mutex;
    QString out;
    QString err;
    QStringList errors;
    QStringList ended; // for each capture that has ended: all output until its end
    bool otherThread = false;

private:
    void append(QString& to, const QString& text)
    {
        {
            QMutexLocker locker(&mutex);
            to += text;
            otherThread = otherThread || QThread::currentThread() != QCoreApplication::instance()->thread();
        }
        if (processEventsWhenWritten) {
            QCoreApplication::processEvents();
        }
        if (const std::function<void()> function = std::exchange(onceWritten, nullptr)) {
            function();
        }
    }
};

// Runs the operation on a worker while the graphical thread runs an event loop, as real operations do.
void runOnWorker(std::function<void()> operation)
{
    std::unique_ptr<QThread> worker(QThread::create(operation));
    QEventLoop loop;
    QObject::connect(worker.get(), SIGNAL(finished()), &loop, SLOT(quit()));
    worker->start();
    loop.exec();
    worker->wait();
    loop.processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

QStringList openDescriptors()
{
    // The list includes the descriptor with which QDir reads the directory.
    return QDir("/proc/self/fd").entryList(QDir::Files | QDir::System | QDir::NoDotAndDotDot);
}

int countDescriptors()
{
    return openDescriptors().count();
}

bool sameFile(int fd, const struct stat& expected)
{
    struct stat now;
    return fstat(fd, &now) == 0 && now.st_dev == expected.st_dev && now.st_ino == expected.st_ino;
}

// Returns whether the pipe may be too full for the next block. A writer to a full pipe must wait for the
// reader.
bool isFull(int fd)
{
    int waiting = 0;
    return ioctl(fd, FIONREAD, &waiting) == 0 && waiting > fcntl(fd, F_GETPIPE_SZ) - 4096;
}

// The dup2() below fails for this descriptor; -1 stands for no descriptor. A test cannot make the real dup2()
// fail.
std::atomic<int> irreplaceable(-1);

void writeAll(int fd, const QByteArray& bytes)
{
    int done = 0;
    while (done < bytes.size()) {
        const ssize_t written = write(fd, bytes.constData() + done, static_cast<size_t>(bytes.size() - done));
        if (written < 0) {
            return;
        }
        done += static_cast<int>(written);
    }
}

} // namespace

extern "C" int dup2(int by, int fd) noexcept
{
    static const auto real = reinterpret_cast<int (*)(int, int)>(dlsym(RTLD_NEXT, "dup2"));
    if (fd == irreplaceable) {
        errno = EBADF;
        return -1;
    }
    return real(by, fd);
}

class YumIOCapturersTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void theLargeOutputOfAChildArrivesCompletely();
    void allOutputOfTwoFastWritersArrives();
    void capturedTextIsDeliveredOnTheGraphicalThread();
    void theLastOutputOfAChildArrives();
    void theDestructorReturnsOnlyAfterTheLastOutputHasArrived();
    void theReceiverIsNotifiedOfTheEndOfACaptureAfterItsLastOutput();
    void aCharacterThatIsSplitBetweenTwoReadsArrivesUndamaged();
    void aSplitCharacterOnOneStreamDoesNotAffectTheOtherStream();
    void theDestructorRestoresTheDescriptors();
    void bufferedTextFromBeforeACaptureGoesToTheOriginalDescriptor();
    void aBackgroundChildDoesNotDelayTheEndOfTheCapture();
    void aBackgroundChildThatKeepsWritingDoesNotDelayTheEndOfTheCapture();
    void aFastWriterDoesNotFreezeTheGraphicalThread();
    void allOutputArrivesEvenIfTheReceiverProcessesEvents();
    void theWorkerDoesNotWaitIfTheProgramEndsInsideTheReceiver();
    void aCaptureLeaksNoDescriptors();
    void childrenInheritOnlyTheStandardDescriptorsDuringACapture();
    void theOutputIsNotRedirectedIfPipesCannotBeCreated_data();
    void theOutputIsNotRedirectedIfPipesCannotBeCreated();
    void aDescriptorThatCannotBeSavedIsNotReplaced();
    void aDescriptorThatCannotBeReplacedKeepsItsFile_data();
    void aDescriptorThatCannotBeReplacedKeepsItsFile();
    void aDescriptorThatCannotBeRestoredIsReportedAndReadingContinues_data();
    void aDescriptorThatCannotBeRestoredIsReportedAndReadingContinues();
    void deletingANestedUserObjectRestoresThePointerToTheOuterCapturers();

private:
    struct stat originalStdout;
    struct stat originalStderr;
};

void YumIOCapturersTest::init()
{
    QVERIFY(fstat(STDOUT_FILENO, &originalStdout) == 0);
    QVERIFY(fstat(STDERR_FILENO, &originalStderr) == 0);
}

void YumIOCapturersTest::cleanup()
{
    QVERIFY(sameFile(STDOUT_FILENO, originalStdout));
    QVERIFY(sameFile(STDERR_FILENO, originalStderr));
}

void YumIOCapturersTest::theLargeOutputOfAChildArrivesCompletely()
{
    Receiver receiver;
    int status = -1;
    runOnWorker([&] {
        YumIOCapturers capturers(&receiver);
        status =
            system("head -c 300000 /dev/zero | tr '\\0' o & head -c 300000 /dev/zero | tr '\\0' e >&2; wait");
    });
    QCOMPARE(status, 0);
    QCOMPARE(receiver.out, QString(300000, 'o'));
    QCOMPARE(receiver.err, QString(300000, 'e'));
    QCOMPARE(receiver.errors, QStringList());
}

void YumIOCapturersTest::allOutputOfTwoFastWritersArrives()
{
    // The lines have numbers, so that lost, repeated or reordered lines cause a difference.
    const auto lines = [](int from, int to) {
        QString text;
        for (int number = from; number <= to; ++number) {
            text += QString::number(number) + '\n';
        }
        return text;
    };
    Receiver receiver;
    runOnWorker([&] { YumIOCapturers capturers(&receiver); });
    const int descriptors = countDescriptors();

    // Keeps the graphical thread busy several times, each time until both pipes are full and their writers
    // must wait.
    constexpr int pauses = 10;
    std::atomic<bool> writing(false);
    int bothFull = 0;
    QTimer busy;
    connect(&busy, &QTimer::timeout, this, [&] {
        for (int i = 0; i < 10000 && writing && bothFull < pauses; ++i) {
            if (isFull(STDOUT_FILENO) && isFull(STDERR_FILENO)) {
                ++bothFull;
                break;
            }
            QThread::msleep(1);
        }
    });
    busy.start(0);
    int status = -1;
    runOnWorker([&] {
        YumIOCapturers capturers(&receiver);
        writing = true;
        status = system("seq 1000000 1400000 & seq 5000000 5400000 >&2; wait");
        writing = false;
    });
    busy.stop();
    QCOMPARE(status, 0);
    QCOMPARE(bothFull, pauses);
    QVERIFY(receiver.out == lines(1000000, 1400000));
    QVERIFY(receiver.err == lines(5000000, 5400000));
    QCOMPARE(receiver.errors, QStringList());
    QCOMPARE(countDescriptors(), descriptors);
}

void YumIOCapturersTest::capturedTextIsDeliveredOnTheGraphicalThread()
{
    Receiver receiver;
    runOnWorker([&] {
        YumIOCapturers capturers(&receiver);
        writeAll(STDOUT_FILENO, "text");
    });
    QCOMPARE(receiver.out, QString("text"));
    QVERIFY(!receiver.otherThread);
}

void YumIOCapturersTest::theLastOutputOfAChildArrives()
{
    for (int i = 0; i < 50; ++i) {
        Receiver receiver;
        QString outAtTheEnd;
        runOnWorker([&] {
            {
                YumIOCapturers capturers(&receiver);
                (void)!system("printf 'line\\nno newline at the end'; printf 'last words' >&2");
            }
            // The operation ends here, so all output must have arrived.
            outAtTheEnd = receiver.output();
        });
        QCOMPARE(outAtTheEnd, QString("line\nno newline at the end"));
        QCOMPARE(receiver.out, QString("line\nno newline at the end"));
        QCOMPARE(receiver.err, QString("last words"));
    }
}

void YumIOCapturersTest::theDestructorReturnsOnlyAfterTheLastOutputHasArrived()
{
    const QByteArray text(65536, 'x'); // the capacity of a pipe
    for (int i = 0; i < 200; ++i) {
        Receiver receiver;
        int arrived = 0;
        runOnWorker([&] {
            {
                YumIOCapturers capturers(&receiver);
                writeAll(STDOUT_FILENO, text);
            }
            arrived = receiver.output().size();
        });
        QCOMPARE(arrived, text.size());
    }
}

void YumIOCapturersTest::theReceiverIsNotifiedOfTheEndOfACaptureAfterItsLastOutput()
{
    Receiver receiver;
    for (const char* words : {"one", " two"}) {
        runOnWorker([&] {
            YumIOCapturers capturers(&receiver);
            writeAll(STDOUT_FILENO, words);
            writeAll(STDERR_FILENO, "e");
        });
    }
    QCOMPARE(receiver.ended, QStringList({"one|e", "one two|ee"}));
    QVERIFY(!receiver.otherThread);
}

void YumIOCapturersTest::aCharacterThatIsSplitBetweenTwoReadsArrivesUndamaged()
{
    Receiver receiver;
    runOnWorker([&] {
        YumIOCapturers capturers(&receiver);
        writeAll(STDOUT_FILENO, "a\xe2\x82");
        while (receiver.output() != "a") {
            QThread::yieldCurrentThread();
        }
        writeAll(STDOUT_FILENO, "\xac"
                                "b");
    });
    QCOMPARE(receiver.out, QString::fromUtf8("a\xe2\x82\xac"
                                             "b"));
}

void YumIOCapturersTest::aSplitCharacterOnOneStreamDoesNotAffectTheOtherStream()
{
    Receiver receiver;
    runOnWorker([&] {
        YumIOCapturers capturers(&receiver);
        writeAll(STDOUT_FILENO, "o\xc3");
        while (receiver.output() != "o") {
            QThread::yieldCurrentThread();
        }
        writeAll(STDERR_FILENO, "error");
        writeAll(STDOUT_FILENO, "\xa9");
    });
    QCOMPARE(receiver.out, QString::fromUtf8("o\xc3\xa9"));
    QCOMPARE(receiver.err, QString("error"));
}

void YumIOCapturersTest::theDestructorRestoresTheDescriptors()
{
    Receiver receiver;
    bool redirected = false;
    bool restored = false;
    runOnWorker([&] {
        {
            YumIOCapturers capturers(&receiver);
            redirected = !sameFile(STDOUT_FILENO, originalStdout) && !sameFile(STDERR_FILENO, originalStderr);
        }
        restored = sameFile(STDOUT_FILENO, originalStdout) && sameFile(STDERR_FILENO, originalStderr);
    });
    QVERIFY(redirected);
    QVERIFY(restored);
}

void YumIOCapturersTest::bufferedTextFromBeforeACaptureGoesToTheOriginalDescriptor()
{
    QTemporaryFile file;
    QVERIFY(file.open());
    Receiver receiver;
    fflush(stdout);
    const int saved = dup(STDOUT_FILENO);
    dup2(file.handle(), STDOUT_FILENO);
    runOnWorker([&] {
        fputs("before ", stdout);
        {
            YumIOCapturers capturers(&receiver);
            fputs("inside", stdout);
        }
        fputs("after", stdout);
        fflush(stdout);
    });
    dup2(saved, STDOUT_FILENO);
    ::close(saved);
    file.seek(0);
    QCOMPARE(QString(file.readAll()), QString("before after"));
    QCOMPARE(receiver.out, QString("inside"));
}

void YumIOCapturersTest::aBackgroundChildDoesNotDelayTheEndOfTheCapture()
{
    Receiver receiver;
    runOnWorker([&] {
        YumIOCapturers capturers(&receiver);
        (void)!system("sleep 1000 & echo $!");
    });
    // The capture ended although the child still has the pipes open.
    const pid_t child = receiver.out.trimmed().toInt();
    QVERIFY(child > 0);
    QCOMPARE(kill(child, SIGKILL), 0);
}

void YumIOCapturersTest::aBackgroundChildThatKeepsWritingDoesNotDelayTheEndOfTheCapture()
{
    Receiver receiver;
    runOnWorker([&] {
        YumIOCapturers capturers(&receiver);
        (void)!system("yes & echo $! >&2");
        while (receiver.output().isEmpty()) {
            QThread::yieldCurrentThread();
        }
    });
    QVERIFY(receiver.out.startsWith("y\ny\n"));
    const pid_t child = receiver.err.trimmed().toInt();
    QVERIFY(child > 0);
    // The capture has closed its end of the pipe, so SIGPIPE ends the child. The test itself sends no signal.
    QTRY_VERIFY(kill(child, 0) != 0 || !QFile::exists(QString("/proc/%1/exe").arg(child)) ||
                QFile::symLinkTarget(QString("/proc/%1/exe").arg(child)).isEmpty());
}

void YumIOCapturersTest::aFastWriterDoesNotFreezeTheGraphicalThread()
{
    Receiver receiver;
    std::atomic<int> ticks(0);
    QTimer timer;
    connect(&timer, &QTimer::timeout, this, [&] { ++ticks; });
    timer.start(1);
    runOnWorker([&] {
        YumIOCapturers capturers(&receiver);
        FILE* child = popen("exec yes >&2 & echo $!", "r");
        int pid = 0;
        (void)!fscanf(child, "%d", &pid);
        const int before = ticks;
        while (ticks < before + 100) {
            QThread::yieldCurrentThread();
        }
        kill(pid, SIGKILL);
        pclose(child);
    });
    QVERIFY(receiver.err.size() > 100);
}

void YumIOCapturersTest::allOutputArrivesEvenIfTheReceiverProcessesEvents()
{
    for (int i = 0; i < 100; ++i) {
        Receiver receiver;
        receiver.processEventsWhenWritten = true;
        QByteArray expected;
        for (int line = 0; line < 2000; ++line) {
            expected += "line " + QByteArray::number(line) + '\n';
        }
        runOnWorker([&] {
            YumIOCapturers capturers(&receiver);
            writeAll(STDOUT_FILENO, expected);
            writeAll(STDERR_FILENO, expected);
        });
        QCOMPARE(receiver.out, QString(expected));
        QCOMPARE(receiver.err, QString(expected));
    }
}

// The program ends while the receiver processes events for the last output. Then the graphical thread never
// returns to its event loop, so the worker must not wait for this thread.
void YumIOCapturersTest::theWorkerDoesNotWaitIfTheProgramEndsInsideTheReceiver()
{
    Receiver receiver;
    bool ended = false;
    std::unique_ptr<QThread> worker(QThread::create([&] {
        YumIOCapturers capturers(&receiver);
        writeAll(STDOUT_FILENO, "last words");
    }));
    receiver.onceWritten = [&] {
        for (int i = 0; i < 1000 && !ended; ++i) {
            YumIOCapturersMinion::serveAll();
            ended = worker->wait(10);
        }
    };
    worker->start();
    // Gives the worker time to begin its wait for the remaining output.
    QThread::msleep(500);
    QCoreApplication::processEvents();
    QTRY_VERIFY(worker->isFinished());
    QVERIFY(ended);
    QCOMPARE(receiver.out, QString("last words"));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void YumIOCapturersTest::aCaptureLeaksNoDescriptors()
{
    Receiver receiver;
    runOnWorker([&] { YumIOCapturers capturers(&receiver); });
    const int before = countDescriptors();
    runOnWorker([&] {
        for (int i = 0; i < 1000; ++i) {
            YumIOCapturers capturers(&receiver);
            writeAll(STDOUT_FILENO, "x");
        }
    });
    QCOMPARE(countDescriptors(), before);
    QCOMPARE(receiver.out, QString(1000, 'x'));
    QCOMPARE(receiver.errors, QStringList());
}

void YumIOCapturersTest::childrenInheritOnlyTheStandardDescriptorsDuringACapture()
{
    Receiver without;
    Receiver with;
    // Counts the open descriptors of a child. The count includes the descriptor with which `ls` reads the
    // directory.
    const char* list = "ls /proc/self/fd | wc -l";
    runOnWorker([&] {
        FILE* child = popen(list, "r");
        char line[32] = "";
        (void)!fgets(line, sizeof line, child);
        pclose(child);
        without.out = line;
        YumIOCapturers capturers(&with);
        (void)!system(list);
    });
    QVERIFY(without.out.trimmed().toInt() >= 3);
    QCOMPARE(with.out.trimmed(), without.out.trimmed());
}

void YumIOCapturersTest::theOutputIsNotRedirectedIfPipesCannotBeCreated_data()
{
    QTest::addColumn<int>("available");
    // The capture needs six descriptors: two saved ones, and two for each of the two pipes.
    for (int available = 0; available < 6; ++available) {
        QTest::newRow(QByteArray::number(available) + " descriptors left") << available;
    }
}

void YumIOCapturersTest::theOutputIsNotRedirectedIfPipesCannotBeCreated()
{
    QFETCH(int, available);
    Receiver receiver;
    bool unchanged = false;
    int before = 0;
    int after = 0;
    QStringList errorsOfConstruction;
    runOnWorker([&] {
        before = countDescriptors();
        rlimit limit;
        getrlimit(RLIMIT_NOFILE, &limit);
        const rlimit former = limit;
        // Finds the lowest limit that leaves the requested number of descriptors free.
        int free = 0;
        int number = 0;
        while (free < available || fcntl(number, F_GETFD) != -1) {
            if (fcntl(number, F_GETFD) == -1) {
                ++free;
            }
            ++number;
        }
        limit.rlim_cur = static_cast<rlim_t>(number);
        setrlimit(RLIMIT_NOFILE, &limit);
        {
            YumIOCapturers capturers(&receiver);
            errorsOfConstruction = receiver.errors;
            unchanged = sameFile(STDOUT_FILENO, originalStdout) && sameFile(STDERR_FILENO, originalStderr);
        }
        setrlimit(RLIMIT_NOFILE, &former);
        after = countDescriptors();
    });
    QCOMPARE(errorsOfConstruction, QStringList({"Unable to open pipe to capture rpm transaction output"}));
    QCOMPARE(receiver.errors.count(), 1);
    QVERIFY(unchanged);
    QCOMPARE(after, before);
}

void YumIOCapturersTest::aDescriptorThatCannotBeSavedIsNotReplaced()
{
    Receiver receiver;
    bool unchanged = false;
    int before = 0;
    int after = 0;
    runOnWorker([&] {
        const int saved = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3);
        ::close(STDERR_FILENO);
        before = countDescriptors();
        {
            YumIOCapturers capturers(&receiver);
            unchanged = sameFile(STDOUT_FILENO, originalStdout);
        }
        after = countDescriptors();
        dup2(saved, STDERR_FILENO);
        ::close(saved);
    });
    QCOMPARE(receiver.errors, QStringList({"Unable to dup2 pipe to capture rpm transaction output"}));
    QVERIFY(unchanged);
    QCOMPARE(after, before);
}

void YumIOCapturersTest::aDescriptorThatCannotBeReplacedKeepsItsFile_data()
{
    QTest::addColumn<int>("descriptor");
    QTest::newRow("standard output") << STDOUT_FILENO;
    QTest::newRow("standard error") << STDERR_FILENO;
}

void YumIOCapturersTest::aDescriptorThatCannotBeReplacedKeepsItsFile()
{
    QFETCH(int, descriptor);
    Receiver receiver;
    bool stdoutStayed = false;
    bool stderrStayed = false;
    bool restored = false;
    int before = 0;
    int after = 0;
    runOnWorker([&] {
        before = countDescriptors();
        {
            irreplaceable = descriptor;
            YumIOCapturers capturers(&receiver);
            irreplaceable = -1;
            stdoutStayed = sameFile(STDOUT_FILENO, originalStdout);
            stderrStayed = sameFile(STDERR_FILENO, originalStderr);
            if (!stdoutStayed) {
                // The text is larger than the capacity of a pipe. No thread reads this pipe, but the write
                // must not wait for ever.
                writeAll(STDOUT_FILENO, QByteArray(1 << 20, 'x'));
            }
        }
        restored = sameFile(STDOUT_FILENO, originalStdout) && sameFile(STDERR_FILENO, originalStderr);
        after = countDescriptors();
    });
    QCOMPARE(receiver.errors, QStringList({"Unable to dup2 pipe to capture rpm transaction output"}));
    // The capturer replaces standard output before standard error. If it cannot replace standard error, only
    // its destructor restores standard output.
    QCOMPARE(stdoutStayed, descriptor == STDOUT_FILENO);
    QVERIFY(stderrStayed);
    QVERIFY(restored);
    QVERIFY(receiver.out.isEmpty());
    QCOMPARE(after, before);
}

void YumIOCapturersTest::aDescriptorThatCannotBeRestoredIsReportedAndReadingContinues_data()
{
    QTest::addColumn<int>("descriptor");
    QTest::newRow("standard output") << 1;
    QTest::newRow("standard error") << 2;
}

void YumIOCapturersTest::aDescriptorThatCannotBeRestoredIsReportedAndReadingContinues()
{
    QFETCH(int, descriptor);
    // If a descriptor cannot be restored, the YumIOCapturersMinion that reads the pipe is never deleted. So
    // the receiver of this minion must exist until the program ends.
    static Receiver receivers[3];
    Receiver& receiver = receivers[descriptor];
    // Standard output and standard error may be the same file. In this case, only the order of creation
    // distinguishes the saved descriptors, so the test calculates the number of the descriptor that it
    // closes.
    bool stderrRestored = true;
    bool stdoutRestored = true;
    runOnWorker([&] {
        const int keptStdout = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 100);
        const int keptStderr = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 100);
        int expectedSaved = 3;
        int free = 0;
        for (;; ++expectedSaved) {
            if (fcntl(expectedSaved, F_GETFD) == -1 && ++free == descriptor) {
                break;
            }
        }
        {
#ifdef __SANITIZE_ADDRESS__
            const __lsan::ScopedDisabler readerIsLeftInPlace;
#endif
            YumIOCapturers capturers(&receiver);
            ::close(expectedSaved);
        }
        stdoutRestored = sameFile(STDOUT_FILENO, originalStdout);
        stderrRestored = sameFile(STDERR_FILENO, originalStderr);
        // The minion still reads the pipe.
        writeAll(descriptor, "still read");
        const QString& text = descriptor == STDOUT_FILENO ? receiver.out : receiver.err;
        for (bool arrived = false; !arrived; QThread::yieldCurrentThread()) {
            QMutexLocker locker(&receiver.mutex);
            arrived = text == "still read";
        }
        dup2(keptStdout, STDOUT_FILENO);
        dup2(keptStderr, STDERR_FILENO);
        ::close(keptStdout);
        ::close(keptStderr);
    });
    QCOMPARE(receiver.errors, QStringList({"Unable to dup2 to restore stderr"}));
    QCOMPARE(stdoutRestored, descriptor == STDERR_FILENO);
    QVERIFY(!stderrRestored);
}

void YumIOCapturersTest::deletingANestedUserObjectRestoresThePointerToTheOuterCapturers()
{
    Receiver receiver;
    YumIOCapturers* slot = nullptr;
    bool different = false;
    bool restored = false;
    runOnWorker([&] {
        YumIOCapturersUser outer(slot, &receiver);
        YumIOCapturers* const outerObject = slot;
        writeAll(STDOUT_FILENO, "outer ");
        {
            YumIOCapturersUser inner(slot, &receiver);
            different = slot != outerObject && slot != nullptr;
            writeAll(STDOUT_FILENO, "inner ");
        }
        restored = slot == outerObject;
        writeAll(STDOUT_FILENO, "again");
    });
    QVERIFY(different);
    QVERIFY(restored);
    QVERIFY(slot == nullptr);
    for (const char* text : {"outer ", "inner ", "again"}) {
        QCOMPARE(receiver.out.count(text), 1);
    }
}

QTEST_GUILESS_MAIN(YumIOCapturersTest)
#include "YumIOCapturersTest.moc"
