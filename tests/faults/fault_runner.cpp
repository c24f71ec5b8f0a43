// Plays the sessions of one scenario, each with one call of the module failing, in a process that may end by it.
//
//   fault_runner SCENARIO count CALLS           plays it whole and writes its calls: function, number and place
//   fault_runner SCENARIO run PLAN FIRST REPORT plays it once per line of PLAN (function, number, 1 or 0: and all later
//                                               ones) from the line FIRST (0: the first) on, and writes for each
//                                               "begin LINE" and, when the process outlives it, "end LINE MARK WHAT",
//                                               where MARK is + (as asked), - (less, whole) or ! (wrong)
//   fault_runner SCENARIO ends PLAN FIRST REPORT
//                                               likewise, but a call does not fail: a process that plays the session is
//                                               ended before it (0) or after it (1), and another session follows
//   fault_runner SCENARIO cut PLAN FIRST REPORT plays it once, and judges every folder that a power cut at any moment
//                                               of it may leave, a line each: PLAN is not read
//
// and, for "ends", in the process that is ended:
//
//   fault_runner SCENARIO end PRINTER FOLDER FUNCTION NUMBER INSTANT
//
// The exit code is 0 when all has been played, whatever came out, and 6 when another process must go on behind the last
// line that ended.
#include "base/apartment.h"
#include "base/unique.h"
#include "host/utf8.h"
#include "host/window_query.h"
#include "power_cut.h"
#include "scenarios.h"
#include "support/child_process.h"
#include "support/every_call.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <sstream>
#include <thread>

namespace qx::test {
namespace {

constexpr DWORD kPatienceMilliseconds = 120000;
constexpr UINT kHung = 4, kCrashed = 5;
constexpr int kMoreToPlay = 6;
// Wine waits for all apartments that have ever been called from elsewhere, as those of file dialogs are, at once: after
// 63 nobody listens any more, and the next file dialog of the process waits forever.
constexpr int kSessionsOfAProcess = 50;
constexpr DWORD kOutcomeUnknown = 7;

// What the module must leave as it found it.
struct HostState {
    std::wstring folder;
    DWORD errorMode = 0;
    HRESULT apartment = 0;
    HANDLE context = nullptr;
    std::wstring windows; // their classes
    bool endsItsLoop = false;
    bool hasCapture = false;
    bool moduleIsLoaded = false;

