#include "support/child_process.h"

#include <stdexcept>

namespace qx::test {

std::filesystem::path ThisProgram()
{
    wchar_t path[MAX_PATH] = L"";
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    return path;
}

std::filesystem::path ProgramBeside(const wchar_t* name)
{
    return ThisProgram().parent_path() / name;
}

ChildProcess::ChildProcess(const std::filesystem::path& program, const std::vector<std::wstring>& arguments,
                           Handles handles, STARTUPINFOW startup)
{
    std::wstring command = L'"' + program.wstring() + L'"';
    for (const std::wstring& argument : arguments)
        command += L" \"" + argument + L'"';
    startup.cb = sizeof startup;
    PROCESS_INFORMATION started{};
    constexpr int kAttempts = 5; // a machine that is busy with much else may refuse one
    for (int attempt = 1; !CreateProcessW(program.c_str(), command.data(), nullptr, nullptr,
                                          handles == Handles::Inherited, 0, nullptr, nullptr, &startup, &started);
         ++attempt) {
        if (attempt == kAttempts)
            throw std::runtime_error("cannot start " + program.filename().string() + ": " +
                                     std::to_string(GetLastError()));
        Sleep(200);
    }
    CloseHandle(started.hThread);
    process_.Reset(started.hProcess);
}

bool ChildProcess::EndsWithin(DWORD milliseconds) const
{
    return WaitForSingleObject(process_.Get(), milliseconds) == WAIT_OBJECT_0;
}

DWORD ChildProcess::ExitCode() const
{
    EndsWithin(INFINITE);
    DWORD code = 1;
    GetExitCodeProcess(process_.Get(), &code);
    return code;
}

void ChildProcess::Kill(UINT exitCode) const
{
    TerminateProcess(process_.Get(), exitCode);
    EndsWithin(INFINITE);
}

} // namespace qx::test
