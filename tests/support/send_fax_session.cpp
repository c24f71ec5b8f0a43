#include "support/send_fax_session.h"

#include "host/utf8.h"
#include "support/documented_controls.h"

#include <atomic>
#include <cstdio>
#include <fstream>
#include <future>
#include <winspool.h>

namespace qx::test {

namespace fs = std::filesystem;

namespace {

using DisplayFaxUiFunction = decltype(&DisplayFaxUI);

// Test programs may run at the same time, and sessions follow each other in one.
std::wstring FreshName()
{
    static std::atomic<unsigned> count{0};
    return std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(++count);
}

SessionOptions OfItsOwn(SessionOptions options)
{
    const std::wstring name = FreshName();
    options.printer.printer = L"QX Test " + name;
    if (options.printer.guid)
        options.printer.guid = L"{test-" + name + L"}";
    if (options.printer.moduleFolder.empty())
        options.printer.moduleFolder = BuiltFolder();
    return options;
}

} // namespace

SessionOptions WithDevice(std::wstring name, std::variant<DWORD, std::wstring> value)
{
    SessionOptions options;
    options.printer.SetDevice(std::move(name), std::move(value));
    return options;
}

SessionOptions WithoutTextLibrary()
{
    SessionOptions options;
    options.printer.textLibrary = false;
    return options;
}

fs::path UsersDocuments()
{
    wchar_t folder[MAX_PATH] = L"";
    DWORD bytes = sizeof folder;
    RegGetValueW(HKEY_CURRENT_USER, L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders",
                 L"Personal", RRF_RT_REG_SZ, nullptr, folder, &bytes);
    return folder;
}

bool AllSelected(host::UiDriver& ui, int edit)
{
    const LRESULT selection = SendMessageW(ui.Control(edit), EM_GETSEL, 0, 0);
    return LOWORD(selection) == 0 && HIWORD(selection) == ui.Text(edit).size();
}

SendFaxSession::SendFaxSession(SessionOptions options)
    : options_(OfItsOwn(std::move(options))), start_(CreateEventW(nullptr, FALSE, FALSE, nullptr)),
      finished_(CreateEventW(nullptr, TRUE, TRUE, nullptr))
{
    QxFaxInitJob(&record_);
    ForgetUser(); // a process of that number may have been ended in the middle
    host::Provision(options_.printer);
    module_ = LoadLibraryW((host::DriverFolder() / L"qxfaxui.dll").c_str());
    if (module_ == nullptr)
        throw std::runtime_error(host::SystemError("cannot load the module", GetLastError()));
    PRINTER_DEFAULTSW access{nullptr, nullptr, PRINTER_ALL_ACCESS};
    OpenPrinterW(options_.printer.printer.data(), &printer_, &access);

    std::promise<DWORD> threadId;
    uiThread_ = std::thread([this, &threadId] {
        threadId.set_value(GetCurrentThreadId());
        RunCalls();
    });
    uiThreadId_ = threadId.get_future().get();
    ui_ = std::make_unique<host::UiDriver>(uiThreadId_, finished_);
}

SendFaxSession::~SendFaxSession()
{
    try {
        ui_->CloseEverything();
    } catch (const host::UiFailure& failure) {
        // The module's thread cannot be ended from here: better no more tests than tests beside a stuck dialog.
        std::fprintf(stderr, "%s\n", failure.what());
        std::fflush(nullptr);
        TerminateProcess(GetCurrentProcess(), 1);
    }
    ui_.reset();
    leaving_ = true;
    SetEvent(start_);
    uiThread_.join();
    CloseHandle(start_);
    CloseHandle(finished_);

    QxFaxReleaseJob(&record_);
    FreeLibrary(module_);
    ClosePrinter(printer_);
    try {
        host::RemovePrinter(options_.printer.printer);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s\n", failure.what());
    }
    ForgetUser();
}

void SendFaxSession::ForgetUser() const
{
    std::error_code ignored;
    fs::remove(PhoneBookFile(), ignored);
    if (options_.printer.guid)
        host::RemoveUserSettings(*options_.printer.guid);
}

void SendFaxSession::RunCalls()
{
    const auto display =
        reinterpret_cast<DisplayFaxUiFunction>(reinterpret_cast<void*>(GetProcAddress(module_, "DisplayFaxUI")));
    const auto controls = DocumentedControls::WhenAsked();
    while (WaitForSingleObject(start_, INFINITE) == WAIT_OBJECT_0 && !leaving_) {
        display(printer_, &record_);
        SetEvent(finished_);
    }
}

void SendFaxSession::SetDefault(const std::wstring& name, const std::variant<DWORD, std::wstring>& value)
{
    host::SetUserValue(SettingsKey() + L"\\QX-FAX\\Default", {name, value});
}

void SendFaxSession::WritePhoneBook(std::string_view xml) const
{
    std::ofstream(PhoneBookFile(), std::ios::binary) << xml;
}

void SendFaxSession::Start()
{
    QxFaxReleaseJob(&record_);
    if (options_.prepare)
        options_.prepare(record_);
    ResetEvent(finished_);
    SetEvent(start_);
}

const FaxJobData& SendFaxSession::Send()
{
    ui_->Press(IDOK);
    return End();
}

const FaxJobData& SendFaxSession::Cancel()
{
    ui_->Press(IDCANCEL);
    return End();
}

const FaxJobData& SendFaxSession::End()
{
    ui_->WaitForEnd();
    return record_;
}

std::vector<Recipient> SendFaxSession::Recipients() const
{
    std::vector<Recipient> recipients;
    for (INT32 i = 0; i < record_.RecipientCount; ++i) {
        const FaxRecipient& recipient = *record_.Recipients.Items[i];
        recipients.push_back({recipient.Name, recipient.FaxNumber, recipient.Company});
    }
    return recipients;
}

std::wstring SendFaxSession::SettingsKey() const
{
    return host::UserKey(options_.printer.guid.value_or(L""));
}

fs::path SendFaxSession::PhoneBookFile() const
{
    return UsersDocuments() / (options_.printer.guid.value_or(L"qxfaxab") + L".xml");
}

} // namespace qx::test
