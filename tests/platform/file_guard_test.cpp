#include "phonebook/file/file_guard.h"

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

} // namespace
} // namespace qx
