// Files that another program, such as a virus scanner or a backup, looks at for a moment: every new file is looked at.
#pragma once

#include "base/unique.h"

#include <string>

namespace qx {

// What a call is refused with meanwhile. Access is denied for a moment to a name that is being deleted, and for
// replacing a file in use.
constexpr bool MeansInUse(DWORD error) noexcept
{
    return error == ERROR_SHARING_VIOLATION || error == ERROR_LOCK_VIOLATION || error == ERROR_ACCESS_DENIED ||
           error == ERROR_USER_MAPPED_FILE;
}

// Repeats attempt() for a second as long as it fails, by its last error, because the file is in use.
template <class Attempt> bool RetryWhileInUse(Attempt attempt)
{
    constexpr int kAttempts = 41;
    constexpr DWORD kPauseMilliseconds = 25;
    for (int i = 1;; ++i) {
        if (attempt())
            return true;
        const DWORD error = GetLastError();
        if (i == kAttempts || !MeansInUse(error)) {
            SetLastError(error);
            return false;
        }
        Sleep(kPauseMilliseconds);
    }
}

// Opens a file that is there for GENERIC_READ or GENERIC_WRITE, waiting for others to let go of it. Empty, with the
// last error set, when it cannot be opened.
UniqueFile OpenWhenFree(const std::wstring& path, DWORD access) noexcept;

// Without this a machine that dies right after a file was renamed may find it of the right length and with no content.
bool FlushToDisk(const std::wstring& path) noexcept;

} // namespace qx
