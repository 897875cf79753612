#include <kiocore/debug/Debugger.h>

#include <gtest/gtest.h>

#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

using kiocore::debug::IsDebuggerAttached;

TEST(Debugger, SeesATracerAndEndsTheProcessWithoutOne)
{
    int status = -1;
    pid_t child = fork();
    if (child == 0) {
        const bool before = IsDebuggerAttached();
        ptrace(PTRACE_TRACEME, 0, nullptr, nullptr); // the parent is the debugger now
        _exit(before ? 1 : IsDebuggerAttached() ? 0 : 2);
    }
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);

    child = fork();
    if (child == 0) {
        kiocore::debug::BreakIntoDebugger();
        _exit(0);
    }
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), SIGTRAP);
}
