// A printing program whose user sends faxes without a pause and changes the phone book with each: for tests in which
// several save it against each other. On another machine it shares the file alone: neither the guard nor the broadcasts
// of the others reach it, nor its own them.
//
//   phone_book_user PRINTER editor|picker|sender SECONDS LOG here|away
//
// To LOG it writes, line by line, "saved NAME" for each of its own entries in a phone book that has taken its place,
// and "deleting NAME" before it deletes one of them.
#include "base/unique.h"
#include "host/job.h"
#include "host/provision.h"
#include "host/utf8.h"
#include "res/add_recipients_ids.h"
#include "res/edit_phone_book_ids.h"
#include "res/entry_ids.h"
#include "res/fax_job_page_ids.h"
#include "res/setup_page_ids.h"
#include "support/phone_book_session.h"
#include "support/redirected_import.h"
#include "support/scripted_user.h"

#include <algorithm>
#include <commctrl.h>
#include <functional>
#include <iostream>
#include <optional>
#include <random>
#include <string>

namespace qx::test {
namespace {

using Script = std::vector<ScriptedUser::Step>;

constexpr int kSetupPage = 1;
constexpr std::size_t kMostOwnEntries = 12;

// ---- another machine -----------------------------------------------------------------------------------------------

HANDLE WINAPI CreateMutexOfThisMachine(SECURITY_ATTRIBUTES* security, BOOL owned, const wchar_t* name)
{
    return CreateMutexW(security, owned, name != nullptr ? (std::wstring(name) + L"-away").c_str() : nullptr);
}

UINT WINAPI RegisterMessageOfThisMachine(const wchar_t* name)
{
    return RegisterWindowMessageW((std::wstring(name) + L"-away").c_str());
}

class OtherMachine {
public:
    explicit OtherMachine(HMODULE module)
        : mutex_("CreateMutexW", CreateMutexOfThisMachine, module),
          message_("RegisterWindowMessageW", RegisterMessageOfThisMachine, module)
    {
    }

private:
    RedirectedImport<decltype(CreateMutexW)> mutex_;
    RedirectedImport<decltype(RegisterWindowMessageW)> message_;
};

// ---- what is saved --------------------------------------------------------------------------------------------------

// Tells what was in each phone book that took its place: an entry that somebody typed is saved when that has been done,
// and neither when the button was pressed nor when a save was given up.
class Saves {
public:
    using Heard = std::function<void(const std::vector<std::wstring>& names)>;

    Saves(HMODULE module, Heard heard) : move_("MoveFileExW", Move, module), heard_(std::move(heard))
    {
        current_ = this;
    }
    ~Saves() { current_ = nullptr; }

private:
    static BOOL WINAPI Move(const wchar_t* from, const wchar_t* to, DWORD flags)
    {
        std::vector<std::wstring> names;
        for (const SavedItem& item : SavedIn(from))
            names.push_back(item.name);
        const BOOL moved = current_->move_.Original()(from, to, flags);
        const DWORD error = GetLastError();
        if (moved)
            current_->heard_(names);
        SetLastError(error);
        return moved;
    }

    static inline Saves* current_ = nullptr;
    RedirectedImport<decltype(MoveFileExW)> move_;
    Heard heard_;
};

// ---- the user ------------------------------------------------------------------------------------------------------

class User {
public:
    User(std::wstring role, const std::wstring& log, bool away)
        : role_(std::move(role)), prefix_(role_ + (away ? L" away " : L" here ")),
          log_(CreateFileW(log.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS, 0, nullptr)),
          random_(GetCurrentProcessId())
    {
    }

    void NoteSaved(const std::vector<std::wstring>& names) const
    {
        for (const std::wstring& name : names) {
            if (name.starts_with(prefix_))
                Log(L"saved ", name);
        }
    }

