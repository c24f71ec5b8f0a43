#include "support/fax_job_page_stand.h"

#include <stdexcept>

namespace qx::test {

FaxJobPageStand::FaxJobPageStand()
    : sheet_(CreateWindowExW(WS_EX_CONTROLPARENT, WC_DIALOG, L"Sheet", WS_OVERLAPPEDWINDOW, 40, 40, 560, 560, nullptr,
                             nullptr, ModuleInstance(), nullptr))
{
    MakeRoomForRecipients(Job()); // as the session does
    page_.job = &Job();
    page_.book = &Book();
    page_.recent = &recent_;
    page_.sheet = this;
}

FaxJobPageStand::~FaxJobPageStand()
{
    DestroyWindow(sheet_);
}

void FaxJobPageStand::AddRecentEntry(const wchar_t* name, const wchar_t* faxNumber, const wchar_t* company)
{
    recent_.AddRecent(book_.NewEntry({name, faxNumber, company}), &Book());
}

void FaxJobPageStand::AddRecentGroup(const wchar_t* name, int members)
{
    recent_.AddRecent(book_.NewGroup(name, members), &Book());
}

void FaxJobPageStand::Show()
{
    ShowWindow(sheet_, SW_SHOW);
    PROPSHEETPAGEW description{};
    description.dwSize = sizeof description;
    description.lParam = reinterpret_cast<LPARAM>(&page_);
    const ActivationScope context;
    const HWND dialog = CreateDialogParamW(ModuleInstance(), MAKEINTRESOURCEW(kFaxJobPage.ids.Id()), sheet_,
                                           PageProcedure<kFaxJobPage>, reinterpret_cast<LPARAM>(&description));
    if (dialog == nullptr)
        throw std::runtime_error("the page cannot be created");
    EnableWindow(dialog, TRUE);
    ShowWindow(dialog, SW_SHOW);
    Notify(static_cast<UINT>(PSN_SETACTIVE));
    SetFocus(page_.fields.nameBox.edit);
}

void FaxJobPageStand::SetText(int id, const std::wstring& text)
{
    const HWND edit = id == IDC_NAME_BOX ? page_.fields.nameBox.edit : Control(id);
    PasteInto(edit, text);
}

void FaxJobPageStand::TypeName(const std::wstring& text)
{
    for (const wchar_t character : text)
        SendMessageW(page_.fields.nameBox.edit, WM_CHAR, character, 1);
}

void FaxJobPageStand::Compose(const std::wstring& text)
{
    SendMessageW(page_.fields.nameBox.edit, WM_IME_STARTCOMPOSITION, 0, 0);
    TypeName(text);
}

void FaxJobPageStand::EndComposition()
{
    SendMessageW(page_.fields.nameBox.edit, WM_IME_ENDCOMPOSITION, 0, 0);
}

void FaxJobPageStand::Press(int id)
{
    if (IsEnabled(id))
        SendMessageW(Control(id), BM_CLICK, 0, 0);
}

void FaxJobPageStand::PickName(int row)
{
    SendMessageW(page_.fields.nameBox.list, LB_SETCURSEL, static_cast<WPARAM>(row), 0);
    SendMessageW(page_.dialog, WM_COMMAND, MAKEWPARAM(IDC_NAME_BOX, CBN_SELCHANGE),
                 reinterpret_cast<LPARAM>(page_.fields.nameBox.combo));
}

void FaxJobPageStand::DropNames(bool open)
{
    if (open != NamesShown())
        ClickArrowOf(page_.fields.nameBox.combo);
}

void FaxJobPageStand::SelectRows(const std::vector<int>& rows)
{
    const HWND list = Control(IDC_RECIPIENTS);
    ListView_SetItemState(list, -1, 0, LVIS_SELECTED);
    for (const int row : rows)
        ListView_SetItemState(list, row, LVIS_SELECTED, LVIS_SELECTED);
}

void FaxJobPageStand::PressListKey(WPARAM key)
{
    SendMessageW(Control(IDC_RECIPIENTS), WM_KEYDOWN, key, 1);
}

LRESULT FaxJobPageStand::Notify(UINT code)
{
    PSHNOTIFY notification{};
    notification.hdr.hwndFrom = sheet_;
    notification.hdr.code = code;
    SendMessageW(page_.dialog, WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&notification));
    return GetWindowLongPtrW(page_.dialog, DWLP_MSGRESULT);
}

bool FaxJobPageStand::Send()
{
    const bool accepted = Notify(static_cast<UINT>(PSN_APPLY)) == PSNRET_NOERROR;
    round_.Ask(SendRound::kSetup);
    if (!otherPageRefuses_ && round_.Accept(SendRound::kSetup))
        SendJob();
    return accepted;
}

void FaxJobPageStand::SendJob() noexcept
{
    if (const PhoneBookEntry* const typed = SaveFaxJobPage(page_))
        RememberRecent(page_, *typed);
}

std::wstring FaxJobPageStand::Text(int id) const
{
    return WindowText(Control(id));
}

bool FaxJobPageStand::IsVisible(int id) const
{
    return (GetWindowLongPtrW(Control(id), GWL_STYLE) & WS_VISIBLE) != 0;
}

std::vector<std::wstring> FaxJobPageStand::Names() const
{
    std::vector<std::wstring> names;
    for (LRESULT row = 0; row < SendMessageW(page_.fields.nameBox.list, LB_GETCOUNT, 0, 0); ++row) {
        wchar_t text[300] = L"";
        SendMessageW(page_.fields.nameBox.list, LB_GETTEXT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(text));
        names.push_back(text);
    }
    return names;
}

std::wstring FaxJobPageStand::SelectedTail() const
{
    DWORD from = 0, to = 0;
    SendMessageW(page_.fields.nameBox.edit, EM_GETSEL, reinterpret_cast<WPARAM>(&from), reinterpret_cast<LPARAM>(&to));
    return Text(IDC_NAME_BOX).substr(from, to - from);
}

} // namespace qx::test
