// What the pages of the sheet have in common towards it.
#pragma once

#include "dialog/dialog.h"

#include <qxfax/send_fax.h>
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
class PageHost {
public:
    // The page is filled. False: the sheet cannot be used.
    virtual bool PageCreated(HWND sheet) = 0;
    virtual SendRound& Round() noexcept = 0;
    // Every page has accepted the Send: what they have prepared is to be written.
    virtual void SendJob() noexcept = 0;

protected:
    ~PageHost() = default;
};

// After a refused Send: field gets the focus with all its text selected. Posted, since the sheet first turns to the
// page and moves the focus itself; and not every sheet asks the page where to start.
inline void FocusAfterRefusal(HWND field) noexcept
{
    PostMessageW(GetAncestor(field, GA_ROOT), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(field), TRUE);
}

// For PSN_QUERYINITIALFOCUS: the page opens on field, with all its text selected, or where the sheet chooses when field
// is null or has meanwhile been disabled or hidden.
inline INT_PTR AnswerWithField(HWND page, HWND field) noexcept
{
    if (field == nullptr || !CanTakeFocus(field))
        return Answer(page, 0);
    SendMessageW(field, EM_SETSEL, 0, -1); // means nothing to a list
    return Answer(page, reinterpret_cast<LONG_PTR>(field));
}

// For a page that could not be filled: it would show what is not so, and answer no button. Posted, since the sheet is
// not complete yet.
inline void EndSheetAsCancelled(HWND page, FaxJobData& job) noexcept
{
    job.Cancelled = 1;
    PostMessageW(GetParent(page), PSM_PRESSBUTTON, PSBTN_CANCEL, 0);
}

} // namespace qx
