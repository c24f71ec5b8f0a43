#include "phonebook/file/file_guard.h"

#include <cstdint>

namespace qx {

namespace {

constexpr DWORD kWaitMilliseconds = 1500;
constexpr DWORD kDeletionMilliseconds = 250;
constexpr DWORD kPauseMilliseconds = 10;

// Backslashes may not stand in the name, and a path may be longer than one.
std::uint64_t HashOfPath(std::wstring path) noexcept
{
    CharUpperBuffW(path.data(), static_cast<DWORD>(path.size()));
    std::uint64_t hash = 14695981039346656037u; // FNV-1a
    for (const wchar_t c : path)
        hash = (hash ^ c) * 1099511628211u;
    return hash;
}

// Global, since one user's sessions share the documents folder.
std::wstring GuardName(const std::wstring& path)
{
    return L"Global\\QXFaxPhoneBook-" + std::to_wstring(HashOfPath(path));
}

// How long to wait for a lock file that is refused. A name that is being deleted is denied for a moment, a folder that
// takes no files denies for good.
constexpr DWORD PatienceWith(DWORD error) noexcept
{
    switch (error) {
    case ERROR_SHARING_VIOLATION:
        return kWaitMilliseconds;
    case ERROR_ACCESS_DENIED:
        return kDeletionMilliseconds;
    default:
        return 0;
    }
}

} // namespace

FileGuard::FileGuard(const std::wstring& path) : mutex_(CreateMutexW(nullptr, FALSE, GuardName(path).c_str()))
{
    const DWORD outcome = mutex_ ? WaitForSingleObject(mutex_.Get(), kWaitMilliseconds) : WAIT_FAILED;
    owned_ = outcome == WAIT_OBJECT_0 || outcome == WAIT_ABANDONED;
}

FileGuard::~FileGuard()
{
    if (owned_)
        ReleaseMutex(mutex_.Get());
}

FolderLock::FolderLock(const std::wstring& path)
{
    const std::wstring name = path + L".lock";
    for (DWORD waited = 0;; waited += kPauseMilliseconds) {
        file_.Reset(CreateFileW(name.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
                                FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr));
        if (file_ || waited >= PatienceWith(GetLastError()))
            return;
        Sleep(kPauseMilliseconds);
    }
}

} // namespace qx
