// Every dialog with the captions of the string library, in every language: can each control be reached by a letter of
// its own, and is there room for its text?
#include "dialog/button_width.h"
#include "dialog/dialog.h"
#include "host/window_query.h"
#include "res/edit_phone_book_ids.h"
#include "support/all_dialogs.h"
#include "support/languages.h"
#include "support/string_library.h"
#include "support/text_rules.h"
#include "support/ui_language.h"

#include <algorithm>
#include <commctrl.h>
#include <cstdlib>
#include <gtest/gtest.h>
#include <iterator>
#include <optional>
#include <tuple>

namespace qx::test {
namespace {

constexpr unsigned kSend = 5223;
constexpr unsigned kPreviewAndSend = 6091;

// They are printed by the driver as well, ampersand and all.
constexpr unsigned kCoverPageLabels[] = {5210, 5218, 5219, 5229};

LONG ButtonType(HWND button)
{
    return static_cast<LONG>(GetWindowLongPtrW(button, GWL_STYLE)) & BS_TYPEMASK;
}

bool IsGroupBox(HWND window)
{
    return host::IsOfClass(window, L"Button") && ButtonType(window) == BS_GROUPBOX;
}

bool IsPicture(HWND window)
{
    return host::IsOfClass(window, L"Button") && ButtonType(window) == BS_OWNERDRAW;
}

bool IsChoice(HWND window)
{
    const LONG type = ButtonType(window);
    return type == BS_AUTOCHECKBOX || type == BS_CHECKBOX || type == BS_AUTORADIOBUTTON || type == BS_RADIOBUTTON;
}

bool IsField(HWND window)
{
    return host::IsOfClass(window, L"Edit") || host::IsOfClass(window, L"ComboBox") ||
           host::IsOfClass(window, WC_LISTVIEWW);
}

bool IsLabelOfAField(HWND window)
{
    return host::IsOfClass(window, L"Static") && IsField(GetWindow(window, GW_HWNDNEXT));
}

std::string Utf8(const std::wstring& text)
{
    std::string utf8(text.size() * 4 + 1, '\0');
    const int bytes = WideCharToMultiByte(CP_UTF8, 0, text.c_str(), static_cast<int>(text.size()), utf8.data(),
                                          static_cast<int>(utf8.size()), nullptr, nullptr);
    utf8.resize(static_cast<std::size_t>(bytes));
    return utf8;
}

INT_PTR CALLBACK NothingElse(HWND, UINT, WPARAM, LPARAM)
{
    return FALSE;
}

// Of the run: tools/with-wine.sh --dpi chooses it.
int Scaled(int pixels)
{
    const HDC screen = GetDC(nullptr);
    const int dotsPerInch = GetDeviceCaps(screen, LOGPIXELSX);
    ReleaseDC(nullptr, screen);
    return MulDiv(pixels, dotsPerInch, USER_DEFAULT_SCREEN_DPI);
}

// Wide enough for a text, or high enough for the lines it breaks into. A fifteenth of the width stays free: in another
// version of the same font a text may be a little wider.
struct Room {
    HWND control;
    RECT available{};
    UINT wrap = 0;

    explicit Room(HWND of) : control(of)
    {
        const int buttonMargin = Scaled(4);
        const int checkMark = Scaled(18);
        const int groupBoxCorners = Scaled(18);
        constexpr int kSpare = 15;
        GetClientRect(of, &available);
        const auto style = static_cast<DWORD>(GetWindowLongPtrW(of, GWL_STYLE));
        if (host::IsOfClass(of, L"Static")) {
            wrap = DT_WORDBREAK;
        } else if (IsGroupBox(of)) {
            available.right -= groupBoxCorners;
        } else if (IsChoice(of)) {
            available.right -= checkMark;
            wrap = (style & BS_MULTILINE) != 0 ? DT_WORDBREAK : 0;
        } else {
            InflateRect(&available, -buttonMargin, -buttonMargin / 2);
            wrap = (style & BS_MULTILINE) != 0 ? DT_WORDBREAK : 0;
        }
        available.right -= (available.right - available.left) / kSpare;
    }

