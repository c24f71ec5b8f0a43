// Another process that a test starts.
#pragma once

#include "base/unique.h"

#include <filesystem>
#include <string>
#include <vector>
#include <windows.h>

namespace qx::test {

std::filesystem::path ThisProgram();
// A program that was built beside this one: "sheet_player.exe".
std::filesystem::path ProgramBeside(const wchar_t* name);

class ChildProcess {
public:
    enum class Handles { ItsOwn, Inherited };

    // No argument has a quote in it. Throws std::runtime_error when the process cannot be started.
    ChildProcess(const std::filesystem::path& program, const std::vector<std::wstring>& arguments,
                 Handles handles = Handles::ItsOwn, STARTUPINFOW startup = {});

    bool EndsWithin(DWORD milliseconds) const;
    DWORD ExitCode() const; // waits for its end
    void Kill(UINT exitCode) const;

private:
    UniqueKernelHandle process_; // closing it ends nothing
};

} // namespace qx::test
