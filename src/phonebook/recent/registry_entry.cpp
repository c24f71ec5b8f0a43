#include "phonebook/recent/registry_entry.h"

#include "phonebook/recent/entry_text_block.h"
#include "settings/registry.h"

#include <iterator>

namespace qx {

std::optional<Recipient> ReadRegistryEntry(HKEY key, const wchar_t* valueName)
{
    std::wstring block;
    if (!ReadString(key, valueName, block))
        return std::nullopt;
    return ReadEntryBlock(block);
}

void WriteRegistryEntry(HKEY key, const wchar_t* valueName, const Recipient& texts)
{
    WriteString(key, valueName, MakeEntryBlock(texts).c_str(), REG_MULTI_SZ);
}

std::vector<std::wstring> ValueNames(HKEY key)
{
    std::vector<std::wstring> names;
    for (DWORD index = 0;; ++index) {
        wchar_t name[260];
        DWORD units = static_cast<DWORD>(std::size(name));
        const LSTATUS status = RegEnumValueW(key, index, name, &units, nullptr, nullptr, nullptr, nullptr);
        if (status == ERROR_SUCCESS)
            names.emplace_back(name);
        else if (status != ERROR_MORE_DATA)
            return names;
    }
}

} // namespace qx
