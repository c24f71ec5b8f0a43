#include "phonebook/recent/registry_entry.h"

#include "base/text.h"
#include "phonebook/recent/entry_text_block.h"
#include "settings/registry.h"

#include <string>

namespace qx {

bool ReadRegistryEntry(HKEY key, const wchar_t* valueName, PhoneBookEntry& entry)
{
    std::wstring block;
    if (!ReadString(key, valueName, block))
        return false;
    const EntryTexts texts = ReadEntryBlock(block);
    entry.SetName(std::wstring(texts.name).c_str());
    entry.SetFaxNumber(std::wstring(texts.faxNumber).c_str());
    entry.SetCompany(std::wstring(texts.company).c_str());
    return true;
}

void WriteRegistryEntry(HKEY key, const wchar_t* valueName, const PhoneBookEntry& entry)
{
    const std::wstring block =
        MakeEntryBlock({OrEmpty(entry.Name()), OrEmpty(entry.FaxNumber()), OrEmpty(entry.Company())});
    WriteString(key, valueName, block.c_str(), REG_MULTI_SZ);
}

} // namespace qx
