#include "app/base/XdgRuntimeDirEnsurer.h"

#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace {

const char* nonEmptyVariable(const char* name)
{
    const char* value = std::getenv(name);
    return value != nullptr && value[0] != '\0' ? value : nullptr;
}

} // namespace

XdgRuntimeDirEnsurer::XdgRuntimeDirEnsurer()
{
    created[0] = '\0';
    if (nonEmptyVariable("XDG_RUNTIME_DIR") != nullptr) {
        return;
    }
    const char* base = nonEmptyVariable("TMPDIR");
    const int length = std::snprintf(created, sizeof created, "%s/xdg_runtime.%d",
                                     base != nullptr ? base : "/tmp", static_cast<int>(geteuid()));
    if (length < 0 || static_cast<size_t>(length) >= sizeof created) {
        // A shortened path would name somebody else's directory, which the destructor would then remove.
        created[0] = '\0';
        return;
    }
    (void)mkdir(created, 0700);
    setenv("XDG_RUNTIME_DIR", created, 1);
}

XdgRuntimeDirEnsurer::~XdgRuntimeDirEnsurer()
{
    if (created[0] != '\0') {
        (void)nftw(created, &XdgRuntimeDirEnsurer::removeFile, 64, FTW_DEPTH | FTW_PHYS);
    }
}

int XdgRuntimeDirEnsurer::removeFile(const char* path, const struct stat*, int, FTW*)
{
    return std::remove(path);
}
