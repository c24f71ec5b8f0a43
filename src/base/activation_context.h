// The module's own activation context: its manifest asks for the version-6 common controls, whatever the printing
// program uses.
#pragma once

#include "base/no_copy.h"

#include <windows.h>

namespace qx {

// The module's context is active on this thread while the object lives. Without a manifest nothing happens.
class ActivationScope : NoCopy {
public:
    ActivationScope() noexcept;
    ~ActivationScope();

private:
    ULONG_PTR cookie_ = 0;
    bool active_ = false;
};

// For process detach: the context is made again on the next use.
void ForgetActivationContext() noexcept;

} // namespace qx
