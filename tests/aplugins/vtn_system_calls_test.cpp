// That streaming asks nothing of the system, as Linux can tell.
#include "tests/aplugins/driver_run.h"

#include <gtest/gtest.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

// In strict mode the kernel kills a process at any system call but read, write and exit.
TEST(VtnEngine, CallsNoSystemWhileStreaming)
{
    const pid_t child = fork();
    if (child == 0) {
        CVtn vtn(2, 44100.0f, 2048);
        Start(vtn, Record(130.0, 3.0));
        const Signal in = Noise(2 * 4096, 5, 0.25f);
        Signal room(2 * 40960, 0.0f);
        if (prctl(PR_SET_SECCOMP, SECCOMP_MODE_STRICT) != 0)
            _exit(2);
        uint32_t given = 0, got = 0;
        for (int i = 0; i < 10; ++i) {
            given = 4096, got = 40960;
            vtn.ProcessBlock(i == 9, in.data(), &given, room.data(), &got);
        }
        syscall(SYS_exit, got > 0 ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status)) << "killed by signal " << WTERMSIG(status);
    EXPECT_EQ(WEXITSTATUS(status), 0);
}
