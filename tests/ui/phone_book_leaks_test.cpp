#include "res/add_recipients_ids.h"
#include "res/edit_phone_book_ids.h"
#include "res/fax_job_page_ids.h"
#include "res/group_ids.h"
#include "support/phone_book_session.h"
#include "support/resource_count.h"

#include <gtest/gtest.h>

namespace qx::test {
namespace {

constexpr int kWarmUpRounds = 4;
constexpr int kRounds = 16;

// Every phone book dialog once, from the Fax Job page and back to it.
void VisitEveryDialog(host::UiDriver& ui)
{
    ui.Press(IDC_PHONE_BOOK);
    Pick(ui, {0, 2});
    ui.Press(IDC_PICK_EDIT_BOOK);
    ui.Press(IDC_BOOK_ADD_ENTRY);
    ui.Press(IDCANCEL);
    ui.Press(IDC_BOOK_ADD_GROUP);
    ui.Press(IDCANCEL);
    EditRow(ui, 2);
    ui.SelectRows(IDC_GROUP_ENTRIES, {0});
    ui.Press(IDC_GROUP_DETAILS);
    ui.Press(IDOK);
    ui.Press(IDOK);
    ui.SelectRows(IDC_BOOK_LIST, {2});
    ui.Press(IDC_BOOK_DETAILS);
    ui.Press(IDOK);
    ui.Press(IDOK);
    ui.Press(IDCANCEL);
}

// A page that is still being painted holds more than it keeps: counted once that does not change any more.
ResourceCount CountAtRest()
{
    constexpr int kAtRest = 5;
    constexpr int kMostLooks = 100;
    std::size_t objects = CountGdiObjects();
    for (int same = 1, looks = 1; same < kAtRest && looks < kMostLooks; ++looks) {
        Sleep(100);
        const std::size_t now = CountGdiObjects();
        same = now == objects ? same + 1 : 1;
        objects = now;
    }
    return CountResources();
}

// The heap is another matter: the session keeps the items of every reload until its end.
TEST(PhoneBookLeaks, DialogsGiveBackTheirWindowsDrawingObjectsAndHandles)
{
    PhoneBookSession session(BookText().Entry(1, L"Ann", L"1").Entry(2, L"Bob", L"2").Group(3, L"Sales", {1}));
    host::UiDriver& ui = session.OpenFaxJobPage();
    for (int i = 0; i < kWarmUpRounds; ++i)
        VisitEveryDialog(ui);
    const ResourceCount before = CountAtRest();
    for (int i = 0; i < kRounds; ++i)
        VisitEveryDialog(ui);
    const ResourceCount after = CountAtRest();

    // Caches of the system may settle by a few; a leak per round would be 16.
    EXPECT_LE(after.gdiObjects, before.gdiObjects + 4);
    EXPECT_LE(after.windows, before.windows + 2);
    EXPECT_LE(after.kernelHandles, before.kernelHandles + 4);
}

} // namespace
} // namespace qx::test
