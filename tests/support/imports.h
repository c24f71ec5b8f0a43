// What a loaded module calls of other modules, exchanged from outside.
#pragma once

#include <windows.h>

namespace qx::test {

// As long as it lives, module calls replacement in the place of the imported function of that name.
class RedirectedImport {
public:
    RedirectedImport(HMODULE module, const char* function, void* replacement); // throws std::runtime_error: no such import
    ~RedirectedImport();
    RedirectedImport(const RedirectedImport&) = delete;
    RedirectedImport& operator=(const RedirectedImport&) = delete;

    void* Original() const { return original_; }

private:
    void** slot_;
    void* original_;
};

} // namespace qx::test
