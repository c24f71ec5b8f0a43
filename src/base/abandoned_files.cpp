#include "base/abandoned_files.h"

#include "base/unique.h"

#include <algorithm>
#include <cstdint>

namespace qx {

namespace {

// Longer than anybody takes to make one.
constexpr std::uint64_t kAbandonedAfter = std::uint64_t{10} * 60 * 10000000; // 10 minutes, in units of 100 ns

constexpr std::uint64_t Ticks(const FILETIME& time) noexcept
{
    return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
}

bool HasBeenThereForLong(const WIN32_FIND_DATAW& file) noexcept
{
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    return Ticks(now) > Ticks(file.ftLastWriteTime) + kAbandonedAfter;
}

} // namespace

void RemoveAbandonedFiles(const std::wstring& folder, const std::wstring& pattern,
                          bool (*isOurs)(std::wstring_view name, const void* context), const void* context)
{
    WIN32_FIND_DATAW found;
    const UniqueFindFile search(FindFirstFileW((folder + pattern).c_str(), &found));
    if (!search)
        return;
    do {
        if (isOurs(found.cFileName, context) && HasBeenThereForLong(found))
            DeleteFileW((folder + found.cFileName).c_str());
    } while (FindNextFileW(search.Get(), &found));
}

bool TakeNumber(std::wstring_view& rest) noexcept
{
    const std::size_t digits = std::min(rest.find_first_not_of(L"0123456789"), rest.size());
    rest.remove_prefix(digits);
    return digits != 0;
}

} // namespace qx
