// A conversation with the user on a thread of its own: the test drives it from outside, as the user would.
//
//     UiConversation conversation([&] { answer = ShowSomeDialog(nullptr, context); });
//     conversation.Ui().Press(IDOK);
//     conversation.End();
#pragma once

#include "base/no_copy.h"
#include "host/ui_driver.h"

#include <functional>
#include <memory>
#include <thread>

namespace qx::test {

class UiConversation : NoCopy {
public:
    explicit UiConversation(std::function<void()> show);
    ~UiConversation(); // cancels what is still open

    host::UiDriver& Ui() { return *ui_; }
    void End(); // waits until show has returned

private:
    HANDLE finished_;
    std::thread thread_;
    std::unique_ptr<host::UiDriver> ui_;
};

} // namespace qx::test
