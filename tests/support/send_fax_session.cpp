#include "support/send_fax_session.h"

#include "base/unique.h"
#include "host/utf8.h"

#include <atomic>
#include <cstdio>
#include <fstream>
#include <winspool.h>

void qx::host::PrintTo(const BoxContents& box, std::ostream* out)
{
    *out << '\'' << Utf8(box.title) << "': '" << Utf8(box.text) << "', icon " << box.icon << ", buttons";
    for (const int button : box.buttons)
        *out << ' ' << button;
}

namespace qx::test {

namespace fs = std::filesystem;

namespace {

constexpr wchar_t kDefaultsKey[] = L"\\QX-FAX\\Default";

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

host::BoxContents ErrorBox(std::wstring text)
{
    return {L"QX MFP Send Fax Error", std::move(text), MB_ICONERROR, {IDOK}};
}

host::BoxContents WarningBox(std::wstring text, UINT icon, std::vector<int> buttons)
{
    return {L"QX MFP Send Fax Warning", std::move(text), icon, std::move(buttons)};
}

host::BoxContents InformationBox(std::wstring text)
{
    return {L"QX MFP Send Fax", std::move(text), MB_ICONINFORMATION, {IDOK}};
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

SendFaxSession::SendFaxSession(SessionOptions options) : options_(OfItsOwn(std::move(options)))
{
    ForgetUser(); // a process of that number may have been ended in the middle
    host::Provision(options_.printer);
    module_.emplace(host::DriverFolder() / L"qxfaxui.dll");
    printer_ = host::OpenFaxPrinter(options_.printer.printer);
    ui_.emplace();
}

SendFaxSession::~SendFaxSession()
{
    ui_.reset(); // no more calls
    module_.reset();
    printer_.Reset();
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

void SendFaxSession::SetDefault(const std::wstring& name, const DefaultValue& value)
{
    host::SetUserValue(SettingsKey() + kDefaultsKey, {name, value});
}

void SendFaxSession::SetDefaults(const UserDefaults& defaults)
{
    for (const auto& [name, value] : defaults)
        SetDefault(name, value);
}

UserDefaults SendFaxSession::StoredDefaults() const
{
    UniqueKey key;
    RegOpenKeyExW(HKEY_CURRENT_USER, (SettingsKey() + kDefaultsKey).c_str(), 0, KEY_READ, key.Receive());
    return DefaultsIn(key.Get());
}

void SendFaxSession::WritePhoneBook(std::string_view xml) const
{
    std::ofstream(PhoneBookFile(), std::ios::binary) << xml;
}

void SendFaxSession::Start(std::function<void()> program)
{
    QxFaxReleaseJob(&Record());
    if (options_.prepare)
        options_.prepare(Record());
    ui_->Show(std::move(program));
}

void SendFaxSession::Call()
{
    module_->DisplayFaxUi(printer_.Get(), Record());
}

const FaxJobData& SendFaxSession::Send()
{
    Ui().Press(IDOK);
    return End();
}

const FaxJobData& SendFaxSession::Cancel()
{
    Ui().Press(IDCANCEL);
    return End();
}

const FaxJobData& SendFaxSession::End()
{
    ui_->End();
    return Record();
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
