#include "support/text_rules.h"

#include <cwctype>

namespace qx::test {

namespace {

bool RemoveSuffix(std::wstring& text, std::wstring_view suffix)
{
    if (!text.ends_with(suffix))
        return false;
    text.resize(text.size() - suffix.size());
    return true;
}

} // namespace

std::string Placeholders(std::wstring_view text)
{
    std::string kinds;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != L'%')
            continue;
        const wchar_t kind = ++i < text.size() ? text[i] : L'\0';
        if (kind == L'd' || kind == L's')
            kinds += static_cast<char>(kind);
        else if (kind != L'%')
            kinds += '?';
    }
    return kinds;
}

wchar_t Mnemonic(std::wstring_view caption)
{
    for (std::size_t i = 0; i + 1 < caption.size(); ++i) {
        if (caption[i] != L'&')
            continue;
        if (caption[++i] != L'&')
            return static_cast<wchar_t>(std::towupper(caption[i]));
    }
    return 0;
}

std::vector<std::string> MnemonicClashes(const std::vector<Caption>& captions)
{
    std::vector<std::string> clashes;
    std::map<wchar_t, std::string> users;
    for (const Caption& caption : captions) {
        const wchar_t letter = Mnemonic(caption.text);
        if (letter == 0)
            continue;
        const auto [user, isNew] = users.try_emplace(letter, caption.name);
        if (!isNew)
            clashes.push_back(user->second + " and " + caption.name + " share a letter");
    }
    return clashes;
}

std::wstring Wording(std::wstring_view text)
{
    if (text.starts_with(L'-'))
        text.remove_prefix(1);
    std::wstring wording;
    for (const wchar_t unit : text) {
        if (unit != L' ')
            wording += unit;
    }
    if (!RemoveSuffix(wording, L"..."))
        RemoveSuffix(wording, L":");
    return wording;
}

} // namespace qx::test
