// A send session with a phone book, for tests of the phone book dialogs.
//
//     PhoneBookSession session(BookText().Entry(1, L"Ann", L"555").Group(2, L"Sales", {1}));
//     host::UiDriver& ui = session.OpenPicker();
#pragma once

#include "support/send_fax_session.h"

#include <string>
#include <tuple>
#include <vector>

namespace qx::test {

// The text of a phone book file, item by item.
class BookText {
public:
    BookText& Entry(DWORD id, std::wstring_view name, std::wstring_view faxNumber, std::wstring_view company = L"");
    BookText& Group(DWORD id, std::wstring_view name, const std::vector<DWORD>& members);
    // Entries "Person 00000", "Person 00001" and so on, with that number as fax number and id.
    BookText& People(DWORD count);
    std::string Text() const;

private:
    std::string items_;
};

// An item of a phone book file.
struct SavedItem {
    std::wstring name, faxNumber, company;
    std::vector<DWORD> members; // of a group
    DWORD id = 0;               // not compared: the file's own affair
    bool operator==(const SavedItem& other) const
    {
        return std::tie(name, faxNumber, company, members) ==
               std::tie(other.name, other.faxNumber, other.company, other.members);
    }
};

// What a phone book file holds, in its order.
std::vector<SavedItem> SavedIn(const std::filesystem::path& file);

class PhoneBookSession : public SendFaxSession {
public:
    explicit PhoneBookSession(const BookText& book, SessionOptions options = {});

    // Start the session and lead there; to be called once.
    host::UiDriver& OpenFaxJobPage();
    host::UiDriver& OpenPicker();
    host::UiDriver& OpenEditor(); // by way of the Setup page

    std::vector<SavedItem> SavedBook() const { return SavedIn(PhoneBookFile()); }
    SavedItem Saved(std::wstring_view name) const; // an empty one when there is none of that name
    std::vector<std::wstring> SavedNames() const;
};

// ---- what a user does in the picker,

void Pick(host::UiDriver& ui, const std::vector<int>& rows);

// in the editor,

void AddEntry(host::UiDriver& ui, std::wstring_view name, std::wstring_view faxNumber);
void EditRow(host::UiDriver& ui, int row);
void DeleteRows(host::UiDriver& ui, const std::vector<int>& rows); // and is sure of it
// Maps so many of the file's first columns as they come: name, fax number, company.
void ImportFile(host::UiDriver& ui, const std::filesystem::path& csv, int columns = 3);
void ExportFile(host::UiDriver& ui, const std::filesystem::path& csv);

// in the dialogs of an entry and of a group.

void TypeEntry(host::UiDriver& ui, std::wstring_view name, std::wstring_view faxNumber);
void AddMembers(host::UiDriver& ui, const std::vector<int>& rows);
void OkAndSave(host::UiDriver& ui); // with the OK of the editor

// ---- what there is

// The names in the first column.
std::vector<std::wstring> NamesIn(host::UiDriver& ui, int list);

// The first row in view.
int TopRow(host::UiDriver& ui, int list);

std::vector<int> RowsUpTo(int count);

} // namespace qx::test
