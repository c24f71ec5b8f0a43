#include "base/abandoned_files.h"

#include "base/unique.h"

#include <algorithm>
#include <atomic>
#include <string_view>

namespace qx {

namespace {

// Longer than anybody takes to make one.
constexpr std::uint64_t kAbandonedAfter = std::uint64_t{10} * 60 * 10000000; // 10 minutes, in units of 100 ns

bool HasBeenThereForLong(const WIN32_FIND_DATAW& file, std::uint64_t now) noexcept
{
    return now > Whole(file.ftLastWriteTime.dwHighDateTime, file.ftLastWriteTime.dwLowDateTime) + kAbandonedAfter;
}

// Whether rest, a file's name behind start, is what UniqueName appends.
bool IsUniqueEnding(std::wstring_view rest, std::wstring_view ending) noexcept
{
    constexpr int kNumbers = 3;
    for (int i = 0; i < kNumbers; ++i) {
        if (!rest.starts_with(L'.'))
            return false;
        rest.remove_prefix(1);
        const std::size_t digits = std::min(rest.find_first_not_of(L"0123456789"), rest.size());
        if (digits == 0)
            return false;
        rest.remove_prefix(digits);
    }
    return rest == ending;
}

} // namespace

std::wstring TemporaryFolder()
{
    wchar_t folder[MAX_PATH + 1];
    const DWORD units = GetTempPathW(MAX_PATH + 1, folder);
    return units <= MAX_PATH ? std::wstring(folder, units) : std::wstring();
}

std::wstring UniqueName(const std::wstring& start, const wchar_t* ending)
{
    static std::atomic<unsigned> attempts{0};
    return start + L'.' + std::to_wstring(GetCurrentProcessId()) + L'.' + std::to_wstring(GetCurrentThreadId()) + L'.' +
           std::to_wstring(++attempts) + ending;
}

std::uint64_t Now() noexcept
{
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    return Whole(now.dwHighDateTime, now.dwLowDateTime);
}

void RemoveAbandonedFiles(const std::wstring& start, const wchar_t* ending, std::uint64_t now)
{
    const std::wstring folder = start.substr(0, start.rfind(L'\\') + 1);
    const std::size_t nameUnits = start.size() - folder.size();
    WIN32_FIND_DATAW found;
    const UniqueFindFile search(FindFirstFileW((start + L".*" + ending).c_str(), &found));
    if (!search)
        return;
    do {
        std::wstring_view name = found.cFileName;
        name.remove_prefix(std::min(nameUnits, name.size())); // it may be found by a shorter name that it also has
        if (IsUniqueEnding(name, ending) && HasBeenThereForLong(found, now))
            DeleteFileW((folder + found.cFileName).c_str());
    } while (FindNextFileW(search.Get(), &found));
}

} // namespace qx
