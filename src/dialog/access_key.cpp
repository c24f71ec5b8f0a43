#include "dialog/access_key.h"

#include "dialog/dialog.h"

namespace qx {

namespace {

wchar_t UpperCase(wchar_t letter) noexcept
{
    CharUpperBuffW(&letter, 1);
    return letter;
}

// Behind the alphabets come the scripts that are typed through an input method.
bool IsTypedWithOneKey(wchar_t character) noexcept
{
    constexpr wchar_t kFirstOfTheOthers = 0x1100;
    return character < kFirstOfTheOthers && IsCharAlphaW(character);
}

bool IsFree(wchar_t character, std::wstring_view taken) noexcept
{
    return IsTypedWithOneKey(character) && taken.find(UpperCase(character)) == std::wstring_view::npos;
}

bool StartsWord(const std::wstring& text, std::size_t position) noexcept
{
    return position == 0 || !IsCharAlphaW(text[position - 1]);
}

std::size_t FindFreeLetter(const std::wstring& text, std::wstring_view taken, bool atWordStart) noexcept
{
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (IsFree(text[i], taken) && (!atWordStart || StartsWord(text, i)))
            return i;
    }
    return std::wstring::npos;
}

bool HasAccessKey(HWND control) noexcept
{
    const LRESULT code = SendMessageW(control, WM_GETDLGCODE, 0, 0);
    const bool takesPrefix = (GetWindowLongPtrW(control, GWL_STYLE) & SS_NOPREFIX) == 0;
    return (code & DLGC_BUTTON) != 0 || ((code & DLGC_STATIC) != 0 && takesPrefix);
}

} // namespace

wchar_t AccessKeyOf(std::wstring_view caption) noexcept
{
    for (std::size_t i = 0; i + 1 < caption.size(); ++i) {
        if (caption[i] != L'&')
            continue;
        ++i;
        if (caption[i] != L'&') // a doubled one is shown
            return UpperCase(caption[i]);
    }
    return 0;
}

std::wstring WithoutAccessKey(std::wstring_view caption)
{
    std::wstring text;
    for (std::size_t i = 0; i < caption.size(); ++i) {
        if (caption[i] == L'(' && i + 3 < caption.size() && caption[i + 1] == L'&' && caption[i + 3] == L')')
            i += 4; // "(&X)"
        else if (caption[i] == L'&' && i + 1 < caption.size())
            ++i;
        if (i < caption.size())
            text += caption[i];
    }
    return text;
}

std::wstring AccessKeysIn(HWND window)
{
    std::wstring keys;
    for (HWND child = GetWindow(window, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
        if (!HasAccessKey(child))
            continue;
        if (const wchar_t key = AccessKeyOf(WindowText(child)))
            keys += key;
    }
    return keys;
}

std::wstring WithAccessKey(const std::wstring& text, std::wstring_view taken)
{
    if (text.find(L'&') != std::wstring::npos)
        return text;
    for (const bool atWordStart : {true, false}) {
        const std::size_t letter = FindFreeLetter(text, taken, atWordStart);
        if (letter != std::wstring::npos)
            return std::wstring(text).insert(letter, 1, L'&');
    }
    for (wchar_t letter = L'A'; letter <= L'Z'; ++letter) {
        if (IsFree(letter, taken))
            return text + L"(&" + letter + L")";
    }
    return text;
}

} // namespace qx
