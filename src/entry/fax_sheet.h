// The modal two-page property sheet: its description, its buttons and its one-time import of old phone book data.
#pragma once

#include "pages/fax_job_page.h"
#include "pages/setup_page.h"
#include "pages/sheet_page.h"
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

class FaxSheet final : public PageHost {
public:
    FaxSheet() = default;
    ~FaxSheet();

    // Shows the sheet until the user sends or cancels; the pages write the outcome into the job record. Without memory
    // for its description there is no sheet, and the record stays as it is.
    void Run(const FaxSheetContent& content);

    // Called by each page while it is created: the first one makes the sheet's buttons ours, the second does nothing.
    bool PageCreated(HWND sheet) override;
    SendRound& Round() noexcept override { return round_; }
    void SendJob() noexcept override;

    // The sheet's window procedure, once it is hooked.
    LRESULT Handle(UINT message, WPARAM w, LPARAM l);

private:
    bool Hook(HWND sheet) noexcept;
    bool TakeOverButtons();
    void BeginSend();
    void CreateMissingPages();
    void ReloadPhoneBook();
    void BeShownFirst();
    LRESULT CallPrevious(UINT message, WPARAM w, LPARAM l) const;

    const FaxSheetContent* content_ = nullptr;
    HWND owner_ = nullptr;
    HWND window_ = nullptr;
    WNDPROC previous_ = nullptr;
    bool wasShown_ = false;
    SendRound round_;
};

} // namespace qx
