// The window of the areas that describe a package, as an area knows it.
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

    // While it is not ready, as when an area waits for the back end, it cannot be closed and no second thing
    // can be asked for. A request to close it ends a wait for another process, and it closes afterwards.
    virtual void setReady(bool isReady) = 0;
    // Whether it closes as soon as it is ready again.
    virtual bool isClosing() const = 0;

protected:
    ~Host() = default;
};

} // namespace Describe
} // namespace PackageTable

#endif
