// SPDX-License-Identifier: GPL-2.0-or-later

#include "yumio/ScriptValues.h"

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include <QStringList>

#include "python/CPython.h"
#include "yumio/DateTime.h"

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

struct NamedAttribute
{
    ScriptValues::PackageAttribute attribute;
    const char* name;
};

constexpr NamedAttribute attributes[] = {
    {ScriptValues::ArchAttribute, "arch"},       {ScriptValues::BuildTimeAttribute, "buildtime"},
    {ScriptValues::EpochAttribute, "epoch"},     {ScriptValues::EvrAttribute, "evr"},
    {ScriptValues::GroupAttribute, "group"},     {ScriptValues::NameAttribute, "name"},
    {ScriptValues::ReleaseAttribute, "release"}, {ScriptValues::RepoIdAttribute, "repoid"},
    {ScriptValues::SizeAttribute, "size"},       {ScriptValues::SummaryAttribute, "summary"},
    {ScriptValues::VersionAttribute, "version"},
};

constexpr bool inOrder()
{
    for (int i = 0; i < ScriptValues::PackageAttributeCount; ++i) {
        if (attributes[i].attribute != i) {
            return false;
        }
    }
    return true;
}

static_assert(sizeof attributes / sizeof *attributes == ScriptValues::PackageAttributeCount,
              "each attribute has its name");
static_assert(inOrder(), "the names are in the order of the enumeration");

// While a PlainNumbers exists, its thread writes numbers with a decimal point, even if the locale of the
// program has a decimal comma.
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

// Formats a time as weekday, month, day, time of day and year.
void formatTime(long time, char (&text)[64])
{
    const auto seconds = static_cast<time_t>(time);
    if (ctime_r(&seconds, text) == nullptr) {
        text[0] = '\0';
    }
    text[std::strcspn(text, "\n")] = '\0';
}

} // namespace

