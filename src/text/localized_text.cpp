#include "text/localized_text.h"

#include "base/activation_context.h"
#include "base/printer.h"
#include "text/text_block.h"

#include <atomic>

namespace qx {

namespace {

constexpr Text kErrorTitle{5326, L"QX MFP Send Fax Error"};
constexpr Text kWarningTitle{5327, L"QX MFP Send Fax Warning"};
constexpr wchar_t kStringLibraryName[] = L"QXTEXT64.DLL";

std::atomic<LANGID> g_language = kEnglishUnitedStates; // of the process; sessions on other threads look and write, too

HRSRC FindTextBlock(HMODULE library, unsigned id, LANGID language) noexcept
{
    const WORD block = static_cast<WORD>(id / kTextsPerBlock + 1);
    return FindResourceExW(library, RT_STRING, MAKEINTRESOURCEW(block), language);
}

// One walk through the languages of a library. What the walk itself answers when a callback ends it differs between
// systems: only found tells.
struct LanguageSearch {
    const LANGID wanted; // by its primary language
    LANGID chosen;       // 1033 once there was a language, and none matched
    bool found = false;
};

BOOL CALLBACK TryLanguage(HMODULE, LPCWSTR, LPCWSTR, WORD language, LONG_PTR context) noexcept
{
    auto& search = *reinterpret_cast<LanguageSearch*>(context);
    search.found = PRIMARYLANGID(language) == PRIMARYLANGID(search.wanted);
    search.chosen = search.found ? language : kEnglishUnitedStates;
    return !search.found;
}

BOOL CALLBACK TryName(HMODULE library, LPCWSTR type, LPWSTR name, LONG_PTR context) noexcept
{
    EnumResourceLanguagesW(library, type, name, TryLanguage, context);
    return !reinterpret_cast<const LanguageSearch*>(context)->found;
}

bool IsStringType(LPCWSTR type) noexcept
{
    return type == RT_STRING || (!IS_INTRESOURCE(type) && lstrcmpW(type, L"RT_STRING") == 0);
}

BOOL CALLBACK TryType(HMODULE library, LPWSTR type, LONG_PTR context) noexcept
{
    if (IsStringType(type))
        EnumResourceNamesW(library, type, TryName, context);
    return !reinterpret_cast<const LanguageSearch*>(context)->found;
}

// The language of the library to look up texts in when it has none in wanted.
LANGID NextBestLanguage(HMODULE library, LANGID wanted) noexcept
{
    LanguageSearch search{.wanted = wanted, .chosen = wanted};
    EnumResourceTypesW(library, TryType, reinterpret_cast<LONG_PTR>(&search));
    return search.chosen;
}

HRSRC FindTextBlockInAnyLanguage(HMODULE library, unsigned id) noexcept
{
    const LANGID wanted = g_language;
    const HRSRC found = FindTextBlock(library, id, wanted);
    if (found != nullptr || GetLastError() != ERROR_RESOURCE_LANG_NOT_FOUND)
        return found;
    const LANGID nextBest = NextBestLanguage(library, wanted);
    g_language = nextBest; // once: a half-done search is nothing for other threads to see
    return FindTextBlock(library, id, nextBest);
}

} // namespace

TextOwner::TextOwner() noexcept
{
    g_language = GetUserDefaultUILanguage();
}

TextOwner::TextOwner(HMODULE strings, const wchar_t* helpFilePath) noexcept : TextOwner()
{
    hStringDll = strings;
    CopyText(HelpFilePath, OrEmpty(helpFilePath));
}

std::wstring StringLibraryPath(const PrinterDriver& driver)
{
    return driver.FileBeside(kStringLibraryName);
}

LANGID CurrentTextLanguage() noexcept
{
    return g_language;
}

bool LoadLocalizedString(const TextOwner& owner, unsigned id, wchar_t (&buffer)[kTextUnits]) noexcept
{
    buffer[0] = L'\0';
    if (owner.hStringDll == nullptr || id == kPreparedText)
        return false;
    const HRSRC resource = FindTextBlockInAnyLanguage(owner.hStringDll, id);
    if (resource == nullptr)
        return false;
    const auto* const data = static_cast<const wchar_t*>(LockResource(LoadResource(owner.hStringDll, resource)));
    if (data == nullptr)
        return false;
    const std::size_t units = SizeofResource(owner.hStringDll, resource) / sizeof(wchar_t);
    const std::wstring_view text = Cut(TextInBlock({data, units}, id % kTextsPerBlock), kTextUnits - 1);
    text.copy(buffer, text.size());
    buffer[text.size()] = L'\0';
    return !text.empty();
}

std::wstring LocalizedText(const TextOwner& owner, const Text& text)
{
    wchar_t buffer[kTextUnits];
    if (LoadLocalizedString(owner, text.id, buffer))
        return buffer;
    return std::wstring(Cut(OrEmpty(text.fallback), kTextUnits - 1));
}

void SetLocalizedText(const TextOwner& owner, unsigned id, HWND window, const wchar_t* defaultText)
{
    SetWindowTextW(window, LocalizedText(owner, {id, defaultText}).c_str());
}

UINT ReadingOrder(std::wstring_view text) noexcept
{
    for (const wchar_t unit : text) {
        WORD direction = 0;
        GetStringTypeW(CT_CTYPE2, &unit, 1, &direction);
        if (direction == C2_RIGHTTOLEFT)
            return MB_RTLREADING | MB_RIGHT;
        if (direction == C2_LEFTTORIGHT)
            return 0;
    }
    return 0;
}

int ShowFaxMessage(const TextOwner& owner, unsigned id, const wchar_t* defaultText, UINT style, bool isError,
                   HWND ownerWindow)
{
    const std::wstring title = LocalizedText(owner, isError ? kErrorTitle : kWarningTitle);
    const std::wstring body = LocalizedText(owner, {id, defaultText});
    const ActivationScope context;
    return MessageBoxW(ownerWindow, body.c_str(), title.c_str(), style | ReadingOrder(body));
}

int ShowFaxMessage(const TextOwner& owner, const Message& message, HWND ownerWindow)
{
    return ShowFaxMessage(owner, message.text.id, message.text.fallback, message.style,
                          message.title == MessageTitle::Error, ownerWindow);
}

} // namespace qx
