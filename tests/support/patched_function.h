// A function of Windows that behaves as a test wants it, for all of the process: the module's DLL included.
#pragma once

#include "base/no_copy.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <windows.h>

namespace qx::test {

// While it lives, calls of the function go to replacement (same signature).
class PatchedFunction : NoCopy {
public:
    template <class Function> PatchedFunction(const wchar_t* library, const char* name, Function* replacement)
    {
        code_ = reinterpret_cast<BYTE*>(reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(library), name)));
        DWORD before = 0;
        if (code_ == nullptr || !VirtualProtect(code_, kJump, PAGE_EXECUTE_READWRITE, &before))
            throw std::runtime_error(std::string("cannot patch ") + name);
        std::copy_n(code_, kJump, original_.begin());
        const auto address = reinterpret_cast<std::uintptr_t>(replacement);
        jump_ = {0x48, 0xB8, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xE0}; // mov rax, address; jmp rax
        std::memcpy(jump_.data() + 2, &address, sizeof address);
        Write(jump_);
    }
    ~PatchedFunction() { Write(original_); }

    // Runs call with the function as it was. Only while no other thread is near the function.
    template <class Call> auto WithOriginal(Call call)
    {
        Write(original_);
        const auto result = call();
        Write(jump_);
        return result;
    }

private:
    static constexpr std::size_t kJump = 12;

    void Write(const std::array<BYTE, kJump>& code)
    {
        std::copy(code.begin(), code.end(), code_);
        FlushInstructionCache(GetCurrentProcess(), code_, kJump);
    }

    BYTE* code_ = nullptr;
    std::array<BYTE, kJump> original_{};
    std::array<BYTE, kJump> jump_{};
};

} // namespace qx::test
