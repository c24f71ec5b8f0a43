#include "admin/cabinet.h"

#include "phonebook/file/file_replacement.h"

#include <windows.h>

#include <setupapi.h>

namespace qx::admin {

namespace {

struct Walk {
    const std::wstring* wanted = nullptr; // null: only look
    const std::wstring* target = nullptr;
    std::vector<std::wstring> names{};
};

UINT CALLBACK OnCabinet(PVOID context, UINT notification, UINT_PTR first, UINT_PTR) noexcept
{
    auto& walk = *static_cast<Walk*>(context);
    if (notification == SPFILENOTIFY_NEEDNEWCABINET)
        return ERROR_FILE_NOT_FOUND; // help comes in one cabinet
    if (notification != SPFILENOTIFY_FILEINCABINET)
        return NO_ERROR;
    auto& file = *reinterpret_cast<FILE_IN_CABINET_INFO_W*>(first);
    try {
        walk.names.emplace_back(file.NameInCabinet);
    } catch (const std::exception&) {
        return FILEOP_ABORT;
    }
    if (walk.wanted == nullptr ||
        CompareStringOrdinal(file.NameInCabinet, -1, walk.wanted->c_str(), -1, TRUE) != CSTR_EQUAL)
        return FILEOP_SKIP;
    lstrcpynW(file.FullTargetName, walk.target->c_str(), MAX_PATH);
    return FILEOP_DOIT;
}

} // namespace

std::optional<std::vector<std::wstring>> FilesInCabinet(const std::wstring& cabinet)
{
    Walk walk;
    if (!SetupIterateCabinetW(cabinet.c_str(), 0, OnCabinet, &walk))
        return std::nullopt;
    return walk.names;
}

std::optional<std::string> FileFromCabinet(const std::wstring& cabinet, const std::wstring& name)
{
    wchar_t folder[MAX_PATH + 1] = L"";
    wchar_t target[MAX_PATH + 1] = L"";
    const DWORD units = GetTempPathW(MAX_PATH, folder);
    if (units == 0 || units > MAX_PATH || GetTempFileNameW(folder, L"qxa", 0, target) == 0)
        return std::nullopt;
    const std::wstring path = target;
    DeleteFileW(target); // the name is ours; the file is the cabinet's to make
    Walk walk{.wanted = &name, .target = &path};
    SetupIterateCabinetW(cabinet.c_str(), 0, OnCabinet, &walk);
    std::string bytes;
    const bool read = ReadWholeFile(path, bytes) == ERROR_SUCCESS;
    DeleteFileW(target);
    return read ? std::optional(std::move(bytes)) : std::nullopt;
}

} // namespace qx::admin