    std::string DifferenceTo(const HostState& before) const
    {
        if (windows != before.windows)
            return "window left:" + host::Utf8(windows);
        if (folder != before.folder)
            return "other current directory";
        if (errorMode != before.errorMode)
            return "other error mode";
        if (apartment != before.apartment)
            return "other apartment";
        if (context != before.context)
            return "activation context left";
        if (endsItsLoop)
            return "quit message left";
        if (hasCapture)
            return "mouse captured";
        if (moduleIsLoaded)
            return "module stays loaded";
        return {};
    }
};

HostState StateOfHost()
{
    HostState state;
    wchar_t folder[MAX_PATH] = L"";
    GetCurrentDirectoryW(MAX_PATH, folder);
    state.folder = folder;
    state.errorMode = GetThreadErrorMode();
    APTTYPE type{};
    APTTYPEQUALIFIER qualifier{};
    state.apartment = CoGetApartmentType(&type, &qualifier);
    if (GetCurrentActCtx(&state.context) && state.context != nullptr)
        ReleaseActCtx(state.context);
    for (const HWND window : host::WindowsOf(GetCurrentThreadId())) {
        if (!host::IsOfClass(window, L"IME") && !host::IsOfClass(window, L"OleMainThreadWndClass")) // the system's own
            state.windows += L" " + host::ClassOf(window);
    }
    MSG message;
    state.endsItsLoop = PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE) != FALSE;
    state.hasCapture = GetCapture() != nullptr;
    return state;
}

long BlocksOf(const FaxJobData& record)
{
    long blocks = 0;
    for (const WCHAR* const text : {record.SenderName, record.SenderCompany, record.SenderFaxNo, record.SenderVoiceNo,
                                    record.NotifyEmail, record.CoverPageNotes, record.CoverPageSubject,
                                    record.OverlayPath, record.BillingCode, record.DefaultOverlayPath, record.Title})
        blocks += text != nullptr;
    for (INT32 i = 0; i < record.Recipients.Count; ++i) {
        const FaxRecipient& recipient = *record.Recipients.Items[i];
        blocks += 1 + (recipient.Name != nullptr) + (recipient.FaxNumber != nullptr) + (recipient.Company != nullptr);
    }
    blocks += record.Recipients.Items != nullptr;
    for (INT32 i = 0; i < record.Strings.Count; ++i)
        blocks += record.Strings.Items[i].Text != nullptr;
    return blocks + (record.Strings.Items != nullptr);
}

struct PlannedFault {
    SeenCall call;
    Onwards onwards = Onwards::No;
};

struct Played {
    Verdict verdict;
    bool failed = false; // the call was reached
    HeldCounts held{};
};

using Arm = std::function<void(EveryCall&)>; // right before the session

// On a thread of its own, with a module of its own: what it does when it is first used is done, and can fail, in each
// session. What the host has to complain about.
std::string PlaySession(HANDLE printer, FaxJobData& record, const std::vector<ScriptedUser::Step>& steps,
                        const Arm& arm, Played& played, std::vector<SeenCall>* seen)
{
    const UniqueKernelHandle finished(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    std::string difference;
    std::thread thread([&] {
        const std::wstring path = (BuiltFolder() / L"qxfaxui.dll").wstring();
        HostState before, after;
        {
            const host::FaxModule module(path);
            EveryCall calls(module.Handle());
            const HeldCounts held = calls.Holds();
            before = StateOfHost();
            {
                ScriptedUser user(steps);
                if (arm)
                    arm(calls);
                module.DisplayFaxUi(printer, record);
                played.failed = calls.HasFailed();
                calls.Stop();
            }
            after = StateOfHost();
            calls.GaveBack(BlocksOf(record));
            played.held = calls.Holds();
            for (std::size_t i = 0; i < held.size(); ++i)
                played.held[i] -= held[i];
            if (seen != nullptr)
                *seen = calls.Seen();
        }
        after.moduleIsLoaded = GetModuleHandleW(path.c_str()) != nullptr;
        difference = after.DifferenceTo(before);
        SetEvent(finished.Get());
    });
    if (WaitForSingleObject(finished.Get(), kPatienceMilliseconds) != WAIT_OBJECT_0)
        TerminateProcess(GetCurrentProcess(), kHung);
    thread.join();
    return difference;
}

// The document's library stays loaded, else its patched methods would be gone with it.
void KeepDocumentLibrary()
{
    static const ComApartment apartment;
    LoadLibraryW(L"msxml3.dll");
}

// A folder for all files but the phone book, which is the one for temporary files, too. A phone book of a user whose
// documents folder cannot be read lies on this system's own drive, not on the one that it shares with others.
class FolderOfSessions {
public:
    FolderOfSessions()
    {
        _wputenv_s(L"QX_BINARY_DIR", BuiltFolder().c_str()); // whatever the current drive is
        std::filesystem::current_path(std::filesystem::temp_directory_path());
        std::filesystem::create_directories(Temporary());
        for (const wchar_t* const variable : {L"TMP", L"TEMP"})
            SetEnvironmentVariableW(variable, Temporary().c_str());
    }
    const std::filesystem::path& Path() const { return folder_.Path(); }
    std::filesystem::path Temporary() const { return folder_ / L"temporary"; }

private:
    TemporaryFolder folder_;
};

// So that nobody takes it for the work of another computer that goes on.
void MakeOld(const std::filesystem::path& path)
{
    constexpr ULONGLONG kHour = ULONGLONG{36000000000};
    const UniqueFile file(CreateFileW(path.c_str(), FILE_WRITE_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                      OPEN_EXISTING, 0, nullptr));
    FILETIME written{};
    GetFileTime(file.Get(), nullptr, nullptr, &written);
    const ULONGLONG old = (ULONGLONG{written.dwHighDateTime} << 32 | written.dwLowDateTime) - kHour;
    written = {static_cast<DWORD>(old), static_cast<DWORD>(old >> 32)};
    SetFileTime(file.Get(), nullptr, nullptr, &written);
}

class Player {
public:
    explicit Player(const char* name, Scenario& scenario)
        : name_(name), scenario_(scenario), session_(scenario.Book(), scenario.Options())
    {
        scenario_.Enter(&session_, folder_.Path());
        KeepDocumentLibrary();
        // What is done once per process, such as registering a window class of a library, is not the module's.
        for (int i = 0; i < 2; ++i)
            usual_ = Once(nullptr, nullptr);
    }

    const Played& Usual() const { return usual_; }
    bool IsWornOut() const { return sessions_ >= kSessionsOfAProcess; }

    std::vector<SeenCall> Count()
    {
        std::vector<SeenCall> seen;
        usual_ = Once([](EveryCall& calls) { calls.Count(); }, &seen);
        return seen;
    }

    Verdict Play(const PlannedFault& fault)
    {
        const Arm arm = [&fault](EveryCall& calls) { calls.Fail(fault.call, fault.onwards); };
        const Played first = Once(arm, nullptr);
        if (first.verdict.kind == Kind::Wrong)
            return first.verdict;
        std::optional<Held> leaked = MoreThanUsual(first.held);
        // What is kept once, for all sessions to come, is no leak.
        for (int again = 0; again < 2 && leaked; ++again)
            leaked = MoreThanUsual(Once(arm, nullptr).held);
        if (leaked)
            return {Kind::Wrong, std::string(NameOf(*leaked)) + " left"};
        if (!first.failed)
            return {first.verdict.kind, "not reached: " + first.verdict.what};
        return first.verdict;
    }

    // The call is the last thing that a process does, or is about to do.
    Verdict PlayToTheEnd(const PlannedFault& fault)
    {
        scenario_.Reset();
        const bool after = fault.onwards == Onwards::Yes;
        const ChildProcess player(ThisProgram(), {host::Wide(name_), L"end", session_.Printer(),
                                                  folder_.Path().wstring(), host::Wide(fault.call.function),
                                                  std::to_wstring(fault.call.number), after ? L"1" : L"0"});
        const DWORD code = player.ExitCode();
        if (code != kEndedByCall && code != 0)
            return {Kind::Wrong, "the process ended with " + std::to_string(code)};
        const Verdict left = scenario_.JudgeEnded();
        if (left.kind == Kind::Wrong)
            return left;
        const Verdict next = PlayNext();
        if (next.kind == Kind::Wrong)
            return next;
        return {left.kind, (code == 0 ? "not reached: " : "") + left.what};
    }

    // Each folder that there may be after a power cut, and what is to be said of it.
    std::vector<Verdict> JudgePowerCuts()
    {
        scenario_.Reset();
        DiskRecording recording({folder_.Path()}, session_.PhoneBookFile());
        PlaySteps(scenario_.Steps(),
                  [&](EveryCall& calls) { calls.Watch([&](const WatchedCall& call) { recording.Take(call); }); });
        std::vector<Verdict> verdicts;
        for (const FolderState& state : recording.StatesAfterPowerCut()) {
            recording.Restore(state);
            verdicts.push_back(scenario_.JudgeEnded());
        }
        scenario_.Reset();
        return verdicts;
    }

private:
    std::optional<Held> MoreThanUsual(const HeldCounts& held) const
    {
        for (std::size_t i = 0; i < held.size(); ++i) {
            if (held[i] > usual_.held[i])
                return static_cast<Held>(i);
        }
        return std::nullopt;
    }

    Played Once(const Arm& arm, std::vector<SeenCall>* seen)
    {
        scenario_.Reset();
        return PlaySteps(scenario_.Steps(), arm, seen,
                         [this](const FaxJobData& record) { return scenario_.Judge(record); });
    }

    Played PlaySteps(const std::vector<ScriptedUser::Step>& steps, const Arm& arm = nullptr,
                     std::vector<SeenCall>* seen = nullptr,
                     const std::function<Verdict(const FaxJobData&)>& judge = nullptr)
    {
        ++sessions_;
        Played played;
        FaxJobData record;
        QxFaxInitJob(&record);
        record.Cancelled = kOutcomeUnknown;
        const std::string difference = PlaySession(session_.PrinterHandle(), record, steps, arm, played, seen);
        if (judge)
            played.verdict = judge(record);
        if (!difference.empty())
            played.verdict = {Kind::Wrong, difference};
        QxFaxReleaseJob(&record);
        if (!HeapValidate(GetProcessHeap(), 0, nullptr))
            played.verdict = {Kind::Wrong, "heap damaged"};
        return played;
    }

    Verdict PlayNext()
    {
        const std::filesystem::path file = session_.PhoneBookFile();
        for (const auto& entry : std::filesystem::directory_iterator(file.parent_path())) {
            if (entry.path().filename().wstring().starts_with(file.filename().wstring()))
                MakeOld(entry.path());
        }
        for (const auto& entry : std::filesystem::directory_iterator(folder_.Temporary()))
            MakeOld(entry.path());
        const std::vector<SavedItem> items = session_.SavedBook();
        return PlaySteps(Scenario::NextSteps(), nullptr, nullptr,
                         [&](const FaxJobData&) { return scenario_.JudgeNext(items); })
            .verdict;
    }

    const char* name_;
    const FolderOfSessions folder_;
    Scenario& scenario_;
    PhoneBookSession session_;
    Played usual_;
    int sessions_ = 0;
};

int Count(Player& player, const char* file)
{
    const std::vector<SeenCall> seen = player.Count();
    const Verdict& verdict = player.Usual().verdict;
    if (verdict.kind != Kind::AsAsked) {
        std::fprintf(stderr, "the scenario itself comes out as: %s\n", verdict.what.c_str());
        return 1;
    }
    std::ofstream stream(file);
    for (const SeenCall& call : seen)
        stream << call.function << ' ' << call.number << ' ' << call.place << '\n';
    return 0;
}

class Report {
public:
    explicit Report(const char* file) : file_(std::fopen(file, "a"))
    {
        if (file_ == nullptr)
            throw std::runtime_error("cannot write the report");
    }
    ~Report() { std::fclose(file_); }
    Report(const Report&) = delete;
    Report& operator=(const Report&) = delete;

    void Begin(int line)
    {
        std::fprintf(file_, "begin %d\n", line);
        std::fflush(file_);
    }
    void End(int line, const Verdict& verdict)
    {
        constexpr char kMarks[] = {'+', '-', '!'};
        std::fprintf(file_, "end %d %c %s\n", line, kMarks[static_cast<int>(verdict.kind)], verdict.what.c_str());
        std::fflush(file_);
    }

private:
    std::FILE* file_;
};

int Run(Player& player, const char* file, int first, const char* reportFile,
        Verdict (Player::*play)(const PlannedFault&))
{
    std::ifstream plan(file);
    Report report(reportFile);
    PlannedFault fault;
    int second = 0;
    for (int line = 0; plan >> fault.call.function >> fault.call.number >> second; ++line) {
        if (line < first)
            continue;
        if (player.IsWornOut())
            return kMoreToPlay;
        fault.onwards = second != 0 ? Onwards::Yes : Onwards::No;
        report.Begin(line);
        report.End(line, (player.*play)(fault));
    }
    return 0;
}

int Cut(Player& player, const char* reportFile)
{
    Report report(reportFile);
    report.Begin(0);
    int line = 0;
    for (const Verdict& verdict : player.JudgePowerCuts())
        report.End(line++, verdict);
    return 0;
}

// Comes back when the call is not reached.
int End(Scenario& scenario, const std::vector<std::string>& arguments)
{
    const UniquePrinter printer = host::OpenFaxPrinter(host::Wide(arguments[3]));
    scenario.Enter(nullptr, host::Wide(arguments[4]));
    KeepDocumentLibrary();
    const SeenCall call{.function = arguments[5], .number = std::atol(arguments[6].c_str()), .place = 0};
    const Instant instant = arguments[7] == "1" ? Instant::After : Instant::Before;
    host::FaxJob job;
    Played played;
    PlaySession(
        printer.Get(), job.Record(), scenario.Steps(), [&](EveryCall& calls) { calls.End(call, instant); }, played,
        nullptr);
    return 0;
}

// The system's own answer to a crash starts other programs.
LONG WINAPI EndAtOnce(EXCEPTION_POINTERS* exception)
{
    void* const address = exception->ExceptionRecord->ExceptionAddress;
    HMODULE module = nullptr;
    wchar_t file[MAX_PATH] = L"";
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       static_cast<LPCWSTR>(address), &module);
    GetModuleFileNameW(module, file, MAX_PATH);
    std::fprintf(stderr, "exception %lx at %ls + %llx\n", exception->ExceptionRecord->ExceptionCode, file,
                 static_cast<unsigned long long>(static_cast<BYTE*>(address) - reinterpret_cast<BYTE*>(module)));
    TerminateProcess(GetCurrentProcess(), kCrashed);
    return EXCEPTION_CONTINUE_SEARCH;
}

int Main(const std::vector<std::string>& arguments)
{
    SetUnhandledExceptionFilter(EndAtOnce);
    for (const NamedScenario& named : AllScenarios()) {
        if (arguments.size() < 4 || arguments[1] != named.name)
            continue;
        const std::unique_ptr<Scenario> scenario = named.make();
        if (arguments[2] == "end" && arguments.size() == 8)
            return End(*scenario, arguments);
        Player player(named.name, *scenario);
        if (arguments[2] == "count")
            return Count(player, arguments[3].c_str());
        if (arguments.size() != 6)
            continue;
        const int first = std::atoi(arguments[4].c_str());
        if (arguments[2] == "run")
            return Run(player, arguments[3].c_str(), first, arguments[5].c_str(), &Player::Play);
        if (arguments[2] == "ends")
            return Run(player, arguments[3].c_str(), first, arguments[5].c_str(), &Player::PlayToTheEnd);
        if (arguments[2] == "cut")
            return Cut(player, arguments[5].c_str());
    }
    std::fprintf(stderr, "usage: fault_runner SCENARIO count CALLS | SCENARIO run|ends|cut PLAN FIRST REPORT\n");
    return 2;
}

} // namespace
} // namespace qx::test

int main(int count, char** arguments)
{
    try {
        return qx::test::Main({arguments, arguments + count});
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s\n", failure.what());
        return 1;
    }
}
