// SPDX-License-Identifier: GPL-2.0-or-later

// The interface through which the commands of the menus use the main window. Each longer command is an object
// of its own class. The main window implements this interface, and creates and owns the objects of the
// commands.
//
// All functions run on the graphical thread.

#ifndef APP_COMMANDHOST_H
#define APP_COMMANDHOST_H

#include <functional>

class ErrorWatch;
class QString;
class QWidget;
class YumIO;

class CommandHost
{
public:
    CommandHost() = default;
    virtual ~CommandHost() = default;
    CommandHost(const CommandHost&) = delete;
    CommandHost& operator=(const CommandHost&) = delete;

    // The parent of the dialogs.
    virtual QWidget* dialogParent() = 0;
    // Returns null as soon as the program has begun to end.
    virtual YumIO* backEnd() const = 0;
    // Returns true if the window is closed, or if it will close at the end of the current operation.
    virtual bool isClosing() const = 0;
    // Returns whether the last collection of packages has succeeded.
    virtual bool hasPackages() const = 0;

    // Disables the controls before an operation, or enables them after the operation.
    virtual void setReady(bool ready) = 0;
    // Hides the outcome of the last transaction, and disables the controls.
    virtual void beginOperation() = 0;

    // Selects the marks that recollect() sets again. LeftOutMarks are the marks that the last transaction
    // left out. recollect() drops marks that can no longer be carried out.
    enum Kept { NoMarks, AllMarks, LeftOutMarks };
    // Reads the packages again.
    virtual void recollect(Kept kept) = 0;
    // Runs an operation that may change the system, and reads the packages again afterwards. Returns true if
    // the operation has succeeded, or if it has failed after a change to the system.
    virtual bool carryOut(const std::function<bool()>& operation, Kept kept) = 0;
    // Updates the controls that depend on the marks.
    virtual void marksChanged() = 0;

    // Logs a message as a warning, and shows it next to the menus for a while.
    virtual void warnAndNotice(const QString& text) = 0;
    // If an error was logged after the creation of `errors`, shows a notice about the log.
    virtual void showErrors(const ErrorWatch& errors) = 0;
};

#endif
