#include "admin/user_keys.h"

#include "settings/names.h"

namespace qx::admin {

std::wstring UserKeyPath(const std::wstring& guid, const std::wstring& key)
{
    std::wstring path = kVendorRoot + guid;
    if (!key.empty())
        path += L'\\' + key;
    return path;
}

UniqueKey OpenUserKey(const std::wstring& guid, const wchar_t* key)
{
    UniqueKey opened;
    RegOpenKeyExW(HKEY_CURRENT_USER, UserKeyPath(guid, key).c_str(), 0, KEY_READ, opened.Receive());
    return opened;
}

std::wstring GuidOrRefuse(HANDLE printer, const std::wstring& name)
{
    const std::optional<std::wstring> guid = RestrictedUserGuid(printer);
    if (!guid)
        throw Refusal("the printer " + Quoted(name) + " has no " + Utf8(kRestrictedUserGuidValue) +
                      ", so nothing can be kept for its users; set one with \"configure --guid\"");
    return *guid;
}

} // namespace qx::admin
