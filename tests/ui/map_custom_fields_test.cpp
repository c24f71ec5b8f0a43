#include "phonebook/ui/map_custom_fields_dialog.h"

#include "base/unique.h"
#include "res/map_custom_fields_ids.h"
#include "support/built.h"
#include "support/dialog_thread.h"

#include <commctrl.h>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>

namespace qx {
namespace {

using Mapping = std::vector<FieldMapping>;

constexpr int kName = kMappedName;
constexpr int kFaxNumber = kMappedFaxNumber;
constexpr int kCompany = kMappedCompany;

class MapCustomFields : public testing::Test {
protected:
    void Open(std::vector<std::optional<std::wstring>> headers, bool rightToLeft = false)
    {
        context_.fileName = L"C:\\R&D\\friends.csv";
        context_.headers = std::move(headers);
        conversation_.emplace(
            [this, rightToLeft] { answer_ = ShowModal<kMapCustomFieldsDialog>(nullptr, context_, rightToLeft); });
        Ui().WaitForControl(IDC_MAP);
    }

    host::UiDriver& Ui() { return conversation_->Ui(); }

    void UseTextLibrary()
    {
        library_.Reset(LoadLibraryExW((test::BuiltFolder() / L"QXTEXT64.DLL").c_str(), nullptr,
                                      LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE));
        ASSERT_TRUE(library_);
        context_.hStringDll = library_.Get();
    }

    // Never empty, so that a text that the library lacks is not taken for one that nobody set.
    std::wstring LibraryText(unsigned id) { return LocalizedText(context_, {id, L"missing"}); }

    void Map(int sourceRow, int destination)
    {
        Ui().SelectRows(IDC_MAP_SOURCE_FIELDS, {sourceRow});
        Ui().SelectRows(IDC_MAP_DESTINATIONS, {destination});
        Ui().Press(IDC_MAP);
    }

    // What stands beside name, fax number and company.
    std::vector<std::wstring> Mapped()
    {
        std::vector<std::wstring> texts;
        for (int row = 0; row < kMappedFieldCount; ++row)
            texts.push_back(Ui().CellText(IDC_MAP_DESTINATIONS, row, 1));
        return texts;
    }

    INT_PTR End(int button)
    {
        Ui().Press(button);
        conversation_->End();
        return answer_;
    }

    // Of OK.
    Mapping AcceptedMapping()
    {
        EXPECT_EQ(End(IDOK), IDOK);
        return context_.mapping;
    }

