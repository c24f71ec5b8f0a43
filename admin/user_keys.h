// The user's registry of a printer, looked at without creating anything.
#pragma once

#include "admin/command.h"
#include "settings/key_set.h"
#include "settings/registry.h"

namespace qx::admin {

// The path below HKEY_CURRENT_USER of a key in the printer's subtree; with an empty key the subtree itself.
std::wstring UserKeyPath(const std::wstring& guid, const std::wstring& key);
// Empty when it is not there. Read-only.
UniqueKey OpenUserKey(const std::wstring& guid, const wchar_t* key);

// The GUID in the printer's data. Throws Refusal when there is none: what the user's settings hang on is missing.
std::wstring GuidOrRefuse(HANDLE printer, const std::wstring& name);

} // namespace qx::admin
