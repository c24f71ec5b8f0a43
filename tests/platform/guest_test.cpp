#include "base/guest.h"

#include <cfenv>
#include <gtest/gtest.h>
#include <string>
#include <xmmintrin.h>

namespace qx {
namespace {

std::wstring Directory()
{
    wchar_t directory[MAX_PATH] = L"";
    GetCurrentDirectoryW(MAX_PATH, directory);
    return directory;
}

// It is the whole program's, and other threads of it may move it meanwhile.
TEST(Guest, ACurrentDirectoryThatTheProgramMovesMeanwhileStays)
{
    const std::wstring before = Directory();
    std::wstring moved;
    {
        const GuestScope guest;
        ASSERT_TRUE(SetCurrentDirectoryW(L"C:\\windows\\system32"));
        moved = Directory();
    }
    EXPECT_EQ(Directory(), moved);
    SetCurrentDirectoryW(before.c_str());
}

TEST(Guest, TheErrorModeIsPutBackAndKeepsSystemBoxesAway)
{
    DWORD original = 0;
    SetThreadErrorMode(SEM_NOGPFAULTERRORBOX, &original);
    {
        const GuestScope guest;
        EXPECT_TRUE(GetThreadErrorMode() & SEM_FAILCRITICALERRORS);
    }
    EXPECT_EQ(GetThreadErrorMode(), static_cast<DWORD>(SEM_NOGPFAULTERRORBOX));
    SetThreadErrorMode(original, nullptr);
}

TEST(Guest, UnmaskedFloatingPointExceptionsStayQuietMeanwhile)
{
    const unsigned original = _mm_getcsr();
    _MM_SET_EXCEPTION_MASK(_MM_GET_EXCEPTION_MASK() & ~static_cast<unsigned>(_MM_MASK_DIV_ZERO));
    const unsigned before = _mm_getcsr();
    {
        const GuestScope guest;
        volatile double zero = 0;
        const volatile double quotient = 1 / zero; // would raise an exception in the program's own mode
        EXPECT_GT(quotient, 0);
    }
    EXPECT_EQ(_mm_getcsr(), before);
    _mm_setcsr(original);
}

TEST(Guest, TheDpiModeIsTheSystemsMeanwhileAndPutBack)
{
    using Get = HANDLE(WINAPI*)();
    using Set = HANDLE(WINAPI*)(HANDLE);
    using Equal = BOOL(WINAPI*)(HANDLE, HANDLE);
    const HMODULE user32 = GetModuleHandleW(L"user32.dll");
    const auto find = [&](const char* name) { return reinterpret_cast<void*>(GetProcAddress(user32, name)); };
    const auto get = reinterpret_cast<Get>(find("GetThreadDpiAwarenessContext"));
    const auto set = reinterpret_cast<Set>(find("SetThreadDpiAwarenessContext"));
    const auto equal = reinterpret_cast<Equal>(find("AreDpiAwarenessContextsEqual"));
    ASSERT_TRUE(get != nullptr && set != nullptr && equal != nullptr);

    const auto perMonitor = reinterpret_cast<HANDLE>(static_cast<INT_PTR>(-3));
    const HANDLE original = set(perMonitor);
    const HANDLE before = get();
    {
        const GuestScope guest;
        EXPECT_FALSE(equal(get(), perMonitor));
    }
    EXPECT_TRUE(equal(get(), before));
    set(original);
}

TEST(Guest, TheCursorIsPutBack)
{
    const HCURSOR cross = LoadCursorW(nullptr, IDC_CROSS);
    const HCURSOR original = SetCursor(cross);
    {
        const GuestScope guest;
        SetCursor(LoadCursorW(nullptr, IDC_WAIT));
    }
    EXPECT_EQ(GetCursor(), cross);
    SetCursor(original);
}

} // namespace
} // namespace qx
