// Every dialog as a screen reader meets it: is there a name for everything that can have the keyboard focus, and for
// every row that only a picture tells from the others?
#include "base/activation_context.h"
#include "dialog/dialog.h"
#include "host/window_query.h"
#include "phonebook/ui/add_recipients_dialog.h"
#include "phonebook/ui/edit_phone_book_dialog.h"
#include "record/fax_job_data.h"
#include "res/add_recipients_ids.h"
#include "res/edit_phone_book_ids.h"
#include "support/all_dialogs.h"
#include "support/languages.h"
#include "support/phone_book.h"
#include "support/screen_reader.h"
#include "support/string_library.h"
#include "support/ui_language.h"

#include <commctrl.h>
#include <gtest/gtest.h>
#include <oleacc.h>
#include <optional>
#include <tuple>

namespace qx::test {
namespace {

// The import library's is unusable.
constexpr GUID kAccessibleInterface = {0x618736E0, 0x3C3D, 0x11CF, {0x81, 0x0C, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};

bool IsSeen(HWND control)
{
    return (GetWindowLongPtrW(control, GWL_STYLE) & WS_VISIBLE) != 0;
}

// What the accessibility interface says; empty when it says nothing.
std::wstring AnnouncedName(HWND control)
{
    IAccessible* accessible = nullptr;
    if (AccessibleObjectFromWindow(control, static_cast<DWORD>(OBJID_CLIENT), kAccessibleInterface,
                                   reinterpret_cast<void**>(&accessible)) != S_OK)
        return {};
    VARIANT self{};
    self.vt = VT_I4;
    BSTR name = nullptr;
    accessible->get_accName(self, &name);
    accessible->Release();
    const std::wstring announced(name, SysStringLen(name));
    SysFreeString(name);
    return announced;
}

bool AreAtTheSamePlace(HWND a, HWND b)
{
    RECT placeA, placeB;
    GetWindowRect(a, &placeA);
    GetWindowRect(b, &placeB);
    return EqualRect(&placeA, &placeB) != FALSE;
}

// The label directly before the control, seen or not. Of two fields that take turns at one place, the other one is
// hidden, and screen readers look past it.
std::wstring LabelBefore(HWND control)
{
    HWND before = GetWindow(control, GW_HWNDPREV);
    if (host::IsOfClass(before, L"Edit") && AreAtTheSamePlace(before, control))
        before = GetWindow(before, GW_HWNDPREV);
    return host::IsOfClass(before, L"Static") ? WindowText(before) : std::wstring();
}

bool IsRadioButton(HWND control)
{
    return host::IsOfClass(control, L"Button") &&
           (GetWindowLongPtrW(control, GWL_STYLE) & BS_TYPEMASK) == static_cast<LONG_PTR>(BS_AUTORADIOBUTTON);
}

bool CanHaveTheFocus(HWND control)
{
    return (GetWindowLongPtrW(control, GWL_STYLE) & WS_TABSTOP) != 0 || IsRadioButton(control);
}

// With the texts of a language; without one, with those that are built in.
class AccessibleNames : public ::testing::TestWithParam<std::tuple<DialogCase, std::optional<Language>>> {
protected:
    // Once for all: the libraries that answer would be loaded anew with every case.
    static void SetUpTestSuite()
    {
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        const INITCOMMONCONTROLSEX classes{sizeof classes, ICC_LISTVIEW_CLASSES};
        InitCommonControlsEx(&classes);
        library_.emplace();
    }
    static void TearDownTestSuite()
    {
        library_.reset();
        CoUninitialize();
    }

    void SetUp() override
    {
        owner_ =
            CreateWindowW(L"Static", L"", WS_OVERLAPPEDWINDOW, 0, 0, 1200, 900, nullptr, nullptr, nullptr, nullptr);
        const auto& [dialog, language] = GetParam();
        if (language)
            user_.emplace(language->Id());
        const TextOwner texts{language ? library_->Module() : nullptr, L""};
        const auto nothingElse = [](HWND, UINT, WPARAM, LPARAM) -> INT_PTR { return FALSE; };
        dialog_ = CreateDialogParamW(ModuleInstance(), MAKEINTRESOURCEW(dialog.ids.Id()), owner_, nothingElse, 0);
        ASSERT_NE(dialog_, nullptr) << GetLastError();
        SetUpControls(texts, dialog_, dialog.controls);
        if (language) {
            ASSERT_EQ(CurrentTextLanguage(), language->Id());
        }
    }
    void TearDown() override
    {
        DestroyWindow(owner_);
        user_.reset();
    }

    std::vector<HWND> FocusableControls() const
    {
        std::vector<HWND> controls;
        for (HWND child = GetWindow(dialog_, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
            if (IsSeen(child) && CanHaveTheFocus(child))
                controls.push_back(child);
        }
        return controls;
    }

private:
    inline static std::optional<StringLibrary> library_;

    std::optional<UiLanguage> user_;
    HWND owner_ = nullptr;
    HWND dialog_ = nullptr;
};

TEST_P(AccessibleNames, EverythingThatCanHaveTheFocusHasOne)
{
    EXPECT_FALSE(FocusableControls().empty());
    for (const HWND control : FocusableControls()) {
        const int id = GetDlgCtrlID(control);
        // For combo boxes and lists not every system computes the name, but all take the label before.
        if (host::IsOfClass(control, L"ComboBox") || host::IsOfClass(control, WC_LISTVIEWW) ||
            host::IsOfClass(control, L"Edit")) {
            EXPECT_NE(LabelBefore(control), L"") << id;
        } else {
            EXPECT_NE(AnnouncedName(control), L"") << id;
        }
    }
}

TEST_P(AccessibleNames, AFieldIsAnnouncedByTheLabelBeforeIt)
{
    for (const HWND control : FocusableControls()) {
        if (!host::IsOfClass(control, L"Edit") || !host::IsOfClass(GetWindow(control, GW_HWNDPREV), L"Static"))
            continue;
        std::wstring label = LabelBefore(control);
        std::erase(label, L'&');
        EXPECT_EQ(AnnouncedName(control), label) << GetDlgCtrlID(control);
    }
}

TEST_P(AccessibleNames, AGroupOfChoicesIsAnnouncedByTheLabelBeforeItsFirst)
{
    for (const HWND control : FocusableControls()) {
        const bool startsAGroup = (GetWindowLongPtrW(control, GWL_STYLE) & WS_GROUP) != 0;
        if (IsRadioButton(control) && startsAGroup) {
            EXPECT_NE(LabelBefore(control), L"") << GetDlgCtrlID(control);
        }
    }
}

// The lists of the phone book, with rows.
class AnnouncedGroups : public ::testing::TestWithParam<Language> {
protected:
    AnnouncedGroups()
    {
        book_.AddEntry(L"Ann", L"1", L"", 7);
        book_.AddGroup(L"Sales", {7}, 9);
        book_.AddGroup(L"Team", {7, 8}, 10);
    }

    template <const auto& kDialog, class State> void CheckRows(State& state, int listId)
    {
        const ScreenReader reader;
        const ActivationScope context;
        const HWND dialog = CreateDialogParamW(ModuleInstance(), MAKEINTRESOURCEW(kDialog.ids.Id()), nullptr,
                                               DialogProcedure<kDialog>, reinterpret_cast<LPARAM>(&state));
        ASSERT_NE(dialog, nullptr) << GetLastError();
        ScreenReader::Meet(dialog);
        const HWND list = GetDlgItem(dialog, listId);
        EXPECT_EQ(reader.NameOf(list, 0), L"");
        EXPECT_EQ(reader.NameOf(list, 1), L"Sales, " + Filled(6108, 1));
        EXPECT_EQ(reader.NameOf(list, 2), L"Team, " + Filled(6109, 2));
        EXPECT_EQ(reader.NameOf(list), Text(5244)); // "Phone Book"
        DestroyWindow(dialog);
    }

    std::wstring Text(unsigned id) const { return LocalizedText(texts_, {id, L""}); }
    std::wstring Filled(unsigned id, int members) const
    {
        std::wstring text = Text(id);
        const std::size_t number = text.find(L"%d");
        EXPECT_NE(number, std::wstring::npos) << id;
        return number != std::wstring::npos ? text.replace(number, 2, std::to_wstring(members)) : text;
    }

    const StringLibrary library_;
    const UiLanguage user_{GetParam().Id()};
    const TextOwner texts_{library_.Module(), L""};
    TestBook book_;
};

TEST_P(AnnouncedGroups, InThePhoneBook)
{
    EditPhoneBookContext editor(texts_, *book_);
    CheckRows<kEditPhoneBookDialog>(editor, IDC_BOOK_LIST);
}

TEST_P(AnnouncedGroups, InThePicker)
{
    OwnedFaxJobData job;
    AddRecipientsContext picker{{texts_, *book_}, job.Get(), nullptr};
    CheckRows<kAddRecipientsDialog>(picker, IDC_PICK_LIST);
}

std::string LanguageName(const ::testing::TestParamInfo<Language>& info)
{
    std::string name = info.param.code;
    std::ranges::replace(name, '-', '_'); // sr-Latn
    return name;
}

INSTANTIATE_TEST_SUITE_P(, AnnouncedGroups, ::testing::ValuesIn(Languages()), LanguageName);

std::vector<std::optional<Language>> EveryLanguageAndNone()
{
    std::vector<std::optional<Language>> languages{std::nullopt};
    languages.insert(languages.end(), Languages().begin(), Languages().end());
    return languages;
}

std::string CaseName(const ::testing::TestParamInfo<AccessibleNames::ParamType>& info)
{
    const auto& [dialog, language] = info.param;
    std::string name = (language ? language->code : "built_in") + "_" + dialog.name;
    std::ranges::replace(name, '-', '_'); // sr-Latn
    return name;
}

INSTANTIATE_TEST_SUITE_P(, AccessibleNames,
                         ::testing::Combine(::testing::ValuesIn(AllDialogs()),
                                            ::testing::ValuesIn(EveryLanguageAndNone())),
                         CaseName);

} // namespace
} // namespace qx::test
