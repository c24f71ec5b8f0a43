// Phone books for tests: items made in one line, and a book that ends with its test.
#pragma once

#include "phonebook/book/phone_book.h"
#include "phonebook/file/phone_book_file.h"

#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

namespace qx::test {

struct DestroyBook {
    void operator()(PhoneBook* book) const noexcept { book->Destroy(); }
};

// A book with the store of its items. Without a printer: its file has the default name.
struct TestBook {
    ItemStore store;
    std::unique_ptr<PhoneBook, DestroyBook> owned{new PhoneBook(store, PhoneBookFiles())};

    PhoneBook& operator*() const { return *owned; }
    PhoneBook* operator->() const { return owned.get(); }

    // Null texts stay as a new entry has them: never set.
    PhoneBookEntry* AddEntry(const wchar_t* name, const wchar_t* faxNumber, const wchar_t* company, DWORD id)
    {
        PhoneBookEntry* const entry = store.NewEntry();
        if (name != nullptr)
            entry->SetName(name);
        if (faxNumber != nullptr)
            entry->SetFaxNumber(faxNumber);
        if (company != nullptr)
            entry->SetCompany(company);
        entry->SetId(id);
        owned->Add(entry);
        return entry;
    }

    PhoneBookGroup* AddGroup(const wchar_t* name, std::initializer_list<DWORD> memberIds, DWORD id)
    {
        PhoneBookGroup* const group = store.NewGroup();
        if (name != nullptr)
            group->SetName(name);
        for (const DWORD member : memberIds)
            group->AddMemberId(member);
        group->SetId(id);
        owned->Add(group);
        return group;
    }

    // Not in the book: for the list of recent recipients.
    PhoneBookEntry* NewEntry(const Recipient& texts)
    {
        PhoneBookEntry* const entry = store.NewEntry();
        entry->SetTexts(texts);
        return entry;
    }
    // Its members are copies of its own: "name 1" with the number 9001, "name 2" with 9002, and so on.
    PhoneBookGroup* NewGroup(const std::wstring& name, int members)
    {
        PhoneBookGroup* const group = store.NewGroup();
        group->SetName(name.c_str());
        for (int i = 1; i <= members; ++i) {
            const std::wstring number = std::to_wstring(i);
            group->AddMember(MakeRecipient({name + L" " + number, L"900" + number, L""}).release());
        }
        return group;
    }

    std::vector<std::wstring> Names() const
    {
        std::vector<std::wstring> names;
        for (const PhoneBookItem* const item : owned->Items())
            names.emplace_back(item->GetName());
        return names;
    }
};

inline std::vector<DWORD> MemberIdsOf(const PhoneBookGroup& group)
{
    return {group.MemberIds().begin(), group.MemberIds().end()};
}

} // namespace qx::test
