// SPDX-License-Identifier: GPL-2.0-or-later

// Converts values of the script's objects to texts and numbers, and formats versions, sizes and times.
//
// The base class Python is the interpreter. The back end YumIO derives from ScriptValues. Any thread may call
// these functions while the thread holds the interpreter lock. If a value has an unknown type, the functions
// return an empty string or 0, and most functions warn the user. No function leaves an exception pending.

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

    // --- Texts, numbers and times. Functions whose names end in Dec release the object; others borrow it.

    // Converts a str or bytes object. None becomes an empty string.
    QString pyString(PyObject* object);
    QString pyStringDec(PyObject* object);
    // Converts a str, an int, or a list or tuple of these types.
    QString pyStringX(PyObject* object);
    QString pyStringXDec(PyObject* object);
    int pyLongDec(PyObject* object);
    QString pyMappingString(PyObject* object, const char* key);
    PyObject* pyDictGetItem(PyObject* object, const QString& key); // borrowed reference or null
    // Converts an int, or a str of digits, to seconds since the epoch.
    quint64 pyTime(PyObject* object);
    quint64 pyTimeDec(PyObject* object);
    // Returns the weekday, month, day and year of a datetime object.
    QString pyDate(PyObject* object);
    // Describes any object in one line. The text is valid until the next call. The program does not call this
    // function; developers can call it in a debugger.
    const char* pyDescribe(PyObject* object);

    // --- Attributes

    PyObject* attribute(PyObject* object, const char* name); // new reference or null
    // The package attributes from which the program makes records. ScriptValues.cpp contains the names of
    // these attributes.
    enum PackageAttribute {
        ArchAttribute,
        BuildTimeAttribute,
        EpochAttribute,
        EvrAttribute,
        GroupAttribute,
        NameAttribute,
        ReleaseAttribute,
        RepoIdAttribute,
        SizeAttribute,
        SummaryAttribute,
        VersionAttribute,
        PackageAttributeCount
    };
    static const char* attributeName(PackageAttribute which);
    // Returns the value of a package attribute faster than a lookup by name.
    PyObject* attribute(PyObject* object, PackageAttribute which); // new reference or null
    // Returns the text of an attribute without trailing line feeds. The text is empty if the object lacks the
    // attribute.
    QString simpleString(PyObject* object, const char* attr);
    // Finds the first pair (object, name) with this name in a sequence of pairs. Returns a new reference to
    // the object, or null. The program does not use this function at present: only scripts for other package
    // managers may return related packages in such pairs.
    PyObject* findRelation(PyObject* sequence, const char* name);

    // --- Packages and items of transactions

    // getVerRel() and getVerRelTxitem() return "epoch:version-release". An epoch of 0 is omitted.
    QString getVerRel(PyObject* pkg);
    QString getVerRelTxitem(PyObject* item);
    Package::Kind getPkgKind(PyObject* pkg); // Suite or Ordinary
    quint64 sizeOf(PyObject* pkg);           // bytes
    quint64 buildTimeOf(PyObject* pkg);      // seconds since the epoch
    QByteArray checksumOf(PyObject* pkg);    // hexadecimal digits; empty if the package has no checksum
    QString txitemFormat(PyObject* item);
    QString txitemRepoFormat(PyObject* item);

    // --- Formats of lists and numbers

    // Converts the name of a comparison, such as "GE", to its sign, such as ">=". The result is valid while
    // the object `flags` exists. dnf returns dependencies as texts, so only scripts for other package
    // managers need this function.
    static const char* decodePrcoFlags(PyObject* flags);
    // makeSorted() and makeSortedUniq() sort the list and join its texts with line feeds. makeSortedUniq()
    // also removes duplicates.
    static QString makeSorted(QStringList& list);
    static QString makeSortedUniq(QStringList& list);

    static QString bytesFormat(unsigned long long bytes);
    // dateFormat() and timeFormat() format seconds since the epoch. The text is valid until the next call of
    // the same function. dateFormat() omits the time of day. It is part of the interface; no text has only a
    // date now.
    static const char* dateFormat(long time);
    static const char* timeFormat(long time);
    // Returns the text of timeFormat(). Several threads may call this function at the same time.
    static QString timeText(quint64 time);
    // Converts a version of three numbers to 10000 * first + 100 * second + third. For example, "4.14.0"
    // becomes 41400.
    quint64 splitVersion(const QString& text);

private:
    PyRef attributeNames[PackageAttributeCount]; // null before the first use
};

#endif
