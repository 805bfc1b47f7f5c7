// SPDX-License-Identifier: GPL-2.0-or-later

// Finds out whether an operation has logged errors. Some errors are reported only in the log, for example an
// unreachable repository or a failed package script.
//
// A function on the graphical thread creates an ErrorWatch before an operation. The log must outlive the
// ErrorWatch.

#ifndef APP_ERRORWATCH_H
#define APP_ERRORWATCH_H

#include "services/Log.h"

class ErrorWatch
{
public:
    explicit ErrorWatch(Log::EntryList& log);

    // The index of the first entry that was logged after the creation of this object.
    int firstEntry() const { return first; }
    // Returns whether an error was logged after the creation of this object.
    bool hasErrors() const;

private:
    Log::EntryList& entries;
    int first;
};

#endif
