// Every dialog in high contrast, dark and light: is everything there is to see drawn in the system's colours, and in
// two that can be told apart?
#include "dialog/dialog.h"
#include "res/add_recipients_ids.h"
#include "res/edit_defaults_ids.h"
#include "res/edit_phone_book_ids.h"
#include "res/entry_ids.h"
#include "res/fax_job_page_ids.h"
#include "res/group_ids.h"
#include "res/map_custom_fields_ids.h"
#include "res/send_settings_ids.h"
#include "res/setup_page_ids.h"
#include "support/all_dialogs.h"
#include "support/phone_book_session.h"
#include "support/redirected_import.h"
#include "support/system_colors.h"
#include "support/temporary_folder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <commctrl.h>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <string_view>

namespace qx::test {
namespace {

using host::UiDriver;

// Of the screen; what is drawn in one colour more often than in any other is the ground.
struct Colors {
    std::map<COLORREF, int> pixels;

    COLORREF Ground() const
    {
        return std::ranges::max_element(pixels, {}, [](const auto& p) { return p.second; })->first;
    }
    int Count(COLORREF color) const
    {
        const auto found = pixels.find(color);
        return found != pixels.end() ? found->second : 0;
    }
};

Colors OnScreen(const RECT& area)
{
    const int width = area.right - area.left, height = area.bottom - area.top;
    const HDC screen = GetDC(nullptr), memory = CreateCompatibleDC(screen);
    BITMAPINFO format{};
    format.bmiHeader = {sizeof format.bmiHeader, width, -height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    void* bits = nullptr;
    const HBITMAP copy = CreateDIBSection(memory, &format, DIB_RGB_COLORS, &bits, nullptr, 0);
    const HGDIOBJ before = SelectObject(memory, copy);
    BitBlt(memory, 0, 0, width, height, screen, area.left, area.top, SRCCOPY);
    GdiFlush();
    Colors colors;
    const auto* pixel = static_cast<const RGBQUAD*>(bits);
    for (int i = 0; i < width * height; ++i, ++pixel)
        ++colors.pixels[RGB(pixel->rgbRed, pixel->rgbGreen, pixel->rgbBlue)];
    SelectObject(memory, before);
    DeleteObject(copy);
    DeleteDC(memory);
    ReleaseDC(nullptr, screen);
    return colors;
}

double Luminance(COLORREF color)
{
    const auto linear = [](BYTE part) {
        const double value = part / 255.0;
        return value <= 0.03928 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(GetRValue(color)) + 0.7152 * linear(GetGValue(color)) + 0.0722 * linear(GetBValue(color));
}

// From 1, for equal colours, to 21.
double Contrast(COLORREF a, COLORREF b)
{
    const double first = Luminance(a) + 0.05, second = Luminance(b) + 0.05;
    return std::max(first, second) / std::min(first, second);
}

bool IsGroupBox(HWND control)
{
    return IsOfClass(control, L"Button") && (GetWindowLongPtrW(control, GWL_STYLE) & BS_TYPEMASK) == BS_GROUPBOX;
}

// A group box lies behind others: of it, the line with its caption.
RECT SeenOf(HWND control)
{
    RECT area{};
    if (IsOfClass(control, L"Edit")) {
        GetClientRect(control, &area);
        MapWindowPoints(control, nullptr, reinterpret_cast<POINT*>(&area), 2);
    } else {
        GetWindowRect(control, &area);
    }
    if (IsGroupBox(control))
        area.bottom = std::min(area.bottom, area.top + 10);
    return area;
}

bool ShowsText(HWND control)
{
    if (IsOfClass(control, WC_LISTVIEWW))
        return true; // at least its headings
    return GetWindowTextLengthW(control) > 0;
}

constexpr double kReadable = 4.5, kVisible = 3;

// The system then scales nothing, and the dialogs themselves are as large as the dots per inch ask.
FARPROC WINAPI FindNoDpiMode(HMODULE module, const char* name)
{
    const bool isMode = HIWORD(name) != 0 && std::string_view(name) == "SetThreadDpiAwarenessContext";
    return isMode ? nullptr : GetProcAddress(module, name);
}

class InHighContrast : public ::testing::TestWithParam<Palette> {
protected:
    InHighContrast()
        : session(BookText().Entry(1, L"Ann", L"111", L"Harbour").Group(2, L"Sales", {1}).Entry(3, L"Zoe", L"333"),
                  WithDevice(L"BillingCodeEnabled", 1u)),
          noDpiMode("GetProcAddress", FindNoDpiMode, session.Module()), contrast(session.Module(), GetParam())
    {
    }

    UiDriver& Ui() { return session.Ui(); }

    Colors Look(const RECT& area)
    {
        Ui().Do([dialog = Ui().Dialog()] {
            HideCaret(nullptr);
            RedrawWindow(dialog, nullptr, nullptr,
                         RDW_INVALIDATE | RDW_ERASE | RDW_FRAME | RDW_ALLCHILDREN | RDW_UPDATENOW);
        });
        Ui().Settle();
        return OnScreen(area);
    }

    void CheckDialog(const char* name)
    {
        if (const char* const folder = std::getenv("QX_SHOTS"))
            Ui().SavePicture(std::filesystem::path(folder) / (std::string(GetParam().name) + "-" + name + ".png"));
        Look({0, 0, 1, 1});
        std::vector<HWND> parents{Ui().Dialog()};
        if (Ui().Page() != Ui().Dialog())
            parents.push_back(Ui().Page());
        for (const HWND parent : parents) {
            for (HWND child = GetWindow(parent, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
                if (IsWindowVisible(child) && !IsOfClass(child, L"#32770"))
                    CheckControl(child, std::string(name) + ", control " + std::to_string(GetDlgCtrlID(child)));
            }
        }
    }

    void CheckControl(HWND control, const std::string& name)
    {
        const Palette& palette = GetParam();
        const bool isEnabled = IsWindowEnabled(control) != FALSE;
        const double leastContrast = isEnabled ? kReadable : kVisible;
        Colors seen = OnScreen(SeenOf(control));
        // What has been drawn reaches the screen a little later.
        for (int tries = 0; tries < 50 && ShowsText(control) && !ShowsSomething(seen, leastContrast); ++tries) {
            Sleep(20);
            seen = OnScreen(SeenOf(control));
        }
        EXPECT_TRUE(seen.Ground() == palette.ground || seen.Ground() == palette.selection) << name;
        for (const auto& [color, count] : seen.pixels)
            EXPECT_TRUE(IsOfPalette(color)) << name << ": " << count << " pixels of " << std::hex << color;
        if (!ShowsText(control))
            return;
        EXPECT_TRUE(ShowsSomething(seen, leastContrast)) << name;
        if (IsOfClass(control, L"Static") || IsOfClass(control, L"Edit")) {
            EXPECT_EQ(seen.Count(palette.disabled) > 0, !isEnabled) << name;
        } else if (!isEnabled) {
            EXPECT_NE(seen.pixels, LookWhenEnabled(control).pixels) << name;
        }
    }

    Colors LookWhenEnabled(HWND control)
    {
        const auto enable = [&](BOOL enabled) { Ui().Do([=] { EnableWindow(control, enabled); }); };
        enable(TRUE);
        const Colors seen = Look(SeenOf(control));
        enable(FALSE);
        return seen;
    }

    // Or a shade between the ground and one of its colours, at the edges of letters.
    static bool IsOfPalette(COLORREF color)
    {
        return std::ranges::any_of(GetParam().Table(), [&](const auto& known) {
            return IsBetween(color, GetParam().ground, known.second) ||
                   IsBetween(color, GetParam().selection, known.second);
        });
    }
    static bool IsBetween(COLORREF color, COLORREF from, COLORREF to)
    {
        const auto parts = [](COLORREF c) { return std::array<int, 3>{GetRValue(c), GetGValue(c), GetBValue(c)}; };
        const auto a = parts(from), b = parts(to), c = parts(color);
        double share = 0;
        int widest = 0;
        for (std::size_t i = 0; i < 3; ++i) {
            if (std::abs(b[i] - a[i]) > widest) {
                widest = std::abs(b[i] - a[i]);
                share = static_cast<double>(c[i] - a[i]) / (b[i] - a[i]);
            }
        }
        if (share < 0 || share > 1)
            return false;
        for (std::size_t i = 0; i < 3; ++i) {
            if (std::abs(a[i] + share * (b[i] - a[i]) - c[i]) > 3)
                return false;
        }
        return true;
    }
    static bool ShowsSomething(const Colors& seen, double contrast)
    {
        return std::ranges::any_of(seen.pixels, [&](const auto& pixel) {
            return pixel.second >= 5 && Contrast(pixel.first, seen.Ground()) >= contrast;
        });
    }

    // Of a row with its picture, on the screen.
    RECT IconOf(int list, int row)
    {
        const HWND window = Ui().Control(list);
        RECT place{LVIR_ICON, 0, 0, 0};
        Ui().Do(
            [&] { SendMessageW(window, LVM_GETITEMRECT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&place)); });
        MapWindowPoints(window, nullptr, reinterpret_cast<POINT*>(&place), 2);
        return place;
    }
    void CheckGroupIcon(int list)
    {
        const Palette& palette = GetParam();
        for (const std::vector<int>& selected : {std::vector<int>{}, std::vector<int>{1}}) {
            Ui().SelectRows(list, selected);
            const Colors icon = Look(IconOf(list, 1));
            EXPECT_GT(icon.Count(palette.text), 40);
            EXPECT_GT(icon.Count(palette.ground), 60);
        }
    }

    PhoneBookSession session;
    RedirectedImport<decltype(GetProcAddress)> noDpiMode;
    HighContrast contrast;
};

TEST_P(InHighContrast, ThePaletteItselfCanBeRead)
{
    const Palette& palette = GetParam();
    for (const COLORREF color : {palette.text, palette.disabled, palette.link, palette.selection})
        EXPECT_GE(Contrast(color, palette.ground), kReadable);
    EXPECT_GE(Contrast(palette.selection, palette.selectedText), kReadable);
    EXPECT_NE(palette.disabled, palette.text);
}

TEST_P(InHighContrast, TheFaxJobPage)
{
    session.OpenFaxJobPage();
    CheckDialog("fax-job");
    Ui().Type(IDC_NAME_BOX, L"Ann Lee");
    Ui().Type(IDC_FAX_NUMBER, L"555-0100");
    Ui().Type(IDC_COMPANY, L"Harbour Books");
    CheckDialog("fax-job-typed");
    Ui().Press(IDC_TO);
    Ui().Check(IDC_COVER_PAGE, true);
    Ui().Type(IDC_SUBJECT, L"Plan");
    Ui().Type(IDC_IMAGE, L"C:\\logo.bmp");
    CheckDialog("fax-job-cover-page");
    Ui().Check(IDC_COVER_PAGE, false); // disabled fields with texts
    CheckDialog("fax-job-disabled");
    const Colors button = Look(SeenOf(Ui().Control(IDC_PHONE_BOOK)));
    EXPECT_GT(button.Count(GetParam().text), 100);
    Ui().Focus(IDC_PHONE_BOOK);
    EXPECT_NE(Look(SeenOf(Ui().Control(IDC_PHONE_BOOK))).pixels, button.pixels);
}

TEST_P(InHighContrast, AGroupInTheFields)
{
    session.OpenPicker();
    Ui().SelectRows(IDC_PICK_LIST, {1});
    Ui().Press(IDC_PICK_TO);
    Ui().Press(IDOK);
    Ui().DropDown(IDC_NAME_BOX, true);
    Ui().Select(IDC_NAME_BOX, 0);
    ASSERT_TRUE(Ui().IsVisible(IDC_GROUP_TEXT));
    CheckDialog("fax-job-group");
}

TEST_P(InHighContrast, TheSetupPageAndTheDefaults)
{
    session.OpenFaxJobPage().GoToPage(1);
    Ui().Type(IDC_SENDER_NAME, L"Nora Fields");
    CheckDialog("setup");
    Ui().Press(IDC_EDIT_DEFAULTS);
    Ui().WaitForControl(IDC_APPLY_DEFAULTS);
    Ui().Check(IDC_COVER_PAGE, true);
    Ui().Type(IDC_SUBJECT, L"Plan");
    Ui().Check(IDC_COVER_PAGE, false);
    CheckDialog("defaults");
}

TEST_P(InHighContrast, ThePickerAndTheDetails)
{
    session.OpenPicker();
    CheckGroupIcon(IDC_PICK_LIST);
    CheckDialog("picker");
    Ui().Press(IDC_PICK_DETAILS);
    Ui().WaitForControl(IDOK);
    CheckDialog("group-details");
    Ui().Press(IDOK);
    Ui().SelectRows(IDC_PICK_LIST, {0});
    Ui().Press(IDC_PICK_DETAILS);
    CheckDialog("entry-details");
}

TEST_P(InHighContrast, TheEditorAndItsDialogs)
{
    session.OpenEditor();
    CheckGroupIcon(IDC_BOOK_LIST);
    CheckDialog("editor");
    Ui().Press(IDC_BOOK_ADD_ENTRY);
    Ui().WaitForControl(IDC_ENTRY_NAME);
    CheckDialog("entry");
    Ui().Press(IDCANCEL);
    Ui().Press(IDC_BOOK_ADD_GROUP);
    Ui().WaitForControl(IDC_GROUP_NAME);
    Ui().SelectRows(IDC_GROUP_ENTRIES, {0});
    Ui().Press(IDC_GROUP_ADD);
    CheckDialog("group");
    Ui().Press(IDCANCEL);
    const TemporaryFolder folder;
    const std::filesystem::path file = folder.Path() / "foreign.csv";
    std::ofstream(file) << "Who,Where\r\nAnn,555\r\n";
    Ui().Press(IDC_BOOK_IMPORT);
    Ui().AnswerFileDialog(file);
    Ui().WaitForControl(IDC_MAP_DESTINATIONS);
    CheckDialog("map");
}

std::string PaletteName(const ::testing::TestParamInfo<Palette>& tested)
{
    return tested.param.name;
}

INSTANTIATE_TEST_SUITE_P(, InHighContrast, ::testing::Values(kHighContrastBlack, kHighContrastWhite), PaletteName);

// ---- while a dialog is open

std::vector<HWND>& WindowsThatHeard()
{
    static std::vector<HWND> windows;
    return windows;
}

LRESULT CALLBACK Listen(int code, WPARAM w, LPARAM l)
{
    const auto& sent = *reinterpret_cast<const CWPSTRUCT*>(l);
    if (code == HC_ACTION && sent.message == WM_SYSCOLORCHANGE)
        WindowsThatHeard().push_back(sent.hwnd);
    return CallNextHookEx(nullptr, code, w, l);
}

// The system tells top-level windows alone: the list, the picture of a group in it, and the lists of pages.
TEST(ColorsThatChange, ReachTheListsOfOpenDialogs)
{
    PhoneBookSession session(BookText().Entry(1, L"Ann", L"111").Group(2, L"Sales", {1}));
    UiDriver& ui = session.OpenFaxJobPage();
    const HWND recipients = ui.Control(IDC_RECIPIENTS);
    ui.Press(IDC_PHONE_BOOK);
    const HWND list = ui.Control(IDC_PICK_LIST), chosen = ui.Control(IDC_PICK_CHOSEN);
    const LRESULT icons = SendMessageW(list, LVM_GETIMAGELIST, LVSIL_SMALL, 0);
    ASSERT_NE(icons, 0);
    WindowsThatHeard().clear();
    const HHOOK hook = SetWindowsHookExW(WH_CALLWNDPROC, Listen, nullptr, session.UiThread());
    {
        const SystemColors colors(kHighContrastBlack.Table());
        ui.Settle();
        for (const HWND window : {list, chosen, recipients})
            EXPECT_NE(std::ranges::find(WindowsThatHeard(), window), WindowsThatHeard().end());
        EXPECT_NE(SendMessageW(list, LVM_GETIMAGELIST, LVSIL_SMALL, 0), icons);
    }
    UnhookWindowsHookEx(hook);
}

} // namespace
} // namespace qx::test
