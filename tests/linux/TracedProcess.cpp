#include "tests/linux/TracedProcess.h"

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace paneweld_tests {

namespace {

constexpr int mayNotBeTraced = 77;
// How a stop at a call looks with PTRACE_O_TRACESYSGOOD (ptrace(2)).
constexpr int stopAtCall = SIGTRAP | 0x80;

bool changesFiles(__ptrace_syscall_info const& info)
{
    switch (info.entry.nr) {
    case SYS_openat:
        return (info.entry.args[2] & (O_CREAT | O_TRUNC)) != 0;
#ifdef SYS_mkdir
    case SYS_mkdir:
    case SYS_rmdir:
    case SYS_unlink:
    case SYS_rename:
    case SYS_chmod:
    case SYS_chown:
#endif
    case SYS_mkdirat:
    case SYS_unlinkat:
#ifdef SYS_renameat
    case SYS_renameat:
#endif
    case SYS_renameat2:
    case SYS_fchmod:
    case SYS_fchmodat:
    case SYS_fchownat:
    case SYS_write:
    case SYS_writev:
    case SYS_ftruncate:
    case SYS_fsync:
    case SYS_syncfs:
        return true;
    default:
        return false;
    }
}

int statusOf(pid_t child)
{
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    return status;
}

[[noreturn]] void workTraced(std::function<void()> const& work)
{
    if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0)
        _exit(mayNotBeTraced);
    raise(SIGSTOP);
    work();
    _exit(0);
}

} // namespace

std::optional<KilledWork> killBeforeChange(int changesBefore, std::function<void()> const& work)
{
    auto const child = fork();
    if (child == 0)
        workTraced(work);
    auto status = statusOf(child);
    if (WIFEXITED(status)) {
        EXPECT_EQ(WEXITSTATUS(status), mayNotBeTraced);
        return std::nullopt;
    }
    EXPECT_EQ(ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL), 0);
    KilledWork result;
    std::uintptr_t signal = 0;
    while (true) {
        EXPECT_EQ(ptrace(PTRACE_SYSCALL, child, nullptr, signal), 0);
        status = statusOf(child);
        if (!WIFSTOPPED(status)) {
            EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
            return result;
        }
        signal = WSTOPSIG(status) == stopAtCall ? 0 : static_cast<std::uintptr_t>(WSTOPSIG(status));
        __ptrace_syscall_info info {};
        bool const isKnown = WSTOPSIG(status) == stopAtCall
            && ptrace(PTRACE_GET_SYSCALL_INFO, child, reinterpret_cast<void*>(sizeof info), &info) > 0;
        if (!isKnown || info.op != PTRACE_SYSCALL_INFO_ENTRY || !changesFiles(info))
            continue;
        if (result.changes == changesBefore) {
            kill(child, SIGKILL);
            result.wasKilled = WIFSIGNALED(statusOf(child));
            return result;
        }
        ++result.changes;
    }
}

} // namespace paneweld_tests
