#include "settings/key_set.h"

#include "base/limits.h"
#include "base/lock.h"
#include "base/printer.h"
#include "base/text.h"
#include "base/unique.h"
#include "settings/names.h"
#include "settings/registry.h"

#include <cstddef>
#include <utility>

namespace qx {

namespace {

static_assert(offsetof(RegistryKeySet, hMruListKey) == offsetof(FaxJobData, hMruListKey));
static_assert(offsetof(RegistryKeySet, PrinterHandle) == offsetof(FaxJobData, PrinterHandle));

// Leaves key alone when it cannot be opened.
bool CreateKey(HKEY parent, const std::wstring& path, HKEY& key) noexcept
{
    HKEY created = nullptr;
    if (RegCreateKeyExW(parent, path.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS, nullptr, &created,
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

// Of this process, one per running session.
Lock g_keptLock;
KeptSubtreeName* g_kept = nullptr;

// The name follows the vendor's directly, as it stands.
std::optional<std::wstring> SubtreePath(HANDLE printer, const std::wstring& below)
{
    const auto guid = RestrictedUserGuid(printer);
    if (!guid)
        return std::nullopt;
    return std::wstring(Cut(kVendorRoot + *guid + below, kPathLimit));
}

} // namespace

RegistryKeySet& KeySetOf(FaxJobData& record) noexcept
{
    return reinterpret_cast<RegistryKeySet&>(record);
}

std::optional<std::wstring> RestrictedUserGuid(HANDLE printer)
{
    const auto keeper = [printer] {
        KeptSubtreeName* kept = g_kept;
        while (kept != nullptr && kept->printer_ != printer)
            kept = kept->next_;
        return kept;
    };
    {
        const Locked locked(g_keptLock);
        if (const KeptSubtreeName* const kept = keeper(); kept != nullptr && kept->name_)
            return kept->name_;
    }
    std::optional<std::wstring> name =
        ReadPrinterText(printer, kPresetData, kRestrictedUserGuidValue, kPrinterTextUnits);
    const Locked locked(g_keptLock);
    if (KeptSubtreeName* const kept = keeper(); kept != nullptr && name)
        kept->name_ = name;
    return name;
}

KeptSubtreeName::KeptSubtreeName(HANDLE printer) noexcept : printer_(printer)
{
    const Locked locked(g_keptLock);
    next_ = std::exchange(g_kept, this);
}

KeptSubtreeName::~KeptSubtreeName()
{
    const Locked locked(g_keptLock);
    KeptSubtreeName** link = &g_kept;
    while (*link != this)
        link = &(*link)->next_;
    *link = next_;
}

void OpenKeys(RegistryKeySet& set)
{
    const auto path = SubtreePath(set.PrinterHandle, L"");
    if (!path)
        return;
    CloseKey(set.hAddressBookKey);
    CloseKey(set.hDefaultKey);
    // Kept: the other two are released without being closed. Reopening a set leaves its earlier job data and recent
    // list handles open, and whoever holds a copy of them goes on with it.
    UniqueKey root;
    if (!CreateKey(HKEY_CURRENT_USER, *path, *root.Receive()))
        return;
    CreateKey(root.Get(), kAddressBookKey, set.hAddressBookKey);
    CreateKey(root.Get(), kDefaultsKey, set.hDefaultKey);
    CreateKey(root.Get(), kJobDataKey, set.hJobDataKey);
    CreateKey(root.Get(), kRecentListKey, set.hMruListKey);
}

bool OpenDeviceStateKey(RegistryKeySet& set)
{
    const auto path = SubtreePath(set.PrinterHandle, std::wstring(L"\\") + kDeviceStateKey);
    if (!path)
        return false;
    CloseKey(set.hBidiInfoKey);
    HKEY opened = nullptr;
    const LSTATUS status = RegOpenKeyExW(HKEY_CURRENT_USER, path->c_str(), 0, KEY_ALL_ACCESS, &opened);
    if (status == ERROR_SUCCESS)
        set.hBidiInfoKey = opened;
    return IsAnswer(status);
}

void CloseKeys(RegistryKeySet& set) noexcept
{
    CloseKey(set.hDefaultKey);
    CloseKey(set.hAddressBookKey);
    CloseKey(set.hJobDataKey);
    CloseKey(set.hBidiInfoKey);
    CloseKey(set.hMruListKey);
}

} // namespace qx
