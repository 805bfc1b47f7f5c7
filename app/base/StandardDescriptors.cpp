// SPDX-License-Identifier: GPL-2.0-or-later

#include "app/base/StandardDescriptors.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

void StandardDescriptors::ensure()
{
    for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd) {
        // open() returns the lowest unused number, which is `fd`. O_CLOEXEC is not set, because child
        // processes need this descriptor too.
        if (fcntl(fd, F_GETFD) < 0 && open("/dev/null", O_RDWR) < 0) {
            (void)memfd_create("null", 0);
        }
    }
}
