// Answers the message boxes of the test's own thread, and notes what they said.
#pragma once

#include "base/no_copy.h"

#include <string>
#include <vector>
#include <windows.h>

namespace qx::test {

class MessageBoxes : NoCopy { // one at a time per thread
public:
    explicit MessageBoxes(int answer = IDOK);
    ~MessageBoxes();

    struct Box {
        std::wstring title;
        std::wstring text;
        bool operator==(const Box&) const = default;
    };
    // The boxes since the last call.
    std::vector<Box> Take();
    std::vector<std::wstring> TakeTexts();

private:
    static LRESULT CALLBACK Hook(int code, WPARAM w, LPARAM l);

    int answer_;
    HHOOK hook_;
    std::vector<Box> boxes_;
};

} // namespace qx::test
