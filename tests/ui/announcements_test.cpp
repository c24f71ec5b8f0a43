// What is said to those who do not see the dialogs, beyond what the system finds out by itself.
#include "base/activation_context.h"
#include "phonebook/ui/edit_phone_book_dialog.h"
#include "res/edit_phone_book_ids.h"
#include "support/fax_job_page_stand.h"
#include "support/phone_book.h"
#include "support/screen_reader.h"

#include <gtest/gtest.h>

namespace qx::test {
namespace {

using Service = ScreenReader::Service;
using Texts = std::vector<std::wstring>;

// ---- the Fax Job page

class AnnouncedPage : public ::testing::Test {
protected:
    AnnouncedPage()
    {
        stand.Page().hStringDll = GetModuleHandleW(nullptr); // has some texts
        stand.AddRecentEntry(L"Bob", L"2");
        stand.AddRecentGroup(L"Sales", 1);
        stand.AddRecentGroup(L"Team", 3);
    }
    void Listen() { ScreenReader::Meet(stand.Page().dialog); }
    void Pick(const std::wstring& name)
    {
        stand.DropNames(true);
        const std::vector<std::wstring> names = stand.Names();
        stand.PickName(static_cast<int>(std::ranges::find(names, name) - names.begin()));
    }

    FaxJobPageStand stand;
};

TEST_F(AnnouncedPage, CostsNothingAsLongAsNobodyListens)
{
    const ScreenReader reader;
    stand.Show();
    Pick(L"Team");
    EXPECT_EQ(reader.Created(), 0);
    EXPECT_EQ(reader.NamedElements(), 0u);
}

TEST_F(AnnouncedPage, TheRequiredFieldIsAnnouncedAsRequired)
{
    const ScreenReader reader;
    stand.Show();
    Listen();
    EXPECT_EQ(reader.NameOf(stand.Control(IDC_FAX_NUMBER)), L"Fax Number: (required)");
    EXPECT_EQ(reader.References(), 0);
}

TEST_F(AnnouncedPage, TheListIsAnnouncedByItsLabel)
{
    const ScreenReader reader;
    stand.Show();
    Listen();
    EXPECT_EQ(reader.NameOf(stand.Control(IDC_RECIPIENTS)), L"Fax Recipients:");
}

TEST_F(AnnouncedPage, TheMemberCountOfAPickedGroupIsSaidWhenItAppears)
{
    const ScreenReader reader;
    stand.Show();
    Listen();
    EXPECT_EQ(reader.Said(), Texts());
    Pick(L"Team");
    EXPECT_EQ(reader.Said(), Texts{L"members: 3"});
    EXPECT_EQ(reader.NameOf(stand.Control(IDC_GROUP_TEXT)), L"members: 3");
    stand.Notify(static_cast<UINT>(PSN_SETACTIVE)); // refreshes what stands there
    EXPECT_EQ(reader.Said().size(), 1u);
    Pick(L"Sales");
    EXPECT_EQ(reader.Said(), (Texts{L"members: 3", L"member: 1"}));
    Pick(L"Bob");
    EXPECT_EQ(reader.Said().size(), 2u);
    Pick(L"Sales");
    EXPECT_EQ(reader.Said(), (Texts{L"members: 3", L"member: 1", L"member: 1"})); // it has appeared again
}

TEST_F(AnnouncedPage, WhoBeginsToListenLaterHearsOfTheGroupThatStandsThere)
{
    const ScreenReader reader;
    stand.Show();
    Pick(L"Team");
    Listen();
    EXPECT_EQ(reader.NameOf(stand.Control(IDC_GROUP_TEXT)), L"members: 3");
}

TEST_F(AnnouncedPage, NothingIsLeftBehind)
{
    const ScreenReader reader;
    stand.Show();
    Listen();
    Pick(L"Team");
    EXPECT_GT(reader.NamedElements(), 0u);
    DestroyWindow(stand.Page().dialog);
    EXPECT_EQ(reader.NamedElements(), 0u);
    EXPECT_EQ(reader.References(), 0);
}

TEST_F(AnnouncedPage, WithoutTheServiceItWorksInSilence)
{
    for (const Service service : {Service::Missing, Service::Refuses}) {
        const ScreenReader reader(service);
        FaxJobPageStand silent;
        silent.Page().hStringDll = GetModuleHandleW(nullptr);
        silent.AddRecentGroup(L"Team", 3);
        silent.Show();
        ScreenReader::Meet(silent.Page().dialog);
        silent.DropNames(true);
        silent.PickName(0);
        EXPECT_EQ(silent.Text(IDC_GROUP_TEXT), L"members: 3");
        silent.Press(IDC_TO);
        EXPECT_EQ(silent.Rows().size(), 3u);
        EXPECT_EQ(reader.Said(), Texts());
        EXPECT_EQ(reader.NamedElements(), 0u);
        EXPECT_EQ(reader.References(), 0);
    }
}

// ---- rows

class AnnouncedRows : public ::testing::Test {
protected:
    ~AnnouncedRows() override { DestroyWindow(dialog); }

