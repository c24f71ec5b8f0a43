// The completing combo box beside others: on several threads, and under procedures of somebody else.
#include "base/no_copy.h"
#include "dialog/type_ahead_combo.h"
#include "support/foreign_procedure.h"

#include <commctrl.h>
#include <gtest/gtest.h>
#include <thread>

namespace qx::test {
namespace {

// A bare combo box of the calling thread.
class Combo : NoCopy {
public:
    Combo()
        : owner_(CreateWindowExW(0, WC_STATICW, L"", WS_POPUP, 0, 0, 400, 400, nullptr, nullptr, nullptr, nullptr)),
          window_(CreateWindowExW(0, WC_COMBOBOXW, L"", WS_CHILD | CBS_DROPDOWN, 0, 0, 100, 100, owner_, nullptr,
                                  nullptr, nullptr))
    {
    }
    ~Combo() { DestroyWindow(owner_); }

    HWND Owner() const { return owner_; }
    HWND Window() const { return window_; }

private:
    HWND owner_, window_;
};

TEST(NameBoxGuest, ThreadsAttachAndDetachAtTheSameTime)
{
    constexpr int kRounds = 1500;
    const auto work = [](int& lost) {
        const Combo combo;
        for (int i = 0; i < kRounds; ++i) {
            TypeAheadState state;
            AttachTypeAhead(state, combo.Window(), combo.Owner());
            // Ours says that the list is shown or not, the default procedure nothing; a place that was lost to another
            // thread leaves the box to the latter.
            lost += SendMessageW(combo.Window(), CB_SHOWDROPDOWN, FALSE, 0) == TRUE ? 0 : 1;
            DetachTypeAhead(state);
        }
    };
    int here = 0, there = 0;
    std::thread other([&] { work(there); });
    work(here);
    other.join();
    EXPECT_EQ(here + there, 0);
}

TEST(NameBoxGuest, AProcedureThatSomebodyPutsOverOursStays)
{
    {
        const Combo combo;
        TypeAheadState state;
        AttachTypeAhead(state, combo.Window(), combo.Owner());
        ForeignProcedure::PutOver(combo.Window());
        DetachTypeAhead(state);
        EXPECT_GT(SendMessageW(combo.Window(), CB_GETITEMHEIGHT, 0, 0), 0); // still a combo box below
        EXPECT_EQ(SendMessageW(combo.Window(), CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(L"Anna")), 0);
        EXPECT_EQ(SendMessageW(combo.Window(), CB_GETCOUNT, 0, 0), 1);
    }
    EXPECT_EQ(ForeignProcedure::TimesSeen(CB_GETITEMHEIGHT), 1);
    EXPECT_EQ(ForeignProcedure::TimesSeen(CB_ADDSTRING), 1);
    EXPECT_EQ(ForeignProcedure::LastSeen(), static_cast<UINT>(WM_NCDESTROY));
}

TEST(NameBoxGuest, ABoxThatIsLeftIsWhatItWas)
{
    const Combo combo;
    const LONG_PTR before = GetWindowLongPtrW(combo.Window(), GWLP_WNDPROC);
    TypeAheadState state;
    AttachTypeAhead(state, combo.Window(), combo.Owner());
    EXPECT_NE(GetWindowLongPtrW(combo.Window(), GWLP_WNDPROC), before);
    DetachTypeAhead(state);
    EXPECT_EQ(GetWindowLongPtrW(combo.Window(), GWLP_WNDPROC), before);
}

} // namespace
} // namespace qx::test