    UniqueModule library_;
    MapCustomFieldsContext context_;
    INT_PTR answer_ = -1;
    std::optional<test::DialogThread> conversation_;
};

using Texts = std::vector<std::wstring>;

TEST_F(MapCustomFields, OpensWithNothingMappedAndOnlyCancelToPress)
{
    Open({L"Who", L"Fax"});
    EXPECT_EQ(Ui().Title(), L"-Map Custom Fields");
    EXPECT_EQ(Ui().Text(IDC_MAP_FILE_NAME), L"C:\\R&D\\friends.csv");
    EXPECT_FALSE(Ui().IsEnabled(IDC_MAP));
    EXPECT_FALSE(Ui().IsEnabled(IDOK));
    EXPECT_TRUE(Ui().IsEnabled(IDCANCEL));
    EXPECT_EQ(Ui().RowCount(IDC_MAP_DESTINATIONS), 3);
    EXPECT_EQ(Mapped(), (Texts{L"", L"", L""}));
    EXPECT_EQ(Ui().FocusedControl(), IDC_MAP_SOURCE_FIELDS);
}

TEST_F(MapCustomFields, EveryCaptionHasItsBuiltInText)
{
    Open({L"Who"});
    for (const Control& control : kMapCustomFieldsDialog.controls) {
        if (control.text != 0) {
            EXPECT_EQ(Ui().Text(control.id), control.fallback) << control.id;
        }
    }
}

TEST_F(MapCustomFields, EveryTextIsTheLibrarysOwn)
{
    ASSERT_NO_FATAL_FAILURE(UseTextLibrary());
    Open({L"Who"});
    EXPECT_EQ(Ui().Title(), LibraryText(6082));
    constexpr std::pair<int, unsigned> kCaptions[] = {{IDC_MAP_INSTRUCTION, 6092},
                                                      {IDC_MAP_SOURCE_BOX, 6084},
                                                      {IDC_MAP_SOURCE_LABEL, 6087},
                                                      {IDC_MAP_DESTINATION_BOX, 6085},
                                                      {IDC_MAP_DESTINATION_LABEL, 6086},
                                                      {IDC_MAP, 6083},
                                                      {IDOK, 5249},
                                                      {IDCANCEL, 5224}};
    for (const auto& [control, text] : kCaptions)
        EXPECT_EQ(Ui().Text(control), LibraryText(text)) << control;
    EXPECT_EQ(Ui().ColumnTitle(IDC_MAP_SOURCE_FIELDS, 0), LibraryText(6088));
    EXPECT_EQ(Ui().ColumnTitle(IDC_MAP_DESTINATIONS, 0), LibraryText(6088));
    EXPECT_EQ(Ui().ColumnTitle(IDC_MAP_DESTINATIONS, 1), LibraryText(6089));
    EXPECT_EQ(Ui().CellText(IDC_MAP_DESTINATIONS, 0, 0), LibraryText(1104));
    EXPECT_EQ(Ui().CellText(IDC_MAP_DESTINATIONS, 1, 0), LibraryText(5269));
    EXPECT_EQ(Ui().CellText(IDC_MAP_DESTINATIONS, 2, 0), LibraryText(6216));
}

TEST_F(MapCustomFields, TheListsAreSetUpAlike)
{
    Open({L"Who"});
    for (const int id : {IDC_MAP_SOURCE_FIELDS, IDC_MAP_DESTINATIONS}) {
        const HWND list = Ui().Control(id);
        EXPECT_EQ(ListView_GetExtendedListViewStyle(list), static_cast<DWORD>(LVS_EX_FULLROWSELECT | LVS_EX_GRIDLINES));
        const LONG_PTR style = GetWindowLongPtrW(list, GWL_STYLE);
        EXPECT_EQ(style & (LVS_SINGLESEL | LVS_SHOWSELALWAYS), LVS_SINGLESEL | LVS_SHOWSELALWAYS);
    }
    EXPECT_EQ(Ui().ColumnCount(IDC_MAP_SOURCE_FIELDS), 1);
    EXPECT_EQ(ListView_GetColumnWidth(Ui().Control(IDC_MAP_SOURCE_FIELDS), 0), 180);
    EXPECT_EQ(Ui().ColumnCount(IDC_MAP_DESTINATIONS), 2);
    EXPECT_EQ(ListView_GetColumnWidth(Ui().Control(IDC_MAP_DESTINATIONS), 0), 80);
    EXPECT_EQ(ListView_GetColumnWidth(Ui().Control(IDC_MAP_DESTINATIONS), 1), 120);
}

TEST_F(MapCustomFields, ALongFileNameIsShortenedWithAnEllipsis)
{
    Open({L"Who"});
    const LONG_PTR style = GetWindowLongPtrW(Ui().Control(IDC_MAP_FILE_NAME), GWL_STYLE);
    EXPECT_EQ(style & SS_ELLIPSISMASK, SS_WORDELLIPSIS);
    EXPECT_TRUE(style & SS_NOPREFIX);
}

TEST_F(MapCustomFields, MapNeedsASelectedRowInBothLists)
{
    Open({L"Who", L"Fax"});
    Ui().SelectRows(IDC_MAP_SOURCE_FIELDS, {0});
    EXPECT_FALSE(Ui().IsEnabled(IDC_MAP));
    Ui().SelectRows(IDC_MAP_DESTINATIONS, {1});
    EXPECT_TRUE(Ui().IsEnabled(IDC_MAP));
    Ui().SelectRows(IDC_MAP_SOURCE_FIELDS, {});
    EXPECT_FALSE(Ui().IsEnabled(IDC_MAP));
}

TEST_F(MapCustomFields, OkGivesThePairsInTheOrderOfTheEntryFields)
{
    Open({L"Who", L"Fax", L"Firm"});
    Map(2, kCompany);
    Map(1, kFaxNumber);
    Map(0, kName);
    EXPECT_EQ(Mapped(), (Texts{L"Who", L"Fax", L"Firm"}));
    EXPECT_EQ(AcceptedMapping(), (Mapping{{0, kName}, {1, kFaxNumber}, {2, kCompany}}));
    EXPECT_EQ(context_.result, 1u);
}

TEST_F(MapCustomFields, TheCompanyMayStayOut)
{
    Open({L"Who", L"Fax"});
    Map(0, kName);
    EXPECT_FALSE(Ui().IsEnabled(IDOK));
    Map(1, kFaxNumber);
    EXPECT_TRUE(Ui().IsEnabled(IDOK));
    EXPECT_EQ(AcceptedMapping(), (Mapping{{0, kName}, {1, kFaxNumber}}));
}

TEST_F(MapCustomFields, WithOnlyNameAndCompanyMappedOkStaysOff)
{
    Open({L"Who", L"Fax", L"Firm"});
    Map(0, kName);
    Map(2, kCompany);
    EXPECT_FALSE(Ui().IsEnabled(IDOK));
}

TEST_F(MapCustomFields, MappingASourceFieldAgainMovesItAndOkGoesOffUntilTheNameIsMappedAnew)
{
    Open({L"Who", L"Fax"});
    Map(0, kName);
    Map(1, kFaxNumber);
    ASSERT_TRUE(Ui().IsEnabled(IDOK));
    Map(0, kFaxNumber);
    EXPECT_EQ(Mapped(), (Texts{L"", L"Who", L""}));
    EXPECT_FALSE(Ui().IsEnabled(IDOK));
    Map(1, kName);
    EXPECT_EQ(Mapped(), (Texts{L"Fax", L"Who", L""}));
    EXPECT_TRUE(Ui().IsEnabled(IDOK));
}

TEST_F(MapCustomFields, MappingToTheSameFieldTwiceChangesNothing)
{
    Open({L"Who", L"Fax"});
    Map(0, kName);
    Map(0, kName);
    EXPECT_EQ(Mapped(), (Texts{L"Who", L"", L""}));
}

TEST_F(MapCustomFields, ALineBreakAtTheEndOfAHeaderFieldIsNeitherShownNorCompared)
{
    Open({L"Who\r\n", L"Fax\nnumber"});
    EXPECT_EQ(Ui().CellText(IDC_MAP_SOURCE_FIELDS, 0, 0), L"Who");
    EXPECT_EQ(Ui().CellText(IDC_MAP_SOURCE_FIELDS, 1, 0), L"Fax");
    Map(0, kName);
    Map(1, kFaxNumber);
    EXPECT_EQ(AcceptedMapping(), (Mapping{{0, kName}, {1, kFaxNumber}}));
    EXPECT_EQ(context_.headers[0], L"Who"); // trimmed in place
}

TEST_F(MapCustomFields, AnEmptyHeaderFieldHasNoRowButIsCounted)
{
    Open({std::nullopt, L"Who", L"", L"Fax"});
    EXPECT_EQ(Ui().RowCount(IDC_MAP_SOURCE_FIELDS), 2);
    Map(0, kName);
    Map(1, kFaxNumber);
    EXPECT_EQ(AcceptedMapping(), (Mapping{{1, kName}, {3, kFaxNumber}}));
}

TEST_F(MapCustomFields, OfTwoHeaderFieldsWithTheSameTextTheFirstIsMeant)
{
    Open({L"Fax", L"Who", L"Who"});
    Map(2, kName);
    Map(0, kFaxNumber);
    EXPECT_EQ(AcceptedMapping(), (Mapping{{1, kName}, {0, kFaxNumber}}));
}

TEST_F(MapCustomFields, HeaderFieldsThatDifferInCaseAreDifferent)
{
    Open({L"who", L"WHO"});
    Map(0, kName);
    Map(1, kFaxNumber);
    EXPECT_EQ(Mapped(), (Texts{L"who", L"WHO", L""}));
    EXPECT_EQ(AcceptedMapping(), (Mapping{{0, kName}, {1, kFaxNumber}}));
}

TEST_F(MapCustomFields, AHeaderFieldIsToldApartByItsFirst260Characters)
{
    const std::wstring longest(260, L'h');
    Open({longest + L"1", longest + L"2", L"Fax"});
    Map(1, kName);
    Map(2, kFaxNumber);
    EXPECT_EQ(End(IDOK), IDOK);
    EXPECT_EQ(context_.headers[1], longest);
    EXPECT_EQ(context_.mapping, (Mapping{{0, kName}, {2, kFaxNumber}}));
}

TEST_F(MapCustomFields, FortyColumnsAreListedInTheirOrder)
{
    std::vector<std::optional<std::wstring>> headers;
    for (int column = 0; column < 40; ++column)
        headers.push_back(L"Column " + std::to_wstring(column));
    Open(headers);
    ASSERT_EQ(Ui().RowCount(IDC_MAP_SOURCE_FIELDS), 40);
    Map(39, kName);
    Map(17, kFaxNumber);
    EXPECT_EQ(AcceptedMapping(), (Mapping{{39, kName}, {17, kFaxNumber}}));
}

TEST_F(MapCustomFields, CancelMapsNothing)
{
    Open({L"Who", L"Fax"});
    Map(0, kName);
    Map(1, kFaxNumber);
    EXPECT_EQ(End(IDCANCEL), IDCANCEL);
    EXPECT_EQ(context_.result, 0u);
    EXPECT_TRUE(context_.mapping.empty());
}

TEST_F(MapCustomFields, EnterInTheListsAcceptsNothingWhileOkIsOff)
{
    Open({L"Who", L"Fax"});
    for (const int list : {IDC_MAP_SOURCE_FIELDS, IDC_MAP_DESTINATIONS}) {
        Ui().Focus(list);
        Ui().PressKey(VK_DOWN);
        Ui().PressKey(VK_RETURN);
        ASSERT_FALSE(Ui().Finished());
        EXPECT_EQ(Ui().FocusedControl(), list);
    }
    // As the dialog manager sends it where it does not look whether the default button is on.
    Ui().Do([dialog = Ui().Dialog(), ok = Ui().Control(IDOK)] {
        SendMessageW(dialog, WM_COMMAND, MAKEWPARAM(IDOK, BN_CLICKED), reinterpret_cast<LPARAM>(ok));
    });
    ASSERT_FALSE(Ui().Finished());
    EXPECT_TRUE(context_.mapping.empty());
    Map(0, kName);
    Map(1, kFaxNumber);
    Ui().Focus(IDC_MAP_DESTINATIONS);
    Ui().PressKey(VK_RETURN);
    conversation_->End();
    EXPECT_EQ(answer_, IDOK);
    EXPECT_EQ(context_.mapping, (Mapping{{0, kName}, {1, kFaxNumber}}));
}

TEST_F(MapCustomFields, CanBeUsedWithTheKeyboardAlone)
{
    Open({L"Who", L"Fax"});
    Ui().PressKey(VK_DOWN); // to the first field, where nothing was selected
    Ui().PressKey(VK_TAB);
    ASSERT_EQ(Ui().FocusedControl(), IDC_MAP_DESTINATIONS);
    Ui().PressKey(VK_DOWN);
    Ui().PressKey(VK_TAB);
    ASSERT_EQ(Ui().FocusedControl(), IDC_MAP);
    Ui().PressKey(VK_SPACE);
    EXPECT_EQ(Mapped(), (Texts{L"Who", L"", L""}));
    Ui().PressKey(VK_TAB, {VK_SHIFT});
    Ui().PressKey(VK_DOWN);
    Ui().PressKey(VK_TAB, {VK_SHIFT});
    ASSERT_EQ(Ui().FocusedControl(), IDC_MAP_SOURCE_FIELDS);
    Ui().PressKey(VK_DOWN);
    Ui().PressKey(VK_TAB);
    Ui().PressKey(VK_TAB);
    Ui().PressKey(VK_SPACE);
    EXPECT_EQ(Mapped(), (Texts{L"Who", L"Fax", L""}));
    Ui().PressKey(VK_TAB);
    ASSERT_EQ(Ui().FocusedControl(), IDOK);
    Ui().PressKey(VK_RETURN);
    conversation_->End();
    EXPECT_EQ(answer_, IDOK);
}

TEST_F(MapCustomFields, TheTwinIsLaidOutFromRightToLeftButNotThePath)
{
    Open({L"Who", L"Fax"}, true);
    EXPECT_TRUE(GetWindowLongPtrW(Ui().Dialog(), GWL_EXSTYLE) & WS_EX_LAYOUTRTL);
    EXPECT_FALSE(GetWindowLongPtrW(Ui().Control(IDC_MAP_FILE_NAME), GWL_EXSTYLE) & WS_EX_LAYOUTRTL);
    Map(0, kName);
    Map(1, kFaxNumber);
    EXPECT_EQ(End(IDOK), IDOK);
    EXPECT_EQ(context_.mapping.size(), 2u);
}

TEST_F(MapCustomFields, HelpIsGivenForTheListsAndTheMapButtonOnly)
{
    const auto topic = [](int id) {
        for (const Control& control : kMapCustomFieldsDialog.controls) {
            if (control.id == id)
                return control.topic;
        }
        return kNoTopic;
    };
    EXPECT_EQ(topic(IDC_MAP_DESTINATIONS), 15719);
    EXPECT_EQ(topic(IDC_MAP), 15717);
    EXPECT_EQ(topic(IDC_MAP_SOURCE_FIELDS), 15718);
    for (const int id : {-1, 311, 313, 316, 314, 315})
        EXPECT_EQ(topic(id), kNoTopic) << id;
}

// ---- hostile files -------------------------------------------------------------------------------------------------

TEST_F(MapCustomFields, AMillionColumnsAreShownAtOnceAndTheLastOneCanBeMapped)
{
    constexpr int kColumns = 1000000;
    std::vector<std::optional<std::wstring>> headers(kColumns);
    for (int column = 1; column < kColumns; ++column) // the first one is empty
        headers[static_cast<std::size_t>(column)] = L"c" + std::to_wstring(column);
    Open(std::move(headers));
    ASSERT_EQ(Ui().RowCount(IDC_MAP_SOURCE_FIELDS), kColumns - 1);
    EXPECT_EQ(Ui().CellText(IDC_MAP_SOURCE_FIELDS, 0, 0), L"c1");
    EXPECT_EQ(Ui().CellText(IDC_MAP_SOURCE_FIELDS, kColumns - 2, 0), L"c999999");
    Map(kColumns - 2, kName);
    Map(0, kFaxNumber);
    EXPECT_EQ(Mapped(), (Texts{L"c999999", L"c1", L""}));
    EXPECT_EQ(AcceptedMapping(), (Mapping{{999999, kName}, {1, kFaxNumber}}));
}

TEST_F(MapCustomFields, TypingFindsTheNextSourceFieldThatBeginsSo)
{
    Open({L"Name", std::nullopt, L"Fax", L"name 2", L"Company"});
    // As the list asks when the user types; a list that owns its rows would know by itself.
    const HWND list = Ui().Control(IDC_MAP_SOURCE_FIELDS);
    const auto find = [list](const wchar_t* text, int from) {
        NMLVFINDITEMW search{};
        search.hdr = {list, IDC_MAP_SOURCE_FIELDS, static_cast<UINT>(LVN_ODFINDITEMW)};
        search.iStart = from;
        search.lvfi.flags = LVFI_STRING | LVFI_PARTIAL | LVFI_WRAP;
        search.lvfi.psz = text;
        return SendMessageW(GetParent(list), WM_NOTIFY, IDC_MAP_SOURCE_FIELDS, reinterpret_cast<LPARAM>(&search));
    };
    EXPECT_EQ(find(L"f", 0), 1);
    EXPECT_EQ(find(L"NA", 1), 2);
    EXPECT_EQ(find(L"na", 3), 0);
    EXPECT_EQ(find(L"x", 0), -1);
}

TEST_F(MapCustomFields, ARowThatIsNotThereHasNoTextAndNothingIsFoundWithoutOne)
{
    Open({L"Name", L"Fax"});
    const HWND list = Ui().Control(IDC_MAP_SOURCE_FIELDS);
    const auto ask = [list](auto& question, UINT code) {
        question.hdr = {list, IDC_MAP_SOURCE_FIELDS, code};
        return SendMessageW(GetParent(list), WM_NOTIFY, IDC_MAP_SOURCE_FIELDS, reinterpret_cast<LPARAM>(&question));
    };
    for (const int row : {-1, 2}) {
        NMLVDISPINFOW question{};
        question.item.iItem = row;
        ask(question, static_cast<UINT>(LVN_GETDISPINFOW));
        EXPECT_EQ(question.item.pszText, nullptr) << row; // no text was asked for
        question.item.mask = LVIF_TEXT;
        ask(question, static_cast<UINT>(LVN_GETDISPINFOW));
        EXPECT_STREQ(question.item.pszText, L"") << row;
    }
    for (const UINT flags : {LVFI_PARAM, LVFI_STRING}) {
        NMLVFINDITEMW search{};
        search.lvfi.flags = flags;
        EXPECT_EQ(ask(search, static_cast<UINT>(LVN_ODFINDITEMW)), -1) << flags;
    }
}

} // namespace
} // namespace qx
