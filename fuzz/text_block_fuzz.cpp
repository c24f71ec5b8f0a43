// A block of the string library's texts.
#include "text/text_block.h"

#include "fuzz.h"

#include <memory>

using namespace qx;
using fuzz::Check;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    // In a buffer of exactly its size, so that a look behind its end is seen.
    const std::wstring text = fuzz::Utf16(data, size);
    const std::unique_ptr<wchar_t[]> exact(new wchar_t[text.size()]);
    text.copy(exact.get(), text.size());
    const std::wstring_view block(exact.get(), text.size());

    std::size_t read = 0;
    for (std::size_t position = 0; position < kTextsPerBlock; ++position) {
        const std::wstring_view found = TextInBlock(block, position);
        // Each lies in the block, behind the one before it and its own length.
        if (!found.empty()) {
            const auto at = static_cast<std::size_t>(found.data() - block.data());
            Check(at > read || (position == 0 && at == 1));
            Check(at + found.size() <= block.size());
            Check(found.size() <= static_cast<std::size_t>(block[at - 1]));
            read = at + found.size() - 1;
        }
    }
    Check(TextInBlock(block, block.size() + 1).empty());
    return 0;
}
