// Texts by id from the string library, with the built-in English text when the library lacks one, and the two kinds
// of message box made of them.
#pragma once

#include "base/limits.h"
#include "base/text.h"

#include <string>
#include <string_view>
#include <windows.h>

namespace qx {

class PrinterDriver;

// Common head of the session and of every dialog's state: where texts and help come from. Neither is owned.
struct TextOwner {
    // Records the user's default UI language as the current text language.
    TextOwner() noexcept;
    TextOwner(HMODULE strings, const wchar_t* helpFilePath) noexcept;

    HMODULE hStringDll = nullptr;           // resources only; null: every text is the built-in one
    wchar_t HelpFilePath[kTextUnits] = L""; // empty: no help
};

// The string library's file, beside the driver's; empty when the spooler does not say where that is.
std::wstring StringLibraryPath(const PrinterDriver& driver);

// A text: its id in the string library, and the built-in one, shown exactly as written. A leading dash of a built-in
// text stays: it marks, on screen, a text that did not come from the library.
struct Text {
    unsigned id = 0;
    const wchar_t* fallback = L"";
};

// Never resolves: the text that the caller has prepared as its fallback is shown.
inline constexpr unsigned kPreparedText = static_cast<unsigned>(-1);

inline constexpr LANGID kEnglishUnitedStates = 0x0409;

// The language in which texts are looked up, for the whole process: kEnglishUnitedStates until the first session.
LANGID CurrentTextLanguage() noexcept;

// False when the library has no such text, or an empty one. At most 255 units are given. May change the current text
// language: when the library lacks it, the language of the library with the same primary language is taken.
bool LoadLocalizedString(const TextOwner& owner, unsigned id, wchar_t (&buffer)[kTextUnits]) noexcept;

// The text or its built-in default, at most 255 units.
std::wstring LocalizedText(const TextOwner& owner, const Text& text);

void SetLocalizedText(const TextOwner& owner, unsigned id, HWND window, const wchar_t* defaultText);

enum class MessageTitle { Error, Warning };

// A message box: what it says, its buttons and icon (MB_...), and which of the two titles it carries.
struct Message {
    Text text;
    UINT style = MB_OK;
    MessageTitle title = MessageTitle::Error;
};

// How a message box with that text is laid out: the styles for right to left, or 0. The text decides, by its first
// letter, since a built-in text stays English whatever the user's language is.
UINT ReadingOrder(std::wstring_view text) noexcept;

// Answers what MessageBoxW answers.
int ShowFaxMessage(const TextOwner& owner, unsigned id, const wchar_t* defaultText, UINT style, bool isError,
                   HWND ownerWindow);
int ShowFaxMessage(const TextOwner& owner, const Message& message, HWND ownerWindow);

} // namespace qx
