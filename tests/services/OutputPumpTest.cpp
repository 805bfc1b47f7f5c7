// SPDX-License-Identifier: GPL-2.0-or-later

#include "services/OutputPump.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <QElapsedTimer>
#include <QTest>
#include <QThread>

#include <atomic>
#include <memory>

namespace {

// A pump with two pipes for each channel. The test writes to the first pipe, and reads from the second pipe.
struct Pumped
{
    Pumped()
    {
        OutputPump::Channel channels[OutputPump::channelCount];
        for (int i = 0; i < OutputPump::channelCount; ++i) {
            int before[2];
            int behind[2];
            if (pipe2(before, O_CLOEXEC) != 0 || pipe2(behind, O_CLOEXEC) != 0) {
                qFatal("the pipe cannot be created");
            }
            fcntl(before[0], F_SETFL, O_NONBLOCK);
            fcntl(behind[0], F_SETFL, O_NONBLOCK);
            fcntl(behind[1], F_SETFL, O_NONBLOCK);
            writer[i].reset(before[1]);
            reader[i].reset(behind[0]);
            channels[i].from.reset(before[0]);
            channels[i].to.reset(behind[1]);
        }
        started = pump.start(channels);
    }

    QByteArray readWaiting(int i) const
    {
        QByteArray bytes(1 << 16, '\0');
        const ssize_t count = read(reader[i].get(), bytes.data(), size_t(bytes.size()));
        bytes.resize(count > 0 ? int(count) : 0);
        return bytes;
    }

    FileDescriptor writer[OutputPump::channelCount];
    FileDescriptor reader[OutputPump::channelCount];
    OutputPump pump;
    bool started = false;
};

bool put(int fd, const QByteArray& bytes)
{
    for (int done = 0; done < bytes.size();) {
        const ssize_t count = write(fd, bytes.constData() + done, size_t(bytes.size() - done));
        if (count <= 0) {
            return false;
        }
        done += int(count);
    }
    return true;
}

} // namespace

class OutputPumpTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aThreadCanWriteMuchOutputBeforeItReadsAny_data()
    {
        QTest::addColumn<int>("way");
        QTest::newRow("standard output") << 0;
        QTest::newRow("standard error") << 1;
    }

    // The thread writes the whole text before it reads any output, so the pump must never stop the writer.
    // The text is larger than `fullBuffer` and the two pipes together, so the pump slows the writer down.
    void aThreadCanWriteMuchOutputBeforeItReadsAny()
    {
        QFETCH(int, way);
        QByteArray text(2 * OutputPump::fullBuffer, 'x');
        for (int i = 0; i < text.size(); ++i) {
            text[i] = char('a' + i % 23);
        }
        Pumped pumped;
        QVERIFY(pumped.started);
        QVERIFY(put(pumped.writer[way].get(), text));
        QByteArray arrived;
        QElapsedTimer waiting;
        waiting.start();
        while (arrived.size() < text.size() && waiting.elapsed() < 60000) {
            arrived += pumped.readWaiting(way);
        }
        QVERIFY(arrived == text);
        QVERIFY(pumped.readWaiting(1 - way).isEmpty());
    }

    void thePumpForwardsAllOutputBeforeItStops()
    {
        Pumped pumped;
        QVERIFY(pumped.started);
        const QByteArray text(300000, 'o');
        QVERIFY(put(pumped.writer[0].get(), text));
        QVERIFY(put(pumped.writer[1].get(), "last words"));
        std::atomic<bool> stopped(false);
        std::unique_ptr<QThread> worker(QThread::create([&] {
            pumped.pump.stop();
            stopped = true;
        }));
        worker->start();
        QByteArray out;
        QByteArray err;
        while (!stopped) {
            out += pumped.readWaiting(0);
            err += pumped.readWaiting(1);
        }
        worker->wait();
        for (QByteArray more = pumped.readWaiting(0); !more.isEmpty(); more = pumped.readWaiting(0)) {
            out += more;
        }
        err += pumped.readWaiting(1);
        QVERIFY(out == text);
        QCOMPARE(err, QByteArray("last words"));
    }

    void theWritersContinueIfAllReadersAreClosed()
    {
        Pumped pumped;
        QVERIFY(pumped.started);
        for (FileDescriptor& reader : pumped.reader) {
            reader.close();
        }
        // The pump's write to a pipe without a reader must not end the process by SIGPIPE.
        QVERIFY(put(pumped.writer[0].get(), QByteArray(2 * OutputPump::fullBuffer, 'x')));
        pumped.pump.stop();
    }

    void oneChannelForwardsOutputEvenIfTheOtherChannelIsClosed()
    {
        Pumped pumped;
        QVERIFY(pumped.started);
        pumped.writer[0].close();
        QVERIFY(put(pumped.writer[1].get(), "still here"));
        QByteArray arrived;
        QTRY_VERIFY(!(arrived += pumped.readWaiting(1)).isEmpty());
        QCOMPARE(arrived, QByteArray("still here"));
        pumped.pump.stop();
    }
};

QTEST_GUILESS_MAIN(OutputPumpTest)
#include "OutputPumpTest.moc"
