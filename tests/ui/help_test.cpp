// Help on every control of every dialog of the real module. The system's help viewer is replaced by one that takes
// notes.
#include "res/map_custom_fields_ids.h"
#include "support/help_topics.h"
#include "support/help_viewer.h"
#include "support/send_fax_session.h"

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <winspool.h>

namespace qx::test {
namespace {

namespace fs = std::filesystem;

constexpr int kSetupPage = 1;
constexpr int kEditDefaults = 279, kEditDefaultsHelp = 9;
constexpr int kPickRecipients = 271, kEditPhoneBook = 283, kEditPhoneBookInPicker = 303;
constexpr int kAddEntry = 307, kAddGroup = 308, kImport = 310, kEdit = 257, kDetails = 305, kPhoneBookList = 250;

std::wstring PageOf(int topic)
{
    const fs::path chm = fs::temp_directory_path() / UsersHelpFile();
    return chm.native() + L"::/" + std::to_wstring(topic) + L".html";
}

HELPINFO HelpOn(HWND control)
{
    HELPINFO info{};
    info.cbSize = sizeof info;
    info.iContextType = HELPINFO_WINDOW;
    info.iCtrlId = GetDlgCtrlID(control);
    info.hItemHandle = control;
    GetCursorPos(&info.MousePos);
    return info;
}

class HelpOnControls : public testing::Test {
protected:
    explicit HelpOnControls(SessionOptions options = {}) : session_(std::move(options))
    {
        session_.SetDefault(L"ApplyDefaults", 1u); // the sheet opens on the Fax Job page
        session_.WritePhoneBook(kPhoneBook);
        session_.Start();
        ui_.Dialog();
    }

    // The topics that were asked for since the last call, by their pages.
    std::vector<std::wstring> PagesShown()
    {
        std::vector<std::wstring> pages;
        for (const HelpRequest& request : viewer_.TakeRequests())
            pages.emplace_back(request.page);
        return pages;
    }

    static std::vector<std::wstring> Expected(int topic)
    {
        return topic == kNone ? std::vector<std::wstring>() : std::vector{PageOf(topic)};
    }

    // As Windows reports F1 and the ? button: to the control, which hands it on to its dialog.
    void AskForHelp(HWND control)
    {
        ui_.Do([=] {
            HELPINFO info = HelpOn(control);
            SendMessageW(control, WM_HELP, 0, reinterpret_cast<LPARAM>(&info));
        });
    }

    // As a right click on a control that has no menu of its own, a disabled one or a label: the dialog hears of it.
    void RightClick(HWND dialog, HWND control)
    {
        RECT rectangle{};
        GetWindowRect(control, &rectangle);
        // Other controls lie in the middle of a group box, none on its corner.
        const bool corner = SendMessageW(control, WM_GETDLGCODE, 0, 0) == DLGC_STATIC;
        const int x = corner ? rectangle.left + 1 : (rectangle.left + rectangle.right) / 2;
        const int y = corner ? rectangle.top + 1 : (rectangle.top + rectangle.bottom) / 2;
        ui_.Do([=] {
            SetCursorPos(x, y);
            SendMessageW(dialog, WM_CONTEXTMENU, reinterpret_cast<WPARAM>(dialog), MAKELPARAM(x, y));
        });
    }

    void PressF1On(int control)
    {
        ui_.Focus(control);
        ui_.PressKey(VK_F1);
        ui_.Settle(); // the key becomes a message of its own
    }

    static bool CanHaveFocus(HWND control)
    {
        return IsWindowVisible(control) && IsWindowEnabled(control) &&
               (GetWindowLongW(control, GWL_STYLE) & WS_TABSTOP);
    }

