#include "support/text_library.h"

#include <stdexcept>

namespace qx::test {

TextBlock BlockWithText(LANGID language, unsigned id, const std::wstring& text)
{
    std::wstring content(id % 16, L'\0');
    content += static_cast<wchar_t>(text.size());
    content += text;
    content.append(15 - id % 16, L'\0');
    return {language, static_cast<WORD>(id / 16 + 1), content};
}

void WriteTextLibrary(const std::wstring& path, const std::wstring& pattern, const std::vector<TextBlock>& blocks)
{
    if (!CopyFileW(pattern.c_str(), path.c_str(), FALSE))
        throw std::runtime_error("the pattern library cannot be copied");
    SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    const HANDLE update = BeginUpdateResourceW(path.c_str(), TRUE);
    if (update == nullptr)
        throw std::runtime_error("the library's resources cannot be changed");
    bool written = true;
    for (const TextBlock& block : blocks) {
        written = UpdateResourceW(update, RT_STRING, MAKEINTRESOURCEW(block.block), block.language,
                                  const_cast<wchar_t*>(block.content.data()),
                                  static_cast<DWORD>(block.content.size() * sizeof(wchar_t))) &&
                  written;
    }
    if (!EndUpdateResourceW(update, FALSE) || !written)
        throw std::runtime_error("the library's resources cannot be written");
}

} // namespace qx::test
