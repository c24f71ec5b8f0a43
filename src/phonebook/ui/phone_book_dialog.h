// What the phone book's dialogs start from.
#pragma once

#include "dialog/dialog.h"

namespace qx {

class PhoneBook;

// Common head of their states.
struct PhoneBookDialog : TextOwner {
    PhoneBookDialog(const TextOwner& texts, PhoneBook& phoneBook) noexcept
        : TextOwner(texts.hStringDll, texts.HelpFilePath), book(phoneBook)
    {
    }

    PhoneBook& book;
    HWND dialog = nullptr;
};

inline constexpr Message kTooManyRecipients{
    {5265, L"The maximum number of fax numbers has been entered."}, MB_OK | MB_ICONSTOP, MessageTitle::Error};
// Kept: the warning carries the icon of errors.
inline constexpr Message kPhoneBookFull{
    {6098, L"The maximum number of phone book entries has been entered."}, MB_OK | MB_ICONSTOP, MessageTitle::Warning};

} // namespace qx
