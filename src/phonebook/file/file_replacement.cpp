#include "phonebook/file/file_replacement.h"

#include "base/abandoned_files.h"
#include "base/file_in_use.h"
#include "base/guarded.h"

#include <algorithm>
#include <span>
#include <string_view>
#include <vector>

namespace qx {

namespace {

constexpr wchar_t kReplacementEnding[] = L".new";
constexpr wchar_t kCopyEnding[] = L".bak";
constexpr wchar_t kNameInTemporaryFolder[] = L"qxfax-phone-book";
constexpr LONGLONG kLongestFile = 256 << 20; // hundreds of times the largest phone book
constexpr std::size_t kBlockBytes = 64 << 10;
constexpr int kCopiesLookedFor = 100;

// ---- names -------------------------------------------------------------------------------------------------------

// Where replacements lie, and copies, when the folder of a phone book takes none; empty when there is no such place.
std::wstring StartInTemporaryFolder()
{
    const std::wstring folder = TemporaryFolder();
    return folder.empty() ? folder : folder + kNameInTemporaryFolder;
}

// A full disk, say, is another matter: what does not fit beside a file is not to be written over it.
constexpr bool TakesNoSecondFile(DWORD error) noexcept
{
    switch (error) {
    case ERROR_ACCESS_DENIED:
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_NAME:
    case ERROR_BAD_PATHNAME:
    case ERROR_BUFFER_OVERFLOW:
    case ERROR_FILENAME_EXCED_RANGE:
        return true;
    default:
        return false;
    }
}

// ---- whole files -------------------------------------------------------------------------------------------------

// Who may do what with a file, as a descriptor of its own; empty when it cannot be asked.
std::vector<BYTE> SecurityOf(const std::wstring& path)
{
    DWORD bytes = 0;
    GetFileSecurityW(path.c_str(), DACL_SECURITY_INFORMATION, nullptr, 0, &bytes);
    std::vector<BYTE> descriptor(bytes);
    if (!GetFileSecurityW(path.c_str(), DACL_SECURITY_INFORMATION, descriptor.data(), bytes, &bytes))
        descriptor.clear();
    return descriptor;
}

void SetSecurity(const std::wstring& path, std::vector<BYTE> descriptor) noexcept
{
    if (!descriptor.empty())
        SetFileSecurityW(path.c_str(), DACL_SECURITY_INFORMATION, descriptor.data());
}

// Fills the buffer as far as the file goes; the bytes read, 0 at the end or when it cannot be read.
DWORD ReadSome(HANDLE file, std::span<char> buffer) noexcept
{
    DWORD read = 0;
    return ReadFile(file, buffer.data(), static_cast<DWORD>(buffer.size()), &read, nullptr) ? read : 0;
}

// From the file's beginning. ERROR_SUCCESS or ERROR_FILE_TOO_LARGE.
DWORD ReadWhole(HANDLE file, std::string& out)
{
    LARGE_INTEGER size{};
    if (!GetFileSizeEx(file, &size) || size.QuadPart > kLongestFile)
        return ERROR_FILE_TOO_LARGE;
    std::string content(static_cast<std::size_t>(size.QuadPart), '\0');
    if (ReadSome(file, content) != content.size())
        return ERROR_FILE_TOO_LARGE;
    out = std::move(content);
    return ERROR_SUCCESS;
}

// Writes over what is there, without emptying the file first, and to the disk.
bool WriteOver(HANDLE file, const std::string& bytes) noexcept
{
    DWORD written = 0;
    return SetFilePointerEx(file, {}, nullptr, FILE_BEGIN) &&
           WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) &&
           written == bytes.size() && SetEndOfFile(file) && FlushFileBuffers(file);
}

// A new file, safely on the disk; nothing is left of it when that fails. The error says why.
DWORD CopyToNewFile(const std::wstring& from, const std::wstring& to) noexcept
{
    if (!RetryWhileInUse([&] { return CopyFileW(from.c_str(), to.c_str(), TRUE) != FALSE; }))
        return GetLastError();
    if (FlushToDisk(to))
        return ERROR_SUCCESS;
    SetFileAttributesW(to.c_str(), FILE_ATTRIBUTE_NORMAL);
    DeleteFileW(to.c_str());
    return ERROR_WRITE_FAULT;
}

// Calls make(name), which answers an error, with names of our own until one is free: a file that an earlier session
// left behind may have any of them. A folder in which all seem to be taken takes no file.
template <class Make>
DWORD MakeNewFile(const std::wstring& start, const wchar_t* ending, std::wstring& name, const Make& make)
{
    constexpr int kMostNames = 1000;
    DWORD error = ERROR_FILE_EXISTS;
    for (int names = 0; names < kMostNames && error == ERROR_FILE_EXISTS; ++names) {
        name = UniqueName(start, ending);
        error = make(name);
    }
    return error;
}

// False also when a could not be opened.
bool HaveSameContent(const UniqueFile& a, const std::wstring& right)
{
    if (!a)
        return false;
    const UniqueFile b = OpenWhenFree(right, GENERIC_READ);
    LARGE_INTEGER sizeOfA{};
    LARGE_INTEGER sizeOfB{};
    if (!b || !GetFileSizeEx(a.Get(), &sizeOfA) || !GetFileSizeEx(b.Get(), &sizeOfB) ||
        sizeOfA.QuadPart != sizeOfB.QuadPart || !SetFilePointerEx(a.Get(), {}, nullptr, FILE_BEGIN))
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

// A copy that has been made at path, and is removed again unless it is kept.
class PassingCopy : NoCopy {
public:
    explicit PassingCopy(std::wstring&& path) noexcept : path_(std::move(path)) {}
    ~PassingCopy()
    {
        if (kept_)
            return;
        SetFileAttributesW(path_.c_str(), FILE_ATTRIBUTE_NORMAL);
        DeleteFileW(path_.c_str());
    }

    const std::wstring& Path() const noexcept { return path_; }
    void Keep() noexcept { kept_ = true; }

private:
    const std::wstring path_;
    bool kept_ = false;
};

std::optional<FileStamp> StampOf(HANDLE file) noexcept
{
    BY_HANDLE_FILE_INFORMATION info{};
    if (!GetFileInformationByHandle(file, &info))
        return std::nullopt;
    return FileStamp{.written = Whole(info.ftLastWriteTime.dwHighDateTime, info.ftLastWriteTime.dwLowDateTime),
                     .bytes = Whole(info.nFileSizeHigh, info.nFileSizeLow),
                     .index = Whole(info.nFileIndexHigh, info.nFileIndexLow),
                     .volume = info.dwVolumeSerialNumber};
}

std::wstring NameOfCopy(const std::wstring& start, int number)
{
    std::wstring name = start;
    if (number > 1)
        name.append(L".").append(std::to_wstring(number));
    return name.append(kCopyEnding);
}

// What the names of copies of path begin with where its folder takes none; empty when there is no such place. Without
// what the folder is called: of several phone books of one name each keeps its copy.
std::wstring StartOfCopiesElsewhere(const std::wstring& path)
{
    std::wstring start = StartInTemporaryFolder();
    if (!start.empty())
        start.append(L".").append(path, path.rfind(L'\\') + 1);
    return start;
}

// Copies path to the first free name behind start, unless one of those that are taken is a copy of it already. Of
// several unreadable phone books each keeps its copy: .bak, .2.bak, .3.bak, ... The error says why there is none.
DWORD KeepCopyBehind(const std::wstring& start, const std::wstring& path)
{
    UniqueFile file = OpenWhenFree(path, GENERIC_READ); // once: somebody may hold it for good
    std::wstring copy;
    DWORD error = ERROR_FILE_EXISTS;
    for (int number = 1; error == ERROR_FILE_EXISTS; ++number) {
        copy = NameOfCopy(start, number);
        if (GetFileAttributesW(copy.c_str()) == INVALID_FILE_ATTRIBUTES) {
            file.Reset(); // others need not wait for the disk
            error = CopyToNewFile(path, copy);
        } else if (HaveSameContent(file, copy)) {
            return ERROR_SUCCESS;
        }
    }
    if (error == ERROR_SUCCESS)
        SetFileAttributesW(copy.c_str(), FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_HIDDEN);
    return error;
}

void AddCopiesBehind(const std::wstring& start, std::vector<std::wstring>& copies)
{
    for (int number = 1;; ++number) {
        std::wstring copy = NameOfCopy(start, number);
        // Somebody may have removed one in between.
        if (GetFileAttributesW(copy.c_str()) != INVALID_FILE_ATTRIBUTES)
            copies.push_back(std::move(copy));
        else if (number >= kCopiesLookedFor)
            return;
    }
}

} // namespace

// ---- replacing ---------------------------------------------------------------------------------------------------

Replacement::Replacement(const std::wstring& path) : path_(path)
{
    if (Create(path) || !TakesNoSecondFile(GetLastError()))
        return;
    elsewhere_ = StartInTemporaryFolder();
    if (!elsewhere_.empty())
        Create(elsewhere_);
}

// False with the last error set.
bool Replacement::Create(const std::wstring& start)
{
    std::wstring name;
    const bool created = RetryWhileInUse([&] {
        const DWORD error = MakeNewFile(start, kReplacementEnding, name, [](const std::wstring& free) {
            const UniqueFile file(CreateFileW(free.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_NEW,
                                              FILE_ATTRIBUTE_NORMAL, nullptr));
            return file ? DWORD{ERROR_SUCCESS} : GetLastError();
        });
        SetLastError(error);
        return error == ERROR_SUCCESS;
    });
    if (created)
        temporary_ = std::move(name);
    return created;
}

Replacement::~Replacement()
{
    if (temporary_.empty())
        return;
    SetSecurity(temporary_, std::move(ownSecurity_)); // that of path may not grant to delete it
    DeleteFileW(temporary_.c_str());
}

bool Replacement::TakePlace(const MayGo& mayGo)
{
    return FlushToDisk(temporary_) && (elsewhere_.empty() ? Rename(mayGo) : Overwrite(mayGo));
}

bool Replacement::Rename(const MayGo& mayGo)
{
    ownSecurity_ = SecurityOf(temporary_);
    SetSecurity(temporary_, SecurityOf(path_));
    const DWORD attributes = GetFileAttributesW(path_.c_str());
    const DWORD kept = attributes == INVALID_FILE_ATTRIBUTES ? 0 : attributes & ~DWORD{FILE_ATTRIBUTE_NORMAL};
    SetFileAttributesW(temporary_.c_str(), kept | FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_HIDDEN);
    const bool moved = RetryWhileInUse([&] {
        if (!mayGo()) {
            SetLastError(ERROR_CANCELLED);
            return false;
        }
        return MoveFileExW(temporary_.c_str(), path_.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) !=
               FALSE;
    });
    if (moved)
        temporary_.clear();
    return moved;
}

bool Replacement::Overwrite(const MayGo& mayGo)
{
    RemoveAbandonedFiles(elsewhere_, kReplacementEnding, Now());
    std::string newContent;
    if (ReadWholeFile(temporary_, newContent) != ERROR_SUCCESS)
        return false;
    for (int saves = 0; saves < kMostSavesWaitedFor; ++saves) {
        std::wstring name;
        const auto copyTo = [this](const std::wstring& free) { return CopyToNewFile(path_, free); };
        if (MakeNewFile(elsewhere_, kCopyEnding, name, copyTo) != ERROR_SUCCESS)
            return false;
        PassingCopy copy(std::move(name));
        std::string oldContent;
        if (ReadWholeFile(copy.Path(), oldContent) != ERROR_SUCCESS || !mayGo())
            return false;
        // From here on no other machine writes. One that has since the copy was made takes another round.
        const UniqueFile file = OpenWhenFree(path_, GENERIC_READ | GENERIC_WRITE);
        std::string content;
        if (!file || ReadWhole(file.Get(), content) != ERROR_SUCCESS)
            return false;
        if (content != oldContent)
            continue;
        if (WriteOver(file.Get(), newContent))
            return true;
        if (!WriteOver(file.Get(), oldContent) && !oldContent.empty())
            copy.Keep();
        return false;
    }
    return false;
}

void RemoveAbandonedReplacements(const std::wstring& path) noexcept
{
    Guarded([&path] {
        WIN32_FILE_ATTRIBUTE_DATA data{};
        if (GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data))
            RemoveAbandonedFiles(path, kReplacementEnding,
                                 Whole(data.ftLastWriteTime.dwHighDateTime, data.ftLastWriteTime.dwLowDateTime));
    });
}

