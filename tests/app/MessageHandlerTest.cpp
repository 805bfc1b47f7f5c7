// SPDX-License-Identifier: GPL-2.0-or-later

#include "app/MessageHandler.h"

#include <QTemporaryFile>
#include <QThread>
#include <QtTest>

#include <fcntl.h>
#include <memory>
#include <unistd.h>

#include "app/base/Program.h"

namespace {

// While an object of this class exists, another descriptor replaces standard error.
class StandardError
{
public:
    explicit StandardError(int descriptor) : before(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3))
    {
        dup2(descriptor, STDERR_FILENO);
    }
    ~StandardError()
    {
        dup2(before, STDERR_FILENO);
        close(before);
    }
    StandardError(const StandardError&) = delete;
    StandardError& operator=(const StandardError&) = delete;

private:
    int before;
};

class Pipe
{
public:
    Pipe()
    {
        if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) {
            qFatal("the pipe cannot be created");
        }
    }
    ~Pipe()
    {
        close(ends[0]);
        close(ends[1]);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    int writing() const { return ends[1]; }
    // Fills the pipe, as if nobody read the captured output. After that, every thread that writes to the pipe
    // must wait.
    void fill()
    {
        const QByteArray block(4096, 'x');
        while (write(ends[1], block.constData(), static_cast<size_t>(block.size())) > 0) {
        }
        fcntl(ends[1], F_SETFL, 0);
    }
    QByteArray read() const
    {
        char buffer[4096];
        const ssize_t length = ::read(ends[0], buffer, sizeof buffer);
        return length > 0 ? QByteArray(buffer, static_cast<int>(length)) : QByteArray();
    }

private:
    int ends[2];
};

} // namespace

class MessageHandlerTest : public QObject
{
    Q_OBJECT

private:
    const char* programBefore = nullptr;
    QtMessageHandler handlerBefore = nullptr;
    std::unique_ptr<QTemporaryFile> terminal;

    QByteArray written()
    {
        terminal->seek(0);
        return terminal->readAll();
    }
    // Installs the handler as the program does when it starts. A file replaces the terminal.
    void install()
    {
        const StandardError start(terminal->handle());
        MessageHandler::install();
    }

private Q_SLOTS:
    void init()
    {
        programBefore = program;
        program = "tester";
        handlerBefore = qInstallMessageHandler(nullptr);
        qInstallMessageHandler(handlerBefore);
        terminal = std::make_unique<QTemporaryFile>();
        QVERIFY(terminal->open());
    }

    void cleanup()
    {
        qInstallMessageHandler(handlerBefore);
        program = programBefore;
    }

    void messagesOfQtBeginWithTheNameOfTheProgram()
    {
        install();
        qWarning("something %d", 7);
        qCritical("worse");
        qInfo() << "plain" << 1;
        QCOMPARE(written(), QByteArray("tester: something 7\ntester: worse\ntester: plain 1\n"));
    }

    void messagesAreWrittenInTheEncodingOfTheLocale()
    {
        install();
        const QString text = QString::fromUtf8("Gr\xc3\xb6\xc3\x9f"
                                               "e");
        qWarning("%s", qUtf8Printable(text));
        QCOMPARE(written(), "tester: " + text.toLocal8Bit() + '\n');
    }

    void messagesGoToTheTerminalWhileStandardErrorIsCaptured()
    {
        install();
        const Pipe captured;
        {
            const StandardError capture(captured.writing());
            qWarning("not captured");
        }
        QCOMPARE(written(), QByteArray("tester: not captured\n"));
        QCOMPARE(captured.read(), QByteArray());
    }

    void messagesReachTheTerminalEvenIfStandardErrorIsAFullPipe()
    {
        install();
        Pipe captured;
        captured.fill();
        {
            const StandardError capture(captured.writing());
            qWarning("still here"); // must not block
        }
        QCOMPARE(written(), QByteArray("tester: still here\n"));
    }

    void messagesAreDroppedIfTheTerminalIsAFullPipe()
    {
        Pipe reader;
        reader.fill();
        {
            const StandardError start(reader.writing());
            MessageHandler::install();
        }
        qWarning("lost"); // must not block
        QVERIFY(!reader.read().contains("lost"));
    }

    void theWatcherIsCalledForEachMessageUntilTheWatcherIsRemoved()
    {
        install();
        static QVector<bool> heard;
        heard.clear();
        MessageHandler::watch([](bool fatal) { heard.append(fatal); });
        qWarning("one");
        MessageHandler::watch(nullptr);
        qWarning("two");
        QCOMPARE(heard, QVector<bool>({false}));
    }

    void allMessagesAreWrittenIfSeveralThreadsWriteAtTheSameTime()
    {
        install();
        class Writer : public QThread
        {
            void run() override
            {
                for (int i = 0; i < 200; ++i) {
                    qWarning("0123456789012345678901234567890123456789");
                }
            }
        };
        Writer writers[4];
        for (Writer& writer : writers) {
            writer.start();
        }
        for (Writer& writer : writers) {
            writer.wait();
        }
        QCOMPARE(written(), QByteArray("tester: 0123456789012345678901234567890123456789\n").repeated(800));
    }

    void aFailedWriteToTheTerminalDoesNotEndTheProgram()
    {
        const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
        QVERIFY(full >= 0);
        {
            const StandardError start(full);
            MessageHandler::install();
        }
        close(full);
        qWarning("lost");
        QCOMPARE(written(), QByteArray());
    }

    void theMessageHandlerIsNotInstalledIfStandardErrorIsClosed()
    {
        const int before = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3);
        close(STDERR_FILENO);
        MessageHandler::install();
        dup2(before, STDERR_FILENO);
        close(before);
        const QtMessageHandler handler = qInstallMessageHandler(handlerBefore);
        QVERIFY(handler == handlerBefore);
    }
};

QTEST_GUILESS_MAIN(MessageHandlerTest)
#include "MessageHandlerTest.moc"
