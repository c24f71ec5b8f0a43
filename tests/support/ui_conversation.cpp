#include "support/ui_conversation.h"

#include "support/documented_controls.h"

#include <future>

namespace qx::test {

UiConversation::UiConversation(std::function<void()> show) : finished_(CreateEventW(nullptr, TRUE, FALSE, nullptr))
{
    std::promise<DWORD> ready;
    std::future<DWORD> uiThread = ready.get_future();
    std::promise<void> driven;
    thread_ =
        std::thread([this, show = std::move(show), ready = std::move(ready), driven = driven.get_future()]() mutable {
            MSG message;
            PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE); // makes the message queue
            ready.set_value(GetCurrentThreadId());
            driven.wait();
            const auto controls = DocumentedControls::WhenAsked();
            show();
            SetEvent(finished_);
        });
    ui_ = std::make_unique<host::UiDriver>(uiThread.get(), finished_);
    driven.set_value();
}

UiConversation::~UiConversation()
{
    try {
        ui_->CloseEverything();
    } catch (const host::UiFailure&) {
        // The test has failed already, or its time limit will tell.
    }
    thread_.join();
    CloseHandle(finished_);
}

void UiConversation::End()
{
    ui_->WaitForEnd();
}

} // namespace qx::test
