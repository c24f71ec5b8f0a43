#include "support/dialog_thread.h"

#include "support/documented_controls.h"

#include <cstdio>
#include <future>

namespace qx::test {

DialogThread::DialogThread()
{
    std::promise<DWORD> id;
    thread_ = std::thread([this, &id] {
        MSG message;
        PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE); // makes the message queue
        id.set_value(GetCurrentThreadId());
        Serve();
    });
    id_ = id.get_future().get();
    ui_.emplace(id_, finished_);
}

DialogThread::~DialogThread()
{
    try {
        ui_->CloseEverything();
    } catch (const host::UiFailure& failure) {
        // The thread cannot be ended from here: better no more tests than tests beside a stuck dialog.
        std::fprintf(stderr, "%s\n", failure.what());
        std::fflush(nullptr);
        TerminateProcess(GetCurrentProcess(), 1);
    }
    ui_.reset();
    show_ = nullptr;
    SetEvent(start_);
    thread_.join();
    CloseHandle(start_);
    CloseHandle(finished_);
}

void DialogThread::Serve()
{
    const auto controls = DocumentedControls::WhenAsked();
    while (WaitForSingleObject(start_, INFINITE) == WAIT_OBJECT_0 && show_) {
        show_();
        SetEvent(finished_);
    }
}

void DialogThread::Show(std::function<void()> show)
{
    show_ = std::move(show);
    ResetEvent(finished_);
    SetEvent(start_);
}

void DialogThread::End()
{
    ui_->WaitForEnd();
}

} // namespace qx::test
