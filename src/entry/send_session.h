// One send session: from the driver's call of DisplayFaxUI to its return.
#pragma once

#include "base/no_copy.h"
#include "base/unique.h"
#include "entry/fax_sheet.h"
#include "pages/fax_job_page.h"
#include "pages/setup_page.h"
#include "phonebook/book/phone_book.h"
#include "phonebook/recent/recent_list.h"
#include "record/fax_job_data.h"
#include "settings/key_set.h"
#include "text/localized_text.h"

#include <memory>
#include <string>

namespace qx {

struct PhoneBookDestroyer {
    void operator()(PhoneBook* book) const noexcept { book->Destroy(); }
};

// Members are torn down from the last to the first: the book before the string library, the library before the recent
// recipients, and the store that owns all items at the very end.
class SendSession : public TextOwner, NoCopy {
public:
    SendSession(HANDLE printer, FaxJobData& record);
    ~SendSession();

    // Prepares the record, shows the sheet and returns when it is closed.
    void Run();

private:
    void PrepareRecord();
    void FindTextsAndHelp();
    void LoadStringLibrary(const PrinterDriver& driver);
    void FillStrings();
    void FindHelp(const PrinterDriver& driver);
    void WarnWhenNotOperational() const;
    void PreparePages();
    void RunSheet();

    HANDLE printer_;     // the driver's
    FaxJobData& record_; // the driver's
    KeptSubtreeName subtree_{printer_};
    KeySet keys_{record_};
    ItemStore items_;
    FaxJobPage faxJobPage_;
    SetupPage setupPage_;
    RecentRecipientList recent_;
    UniqueModule stringLibrary_;
    std::unique_ptr<PhoneBook, PhoneBookDestroyer> book_;
    std::wstring title_;
    bool defaultsLoaded_ = false;
    FaxSheet sheet_;
};

} // namespace qx
