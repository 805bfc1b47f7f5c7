// SPDX-License-Identifier: GPL-2.0-or-later

// Converts values of the script's objects to texts and numbers, and formats versions, sizes and times.
//
// The layer between the interpreter (Python) and the back end (YumIO), which derives from it. Any thread may
// call it while it holds the interpreter lock. No function fails: an unknown kind of value causes a warning
// to the user, and the result is an empty text or 0. No function leaves an exception pending.

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

    // --- Texts, numbers and times. Functions ending in Dec release the object; others borrow it.

    // For a str or bytes object; empty for None.
    QString pyString(PyObject* object);
    QString pyStringDec(PyObject* object);
    // For a str, an int, or a list or tuple of these.
    QString pyStringX(PyObject* object);
    QString pyStringXDec(PyObject* object);
    int pyLongDec(PyObject* object);
    QString pyMappingString(PyObject* object, const char* key);
    PyObject* pyDictGetItem(PyObject* object, const QString& key); // borrowed reference or null
    // Seconds since the epoch, from an int or from a str of digits.
    quint64 pyTime(PyObject* object);
    quint64 pyTimeDec(PyObject* object);
    // The weekday, month, day and year of a datetime object.
    QString pyDate(PyObject* object);
    // Describes any object in one line, valid until the next call. Kept for diagnostics, for example a
    // message at a breakpoint in pyDebug().
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
    // Faster than a lookup by name.
    PyObject* attribute(PyObject* object, PackageAttribute which); // new reference or null
    // The text of an attribute without trailing line feeds; empty if the object lacks the attribute.
    QString simpleString(PyObject* object, const char* attr);
    // In a sequence of pairs (object, name): the object of the first pair with this name, a new reference or
    // null. Kept for scripts that return the related packages of a package in pairs.
    PyObject* findRelation(PyObject* sequence, const char* name);

    // --- Packages and items of transactions

    // Version and release, after the epoch unless that is zero.
    QString getVerRel(PyObject* pkg);
    QString getVerRelTxitem(PyObject* item);
    Package::Kind getPkgKind(PyObject* pkg); // Suite or Ordinary
    quint64 sizeOf(PyObject* pkg);           // bytes
    quint64 buildTimeOf(PyObject* pkg);      // seconds since the epoch
    QByteArray checksumOf(PyObject* pkg);    // hexadecimal digits; empty if it has no checksum
    QString txitemFormat(PyObject* item);
    QString txitemRepoFormat(PyObject* item);

    // --- Formats of lists and numbers

    // The sign of a comparison such as "GE", valid as long as the object. Kept for scripts that return
    // dependencies in parts; dnf returns them as texts.
    static const char* decodePrcoFlags(PyObject* flags);
    // One text a line, sorted; makeSortedUniq() also removes duplicates.
    static QString makeSorted(QStringList& list);
    static QString makeSortedUniq(QStringList& list);

    static QString bytesFormat(unsigned long long bytes);
    // The text is valid until the next call. dateFormat() omits the time of day; it is kept for callers that
    // show only a day.
    static const char* dateFormat(long time);
    static const char* timeFormat(long time);
    // "4.14.0" as 10000 * first + 100 * second + third part.
    quint64 splitVersion(const QString& text);

private:
    PyRef attributeNames[PackageAttributeCount]; // null before the first use
};

#endif
