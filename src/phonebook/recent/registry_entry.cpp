#include "phonebook/recent/registry_entry.h"

#include "phonebook/recent/entry_text_block.h"
#include "settings/registry.h"

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

} // namespace qx