    // How much of the text, in pixels, is cut off in width or height; 0: all of it is seen.
    SIZE Missing(const std::wstring& text) const
    {
        const HDC dc = GetDC(control);
        const HGDIOBJ previous = SelectObject(dc, reinterpret_cast<HFONT>(SendMessageW(control, WM_GETFONT, 0, 0)));
        RECT needed{0, 0, available.right - available.left, 0};
        DrawTextW(dc, text.c_str(), -1, &needed, DT_CALCRECT | wrap);
        SelectObject(dc, previous);
        ReleaseDC(control, dc);
        return {std::max(0L, needed.right - (available.right - available.left)),
                std::max(0L, needed.bottom - (available.bottom - available.top))};
    }
};

// A caption with a third more words of the same length.
std::wstring GrownByAThird(const std::wstring& text)
{
    return text + text.substr(0, (text.size() + 2) / 3);
}

std::wstring Unchanged(const std::wstring& text)
{
    return text;
}

using Problems = std::vector<std::string>;

class DialogTexts : public ::testing::TestWithParam<std::tuple<DialogCase, Language>> {
protected:
    static void SetUpTestSuite()
    {
        const INITCOMMONCONTROLSEX classes{sizeof classes, ICC_LISTVIEW_CLASSES};
        InitCommonControlsEx(&classes);
        library_.emplace();
    }
    static void TearDownTestSuite() { library_.reset(); }

    void SetUp() override
    {
        owner_ = CreateWindowExW(0, L"Static", L"", WS_OVERLAPPEDWINDOW, 0, 0, 1200, 900, nullptr, nullptr, nullptr,
                                 nullptr);
        const int id = Dialog().ids.Id();
        dialog_ = CreateDialogParamW(ModuleInstance(), MAKEINTRESOURCEW(id), owner_, NothingElse, 0);
        ASSERT_NE(dialog_, nullptr) << GetLastError();
        SetUpControls(texts_, dialog_, Dialog().controls);
        ASSERT_EQ(CurrentTextLanguage(), User().Id());
        ASSERT_EQ(WrongDirection(), Problems());
        if (Dialog().fittedButton != 0)
            FitButtonToText(GetDlgItem(dialog_, Dialog().fittedButton));
    }
    void TearDown() override { DestroyWindow(owner_); }

    HWND Window() const { return dialog_; }
    static const DialogCase& Dialog() { return std::get<DialogCase>(GetParam()); }
    static const Language& User() { return std::get<Language>(GetParam()); }

    void ShowBuiltInTexts() { SetUpControls(TextOwner{nullptr, L""}, dialog_, Dialog().controls); }

