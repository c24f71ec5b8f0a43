#include "entry/send_session.h"

#include "base/activation_context.h"
#include "base/guest.h"
#include "base/limits.h"
#include "base/printer.h"
#include "phonebook/file/phone_book_file.h"
#include "settings/device_state.h"
#include "settings/fax_defaults.h"
#include "settings/names.h"
#include "text/help.h"
#include "text/help_viewer.h"

namespace qx {

namespace {

constexpr Text kTitle{5325, L"QX MFP Send Fax"};
constexpr Message kNotOperational{
    {5266,
     L"The PC fax feature may be disabled at the MFP. Before sending any faxes, make sure that it is enabled. Then "
     L"update software configuration settings as described in the software Help"},
    MB_OK | MB_ICONEXCLAMATION,
    MessageTitle::Warning};

// Texts handed to the driver, the labels of its cover page: from, name, company, voice number; to, name, company;
// subject, notes, date, time, pages. Kept: two stand here twice. The driver finds texts by id, never by position.
constexpr INT32 kDriverStrings[] = {5320, 5316, 5210, 5229, 5319, 5316, 5210, 5219, 5218, 5202, 5203, 5204};

std::wstring HelpName(HANDLE printer, const wchar_t* name)
{
    return ReadPrinterText(printer, kDriverData, name, kPrinterTextUnits).value_or(L"");
}

} // namespace

SendSession::SendSession(HANDLE printer, FaxJobData& record)
    : printer_(printer), record_(record), book_(new PhoneBook(items_, PhoneBookFiles()))
{
}

SendSession::~SendSession()
{
    CloseHelpViewer();
}

void SendSession::Run()
{
    PrepareRecord();
    FindTextsAndHelp();
    WarnWhenNotOperational();
    RunSheet();
}

// The order matters to the driver. Kept: the title is looked up before there is a library, and so always the built-in
// text.
void SendSession::PrepareRecord()
{
    title_ = LocalizedText(*this, kTitle);
    SetTitle(record_, title_.c_str());
    record_.PrinterHandleCopy = printer_;
    MakeRoomForRecipients(record_);
    record_.CoverPageFromDefaults = 0; // of an earlier session that was sent without another look at its cover page

    for (const auto set :
         {SetSenderName, SetSenderFaxNo, SetSenderCompany, SetSenderVoiceNo, SetNotifyEmail, SetCoverPageNotes,
          SetCoverPageSubject, &SetOverlayPath, SetBillingCode, SetDefaultOverlayPath})
        set(record_, L"");

    ReadDeviceState(record_, printer_);
    defaultsLoaded_ = LoadFaxDefaults(record_);
    ReadCoverPageLock(record_);
}

// The spooler is asked once for the driver that both lie beside.
void SendSession::FindTextsAndHelp()
{
    const PrinterDriver driver(printer_);
    LoadStringLibrary(driver);
    FillStrings();
    FindHelp(driver);
}

void SendSession::LoadStringLibrary(const PrinterDriver& driver)
{
    const std::wstring path = StringLibraryPath(driver);
    if (path.empty())
        return;
    const ActivationScope context;
    stringLibrary_.Reset(LoadLibraryExW(path.c_str(), nullptr, DONT_RESOLVE_DLL_REFERENCES));
    hStringDll = stringLibrary_.Get();
}

void SendSession::FillStrings()
{
    RestartStrings(record_);
    for (const INT32 id : kDriverStrings) {
        wchar_t text[kTextUnits];
        if (LoadLocalizedString(*this, static_cast<unsigned>(id), text))
            AppendString(record_, id, text);
    }
}

void SendSession::FindHelp(const PrinterDriver& driver)
{
    const std::wstring cabinet = HelpName(printer_, kHelpCabinetValue);
    const std::wstring help = HelpName(printer_, kHelpFileValue);
    if (!cabinet.empty() && !help.empty())
        ExtractHelpFromCabinet(driver, cabinet, help); // only has to be there: dialogs ask by the path built next
    CopyText(HelpFilePath, BuildHelpFilePath(driver).c_str());
}

void SendSession::WarnWhenNotOperational() const
{
    if (record_.PcFaxSendOperational == 0)
        ShowFaxMessage(*this, kNotOperational, ActiveWindowOfThread());
}

void SendSession::PreparePages()
{
    for (SheetPage* const page : {static_cast<SheetPage*>(&faxJobPage_), static_cast<SheetPage*>(&setupPage_)}) {
        static_cast<TextOwner&>(*page) = *this;
        page->job = &record_;
        page->book = book_.get();
        page->sheet = &sheet_;
    }
    faxJobPage_.recent = &recent_;
    setupPage_.printer = printer_;
}

void SendSession::RunSheet()
{
    book_->SetPrinter(record_.PrinterHandleCopy);
    book_->BuildFilePath();
    book_->Load();
    PreparePages();
    recent_.Open(printer_);
    recent_.Load();
    sheet_.Run({.texts = *this,
                .title = title_,
                .startOnFaxJob = defaultsLoaded_,
                .faxJobPage = faxJobPage_,
                .setupPage = setupPage_});
}

} // namespace qx
