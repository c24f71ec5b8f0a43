// Owners of Windows handles: one template, one alias per kind of handle.
#pragma once

#include <windows.h> // before the headers that build on it

#include <oleauto.h>
#include <utility>
#include <winspool.h>

namespace qx {

template <class Traits> class Unique {
public:
    using Handle = typename Traits::Handle;

    Unique() noexcept = default;
    explicit Unique(Handle handle) noexcept : handle_(handle) {}
    Unique(Unique&& other) noexcept : handle_(other.Release()) {}
    Unique& operator=(Unique&& other) noexcept
    {
        Reset(other.Release());
        return *this;
    }
    ~Unique() { Reset(); }

    Handle Get() const noexcept { return handle_; }
    explicit operator bool() const noexcept { return handle_ != Traits::Empty(); }
    Handle Release() noexcept { return std::exchange(handle_, Traits::Empty()); }

    void Reset(Handle handle = Traits::Empty()) noexcept
    {
        const Handle old = std::exchange(handle_, handle);
        if (old != Traits::Empty())
            Traits::Close(old);
    }

    // For functions that hand out a handle through a pointer; what was held before is closed.
    Handle* Receive() noexcept
    {
        Reset();
        return &handle_;
    }

private:
    Handle handle_ = Traits::Empty();
};

template <class H, auto CloseFunction> struct NullEmpty {
    using Handle = H;
    static Handle Empty() noexcept { return nullptr; }
    static void Close(Handle handle) noexcept { CloseFunction(handle); }
};

template <auto CloseFunction> struct InvalidEmpty {
    using Handle = HANDLE;
    static Handle Empty() noexcept { return INVALID_HANDLE_VALUE; }
    static void Close(Handle handle) noexcept { CloseFunction(handle); }
};

using UniqueKey = Unique<NullEmpty<HKEY, RegCloseKey>>;
using UniqueBstr = Unique<NullEmpty<BSTR, SysFreeString>>;
using UniquePrinter = Unique<NullEmpty<HANDLE, ClosePrinter>>;
using UniqueModule = Unique<NullEmpty<HMODULE, FreeLibrary>>;
using UniqueBitmap = Unique<NullEmpty<HBITMAP, DeleteObject>>;
using UniqueKernelHandle = Unique<NullEmpty<HANDLE, CloseHandle>>; // mappings, mutexes, events
using UniqueFile = Unique<InvalidEmpty<CloseHandle>>;
using UniqueFindFile = Unique<InvalidEmpty<FindClose>>;

} // namespace qx
