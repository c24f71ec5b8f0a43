#include "base/guest.h"

#include "support/redirected_import.h"

#include <algorithm>
#include <cfenv>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <utility>
#include <vector>
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

// A system that has only some of the modes, or none: what the module finds when it looks for the function.
class DpiModes : public ::testing::Test {
protected:
    static HANDLE Mode(INT_PTR value) { return reinterpret_cast<HANDLE>(value); }

    // The mode that is on; null: the system knows no modes.
    static inline HANDLE mode = nullptr;
    static inline std::vector<HANDLE> known;
    static inline std::vector<HANDLE> askedFor;

    void RunOn(std::vector<HANDLE> modes, HANDLE before)
    {
        known = std::move(modes);
        mode = before;
        askedFor.clear();
    }

private:
    static HANDLE WINAPI Set(HANDLE wanted)
    {
        askedFor.push_back(wanted);
        if (std::ranges::find(known, wanted) == known.end()) {
            SetLastError(ERROR_INVALID_PARAMETER);
            return nullptr;
        }
        return std::exchange(mode, wanted);
    }
    static FARPROC WINAPI Find(HMODULE module, LPCSTR name)
    {
        const bool asksForIt = HIWORD(name) != 0 && std::string_view(name) == "SetThreadDpiAwarenessContext";
        if (!asksForIt)
            return GetProcAddressBefore(module, name);
        return mode != nullptr ? reinterpret_cast<FARPROC>(reinterpret_cast<void*>(Set)) : nullptr;
    }
    static FARPROC GetProcAddressBefore(HMODULE module, LPCSTR name)
    {
        return current->getProcAddress_.Original()(module, name);
    }

    static inline DpiModes* current = nullptr;
    test::RedirectedImport<decltype(GetProcAddress)> getProcAddress_{"GetProcAddress", Find};

    void SetUp() override { current = this; }
    void TearDown() override { current = nullptr; }

protected:
    const HANDLE unaware = Mode(-1), systemAware = Mode(-2), perMonitor = Mode(-4), sharpText = Mode(-5);
};

TEST_F(DpiModes, TextIsSharpWhereTheSystemScalesItSo)
{
    RunOn({unaware, systemAware, perMonitor, sharpText}, perMonitor);
    {
        const GuestScope guest;
        EXPECT_EQ(mode, sharpText);
    }
    EXPECT_EQ(mode, perMonitor);
    EXPECT_EQ(askedFor, (std::vector<HANDLE>{sharpText, perMonitor}));
}

TEST_F(DpiModes, OtherwiseTheSystemScalesWhatIsDrawn)
{
    RunOn({unaware, systemAware}, systemAware);
    {
        const GuestScope guest;
        EXPECT_EQ(mode, unaware);
    }
    EXPECT_EQ(mode, systemAware);
    EXPECT_EQ(askedFor, (std::vector<HANDLE>{sharpText, unaware, systemAware}));
}

TEST_F(DpiModes, WhereNeitherModeIsToBeHadTheProgramsOwnStays)
{
    RunOn({systemAware}, systemAware);
    {
        const GuestScope guest;
        EXPECT_EQ(mode, systemAware);
    }
    EXPECT_EQ(mode, systemAware);
    EXPECT_EQ(askedFor, (std::vector<HANDLE>{sharpText, unaware})); // nothing to put back
}

TEST_F(DpiModes, WithoutTheFunctionNothingIsChanged)
{
    RunOn({}, nullptr);
    {
        const GuestScope guest;
    }
    EXPECT_EQ(askedFor, std::vector<HANDLE>());
}

TEST_F(DpiModes, EachNestedCallPutsBackItsOwn)
{
    RunOn({unaware, systemAware, sharpText}, systemAware);
    {
        const GuestScope session;
        mode = unaware; // a dialog of the program within ours
        {
            const GuestScope nested;
            EXPECT_EQ(mode, sharpText);
        }
        EXPECT_EQ(mode, unaware);
    }
    EXPECT_EQ(mode, systemAware);
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
