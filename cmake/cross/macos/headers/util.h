#pragma once

/// What the tests use of openpty(3), for a toolchain whose headers lack it.

#include <sys/ioctl.h>
#include <sys/types.h>
#include <termios.h>

#ifdef __cplusplus
extern "C" {
#endif

int forkpty(int* terminal, char* name, struct termios* settings, struct winsize* size);

#ifdef __cplusplus
}
#endif