    // Every control of the dialog: those of the list open their page, all others none.
    void ExpectTopics(const HelpTopics& topics)
    {
        const HWND dialog = ui_.Page();
        for (const HelpTopic& topic : topics)
            EXPECT_NE(GetDlgItem(dialog, topic.control), nullptr) << "control " << topic.control << " is missing";
        for (HWND control = GetWindow(dialog, GW_CHILD); control != nullptr;
             control = GetWindow(control, GW_HWNDNEXT)) {
            const int id = GetDlgCtrlID(control);
            const auto row = std::ranges::find(topics, id, &HelpTopic::control);
            const auto expected = Expected(row == topics.end() ? kNone : row->topic);
            AskForHelp(control);
            EXPECT_EQ(PagesShown(), expected) << "help on control " << id;
            if (IsWindowVisible(control)) {
                RightClick(dialog, control);
                EXPECT_EQ(PagesShown(), expected) << "right click on control " << id;
            }
            if (CanHaveFocus(control)) {
                PressF1On(id);
                EXPECT_EQ(PagesShown(), expected) << "F1 on control " << id;
            }
        }
    }

    void OpenPhoneBook()
    {
        ui_.GoToPage(kSetupPage);
        ui_.Press(kEditPhoneBook);
    }

    int RowOf(const std::wstring& name)
    {
        for (int row = 0; row < ui_.RowCount(kPhoneBookList); ++row) {
            if (ui_.CellText(kPhoneBookList, row, 0) == name)
                return row;
        }
        throw std::runtime_error("the phone book list lacks a row");
    }

    static constexpr int kNone = -1;
    static constexpr char kPhoneBook[] =
        "<device><software><component><name>QX Fax Address Book</name><qxfax_phonebook>"
        "<qxfax_pbentry entry_id=\"0\" name=\"Ann Lee\" fax_number=\"5550100\" company_name=\"\"/>"
        "<qxfax_group group_name=\"Sales\" "
        "entry_id=\"1\"><member_list><m_entry_id>0</m_entry_id></member_list></qxfax_group>"
        "</qxfax_phonebook></component></software></device>";

