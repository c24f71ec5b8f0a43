// Ids in the phone book file.
#include "phonebook/book/item_id.h"

#include "fuzz.h"

using namespace qx;
using fuzz::Check;

namespace {

// The rule taken literally, for texts that are ASCII.
std::int64_t NumberAtStart(const std::wstring& text)
{
    std::size_t at = text.find_first_not_of(L" \t\n\v\f\r");
    if (at == std::wstring::npos)
        return 0;
    const bool negative = text[at] == L'-';
    if (negative || text[at] == L'+')
        ++at;
    std::int64_t number = 0;
    for (; at < text.size() && L'0' <= text[at] && text[at] <= L'9'; ++at)
        number = std::min<std::int64_t>(number * 10 + (text[at] - L'0'), std::int64_t{1} << 40);
    number = negative ? -number : number;
    return std::clamp<std::int64_t>(number, INT32_MIN, INT32_MAX);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::wstring text;
    for (std::size_t i = 0; i < size && data[i] != 0; ++i)
        text += static_cast<wchar_t>(data[i] & 0x7F);
    text = text.c_str();
    const std::uint32_t id = ParseId(text.c_str());
    Check(id == static_cast<std::uint32_t>(NumberAtStart(text)));
    Check(ParseId(FormatId(id).c_str()) == id);
    ParseId(fuzz::Utf16(data, size).c_str()); // anything at all
    return 0;
}
