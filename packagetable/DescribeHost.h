// SPDX-License-Identifier: GPL-2.0-or-later

// The interface of the window around the areas that describe a package.
//
// The window implements the functions, which run on the graphical thread.

#ifndef PACKAGETABLE_DESCRIBEHOST_H
#define PACKAGETABLE_DESCRIBEHOST_H

namespace PackageTable {
namespace Describe {

class Host
{
public:
    Host() = default;
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    // Called with false when an area begins to wait for the back end, and with true when the wait is over.
    // During the wait, the user can neither close the window nor press another button. Exception: if the back
    // end waits for another process, a request to close the window ends this wait, and then the window
    // closes.
    virtual void setReady(bool isReady) = 0;
    // Returns true if the window will close at the next setReady(true).
    virtual bool isClosing() const = 0;

protected:
    ~Host() = default;
};

} // namespace Describe
} // namespace PackageTable

#endif
