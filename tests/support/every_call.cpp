#include "support/every_call.h"

#include <algorithm>
#include <commctrl.h>
#include <cstdlib>
#include <map>
#include <mutex>
#include <prsht.h>
#include <string_view>
#include <utility>

namespace qx::test {

namespace {

using Argument = std::uintptr_t;
constexpr int kArguments = 12; // as many as any of them has: more do no harm
using Arguments = std::array<Argument, kArguments>;
using Any = Argument(WINAPI*)(Argument, Argument, Argument, Argument, Argument, Argument, Argument, Argument, Argument,
                              Argument, Argument, Argument);

constexpr Argument kNull = 0;
constexpr Argument kMinusOne = ~Argument{0};

// Whether a call counts; it may answer another failure.
using Condition = bool (*)(const Arguments& arguments, Argument& failure);

// What a window's owner has stored with it can be read as long as there is the window.
bool OfSystem(const Arguments& arguments, Argument&)
{
    const auto index = static_cast<int>(arguments[1]);
    return index == GWLP_WNDPROC || index == GWL_STYLE || index == GWL_EXSTYLE;
}

bool OfText(const Arguments& arguments, Argument& failure)
{
    switch (static_cast<UINT>(arguments[1])) {
    case WM_SETTEXT:
    case WM_GETTEXT:
    case LVM_SETITEMW:
    case LVM_GETITEMW:
    case LVM_SETITEMTEXTW:
    case LVM_GETITEMTEXTW:
        failure = 0;
        return true;
    case LVM_INSERTITEMW:
    case LVM_INSERTCOLUMNW:
    case CB_GETLBTEXT:
    case LB_GETTEXT:
        failure = kMinusOne;
        return true;
    case CB_ADDSTRING:
    case CB_INSERTSTRING:
    case LB_ADDSTRING:
    case LB_INSERTSTRING:
        failure = static_cast<Argument>(-2); // no space
        return true;
    default:
        return false;
    }
}

// Failing, it leaves no object.
bool EmptiesObject(const Arguments& arguments, Argument&)
{
    *reinterpret_cast<void**>(arguments[4]) = nullptr;
    return true;
}

enum class Takes { Nothing, WhenNotNull, WhenNotMinusOne, WhenZero, Gives, GivesWhenNotNull, Reallocates };

struct Function {
    const char* name;
    bool fails = true;
    Argument failure = kNull;
    DWORD error = ERROR_NOT_ENOUGH_MEMORY;
    Condition condition = nullptr;
    Held kind = Held::Count;
    Takes takes = Takes::Nothing;
};

constexpr Function Failing(const char* name, Argument failure, DWORD error, Condition condition = nullptr)
{
    return {name, true, failure, error, condition};
}
constexpr Function Taking(const char* name, Held kind, Argument failure, DWORD error, Takes takes = Takes::WhenNotNull)
{
    return {name, true, failure, error, nullptr, kind, takes};
}
constexpr Function Giving(const char* name, Held kind, Takes takes = Takes::Gives)
{
    return {name, false, 0, 0, nullptr, kind, takes};
}

constexpr Function kFunctions[] = {
    // memory
    Taking("malloc", Held::Memory, kNull, ERROR_NOT_ENOUGH_MEMORY),
    Taking("calloc", Held::Memory, kNull, ERROR_NOT_ENOUGH_MEMORY),
    Taking("realloc", Held::Memory, kNull, ERROR_NOT_ENOUGH_MEMORY, Takes::Reallocates),
    Taking("_aligned_malloc", Held::Memory, kNull, ERROR_NOT_ENOUGH_MEMORY),
    Taking("HeapAlloc", Held::Memory, kNull, ERROR_NOT_ENOUGH_MEMORY),
    Failing("SysAllocStringLen", kNull, ERROR_NOT_ENOUGH_MEMORY),
    Failing("SafeArrayCreateVector", kNull, ERROR_NOT_ENOUGH_MEMORY),
    Giving("free", Held::Memory, Takes::GivesWhenNotNull),
    Giving("_aligned_free", Held::Memory, Takes::GivesWhenNotNull),
    // files
    Taking("CreateFileW", Held::Handles, kMinusOne, ERROR_ACCESS_DENIED, Takes::WhenNotMinusOne),
    Taking("CreateFileMappingW", Held::Handles, kNull, ERROR_DISK_FULL),
    Taking("MapViewOfFile", Held::Views, kNull, ERROR_NOT_ENOUGH_MEMORY),
    Taking("FindFirstFileW", Held::Searches, kMinusOne, ERROR_ACCESS_DENIED, Takes::WhenNotMinusOne),
    Failing("FindNextFileW", kNull, ERROR_NO_MORE_FILES),
    Failing("ReadFile", kNull, ERROR_READ_FAULT),
    Failing("WriteFile", kNull, ERROR_DISK_FULL),
    Failing("FlushFileBuffers", kNull, ERROR_WRITE_FAULT),
    Failing("FlushViewOfFile", kNull, ERROR_WRITE_FAULT),
    Failing("SetEndOfFile", kNull, ERROR_DISK_FULL),
    Failing("SetFileInformationByHandle", kNull, ERROR_ACCESS_DENIED),
    Failing("SetFilePointerEx", kNull, ERROR_SEEK),
    Failing("GetFileSizeEx", kNull, ERROR_READ_FAULT),
    Failing("GetFileInformationByHandle", kNull, ERROR_READ_FAULT),
    Failing("GetFinalPathNameByHandleW", kNull, ERROR_NOT_ENOUGH_MEMORY),
    Failing("GetFileAttributesW", INVALID_FILE_ATTRIBUTES, ERROR_ACCESS_DENIED),
    Failing("GetFileAttributesExW", kNull, ERROR_ACCESS_DENIED),
    Failing("SetFileAttributesW", kNull, ERROR_ACCESS_DENIED),
    Failing("GetFileSecurityW", kNull, ERROR_ACCESS_DENIED),
    Failing("SetFileSecurityW", kNull, ERROR_ACCESS_DENIED),
    Failing("MoveFileExW", kNull, ERROR_ACCESS_DENIED),
    Failing("CopyFileW", kNull, ERROR_DISK_FULL),
    Failing("DeleteFileW", kNull, ERROR_ACCESS_DENIED),
    Failing("GetTempPathW", kNull, ERROR_NOT_ENOUGH_MEMORY),
    Failing("GetLongPathNameW", kNull, ERROR_ACCESS_DENIED),
    Failing("GetCurrentDirectoryW", kNull, ERROR_NOT_ENOUGH_MEMORY),
    Failing("SetupIterateCabinetW", kNull, ERROR_READ_FAULT),
    Giving("CloseHandle", Held::Handles),
    Giving("UnmapViewOfFile", Held::Views),
    Giving("FindClose", Held::Searches),
    // registry and spooler; the failure is the answer
    Taking("RegCreateKeyExW", Held::Keys, ERROR_ACCESS_DENIED, 0, Takes::WhenZero),
    Taking("RegOpenKeyExW", Held::Keys, ERROR_ACCESS_DENIED, 0, Takes::WhenZero),
    Failing("RegQueryValueExW", ERROR_ACCESS_DENIED, 0),
    Failing("RegSetValueExW", ERROR_ACCESS_DENIED, 0),
    Failing("RegEnumValueW", ERROR_ACCESS_DENIED, 0),
    Failing("RegDeleteKeyW", ERROR_ACCESS_DENIED, 0),
    Failing("GetPrinterDataExW", ERROR_ACCESS_DENIED, 0),
    Failing("SetPrinterDataExW", ERROR_ACCESS_DENIED, 0),
    Failing("GetPrinterDriverW", kNull, ERROR_ACCESS_DENIED),
    Failing("GetPrinterW", kNull, ERROR_ACCESS_DENIED),
    Taking("OpenPrinterW", Held::Printers, kNull, ERROR_ACCESS_DENIED),
    Giving("RegCloseKey", Held::Keys),
    Giving("ClosePrinter", Held::Printers),
    // objects
    Failing("CoCreateInstance", static_cast<Argument>(E_OUTOFMEMORY), 0, EmptiesObject),
    Failing("CoInitializeEx", static_cast<Argument>(E_OUTOFMEMORY), 0),
    Taking("CreateMutexW", Held::Handles, kNull, ERROR_NOT_ENOUGH_MEMORY),
    Taking("CreateEventW", Held::Handles, kNull, ERROR_NOT_ENOUGH_MEMORY),
    Taking("CreateThread", Held::Handles, kNull, ERROR_NOT_ENOUGH_MEMORY),
    Failing("WaitForSingleObject", WAIT_FAILED, ERROR_INVALID_HANDLE),
    Failing("TlsAlloc", TLS_OUT_OF_INDEXES, ERROR_NOT_ENOUGH_MEMORY),
    Taking("CreateActCtxW", Held::Contexts, kMinusOne, ERROR_NOT_ENOUGH_MEMORY, Takes::WhenNotMinusOne),
    Taking("ActivateActCtx", Held::Contexts, kNull, ERROR_NOT_ENOUGH_MEMORY),
    Giving("ReleaseActCtx", Held::Contexts),
    Giving("DeactivateActCtx", Held::Contexts),
    // libraries and resources
    Taking("LoadLibraryW", Held::Libraries, kNull, ERROR_MOD_NOT_FOUND),
    Taking("LoadLibraryExW", Held::Libraries, kNull, ERROR_MOD_NOT_FOUND),
    Failing("GetModuleHandleW", kNull, ERROR_MOD_NOT_FOUND),
    Failing("GetProcAddress", kNull, ERROR_PROC_NOT_FOUND),
    Failing("GetModuleFileNameW", kNull, ERROR_NOT_ENOUGH_MEMORY),
    Failing("GetSystemDirectoryW", kNull, ERROR_NOT_ENOUGH_MEMORY),
    Failing("FindResourceExW", kNull, ERROR_RESOURCE_NAME_NOT_FOUND),
    Failing("LoadResource", kNull, ERROR_NOT_ENOUGH_MEMORY),
    Failing("LockResource", kNull, 0),
    Failing("SizeofResource", kNull, ERROR_RESOURCE_NAME_NOT_FOUND),
    Failing("LoadImageW", kNull, ERROR_NOT_ENOUGH_MEMORY),
    Failing("ImageList_LoadImageW", kNull, ERROR_NOT_ENOUGH_MEMORY),
    Failing("LoadCursorW", kNull, ERROR_NOT_ENOUGH_MEMORY),
    Giving("FreeLibrary", Held::Libraries),
    // texts
    Failing("MultiByteToWideChar", kNull, ERROR_NO_UNICODE_TRANSLATION),
    Failing("WideCharToMultiByte", kNull, ERROR_NO_UNICODE_TRANSLATION),
    Failing("LCMapStringW", kNull, ERROR_NOT_ENOUGH_MEMORY),
    Failing("CompareStringW", kNull, ERROR_INVALID_PARAMETER),
    Failing("GetStringTypeW", kNull, ERROR_INVALID_PARAMETER),
    // windows
    Failing("PropertySheetW", kMinusOne, ERROR_NOT_ENOUGH_MEMORY),
    Failing("DialogBoxParamW", kMinusOne, ERROR_NOT_ENOUGH_MEMORY),
    Failing("CreateWindowExW", kNull, ERROR_NOT_ENOUGH_MEMORY),
    Failing("MessageBoxW", kNull, ERROR_NOT_ENOUGH_MEMORY),
    Failing("GetOpenFileNameW", kNull, 0),
    Failing("GetSaveFileNameW", kNull, 0),
    Failing("GetDlgItem", kNull, ERROR_CONTROL_ID_NOT_FOUND),
    Failing("GetWindowTextW", kNull, ERROR_NOT_ENOUGH_MEMORY),
    Failing("GetWindowTextLengthW", kNull, ERROR_NOT_ENOUGH_MEMORY),
    Failing("SetWindowTextW", kNull, ERROR_NOT_ENOUGH_MEMORY),
    Failing("SetDlgItemTextW", kNull, ERROR_NOT_ENOUGH_MEMORY),
    Failing("SendMessageW", kNull, ERROR_NOT_ENOUGH_MEMORY, OfText),
    Failing("CheckDlgButton", kNull, ERROR_CONTROL_ID_NOT_FOUND),
    Failing("IsDlgButtonChecked", BST_UNCHECKED, ERROR_CONTROL_ID_NOT_FOUND),
    Failing("GetWindowLongPtrW", kNull, ERROR_INVALID_WINDOW_HANDLE, OfSystem),
    Failing("SetWindowLongPtrW", kNull, ERROR_ACCESS_DENIED),
    Failing("SetPropW", kNull, ERROR_NOT_ENOUGH_MEMORY),
    Failing("GetComboBoxInfo", kNull, ERROR_INVALID_WINDOW_HANDLE),
    Failing("GetClassNameW", kNull, ERROR_INVALID_WINDOW_HANDLE),
    Failing("GetClientRect", kNull, ERROR_INVALID_WINDOW_HANDLE),
    Failing("GetWindowRect", kNull, ERROR_INVALID_WINDOW_HANDLE),
    Failing("PostMessageW", kNull, ERROR_NOT_ENOUGH_QUOTA),
    Failing("RegisterWindowMessageW", kNull, ERROR_NOT_ENOUGH_MEMORY),
    Taking("SetWindowsHookExW", Held::Hooks, kNull, ERROR_NOT_ENOUGH_MEMORY),
    Giving("UnhookWindowsHookEx", Held::Hooks),
    // drawing
    Taking("GetDC", Held::DeviceContexts, kNull, ERROR_NOT_ENOUGH_MEMORY),
    Taking("CreateCompatibleDC", Held::DeviceContexts, kNull, ERROR_NOT_ENOUGH_MEMORY),
    Failing("GetObjectW", kNull, ERROR_INVALID_HANDLE),
    Failing("SelectObject", kNull, ERROR_INVALID_HANDLE),
    Failing("BitBlt", kNull, ERROR_INVALID_HANDLE),
    Failing("DrawTextW", kNull, ERROR_NOT_ENOUGH_MEMORY),
    Giving("ReleaseDC", Held::DeviceContexts),
    Giving("DeleteDC", Held::DeviceContexts),
    // Its blocks are its own, or the driver's.
    Giving("HeapFree", Held::Memory),
};
constexpr std::size_t kFunctionCount = std::size(kFunctions);
constexpr std::size_t kDom = kFunctionCount; // as a function

struct Calls {
    std::array<Any, kFunctionCount> originals{};
    std::array<std::atomic<long>, kFunctionCount + 1> numbers{};
    std::atomic<bool> counting{false};
    std::atomic<std::size_t> failing{kFunctionCount + 1};
    std::atomic<long> first{0}, last{0};
    std::atomic<bool> failed{false};
    std::array<std::atomic<long>, static_cast<std::size_t>(Held::Count)> held{};
    std::atomic<bool> ends{false}, endsAfter{false}; // the process, instead of failing
    std::function<void(const WatchedCall&)> watcher;
    std::mutex seenLock;
    std::vector<SeenCall> seen;
};
Calls g_calls;

const char* NameOfFunction(std::size_t function)
{
    return function == kDom ? "DOM" : kFunctions[function].name;
}

unsigned PlaceOfCall()
{
    void* frames[8] = {};
    const USHORT count = CaptureStackBackTrace(3, static_cast<DWORD>(std::size(frames)), frames, nullptr);
    std::size_t place = 0;
    for (USHORT i = 0; i < count; ++i)
        place = place * 31 + reinterpret_cast<std::size_t>(frames[i]);
    return static_cast<unsigned>(place ^ (place >> 32));
}

[[noreturn]] void EndProcess()
{
    TerminateProcess(GetCurrentProcess(), kEndedByCall);
    std::abort();
}

constexpr const char* kTraces[] = {
    "CreateFileW",
    "CreateFileMappingW",
    "WriteFile",
    "FlushFileBuffers",
    "FlushViewOfFile",
    "SetEndOfFile",
    "SetFileInformationByHandle",
    "SetFilePointerEx",
    "UnmapViewOfFile",
    "CopyFileW",
    "MoveFileExW",
    "DeleteFileW",
    "SetFileAttributesW",
    "SetFileSecurityW",
    "CloseHandle",
    "SetupIterateCabinetW",
    "RegCreateKeyExW",
    "RegSetValueExW",
    "RegDeleteKeyW",
    "MapViewOfFile",
    "SetPrinterDataExW",
};

constexpr bool IsTrace(std::string_view name)
{
    return std::ranges::find(kTraces, name) != std::end(kTraces);
}

bool Fails(std::size_t function)
{
    if (!g_calls.counting && g_calls.failing != function)
        return false;
    const long number = ++g_calls.numbers[function];
    if (g_calls.counting) {
        const std::scoped_lock lock(g_calls.seenLock);
        g_calls.seen.push_back({NameOfFunction(function), number, PlaceOfCall()});
        return false;
    }
    if (number < g_calls.first || number > g_calls.last)
        return false;
    g_calls.failed = true;
    if (g_calls.ends && !g_calls.endsAfter)
        EndProcess();
    return true;
}

void Keep(const Function& function, Argument first, Argument result, Argument block)
{
    long change = 0;
    switch (function.takes) {
    case Takes::Nothing:
        return;
    case Takes::WhenNotNull:
        change = result != 0;
        break;
    case Takes::WhenNotMinusOne:
        change = result != kMinusOne;
        break;
    case Takes::WhenZero:
        change = static_cast<LONG>(result) == 0;
        break;
    case Takes::Gives:
        change = -1;
        break;
    case Takes::GivesWhenNotNull:
        change = first != 0 ? -1 : 0;
        break;
    case Takes::Reallocates:
        change = (block == 0 && result != 0) ? 1 : 0;
        break;
    }
    g_calls.held[static_cast<std::size_t>(function.kind)] += change;
}

template <std::size_t number> Argument WINAPI Stub(Argument a, Argument b, Argument c, Argument d, Argument e,
                                                   Argument f, Argument g, Argument h, Argument i, Argument j,
                                                   Argument k, Argument l)
{
    constexpr const Function& function = kFunctions[number];
    const Any original = g_calls.originals[number];
    if constexpr (function.fails) {
        Argument failure = function.failure;
        if (g_calls.counting || g_calls.failing == number) {
            const DWORD before = GetLastError();
            bool fails = false;
            if constexpr (function.condition == nullptr || function.condition == &EmptiesObject) {
                fails = Fails(number);
                if constexpr (function.condition != nullptr)
                    fails = fails && function.condition({a, b, c, d, e, f, g, h, i, j, k, l}, failure);
            } else {
                fails = function.condition({a, b, c, d, e, f, g, h, i, j, k, l}, failure) && Fails(number);
            }
            if (fails && g_calls.ends) {
                original(a, b, c, d, e, f, g, h, i, j, k, l);
                EndProcess();
            }
            if (fails) {
                SetLastError(function.error);
                return failure;
            }
            SetLastError(before);
        }
    }
    const auto watched = [&](Instant instant, Argument result) {
        if constexpr (IsTrace(function.name)) {
            if (g_calls.watcher) {
                const DWORD error = GetLastError();
                const Arguments arguments{a, b, c, d, e, f, g, h, i, j, k, l};
                g_calls.watcher({function.name, instant, arguments.data(), result});
                SetLastError(error);
            }
        }
    };
    watched(Instant::Before, 0);
    const Argument result = original(a, b, c, d, e, f, g, h, i, j, k, l);
    watched(Instant::After, result);
    if constexpr (function.takes != Takes::Nothing)
        Keep(function, a, result, a);
    return result;
}

template <std::size_t... number> constexpr auto StubsOf(std::index_sequence<number...>)
{
    return std::array<Any, sizeof...(number)>{&Stub<number>...};
}

const std::array<Any, kFunctionCount> kStubs = StubsOf(std::make_index_sequence<kFunctionCount>());

void Restart()
{
    g_calls.counting = false;
    g_calls.failing = kFunctionCount + 1;
    g_calls.failed = false;
    g_calls.ends = false;
    g_calls.watcher = nullptr;
    for (auto& number : g_calls.numbers)
        number = 0;
}

} // namespace

const char* NameOf(Held kind)
{
    constexpr const char* kNames[] = {
        "memory", "handle", "key", "view", "search", "library", "hook", "device context", "activation context",
        "printer"};
    return kNames[static_cast<std::size_t>(kind)];
}

EveryCall::EveryCall(HMODULE module)
    : dom_(std::make_unique<FailingDom>([](int) { return Fails(kDom); }, E_OUTOFMEMORY))
{
    Restart();
    for (std::size_t i = 0; i < kFunctionCount; ++i) {
        void** place = nullptr;
        try {
            place = FindImport(kFunctions[i].name, module);
        } catch (const std::runtime_error&) {
            continue; // the module does without it
        }
        g_calls.originals[i] = reinterpret_cast<Any>(*place);
        redirected_.emplace_back(place, *place);
        WritePointer(place, reinterpret_cast<void*>(kStubs[i]));
    }
}

EveryCall::~EveryCall()
{
    Restart();
    for (const auto& [place, original] : redirected_)
        WritePointer(place, original);
}

void EveryCall::Count()
{
    Restart();
    g_calls.seen.clear();
    g_calls.counting = true;
}

void EveryCall::Fail(const SeenCall& call, Onwards onwards)
{
    Restart();
    g_calls.first = call.number;
    g_calls.last = onwards == Onwards::Yes ? std::numeric_limits<long>::max() : call.number;
    for (std::size_t i = 0; i <= kDom; ++i) {
        if (call.function == NameOfFunction(i))
            g_calls.failing = i;
    }
}

void EveryCall::End(const SeenCall& call, Instant instant)
{
    Fail(call, Onwards::No);
    g_calls.endsAfter = instant == Instant::After && call.function != NameOfFunction(kDom);
    g_calls.ends = true;
}

void EveryCall::Watch(std::function<void(const WatchedCall&)> watcher)
{
    Restart();
    g_calls.watcher = std::move(watcher);
}

bool EveryCall::LeavesTraces(const std::string& function)
{
    return IsTrace(function);
}

void EveryCall::Stop()
{
    g_calls.watcher = nullptr;
    g_calls.counting = false;
    g_calls.failing = kFunctionCount + 1;
}

bool EveryCall::HasFailed() const
{
    return g_calls.failed;
}

std::vector<SeenCall> EveryCall::Seen() const
{
    return g_calls.seen;
}

HeldCounts EveryCall::Holds() const
{
    HeldCounts counts{};
    for (std::size_t i = 0; i < counts.size(); ++i)
        counts[i] = g_calls.held[i];
    return counts;
}

void EveryCall::GaveBack(long blocks)
{
    g_calls.held[static_cast<std::size_t>(Held::Memory)] -= blocks;
}

} // namespace qx::test