// ---- copies ------------------------------------------------------------------------------------------------------

std::vector<std::wstring> KeptCopies(const std::wstring& path)
{
    std::vector<std::wstring> copies;
    AddCopiesBehind(path, copies);
    if (const std::wstring elsewhere = StartOfCopiesElsewhere(path); !elsewhere.empty())
        AddCopiesBehind(elsewhere, copies);
    return copies;
}

bool KeepCopy(const std::wstring& path)
{
    WIN32_FILE_ATTRIBUTE_DATA data{};
    if (!GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data)) {
        const DWORD error = GetLastError();
        return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
    }
    if (data.nFileSizeHigh == 0 && data.nFileSizeLow == 0)
        return true;
    DWORD error = KeepCopyBehind(path, path);
    if (TakesNoSecondFile(error)) {
        const std::wstring elsewhere = StartOfCopiesElsewhere(path);
        if (!elsewhere.empty())
            error = KeepCopyBehind(elsewhere, path);
    }
    return error == ERROR_SUCCESS;
}

// ---- reading -----------------------------------------------------------------------------------------------------

bool HasAttribute(const std::wstring& path, DWORD attribute) noexcept
{
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & attribute) != 0;
}

std::wstring FollowLink(const std::wstring& path, DWORD disposition)
{
    if (!HasAttribute(path, FILE_ATTRIBUTE_REPARSE_POINT))
        return path;
    const UniqueFile file(CreateFileW(path.c_str(), FILE_READ_ATTRIBUTES,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, disposition,
                                      FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    if (!file)
        return path;
    std::wstring real(GetFinalPathNameByHandleW(file.Get(), nullptr, 0, FILE_NAME_NORMALIZED), L'\0');
    const DWORD units =
        GetFinalPathNameByHandleW(file.Get(), real.data(), static_cast<DWORD>(real.size()), FILE_NAME_NORMALIZED);
    if (units == 0 || units >= real.size())
        return path;
    real.resize(units);
    // In the form that every function takes, unless it is too long for that.
    constexpr std::wstring_view kPrefix = L"\\\\?\\";
    constexpr std::wstring_view kSharePrefix = L"\\\\?\\UNC\\";
    if (real.size() >= MAX_PATH)
        return real;
    if (real.starts_with(kSharePrefix))
        return L"\\\\" + real.substr(kSharePrefix.size());
    return real.starts_with(kPrefix) ? real.substr(kPrefix.size()) : real;
}

std::optional<FileStamp> StampOf(const std::wstring& path) noexcept
{
    const UniqueFile file(CreateFileW(path.c_str(), FILE_READ_ATTRIBUTES,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                      FILE_ATTRIBUTE_NORMAL, nullptr));
    return file ? StampOf(file.Get()) : std::nullopt;
}

DWORD ReadWholeFile(const std::wstring& path, std::string& out, std::optional<FileStamp>* stamp)
{
    const UniqueFile file = OpenWhenFree(path, GENERIC_READ);
    if (!file)
        return GetLastError();
    const DWORD error = ReadWhole(file.Get(), out);
    if (error == ERROR_SUCCESS && stamp != nullptr)
        *stamp = StampOf(file.Get());
    return error;
}

} // namespace qx
