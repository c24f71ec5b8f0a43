// Parts of Windows want a single-threaded COM apartment: entering one, and a thread of ours with one for callers that
// are in the multithreaded one.
#pragma once

#include "base/no_copy.h"
#include "base/unique.h"

#include <functional>
#include <objbase.h>

namespace qx {

// The calling thread's single-threaded apartment. Declare it before the pointers that live in it.
class ComApartment : NoCopy {
public:
    ComApartment() noexcept : ours_(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED) == S_OK) {}
    // Only a first initialisation is undone. That somebody else was first, in either mode, is no obstacle: whoever
    // that was keeps COM alive.
    ~ComApartment()
    {
        if (ours_)
            CoUninitialize();
    }

private:
    bool ours_;
};

// The calling thread is in the multithreaded apartment by its own choice.
bool IsInMultithreadedApartment() noexcept;

// A thread with a single-threaded apartment and a message loop. It runs as a guest, as the module does on its caller's
// thread. Windows that it has made live until it ends.
class ApartmentThread : NoCopy {
public:
    ApartmentThread() noexcept;
    // Ends the thread. When what it is doing cannot be ended within some seconds, it ends later, by itself.
    ~ApartmentThread();

    explicit operator bool() const noexcept { return window_ != nullptr; }

    // Returns when work is done there. Meanwhile the calling thread's windows live on: its messages are dispatched,
    // except what the user does to inert (may be null) and its children, as if a modal dialog were open. When the
    // program quits, the thread's dialogs end. An exception that escapes work ends it.
    void Run(const std::function<void()>& work, HWND inert) noexcept;

private:
    HWND window_ = nullptr; // takes the tasks; the thread's
    DWORD threadId_ = 0;
    UniqueKernelHandle thread_;
};

// Runs work on this thread or, where that is in the multithreaded apartment, on one of ours, as ApartmentThread::Run.
void RunInSingleThreadedApartment(const std::function<void()>& work, HWND inert) noexcept;

} // namespace qx
