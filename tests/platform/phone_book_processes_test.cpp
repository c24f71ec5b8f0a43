#include "phone_book_worker.h"

#include "support/child_process.h"
#include "support/documents_folder.h"
#include "support/thorough.h"

#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace qx {
namespace {

using namespace test;

constexpr UINT kKilled = 99;

class PhoneBookProcesses : public ::testing::Test {
protected:
    std::wstring Path() const { return documents.File(L"qxfaxab.xml"); }

    ChildProcess StartWorker(const wchar_t* task, const std::wstring& argument) const
    {
        return {ProgramBeside(L"phone_book_worker.exe"), {task, Path(), argument}};
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
        const ChildProcess worker = StartWorker(L"save", eventName);
        ASSERT_EQ(WaitForSingleObject(saving.Get(), 30000), WAIT_OBJECT_0);
        WaitMicroseconds(static_cast<unsigned>(random() % kLongestWait));
        worker.Kill(kKilled);
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
    const std::wstring rounds = std::to_wstring(Rounds(100, 200));
    ASSERT_TRUE(SaveStamped(Path(), L"before"));
    std::vector<ChildProcess> workers;
    for (int i = 0; i < kWorkers; ++i)
        workers.push_back(StartWorker(L"share", rounds));
    int kills = 0;
    while (
        std::any_of(workers.begin(), workers.end(), [](const ChildProcess& worker) { return !worker.EndsWithin(0); })) {
        const ChildProcess victim = StartWorker(L"share", rounds);
        Sleep(200 + static_cast<DWORD>(random() % 200));
        victim.Kill(kKilled);
        const DWORD code = victim.ExitCode();
        EXPECT_TRUE(code == kKilled || code == static_cast<DWORD>(WorkerOutcome::Good)) << code;
        ++kills;
    }
    for (const ChildProcess& worker : workers)
        EXPECT_EQ(worker.ExitCode(), static_cast<DWORD>(WorkerOutcome::Good));
    EXPECT_GT(kills, 5);
    EXPECT_TRUE(HoldsOneStamp(Path()));
}

} // namespace
} // namespace qx
