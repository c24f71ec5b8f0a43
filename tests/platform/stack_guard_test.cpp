// What becomes of a process in which a guarded frame or copy was overrun: seen as a debugger, or the error reporting of
// Windows, sees it.
#include "base/unique.h"
#include "support/child_process.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <windows.h>

extern "C" {
[[noreturn]] void __stack_chk_fail() noexcept;
[[noreturn]] void __chk_fail() noexcept;
}

namespace qx::test {
namespace {

constexpr char kOverrun[] = "QX_OVERRUN"; // in the environment of the process that is to end

struct End {
    DWORD exitCode = 0;
    std::optional<ULONG_PTR> reason; // of the fast fail that no handler saw
};

// Of this program, called again for the same file.
End EndOfOverrun(const char* what)
{
    SetEnvironmentVariableA(kOverrun, what);
    const std::wstring program = ThisProgram().wstring();
    std::wstring command = L'"' + program + L"\" stack_guard";
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION started{};
    const bool runs = CreateProcessW(program.c_str(), command.data(), nullptr, nullptr, FALSE, DEBUG_ONLY_THIS_PROCESS,
                                     nullptr, nullptr, &startup, &started);
    SetEnvironmentVariableA(kOverrun, nullptr);
    if (!runs)
        return {};
    const UniqueKernelHandle process(started.hProcess), thread(started.hThread);
    End end;
    for (DEBUG_EVENT event{}; WaitForDebugEvent(&event, 60000);) {
        const EXCEPTION_RECORD& exception = event.u.Exception.ExceptionRecord;
        const bool isException = event.dwDebugEventCode == EXCEPTION_DEBUG_EVENT;
        if (isException && exception.ExceptionCode == STATUS_STACK_BUFFER_OVERRUN)
            end.reason = exception.ExceptionInformation[0];
        if (event.dwDebugEventCode == EXIT_PROCESS_DEBUG_EVENT) {
            end.exitCode = event.u.ExitProcess.dwExitCode;
            ContinueDebugEvent(event.dwProcessId, event.dwThreadId, DBG_CONTINUE);
            return end;
        }
        const bool isOurs = !isException || exception.ExceptionCode == EXCEPTION_BREAKPOINT;
        ContinueDebugEvent(event.dwProcessId, event.dwThreadId, isOurs ? DBG_CONTINUE : DBG_EXCEPTION_NOT_HANDLED);
    }
    return end;
}

TEST(StackGuard, EndsTheProcessAtOnceAndSaysWhy)
{
    if (const char* const overrun = std::getenv(kOverrun))
        *overrun == 'f' ? __stack_chk_fail() : __chk_fail();
    const End frame = EndOfOverrun("frame"), copy = EndOfOverrun("copy");
    EXPECT_EQ(frame.exitCode, static_cast<DWORD>(STATUS_STACK_BUFFER_OVERRUN));
    EXPECT_EQ(frame.reason, ULONG_PTR{2}); // FAST_FAIL_STACK_COOKIE_CHECK_FAILURE
    EXPECT_EQ(copy.exitCode, static_cast<DWORD>(STATUS_STACK_BUFFER_OVERRUN));
    EXPECT_EQ(copy.reason, ULONG_PTR{8}); // FAST_FAIL_RANGE_CHECK_FAILURE
}

} // namespace
} // namespace qx::test
