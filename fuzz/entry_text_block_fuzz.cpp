// Registry values that should hold an entry's three texts.
#include "phonebook/recent/entry_text_block.h"

#include "fuzz.h"

using namespace qx;
using fuzz::Check;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::wstring block = fuzz::Utf16(data, size);
    const Recipient texts = ReadEntryBlock(block);
    for (const std::wstring* const text : {&texts.name, &texts.faxNumber, &texts.company})
        Check(text->find(L'\0') == std::wstring::npos && block.find(*text) != std::wstring::npos);
    const std::wstring made = MakeEntryBlock(texts);
    Check(made.starts_with(block.substr(0, made.size())) || block.starts_with(made));
    Check(ReadEntryBlock(made) == texts);
    return 0;
}
