// SPDX-License-Identifier: GPL-2.0-or-later

// The interface of the window around the areas that describe a package.
//
// Graphical thread; the window implements it.

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

    // While the window is not ready, for example because an area waits for the back end, the user can neither
    // close it nor request anything else. A request to close it ends a wait for another process; the window
    // closes afterwards.
    virtual void setReady(bool isReady) = 0;
    // True if it closes as soon as it is ready again.
    virtual bool isClosing() const = 0;

protected:
    ~Host() = default;
};

} // namespace Describe
} // namespace PackageTable

#endif
