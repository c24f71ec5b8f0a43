// One send session of the real module: a printer of its own, the call of DisplayFaxUI on a thread of its own, and a
// user who drives the dialogs from the test's thread.
//
//     SendFaxSession session;                     // fresh printer, no settings, no phone book
//     session.SetDefault(L"ApplyDefaults", 1u);   // the sheet opens on the Fax Job page
//     session.Start();
//     session.Ui().Type(kFaxNumber, L"5550100");
//     const FaxJobData& job = session.Send();
//     EXPECT_EQ(session.Recipients(), ...);
//
// The destructor closes what is still open and takes everything back. Only tests of kind ui and host may use it: they
// have the display and the driver folder to themselves.
#pragma once

#include "base/no_copy.h"
#include "host/job.h"
#include "host/provision.h"
#include "support/built.h"
#include "support/dialog_thread.h"
#include "support/recipients.h"
#include "support/user_defaults.h"

#include <filesystem>
#include <functional>
#include <iosfwd>
#include <optional>
#include <qxfax/send_fax.h>
#include <string>
#include <vector>

namespace qx::host {

void PrintTo(const BoxContents& box, std::ostream* out);

} // namespace qx::host

namespace qx::test {

struct SessionOptions {
    // Printer name and GUID are replaced by ones of this session; a printer without GUID stays without.
    host::PrinterSetup printer;
    // What the driver puts into its record before the call.
    std::function<void(FaxJobData&)> prepare;
};

// The options of a session whose device has one value other than usual.
SessionOptions WithDevice(std::wstring name, std::variant<DWORD, std::wstring> value);
// The options of a session without the text library: all texts are the built-in ones.
SessionOptions WithoutTextLibrary();

class SendFaxSession : NoCopy {
public:
    explicit SendFaxSession(SessionOptions options = {});
    ~SendFaxSession();

    // ---- before Start
    void SetDefault(const std::wstring& name, const DefaultValue& value);
    void SetDefaults(const UserDefaults& defaults);
    void WritePhoneBook(std::string_view xml) const;

    // ---- the call
    void Start() // returns at once; may be called again after the end
    {
        Start([this] { Call(); });
    }
    void Start(std::function<void()> program); // one that makes the call itself, between other things
    void Call();                               // on the program's thread, and returns after the session
    host::UiDriver& Ui() { return ui_->Ui(); }
    const FaxJobData& Send(); // presses Send and waits for the end of the call
    const FaxJobData& Cancel();
    const FaxJobData& End(); // waits for the end of the call

    // ---- what came out
    FaxJobData& Record() { return job_.Record(); }
    std::vector<Recipient> Recipients() const { return RecipientsIn(job_.Record()); }
    UserDefaults StoredDefaults() const;

    // ---- where things are
    const std::wstring& Printer() const { return options_.printer.printer; }
    const std::wstring& Guid() const { return *options_.printer.guid; }
    HANDLE PrinterHandle() const { return printer_.Get(); }
    std::wstring SettingsKey() const; // "Software\Quillmarsh\" and the GUID, below HKEY_CURRENT_USER
    std::filesystem::path PhoneBookFile() const;
    HMODULE Module() const { return module_->Handle(); }
    DWORD UiThread() const { return ui_->Id(); }

private:
    void ForgetUser() const;

    SessionOptions options_;
    std::optional<host::FaxModule> module_;
    UniquePrinter printer_;
    host::FaxJob job_;
    std::optional<DialogThread> ui_;
};

// Boxes of the module in English, to compare with.
host::BoxContents ErrorBox(std::wstring text);
host::BoxContents WarningBox(std::wstring text, UINT icon = MB_ICONWARNING, std::vector<int> buttons = {IDOK});
host::BoxContents InformationBox(std::wstring text);

// The user's documents folder.
std::filesystem::path UsersDocuments();
// Whether all the text of an edit field is selected.
bool AllSelected(host::UiDriver& ui, int edit);

} // namespace qx::test
