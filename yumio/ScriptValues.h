// Values of the script's objects as texts and numbers, and the formats of versions, sizes and times.
//
// The layer between the interpreter (Python) and the back end (YumIO), which derives from it. Any thread may
// call, but only while it holds the interpreter lock. No function fails: a value that is not understood
// becomes a warning to the user, and an empty text or 0. No function leaves an exception pending.

#ifndef YUMIO_SCRIPTVALUES_H
#define YUMIO_SCRIPTVALUES_H

#include <QByteArray>
#include <QCoreApplication>
#include <QString>
#include <QStringList>

#include "python/PyRef.h"
#include "python/Python.h"
#include "yumio/Package.h"

class ScriptValues : public Python
{
    Q_DECLARE_TR_FUNCTIONS(ScriptValues)

public:
    // Reports a warning to the user.
    virtual void warning(const QString& text) = 0;
    using Python::warning;

    // --- Texts, numbers and times. The object is borrowed; functions whose names end in Dec release it.

    // Of a str or bytes object; empty for None.
    QString pyString(PyObject* object);
    QString pyStringDec(PyObject* object);
    // Of a str, an int, or a list or tuple of these.
    QString pyStringX(PyObject* object);
    QString pyStringXDec(PyObject* object);
    int pyLongDec(PyObject* object);
    QString pyMappingString(PyObject* object, const char* key);
    PyObject* pyDictGetItem(PyObject* object, const QString& key); // borrowed reference or null
    // Seconds since the epoch, of an int or of a str with digits.
    quint64 pyTime(PyObject* object);
    quint64 pyTimeDec(PyObject* object);
    // Weekday, month, day and year of a datetime object.
    QString pyDate(PyObject* object);
    // One line about any object, valid until the next call. Kept for diagnostics, such as a message where
    // pyDebug() stops.
    const char* pyDescribe(PyObject* object);

    // --- Attributes

    PyObject* attribute(PyObject* object, const char* name); // new reference or null
    // Attributes of every package.
    enum PackageAttribute {
        ArchAttribute,
        BuildTimeAttribute,
        EpochAttribute,
        GroupAttribute,
        NameAttribute,
        ReleaseAttribute,
        RepoIdAttribute,
        SizeAttribute,
        SummaryAttribute,
        VersionAttribute,
        PackageAttributeCount
    };
    // Faster than by name.
    PyObject* attribute(PyObject* object, PackageAttribute which); // new reference or null
    // The text of an attribute without line feeds at its end; empty if the object does not have it.
    QString simpleString(PyObject* object, const char* attr);
    // Of a sequence of pairs (object, name): the object of the first pair with this name, a new reference or
    // null. Kept for scripts that give the related packages of a package in pairs.
    PyObject* findRelation(PyObject* sequence, const char* name);

    // --- Packages and items of transactions

    // Version and release, with a non-zero epoch before them.
    QString getVerRel(PyObject* pkg);
    QString getVerRelTxitem(PyObject* item);
    Package::Kind getPkgKind(PyObject* pkg); // Suite or Ordinary
    quint64 sizeOf(PyObject* pkg);           // bytes
    quint64 buildTimeOf(PyObject* pkg);      // seconds since the epoch
    QByteArray checksumOf(PyObject* pkg);    // hexadecimal digits; empty if it has no checksum
    QString txitemFormat(PyObject* item);
    QString txitemRepoFormat(PyObject* item);

    // --- Formats of lists and numbers

    // The sign of a comparison such as "GE", valid as long as the object. Kept for dependencies that the
    // script gives in parts; dnf gives them as texts.
    static const char* decodePrcoFlags(PyObject* flags);
    // One text a line, in order; makeSortedUniq() has each text once.
    static QString makeSorted(QStringList& list);
    static QString makeSortedUniq(QStringList& list);

    static QString bytesFormat(unsigned long long bytes);
    // The text is valid until the next call. dateFormat() leaves the time of day out; it is kept for callers
    // that show a day only.
    static const char* dateFormat(long time);
    static const char* timeFormat(long time);
    // "4.14.0" as 10000 * first + 100 * second + third part.
    quint64 splitVersion(const QString& text);

private:
    PyRef attributeNames[PackageAttributeCount]; // null before the first use
};

#endif
