// Replacing a file in one step, and keeping copies beside it.
#pragma once

#include "base/unique.h"

#include <string>

namespace qx {

// Repeats attempt() for a short while as long as it fails because another program has the file open (virus scanners and
// backups look at every new file): with a sharing violation, or with the error that also means that here.
template <class Attempt> bool RetryWhileInUse(Attempt attempt, DWORD alsoInUse = ERROR_SHARING_VIOLATION)
{
    constexpr int kAttempts = 10;
    constexpr DWORD kPauseMilliseconds = 25;
    for (int i = 1;; ++i) {
        if (attempt())
            return true;
        const DWORD error = GetLastError();
        if (i == kAttempts || (error != ERROR_SHARING_VIOLATION && error != alsoInUse))
            return false;
        Sleep(kPauseMilliseconds);
    }
}

// A new, empty file beside path, which is to take its place; none when the folder takes no second file. It is hidden
// only when it takes the place: a hidden one could not be saved over. It is removed again unless it took the place.
class Replacement {
public:
    explicit Replacement(const std::wstring& path);
    ~Replacement();
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;

    explicit operator bool() const noexcept { return !temporary_.empty(); }
    const std::wstring& Path() const noexcept { return temporary_; }

    // Puts the new content, once it is safely on the disk, where the old one was, in one step. The file keeps its
    // security and its attributes and is hidden.
    bool TakePlace();

private:
    const std::wstring path_;
    std::wstring temporary_;
};

// Removes what processes that died while replacing path left beside it.
void RemoveAbandonedReplacements(const std::wstring& path) noexcept;

// Keeps a byte-identical, hidden copy of path beside it, unless there is one already or the file is empty or not
// there. Never replaces an older copy. False when the file could not be copied.
bool KeepCopy(const std::wstring& path);

// Opens a file for reading, waiting a moment for others to let go of it. Empty, with the last error set, when it cannot
// be opened.
UniqueFile OpenForReading(const std::wstring& path) noexcept;

// Reads the whole file. ERROR_SUCCESS; the error of opening it; or ERROR_FILE_TOO_LARGE when it opened but could not be
// read, or is longer than any phone book. out is left alone then.
DWORD ReadWholeFile(const std::wstring& path, std::string& out);

} // namespace qx