QString ScriptValues::pyString(PyObject* object)
{
    if (object == nullptr) {
        PyErr_Clear();
        warning(tr("Internal error: YumIO::pyString called with NULL"));
        return QString();
    }
    if (PyUnicode_Check(object)) {
        // Copy the characters directly. Python represents undecodable bytes of file names by lone surrogates,
        // which an encoder would refuse.
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

QString ScriptValues::pyStringDec(PyObject* object)
{
    const PyRef owned(object);
    return pyString(object);
}

QString ScriptValues::pyStringX(PyObject* object)
{
    if (object != nullptr) {
        if (PyUnicode_Check(object)) {
            return pyString(object);
        }
        if (PyLong_Check(object)) {
            // Do not use str(): str(True) is the word "True".
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

QString ScriptValues::pyStringXDec(PyObject* object)
{
    const PyRef owned(object);
    return pyStringX(object);
}

int ScriptValues::pyLongDec(PyObject* object)
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

QString ScriptValues::pyMappingString(PyObject* object, const char* key)
{
    return pyStringDec(PyMapping_GetItemString(object, key));
}

PyObject* ScriptValues::pyDictGetItem(PyObject* object, const QString& key)
{
    PyObject* item = PyDict_GetItemString(object, key.toUtf8().constData());
    PyErr_Clear();
    return item;
}

quint64 ScriptValues::pyTime(PyObject* object)
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

quint64 ScriptValues::pyTimeDec(PyObject* object)
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

QString ScriptValues::pyDate(PyObject* object)
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

const char* ScriptValues::pyDescribe(PyObject* object)
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

PyObject* ScriptValues::attribute(PyObject* object, const char* name)
{
    PyObject* value = PyObject_GetAttrString(object, name);
    if (value == nullptr) {
        PyErr_Clear();
    }
    return value;
}

const char* ScriptValues::attributeName(PackageAttribute which)
{
    return attributes[which].name;
}

PyObject* ScriptValues::attribute(PyObject* object, PackageAttribute which)
{
    // Intern the name, because the interpreter caches the lookup of an attribute only if the attribute's name
    // is interned. Without the cache, it searches all base classes each time.
    PyRef& name = attributeNames[which];
    if (!name) {
        name = PyRef(PyUnicode_InternFromString(attributeName(which)));
    }
    PyObject* value = name ? PyObject_GetAttr(object, name.get()) : nullptr;
    if (value == nullptr) {
        PyErr_Clear();
    }
    return value;
}

QString ScriptValues::simpleString(PyObject* object, const char* attr)
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

PyObject* ScriptValues::findRelation(PyObject* sequence, const char* name)
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

QString ScriptValues::getVerRel(PyObject* pkg)
{
    // dnf stores the three parts as one text, and splits this text for each part. If the text has a release
    // and no epoch, the text is already the result.
    const PyRef joined(attribute(pkg, EvrAttribute));
    if (joined && PyUnicode_Check(joined.get())) {
        const QString text = pyString(joined.get());
        if (text.contains(QLatin1Char('-')) && !text.contains(QLatin1Char(':'))) {
            return text;
        }
    }
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

QString ScriptValues::getVerRelTxitem(PyObject* item)
{
    return joinVerRel(QString::number(pyLongDec(attribute(item, "epoch"))),
                      pyStringDec(attribute(item, "version")), pyStringDec(attribute(item, "release")));
}

Package::Kind ScriptValues::getPkgKind(PyObject* pkg)
{
    const PyRef group(attribute(pkg, GroupAttribute));
    return group && PyUnicode_Check(group.get()) &&
                   PyUnicode_CompareWithASCIIString(group.get(), "Suite") == 0
               ? Package::Suite
               : Package::Ordinary;
}

quint64 ScriptValues::sizeOf(PyObject* pkg)
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

QString ScriptValues::bytesFormat(unsigned long long bytes)
{
    // The names of the units are translated only once, because each collection formats tens of thousands of
    // sizes.
    static const struct
    {
        int shift; // the unit has (1 << shift) bytes
        QString name;
    } units[] = {{60, tr("Eb")}, {50, tr("Pb")}, {40, tr("Tb")},
                 {30, tr("Gb")}, {20, tr("Mb")}, {10, tr("Kb")}};
    static const QString smallest = tr("b");
    double value = static_cast<double>(bytes);
    const QString* unit = &smallest;
    for (const auto& candidate : units) {
        // Use this unit if the number would have at least four digits in the next smaller unit.
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

quint64 ScriptValues::buildTimeOf(PyObject* pkg)
{
    return pyTimeDec(attribute(pkg, BuildTimeAttribute));
}

const char* ScriptValues::timeFormat(long time)
{
    static char text[64];
    formatTime(time, text);
    return text;
}

QString ScriptValues::timeText(quint64 time)
{
    char text[64];
    formatTime(static_cast<long>(time), text);
    return QString::fromLatin1(text);
}

const char* ScriptValues::dateFormat(long time)
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

QByteArray ScriptValues::checksumOf(PyObject* pkg)
{
    const PyRef checksum(attribute(pkg, "chksum"));
    if (!checksum || !PyTuple_Check(checksum.get()) || PyTuple_Size(checksum.get()) != 2) {
        return QByteArray();
    }
    PyObject* digest = PyTuple_GetItem(checksum.get(), 1);
    return PyBytes_Check(digest)
               ? QByteArray(PyBytes_AsString(digest), static_cast<int>(PyBytes_Size(digest))).toHex()
               : QByteArray();
}

QString ScriptValues::txitemFormat(PyObject* item)
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

QString ScriptValues::txitemRepoFormat(PyObject* item)
{
    return txitemFormat(item) + tr(" [%1]").arg(pyStringDec(attribute(item, "from_repo")));
}

const char* ScriptValues::decodePrcoFlags(PyObject* flags)
{
    static const char* const signs[][2] = {{"GT", ">"}, {"GE", ">="}, {"LT", "<"}, {"LE", "<="}, {"EQ", "="}};
    const char* text = PyUnicode_Check(flags) ? PyUnicode_AsUTF8(flags) : nullptr;
    if (text == nullptr) {
        PyErr_Clear();
        return "";
    }
    for (const auto& sign : signs) {
        if (qstrcmp(text, sign[0]) == 0) {
            return sign[1];
        }
    }
    return text;
}

QString ScriptValues::makeSorted(QStringList& list)
{
    std::sort(list.begin(), list.end());
    return list.join(QLatin1Char('\n'));
}

QString ScriptValues::makeSortedUniq(QStringList& list)
{
    std::sort(list.begin(), list.end());
    list.erase(std::unique(list.begin(), list.end()), list.end());
    return list.join(QLatin1Char('\n'));
}

quint64 ScriptValues::splitVersion(const QString& text)
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
