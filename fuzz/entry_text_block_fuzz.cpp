// Registry values that should hold an entry's three texts.
#include "phonebook/recent/entry_text_block.h"

#include "fuzz.h"

using namespace qx;
using fuzz::Check;

namespace {

void CheckView(std::wstring_view text, const std::wstring& block)
{
    Check(text.find(L'\0') == std::wstring_view::npos);
    Check(text.data() >= block.data() && text.data() + text.size() <= block.data() + block.size());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::wstring block = fuzz::Utf16(data, size);
    const EntryTexts texts = ReadEntryBlock(block);
    for (const std::wstring_view text : {texts.name, texts.faxNumber, texts.company})
        CheckView(text, block);
    const std::wstring made = MakeEntryBlock(texts);
    Check(made.starts_with(block.substr(0, made.size())) || block.starts_with(made));
    const EntryTexts again = ReadEntryBlock(made);
    Check(again.name == texts.name && again.faxNumber == texts.faxNumber && again.company == texts.company);
    return 0;
}
