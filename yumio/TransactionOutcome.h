// SPDX-License-Identifier: GPL-2.0-or-later

// The outcome of a confirmed transaction: the numbers of changes, the failures, the number of marks that are
// left out, whether a restart is needed, and whether the user stopped the transaction. The script reports
// these values, except for the stop; this class makes the texts for the user.
//
// A TransactionOutcome is a part of a TransactionState. The worker writes it while the worker holds the
// interpreter lock, and the graphical thread reads it afterwards.

#ifndef YUMIO_TRANSACTIONOUTCOME_H
#define YUMIO_TRANSACTIONOUTCOME_H

#include <QCoreApplication>
#include <QStringList>

#include <array>

class TransactionOutcome
{
    Q_DECLARE_TR_FUNCTIONS(TransactionOutcome)

public:
    enum Count {
        Installed,
        Updated,
        Downgraded,
        Reinstalled,
        Removed, // includes replaced packages, whose names may differ
        GroupsInstalled,
        GroupsUpdated,
        GroupsRemoved,
        Modules,        // modules with changed streams or profiles
        ReasonsChanged, // packages of which only the installation reason changed
        Failed,
        CountCount
    };

    // Returns the name that the script uses for this count.
    static const char* nameOf(Count count);

    bool hasFailures() const { return counts[Failed] != 0 || !failedScriptlets.isEmpty(); }
    // Returns the changes, for example "18 installed, 1 updated". Returns an empty string if nothing changed.
    QString changes() const;
    // Returns the whole outcome in one line.
    QString text() const;
    // If the scriptlets of several packages failed, text() names only the first of these packages. In this
    // case, details() returns several short lines that name all these packages, or the first hundred.
    // Otherwise, details() returns an empty string.
    QString details() const;

    bool known = false;   // the user has confirmed a transaction
    bool stopped = false; // the user has stopped the transaction before its first change to a package
    std::array<int, CountCount> counts{};
    QStringList failedScriptlets; // the names of the packages whose scriptlets failed
    int leftOut = 0;              // the number of marks that the package manager could not apply
    bool restartNeeded = false;
    bool keysImported = false; // the user has accepted keys that sign packages

private:
    // Returns the text about a transaction without changes and failures.
    QString unchanged() const;
};

#endif
