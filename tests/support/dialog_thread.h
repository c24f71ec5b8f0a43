// A user-interface thread with an end: it shows dialogs, and the test drives them from outside, as the user would.
//
//     DialogThread conversation([&] { answer = ShowSomeDialog(nullptr, context); });
//     conversation.Ui().Press(IDOK);
//     conversation.End();
#pragma once

#include "base/no_copy.h"
#include "host/ui_driver.h"

#include <functional>
#include <optional>
#include <thread>

namespace qx::test {

class DialogThread : NoCopy {
public:
    DialogThread(); // shows nothing yet
    explicit DialogThread(std::function<void()> show) : DialogThread() { Show(std::move(show)); }
    ~DialogThread(); // cancels what is still open

    // Calls show on the thread, which has nothing else to show any more, and returns at once.
    void Show(std::function<void()> show);
    void End(); // waits until show has returned

    host::UiDriver& Ui() { return *ui_; }
    DWORD Id() const { return id_; }

private:
    void Serve();

    HANDLE start_ = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    HANDLE finished_ = CreateEventW(nullptr, TRUE, TRUE, nullptr);
    std::function<void()> show_; // none: the thread ends
    DWORD id_ = 0;
    std::thread thread_;
    std::optional<host::UiDriver> ui_;
};

} // namespace qx::test
