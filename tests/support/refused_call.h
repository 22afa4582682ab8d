#pragma once

#ifdef __linux__
#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

#include <cerrno>
#include <cstddef>

namespace fernlow::test {

/// Makes each system call `call` with this second argument fail with EPERM. This lasts until the
/// current thread ends, and also applies to the programs that the thread starts.
inline void refuseCall(unsigned call, unsigned secondArgument) {
    constexpr unsigned argumentOffset =
        offsetof(seccomp_data, args) + sizeof(seccomp_data::args[0]);
    // A jump skips the given number of steps: the first number if the values are equal, the second
    // number otherwise.
    sock_filter steps[] = {BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
                           BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, call, 0, 3),
                           BPF_STMT(BPF_LD | BPF_W | BPF_ABS, argumentOffset),
                           BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, secondArgument, 0, 1),
                           BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EPERM),
                           BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW)};
    const sock_fprog program{6, steps};
    ASSERT_EQ(::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0), 0);
    ASSERT_EQ(::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program), 0);
}

} // namespace fernlow::test
#endif
