// In the dialogs of the phone book.
#include "res/add_recipients_ids.h"
#include "res/edit_phone_book_ids.h"
#include "res/entry_ids.h"
#include "res/group_ids.h"
#include "res/map_custom_fields_ids.h"
#include "sheet_user.h"
#include "support/temporary_folder.h"
#include "verbs.h"

#include <algorithm>
#include <commctrl.h>
#include <utility>

namespace qx::test {

namespace {

constexpr std::size_t kMostRows = kMaxRecipients; // of a job, and members of a group

using CsvRows = std::vector<std::vector<std::wstring>>;

template <int edit> void TypeAhead(SheetUser& user)
{
    SendMessageW(user.Control(edit), WM_CHAR, user.OneOf(kKeys.substr(0, 10)), 1);
}

template <int list, int most> void SelectRows(SheetUser& user)
{
    user.SelectSome(list, most);
}

template <int edit, const auto& texts> void Fill(SheetUser& user)
{
    user.Replace(edit, user.OneOf(texts));
}

// ---- the picker -----------------------------------------------------------------------------------------------------

void PickTo(SheetUser& user)
{
    const std::vector<DWORD> ids = user.SelectedIds(IDC_PICK_LIST);
    const Offer offer = user.OfferOf({});
    user.Press(IDC_PICK_TO);
    bool tooMany = false;
    for (const DWORD id : ids) {
        const BookItem& item = *user.memory.Find(id);
        tooMany = user.chosen.size() + (item.isGroup ? item.members.size() : 1) > kMostRows;
        if (tooMany)
            break;
        const std::vector<Recipient> members = user.memory.MembersOf(item.members);
        if (item.isGroup)
            user.chosen.insert(user.chosen.end(), members.begin(), members.end());
        else
            user.chosen.push_back(item.texts);
        user.Use({item.texts, item.isGroup, members});
    }
    Expect(tooMany == user.WasAnswered(offer), "whether the chosen ones find room");
    ExpectEqual(user.RowsOf(IDC_PICK_CHOSEN), user.chosen, "the chosen recipients");
}

void PickDelete(SheetUser& user)
{
    const std::vector<int> selected = user.SelectedRows(IDC_PICK_CHOSEN);
    user.Press(IDC_PICK_DELETE);
    for (auto row = selected.rbegin(); row != selected.rend(); ++row)
        user.chosen.erase(user.chosen.begin() + *row);
    ExpectEqual(user.RowsOf(IDC_PICK_CHOSEN), user.chosen, "the chosen recipients");
}

void AcceptPicked(SheetUser& user)
{
    user.rows = user.chosen;
    user.TakeReloaded();
    user.Press(IDOK);
    ExpectEqual(RecipientsIn(user.record), user.rows, "the picked recipients");
}

constexpr Verb kPicker[] = {
    {"rows", 40, SelectRows<IDC_PICK_LIST, 6>},
    {"to", 30, PickTo},
    {"chosen-rows", 20, SelectRows<IDC_PICK_CHOSEN, 12>},
    {"delete", 16, PickDelete},
    {"type", 20, TypeAhead<IDC_PICK_TYPED>},
    {"details", 4, Press<IDC_PICK_DETAILS>},
    {"edit-phone-book", 3, Press<IDC_PICK_EDIT_BOOK>},
    {"ok", 6, AcceptPicked},
    {"cancel", 3, Cancel},
    {"somebody-saves", 3, SomebodySaves},
    {"look", 1, Look},
};

// ---- the editor -----------------------------------------------------------------------------------------------------

void SelectRow(SheetUser& user)
{
    const int count = ListView_GetItemCount(user.Control(IDC_BOOK_LIST));
    if (count > 0)
        user.SelectRows(IDC_BOOK_LIST, {user.Pick(count)});
}

template <int button, bool group> void Add(SheetUser& user)
{
    user.before = {.isGroup = group};
    user.members.clear();
    if (user.memory.items.size() < kMostItems)
        user.Press(button);
}

void Edit(SheetUser& user)
{
    const std::vector<DWORD> ids = user.SelectedIds(IDC_BOOK_LIST);
    if (ids.size() != 1)
        return;
    user.before = *user.memory.Find(ids[0]);
    user.members = user.before.members;
    user.Press(IDC_BOOK_EDIT);
}

void Delete(SheetUser& user)
{
    const std::vector<DWORD> ids = user.SelectedIds(IDC_BOOK_LIST);
    user.Press(IDC_BOOK_DELETE);
    if (user.agreed)
        user.memory.Delete(ids);
}

void AcceptBook(SheetUser& user)
{
    user.Press(IDOK);
    user.TakeSaved();
}

// ---- import and export ----------------------------------------------------------------------------------------------

const std::wstring kCsvColumns[] = {L"Who", L"Where", L"Firm"};
const CsvRows kCsvFiles[] = {
    {{L"Carl", L"901", L"Mill"}, {L"Dora, Dr.", L"902", L""}, {L"Anna", L"111", L"again"}},
    {{L"Emil", L"+1", L"bad number"},
     {L"", L"903", L"nobody"},
     {L"Fay \"F\"", L"904", L""},
     {L"fay \"f\"", L"904", L""}},
};

std::wstring Quoted(const std::wstring& text)
{
    std::wstring quoted = L"\"";
    for (const wchar_t c : text)
        quoted += c == L'"' ? std::wstring(L"\"\"") : std::wstring(1, c);
    return quoted + L'"';
}

std::wstring CsvLine(const std::wstring& name, const std::wstring& faxNumber, const std::wstring& company)
{
    return Quoted(name) + L',' + Quoted(faxNumber) + L',' + Quoted(company) + L"\r\n";
}

void Import(SheetUser& user)
{
    const CsvRows& rows = user.OneOf(kCsvFiles);
    std::wstring text = CsvLine(kCsvColumns[0], kCsvColumns[1], kCsvColumns[2]);
    for (const std::vector<std::wstring>& row : rows)
        text += CsvLine(row[0], row[1], row[2]);
    user.fileToChoose = user.around.folder / L"import.csv";
    WriteBytes(user.fileToChoose, kUtf16Mark + Utf16Bytes(text));
    user.columns.reset();
    user.Press(IDC_BOOK_IMPORT);
    if (user.columns)
        user.memory.Import(rows, *user.columns);
}

// In the book's order, which the list shows.
void Export(SheetUser& user)
{
    std::wstring expected = CsvLine(L"Name", L"Fax Number", L"Company Name");
    const HWND list = user.Control(IDC_BOOK_LIST);
    for (int row = 0; row < ListView_GetItemCount(list); ++row) {
        const BookItem& item = *user.memory.Find(IdOfRow(list, row));
        if (!item.isGroup)
            expected += CsvLine(item.texts.name, item.texts.faxNumber, item.texts.company);
    }
    user.fileToChoose = user.around.folder / L"export.csv";
    DeleteFileW(user.fileToChoose.c_str());
    user.fileChosen = false;
    user.Press(IDC_BOOK_EXPORT);
    if (user.fileChosen)
        Expect(ReadBytes(user.fileToChoose) == kUtf16Mark + Utf16Bytes(expected), "the exported file");
}

void ChooseFile(SheetUser& user)
{
    user.fileChosen = true;
    user.ChooseFile(user.fileToChoose);
}

void MapRows(SheetUser& user)
{
    for (const int list : {IDC_MAP_SOURCE_FIELDS, IDC_MAP_DESTINATIONS})
        user.SelectRows(list, {user.Pick(3)});
}

void AcceptMap(SheetUser& user)
{
    std::vector<int> columns;
    for (int row = 0; row < 3; ++row) {
        const auto found = std::ranges::find(kCsvColumns, CellText(user.Control(IDC_MAP_DESTINATIONS), row, 1));
        columns.push_back(found != std::end(kCsvColumns) ? static_cast<int>(found - kCsvColumns) : -1);
    }
    Expect(user.IsEnabled(IDOK) == (columns[0] >= 0 && columns[1] >= 0), "whether the columns can be taken");
    user.Press(IDOK);
    user.columns = columns;
}

constexpr Verb kEditor[] = {
    {"row", 30, SelectRow},
    {"rows", 15, SelectRows<IDC_BOOK_LIST, 4>},
    {"type", 20, TypeAhead<IDC_BOOK_TYPED>},
    {"add-entry", 12, Add<IDC_BOOK_ADD_ENTRY, false>},
    {"add-group", 8, Add<IDC_BOOK_ADD_GROUP, true>},
    {"edit", 20, Edit},
    {"details", 3, Press<IDC_BOOK_DETAILS>},
    {"delete", 6, Delete},
    {"import", 1, Import},
    {"export", 1, Export},
    {"ok", 8, AcceptBook},
    {"cancel", 3, Cancel},
    {"somebody-saves", 3, SomebodySaves},
    {"somebody-saves-unnoticed", 1, SomebodySavesUnnoticed},
    {"look", 1, Look},
};

constexpr Verb kFile[] = {{"choose", 5, ChooseFile}, {"cancel", 1, Cancel}};

constexpr Verb kMap[] = {
    {"rows", 20, MapRows},
    {"map", 15, Press<IDC_MAP>},
    {"ok", 8, AcceptMap},
    {"cancel", 1, Cancel},
};

// ---- an entry, a group, their details -------------------------------------------------------------------------------

void AcceptEntry(SheetUser& user)
{
    BookItem edited = user.before;
    const std::wstring company = user.Text(IDC_ENTRY_COMPANY);
    edited.texts = {user.Text(IDC_ENTRY_NAME), user.Text(IDC_ENTRY_FAX_NUMBER), company.empty() ? L" " : company};
    const bool complete = !edited.texts.name.empty() && !edited.texts.faxNumber.empty();
    Expect(user.IsEnabled(IDOK) == complete, "whether an entry can be taken");
    user.FinishEditing(edited);
}

void CheckMembers(const SheetUser& user)
{
    ExpectEqual(user.RowsOf(IDC_GROUP_MEMBERS), user.memory.MembersOf(user.members), "the members");
}

void AddMembers(SheetUser& user)
{
    const std::vector<DWORD> ids = user.SelectedIds(IDC_GROUP_ENTRIES);
    user.Press(IDC_GROUP_ADD);
    for (const DWORD id : ids) {
        const bool isMember = std::ranges::find(user.members, id) != user.members.end();
        if (user.memory.Find(id) != nullptr && !isMember && user.members.size() < kMostRows)
            user.members.push_back(id);
    }
    CheckMembers(user);
}

void DeleteMembers(SheetUser& user)
{
    const std::vector<DWORD> ids = user.SelectedIds(IDC_GROUP_MEMBERS);
    user.Press(IDC_GROUP_DELETE);
    for (const DWORD id : ids) {
        const auto member = std::ranges::find(user.members, id);
        if (user.memory.Find(id) != nullptr && member != user.members.end())
            user.members.erase(member);
    }
    CheckMembers(user);
}

void AcceptGroup(SheetUser& user)
{
    BookItem edited = user.before;
    edited.texts.name = user.Text(IDC_GROUP_NAME);
    edited.members = user.members;
    // Members that somebody else has deleted go from the list with the next change, and leave the button on.
    const bool complete = !edited.texts.name.empty() && ListView_GetItemCount(user.Control(IDC_GROUP_MEMBERS)) > 0;
    Expect(user.IsEnabled(IDOK) || !complete, "a group cannot be taken");
    user.FinishEditing(edited);
}

constexpr Verb kEntry[] = {
    {"name", 30, Fill<IDC_ENTRY_NAME, kNewNames>},
    {"number", 30, Fill<IDC_ENTRY_FAX_NUMBER, kNumbers>},
    {"company", 15, Fill<IDC_ENTRY_COMPANY, kCompanies>},
    {"ok", 20, AcceptEntry},
    {"cancel", 4, Cancel},
    {"somebody-saves", 2, SomebodySaves},
};

constexpr Verb kGroup[] = {
    {"name", 20, Fill<IDC_GROUP_NAME, kNewNames>},
    {"rows", 30, SelectRows<IDC_GROUP_ENTRIES, 6>},
    {"add", 25, AddMembers},
    {"member-rows", 15, SelectRows<IDC_GROUP_MEMBERS, 4>},
    {"delete", 10, DeleteMembers},
    {"details", 1, Press<IDC_GROUP_DETAILS>},
    {"ok", 15, AcceptGroup},
    {"cancel", 3, Cancel},
    {"somebody-saves", 2, SomebodySaves},
};

constexpr Verb kDetails[] = {{"close", 1, Press<IDOK>}};

} // namespace

const std::span<const Verb> kPickerVerbs = kPicker;
const std::span<const Verb> kEditorVerbs = kEditor;
const std::span<const Verb> kEntryVerbs = kEntry;
const std::span<const Verb> kGroupVerbs = kGroup;
const std::span<const Verb> kDetailsVerbs = kDetails;
const std::span<const Verb> kMapVerbs = kMap;
const std::span<const Verb> kFileVerbs = kFile;

} // namespace qx::test
