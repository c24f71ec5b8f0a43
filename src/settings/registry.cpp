#include "settings/registry.h"

#include "base/text.h"
#include "base/unique.h"

#include <cstddef>

namespace qx {

namespace {

constexpr wchar_t kVendorRoot[] = L"Software\\Quillmarsh\\";
constexpr wchar_t kDeviceStateKey[] = L"\\QXBIDIInfo";
constexpr std::size_t kPathUnits = 260;
constexpr std::size_t kSpareUnits = 10;

static_assert(offsetof(RegistryKeySet, hMruListKey) == offsetof(FaxJobData, hMruListKey));
static_assert(offsetof(RegistryKeySet, PrinterHandle) == offsetof(FaxJobData, PrinterHandle));

// Leaves key alone when it cannot be opened.
bool CreateKey(HKEY parent, const wchar_t* path, HKEY& key) noexcept
{
    HKEY created = nullptr;
    if (RegCreateKeyExW(parent, path, 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS, nullptr, &created,
                        nullptr) != ERROR_SUCCESS)
        return false;
    key = created;
    return true;
}

void CloseKey(HKEY& key) noexcept
{
    if (key != nullptr)
        RegCloseKey(key);
    key = nullptr;
}

// The name follows the vendor's directly, as it stands.
void BuildSubtreePath(wchar_t (&path)[kPathUnits], const std::wstring& guid) noexcept
{
    CopyText(path, kVendorRoot);
    AppendText(path, guid.c_str());
}

std::size_t Units(const wchar_t* text) noexcept
{
    return std::char_traits<wchar_t>::length(text);
}

// Of a list of strings, up to and with its final terminator.
std::size_t ListUnits(const wchar_t* list) noexcept
{
    std::size_t units = 1;
    for (const wchar_t* text = list; *text != L'\0'; text += Units(text) + 1)
        units += Units(text) + 1;
    return units;
}

} // namespace

RegistryKeySet& KeySetOf(FaxJobData& record) noexcept
{
    return reinterpret_cast<RegistryKeySet&>(record);
}

std::optional<std::wstring> RestrictedUserGuid(HANDLE printer)
{
    wchar_t guid[kPathUnits + 1] = L""; // one unit more than is asked for: the value may lack its terminator
    DWORD type = 0;
    DWORD needed = 0;
    if (printer == nullptr ||
        GetPrinterDataExW(printer, L"QXPresetRoot", L"QXRestrictedUserGuid", &type, reinterpret_cast<BYTE*>(guid),
                          kPathUnits * sizeof(wchar_t), &needed) != ERROR_SUCCESS)
        return std::nullopt;
    return guid;
}

void OpenKeys(RegistryKeySet& set)
{
    const auto guid = RestrictedUserGuid(set.PrinterHandle);
    if (!guid)
        return;
    wchar_t path[kPathUnits];
    BuildSubtreePath(path, *guid);

    CloseKey(set.hAddressBookKey);
    CloseKey(set.hDefaultKey);
    // The other two are overwritten without being closed, on purpose: reopening a set leaves its earlier job data and
    // recent list handles open, and whoever holds a copy of them goes on with it.
    UniqueKey root;
    if (!CreateKey(HKEY_CURRENT_USER, path, *root.Receive()))
        return;
    CreateKey(root.Get(), L"QX-FAX\\Address Book", set.hAddressBookKey);
    CreateKey(root.Get(), L"QX-FAX\\Default", set.hDefaultKey);
    CreateKey(root.Get(), L"QX-FAX\\JobData", set.hJobDataKey);
    CreateKey(root.Get(), L"QX-FAX\\MRUList", set.hMruListKey);
}

void OpenDeviceStateKey(RegistryKeySet& set)
{
    const auto guid = RestrictedUserGuid(set.PrinterHandle);
    if (!guid)
        return;
    wchar_t path[kPathUnits];
    BuildSubtreePath(path, *guid);
    AppendText(path, kDeviceStateKey);
    CloseKey(set.hBidiInfoKey);
    HKEY opened = nullptr;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, path, 0, KEY_ALL_ACCESS, &opened) == ERROR_SUCCESS)
        set.hBidiInfoKey = opened;
}

void CloseKeys(RegistryKeySet& set) noexcept
{
    CloseKey(set.hDefaultKey);
    CloseKey(set.hAddressBookKey);
    CloseKey(set.hJobDataKey);
    CloseKey(set.hBidiInfoKey);
    CloseKey(set.hMruListKey);
}

bool ReadString(HKEY key, const wchar_t* name, std::wstring& out)
{
    DWORD bytes = 0;
    if (key == nullptr || RegQueryValueExW(key, name, nullptr, nullptr, nullptr, &bytes) != ERROR_SUCCESS)
        return false;
    // An odd byte at the end falls into the spare units and reads as part of no character of the text.
    std::wstring buffer(bytes / sizeof(wchar_t) + kSpareUnits, L'\0');
    if (RegQueryValueExW(key, name, nullptr, nullptr, reinterpret_cast<BYTE*>(buffer.data()), &bytes) != ERROR_SUCCESS)
        return false;
    if (bytes % sizeof(wchar_t) != 0)
        buffer[bytes / sizeof(wchar_t)] = L'\0';
    out = std::move(buffer);
    return true;
}

bool ReadDword(HKEY key, const wchar_t* name, DWORD& out) noexcept
{
    DWORD value = 0;
    DWORD bytes = sizeof value;
    if (key == nullptr ||
        RegQueryValueExW(key, name, nullptr, nullptr, reinterpret_cast<BYTE*>(&value), &bytes) != ERROR_SUCCESS)
        return false;
    out = value;
    return true;
}

DWORD ValueType(HKEY key, const wchar_t* name) noexcept
{
    DWORD type = REG_NONE;
    if (key == nullptr || RegQueryValueExW(key, name, nullptr, &type, nullptr, nullptr) != ERROR_SUCCESS)
        return REG_NONE;
    return type;
}

bool WriteString(HKEY key, const wchar_t* name, const wchar_t* text, DWORD type) noexcept
{
    if (type != REG_SZ && type != REG_MULTI_SZ)
        return true;
    if (key == nullptr)
        return false;
    const wchar_t* const stored = OrEmpty(text);
    const std::size_t units = type == REG_SZ ? Units(stored) + 1 : ListUnits(stored);
    return RegSetValueExW(key, name, 0, type, reinterpret_cast<const BYTE*>(stored),
                          static_cast<DWORD>(units * sizeof(wchar_t))) == ERROR_SUCCESS;
}

bool WriteDword(HKEY key, const wchar_t* name, DWORD value) noexcept
{
    return key != nullptr && RegSetValueExW(key, name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value),
                                            sizeof value) == ERROR_SUCCESS;
}

} // namespace qx