    void Show()
    {
        dialog = CreateDialogParamW(ModuleInstance(), MAKEINTRESOURCEW(kEditPhoneBookDialog.ids.Id()), nullptr,
                                    DialogProcedure<kEditPhoneBookDialog>, reinterpret_cast<LPARAM>(&editor));
        ASSERT_NE(dialog, nullptr);
        ShowWindow(dialog, SW_SHOW);
        ScreenReader::Meet(dialog);
    }
    HWND List() const { return GetDlgItem(dialog, IDC_BOOK_LIST); }
    // The notification that Windows documents for it.
    void Scroll(int toRow) const
    {
        ListView_EnsureVisible(List(), toRow, FALSE);
        NMLVSCROLL scrolled{};
        scrolled.hdr = {List(), IDC_BOOK_LIST, static_cast<UINT>(LVN_ENDSCROLL)};
        SendMessageW(dialog, WM_NOTIFY, IDC_BOOK_LIST, reinterpret_cast<LPARAM>(&scrolled));
    }
    // The names of rows that are announced by more than they show.
    std::vector<std::wstring> Announced() const
    {
        std::vector<std::wstring> names;
        for (int row = 0; row < ListView_GetItemCount(List()); ++row) {
            if (const std::wstring name = reader.NameOf(List(), row); !name.empty())
                names.push_back(name);
        }
        return names;
    }

    const ActivationScope context;
    ScreenReader reader;
    TestBook book;
    EditPhoneBookContext editor{TextOwner{GetModuleHandleW(nullptr), L""}, *book};
    HWND dialog = nullptr;
};

TEST_F(AnnouncedRows, AGroupIsAnnouncedAsOneAndAnEntryByItsName)
{
    book.AddEntry(L"Ann", L"1", L"", 7);
    book.AddGroup(L"Sales", {7}, 9);
    book.AddGroup(L"Team", {7, 8}, 10);
    Show();
    EXPECT_EQ(reader.NameOf(List(), 0), L"");
    EXPECT_EQ(reader.NameOf(List(), 1), L"Sales, member: 1");
    EXPECT_EQ(reader.NameOf(List(), 2), L"Team, members: 2");
    EXPECT_EQ(reader.NameOf(List()), L"-Phone Book");
}

TEST_F(AnnouncedRows, ARefillAnnouncesTheRowsAnew)
{
    book.AddEntry(L"Ann", L"1", L"", 7);
    book.AddGroup(L"Sales", {7}, 9);
    Show();
    ListView_SetItemState(List(), 1, LVIS_SELECTED, LVIS_SELECTED);
    book.AddGroup(L"Team", {7, 8}, 10);
    book->DeleteIds(std::vector<DWORD>{9});
    FillPhoneBookList(editor.list, *book, ListedItems::All);
    ListView_SetItemState(List(), 0, LVIS_FOCUSED, LVIS_FOCUSED);
    EXPECT_EQ(Announced(), Texts{L"Team, members: 2"});
}

// What the system keeps for each comes from a table that all programs share.
TEST_F(AnnouncedRows, OnlyRowsInSightAreAnnounced)
{
    for (DWORD id = 1; id <= 1000; ++id)
        book.AddGroup((L"Group " + std::to_wstring(1000 + id)).c_str(), {7}, id);
    Show();
    const std::size_t inSight = static_cast<std::size_t>(ListView_GetCountPerPage(List())) + 1;
    EXPECT_LE(Announced().size(), inSight);
    EXPECT_EQ(Announced().front(), L"Group 1001, member: 1");
    Scroll(999);
    EXPECT_LE(Announced().size(), inSight);
    EXPECT_EQ(Announced().back(), L"Group 2000, member: 1");
    EXPECT_EQ(reader.References(), 0);
}

TEST_F(AnnouncedRows, TheRowsThatATypedNameBringsIntoSightAreAnnounced)
{
    for (DWORD id = 1; id <= 1000; ++id)
        book.AddGroup((L"Group " + std::to_wstring(1000 + id)).c_str(), {7}, id);
    Show();
    SetDlgItemTextW(dialog, IDC_BOOK_TYPED, L"group 1501");
    EXPECT_EQ(Announced().front(), L"Group 1501, member: 1");
}

TEST_F(AnnouncedRows, TheRowThatTheKeysAreAtIsAnnouncedWhereverItIs)
{
    for (DWORD id = 1; id <= 100; ++id)
        book.AddGroup((L"Group " + std::to_wstring(100 + id)).c_str(), {7}, id);
    Show();
    ListView_SetItemState(List(), 90, LVIS_FOCUSED, LVIS_FOCUSED);
    EXPECT_EQ(reader.NameOf(List(), 90), L"Group 191, member: 1");
}

TEST_F(AnnouncedRows, NothingIsLeftBehind)
{
    book.AddGroup(L"Sales", {7}, 9);
    Show();
    EXPECT_EQ(reader.NamedElements(), 2u);
    DestroyWindow(dialog);
    EXPECT_EQ(reader.NamedElements(), 0u);
}

} // namespace
} // namespace qx::test
