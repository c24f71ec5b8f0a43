// What the pages of the sheet have in common towards it.
#pragma once

#include "base/no_copy.h"
#include "dialog/dialog.h"
#include "record/fax_job_data.h"
#include "text/localized_text.h"

#include <optional>
#include <qxfax/send_fax.h>
#include <stdexcept>
#include <windows.h>

namespace qx {

// One press of Send. The sheet asks its pages one after the other; each checks itself, prepares what it is going to
// write to the job record, and accepts or refuses. Nothing is written before all have accepted, in whatever order they
// are asked and whether or not a refusal ends the asking.
class SendRound {
public:
    enum Page : unsigned { kFaxJob = 1, kSetup = 2 };

    // Send is pressed. The page that is asked first may be another one than the last time: what was asked then, and
    // ended with a refusal, is over.
    void Begin() noexcept { *this = {}; }

    // Not every press is heard of: a page that is asked a second time is asked by the next one.
    void Ask(Page page) noexcept
    {
        if ((asked_ & page) != 0)
            *this = {};
        asked_ |= page;
    }

    // True when every page has now accepted. That ends the round.
    [[nodiscard]] bool Accept(Page page) noexcept
    {
        accepted_ |= page;
        if (accepted_ != (kFaxJob | kSetup))
            return false;
        *this = {};
        return true;
    }

private:
    unsigned asked_ = 0;
    unsigned accepted_ = 0;
};

// The sheet as its pages see it.
class PageHost : NoCopy {
public:
    // The page is filled. False: the sheet cannot be used.
    virtual bool PageCreated(HWND sheet) = 0;
    virtual SendRound& Round() noexcept = 0;
    // Every page has accepted the Send: what they have prepared is to be written.
    virtual void SendJob() noexcept = 0;

protected:
    ~PageHost() = default;
};

class PhoneBook;

// The state that every page of the sheet begins with.
struct SheetPage : TextOwner {
    // Set before the page is created; the page owns none of them.
    FaxJobData* job = nullptr;
    PhoneBook* book = nullptr;
    PageHost* sheet = nullptr;

    HWND dialog = nullptr;                // null until the page is created
    std::optional<OwnedFaxJobData> draft; // what a Send that the page has accepted writes to the job
    // The control that last failed on Send, or 0. Kept: it is never cleared, so that the page opens on it from then on.
    int errorField = 0;
};

// What a page does when the sheet asks.
template <class Page> struct PageDuties {
    SendRound::Page place;
    void (*activate)(Page&);        // the page is shown
    bool (*validate)(Page&);        // tells the user what is wrong, and sets errorField; true: nothing is
    bool (*prepare)(Page&);         // fills the draft; false, or an exception: the Send is refused
    int (*errorField)(const Page&); // the control where the user sees the page's errorField
};

inline HWND ControlOrNull(HWND dialog, int control) noexcept
{
    return control != 0 ? GetDlgItem(dialog, control) : nullptr;
}

// After a refused Send: field gets the focus with all its text selected. Posted, since the sheet first turns to the
// page and moves the focus itself; and not every sheet asks the page where to start.
inline void FocusAfterRefusal(HWND field) noexcept
{
    PostMessageW(GetAncestor(field, GA_ROOT), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(field), TRUE);
}

template <class Page> bool AcceptsSend(Page& page, const PageDuties<Page>& duties)
{
    page.sheet->Round().Ask(duties.place);
    page.draft.reset();
    const bool valid = duties.validate(page);
    if (!valid)
        FocusAfterRefusal(ControlOrNull(page.dialog, duties.errorField(page)));
    if (!valid || !duties.prepare(page)) {
        duties.activate(page); // the sheet turns to it, and not every sheet says so
        return false;
    }
    if (page.sheet->Round().Accept(duties.place))
        page.sheet->SendJob();
    return true;
}

// The page opens on field, with all its text selected, or where the sheet chooses when field is null or has meanwhile
// been disabled or hidden.
inline LONG_PTR InitialFocus(HWND field) noexcept
{
    if (field == nullptr || !CanTakeFocus(field))
        return 0;
    SendMessageW(field, EM_SETSEL, 0, -1); // means nothing to a list
    return reinterpret_cast<LONG_PTR>(field);
}

// For the notifications of the sheet. FALSE: not one of them.
template <class Page> INT_PTR AnswerSheet(Page& page, const PageDuties<Page>& duties, UINT code)
{
    switch (code) {
    case PSN_SETACTIVE:
        duties.activate(page);
        return Answer(page.dialog, 0);
    case PSN_APPLY:
        return Answer(page.dialog, AcceptsSend(page, duties) ? PSNRET_NOERROR : PSNRET_INVALID);
    case PSN_RESET:
        page.job->Cancelled = 1;
        return Answer(page.dialog, 0);
    case PSN_QUERYINITIALFOCUS:
        return Answer(page.dialog, InitialFocus(ControlOrNull(page.dialog, duties.errorField(page))));
    default:
        return FALSE;
    }
}

// For a page that is filled: it cannot do without the sheet's hooks.
inline void HookSheet(SheetPage& page)
{
    if (!page.sheet->PageCreated(GetParent(page.dialog)))
        throw std::runtime_error("the sheet cannot be hooked");
}

// For a page that could not be filled: it would show what is not so, and answer no button. Posted, since the sheet is
// not complete yet.
template <class Page> void EndAsCancelled(Page& page) noexcept
{
    page.job->Cancelled = 1;
    PostMessageW(GetParent(page.dialog), PSM_PRESSBUTTON, PSBTN_CANCEL, 0);
}

} // namespace qx
