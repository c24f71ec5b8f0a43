#include "phonebook/recent/entry_text_block.h"

#include <algorithm>

namespace qx {

namespace {

// Takes the text up to the next terminator off the front, and the terminator with it.
std::wstring_view TakeText(std::wstring_view& block) noexcept
{
    const std::wstring_view text = block.substr(0, block.find(L'\0'));
    block.remove_prefix(std::min(text.size() + 1, block.size()));
    return text;
}

} // namespace

Recipient ReadEntryBlock(std::wstring_view block)
{
    Recipient texts;
    texts.name = TakeText(block);
    texts.faxNumber = TakeText(block);
    texts.company = TakeText(block);
    return texts;
}

std::wstring MakeEntryBlock(const Recipient& texts)
{
    std::wstring block;
    for (const std::wstring* const text : {&texts.name, &texts.faxNumber, &texts.company})
        block.append(*text).push_back(L'\0');
    return block; // c_str() adds the one that ends the list
}

} // namespace qx
