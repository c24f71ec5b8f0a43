#include "phone_book_worker.h"

#include "support/documents_folder.h"
#include "support/thorough.h"

#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace qx {
namespace {

using namespace test;

constexpr int kKilled = 99;

class Process {
public:
    explicit Process(std::wstring commandLine)
    {
        STARTUPINFOW startup{};
        startup.cb = sizeof startup;
        PROCESS_INFORMATION started{};
        if (CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                           &started)) {
            CloseHandle(started.hThread);
            process_.Reset(started.hProcess);
        }
    }

    bool Started() const noexcept { return static_cast<bool>(process_); }
    bool Runs() const noexcept { return WaitForSingleObject(process_.Get(), 0) == WAIT_TIMEOUT; }

    void Kill() const noexcept
    {
        TerminateProcess(process_.Get(), kKilled);
        WaitForSingleObject(process_.Get(), INFINITE);
    }

    int ExitCode() const noexcept
    {
        DWORD code = 0;
        WaitForSingleObject(process_.Get(), INFINITE);
        GetExitCodeProcess(process_.Get(), &code);
        return static_cast<int>(code);
    }

private:
    UniqueKernelHandle process_;
};

class PhoneBookProcesses : public ::testing::Test {
protected:
    std::wstring Path() const { return documents.File(L"qxfaxab.xml"); }

    Process StartWorker(const std::wstring& arguments) const
    {
        wchar_t self[MAX_PATH];
        GetModuleFileNameW(nullptr, self, MAX_PATH);
        const std::wstring folder(self, std::wstring_view(self).rfind(L'\\') + 1);
        return Process(L"\"" + folder + L"phone_book_worker.exe\" " + arguments);
    }

    DocumentsFolder documents;
    std::mt19937 random{4711};
};

// Sleep is too coarse to hit every step of a save.
void WaitMicroseconds(unsigned duration)
{
    LARGE_INTEGER frequency;
    LARGE_INTEGER now;
    QueryPerformanceFrequency(&frequency);
    QueryPerformanceCounter(&now);
    const LONGLONG end = now.QuadPart + frequency.QuadPart * duration / 1000000;
    while (now.QuadPart < end)
        QueryPerformanceCounter(&now);
}

TEST_F(PhoneBookProcesses, AProcessKilledAtAnyMomentOfASaveLeavesAWholePhoneBook)
{
    const int kKills = Rounds(60, 200);
    constexpr unsigned kLongestWait = 15000; // microseconds; several saves
    ASSERT_TRUE(SaveStamped(Path(), L"before"));
    const std::wstring eventName = L"QXTest-" + std::to_wstring(GetCurrentProcessId());
    const UniqueKernelHandle saving(CreateEventW(nullptr, FALSE, FALSE, eventName.c_str()));
    for (int kill = 0; kill < kKills; ++kill) {
        const Process worker = StartWorker(L"save \"" + Path() + L"\" " + eventName);
        ASSERT_TRUE(worker.Started());
        ASSERT_EQ(WaitForSingleObject(saving.Get(), 30000), WAIT_OBJECT_0);
        WaitMicroseconds(static_cast<unsigned>(random() % kLongestWait));
        worker.Kill();
        ASSERT_TRUE(HoldsOneStamp(Path())) << "kill " << kill;
    }
    // What the dead left beside it goes with a later save, when nobody can be writing it any more.
    for (const std::wstring& name : documents.Files()) {
        if (name.ends_with(L".new"))
            MakeOld(documents.File(name));
    }
    EXPECT_TRUE(SaveStamped(Path(), L"after"));
    EXPECT_EQ(documents.Files(), std::vector<std::wstring>{L"qxfaxab.xml"});
}

TEST_F(PhoneBookProcesses, EightAtOnceNeverReadATornFileAndNeverWaitLongAlsoWhenOneIsKilledNowAndThen)
{
    constexpr int kWorkers = 7; // and one more, which is killed
    const std::wstring arguments = L"share \"" + Path() + L"\" " + std::to_wstring(Rounds(100, 200));
    ASSERT_TRUE(SaveStamped(Path(), L"before"));
    std::vector<Process> workers;
    for (int i = 0; i < kWorkers; ++i)
        workers.push_back(StartWorker(arguments));
    int kills = 0;
    while (std::any_of(workers.begin(), workers.end(), [](const Process& worker) { return worker.Runs(); })) {
        const Process victim = StartWorker(arguments);
        Sleep(200 + static_cast<DWORD>(random() % 200));
        victim.Kill();
        const int code = victim.ExitCode();
        EXPECT_TRUE(code == kKilled || code == static_cast<int>(WorkerOutcome::Good)) << code;
        ++kills;
    }
    for (const Process& worker : workers)
        EXPECT_EQ(worker.ExitCode(), static_cast<int>(WorkerOutcome::Good));
    EXPECT_GT(kills, 5);
    EXPECT_TRUE(HoldsOneStamp(Path()));
}

} // namespace
} // namespace qx
