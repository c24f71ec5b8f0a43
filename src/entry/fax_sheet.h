// The modal two-page property sheet: its description, its buttons and its one-time import of old phone book data.
#pragma once

#include "pages/fax_job_page.h"
#include "pages/setup_page.h"
#include "text/localized_text.h"

#include <string>

namespace qx {

// What the sheet shows. All of it outlives the sheet.
struct FaxSheetContent {
    const TextOwner& texts;
    const std::wstring& title;
    bool startOnFaxJob;
    FaxJobPage& faxJobPage;
    SetupPage& setupPage;
};

class FaxSheet {
public:
    FaxSheet() = default;
    FaxSheet(const FaxSheet&) = delete;
    FaxSheet& operator=(const FaxSheet&) = delete;

    // Shows the sheet until the user sends or cancels; the pages write the outcome into the job record.
    void Run(const FaxSheetContent& content);

    // Called by each page while it is created: the first one makes the sheet's buttons ours, the second does nothing.
    void Hook(HWND sheet);

    // The sheet's window procedure, once it is hooked.
    LRESULT Handle(UINT message, WPARAM w, LPARAM l);

private:
    void TakeOverButtons();
    void CreateMissingPages();
    void ReloadPhoneBook();
    void ComeToFront();
    LRESULT CallPrevious(UINT message, WPARAM w, LPARAM l) const;

    const FaxSheetContent* content_ = nullptr;
    HWND owner_ = nullptr;
    HWND window_ = nullptr;
    WNDPROC previous_ = nullptr;
    HWND sendButton_ = nullptr;
    HWND helpButton_ = nullptr;
    bool cameToFront_ = false;
};

} // namespace qx
