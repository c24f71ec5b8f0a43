// What the phone book's dialogs share.
#pragma once

#include "base/text_template.h"
#include "dialog/dialog.h"
#include "phonebook/book/items.h"
#include "phonebook/ui/phone_book_changed.h"

#include <memory>
#include <string>

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

struct DiscardFromStore {
    ItemStore* store = nullptr;
    void operator()(PhoneBookItem* item) const noexcept { store->Discard(item); }
};
// An item that a dialog has made for the phone book and that may still be given up: release() leaves it with its store,
// for the book to point at; otherwise it is discarded with its owner.
template <class Item> using MadeItem = std::unique_ptr<Item, DiscardFromStore>;

// In the phone book a single blank stands for a name or a company that the user left empty.
inline constexpr std::wstring_view kStandIn = L" ";
inline std::wstring ToStored(std::wstring typed)
{
    return typed.empty() ? std::wstring(kStandIn) : std::move(typed);
}
// What an edit field shows of a stored text, which may be null.
inline const wchar_t* ToShown(const wchar_t* stored) noexcept
{
    return OrEmpty(stored) == kStandIn ? L"" : OrEmpty(stored);
}

// A dialog's answer to the phone book's change message: kShow shows the book as it is now. FALSE for any other message.
template <auto kShow, class State> INT_PTR FollowPhoneBook(State& state, UINT message, WPARAM, LPARAM)
{
    if (message != PhoneBookChangedMessage())
        return FALSE;
    state.book.FollowChange(true);
    kShow(state);
    return TRUE;
}

// A text with a number in it, which some languages leave out. Empty when the string library lacks the text.
inline std::wstring CountText(const TextOwner& texts, unsigned text, int number)
{
    const std::wstring shown = LocalizedText(texts, {text});
    return FillTemplate(shown, {number}).value_or(FillTemplate(shown, {}).value_or(L""));
}

inline constexpr Message kTooManyRecipients{
    {5265, L"The maximum number of fax numbers has been entered."}, MB_OK | MB_ICONSTOP, MessageTitle::Error};
// Kept: the warning carries the icon of errors.
inline constexpr Message kPhoneBookFull{
    {6098, L"The maximum number of phone book entries has been entered."}, MB_OK | MB_ICONSTOP, MessageTitle::Warning};

} // namespace qx
