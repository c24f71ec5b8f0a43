#include "support/phone_book_session.h"

#include "host/utf8.h"
#include "phonebook/file/phone_book_file.h"
#include "res/add_recipients_ids.h"
#include "res/edit_phone_book_ids.h"
#include "res/entry_ids.h"
#include "res/fax_job_page_ids.h"
#include "res/group_ids.h"
#include "res/map_custom_fields_ids.h"
#include "res/setup_page_ids.h"

#include <commctrl.h>
#include <numeric>

namespace qx::test {

namespace {

std::string Quoted(std::wstring_view text)
{
    return "\"" + host::Utf8(host::XmlEscaped(text)) + "\"";
}

} // namespace

BookText& BookText::Entry(DWORD id, std::wstring_view name, std::wstring_view faxNumber, std::wstring_view company)
{
    items_ += "<qxfax_pbentry entry_id=\"" + std::to_string(id) + "\" name=" + Quoted(name) +
              " fax_number=" + Quoted(faxNumber) + " company_name=" + Quoted(company) + "/>";
    return *this;
}

BookText& BookText::Group(DWORD id, std::wstring_view name, const std::vector<DWORD>& members)
{
    items_ += "<qxfax_group group_name=" + Quoted(name) + " entry_id=\"" + std::to_string(id) + "\"><member_list>";
    for (const DWORD member : members)
        items_ += "<m_entry_id>" + std::to_string(member) + "</m_entry_id>";
    items_ += "</member_list></qxfax_group>";
    return *this;
}

BookText& BookText::People(DWORD count)
{
    for (DWORD id = 0; id < count; ++id) {
        std::wstring number = std::to_wstring(id);
        number.insert(0, 5 - number.size(), L'0');
        Entry(id, L"Person " + number, number, L"Company");
    }
    return *this;
}

std::string BookText::Text() const
{
    return "<device><software><component><name>QX Fax Address Book</name><qxfax_phonebook>" + items_ +
           "</qxfax_phonebook></component></software></device>";
}

std::vector<SavedItem> SavedIn(const std::filesystem::path& file)
{
    ItemStore store;
    std::vector<SavedItem> saved;
    for (const PhoneBookItem* const item : LoadPhoneBookFile(file.wstring(), store).items) {
        SavedItem& copy = saved.emplace_back();
        copy.name = item->GetName();
        copy.id = item->GetId();
        if (const PhoneBookGroup* const group = AsGroup(item)) {
            copy.members.assign(group->MemberIds().begin(), group->MemberIds().end());
        } else {
            copy.faxNumber = AsEntry(item)->FaxNumber();
            copy.company = AsEntry(item)->Company();
        }
    }
    return saved;
}

PhoneBookSession::PhoneBookSession(const BookText& book, SessionOptions options) : SendFaxSession(std::move(options))
{
    WritePhoneBook(book.Text());
    SetDefault(L"ApplyDefaults", 1u); // the sheet opens on the Fax Job page
}

host::UiDriver& PhoneBookSession::OpenFaxJobPage()
{
    Start();
    Ui().WaitForControl(IDC_NAME_BOX);
    return Ui();
}

host::UiDriver& PhoneBookSession::OpenPicker()
{
    OpenFaxJobPage().Press(IDC_PHONE_BOOK);
    return Ui();
}

host::UiDriver& PhoneBookSession::OpenEditor()
{
    OpenFaxJobPage().GoToPage(1);
    Ui().Press(IDC_EDIT_PHONE_BOOK);
    return Ui();
}

std::vector<std::wstring> PhoneBookSession::SavedNames() const
{
    std::vector<std::wstring> names;
    for (const SavedItem& item : SavedBook())
        names.push_back(item.name);
    return names;
}

SavedItem PhoneBookSession::Saved(std::wstring_view name) const
{
    for (const SavedItem& item : SavedBook()) {
        if (item.name == name)
            return item;
    }
    return {};
}

// ---- the user

void Pick(host::UiDriver& ui, const std::vector<int>& rows)
{
    ui.SelectRows(IDC_PICK_LIST, rows);
    ui.Press(IDC_PICK_TO);
}

void AddEntry(host::UiDriver& ui, std::wstring_view name, std::wstring_view faxNumber)
{
    ui.Press(IDC_BOOK_ADD_ENTRY);
    TypeEntry(ui, name, faxNumber);
    ui.Press(IDOK);
}

void EditRow(host::UiDriver& ui, int row)
{
    ui.SelectRows(IDC_BOOK_LIST, {row});
    ui.Press(IDC_BOOK_EDIT);
}

void DeleteRows(host::UiDriver& ui, const std::vector<int>& rows)
{
    ui.SelectRows(IDC_BOOK_LIST, rows);
    ui.Press(IDC_BOOK_DELETE);
    ui.AnswerBox(IDOK);
}

void ImportFile(host::UiDriver& ui, const std::filesystem::path& csv, int columns)
{
    ui.Press(IDC_BOOK_IMPORT);
    ui.AnswerFileDialog(csv);
    ui.WaitForControl(IDC_MAP);
    for (int column = 0; column < columns; ++column) {
        ui.SelectRows(IDC_MAP_SOURCE_FIELDS, {column});
        ui.SelectRows(IDC_MAP_DESTINATIONS, {column});
        ui.Press(IDC_MAP);
    }
    ui.Press(IDOK);
}

void ExportFile(host::UiDriver& ui, const std::filesystem::path& csv)
{
    ui.Press(IDC_BOOK_EXPORT);
    ui.AnswerFileDialog(csv);
}

void TypeEntry(host::UiDriver& ui, std::wstring_view name, std::wstring_view faxNumber)
{
    ui.Type(IDC_ENTRY_NAME, name);
    ui.Type(IDC_ENTRY_FAX_NUMBER, faxNumber);
}

void AddMembers(host::UiDriver& ui, const std::vector<int>& rows)
{
    ui.SelectRows(IDC_GROUP_ENTRIES, rows);
    ui.Press(IDC_GROUP_ADD);
}

void OkAndSave(host::UiDriver& ui)
{
    ui.Press(IDOK);
    ui.Press(IDOK);
}

// ---- what there is

std::vector<std::wstring> NamesIn(host::UiDriver& ui, int list)
{
    std::vector<std::wstring> names;
    for (int row = 0; row < ui.RowCount(list); ++row)
        names.push_back(ui.CellText(list, row, 0));
    return names;
}

int TopRow(host::UiDriver& ui, int list)
{
    return static_cast<int>(SendMessageW(ui.Control(list), LVM_GETTOPINDEX, 0, 0));
}

std::vector<int> RowsUpTo(int count)
{
    std::vector<int> rows(static_cast<std::size_t>(count));
    std::iota(rows.begin(), rows.end(), 0);
    return rows;
}

} // namespace qx::test
