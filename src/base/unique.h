// Owners of Windows handles: one template, one alias per kind of handle.
#pragma once

#include <windows.h> // before the headers that build on it

#include <oleauto.h>
#include <utility>
#include <winspool.h>

namespace qx {

// None is the handle that is kNone as a number.
template <class Handle, auto CloseFunction, INT_PTR kNone = 0> class Unique {
public:
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
    explicit operator bool() const noexcept { return handle_ != None(); }
    Handle Release() noexcept { return std::exchange(handle_, None()); }

    void Reset(Handle handle = None()) noexcept
    {
        const Handle old = std::exchange(handle_, handle);
        if (old != None())
            CloseFunction(old);
    }

    // For functions that hand out a handle through a pointer; what was held before is closed.
    Handle* Receive() noexcept
    {
        Reset();
        return &handle_;
    }

private:
    static Handle None() noexcept { return reinterpret_cast<Handle>(kNone); }

    Handle handle_ = None();
};

inline constexpr INT_PTR kInvalidHandle = -1; // INVALID_HANDLE_VALUE

using UniqueKey = Unique<HKEY, RegCloseKey>;
using UniqueBstr = Unique<BSTR, SysFreeString>;
using UniquePrinter = Unique<HANDLE, ClosePrinter>;
using UniqueModule = Unique<HMODULE, FreeLibrary>;
using UniqueBitmap = Unique<HBITMAP, DeleteObject>;
using UniqueKernelHandle = Unique<HANDLE, CloseHandle>; // mappings, mutexes, events
using UniqueFile = Unique<HANDLE, CloseHandle, kInvalidHandle>;
using UniqueFindFile = Unique<HANDLE, FindClose, kInvalidHandle>;

template <class Interface> void ReleaseInterface(Interface* object) noexcept
{
    object->Release();
}

template <class Interface> class ComPtr : public Unique<Interface*, ReleaseInterface<Interface>> {
public:
    using Unique<Interface*, ReleaseInterface<Interface>>::Unique;
    Interface* operator->() const noexcept { return this->Get(); }
};

} // namespace qx
