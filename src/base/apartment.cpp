#include "base/apartment.h"

#include "base/guarded.h"
#include "base/guest.h"
#include "base/module.h"
#include "base/window_procedure.h"

namespace qx {

namespace {

constexpr UINT kRunTask = WM_APP;
constexpr DWORD kPatienceMilliseconds = 5000;
constexpr DWORD kPauseMilliseconds = 10; // between looks, when there is no waiting

// ---- the thread's side ----------------------------------------------------------------------------------------------

struct Task {
    const std::function<void()>& work;
    HANDLE done;
};

struct Start {
    HANDLE ready;
    HWND window = nullptr; // none when the thread cannot work
};

// A task comes to a window: the message loop of a dialog that is open here would lose it otherwise.
LRESULT CALLBACK TaskProcedure(HWND window, UINT message, WPARAM w, LPARAM l) noexcept
{
    if (message != kRunTask)
        return DefWindowProcW(window, message, w, l);
    const auto& task = *reinterpret_cast<const Task*>(l);
    Guarded([&] { task.work(); });
    SetEvent(task.done);
    return 0;
}

void ServeTasks(Start& start) noexcept
{
    const GuestScope guest;
    const ComApartment apartment;
    HWND window =
        CreateWindowExW(0, L"Static", nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, ModuleInstance(), nullptr);
    if (window != nullptr && ReplaceProcedure(window, TaskProcedure) == nullptr) {
        DestroyWindow(window); // it would run no task
        window = nullptr;
    }
    start.window = window;
    SetEvent(start.ready); // start is gone after this
    MSG message;
    while (window != nullptr && GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    if (window != nullptr)
        DestroyWindow(window);
}

HMODULE HoldModule() noexcept
{
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, reinterpret_cast<LPCWSTR>(ModuleInstance()), &module);
    return module;
}

DWORD WINAPI ThreadMain(void* start) noexcept
{
    const HMODULE module = HoldModule(); // whoever started us still waits: the module cannot have gone yet
    ServeTasks(*static_cast<Start*>(start));
    FreeLibraryAndExitThread(module, 0);
}

// ---- the caller's side ----------------------------------------------------------------------------------------------

bool IsInput(UINT message) noexcept
{
    return (message >= WM_KEYFIRST && message <= WM_KEYLAST) || (message >= WM_MOUSEFIRST && message <= WM_MOUSELAST) ||
           (message >= WM_NCMOUSEMOVE && message <= WM_NCXBUTTONDBLCLK);
}

bool IsInputFor(HWND window, const MSG& message) noexcept
{
    return window != nullptr && IsInput(message.message) &&
           GetAncestor(message.hwnd, GA_ROOT) == GetAncestor(window, GA_ROOT);
}

// One of the messages that wait: a program may never run out of them. False when it wants to quit, with its exit code.
bool DispatchNext(HWND inert, int& exitCode) noexcept
{
    MSG message;
    if (!PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
        return true;
    if (message.message == WM_QUIT) {
        exitCode = static_cast<int>(message.wParam);
        return false;
    }
    if (!IsInputFor(inert, message)) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    return true;
}

// Whatever the system says to waiting.
void Await(HANDLE end) noexcept
{
    while (WaitForSingleObject(end, INFINITE) != WAIT_OBJECT_0 &&
           WaitForMultipleObjects(1, &end, FALSE, INFINITE) != WAIT_OBJECT_0)
        Sleep(kPauseMilliseconds);
}

// True when one of ends has come, false when there may be a message.
bool AwaitEndOrMessage(const HANDLE (&ends)[2], DWORD wakenedBy, DWORD flags) noexcept
{
    const DWORD woken = MsgWaitForMultipleObjectsEx(2, ends, INFINITE, wakenedBy, flags);
    if (woken != WAIT_FAILED)
        return woken != WAIT_OBJECT_0 + 2;
    // A wait may be refused, for want of memory say. That is no end: the task refers to the stack of whoever waits.
    return WaitForMultipleObjects(2, ends, FALSE, kPauseMilliseconds) < WAIT_OBJECT_0 + 2;
}

} // namespace

bool IsInMultithreadedApartment() noexcept
{
    APTTYPE type = APTTYPE_CURRENT;
    APTTYPEQUALIFIER qualifier = APTTYPEQUALIFIER_NONE;
    // In it implicitly, only because others are, a thread may still have an apartment of its own.
    return SUCCEEDED(CoGetApartmentType(&type, &qualifier)) && (type == APTTYPE_MTA || type == APTTYPE_NA) &&
           qualifier != APTTYPEQUALIFIER_IMPLICIT_MTA;
}

ApartmentThread::ApartmentThread() noexcept
{
    const UniqueKernelHandle ready(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    if (!ready)
        return;
    Start start{.ready = ready.Get()};
    thread_.Reset(CreateThread(nullptr, 0, ThreadMain, &start, 0, &threadId_));
    if (!thread_)
        return;
    Await(ready.Get()); // the thread refers to start
    window_ = start.window;
}

ApartmentThread::~ApartmentThread()
{
    if (!thread_)
        return;
    PostThreadMessageW(threadId_, WM_QUIT, 0, 0);
    // Windows that the thread takes down may have something to tell their owners, which are ours.
    const HANDLE thread = thread_.Get();
    const ULONGLONG deadline = GetTickCount64() + kPatienceMilliseconds;
    for (ULONGLONG now = GetTickCount64(); now < deadline; now = GetTickCount64()) {
        if (MsgWaitForMultipleObjects(1, &thread, FALSE, static_cast<DWORD>(deadline - now), QS_SENDMESSAGE) !=
            WAIT_OBJECT_0 + 1)
            break;
        MSG message;
        PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE | PM_QS_SENDMESSAGE); // answers them
    }
}

void ApartmentThread::Run(const std::function<void()>& work, HWND inert) noexcept
{
    const UniqueKernelHandle done(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    const Task task{work, done.Get()};
    if (!done || !PostMessageW(window_, kRunTask, 0, reinterpret_cast<LPARAM>(&task)))
        return;
    bool quits = false;
    int exitCode = 0;
    const HANDLE ends[] = {done.Get(), thread_.Get()};
    // Once the program quits its messages are nobody's any more, except those that a thread waits for.
    while (!AwaitEndOrMessage(ends, quits ? QS_SENDMESSAGE : QS_ALLINPUT, quits ? 0 : MWMO_INPUTAVAILABLE)) {
        MSG message;
        if (quits) {
            PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE | PM_QS_SENDMESSAGE);
        } else if (!DispatchNext(inert, exitCode)) {
            quits = true;
            PostThreadMessageW(threadId_, WM_QUIT, 0, 0); // ends its dialogs
        }
    }
    if (quits)
        PostQuitMessage(exitCode); // for the loop that called us
}

void RunInSingleThreadedApartment(const std::function<void()>& work, HWND inert) noexcept
{
    if (IsInMultithreadedApartment()) {
        ApartmentThread thread;
        if (thread) {
            thread.Run(work, inert);
            return;
        }
    }
    Guarded([&] { work(); });
}

} // namespace qx
