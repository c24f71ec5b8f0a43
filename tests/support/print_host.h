// The process in which 32-bit programs print is known by its name alone: a test program runs itself again under it.
#pragma once

#include "support/child_process.h"
#include "support/temporary_folder.h"

#include <cstdlib>
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
    std::filesystem::copy_file(ThisProgram(), host);
    SetEnvironmentVariableA(kInPrintHost, "1");
    const ChildProcess running(host, {L"--gtest_filter=" + std::wstring(tests.begin(), tests.end())});
    SetEnvironmentVariableA(kInPrintHost, nullptr);
    return running.ExitCode();
}

} // namespace qx::test
