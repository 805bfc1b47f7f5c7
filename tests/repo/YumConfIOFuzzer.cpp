// SPDX-License-Identifier: GPL-2.0-or-later

// Passes a fuzzer's inputs to the reader of the configuration files. Checks that writing the files and
// reading them back loses nothing. Each input contains the main configuration file and two repository files,
// separated by the byte 0x1F.

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QMessageBox>
#include <QTemporaryDir>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "repo/YumConfIO.h"

namespace {

// Answers every message box at once: OK for an error, Yes for the question about duplicates. A fuzzer needs
// many runs in a second, so this class does not wait for a timer as AnsweringUser does.
class MessageBoxCloser : public QObject
{
public:
    bool eventFilter(QObject* object, QEvent* event) override
    {
        auto* box = event->type() == QEvent::Show ? qobject_cast<QMessageBox*>(object) : nullptr;
        if (box != nullptr) {
            ++shown;
            const QMessageBox::StandardButtons buttons = box->standardButtons();
            QMetaObject::invokeMethod(
                box, "done", Qt::QueuedConnection,
                Q_ARG(int, (buttons & QMessageBox::Yes) != 0 ? QMessageBox::Yes : QMessageBox::Ok));
        }
        return false;
    }

    int shown = 0;
};

struct Surroundings
{
    Surroundings()
        : root(QFile::exists(QStringLiteral("/dev/shm")) ? QStringLiteral("/dev/shm/vyre-fuzz-XXXXXX")
                                                         : QDir::tempPath() + "/vyre-fuzz-XXXXXX"),
          application(count, arguments)
    {
        application.installEventFilter(&answers);
        qputenv("VYREROOT", QFile::encodeName(root.path()));
        for (const char* directory : {"etc/yum.repos.d", "etc/yum/repos.d"}) {
            if (!QDir(root.path()).mkpath(QString::fromLatin1(directory))) {
                std::abort();
            }
        }
        directories << root.path() + "/etc/yum.repos.d" << root.path() + "/etc/yum/repos.d";
        files << root.path() + "/etc/yum.conf" << root.path() + "/etc/yum.repos.d/a.repo"
              << root.path() + "/etc/yum/repos.d/b.repo";
    }

    int count = 1;
    char name[5] = "fuzz";
    char* arguments[2] = {name, nullptr};
    QTemporaryDir root;
    QApplication application;
    MessageBoxCloser answers;
    QStringList directories;
    QStringList files;
};

Surroundings* surroundings = nullptr;

// abort() makes the fuzzer save its input.
void require(bool holds, const char* what)
{
    if (!holds) {
        qCritical("%s", what);
        std::abort();
    }
}

QByteArray get(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QList<QByteArray> contents()
{
    QList<QByteArray> result;
    for (const QString& file : surroundings->files) {
        result += get(file);
    }
    return result;
}

// The text that VYRE reads after it has written this text: VYRE writes UTF-8, but reads Latin-1.
QString readBack(const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    return QString::fromLatin1(bytes.constData(), bytes.size());
}

QStringList describe(const QList<Repo::Entry>& entries)
{
    QStringList result;
    for (const Repo::Entry& each : entries) {
        result += QStringList({each.file, QString::number(each.position), QString::number(each.enabled),
                               QString::number(each.gpgcheck), each.id, each.name, each.baseurl,
                               each.mirrorlist, each.options})
                      .join(QChar(0xFFFF));
    }
    return result;
}

// The entries that VYRE must read after it has written these entries. VYRE drops some entries, so the
// positions in each file are numbered again.
QList<Repo::Entry> readBack(QList<Repo::Entry> entries)
{
    QHash<QString, double> positions;
    for (Repo::Entry& each : entries) {
        for (QString Repo::Entry::*field : {&Repo::Entry::id, &Repo::Entry::name, &Repo::Entry::baseurl,
                                            &Repo::Entry::mirrorlist, &Repo::Entry::options}) {
            each.*field = readBack(each.*field);
        }
        each.position = positions[each.file] += 1.0;
    }
    return entries;
}

void check(YumConfIO& conf)
{
    if (!conf.read(nullptr)) {
        require(surroundings->answers.shown == 1, "a failed read shows one error");
        return;
    }
    require(surroundings->answers.shown == 0, "a successful read shows no message box");
    require(conf.pendingLines.isEmpty(), "no unread line is left");
    if (conf.reposdir != surroundings->directories) {
        // The input names directories of its own. The fuzzer must not write to them.
        return;
    }
    for (const Repo::Entry& each : qAsConst(conf.entries)) {
        if (each.file == surroundings->files.first() && each.id == QLatin1String("main")) {
            // The main configuration file has two main sections. If VYRE drops all sections between these
            // two, the next read takes both main sections for one section.
            return;
        }
    }
    // VYRE does not write an unedited file that contains letters beyond ASCII. So the fuzzer edits each
    // entry.
    const QString line = QStringLiteral("#\n");
    if (!conf.mainText.isEmpty()) {
        conf.mainText += line;
    }
    for (Repo::Entry& each : conf.entries) {
        each.options += line;
    }
    require(conf.write(nullptr), "the configuration can be written after it was read");
    require(surroundings->answers.shown <= 1, "a write asks at most one question");
    const QList<QByteArray> written = contents();
    const QString mainText = readBack(conf.mainText);
    const QStringList expected = describe(readBack(conf.entries));

    surroundings->answers.shown = 0;
    require(conf.read(nullptr), "the written configuration can be read");
    require(conf.mainText == mainText, "the main part is read as it was written");
    require(describe(conf.entries) == expected, "the entries are read as they were written");
    require(conf.write(nullptr), "the configuration can be written a second time");
    require(surroundings->answers.shown == 0,
            "reading and writing the written configuration shows no message box");
    const QList<QByteArray> again = contents();
    for (int i = 0; i < written.size(); ++i) {
        const QByteArray& before = written.at(i);
        require(again.at(i) == before, "the second write does not change the files");
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    // Without this rule, Qt would print a warning for each message box.
    qputenv("QT_LOGGING_RULES", "default.warning=false");
    surroundings = new Surroundings;
    std::atexit([] { surroundings->root.remove(); });
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray input(reinterpret_cast<const char*>(data), int(size));
    const QList<QByteArray> parts = input.split('\x1F');
    for (int i = 0; i < surroundings->files.size(); ++i) {
        QFile file(surroundings->files.at(i));
        if (!file.open(QIODevice::WriteOnly) || file.write(parts.value(i)) != parts.value(i).size()) {
            std::abort();
        }
    }
    surroundings->answers.shown = 0;
    const QList<YumRepoEnabled> requests{YumRepoEnabled(false, QStringLiteral("*-debug*")),
                                         YumRepoEnabled(true, QStringLiteral("b*"))};
    QHash<QString, bool> session;
    YumConfIO conf(requests, session);
    check(conf);
    return 0;
}
