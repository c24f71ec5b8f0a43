// A number field that refuses other characters, on a bare edit control.
#include "dialog/number_filter.h"

#include "base/number_text.h"
#include "dialog/dialog.h"
#include "support/failing_calls.h"

#include <gtest/gtest.h>

namespace qx {
namespace {

using namespace test;

constexpr int kField = 7;

class NumberFilterTest : public ::testing::Test {
protected:
    NumberFilterTest()
    {
        SetWindowLongPtrW(parent, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(&filter));
        SetWindowLongPtrW(parent, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(Route));
    }
    ~NumberFilterTest() override { DestroyWindow(parent); }

    std::wstring Shown() const { return WindowText(edit, 100); }

    NumberFilter filter{.allowed = AllowedInFaxNumber, .accepted = {}, .units = 20};
    HWND parent = CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 100, 100, nullptr, nullptr, nullptr, nullptr);
    HWND edit = CreateWindowExW(0, L"EDIT", L"", WS_CHILD, 0, 0, 90, 20, parent,
                                reinterpret_cast<HMENU>(LONG_PTR{kField}), nullptr, nullptr);

private:
    static LRESULT CALLBACK Route(HWND window, UINT message, WPARAM w, LPARAM l)
    {
        if (message == WM_COMMAND && HIWORD(w) == EN_CHANGE)
            RefuseOtherCharacters(*reinterpret_cast<NumberFilter*>(GetWindowLongPtrW(window, GWLP_USERDATA)), window,
                                  LOWORD(w));
        return DefWindowProcW(window, message, w, l);
    }
};

TEST_F(NumberFilterTest, TakesBackWhatIsNoNumber)
{
    SetFilteredText(filter, parent, kField, L"030");
    SetWindowTextW(edit, L"030-1");
    EXPECT_EQ(Shown(), L"030-1");
    SetWindowTextW(edit, L"call me");
    EXPECT_EQ(Shown(), L"030-1");
}

// The field is empty then: a page that took it for filled would send without the number.
TEST_F(NumberFilterTest, ATextThatCannotBeReadWhileItIsSetWasNotSet)
{
    SetFilteredText(filter, parent, kField, L"555");
    FailingCalls<decltype(GetWindowTextW), struct Reads> reads(nullptr, "GetWindowTextW", 0);
    reads.FailOnly(1);
    EXPECT_THROW(SetFilteredText(filter, parent, kField, L"030"), std::exception);
    EXPECT_TRUE(reads.HasFailed());
    reads.FailNone();
    EXPECT_EQ(Shown(), L"");
    SetFilteredText(filter, parent, kField, L"030");
    EXPECT_EQ(Shown(), L"030");
}

} // namespace
} // namespace qx
