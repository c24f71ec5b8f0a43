#include "documents_folder.h"

#include <algorithm>
#include <stdexcept>

namespace qx::test {

namespace {

constexpr wchar_t kShellFolders[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";

std::wstring UniqueName()
{
    static int number = 0;
    return L"qxtest-" + std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(GetTickCount64()) + L"-" +
           std::to_wstring(++number);
}

void RemoveFolder(const std::wstring& path)
{
    WIN32_FIND_DATAW found;
    const UniqueFindFile search(FindFirstFileW((path + L"\\*").c_str(), &found));
    do {
        const std::wstring file = path + L"\\" + found.cFileName;
        SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_NORMAL);
        DeleteFileW(file.c_str());
    } while (search && FindNextFileW(search.Get(), &found));
    RemoveDirectoryW(path.c_str());
}

} // namespace

DocumentsFolder::DocumentsFolder()
{
    wchar_t temporary[MAX_PATH];
    GetTempPathW(MAX_PATH, temporary);
    const std::wstring name = UniqueName();
    path_ = temporary + name;
    registryPath_ = L"Software\\" + name;
    if (!CreateDirectoryW(path_.c_str(), nullptr) ||
        RegCreateKeyW(HKEY_CURRENT_USER, registryPath_.c_str(), registry_.Receive()) != ERROR_SUCCESS ||
        RegOverridePredefKey(HKEY_CURRENT_USER, registry_.Get()) != ERROR_SUCCESS)
        throw std::runtime_error("no documents folder");
    SetPersonal(path_.c_str());
}

DocumentsFolder::~DocumentsFolder()
{
    RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
    RegDeleteTreeW(HKEY_CURRENT_USER, registryPath_.c_str());
    RemoveFolder(path_);
}

void DocumentsFolder::SetPersonal(const wchar_t* path) const
{
    UniqueKey folders;
    RegCreateKeyW(HKEY_CURRENT_USER, kShellFolders, folders.Receive());
    if (path == nullptr)
        RegDeleteValueW(folders.Get(), L"Personal");
    else
        RegSetValueExW(folders.Get(), L"Personal", 0, REG_SZ, reinterpret_cast<const BYTE*>(path),
                       static_cast<DWORD>((std::char_traits<wchar_t>::length(path) + 1) * sizeof(wchar_t)));
}

std::vector<std::wstring> DocumentsFolder::Files() const
{
    std::vector<std::wstring> names;
    WIN32_FIND_DATAW found;
    const UniqueFindFile search(FindFirstFileW(File(L"*").c_str(), &found));
    do {
        if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0)
            names.emplace_back(found.cFileName);
    } while (FindNextFileW(search.Get(), &found));
    std::sort(names.begin(), names.end());
    return names;
}

void WriteFileBytes(const std::wstring& path, const std::string& bytes)
{
    const UniqueFile file(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
    DWORD written = 0;
    if (!WriteFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr))
        throw std::runtime_error("no test file");
}

std::string ReadFileBytes(const std::wstring& path)
{
    const UniqueFile file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
    if (!file)
        return "<no file>";
    std::string bytes(GetFileSize(file.Get(), nullptr), '\0');
    DWORD read = 0;
    ReadFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr);
    return bytes;
}

bool IsHidden(const std::wstring& path)
{
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_HIDDEN) != 0;
}

void MakeOld(const std::wstring& path)
{
    const UniqueFile file(CreateFileW(path.c_str(), FILE_WRITE_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                      OPEN_EXISTING, 0, nullptr));
    constexpr FILETIME kYearsAgo{0, 0x01D00000};
    if (!SetFileTime(file.Get(), nullptr, nullptr, &kYearsAgo))
        throw std::runtime_error("no old file");
}

} // namespace qx::test
