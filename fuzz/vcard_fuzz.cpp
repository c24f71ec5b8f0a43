// Cards of any bytes.
#include "admin/contacts/vcard.h"

#include "fuzz.h"

#include <algorithm>

namespace {

using namespace qx::admin;
using qx::fuzz::Check;

// Takes all bytes but one, so that both outcomes occur.
std::optional<std::wstring> Decode(std::string_view bytes, unsigned)
{
    if (bytes.find('\x81') != std::string_view::npos)
        return std::nullopt;
    std::wstring text;
    for (const char c : bytes)
        text += static_cast<wchar_t>(static_cast<unsigned char>(c));
    return text;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const std::size_t lines =
        1 + static_cast<std::size_t>(std::ranges::count_if(bytes, [](char c) { return c == '\n' || c == '\r'; }));
    for (const unsigned codePage : {0u, 1252u}) {
        const ContactFile file = ReadVCards(bytes, codePage, Decode);
        Check(file.problem.empty() == (file.people != 0));
        Check(file.withoutNumber + file.unusable.size() <= file.people);
        for (const Contact& contact : file.contacts) {
            Check(!contact.name.empty() && !contact.faxNumber.empty() && contact.line >= 1);
            Check(contact.name.find_first_of(L"\r\n") == std::wstring::npos);
            Check(Utf8OfUtf16File(bytes) || contact.line <= lines);
        }
        for (const Unusable& unusable : file.unusable)
            Check(!unusable.why.empty() && unusable.line >= 1);
    }
    LooksLikeVCards(bytes);
    return 0;
}
