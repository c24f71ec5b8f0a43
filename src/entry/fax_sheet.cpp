#include "entry/fax_sheet.h"

#include "base/activation_context.h"
#include "base/guarded.h"
#include "base/guest.h"
#include "base/lock.h"
#include "base/module.h"
#include "base/process_heap.h"
#include "base/window_procedure.h"
#include "dialog/controls.h"
#include "phonebook/book/phone_book.h"
#include "phonebook/recent/address_book_import.h"
#include "phonebook/ui/phone_book_changed.h"
#include "text/help.h"

#include <algorithm>
#include <memory>
#include <prsht.h>
#include <utility>
#include <vector>

namespace qx {

namespace {

constexpr int kPageCount = 2;
constexpr int kSendButton = IDOK;
constexpr int kHelpButton = IDHELP;
// Kept: a click shows this page, the button's own context help is another one.
constexpr int kHelpButtonTopic = 15619;
constexpr UINT kTakeOverButtons = 1465; // sent to the sheet once, when it is hooked

constexpr Text kFaxJobTitle{5313, L"Fax Job"};
constexpr Text kSetupTitle{5314, L"Setup"};
constexpr Text kSendCaption{5223, L"-&Send"};

constexpr Control kSheetControls[] = {
    {.id = kSendButton, .topic = 15596},
    {.id = IDCANCEL, .topic = 15597},
    {.id = kHelpButton, .topic = 15598},
};
static_assert(IdsAreUnique(kSheetControls));

struct HookedSheet {
    FaxSheet* sheet;
    HWND window;
};

// Sheets of this process that are hooked, one per running session. A print host serves several programs, each on a
// thread of its own. What is found stays good without the lock: only a sheet's own thread asks for it.
Lock g_sheetsLock;

std::vector<HookedSheet>& HookedSheets()
{
    static std::vector<HookedSheet> sheets = [] {
        std::vector<HookedSheet> empty;
        empty.reserve(30);
        return empty;
    }();
    return sheets;
}

// False, silently, for a sheet or a window that is there already, and when the table cannot grow.
bool Remember(FaxSheet* sheet, HWND window) noexcept
{
    return Guarded<bool>(false, [&] {
        const Locked locked(g_sheetsLock);
        auto& sheets = HookedSheets();
        if (std::ranges::any_of(sheets, [&](const auto& s) { return s.sheet == sheet || s.window == window; }))
            return false;
        sheets.push_back({sheet, window});
        return true;
    });
}

FaxSheet* SheetOf(HWND window)
{
    const Locked locked(g_sheetsLock);
    const auto found = std::ranges::find(HookedSheets(), window, &HookedSheet::window);
    return found != HookedSheets().end() ? found->sheet : nullptr;
}

void Forget(const FaxSheet* sheet) noexcept
{
    const Locked locked(g_sheetsLock);
    std::erase_if(HookedSheets(), [&](const auto& s) { return s.sheet == sheet; });
}

LRESULT CALLBACK SheetProcedure(HWND window, UINT message, WPARAM w, LPARAM l) noexcept
{
    return Guarded<LRESULT>(0, [&]() -> LRESULT {
        FaxSheet* const sheet = SheetOf(window);
        return sheet != nullptr ? sheet->Handle(message, w, l) : CallProcedureBefore(window, message, w, l);
    });
}

int CALLBACK SheetCallback(HWND, UINT, LPARAM) noexcept
{
    return 0;
}

// 1: the page may be created.
UINT CALLBACK PageCallback(HWND, UINT, PROPSHEETPAGEW*) noexcept
{
    return 1;
}

template <const auto& kPage, class State>
void DescribePage(PROPSHEETPAGEW& page, const std::wstring& title, State& state)
{
    page.dwSize = sizeof page;
    // Premature: a page that was never created gets no PSN_APPLY.
    page.dwFlags = PSP_USETITLE | PSP_HASHELP | PSP_USECALLBACK | PSP_PREMATURE;
    page.hInstance = ModuleInstance();
    page.pszTemplate = MAKEINTRESOURCEW(kPage.ids.Id());
    page.pszTitle = title.c_str();
    page.pfnDlgProc = PageProcedure<kPage>;
    page.lParam = reinterpret_cast<LPARAM>(&state);
    page.pfnCallback = PageCallback;
}

// A sheet takes its size from its pages after its place was chosen: at a corner of the screen it would reach over the
// edge. What is larger than the screen shows its beginning.
void MoveIntoSight(HWND window, HWND owner) noexcept
{
    MONITORINFO monitor{};
    monitor.cbSize = sizeof monitor;
    RECT place{};
    if (!GetMonitorInfoW(MonitorFromWindow(owner != nullptr ? owner : window, MONITOR_DEFAULTTONEAREST), &monitor) ||
        !GetWindowRect(window, &place))
        return;
    const RECT& free = monitor.rcWork;
    const LONG left = std::max(std::min(place.left, free.right - (place.right - place.left)), free.left);
    const LONG top = std::max(std::min(place.top, free.bottom - (place.bottom - place.top)), free.top);
    if (left != place.left || top != place.top)
        SetWindowPos(window, nullptr, left, top, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

} // namespace

// A program may have taken our procedure away again: then nobody told us of the window's end.
FaxSheet::~FaxSheet()
{
    if (window_ != nullptr) // else the table may not be there, and there may be no memory for it
        Forget(this);
}

void FaxSheet::Run(const FaxSheetContent& content)
{
    content_ = &content;
    owner_ = ActiveWindowOfThread();
    const std::wstring faxJobTitle = LocalizedText(content.texts, kFaxJobTitle);
    const std::wstring setupTitle = LocalizedText(content.texts, kSetupTitle);

    const std::unique_ptr<PROPSHEETPAGEW, HeapDeleter> pages(
        static_cast<PROPSHEETPAGEW*>(HeapAllocate(kPageCount * sizeof(PROPSHEETPAGEW))));
    if (pages == nullptr)
        return; // a sheet without pages never ends
    DescribePage<kFaxJobPage>(pages.get()[0], faxJobTitle, content.faxJobPage);
    DescribePage<kSetupPage>(pages.get()[1], setupTitle, content.setupPage);

    PROPSHEETHEADERW header{};
    header.dwSize = sizeof header;
    header.dwFlags = PSH_PROPSHEETPAGE | PSH_NOAPPLYNOW | PSH_USECALLBACK | PSH_HASHELP | PSH_RTLREADING;
    if (WindowsMajorVersion() >= 6)
        header.dwFlags |= PSH_NOCONTEXTHELP;
    header.hwndParent = owner_;
    header.hInstance = ModuleInstance();
    header.pszCaption = content.title.c_str();
    header.nPages = kPageCount;
    header.nStartPage = content.startOnFaxJob ? 0 : 1;
    header.ppsp = pages.get();
    header.pfnCallback = SheetCallback;

    const ActivationScope context;
    PropertySheetW(&header);
}

bool FaxSheet::PageCreated(HWND sheet)
{
    if (window_ == sheet)
        return true;
    if (!Hook(sheet))
        return false;
    return SendMessageW(sheet, kTakeOverButtons, 0, 0) != 0;
}

// Wholly or not at all: what finds its window in the table finds the procedure before it, too.
bool FaxSheet::Hook(HWND sheet) noexcept
{
    if (!Remember(this, sheet))
        return false;
    // Known before the procedure is ours: its first message may come at once.
    previous_ = reinterpret_cast<WNDPROC>(GetWindowLongPtrW(sheet, GWLP_WNDPROC));
    window_ = sheet;
    if (previous_ != nullptr && ReplaceProcedure(sheet, SheetProcedure) != nullptr) {
        ListenForPhoneBookChanged(sheet);
        return true;
    }
    window_ = nullptr;
    Forget(this);
    return false;
}

// Neither step can fail; storing the recent recipient may, without touching the job.
void FaxSheet::SendJob() noexcept
{
    const PhoneBookEntry* const typed = SaveFaxJobPage(content_->faxJobPage);
    SaveSetupPage(content_->setupPage);
    if (typed != nullptr)
        Guarded([&] { RememberRecent(content_->faxJobPage, *typed); });
}

LRESULT FaxSheet::CallPrevious(UINT message, WPARAM w, LPARAM l) const
{
    return CallWindowProcW(previous_, window_, message, w, l);
}

// A button that sends and does not say so is worse than no sheet.
bool FaxSheet::TakeOverButtons()
{
    if (!SetWindowTextW(GetDlgItem(window_, kSendButton), LocalizedText(content_->texts, kSendCaption).c_str()))
        return false;
    Guarded([&] { // there is a sheet all the same
        if (ImportOldAddressBookOnce(content_->faxJobPage.job->PrinterHandleCopy, *content_->faxJobPage.book))
            BroadcastPhoneBookChanged();
    });
    return true;
}

// Not every common-controls version creates pages up front, and only a created page is asked at Send.
void FaxSheet::CreateMissingPages()
{
    const HWND pages[kPageCount] = {content_->faxJobPage.dialog, content_->setupPage.dialog};
    if (std::ranges::find(pages, HWND{}) == std::end(pages))
        return;
    const auto shown = reinterpret_cast<HWND>(SendMessageW(window_, PSM_GETCURRENTPAGEHWND, 0, 0));
    for (int i = 0; i < kPageCount; ++i) {
        if (pages[i] == nullptr)
            SendMessageW(window_, PSM_SETCURSEL, static_cast<WPARAM>(i), 0);
    }
    for (int i = 0; i < kPageCount; ++i) {
        if (pages[i] != nullptr && pages[i] == shown)
            SendMessageW(window_, PSM_SETCURSEL, static_cast<WPARAM>(i), 0);
    }
}

void FaxSheet::BeginSend()
{
    CreateMissingPages();
    round_.Begin();
}

void FaxSheet::ReloadPhoneBook()
{
    content_->faxJobPage.book->FollowChange(false);
    RefreshNameBoxList(content_->faxJobPage);
}

void FaxSheet::BeShownFirst()
{
    // A printing program without a window of its own would leave the sheet behind other programs' windows.
    if (owner_ == nullptr)
        SetForegroundWindow(window_);
    MoveIntoSight(window_, owner_);
    FitSendButtonOfSheet(content_->setupPage); // the sheet's buttons are in their places now
}

LRESULT FaxSheet::Handle(UINT message, WPARAM w, LPARAM l)
{
    if (message == PhoneBookChangedMessage()) {
        ReloadPhoneBook();
        return 0;
    }
    switch (message) {
    case kTakeOverButtons:
        return TakeOverButtons();
    case WM_SHOWWINDOW: {
        const LRESULT result = CallPrevious(message, w, l);
        if (w != FALSE && !std::exchange(wasShown_, true))
            BeShownFirst();
        return result;
    }
    case WM_SYSCOLORCHANGE:
        PassColorChangeOn(window_);
        break;
    case WM_HELP:
    case WM_CONTEXTMENU:
        // Of the sheet's own buttons alone; over the caption, say, the system menu is asked for.
        if (ShowControlHelp(content_->texts, window_, message, w, l, kSheetControls))
            return TRUE;
        break;
    case WM_COMMAND:
        if (LOWORD(w) == kHelpButton && HIWORD(w) == 0) {
            ShowHelp(content_->texts, window_, kHelpButtonTopic);
            return 0;
        }
        if (LOWORD(w) == kSendButton && HIWORD(w) == BN_CLICKED)
            BeginSend();
        break;
    // The ways of other programs, among them those that help the user to press buttons.
    case PSM_PRESSBUTTON:
        if (w == PSBTN_OK || w == PSBTN_APPLYNOW)
            BeginSend();
        break;
    case PSM_APPLY:
        BeginSend();
        break;
    case WM_DESTROY:
        // The messages that follow are the dialog's own again: with the last one it frees its font.
        RestoreProcedure(window_, SheetProcedure, previous_);
        Forget(this);
        break;
    default:
        break;
    }
    return CallPrevious(message, w, l);
}

} // namespace qx
