// The phone book button of the Fax Job page: a picture, and otherwise a button like any other.
#include "base/no_copy.h"
#include "dialog/access_key.h"
#include "dialog/dialog.h"
#include "dialog/drawing.h"
#include "host/window_query.h"
#include "res/add_recipients_ids.h"
#include "res/bitmaps_ids.h"
#include "res/fax_job_page_ids.h"
#include "res/setup_page_ids.h"
#include "support/phone_book_session.h"
#include "support/system_colors.h"
#include "support/text_rules.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace qx::test {
namespace {

using host::UiDriver;

using Pixels = std::vector<COLORREF>;

class PhoneBookButton : public ::testing::Test {
protected:
    UiDriver& Open(SessionOptions options = {})
    {
        session.emplace(BookText().Entry(1, L"Ann", L"111"), std::move(options));
        return session->OpenFaxJobPage();
    }
    UiDriver& Ui() { return session->Ui(); }
    HWND Button() { return Ui().Control(IDC_PHONE_BOOK); }
    bool IsDefault(int id) { return (SendMessageW(Ui().Control(id), WM_GETDLGCODE, 0, 0) & DLGC_DEFPUSHBUTTON) != 0; }

    // As it is on the screen.
    Pixels Look()
    {
        Pixels pixels;
        Ui().Do([&pixels, button = Button()] {
            RedrawWindow(button, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
            RECT area;
            GetClientRect(button, &area);
            const HDC dc = GetDC(button);
            for (int y = 0; y < area.bottom; ++y) {
                for (int x = 0; x < area.right; ++x)
                    pixels.push_back(GetPixel(dc, x, y));
            }
            ReleaseDC(button, dc);
        });
        return pixels;
    }
    void Tell(UINT message, WPARAM w = 0, LPARAM l = 0)
    {
        Ui().Do([=, button = Button()] { SendMessageW(button, message, w, l); });
    }

    bool IsMirrored() { return (GetWindowLongPtrW(Button(), GWL_EXSTYLE) & WS_EX_LAYOUTRTL) != 0; }

    // The button as a tool of its page.
    TTTOOLINFOW Tool()
    {
        TTTOOLINFOW tool{};
        tool.cbSize = TTTOOLINFOW_V2_SIZE;
        tool.hwnd = Ui().Page();
        tool.uId = reinterpret_cast<UINT_PTR>(Button());
        return tool;
    }
    // The tooltip of the button's page, or null.
    HWND Tooltip()
    {
        TTTOOLINFOW tool = Tool();
        for (const HWND window : host::WindowsOf(session->UiThread())) {
            if (host::IsOfClass(window, TOOLTIPS_CLASSW) &&
                SendMessageW(window, TTM_GETTOOLINFOW, 0, reinterpret_cast<LPARAM>(&tool)))
                return window;
        }
        return nullptr;
    }
    std::wstring TooltipText()
    {
        wchar_t text[256] = L"";
        TTTOOLINFOW tool = Tool();
        tool.lpszText = text;
        SendMessageW(Tooltip(), TTM_GETTEXTW, 256, reinterpret_cast<LPARAM>(&tool));
        return text;
    }
    UINT TooltipFlags()
    {
        TTTOOLINFOW tool = Tool();
        SendMessageW(Tooltip(), TTM_GETTOOLINFOW, 0, reinterpret_cast<LPARAM>(&tool));
        return tool.uFlags;
    }

    std::optional<PhoneBookSession> session;
};

void CheckKeyIsItsOwn(UiDriver& ui)
{
    std::vector<Caption> captions;
    for (const HWND window : {ui.Page(), ui.Dialog()}) {
        for (HWND child = GetWindow(window, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
            if ((SendMessageW(child, WM_GETDLGCODE, 0, 0) & (DLGC_BUTTON | DLGC_STATIC)) != 0)
                captions.push_back({std::to_string(GetDlgCtrlID(child)), WindowText(child)});
        }
    }
    EXPECT_NE(Mnemonic(ui.Text(IDC_PHONE_BOOK)), 0);
    for (const std::string& clash : MnemonicClashes(captions))
        EXPECT_EQ(clash.find(std::to_string(IDC_PHONE_BOOK)), std::string::npos) << clash;
}

TEST_F(PhoneBookButton, HasAKeyThatNothingElseOnPageAndSheetHas)
{
    CheckKeyIsItsOwn(Open());
    Ui().GoToPage(1);
    Ui().Check(IDC_PREVIEW, true); // another caption of the Send button
    Ui().GoToPage(0);
    CheckKeyIsItsOwn(Ui());
}

TEST_F(PhoneBookButton, HasAKeyOfItsOwnWithoutTheTextLibraryToo)
{
    CheckKeyIsItsOwn(Open(WithoutTextLibrary()));
}

TEST_F(PhoneBookButton, ItsKeyOpensThePhoneBook)
{
    const wchar_t key = AccessKeyOf(Open().Text(IDC_PHONE_BOOK));
    Ui().Focus(IDC_COMPANY);
    constexpr LPARAM kWithAlt = 1 << 29;
    PostMessageW(Ui().Control(IDC_COMPANY), WM_SYSCHAR, key, kWithAlt | 1);
    Ui().WaitForControl(IDC_PICK_LIST);
}

TEST_F(PhoneBookButton, EnterPressesItAndDoesNotSend)
{
    Open().Type(IDC_FAX_NUMBER, L"555");
    Ui().Focus(IDC_PHONE_BOOK);
    Ui().PressKey(VK_RETURN);
    Ui().WaitForControl(IDC_PICK_LIST);
    Ui().Press(IDCANCEL);
    EXPECT_FALSE(Ui().Finished());
    EXPECT_EQ(Ui().FocusedControl(), IDC_PHONE_BOOK);
    Ui().PressKey(VK_RETURN); // again, as after a click
    Ui().WaitForControl(IDC_PICK_LIST);
}

TEST_F(PhoneBookButton, SoDoesSpace)
{
    Open().Focus(IDC_PHONE_BOOK);
    Ui().PressKey(VK_SPACE);
    Ui().WaitForControl(IDC_PICK_LIST);
}

TEST_F(PhoneBookButton, EnterThatIsStillHeldDownDoesNot)
{
    Open().Focus(IDC_PHONE_BOOK);
    Tell(WM_KEYDOWN, VK_RETURN, 0x401C0001);
    EXPECT_FALSE(Ui().HasControl(IDC_PICK_LIST));
}

TEST_F(PhoneBookButton, IsTheDefaultButtonWhileItHasTheFocus)
{
    Open();
    EXPECT_TRUE(IsDefault(IDOK));
    EXPECT_FALSE(IsDefault(IDC_PHONE_BOOK));
    Ui().Focus(IDC_PHONE_BOOK);
    EXPECT_TRUE(IsDefault(IDC_PHONE_BOOK));
    EXPECT_FALSE(IsDefault(IDOK));
    Ui().Focus(IDC_COMPANY);
    EXPECT_FALSE(IsDefault(IDC_PHONE_BOOK));
    EXPECT_TRUE(IsDefault(IDOK));
    EXPECT_EQ(GetWindowLongPtrW(Button(), GWL_STYLE) & BS_TYPEMASK, BS_OWNERDRAW);
}

TEST_F(PhoneBookButton, HasATooltipWithItsTextAndItsKey)
{
    const std::wstring caption = Open().Text(IDC_PHONE_BOOK);
    EXPECT_EQ(Tooltip(), nullptr); // opening the sheet does not wait for it
    Tell(WM_MOUSEMOVE, 0, MAKELPARAM(5, 5));
    Tell(WM_MOUSEMOVE, 0, MAKELPARAM(6, 5));
    ASSERT_NE(Tooltip(), nullptr);
    std::wstring text = caption;
    std::erase(text, L'&');
    const std::wstring key = std::wstring(L" (Alt+") + AccessKeyOf(caption) + L")";
    if (text.ends_with(L")")) // a key behind ideographs stands there once
        text.resize(text.rfind(L"("));
    EXPECT_EQ(TooltipText(), text + key);
    // It sees by itself when the pointer comes again.
    EXPECT_EQ(TooltipFlags(), TTF_IDISHWND | TTF_SUBCLASS | (IsMirrored() ? TTF_RTLREADING : 0u));
    Ui().Press(IDC_PHONE_BOOK);
    EXPECT_EQ(Ui().Title(), text); // the text is the title's
}

TEST_F(PhoneBookButton, LooksDifferentWhenHotPressedOrFocused)
{
    Open();
    const Pixels atRest = Look();
    Tell(WM_MOUSEMOVE, 0, MAKELPARAM(5, 5));
    const Pixels hot = Look();
    Tell(WM_MOUSELEAVE);
    EXPECT_EQ(Look(), atRest);
    Tell(BM_SETSTATE, TRUE);
    const Pixels pressed = Look();
    Tell(BM_SETSTATE, FALSE);
    EXPECT_EQ(Look(), atRest);
    Tell(BM_SETSTYLE, BS_DEFPUSHBUTTON);
    const Pixels isDefault = Look();
    Ui().Focus(IDC_PHONE_BOOK);
    const Pixels focused = Look();
    Ui().Focus(IDC_COMPANY);
    EXPECT_EQ(Look(), atRest);
    EXPECT_NE(hot, atRest);
    EXPECT_NE(pressed, atRest);
    EXPECT_NE(focused, atRest);
    EXPECT_NE(hot, pressed);
    EXPECT_NE(hot, focused);
    EXPECT_NE(isDefault, atRest);
    EXPECT_NE(isDefault, focused); // which is the default one, too
    EXPECT_NE(pressed, focused);
}

TEST_F(PhoneBookButton, ShowsThePictureAsItWasDrawn)
{
    Open();
    const Pixels look = Look();
    RECT area;
    GetClientRect(Button(), &area);
    const UniqueMemoryDc dc(CreateCompatibleDC(nullptr));
    const UniqueBitmap bitmap(static_cast<HBITMAP>(
        LoadImageW(session->Module(), MAKEINTRESOURCEW(IDB_PHONE_BOOK), IMAGE_BITMAP, 0, 0, LR_CREATEDIBSECTION)));
    const SelectedObject selected(dc.Get(), bitmap.Get());
    const RGBQUAD face{GetBValue(GetSysColor(COLOR_BTNFACE)), GetGValue(GetSysColor(COLOR_BTNFACE)),
                       GetRValue(GetSysColor(COLOR_BTNFACE)), 0};
    SetDIBColorTable(dc.Get(), 0, 1, &face); // the ground
    BITMAP size{};
    GetObjectW(bitmap.Get(), sizeof size, &size);
    ASSERT_LE(size.bmWidth, area.right);
    constexpr int kEdge = 3;
    for (int y = kEdge; y < size.bmHeight - kEdge; ++y) {
        for (int x = kEdge; x < size.bmWidth - kEdge; ++x) {
            EXPECT_EQ(look[static_cast<std::size_t>(y * area.right + x)],
                      GetPixel(dc.Get(), IsMirrored() ? size.bmWidth - 1 - x : x, y))
                << x << ' ' << y;
        }
    }
}

TEST_F(PhoneBookButton, FollowsTheSystemsColors)
{
    Open();
    // Larger than the picture, as with more dots per inch.
    Ui().Do([button = Button()] { SetWindowPos(button, nullptr, 0, 0, 60, 60, SWP_NOMOVE | SWP_NOZORDER); });
    const Pixels before = Look();
    const COLORREF face = GetSysColor(COLOR_BTNFACE), otherFace = RGB(200, 220, 240);
    {
        const SystemColors colors({{COLOR_BTNFACE, otherFace}});
        const Pixels look = Look();
        EXPECT_GT(std::ranges::count(look, otherFace), 200);
        EXPECT_EQ(std::ranges::count(look, otherFace), std::ranges::count(before, face));
    }
    EXPECT_EQ(Look(), before);
}

TEST_F(PhoneBookButton, HasOnlyTheSystemsColorsInHighContrast)
{
    Open();
    const SystemColors colors({{COLOR_BTNFACE, RGB(0, 0, 0)},
                               {COLOR_BTNTEXT, RGB(255, 255, 0)},
                               {COLOR_BTNHIGHLIGHT, RGB(0, 255, 255)},
                               {COLOR_BTNSHADOW, RGB(0, 255, 255)},
                               {COLOR_3DDKSHADOW, RGB(0, 255, 255)},
                               {COLOR_3DLIGHT, RGB(0, 255, 255)}});
    const Pixels look = Look();
    const auto isSystemColor = [](COLORREF color) {
        return color == RGB(0, 0, 0) || color == RGB(255, 255, 0) || color == RGB(0, 255, 255);
    };
    EXPECT_TRUE(std::ranges::all_of(look, isSystemColor));
    EXPECT_GT(std::ranges::count(look, RGB(255, 255, 0)), 100); // there is something to see
}

} // namespace
} // namespace qx::test
