#include "documents_folder.h"

#include <algorithm>
#include <stdexcept>

namespace qx::test {

namespace {

constexpr wchar_t kShellFolders[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";

} // namespace

DocumentsFolder::DocumentsFolder() : registryPath_(L"Software\\" + folder_.Path().filename().wstring())
{
    RegDeleteTreeW(HKEY_CURRENT_USER, registryPath_.c_str());
    if (RegCreateKeyW(HKEY_CURRENT_USER, registryPath_.c_str(), registry_.Receive()) != ERROR_SUCCESS ||
        RegOverridePredefKey(HKEY_CURRENT_USER, registry_.Get()) != ERROR_SUCCESS)
        throw std::runtime_error("no registry of the test's own");
    SetPersonal(Path().c_str());
}

DocumentsFolder::~DocumentsFolder()
{
    RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
    RegDeleteTreeW(HKEY_CURRENT_USER, registryPath_.c_str());
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
    for (const auto& entry : std::filesystem::directory_iterator(folder_.Path())) {
        if (!entry.is_directory())
            names.push_back(entry.path().filename().wstring());
    }
    std::sort(names.begin(), names.end());
    return names;
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
