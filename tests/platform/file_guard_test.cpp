#include "phonebook/file/file_guard.h"

#include "support/failing_calls.h"
#include "support/temporary_folder.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <thread>

namespace qx {
namespace {

constexpr ULONGLONG kPatienceMilliseconds = 2000; // what a user may have to wait for
constexpr ULONGLONG kAtOnce = 1000;

std::wstring SomePath()
{
    return L"C:\\Documents\\" + std::to_wstring(GetCurrentProcessId()) + L".xml";
}

// How long it takes another thread to get past the guard of the path.
ULONGLONG MillisecondsToPass(const std::wstring& path)
{
    const ULONGLONG start = GetTickCount64();
    std::thread([&path] { FileGuard guard(path); }).join();
    return GetTickCount64() - start;
}

TEST(FileGuard, LetsTheNextOnePassWhenItIsGone)
{
    {
        const FileGuard guard(SomePath());
    }
    EXPECT_LT(MillisecondsToPass(SomePath()), kAtOnce);
}

TEST(FileGuard, KeepsTheOthersOfTheSameFileWaitingButNotForLong)
{
    const FileGuard guard(SomePath());
    std::wstring sameFile = SomePath();
    CharUpperW(sameFile.data());
    const ULONGLONG waited = MillisecondsToPass(sameFile);
    EXPECT_GE(waited, kAtOnce);
    EXPECT_LT(waited, kPatienceMilliseconds + 500); // a busy machine adds to it
}

TEST(FileGuard, DoesNotConcernOtherFiles)
{
    const FileGuard guard(SomePath());
    EXPECT_LT(MillisecondsToPass(L"C:\\Documents\\other.xml"), kAtOnce);
}

TEST(FileGuard, OfSomebodyWhoDiedIsNoObstacle)
{
    std::thread([] { new FileGuard(SomePath()); }).join(); // never released
    EXPECT_LT(MillisecondsToPass(SomePath()), kAtOnce);
}

// ---- between computers

class FolderLockTest : public testing::Test {
protected:
    // Another computer's program, which opens the same file.
    static HANDLE OpenLockFile(const std::wstring& path, DWORD disposition)
    {
        return CreateFileW((path + L".lock").c_str(), GENERIC_WRITE, 0, nullptr, disposition, 0, nullptr);
    }
    bool IsLocked() const
    {
        const HANDLE file = OpenLockFile(Path(), OPEN_EXISTING);
        const DWORD error = GetLastError();
        CloseHandle(file);
        return file == INVALID_HANDLE_VALUE && error == ERROR_SHARING_VIOLATION;
    }
    static bool IsForLockFile(LPCWSTR name, DWORD, DWORD, LPSECURITY_ATTRIBUTES, DWORD, DWORD, HANDLE)
    {
        return std::wstring_view(name).ends_with(L".lock");
    }
    std::wstring Path() const { return (folder_ / L"book.xml").wstring(); }

    test::TemporaryFolder folder_;
    // What a name that is being deleted is answered with, and a folder in which no file may be made.
    test::FailingCalls<decltype(CreateFileW), struct LockFileCalls> denied_{
        nullptr, "CreateFileW", INVALID_HANDLE_VALUE, ERROR_ACCESS_DENIED, IsForLockFile};
};

TEST_F(FolderLockTest, KeepsOtherComputersOutAndLeavesNothing)
{
    {
        const FolderLock lock(Path());
        EXPECT_TRUE(IsLocked());
    }
    EXPECT_TRUE(std::filesystem::is_empty(folder_.Path()));
}

TEST_F(FolderLockTest, TakesOverWhatAPowerCutLeft)
{
    CloseHandle(OpenLockFile(Path(), CREATE_NEW));
    {
        const FolderLock lock(Path());
        EXPECT_TRUE(IsLocked());
    }
    EXPECT_TRUE(std::filesystem::is_empty(folder_.Path()));
}

TEST_F(FolderLockTest, WaitsForAnotherComputerButNotForLong)
{
    const HANDLE file = OpenLockFile(Path(), CREATE_NEW);
    const ULONGLONG start = GetTickCount64();
    {
        const FolderLock lock(Path());
    }
    CloseHandle(file);
    EXPECT_GE(GetTickCount64() - start, kAtOnce);
    EXPECT_TRUE(std::filesystem::exists(Path() + L".lock")); // it was not ours
}

TEST_F(FolderLockTest, WaitsForTheLastOneToBeDeleted)
{
    denied_.FailOnly(1);
    const FolderLock lock(Path());
    denied_.FailNone();
    EXPECT_TRUE(IsLocked());
}

TEST_F(FolderLockTest, DoesNotWaitLongWhereItMayNotBeMade)
{
    denied_.FailFrom(1);
    const ULONGLONG start = GetTickCount64();
    const FolderLock lock(Path());
    EXPECT_LT(GetTickCount64() - start, kAtOnce);
}

TEST_F(FolderLockTest, IsDoneWithoutWhereTheFolderTakesNone)
{
    denied_.FailNone();
    const FolderLock lock(Path() + L"\\in no folder");
    EXPECT_EQ(denied_.Count(), 1); // tried, and not waited for
}

} // namespace
} // namespace qx
