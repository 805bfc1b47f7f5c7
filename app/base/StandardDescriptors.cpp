#include "app/base/StandardDescriptors.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

void StandardDescriptors::ensure()
{
    for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd) {
        // An opened file gets the lowest number that is free. Programs that are started inherit it.
        if (fcntl(fd, F_GETFD) < 0 && open("/dev/null", O_RDWR) < 0) {
            (void)memfd_create("null", 0);
        }
    }
}
