// Values of the script as texts and numbers, and its failures as messages.

#include "yumio/YumIO.h"

#include <cerrno>
#include <clocale>
#include <cstring>
#include <ctime>
#include <sys/wait.h>

#include <QRegularExpression>

#include "services/YumIODialogs.h"
#include "yumio/DateTime.h"

QString YumIO::pyString(PyObject* object)
{
    if (object == nullptr) {
        PyErr_Clear();
        warning(tr("Internal error: YumIO::pyString called with NULL"));
        return QString();
    }
    if (PyUnicode_Check(object)) {
        // Straight from the characters: an encoding would refuse lone surrogates, which stand for the bytes
        // of file names that cannot be decoded.
        const auto length = static_cast<int>(PyUnicode_GET_LENGTH(object));
        switch (PyUnicode_KIND(object)) {
        case PyUnicode_1BYTE_KIND:
            return QString::fromLatin1(reinterpret_cast<const char*>(PyUnicode_1BYTE_DATA(object)), length);
        case PyUnicode_2BYTE_KIND:
            return QString(reinterpret_cast<const QChar*>(PyUnicode_2BYTE_DATA(object)), length);
        default:
            return QString::fromUcs4(reinterpret_cast<const char32_t*>(PyUnicode_4BYTE_DATA(object)), length);
        }
    }
    if (PyBytes_Check(object)) {
        return QString::fromUtf8(PyBytes_AS_STRING(object));
    }
    if (object != Py_None) {
        warning(tr("Internal error: YumIO::pyString did not understand type: %1")
                    .arg(QLatin1String(Py_TYPE(object)->tp_name)));
    }
    return QString();
}

QString YumIO::pyStringDec(PyObject* object)
{
    const PyRef owned(object);
    return pyString(object);
}

QString YumIO::pyStringX(PyObject* object)
{
    if (object != nullptr) {
        if (PyUnicode_Check(object)) {
            return pyString(object);
        }
        if (PyLong_Check(object)) {
            // Not str(): that of True is a word.
            return pyStringDec(PyNumber_ToBase(object, 10));
        }
        const bool list = PyList_Check(object);
        if (list || PyTuple_Check(object)) {
            const Py_ssize_t count = PySequence_Size(object);
            if (count == 0) {
                return QString();
            }
            QStringList texts;
            for (Py_ssize_t i = 0; i < count; ++i) {
                texts.append(pyStringX(list ? PyList_GET_ITEM(object, i) : PyTuple_GET_ITEM(object, i)));
            }
            return QLatin1Char('(') + texts.join(list ? QStringLiteral(",\n ") : QStringLiteral(",")) +
                   QLatin1Char(')');
        }
    }
    warning(tr("Internal error: YumIO::pyStringX did not understand type: %1")
                .arg(QLatin1String(object != nullptr ? Py_TYPE(object)->tp_name : "NULL")));
    return QString();
}

QString YumIO::pyStringXDec(PyObject* object)
{
    const PyRef owned(object);
    return pyStringX(object);
}

int YumIO::pyLongDec(PyObject* object)
{
    const PyRef owned(object);
    if (object == nullptr || !PyLong_Check(object)) {
        PyErr_Clear();
        return 0;
    }
    const auto value = static_cast<int>(PyLong_AsUnsignedLongLongMask(object));
    PyErr_Clear();
    return value;
}

QString YumIO::pyMappingString(PyObject* object, const char* key)
{
    return pyStringDec(PyMapping_GetItemString(object, key));
}

PyObject* YumIO::pyDictGetItem(PyObject* object, const QString& key)
{
    PyObject* item = PyDict_GetItemString(object, key.toUtf8().constData());
    PyErr_Clear();
    return item;
}

quint64 YumIO::pyTime(PyObject* object)
{
    if (object != nullptr && PyLong_Check(object)) {
        const quint64 value = PyLong_AsUnsignedLongLongMask(object);
        PyErr_Clear();
        return value;
    }
    if (object != nullptr && PyUnicode_Check(object)) {
        bool understood = false;
        const QString text = pyString(object);
        const quint64 value = text.toULongLong(&understood);
        if (!understood) {
            warning(tr("Internal error: YumIO::pyTimeDec did not understand: %1").arg(text));
        }
        return value;
    }
    PyErr_Clear();
    warning(tr("Internal error: YumIO::pyTime did not understand type: %1")
                .arg(QLatin1String(object != nullptr ? Py_TYPE(object)->tp_name : "NULL")));
    return 0;
}

