#include "support/text_layout_lock.h"

#include <array>
#include <cstring>
#include <iterator>
#include <mutex>
#include <stdexcept>
#include <windows.h> // before the headers that build on it

#include <psapi.h>
#include <usp10.h>

namespace qx::test {

namespace {

std::mutex g_mutex;

HRESULT WINAPI Analyse(HDC dc, const void* string, int units, int glyphs, int charset, DWORD flags, int width,
                       SCRIPT_CONTROL* control, SCRIPT_STATE* state, const int* dx, SCRIPT_TABDEF* tabs,
                       const BYTE* classes, SCRIPT_STRING_ANALYSIS* analysis)
{
    const std::scoped_lock lock(g_mutex);
    return ScriptStringAnalyse(dc, string, units, glyphs, charset, flags, width, control, state, dx, tabs, classes,
                               analysis);
}

HRESULT WINAPI Free(SCRIPT_STRING_ANALYSIS* analysis)
{
    const std::scoped_lock lock(g_mutex);
    return ScriptStringFree(analysis);
}

HRESULT WINAPI Out(SCRIPT_STRING_ANALYSIS analysis, int x, int y, UINT options, const RECT* clip, int selectionBegin,
                   int selectionEnd, BOOL disabled)
{
    const std::scoped_lock lock(g_mutex);
    return ScriptStringOut(analysis, x, y, options, clip, selectionBegin, selectionEnd, disabled);
}

HRESULT WINAPI FreeCache(SCRIPT_CACHE* cache)
{
    const std::scoped_lock lock(g_mutex);
    return ScriptFreeCache(cache);
}

template <class Function> void* Address(Function* function)
{
    return reinterpret_cast<void*>(function);
}

const struct {
    const char* name;
    void* replacement;
} kReplacements[] = {{"ScriptStringAnalyse", Address(Analyse)},
                     {"ScriptStringFree", Address(Free)},
                     {"ScriptStringOut", Address(Out)},
                     {"ScriptFreeCache", Address(FreeCache)}};

void Write(void** place, void* value)
{
    DWORD before = 0;
    VirtualProtect(place, sizeof *place, PAGE_READWRITE, &before);
    *place = value;
    VirtualProtect(place, sizeof *place, before, &before);
}

// How many of its imports were replaced.
int ReplaceImports(HMODULE module)
{
    auto* const image = reinterpret_cast<BYTE*>(module);
    const auto& dos = *reinterpret_cast<const IMAGE_DOS_HEADER*>(image);
    const auto& headers = *reinterpret_cast<const IMAGE_NT_HEADERS64*>(image + dos.e_lfanew);
    const DWORD place = headers.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    int replaced = 0;
    if (place == 0)
        return replaced;
    for (auto* library = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(image + place); library->FirstThunk != 0;
         ++library) {
        if (library->OriginalFirstThunk == 0)
            continue;
        const auto* name = reinterpret_cast<const IMAGE_THUNK_DATA64*>(image + library->OriginalFirstThunk);
        auto* address = reinterpret_cast<void**>(image + library->FirstThunk);
        for (; name->u1.AddressOfData != 0; ++name, ++address) {
            if (IMAGE_SNAP_BY_ORDINAL64(name->u1.Ordinal))
                continue;
            const auto& import = *reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(image + name->u1.AddressOfData);
            for (const auto& replacement : kReplacements) {
                if (std::strcmp(reinterpret_cast<const char*>(import.Name), replacement.name) != 0)
                    continue;
                Write(address, replacement.replacement);
                ++replaced;
            }
        }
    }
    return replaced;
}

} // namespace

void LockTextLayout()
{
    std::array<HMODULE, 256> modules{};
    DWORD bytes = 0;
    EnumProcessModules(GetCurrentProcess(), modules.data(), sizeof modules, &bytes);
    int replaced = 0;
    for (std::size_t i = 0; i < modules.size() && i < bytes / sizeof(HMODULE); ++i) {
        if (modules[i] != GetModuleHandleW(nullptr))
            replaced += ReplaceImports(modules[i]);
    }
    if (replaced == 0)
        throw std::runtime_error("no module lays out texts");
}

} // namespace qx::test
