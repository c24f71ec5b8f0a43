#include "support/imports.h"

#include <cstring>
#include <stdexcept>
#include <string>

namespace qx::test {

namespace {

template <class T> const T* At(HMODULE module, DWORD offset)
{
    return reinterpret_cast<const T*>(reinterpret_cast<const BYTE*>(module) + offset);
}

// Where the module keeps the address of an imported function; null when it does not import it.
void** ImportSlot(HMODULE module, const char* function)
{
    const auto* const dos = At<IMAGE_DOS_HEADER>(module, 0);
    const auto* const headers = At<IMAGE_NT_HEADERS64>(module, static_cast<DWORD>(dos->e_lfanew));
    const DWORD imports = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    for (const auto* dll = At<IMAGE_IMPORT_DESCRIPTOR>(module, imports); dll->Name != 0; ++dll) {
        const auto* name = At<IMAGE_THUNK_DATA64>(module, dll->OriginalFirstThunk);
        for (DWORD i = 0; name[i].u1.AddressOfData != 0; ++i) {
            if (IMAGE_SNAP_BY_ORDINAL64(name[i].u1.Ordinal))
                continue;
            const auto* const entry = At<IMAGE_IMPORT_BY_NAME>(module, static_cast<DWORD>(name[i].u1.AddressOfData));
            if (std::strcmp(reinterpret_cast<const char*>(entry->Name), function) == 0)
                return reinterpret_cast<void**>(reinterpret_cast<BYTE*>(module) + dll->FirstThunk +
                                                i * sizeof(IMAGE_THUNK_DATA64));
        }
    }
    return nullptr;
}

void Store(void** slot, void* function)
{
    DWORD protection = 0;
    VirtualProtect(slot, sizeof *slot, PAGE_READWRITE, &protection);
    *slot = function;
    VirtualProtect(slot, sizeof *slot, protection, &protection);
}

} // namespace

RedirectedImport::RedirectedImport(HMODULE module, const char* function, void* replacement)
    : slot_(ImportSlot(module, function)), original_(nullptr)
{
    if (slot_ == nullptr)
        throw std::runtime_error(std::string("the module does not import ") + function);
    original_ = *slot_;
    Store(slot_, replacement);
}

RedirectedImport::~RedirectedImport()
{
    Store(slot_, original_);
}

} // namespace qx::test