quint64 YumIO::pyTimeDec(PyObject* object)
{
    const PyRef owned(object);
    if (object != nullptr && (PyLong_Check(object) || PyUnicode_Check(object))) {
        return pyTime(object);
    }
    PyErr_Clear();
    warning(tr("Internal error: YumIO::pyTimeDec did not understand type: %1")
                .arg(QLatin1String(object != nullptr ? Py_TYPE(object)->tp_name : "NULL")));
    return 0;
}

QString YumIO::pyDate(PyObject* object)
{
    static const char* const weekdays[] = {"Mon", "Tue", "Wed", "Thu", "Fri", "Sat", "Sun"};
    static const char* const months[] = {"",    "Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                         "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    if (object == nullptr || !DateTime::isDateTime(object)) {
        PyErr_Clear();
        warning(tr("Internal error: YumIO::pyDate did not understand type: %1")
                    .arg(QLatin1String(object != nullptr ? Py_TYPE(object)->tp_name : "NULL")));
        return QString();
    }
    const PyRef answer(pyMethodCall(object, "weekday", "()"));
    long weekday = 0;
    if (answer && PyLong_Check(answer.get())) {
        weekday = PyLong_AsLong(answer.get());
        PyErr_Clear();
    } else {
        warning(tr("Internal error: YumIO::pyDate did not understand weekday type: %1")
                    .arg(QLatin1String(answer ? Py_TYPE(answer.get())->tp_name : "NULL")));
    }
    int month = DateTime::month(object);
    if (month < 1 || month > 12) {
        warning(tr("Internal error: YumIO::pyDate found out-of-bounds month: %1").arg(month));
        month = 0;
    }
    if (weekday < 0 || weekday > 6) {
        warning(tr("Internal error: YumIO::pyDate found out-of-bounds weekday: %1").arg(weekday));
        weekday = 0;
    }
    return QStringLiteral("%1 %2 %3 %4")
        .arg(QLatin1String(weekdays[weekday]), QLatin1String(months[month]),
             QString::number(DateTime::day(object)), QString::number(DateTime::year(object)));
}

const char* YumIO::pyDescribe(PyObject* object)
{
    static char number[1024];
    static char description[1024];
    if (object == Py_None) {
        return "*None*";
    }
    if (object != nullptr && PyUnicode_Check(object)) {
        const char* text = PyUnicode_AsUTF8(object);
        PyErr_Clear();
        return text != nullptr ? text : "";
    }
    if (object != nullptr && PyLong_Check(object)) {
        std::snprintf(number, sizeof number, "%lld", PyLong_AsLongLong(object));
        PyErr_Clear();
        return number;
    }
    const PyRef text(object != nullptr ? PyObject_Str(object) : nullptr);
    const char* characters = text && PyUnicode_Check(text.get()) ? PyUnicode_AsUTF8(text.get()) : nullptr;
    PyErr_Clear();
    if (characters == nullptr) {
        return "*Obj-no-str*";
    }
    std::snprintf(description, sizeof description, "%s(*Obj*)", characters);
    return description;
}

PyObject* YumIO::attribute(PyObject* object, const char* name)
{
    PyObject* value = PyObject_GetAttrString(object, name);
    if (value == nullptr) {
        PyErr_Clear();
    }
    return value;
}

PyObject* YumIO::attribute(PyObject* object, PackageAttribute which)
{
    // In the order of the enumeration.
    static const char* const names[] = {"arch",    "buildtime", "epoch", "group",   "name",
                                        "release", "repoid",    "size",  "summary", "version"};
    static_assert(sizeof names / sizeof *names == PackageAttributeCount, "each attribute has its name");
    // The interpreter finds at once what it is asked for with an interned name; for a name made from
    // characters it searches the class and all its bases each time.
    PyRef& name = attributeNames[which];
    if (!name) {
        name = PyRef(PyUnicode_InternFromString(names[which]));
    }
    PyObject* value = name ? PyObject_GetAttr(object, name.get()) : nullptr;
    if (value == nullptr) {
        PyErr_Clear();
    }
    return value;
}

QString YumIO::simpleString(PyObject* object, const char* attr)
{
    PyRef value(attribute(object, attr));
    if (!value || value.get() == Py_None) {
        return QString();
    }
    QString text = pyStringXDec(value.release());
    while (text.endsWith(QLatin1Char('\n'))) {
        text.chop(1);
    }
    return text;
}

PyObject* YumIO::findRelation(PyObject* sequence, const char* name)
{
    const PyRef iterator(PyObject_GetIter(sequence));
    while (iterator) {
        const PyRef pair(PyIter_Next(iterator.get()));
        if (!pair) {
            break;
        }
        const PyRef relation(PySequence_GetItem(pair.get(), 1));
        if (relation && PyUnicode_Check(relation.get()) &&
            pyString(relation.get()) == QString::fromUtf8(name)) {
            return PySequence_GetItem(pair.get(), 0);
        }
    }
    PyErr_Clear();
    return nullptr;
}

Package::Entry* YumIO::installedEntry(Package::Entry* entry)
{
    return entry->state == Package::Installed ? entry : entry->next;
}

quint64 YumIO::installedSize(Package::Entry* entry)
{
    const Package::Entry* installed = entry != nullptr ? installedEntry(entry) : nullptr;
    return installed != nullptr ? installed->size : 0;
}

namespace {

QString joinVerRel(const QString& epoch, const QString& version, const QString& release)
{
    QString text;
    text.reserve(epoch.length() + version.length() + release.length() + 2);
    if (!epoch.isEmpty() && epoch != QLatin1String("0")) {
        text += epoch;
        text += QLatin1Char(':');
    }
    text += version;
    if (!release.isEmpty()) {
        text += QLatin1Char('-');
        text += release;
    }
    return text;
}

} // namespace

QString YumIO::getVerRel(PyObject* pkg)
{
    PyRef epoch(attribute(pkg, EpochAttribute));
    QString epochText;
    if (epoch && PyLong_Check(epoch.get())) {
        const long long number = PyLong_AsLongLong(epoch.get());
        PyErr_Clear();
        if (number != 0) {
            epochText = QString::number(number);
        }
    } else {
        epochText = pyStringDec(epoch.release());
    }
    return joinVerRel(epochText, pyStringDec(attribute(pkg, VersionAttribute)),
                      pyStringDec(attribute(pkg, ReleaseAttribute)));
}

QString YumIO::getVerRelTxitem(PyObject* item)
{
    return joinVerRel(QString::number(pyLongDec(attribute(item, "epoch"))),
                      pyStringDec(attribute(item, "version")), pyStringDec(attribute(item, "release")));
}

QString YumIO::getBiArch(const QString& arch)
{
    // The script's answer never changes while the program runs, and there are few architectures.
    auto known = biArchByArch.constFind(arch);
    if (known == biArchByArch.constEnd()) {
        const PyRef answer(pyMethodCall(yumIO.get(), "getBiArch", "(s)", arch.toUtf8().constData()));
        if (!answer) {
            return pyString(nullptr); // what failed once may not fail again
        }
        known = biArchByArch.insert(arch, pyString(answer.get()));
    }
    return known.value();
}

quint64 YumIO::sizeOf(PyObject* pkg)
{
    const auto parsed = [this](PyObject* text) {
        bool understood = false;
        const QString digits = pyString(text);
        const quint64 value = digits.toULongLong(&understood);
        if (!understood) {
            warning(tr("Internal error: package size not understood: %1").arg(digits));
        }
        return value;
    };
    const PyRef size(attribute(pkg, SizeAttribute));
    if (size && PyLong_Check(size.get())) {
        const quint64 value = PyLong_AsUnsignedLongLongMask(size.get());
        PyErr_Clear();
        return value;
    }
    if (size && PyUnicode_Check(size.get())) {
        return parsed(size.get());
    }
    if (size && PyCallable_Check(size.get())) {
        const PyRef result(pyMethodCall(pkg, "size", "()"));
        if (result && PyLong_Check(result.get())) {
            const quint64 value = PyLong_AsUnsignedLongLongMask(result.get());
            PyErr_Clear();
            return value;
        }
        if (result && PyUnicode_Check(result.get())) {
            return parsed(result.get());
        }
        warning(tr("Internal error: package size result not understood"));
        return 0;
    }
    warning(tr("Internal error: package size not understood"));
    return 0;
}

namespace {

// Numbers have a point in this thread for a scope, whatever the locale of the program.
class PlainNumbers
{
public:
    PlainNumbers() : before(uselocale(plainLocale())) {}
    ~PlainNumbers() { uselocale(before); }
    PlainNumbers(const PlainNumbers&) = delete;
    PlainNumbers& operator=(const PlainNumbers&) = delete;

private:
    static locale_t plainLocale()
    {
        static const locale_t plain = newlocale(LC_ALL_MASK, "C", nullptr);
        return plain;
    }

    locale_t before;
};

} // namespace

QString YumIO::bytesFormat(unsigned long long bytes)
{
    // Translated once: a collection formats the size of each package.
    static const struct
    {
        int shift; // the unit is 2 to the power of this
        QString name;
    } units[] = {{60, tr("Eb")}, {50, tr("Pb")}, {40, tr("Tb")},
                 {30, tr("Gb")}, {20, tr("Mb")}, {10, tr("Kb")}};
    static const QString smallest = tr("b");
    double value = static_cast<double>(bytes);
    const QString* unit = &smallest;
    for (const auto& candidate : units) {
        // From 1000 of the unit below on, so that there are never more than four digits.
        if (bytes >= 1000ULL << (candidate.shift - 10)) {
            value /= static_cast<double>(1ULL << candidate.shift);
            unit = &candidate.name;
            break;
        }
    }
    char digits[64];
    {
        const PlainNumbers plain;
        std::snprintf(digits, sizeof digits, value > 0 && value < 9.95 ? "%.1f" : "%.0f", value);
    }
    return QLatin1String(digits) + *unit;
}

quint64 YumIO::buildTimeOf(PyObject* pkg)
{
    return pyTimeDec(attribute(pkg, BuildTimeAttribute));
}

namespace {

// Weekday, month, day, time of day and year.
void formatTime(long time, char (&text)[64])
{
    const auto seconds = static_cast<time_t>(time);
    if (ctime_r(&seconds, text) == nullptr) {
        text[0] = '\0';
    }
    text[std::strcspn(text, "\n")] = '\0';
}

} // namespace

const char* YumIO::timeFormat(long time)
{
    static char text[64];
    formatTime(time, text);
    return text;
}

const char* YumIO::dateFormat(long time)
{
    static char text[64];
    constexpr size_t timeOfDay = 11;
    constexpr size_t year = 20;
    formatTime(time, text);
    if (std::strlen(text) > year) {
        std::memmove(text + timeOfDay, text + year, std::strlen(text + year) + 1);
    }
    return text;
}

QString YumIO::txitemFormat(PyObject* item)
{
    const QString name = pyStringDec(attribute(item, "name"));
    const QString arch = pyStringDec(attribute(item, "arch"));
    const int epoch = pyLongDec(attribute(item, "epoch"));
    const QString version = pyStringDec(attribute(item, "version"));
    const QString release = pyStringDec(attribute(item, "release"));
    if (epoch != 0) {
        return tr("%1 %3:%4-%5 (%2)").arg(name, arch, QString::number(epoch), version, release);
    }
    return tr("%1 %3-%4 (%2)").arg(name, arch, version, release);
}

QString YumIO::txitemRepoFormat(PyObject* item)
{
    return txitemFormat(item) + tr(" [%1]").arg(pyStringDec(attribute(item, "from_repo")));
}

QString YumIO::dnfVersionStr()
{
    if (!dnfVersionLooked) {
        dnfVersionLooked = true;
        PyGILStateWrapper lock(true);
        if (PyObject* module = pyLookup("dnf", true)) {
            if (PyObject* version = attribute(module, "__version__")) {
                dnfVersionText = pyStringDec(version);
            }
        }
    }
    return dnfVersionText;
}

quint64 YumIO::splitVersion(const QString& text)
{
    quint64 sum = 0;
    quint64 weight = 10000;
    const QStringList parts = text.split(QLatin1Char('.'));
    for (int i = 0; i < 3 && i < parts.count(); ++i, weight /= 100) {
        const QByteArray digits = parts.at(i).toLatin1();
        char* end = nullptr;
        errno = 0;
        const unsigned long long value = std::strtoull(digits.constData(), &end, 10);
        if (errno != 0 || end == digits.constData() || *end != '\0') {
            static bool warned = false;
            const int problem = errno;
            if (!warned) {
                warned = true;
                warning(tr("Internal error: yum/dnf version not understood: %1 errno=%2 (%3)")
                            .arg(text)
                            .arg(problem)
                            .arg(QString::fromLocal8Bit(std::strerror(problem))));
            }
        }
        sum += value * weight;
    }
    return sum;
}

quint64 YumIO::dnfVersion()
{
    const QString text = dnfVersionStr();
    if (text.isEmpty()) {
        static bool warned = false;
        if (!warned) {
            warned = true;
            warning(tr("Internal error: dnf version not found"));
        }
        return 0;
    }
    return splitVersion(text);
}

void YumIO::error(const QString& text)
{
    log(Log::Error, 0, text);
    if (dialogs != nullptr && wait != Wait::Ended) {
        dialogs->critical(tr("VYRE Yum Error"), Log::withoutPasswords(text), QString(), QString(), QString(),
                          0, -1);
    }
}

void YumIO::warning(const QString& text)
{
    log(Log::Warning, 0, text);
    if (dialogs != nullptr && wait != Wait::Ended) {
        dialogs->warning(tr("VYRE Yum Warning"), Log::withoutPasswords(text), QString(), QString(), QString(),
                         0, -1);
    }
}

void YumIO::error(const char* text)
{
    error(QString::fromUtf8(text));
}

void YumIO::warning(const char* text)
{
    warning(QString::fromUtf8(text));
}

int YumIO::exceptionLogStart()
{
    QMutexLocker locker(&logList);
    return exceptLogStart >= 0 ? exceptLogStart : logList.count();
}

void YumIO::pythonException(const QString& text)
{
    const int start = exceptionLogStart();
    showExceptionLog(start, text);
}

void YumIO::pythonExceptionV(const QString& text)
{
    const int start = exceptionLogStart();
    log(Log::Error, 0, pyStringXDec(pyExceptValuef()));
    showExceptionLog(start, text);
}

void YumIO::showExceptionLog(int start, const QString& text)
{
    log(Log::Error, 0, text);
    QStringList lines;
    {
        QMutexLocker locker(&logList);
        for (int i = start; i < logList.count(); ++i) {
            const Log::Entry& entry = logList.at(i);
            if (entry.kind == Log::Error && entry.level < 3) {
                lines.append(entry.text);
            }
        }
    }
    // The window of the log takes the same mutex, so the dialog comes after its release.
    if (dialogs != nullptr && wait != Wait::Ended) {
        dialogs->scrollable(tr("VYRE Yum Error"), lines.join(QLatin1Char('\n')));
    }
}

void YumIO::pyExceptExpect(PyObject* type)
{
    {
        QMutexLocker locker(&logList);
        exceptLogStart = logList.count();
    }
    Python::pyExceptExpect(type);
}

void YumIO::pyExceptClear()
{
    exceptLogStart = -1;
    Python::pyExceptClear();
}

void YumIO::exceptionExpected()
{
    // It stays pending, for the caller to explain.
}

void YumIO::tracebackOnTerminal(const char* text)
{
    // Messages tell the user to look there.
    log(Log::Error, 0, QString::fromUtf8(text));
}

void YumIO::commExceptSetup()
{
    pyExceptExpect(classes[BdbQuit]);
    pyExceptExpect(classes[DnfError]);
    pyExceptExpect(classes[RepoError]);
    pyExceptExpect(PyExc_IOError);
    pyExceptExpect(PyExc_KeyboardInterrupt);
    pyExceptExpect(PyExc_AssertionError);
    pyExceptExpect(PyExc_RuntimeError);
    for (const Class optional : {OtherRepoError, MetadataError}) {
        if (classes[optional] != nullptr) {
            pyExceptExpect(classes[optional]);
        }
    }
}

bool YumIO::commExceptRaised(PyObject* result, const QString& what)
{
    // Tracebacks are printed without being kept in sys: that would keep the objects of the failed call alive.
    const auto raised = [this, result](PyObject* type) {
        return type != nullptr && pyExceptMatches(result, type);
    };
    const auto value = [this] {
        const PyRef text(pyExceptValuef());
        return text ? pyStringX(text.get()) : QString();
    };
    if (raised(PyExc_IOError)) {
        const QString text = value();
        PyErr_PrintEx(0);
        error(tr("Unable to %1: I/O Error: %2\n\nEmitting a walkback to the Log window.").arg(what, text));
        return true;
    }
    if (raised(PyExc_KeyboardInterrupt)) {
        PyErr_PrintEx(0);
        error(
            tr("Unable to %1: KeyboardInterrupt\n\nThis usually means VYRE was sent signal SIGINT, SIGTERM, "
               "or "
               "similar.\n\nBut urlgrabber also can raise this error for several situations where it is just "
               "guessing.\nSo, emitting a walkback to the Log window.")
                .arg(what));
        return true;
    }
    if (raised(PyExc_AssertionError)) {
        PyErr_PrintEx(0);
        error(tr(
            "Internal error: python assertion failed\nWhen reporting this issue, please include the contents "
            "of the\nLog window, which should contain a walkback."));
        return true;
    }
    if (raised(PyExc_RuntimeError)) {
        error(tr("Unable to %1: Runtime Error:\n\n%2").arg(what, value()));
        return true;
    }
    if (raised(classes[MetadataError])) {
        error(tr("Unable to %1: metadata unavailable from all repo mirrors:\n%2").arg(what, value()));
        return true;
    }
    if (raised(classes[RepoError]) || raised(classes[OtherRepoError])) {
        if (value().contains(QLatin1String("database is locked"))) {
            pythonException(
                tr("Unable to %1: a repository's sqlite database was locked unexpectedly\nOn some "
                   "distributions, PackageKit has been known to cause this.")
                    .arg(what));
        } else {
            exceptionError();
        }
        return true;
    }
    if (raised(classes[BdbQuit]) || raised(classes[DnfError])) {
        pythonExceptionV(tr("Unable to %1").arg(what));
        return true;
    }
    return false;
}

bool YumIO::sigchldDisable()
{
    struct sigaction standard = {};
    standard.sa_handler = SIG_DFL;
    sigemptyset(&standard.sa_mask);
    if (sigaction(SIGCHLD, &standard, &savedSigchld) == 0) {
        return true;
    }
    const int problem = errno;
    error(tr("Unable to disable SIGCHLD signal handler; errno=%1 (%2)")
              .arg(problem)
              .arg(QString::fromLocal8Bit(std::strerror(problem))));
    return false;
}

void YumIO::sigchldRestore()
{
    if (sigaction(SIGCHLD, &savedSigchld, nullptr) != 0) {
        const int problem = errno;
        error(tr("Unable to restore SIGCHLD signal handler; errno=%1 (%2)")
                  .arg(problem)
                  .arg(QString::fromLocal8Bit(std::strerror(problem))));
    }
}

bool YumIO::reapChildren()
{
    for (;;) {
        const pid_t child = waitpid(-1, nullptr, WNOHANG);
        if (child == 0 || (child < 0 && errno == ECHILD)) {
            return true;
        }
        if (child < 0) {
            const int problem = errno;
            error(tr("Unable to reap children; errno=%1 (%2)")
                      .arg(problem)
                      .arg(QString::fromLocal8Bit(std::strerror(problem))));
            return false;
        }
        log(Log::Warning, 0, tr("Reaped zombie child %1").arg(child));
    }
}
