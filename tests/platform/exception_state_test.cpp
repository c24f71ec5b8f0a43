// What each thread's exceptions need, laid aside beforehand: places are given back, and no two threads share one.
#include <atomic>
#include <cxxabi.h>
#include <gtest/gtest.h>
#include <set>
#include <stdexcept>
#include <thread>
#include <vector>
#include <windows.h>

namespace {

void* PlaceOfCaller()
{
    return __cxxabiv1::__cxa_get_globals();
}

void ThrowAndCatch()
{
    try {
        throw std::runtime_error("one");
    } catch (const std::runtime_error&) {
    }
}

TEST(ExceptionState, ThreadsThatAreAliveTogetherHaveAPlaceEach)
{
    constexpr std::size_t kThreads = 100;
    ThrowAndCatch(); // has a place from here on; to the compiler, asking for it changes nothing and can be done later
    void* const ownPlace = PlaceOfCaller();
    std::atomic<std::size_t> ready = 0;
    std::vector<void*> places(kThreads);
    std::vector<std::thread> threads;
    for (void*& place : places)
        threads.emplace_back([&] {
            ThrowAndCatch();
            place = PlaceOfCaller();
            ++ready;
            while (ready < kThreads)
                std::this_thread::yield();
        });
    for (std::thread& thread : threads)
        thread.join();
    const std::set<void*> different(places.begin(), places.end());
    EXPECT_EQ(different.size(), kThreads);
    EXPECT_FALSE(different.contains(ownPlace));
}

TEST(ExceptionState, AThreadThatEndsGivesItsPlaceBack)
{
    for (int i = 0; i < 300; ++i) // there are 256 places
        std::thread(ThrowAndCatch).join();
    void* first = nullptr;
    void* second = nullptr;
    std::thread([&] {
        first = PlaceOfCaller();
        std::thread([&] { second = PlaceOfCaller(); }).join();
    }).join();
    EXPECT_NE(first, second);
    EXPECT_NE(first, PlaceOfCaller());
}

TEST(ExceptionState, AThreadThatIsEndedInsideAHandlerLeavesNothingBehind)
{
    for (int i = 0; i < 300; ++i) {
        const HANDLE thread = CreateThread(
            nullptr, 0,
            [](void*) -> DWORD {
                try {
                    throw 1;
                } catch (int) {
                    ExitThread(0);
                }
            },
            nullptr, 0, nullptr);
        WaitForSingleObject(thread, INFINITE);
        CloseHandle(thread);
    }
    std::thread([] {
        EXPECT_EQ(std::uncaught_exceptions(), 0);
        EXPECT_EQ(std::current_exception(), nullptr);
    }).join();
}

} // namespace
