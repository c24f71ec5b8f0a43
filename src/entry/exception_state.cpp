#include "entry/exception_state.h"

#include <atomic>
#include <cxxabi.h>
#include <iterator>
#include <windows.h>

// The C++ runtime asks for what a thread's exceptions need through these two functions of the C++ ABI. Its own ones
// allocate it with the first exception of a thread, and end the process when that fails: the exception that tells of
// memory being short would end the printing program. These have it beforehand.

namespace {

// As the C++ ABI lays it down for __cxa_eh_globals.
struct ThreadExceptions {
    void* caught = nullptr;
    unsigned int uncaught = 0;
};

struct Place {
    std::atomic<DWORD> thread = 0; // 0: free
    ThreadExceptions exceptions;
};

// More threads than print at once; one is given back when its session ends, and when its thread does.
constinit Place g_places[256];

Place* PlaceOf(DWORD thread) noexcept
{
    for (Place& place : g_places) {
        if (place.thread.load(std::memory_order_acquire) == thread)
            return &place;
    }
    return nullptr;
}

Place& TakePlace(DWORD thread) noexcept
{
    for (Place& place : g_places) {
        DWORD free = 0;
        if (place.thread.compare_exchange_strong(free, thread, std::memory_order_acq_rel))
            return place;
    }
    return *std::rbegin(g_places);
}

void FreePlace(Place& place) noexcept
{
    place.exceptions = {};
    place.thread.store(0, std::memory_order_release);
}

// Windows calls it for each thread that begins or ends. A helper thread has no session that would give its place back.
void NTAPI ThreadEnds(void*, DWORD reason, void*) noexcept
{
    if (reason != DLL_THREAD_DETACH)
        return;
    if (Place* const place = PlaceOf(GetCurrentThreadId()); place != nullptr)
        FreePlace(*place);
}

// Between the marks that the runtime puts around the list of such functions.
[[gnu::section(".CRT$XLM"), gnu::used]] const PIMAGE_TLS_CALLBACK kThreadEnds = ThreadEnds;

} // namespace

namespace __cxxabiv1 {

extern "C" __cxa_eh_globals* __cxa_get_globals() noexcept
{
    const DWORD thread = GetCurrentThreadId();
    Place* const known = PlaceOf(thread);
    Place& place = known != nullptr ? *known : TakePlace(thread);
    return reinterpret_cast<__cxa_eh_globals*>(&place.exceptions);
}

extern "C" __cxa_eh_globals* __cxa_get_globals_fast() noexcept
{
    return __cxa_get_globals();
}

} // namespace __cxxabiv1

namespace qx {

void ReleaseExceptionState() noexcept
{
    Place* const place = PlaceOf(GetCurrentThreadId());
    if (place == nullptr || place->exceptions.caught != nullptr || place->exceptions.uncaught != 0)
        return;
    FreePlace(*place);
}

} // namespace qx