    // The controls with a caption that is seen, in tab order.
    std::vector<HWND> Captioned() const
    {
        std::vector<HWND> controls;
        for (HWND child = GetWindow(dialog_, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
            const bool isSeen = (GetWindowLongPtrW(child, GWL_STYLE) & WS_VISIBLE) != 0 && !IsPicture(child);
            if ((host::IsOfClass(child, L"Button") || host::IsOfClass(child, L"Static")) && isSeen &&
                !WindowText(child).empty())
                controls.push_back(child);
        }
        return controls;
    }

    static std::string NameOf(HWND control)
    {
        return "control " + std::to_string(GetDlgCtrlID(control)) + " \"" + Utf8(WindowText(control)) + "\"";
    }

    static bool IsPrinted(HWND control)
    {
        for (const Control& row : Dialog().controls) {
            if (row.id == GetDlgCtrlID(control))
                return std::ranges::find(kCoverPageLabels, row.text) != std::end(kCoverPageLabels);
        }
        return false;
    }

    Problems SharedLetters() const
    {
        std::vector<Caption> captions;
        for (const HWND control : Captioned())
            captions.push_back({NameOf(control), WindowText(control)});
        if (!Dialog().isPage)
            return MnemonicClashes(captions);
        Problems problems;
        for (const unsigned send : {kSend, kPreviewAndSend}) {
            captions.push_back({"the Send button", Text(send)});
            for (const std::string& clash : MnemonicClashes(captions))
                problems.push_back(clash);
            captions.pop_back();
        }
        return problems;
    }

    // Every button and every field has a letter, nothing else has.
    Problems MisplacedLetters() const
    {
        Problems problems;
        for (const HWND control : Captioned()) {
            const bool hasLetter = Mnemonic(WindowText(control)) != 0;
            const int id = GetDlgCtrlID(control);
            const bool hasAKeyOfItsOwn = id == IDOK || id == IDCANCEL;
            const bool leadsSomewhere = host::IsOfClass(control, L"Button")
                                            ? !IsGroupBox(control) && !hasAKeyOfItsOwn
                                            : IsLabelOfAField(control) && !IsPrinted(control);
            if (hasLetter != leadsSomewhere)
                problems.push_back(NameOf(control) +
                                   (hasLetter ? " has a letter that leads nowhere" : " has no letter"));
        }
        return problems;
    }

    // With the text that grown makes of each.
    Problems CutCaptions(std::wstring (*grown)(const std::wstring&)) const
    {
        Problems problems;
        for (const HWND control : Captioned()) {
            const SIZE missing = Room(control).Missing(grown(WindowText(control)));
            if (missing.cx > 0)
                problems.push_back(NameOf(control) + " is too narrow");
            if (missing.cy > 0)
                problems.push_back(NameOf(control) + " is too low");
        }
        return problems;
    }

    int WidthOf(const std::wstring& text) const
    {
        const HDC dc = GetDC(dialog_);
        const HGDIOBJ previous = SelectObject(dc, reinterpret_cast<HFONT>(SendMessageW(dialog_, WM_GETFONT, 0, 0)));
        SIZE size{};
        GetTextExtentPoint32W(dc, text.c_str(), static_cast<int>(text.size()), &size);
        SelectObject(dc, previous);
        ReleaseDC(dialog_, dc);
        return size.cx;
    }

    Problems WrongDirection() const
    {
        const bool isRightToLeft = (GetWindowLongPtrW(dialog_, GWL_EXSTYLE) & WS_EX_LAYOUTRTL) != 0;
        if (isRightToLeft == User().isRightToLeft)
            return {};
        return {std::string("the dialog reads from ") + (isRightToLeft ? "right to left" : "left to right")};
    }

    std::wstring Text(unsigned id) const { return LocalizedText(texts_, {id, L""}); }

private:
    inline static std::optional<StringLibrary> library_;

    const UiLanguage user_{User().Id()};
    const TextOwner texts_{library_->Module(), L""};
    HWND owner_ = nullptr;
    HWND dialog_ = nullptr;
};

// The other tests here are whichever user they say; only this one sees what the session itself speaks.
TEST(SessionLanguage, IsTheOneAskedFor)
{
    EXPECT_TRUE(LanguageOfTheRun().Serves(GetUserDefaultUILanguage())) << std::hex << GetUserDefaultUILanguage();
}

TEST(SessionScale, IsTheOneAskedFor)
{
    const char* const asked = std::getenv("QX_DPI");
    EXPECT_EQ(Scaled(USER_DEFAULT_SCREEN_DPI), asked != nullptr ? std::atoi(asked) : USER_DEFAULT_SCREEN_DPI);
}

TEST_P(DialogTexts, NoTwoControlsShareALetter)
{
    EXPECT_EQ(SharedLetters(), Problems());
}

TEST_P(DialogTexts, EveryButtonAndEveryFieldHasALetterAndNothingElseHas)
{
    EXPECT_EQ(MisplacedLetters(), Problems());
}

TEST_P(DialogTexts, EveryCaptionIsSeenWhole)
{
    // English leaves room for the languages that are still to come.
    EXPECT_EQ(CutCaptions(User().code == "en" ? GrownByAThird : Unchanged), Problems());
}

// The columns have fixed widths, in pixels at 96 dots per inch.
struct ShownInColumn {
    const char* dialog;
    unsigned text;
    int pixels;
};

constexpr ShownInColumn kShownInColumns[] = {
    {"AddRecipients", 1104, 90},   {"AddRecipients", 5269, 90},    {"AddRecipients", 6216, 90},
    {"MapCustomFields", 1104, 80}, {"MapCustomFields", 5269, 80},  {"MapCustomFields", 6216, 80},
    {"MapCustomFields", 6088, 80}, {"MapCustomFields", 6089, 120},
};

class FixedColumns : public DialogTexts {};

TEST_P(FixedColumns, ShowTheirTextsWhole)
{
    constexpr int kMargins = 8;
    for (const ShownInColumn& shown : kShownInColumns) {
        if (std::string_view(Dialog().name) != shown.dialog)
            continue;
        const int missing = WidthOf(Text(shown.text)) + kMargins - Scaled(shown.pixels);
        EXPECT_LE(missing, 0) << shown.text << " \"" << Utf8(Text(shown.text)) << "\"";
    }
}

class WidenedButton : public DialogTexts {};

TEST_P(WidenedButton, CoversNothing)
{
    const HWND button = GetDlgItem(Window(), Dialog().fittedButton);
    RECT place{};
    ASSERT_TRUE(GetWindowRect(button, &place));
    for (HWND child = GetWindow(Window(), GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
        RECT other{}, covered{};
        GetWindowRect(child, &other);
        const bool mayOverlap = child == button || IsGroupBox(child);
        EXPECT_TRUE(mayOverlap || !IntersectRect(&covered, &place, &other)) << NameOf(child);
    }
}

class BuiltInTexts : public DialogTexts {};

TEST_P(BuiltInTexts, EveryCaptionIsSeenWholeWhenThereIsNoLibrary)
{
    ShowBuiltInTexts();
    EXPECT_EQ(CutCaptions(GrownByAThird), Problems());
}

// The lay-out is the same in every language.
class Layout : public DialogTexts {
protected:
    std::vector<HWND> Controls() const
    {
        std::vector<HWND> controls;
        for (HWND child = GetWindow(Window(), GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
            if ((GetWindowLongPtrW(child, GWL_STYLE) & WS_VISIBLE) != 0)
                controls.push_back(child);
        }
        return controls;
    }
};

TEST_P(Layout, FitsAScreenOf600Lines)
{
    RECT place{};
    ASSERT_TRUE(GetWindowRect(Window(), &place));
    EXPECT_LE(place.bottom - place.top, Scaled(560));
    EXPECT_LE(place.right - place.left, Scaled(1024));
}

TEST_P(Layout, NothingOverlapsOrLiesOutside)
{
    RECT inside{};
    ASSERT_TRUE(GetClientRect(Window(), &inside));
    const std::vector<HWND> controls = Controls();
    for (auto a = controls.begin(); a != controls.end(); ++a) {
        RECT place = PlaceOf(*a), common{};
        if (host::IsOfClass(*a, L"ComboBox"))
            place.bottom = place.top + 1; // its list lies over the others
        EXPECT_TRUE(UnionRect(&common, &inside, &place) && EqualRect(&common, &inside)) << GetDlgCtrlID(*a);
        for (auto b = std::next(a); b != controls.end(); ++b) {
            const RECT other = PlaceOf(*b);
            const bool mayOverlap = IsGroupBox(*a) != IsGroupBox(*b) || EqualRect(&place, &other); // take turns there
            EXPECT_TRUE(mayOverlap || !IntersectRect(&common, &place, &other))
                << GetDlgCtrlID(*a) << " and " << GetDlgCtrlID(*b);
        }
    }
}

// ---- the checks themselves: each names the error that is planted, and no other -------------------------------------

class PlantedError : public DialogTexts {
protected:
    HWND Delete() const { return GetDlgItem(Window(), IDC_BOOK_DELETE); }
    Problems Named(const std::wstring& caption, const std::string& problem)
    {
        SetWindowTextW(Delete(), caption.c_str());
        return {NameOf(Delete()) + problem};
    }
};

TEST_P(PlantedError, ADoubledLetter)
{
    const std::string edit = NameOf(GetDlgItem(Window(), IDC_BOOK_EDIT)); // &Bearbeiten...
    SetWindowTextW(Delete(), L"Lösche&b");
    EXPECT_EQ(SharedLetters(), (Problems{edit + " and " + NameOf(Delete()) + " share a letter"}));
}

TEST_P(PlantedError, AMissingLetter)
{
    const Problems named = Named(L"Löschen", " has no letter");
    EXPECT_EQ(MisplacedLetters(), named);
}

TEST_P(PlantedError, ALetterThatLeadsNowhere)
{
    const HWND frame = GetDlgItem(Window(), IDC_BOOK_FRAME);
    SetWindowTextW(frame, L"T&elefonbuch");
    EXPECT_EQ(MisplacedLetters(), Problems{NameOf(frame) + " has a letter that leads nowhere"});
}

TEST_P(PlantedError, ACaptionThatIsCutOff)
{
    const Problems named = Named(L"&Löschen aller ausgewählten Einträge", " is too narrow");
    EXPECT_EQ(CutCaptions(Unchanged), named);
}

TEST_P(PlantedError, TheWrongDirection)
{
    const LONG_PTR style = GetWindowLongPtrW(Window(), GWL_EXSTYLE);
    SetWindowLongPtrW(Window(), GWL_EXSTYLE, style | WS_EX_LAYOUTRTL);
    EXPECT_EQ(WrongDirection(), Problems{"the dialog reads from right to left"});
}

std::string CaseName(const ::testing::TestParamInfo<DialogTexts::ParamType>& info)
{
    const auto& [dialog, language] = info.param;
    std::string name = language.code + "_" + dialog.name;
    std::ranges::replace(name, '-', '_'); // sr-Latn
    return name;
}

// One for each direction: the texts are the same for everybody.
std::vector<Language> BothDirections()
{
    std::vector<Language> languages;
    for (const Language& language : Languages()) {
        if (languages.empty() || (languages.size() == 1 && language.isRightToLeft))
            languages.push_back(language);
    }
    return languages;
}

std::vector<DialogCase> DialogsWithAFittedButton()
{
    std::vector<DialogCase> dialogs;
    std::ranges::copy_if(AllDialogs(), std::back_inserter(dialogs),
                         [](const DialogCase& dialog) { return dialog.fittedButton != 0; });
    return dialogs;
}

std::vector<DialogCase> Dialogs(std::initializer_list<std::string_view> names)
{
    std::vector<DialogCase> dialogs;
    for (const std::string_view name : names)
        dialogs.push_back(*std::ranges::find(AllDialogs(), name, &DialogCase::name));
    return dialogs;
}

std::vector<Language> GermanAlone()
{
    return {*std::ranges::find(Languages(), "de", &Language::code)};
}

using ::testing::Combine;
using ::testing::ValuesIn;
INSTANTIATE_TEST_SUITE_P(, DialogTexts, Combine(ValuesIn(AllDialogs()), ValuesIn(Languages())), CaseName);
INSTANTIATE_TEST_SUITE_P(, WidenedButton, Combine(ValuesIn(DialogsWithAFittedButton()), ValuesIn(Languages())),
                         CaseName);
INSTANTIATE_TEST_SUITE_P(, FixedColumns,
                         Combine(ValuesIn(Dialogs({"AddRecipients", "MapCustomFields"})), ValuesIn(Languages())),
                         CaseName);
INSTANTIATE_TEST_SUITE_P(, PlantedError, Combine(ValuesIn(Dialogs({"EditPhoneBook"})), ValuesIn(GermanAlone())),
                         CaseName);
INSTANTIATE_TEST_SUITE_P(, Layout, Combine(ValuesIn(AllDialogs()), ValuesIn(BothDirections())), CaseName);
INSTANTIATE_TEST_SUITE_P(, BuiltInTexts, Combine(ValuesIn(AllDialogs()), ValuesIn(BothDirections())), CaseName);

} // namespace
} // namespace qx::test
