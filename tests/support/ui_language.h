// Lets a test be a user of any language of Windows, whatever the language of the session it runs in.
#pragma once

#include "base/no_copy.h"

#include <windows.h>

namespace qx::test {

// As long as it lives, GetUserDefaultUILanguage answers that language to everything that is linked into the test.
class UiLanguage : NoCopy {
public:
    explicit UiLanguage(LANGID language) noexcept;
    ~UiLanguage();

private:
    LANGID previous_;
};

} // namespace qx::test
