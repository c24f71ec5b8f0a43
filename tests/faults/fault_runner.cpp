// Plays the sessions of one scenario, each with one call of the module failing, in a process that may end by it.
//
//   fault_runner SCENARIO count CALLS           plays it whole and writes its calls: function, number and place
//   fault_runner SCENARIO run PLAN FIRST REPORT plays it once per line of PLAN (function, number, 1 or 0: and all later
//                                               ones) from the line FIRST (0: the first) on, and writes for each
//                                               "begin LINE" and, when the process outlives it, "end LINE MARK WHAT",
//                                               where MARK is + (as asked), - (less, whole) or ! (wrong)
//
// The exit code is 0 when all has been played, whatever came out.
#include "base/apartment.h"
#include "base/unique.h"
#include "host/utf8.h"
#include "host/window_query.h"
#include "scenarios.h"
#include "support/every_call.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <sstream>
#include <thread>

namespace qx::test {
namespace {

constexpr DWORD kPatienceMilliseconds = 30000;
constexpr UINT kHung = 4, kCrashed = 5;
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

class Player {
public:
    explicit Player(Scenario& scenario) : scenario_(scenario), session_(scenario.Book(), scenario.Options())
    {
        scenario_.Enter(session_);
        // The document's library stays loaded, else its patched methods would be gone with it.
        static const ComApartment apartment;
        LoadLibraryW(L"msxml3.dll");
        // What is done once per process, such as registering a window class of a library, is not the module's.
        for (int i = 0; i < 2; ++i)
            usual_ = Once(std::nullopt, nullptr);
    }

    const Played& Usual() const { return usual_; }

    std::vector<SeenCall> Count()
    {
        std::vector<SeenCall> seen;
        usual_ = Once(std::nullopt, &seen);
        return seen;
    }

    Verdict Play(const PlannedFault& fault)
    {
        const Played first = Once(fault, nullptr);
        if (first.verdict.kind == Kind::Wrong)
            return first.verdict;
        std::optional<Held> leaked = MoreThanUsual(first.held);
        // What is kept once, for all sessions to come, is no leak.
        for (int again = 0; again < 2 && leaked; ++again)
            leaked = MoreThanUsual(Once(fault, nullptr).held);
        if (leaked)
            return {Kind::Wrong, std::string(NameOf(*leaked)) + " left"};
        if (!first.failed)
            return {first.verdict.kind, "not reached: " + first.verdict.what};
        return first.verdict;
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

    Played Once(const std::optional<PlannedFault>& fault, std::vector<SeenCall>* seen)
    {
        scenario_.Reset();
        Played played;
        FaxJobData record;
        QxFaxInitJob(&record);
        record.Cancelled = kOutcomeUnknown;
        const HANDLE finished = CreateEventW(nullptr, TRUE, FALSE, nullptr);
        std::string difference;
        std::thread thread([&] {
            // A module of its own: what it does when it is first used is done, and can fail, in each session.
            const std::wstring path = (BuiltFolder() / L"qxfaxui.dll").wstring();
            const HMODULE module = LoadLibraryW(path.c_str());
            HostState before, after;
            {
                EveryCall calls(module);
                const auto display = reinterpret_cast<decltype(&DisplayFaxUI)>(
                    reinterpret_cast<void*>(GetProcAddress(module, "DisplayFaxUI")));
                const HeldCounts held = calls.Holds();
                before = StateOfHost();
                {
                    ScriptedUser user(scenario_.Steps());
                    if (fault)
                        calls.Fail(fault->call, fault->onwards);
                    else if (seen != nullptr)
                        calls.Count();
                    display(session_.PrinterHandle(), &record);
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
            FreeLibrary(module);
            after.moduleIsLoaded = GetModuleHandleW(path.c_str()) != nullptr;
            difference = after.DifferenceTo(before);
            SetEvent(finished);
        });
        if (WaitForSingleObject(finished, kPatienceMilliseconds) != WAIT_OBJECT_0)
            TerminateProcess(GetCurrentProcess(), kHung);
        thread.join();
        CloseHandle(finished);
        played.verdict = scenario_.Judge(record);
        if (!difference.empty())
            played.verdict = {Kind::Wrong, difference};
        QxFaxReleaseJob(&record);
        if (!HeapValidate(GetProcessHeap(), 0, nullptr))
            played.verdict = {Kind::Wrong, "heap damaged"};
        return played;
    }

    Scenario& scenario_;
    PhoneBookSession session_;
    Played usual_;
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

int Run(Player& player, const char* file, int first, const char* report)
{
    std::ifstream plan(file);
    std::FILE* const out = std::fopen(report, "a");
    if (out == nullptr)
        return 1;
    PlannedFault fault;
    int onwards = 0;
    for (int line = 0; plan >> fault.call.function >> fault.call.number >> onwards; ++line) {
        if (line < first)
            continue;
        fault.onwards = onwards != 0 ? Onwards::Yes : Onwards::No;
        std::fprintf(out, "begin %d\n", line);
        std::fflush(out);
        const Verdict verdict = player.Play(fault);
        constexpr char kMarks[] = {'+', '-', '!'};
        std::fprintf(out, "end %d %c %s\n", line, kMarks[static_cast<int>(verdict.kind)], verdict.what.c_str());
        std::fflush(out);
    }
    std::fclose(out);
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
        Player player(*scenario);
        if (arguments[2] == "count")
            return Count(player, arguments[3].c_str());
        if (arguments[2] == "run" && arguments.size() == 6)
            return Run(player, arguments[3].c_str(), std::atoi(arguments[4].c_str()), arguments[5].c_str());
    }
    std::fprintf(stderr, "usage: fault_runner SCENARIO count CALLS | SCENARIO run PLAN FIRST REPORT\n");
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
