// Lets a test be a user of any language of Windows, whatever the language of the session it runs in.
#pragma once

#include <windows.h>

namespace qx::test {

// As long as it lives, GetUserDefaultUILanguage answers that language to everything that is linked into the test.
class UiLanguage {
public:
    explicit UiLanguage(LANGID language) noexcept;
    ~UiLanguage();
    UiLanguage(const UiLanguage&) = delete;
    UiLanguage& operator=(const UiLanguage&) = delete;

private:
    LANGID previous_;
};

} // namespace qx::test
