// A mapped file of which a page fails.
#pragma once

#include "base/no_copy.h"
#include "support/redirected_import.h"

#include <algorithm>
#include <windows.h>

namespace qx::test {

// A view whose second page cannot be read or written: touching it raises what the system raises when the connection to
// the file is gone. The handler only turns the processor's fault into that; nobody else here answers it.
class FailingView : NoCopy {
public:
    FailingView()
    {
        mapped_ = 0;
        handler_ = AddVectoredExceptionHandler(1, TurnIntoPageError);
    }
    ~FailingView() { RemoveVectoredExceptionHandler(handler_); }

    static bool WasMappedOnceAndUnmapped() noexcept { return mapped_ == 1 && place_ == nullptr; }

private:
    static constexpr std::size_t kPage = 4096;

    static LPVOID WINAPI Map(HANDLE, DWORD, DWORD, DWORD, SIZE_T bytes)
    {
        ++mapped_;
        bytes_ = std::max<std::size_t>(bytes, 2 * kPage);
        place_ = static_cast<char*>(VirtualAlloc(nullptr, bytes_, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
        std::fill_n(place_, kPage, 'x');
        DWORD before = 0;
        VirtualProtect(place_ + kPage, bytes_ - kPage, PAGE_NOACCESS, &before);
        return place_;
    }
    static BOOL WINAPI Unmap(LPCVOID view)
    {
        VirtualFree(const_cast<void*>(view), 0, MEM_RELEASE);
        place_ = nullptr;
        return TRUE;
    }
    static LONG CALLBACK TurnIntoPageError(EXCEPTION_POINTERS* exception)
    {
        EXCEPTION_RECORD& record = *exception->ExceptionRecord;
        const auto* const address = reinterpret_cast<const char*>(record.ExceptionInformation[1]);
        if (record.ExceptionCode == EXCEPTION_ACCESS_VIOLATION && place_ <= address && address < place_ + bytes_)
            record.ExceptionCode = EXCEPTION_IN_PAGE_ERROR;
        return EXCEPTION_CONTINUE_SEARCH;
    }

    static inline char* place_ = nullptr;
    static inline std::size_t bytes_ = 0;
    static inline int mapped_ = 0;
    PVOID handler_;
    RedirectedImport<decltype(MapViewOfFile)> map_{"MapViewOfFile", Map};
    RedirectedImport<decltype(UnmapViewOfFile)> unmap_{"UnmapViewOfFile", Unmap};
};

} // namespace qx::test
