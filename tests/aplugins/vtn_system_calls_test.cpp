// What the streaming path asks of the system, on a system that can be told to allow nothing.
#include "tests/aplugins/varied_stream.h"

#include <gtest/gtest.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

class VtnSystemCalls : public testing::TestWithParam<int32_t> {};
INSTANTIATE_TEST_SUITE_P(Modes, VtnSystemCalls, testing::ValuesIn(kAllModes));

// In strict mode the kernel kills a process at any system call but read, write and exit.
TEST_P(VtnSystemCalls, DoNotHappenWhileStreaming)
{
    const pid_t child = fork();
    if (child == 0) {
        VariedStream stream(GetParam());
        stream.Run(0, VariedStream::Settling(GetParam()));
        if (prctl(PR_SET_SECCOMP, SECCOMP_MODE_STRICT) != 0)
            _exit(2);
        syscall(SYS_exit, stream.Run(VariedStream::Settling(GetParam()), VariedStream::kBlocks) ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status)) << "killed by signal " << WTERMSIG(status);
    EXPECT_EQ(WEXITSTATUS(status), 0);
}
