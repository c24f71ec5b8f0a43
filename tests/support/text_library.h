// String libraries made for a test: which languages, which texts, and blocks that no resource compiler would write.
#pragma once

#include <string>
#include <vector>
#include <windows.h>

namespace qx::test {

struct TextBlock {
    LANGID language;
    WORD block;           // of 16 texts: id / 16 + 1
    std::wstring content; // the block's units as they stand in the resource
};

// A block of 16 length-prefixed texts with one text in it.
TextBlock BlockWithText(LANGID language, unsigned id, const std::wstring& text);

// Writes a copy of the module pattern (any DLL), with these string blocks instead of its own resources, to path.
void WriteTextLibrary(const std::wstring& path, const std::wstring& pattern, const std::vector<TextBlock>& blocks);

} // namespace qx::test
