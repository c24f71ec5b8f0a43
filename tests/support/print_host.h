// The process in which 32-bit programs print is known by its name alone: a test program runs itself again under it.
#pragma once

#include "base/unique.h"
#include "support/temporary_folder.h"

#include <cstdlib>
#include <stdexcept>
#include <string>
#include <windows.h>

namespace qx::test {

inline constexpr char kInPrintHost[] = "QX_IN_PRINT_HOST";

// Whether this process is meant to be the print host.
inline bool InPrintHost()
{
    return std::getenv(kInPrintHost) != nullptr;
}

// Runs those tests of this program in the print host; the answer is its exit code, 0 when all have passed.
inline DWORD RunInPrintHost(const std::string& tests)
{
    const TemporaryFolder folder;
    const std::filesystem::path host = folder / L"SplWow64.exe"; // in any letter case
    wchar_t program[MAX_PATH] = L"";
    GetModuleFileNameW(nullptr, program, MAX_PATH);
    std::filesystem::copy_file(program, host);
    std::wstring command = L"\"" + host.wstring() + L"\" --gtest_filter=" + std::wstring(tests.begin(), tests.end());
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    SetEnvironmentVariableA(kInPrintHost, "1");
    const BOOL started =
        CreateProcessW(host.c_str(), command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process);
    SetEnvironmentVariableA(kInPrintHost, nullptr);
    if (!started)
        throw std::runtime_error("the print host cannot be started");
    const UniqueKernelHandle thread(process.hThread), running(process.hProcess);
    WaitForSingleObject(running.Get(), INFINITE);
    DWORD code = 1;
    GetExitCodeProcess(running.Get(), &code);
    return code;
}

} // namespace qx::test
