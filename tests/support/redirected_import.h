// Another function in the place of one that this program or a module of it imports: how tests let calls of the system
// fail as documented.
#pragma once

#include "base/no_copy.h"

#include <stdexcept>
#include <string>
#include <string_view>
#include <windows.h>

namespace qx::test {

// The place in the import tables of module, of this program when it is null, where the address of a function stands.
inline void** FindImport(std::string_view name, HMODULE module = nullptr)
{
    auto* const base = reinterpret_cast<std::byte*>(module != nullptr ? module : GetModuleHandleW(nullptr));
    const auto* const headers =
        reinterpret_cast<const IMAGE_NT_HEADERS*>(base + reinterpret_cast<const IMAGE_DOS_HEADER*>(base)->e_lfanew);
    const auto& directory = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    for (const auto* dll = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + directory.VirtualAddress);
         dll->Name != 0; ++dll) {
        const auto* names = reinterpret_cast<const IMAGE_THUNK_DATA*>(base + dll->OriginalFirstThunk);
        auto** addresses = reinterpret_cast<void**>(base + dll->FirstThunk);
        for (; names->u1.AddressOfData != 0; ++names, ++addresses) {
            if (IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal))
                continue;
            const auto* const import = reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + names->u1.AddressOfData);
            if (name == reinterpret_cast<const char*>(import->Name))
                return addresses;
        }
    }
    throw std::runtime_error("not imported: " + std::string(name));
}

inline void WritePointer(void** place, void* pointer)
{
    DWORD protection = 0;
    VirtualProtect(place, sizeof *place, PAGE_READWRITE, &protection);
    *place = pointer;
    VirtualProtect(place, sizeof *place, protection, &protection);
}

// As long as it lives, calls that this program (or module) makes of the function go to the stand-in. Those of other
// modules do not. Throws std::runtime_error when there is no such import.
template <class Function> class RedirectedImport : NoCopy {
public:
    RedirectedImport(const char* name, Function* standIn, HMODULE module = nullptr)
        : place_(FindImport(name, module)), original_(reinterpret_cast<Function*>(*place_))
    {
        WritePointer(place_, reinterpret_cast<void*>(standIn));
    }
    ~RedirectedImport() { WritePointer(place_, reinterpret_cast<void*>(original_)); }

    Function* Original() const noexcept { return original_; }

private:
    void** place_;
    Function* original_;
};

} // namespace qx::test
