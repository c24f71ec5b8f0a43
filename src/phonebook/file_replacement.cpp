#include "phonebook/file_replacement.h"

#include <algorithm>
#include <span>
#include <vector>

namespace qx {

namespace {

constexpr wchar_t kReplacementEnding[] = L".new";
constexpr LONGLONG kLongestFile = 256 << 20; // hundreds of times the largest phone book
constexpr std::size_t kBlockBytes = 64 << 10;

// Replacing a file that somebody reads is refused with this error, not with a sharing violation.
constexpr DWORD kDestinationInUse = ERROR_ACCESS_DENIED;

void CopySecurity(const std::wstring& from, const std::wstring& to)
{
    DWORD bytes = 0;
    GetFileSecurityW(from.c_str(), DACL_SECURITY_INFORMATION, nullptr, 0, &bytes);
    std::vector<BYTE> descriptor(bytes);
    if (GetFileSecurityW(from.c_str(), DACL_SECURITY_INFORMATION, descriptor.data(), bytes, &bytes))
        SetFileSecurityW(to.c_str(), DACL_SECURITY_INFORMATION, descriptor.data());
}

// Without this a machine that dies right after the rename may find a file of the right length and no content.
void FlushToDisk(const std::wstring& path) noexcept
{
    const UniqueFile file(
        CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
    if (file)
        FlushFileBuffers(file.Get());
}

// Fills the buffer as far as the file goes; the bytes read, 0 at the end or when it cannot be read.
DWORD ReadSome(HANDLE file, std::span<char> buffer) noexcept
{
    DWORD read = 0;
    return ReadFile(file, buffer.data(), static_cast<DWORD>(buffer.size()), &read, nullptr) ? read : 0;
}

bool HaveSameContent(const std::wstring& left, const std::wstring& right)
{
    const UniqueFile a = OpenForReading(left);
    const UniqueFile b = OpenForReading(right);
    LARGE_INTEGER sizeOfA{};
    LARGE_INTEGER sizeOfB{};
    if (!a || !b || !GetFileSizeEx(a.Get(), &sizeOfA) || !GetFileSizeEx(b.Get(), &sizeOfB) ||
        sizeOfA.QuadPart != sizeOfB.QuadPart)
        return false;
    std::vector<char> fromA(kBlockBytes);
    std::vector<char> fromB(kBlockBytes);
    for (LONGLONG rest = sizeOfA.QuadPart; rest > 0;) {
        const DWORD read = ReadSome(a.Get(), fromA);
        if (read == 0 || ReadSome(b.Get(), fromB) != read ||
            !std::equal(fromA.begin(), fromA.begin() + read, fromB.begin()))
            return false;
        rest -= read;
    }
    return true;
}

} // namespace

Replacement::Replacement(const std::wstring& path)
    : path_(path), temporary_(path + L"." + std::to_wstring(GetCurrentProcessId()) + kReplacementEnding)
{
    // One of a process of the same number that died may still be there, hidden: that would refuse CREATE_ALWAYS.
    SetFileAttributesW(temporary_.c_str(), FILE_ATTRIBUTE_NORMAL);
    const UniqueFile file(CreateFileW(temporary_.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS,
                                      FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file)
        temporary_.clear();
}

Replacement::~Replacement()
{
    if (!temporary_.empty())
        DeleteFileW(temporary_.c_str());
}

bool Replacement::TakePlace()
{
    FlushToDisk(temporary_);
    CopySecurity(path_, temporary_);
    const DWORD attributes = GetFileAttributesW(path_.c_str());
    const DWORD kept = attributes == INVALID_FILE_ATTRIBUTES ? 0 : attributes & ~DWORD{FILE_ATTRIBUTE_NORMAL};
    SetFileAttributesW(temporary_.c_str(), kept | FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_HIDDEN);
    const bool moved = RetryWhileInUse(
        [&] {
            return MoveFileExW(temporary_.c_str(), path_.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH);
        },
        kDestinationInUse);
    if (moved)
        temporary_.clear();
    return moved;
}

void RemoveAbandonedReplacements(const std::wstring& path) noexcept
{
    const std::wstring folder = path.substr(0, path.rfind(L'\\') + 1);
    WIN32_FIND_DATAW found;
    const UniqueFindFile search(FindFirstFileW((path + L".*" + kReplacementEnding).c_str(), &found));
    if (!search)
        return;
    do {
        DeleteFileW((folder + found.cFileName).c_str());
    } while (FindNextFileW(search.Get(), &found));
}

bool KeepCopy(const std::wstring& path)
{
    WIN32_FILE_ATTRIBUTE_DATA data{};
    if (!GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data))
        return GetLastError() == ERROR_FILE_NOT_FOUND;
    if (data.nFileSizeHigh == 0 && data.nFileSizeLow == 0)
        return true;
    // Of several unreadable phone books each keeps its copy: .bak, .2.bak, .3.bak, ...
    std::wstring copy = path + L".bak";
    for (int number = 2; GetFileAttributesW(copy.c_str()) != INVALID_FILE_ATTRIBUTES; ++number) {
        if (HaveSameContent(path, copy))
            return true;
        copy = path + L"." + std::to_wstring(number) + L".bak";
    }
    if (!CopyFileW(path.c_str(), copy.c_str(), TRUE))
        return false;
    FlushToDisk(copy);
    SetFileAttributesW(copy.c_str(), FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_HIDDEN);
    return true;
}

UniqueFile OpenForReading(const std::wstring& path) noexcept
{
    UniqueFile file;
    RetryWhileInUse([&] {
        file.Reset(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                               FILE_ATTRIBUTE_NORMAL, nullptr));
        return static_cast<bool>(file);
    });
    return file;
}

DWORD ReadWholeFile(const std::wstring& path, std::string& out)
{
    const UniqueFile file = OpenForReading(path);
    if (!file)
        return GetLastError();
    LARGE_INTEGER size{};
    if (!GetFileSizeEx(file.Get(), &size) || size.QuadPart > kLongestFile)
        return ERROR_FILE_TOO_LARGE;
    std::string content(static_cast<std::size_t>(size.QuadPart), '\0');
    if (ReadSome(file.Get(), content) != content.size())
        return ERROR_FILE_TOO_LARGE;
    out = std::move(content);
    return ERROR_SUCCESS;
}

} // namespace qx
