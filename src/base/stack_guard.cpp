// What the compiler's guards of stack frames and of bounded copies ask for. The compiler's own library reads its random
// number through services that load further libraries, while the module itself is being loaded, and reports through a
// console. This one takes its number from what differs between processes anyway, as Windows' own runtime does, and ends
// the process the way Windows lays down, so that the crash is reported as what it is.
#include <cstdint>
#include <initializer_list>
#include <windows.h>

namespace {

// No handler of the process sees it: what has run over may have reached them, too.
[[noreturn]] void FailFast(unsigned code) noexcept
{
    __asm__ volatile("int $0x29" : : "c"(code));
    __builtin_unreachable();
}

} // namespace

extern "C" {

std::uintptr_t __stack_chk_guard = 0x2B992DDFA232;

[[noreturn]] void __stack_chk_fail() noexcept
{
    FailFast(2); // FAST_FAIL_STACK_COOKIE_CHECK_FAILURE
}

[[noreturn]] void __chk_fail() noexcept
{
    FailFast(8); // FAST_FAIL_RANGE_CHECK_FAILURE
}

} // extern "C"

namespace {

// Before all other initialisation, and itself unguarded: the number must not change under a frame that is in use.
[[gnu::constructor(101), gnu::no_stack_protector]] void ChooseGuard() noexcept
{
    LARGE_INTEGER counter{};
    FILETIME time{};
    QueryPerformanceCounter(&counter);
    GetSystemTimeAsFileTime(&time);
    std::uintptr_t guard = reinterpret_cast<std::uintptr_t>(&counter); // where Windows has put this stack
    for (const std::uintptr_t fact : {static_cast<std::uintptr_t>(counter.QuadPart), std::uintptr_t{time.dwLowDateTime},
                                      std::uintptr_t{GetCurrentProcessId()}, std::uintptr_t{GetCurrentThreadId()},
                                      reinterpret_cast<std::uintptr_t>(&__stack_chk_guard)})
        guard = (guard ^ fact) * 0x9E3779B97F4A7C15 + (guard >> 29);
    // The lowest byte is the first that a text running over would reach: a terminator stops it there.
    __stack_chk_guard = guard & ~std::uintptr_t{0xFF};
}

} // namespace
