/* Preloaded into the command: what a pseudo-terminal and a quick picture do not show. */
#define _GNU_SOURCE
#include <signal.h>
#include <stdlib.h>
#include <sys/syscall.h>
#include <unistd.h>

/* The close of a port whose adapter holds output: it waits for a signal, or for the end of the process. */
int close(int fd) {
    while (isatty(fd) && pause() && getenv("HELD_FOR_EVER"))
        ;
    return (int)syscall(SYS_close, fd);
}

/* Ctrl-C while the picture is written. */
void cairo_surface_finish(void *surface) { raise(surface ? SIGINT : 0); }
