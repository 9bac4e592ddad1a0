/* SPDX-License-Identifier: MIT */
/* Loaded into Wine before the C library: a serial port that has no modem lines (a pty) takes what is set of them, and
 * none is ever raised. Wine refuses such a port otherwise. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <stdarg.h>
#include <sys/ioctl.h>

int ioctl(int file, unsigned long request, ...)
{
    static int (*next)(int, unsigned long, ...);
    if (!next)
        *(void **)&next = dlsym(RTLD_NEXT, "ioctl");
    va_list arguments;
    va_start(arguments, request);
    void *const argument = va_arg(arguments, void *);
    va_end(arguments);
    const int result = next(file, request, argument);
    if (result == 0 || (errno != ENOTTY && errno != EINVAL))
        return result;
    switch (request) {
    case TIOCMGET:
        *(int *)argument = 0;
        return 0;
    case TIOCMSET:
    case TIOCMBIS:
    case TIOCMBIC:
        return 0;
    default:
        return result;
    }
}
