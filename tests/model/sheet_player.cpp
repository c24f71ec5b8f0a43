// Plays users of the whole sheet, one after the other, each with a phone book and settings of his own.
//
//   sheet_player PRINTER GUID PHONEBOOK REPORT SCRIPT play FIRST COUNT EVENTS    the users FIRST, FIRST + 1, ...
//   sheet_player PRINTER GUID PHONEBOOK REPORT SCRIPT replay USER                the events of a script
//
// In SCRIPT stand the events of the user who plays, also when the process comes to a bad end. After a mistake REPORT
// holds the user's number and what was not as it must be, and the process ends with 1. At a good end it holds 0.
#include "host/provision.h"
#include "phonebook/file/file_replacement.h"
#include "sheet_user.h"
#include "support/redirected_import.h"
#include "support/temporary_folder.h"

#include <atomic>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <map>
#include <optional>
#include <thread>

namespace qx::test {
namespace {

constexpr UINT kMistake = 1;
constexpr int kPatienceSeconds = 120; // with one event

// Wine looks for the common controls' file anew, and maps it, for each window of one of their classes: a tenth of what
// the events take. Windows has no such import. All windows are made by one thread.
class RememberedLibraries : NoCopy {
public:
    RememberedLibraries()
    {
        try {
            remembering_.emplace("LoadLibraryW", Load, GetModuleHandleW(L"user32.dll"));
        } catch (const std::runtime_error&) { // a version that does without
        }
    }

private:
    using LoadFunction = HMODULE WINAPI(LPCWSTR name);

    static HMODULE WINAPI Load(LPCWSTR name)
    {
        HANDLE context = nullptr; // decides which version it is
        if (GetCurrentActCtx(&context) && context != nullptr)
            ReleaseActCtx(context);
        HMODULE& library = known_[{context, name}];
        if (library == nullptr)
            library = LoadLibraryW(name);
        return library;
    }

    static inline std::map<std::pair<HANDLE, std::wstring>, HMODULE> known_;
    std::optional<RedirectedImport<LoadFunction>> remembering_;
};

class Player {
public:
    explicit Player(wchar_t** arguments)
        : phoneBook_(arguments[3]), report_(arguments[4]), script_(arguments[5]),
          printer_(host::OpenFaxPrinter(arguments[1])), watchdog_([this](const std::stop_token& stop) { Watch(stop); })
    {
        around_.printer = printer_.Get();
        around_.module = &module_;
        around_.guid = arguments[2];
        around_.phoneBook = phoneBook_;
        around_.folder = folder_.Path();
        around_.watcher = [this](const Event& event) {
            ++events_;
            if (record_.is_open())
                record_ << TextOf(event) << std::endl;
        };
        around_.mistaken = [this](const std::string& what) { EndBadly(what); };
    }

    void Play(unsigned first, unsigned count, int eventsEach)
    {
        const auto start = std::chrono::steady_clock::now();
        for (unsigned user = first; user < first + count; ++user) {
            record_ = std::ofstream(script_);
            RandomEvents events(user, eventsEach);
            Play(user, events);
            const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
            if ((user - first + 1) % 10 == 0 || user + 1 == first + count)
                std::printf("user %u: %ld events, %.1f s\n", user, events_.load(), took.count());
            std::fflush(stdout);
        }
    }

    void Replay(unsigned user)
    {
        std::vector<std::string> script;
        std::ifstream lines(script_);
        for (std::string line; std::getline(lines, line);)
            script.push_back(line);
        ScriptedEvents events(script);
        Play(user, events);
    }

    void EndWell() const { std::ofstream(report_) << "0\n"; }

private:
    void Play(unsigned user, EventSource& events)
    {
        user_ = user;
        std::ofstream(report_) << user << "\nended in the middle\n";
        Forget();
        SheetUser(around_, user).Play(events);
        Forget();
    }

    void Forget() const
    {
        RegDeleteTreeW(HKEY_CURRENT_USER, (host::UserKey(around_.guid) + L"\\QX-FAX").c_str());
        std::vector<std::wstring> files = KeptCopies(phoneBook_.wstring());
        files.push_back(phoneBook_.wstring());
        for (const std::wstring& file : files) {
            SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_NORMAL);
            DeleteFileW(file.c_str());
        }
    }

    void EndBadly(const std::string& what)
    {
        std::ofstream(report_) << user_ << '\n' << what << std::endl;
        std::fflush(nullptr);
        TerminateProcess(GetCurrentProcess(), kMistake);
    }

    void Watch(const std::stop_token& stop)
    {
        for (long before = -1, seconds = 0; !stop.stop_requested(); ++seconds) {
            std::this_thread::sleep_for(std::chrono::seconds(1));
            if (events_ != before)
                seconds = 0;
            before = events_;
            if (seconds == kPatienceSeconds)
                EndBadly("nothing goes on");
        }
    }

    const RememberedLibraries libraries_;
    const std::filesystem::path phoneBook_, report_, script_;
    const host::FaxModule module_{host::DriverFolder() / L"qxfaxui.dll"};
    const UniquePrinter printer_;
    const TemporaryFolder folder_;
    Surroundings around_;
    std::ofstream record_;
    std::atomic<unsigned> user_ = 0;
    std::atomic<long> events_ = 0;
    const std::jthread watchdog_; // last: it uses the others
};

unsigned NumberOf(const wchar_t* text)
{
    return static_cast<unsigned>(std::wcstoul(text, nullptr, 10));
}

} // namespace
} // namespace qx::test

int wmain(int count, wchar_t** arguments)
try {
    using qx::test::NumberOf;
    const bool replays = count == 8 && std::wstring_view(arguments[6]) == L"replay";
    if (!replays && count != 10)
        return 2;
    SetErrorMode(SEM_NOGPFAULTERRORBOX); // a crash is told by whoever started this
    qx::test::Player player(arguments);
    if (replays)
        player.Replay(NumberOf(arguments[7]));
    else
        player.Play(NumberOf(arguments[7]), NumberOf(arguments[8]), static_cast<int>(NumberOf(arguments[9])));
    player.EndWell();
    return 0;
} catch (const std::exception& failure) {
    std::fprintf(stderr, "%s\n", failure.what());
    return 4;
}
