// Documents before a parser sees them.
#include "phonebook/file/xml_prolog.h"

#include "fuzz.h"

#include <algorithm>

using namespace qx;
using fuzz::Check;

namespace {

std::string Wide(const std::string& text, bool lowByteFirst)
{
    std::string bytes(lowByteFirst ? "\xFF\xFE" : "\xFE\xFF");
    for (const char c : text)
        bytes += lowByteFirst ? std::string{c, '\0'} : std::string{'\0', c};
    return bytes;
}

bool IsAscii(char c)
{
    return 0 < c && c < 0x7F;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    const bool plain = HasPlainProlog(bytes);
    // The same text is judged the same in every encoding.
    if (std::all_of(bytes.begin(), bytes.end(), IsAscii)) {
        Check(HasPlainProlog(Wide(bytes, true)) == plain);
        Check(HasPlainProlog(Wide(bytes, false)) == plain);
        Check(HasPlainProlog("\xEF\xBB\xBF" + bytes) == plain);
        // What stands before the root element can be set before any document, but a declaration.
        if (!bytes.starts_with("<?xml"))
            Check(HasPlainProlog("<!-- <!DOCTYPE x> --> <?pi?>" + bytes) == plain);
    }
    Check(!HasPlainProlog("<!DOCTYPE x>" + bytes));
    // What follows the root element's start does not matter.
    if (plain)
        Check(HasPlainProlog(bytes + "<!DOCTYPE x>"));
    return 0;
}
