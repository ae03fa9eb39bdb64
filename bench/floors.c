#include "floors.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

static ORB_ServiceRecord work, staging;

int bench_writePieces(const char *port, const bench_Pieces *pieces) {
    const int fd = open(port, O_RDWR | O_NOCTTY);
    if (fd < 0) return -1;
    size_t at = 0;
    int result = 0;
    for (size_t i = 0; i < pieces->count && result == 0; ++i) {
        const size_t size = pieces->sizes[i];
        int lines;
        ioctl(fd, TIOCMGET, &lines);
        if (write(fd, pieces->block + at, size) != (ssize_t)size) result = -1;
        tcdrain(fd);
        at += size;
        if (at >= pieces->blockSize) at -= pieces->blockSize;
    }
    close(fd);
    return result;
}

ORB_ServiceRecord bench_copyRecord(ORB_ServiceRecord record) {
    work = record;
    /* Or the compiler sees through the copies. */
    __asm__ volatile("" : : "r"(&work) : "memory");
    staging = work;
    __asm__ volatile("" : : "r"(&staging) : "memory");
    return staging;
}