    Script NextSession()
    {
        if (role_ == L"sender")
            return Send();
        const bool picker = role_ == L"picker";
        Script script = picker ? WayThroughThePicker() : WayThroughTheSetupPage();
        AddEntries(script, 1 + static_cast<int>(random_() % 2));
        if (random_() % 3 == 0 || own_.size() > kMostOwnEntries)
            script.emplace_back([this](ScriptedUser& user) { DeleteTheOldest(user); });
        script.emplace_back([](ScriptedUser& user) { user.Press(IDOK); });
        if (picker)
            Pick(script);
        return script;
    }

private:
    static Script WayThroughThePicker()
    {
        return {[](ScriptedUser& user) { user.Press(IDC_PHONE_BOOK); },
                [](ScriptedUser& user) { user.Press(IDC_PICK_EDIT_BOOK); }};
    }
    static Script WayThroughTheSetupPage()
    {
        return {[](ScriptedUser& user) { user.GoToPage(kSetupPage); },
                [](ScriptedUser& user) { user.Press(IDC_EDIT_PHONE_BOOK); }};
    }
    // The first row, whosever it is; the fax itself is not sent.
    static void Pick(Script& script)
    {
        script.emplace_back([](ScriptedUser& user) {
            user.SelectRows(IDC_PICK_LIST, {0});
            user.Press(IDC_PICK_TO);
            user.Press(IDOK);
        });
        script.emplace_back([](ScriptedUser& user) { user.PressSheet(IDCANCEL); });
    }

    Script Send()
    {
        return {[this](ScriptedUser& user) {
                    user.Paste(IDC_NAME_BOX, NextName());
                    user.Paste(IDC_FAX_NUMBER, L"5550100");
                    user.Press(IDC_ADD_TO_PHONE_BOOK);
                },
                [](ScriptedUser& user) { user.Press(IDC_TO); }, [](ScriptedUser& user) { user.PressSheet(IDOK); }};
    }

    void AddEntries(Script& script, int count)
    {
        for (int i = 0; i < count; ++i) {
            script.emplace_back([](ScriptedUser& user) { user.Press(IDC_BOOK_ADD_ENTRY); });
            script.emplace_back([this](ScriptedUser& user) {
                const std::wstring name = NextName();
                user.Paste(IDC_ENTRY_NAME, name);
                user.Paste(IDC_ENTRY_FAX_NUMBER, L"5550100");
                user.Press(IDOK);
                own_.push_back(name);
            });
        }
    }

    void DeleteTheOldest(ScriptedUser& user)
    {
        const std::vector<std::wstring> names = NamesIn(user.Control(IDC_BOOK_LIST));
        const auto oldest =
            std::ranges::find_if(own_, [&](const auto& name) { return std::ranges::find(names, name) != names.end(); });
        if (oldest == own_.end())
            return;
        Log(L"deleting ", *oldest);
        user.SelectRows(IDC_BOOK_LIST, {static_cast<int>(std::ranges::find(names, *oldest) - names.begin())});
        own_.erase(oldest);
        user.Press(IDC_BOOK_DELETE);
    }

    // No name begins with another: nothing is completed.
    std::wstring NextName()
    {
        std::wstring number = std::to_wstring(++count_);
        number.insert(0, 5 - number.size(), L'0');
        return prefix_ + number;
    }

    void Log(const wchar_t* what, const std::wstring& name) const
    {
        const std::string line = host::Utf8(what + name) + "\n";
        DWORD written = 0;
        WriteFile(log_.Get(), line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
    }

    const std::wstring role_;
    const std::wstring prefix_;
    const UniqueFile log_;
    std::mt19937 random_;
    std::vector<std::wstring> own_; // those that were saved or are about to be
    int count_ = 0;
};

int Run(const wchar_t* printerName, const std::wstring& role, ULONGLONG seconds, const std::wstring& log, bool away)
{
    const host::FaxModule module(host::DriverFolder() / L"qxfaxui.dll");
    const UniquePrinter printer = host::OpenFaxPrinter(printerName);
    User user(role, log, away);
    const Saves saves(module.Handle(), [&user](const auto& names) { user.NoteSaved(names); });
    std::optional<OtherMachine> otherMachine;
    if (away)
        otherMachine.emplace(module.Handle());
    for (const ULONGLONG end = GetTickCount64() + seconds * 1000; GetTickCount64() < end;) {
        host::FaxJob job;
        const ScriptedUser hands(user.NextSession());
        module.DisplayFaxUi(printer.Get(), job.Record());
    }
    return 0;
}

} // namespace
} // namespace qx::test

int wmain(int count, wchar_t** arguments)
try {
    if (count != 6)
        return 2;
    return qx::test::Run(arguments[1], arguments[2], std::wcstoull(arguments[3], nullptr, 10), arguments[4],
                         std::wstring_view(arguments[5]) == L"away");
} catch (const std::exception& failure) {
    std::cerr << failure.what() << std::endl;
    return 1;
}