    HelpViewerStandIn& viewer_ = HelpViewerStandIn::OfThisProgram();
    SendFaxSession session_;
    host::UiDriver& ui_ = session_.Ui();
};

TEST_F(HelpOnControls, OfTheSheetItself)
{
    for (const HelpTopic& topic : kSheetTopics) {
        AskForHelp(GetDlgItem(ui_.Dialog(), topic.control));
        EXPECT_EQ(PagesShown(), Expected(topic.topic)) << topic.control;
        PressF1On(topic.control);
        EXPECT_EQ(PagesShown(), Expected(topic.topic)) << topic.control;
    }
}

TEST_F(HelpOnControls, TheSheetsHelpButtonOpensTheOverview)
{
    ui_.Press(host::kHelpButton);
    EXPECT_EQ(PagesShown(), Expected(kSheetHelpTopic));
}

TEST_F(HelpOnControls, OfTheFaxJobPage)
{
    ExpectTopics(kFaxJobPageTopics);
}

TEST_F(HelpOnControls, OfTheSetupPage)
{
    ui_.GoToPage(kSetupPage);
    ExpectTopics(kSetupPageTopics);
}

TEST_F(HelpOnControls, OfEditDefaults)
{
    ui_.GoToPage(kSetupPage);
    ui_.Press(kEditDefaults);
    ExpectTopics(kEditDefaultsTopics);
}

TEST_F(HelpOnControls, TheHelpButtonOfEditDefaultsOpensAnotherPageThanHelpOnIt)
{
    ui_.GoToPage(kSetupPage);
    ui_.Press(kEditDefaults);
    ui_.Press(kEditDefaultsHelp);
    EXPECT_EQ(PagesShown(), Expected(kEditDefaultsHelpTopic));
}

TEST_F(HelpOnControls, OfAddRecipients)
{
    ui_.Press(kPickRecipients);
    ExpectTopics(kAddRecipientsTopics);
}

TEST_F(HelpOnControls, OfEditPhoneBookBothFromTheSetupPageAndFromAddRecipients)
{
    ui_.Press(kPickRecipients);
    ui_.Press(kEditPhoneBookInPicker);
    ExpectTopics(kEditPhoneBookTopics);
    ui_.Press(IDCANCEL);
    ui_.Press(IDCANCEL);
    OpenPhoneBook();
    ExpectTopics(kEditPhoneBookTopics);
}

TEST_F(HelpOnControls, OfANewEntry)
{
    OpenPhoneBook();
    ui_.Press(kAddEntry);
    ExpectTopics(kAddEntryTopics);
}

TEST_F(HelpOnControls, OfAnEntryThatIsChanged)
{
    OpenPhoneBook();
    ui_.SelectRows(kPhoneBookList, {RowOf(L"Ann Lee")});
    ui_.Press(kEdit);
    ExpectTopics(kEditEntryTopics);
}

TEST_F(HelpOnControls, OfAGroup)
{
    OpenPhoneBook();
    ui_.Press(kAddGroup);
    ExpectTopics(kGroupTopics);
    ui_.Press(IDCANCEL);
    ui_.SelectRows(kPhoneBookList, {RowOf(L"Sales")});
    ui_.Press(kEdit);
    ExpectTopics(kGroupTopics);
}

TEST_F(HelpOnControls, OfTheDetailsDialogsIsNone)
{
    OpenPhoneBook();
    for (const wchar_t* const name : {L"Ann Lee", L"Sales"}) {
        ui_.SelectRows(kPhoneBookList, {RowOf(name)});
        ui_.Press(kDetails);
        ExpectTopics(kDetailsTopics);
        ui_.Press(IDOK);
    }
}

TEST_F(HelpOnControls, OfMapCustomFields)
{
    const fs::path csv = fs::temp_directory_path() / "help test.csv";
    std::ofstream(csv, std::ios::binary) << "Name,Fax,Company\r\nBob,5550101,Acme\r\n";
    OpenPhoneBook();
    ui_.Press(kImport);
    ui_.AnswerFileDialog(csv);
    ui_.WaitForControl(IDC_MAP);
    ExpectTopics(kMapCustomFieldsTopics);
    ui_.CloseEverything(); // the import has the file open
    fs::remove(csv);
}

TEST_F(HelpOnControls, OfADialogsOwnSurfaceIsNone)
{
    ui_.Do([dialog = ui_.Page()] {
        POINT corner{0, 0};
        ClientToScreen(dialog, &corner);
        SetCursorPos(corner.x, corner.y);
        SendMessageW(dialog, WM_CONTEXTMENU, reinterpret_cast<WPARAM>(dialog), MAKELPARAM(corner.x, corner.y));
    });
    EXPECT_TRUE(PagesShown().empty());
}

// Whether a session puts the user's help file into the temporary folder. emptied: printer data that is made empty.
bool SessionUnpacksHelp(SessionOptions options, std::wstring emptied = {})
{
    const fs::path help = fs::temp_directory_path() / UsersHelpFile();
    fs::remove(help);
    SendFaxSession session(std::move(options));
    wchar_t empty[] = L"";
    if (!emptied.empty())
        SetPrinterDataW(session.PrinterHandle(), emptied.data(), REG_SZ, reinterpret_cast<BYTE*>(empty), sizeof empty);
    session.Start();
    session.Cancel();
    return fs::exists(help);
}

TEST(HelpOfASession, IsUnpackedWhenThePrinterNamesCabinetAndHelpFile)
{
    EXPECT_TRUE(SessionUnpacksHelp({}));
}

TEST(HelpOfASession, IsNotUnpackedWithoutCabinetName)
{
    SessionOptions missing;
    missing.printer.helpCabinet = std::nullopt;
    EXPECT_FALSE(SessionUnpacksHelp(missing));
    EXPECT_FALSE(SessionUnpacksHelp({}, L"HelpCabName"));
}

TEST(HelpOfASession, IsNotUnpackedWithoutHelpFileName)
{
    SessionOptions missing;
    missing.printer.helpFile = std::nullopt;
    EXPECT_FALSE(SessionUnpacksHelp(missing));
    EXPECT_FALSE(SessionUnpacksHelp({}, L"GPDHelpFileName"));
}

class WithoutHelp : public HelpOnControls {
protected:
    WithoutHelp() : HelpOnControls(Options()) {}

    static SessionOptions Options()
    {
        SessionOptions options;
        options.printer.help = false;
        return options;
    }
};

TEST_F(WithoutHelp, KeysAndButtonsDoNothing)
{
    AskForHelp(ui_.Control(kPickRecipients));
    PressF1On(IDOK);
    ui_.Press(host::kHelpButton);
    EXPECT_TRUE(PagesShown().empty());
    EXPECT_NE(ui_.DialogNow(), nullptr);
}

} // namespace
} // namespace qx::test
