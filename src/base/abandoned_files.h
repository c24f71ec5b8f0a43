// Files that a process is still making, and those that it was making when it ended.
#pragma once

#include <cstdint>
#include <string>
#include <windows.h>

namespace qx {

// The user's folder for temporary files, with a backslash at its end; empty when there is none.
std::wstring TemporaryFolder();

// What Windows tells of a file in two halves: its times, its size.
constexpr std::uint64_t Whole(DWORD high, DWORD low) noexcept
{
    return std::uint64_t{high} << 32 | low;
}

// A name that no other process, thread or attempt uses: three numbers behind start, and ending.
std::wstring UniqueName(const std::wstring& start, const wchar_t* ending);

// What the clock of this computer says, as Whole makes one number of a FILETIME.
std::uint64_t Now() noexcept;

// Deletes the files whose names UniqueName has made of start, a path, and ending, unless they are so young that another
// process, maybe on another computer, may still be at work. now is by the clock that stamps the files of that folder:
// on a share it is the server's. What cannot be deleted stays. Never throws for the folder's sake.
void RemoveAbandonedFiles(const std::wstring& start, const wchar_t* ending, std::uint64_t now);

} // namespace qx
