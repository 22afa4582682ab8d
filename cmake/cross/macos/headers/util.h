#pragma once

/// The part of openpty(3) that the tests use. The toolchain has no such header.

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
