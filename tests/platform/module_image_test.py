"""The module's file as Windows' loader sees it: what it exports, what it needs, and how it may be loaded.

usage: module_image_test.py [--shipped] MODULE [LIBRARY...]

Beside MODULE lie the binaries that are shipped with it. --shipped: MODULE is a release, and must be as lean as one.
The static libraries that the module is made of are linked into programs with another kind of threads, too: nothing in
them may depend on the kind.
"""
import re
import struct
import subprocess
import sys
from pathlib import Path

WINDOWS_LIBRARIES = {
    "advapi32.dll", "comctl32.dll", "comdlg32.dll", "gdi32.dll", "imm32.dll", "kernel32.dll", "msvcrt.dll",
    "ole32.dll", "oleaut32.dll", "oleacc.dll", "setupapi.dll", "shell32.dll", "user32.dll", "winspool.drv",
}
EXPORTS = {"DisplayFaxUI", "BStoreExtEscapeData", "BGetStoredExtEscapeData"}
# What the C++ library makes of one of its threads, locks or files, whose insides belong to a kind of threads.
THREAD_KIND = re.compile(r"\b(?:pthread_\w+|__gthr\w+|__emutls\w+|std::(?:\w+_)?mutex|std::j?thread|"
                         r"std::condition_variable|std::basic_[io]?f(?:ilebuf|stream))\b")
# Every function of Windows that the module may call. A new one is a decision: endpoint scanners ask about those that open
# processes, suspend threads, set affinities or run commands, and administrators about those that reach the network.
FUNCTIONS = set("""
    ___lc_codepage_func ___mb_cur_max_func __C_specific_handler __iob_func _aligned_free _aligned_malloc _amsg_exit
    _assert _close _errno _fpreset _initterm _lock _read _unlock _wcsicmp abort AcquireSRWLockExclusive ActivateActCtx
    BitBlt CallNextHookEx calloc CallWindowProcW CharUpperBuffW CheckDlgButton ClientToScreen CloseHandle ClosePrinter
    CoCreateInstance CoGetApartmentType CoInitializeEx CompareStringOrdinal CompareStringW CopyFileW CoUninitialize
    CreateActCtxW CreateCompatibleDC CreateEventW CreateFileMappingW CreateFileW CreateMutexW CreateSemaphoreW
    CreateThread CreateWindowExW DeactivateActCtx DefWindowProcW DeleteCriticalSection DeleteDC DeleteFileW DeleteObject
    DestroyWindow DialogBoxParamW DispatchMessageW DrawEdge DrawFocusRect DrawTextW EnableWindow EndDialog
    EnterCriticalSection EnumResourceLanguagesW EnumResourceNamesW EnumResourceTypesW EqualRect FillRect FindClose
    FindFirstFileW FindNextFileW FindResourceExW FlushFileBuffers FlushViewOfFile fputc fputs fputwc FrameRect free
    FreeLibrary FreeLibraryAndExitThread fwprintf fwrite GetActiveWindow GetAncestor GetClassNameW GetClientRect
    GetComboBoxInfo GetCurrentDirectoryW GetCurrentProcessId GetCurrentThreadId GetCursor GetCursorInfo GetCursorPos
    GetDC GetDeviceCaps GetDIBColorTable GetDlgCtrlID GetDlgItem getenv GetFileAttributesExW GetFileAttributesW
    GetFileInformationByHandle GetFileSecurityW GetFileSizeEx GetFinalPathNameByHandleW GetFocus GetGUIThreadInfo
    GetKeyState GetLastError GetLayout GetLongPathNameW GetMessagePos GetMessageW GetModuleFileNameW GetModuleHandleExW
    GetModuleHandleW GetMonitorInfoW GetNextDlgTabItem GetObjectW GetOpenFileNameW GetParent GetPixel GetPrinterDataExW
    GetPrinterDataW GetPrinterDriverW GetPrinterW GetProcAddress GetProcessHeap GetPropW GetSaveFileNameW GetStockObject
    GetStringTypeW GetSysColor GetSysColorBrush GetSystemDirectoryW GetSystemInfo GetSystemTimeAsFileTime GetTempPathW
    GetThreadErrorMode GetTickCount64 GetUserDefaultUILanguage GetVersionExW GetWindow GetWindowLongPtrW GetWindowRect
    GetWindowTextLengthW GetWindowTextW HeapAlloc HeapFree ImageList_AddMasked ImageList_Create ImageList_Destroy
    ImageList_LoadImageW ImmAssociateContext InflateRect InitializeCriticalSection InvalidateRect IsCharAlphaW IsChild
    IsDBCSLeadByteEx IsDlgButtonChecked isspace IsTextUnicode iswctype iswdigit IsWindow IsWindowEnabled IsWindowVisible
    iswspace LCMapStringW LeaveCriticalSection LoadCursorW LoadImageW LoadLibraryExW LoadLibraryW LoadResource
    localeconv LockResource lstrcmpiW lstrcmpW lstrcpynW malloc MapViewOfFile MapWindowPoints memchr memcmp memcpy
    memmove memset MessageBoxW MonitorFromWindow MoveFileExW MoveWindow MsgWaitForMultipleObjects
    MsgWaitForMultipleObjectsEx MulDiv MultiByteToWideChar NotifyWinEvent OffsetRect OpenPrinterW OutputDebugStringW
    PeekMessageW PostMessageW PostQuitMessage PostThreadMessageW PropertySheetW PtInRect QueryPerformanceCounter
    RaiseException ReadFile RealChildWindowFromPoint realloc RegCloseKey RegCreateKeyExW RegDeleteKeyW RegEnumValueW
    RegisterWindowMessageW RegOpenKeyExW RegQueryValueExW RegSetValueExW ReleaseActCtx ReleaseCapture ReleaseDC
    ReleaseMutex ReleaseSemaphore ReleaseSRWLockExclusive RemovePropW RtlCaptureContext RtlLookupFunctionEntry
    RtlUnwindEx RtlVirtualUnwind SafeArrayCreateVector ScreenToClient SelectObject SendDlgItemMessageW
    SendMessageTimeoutW SendMessageW SetBkColor SetCapture SetCurrentDirectoryW SetCursor SetDIBColorTable
    SetDlgItemTextW SetEndOfFile SetEvent SetFileAttributesW SetFileInformationByHandle SetFilePointerEx
    SetFileSecurityW SetFocus SetForegroundWindow SetLastError SetLayout SetPixel SetPrinterDataExW SetPropW
    SetTextColor SetThreadErrorMode SetupIterateCabinetW SetWindowLongPtrW SetWindowPos SetWindowsHookExW SetWindowTextW
    ShowCursor ShowWindow SizeofResource Sleep sprintf strcmp strerror strlen strncmp strstr strtoul SysAllocStringLen
    SysFreeString SysStringLen SystemParametersInfoW TlsAlloc TlsFree TlsGetValue TlsSetValue towlower TrackMouseEvent
    TranslateMessage UnhookWindowsHookEx UnmapViewOfFile VariantClear VariantInit vfprintf VirtualAlloc VirtualFree
    VirtualProtect VirtualQuery WaitForMultipleObjects WaitForSingleObject wcslen wcstol wcstoul WideCharToMultiByte
    WriteFile
""".split())
# The C++ library of GCC 13 and later brings these: its own locks, and the messages of its errors.
FUNCTIONS |= set("""
    FormatMessageA GetThreadId InitializeConditionVariable LocalFree SleepConditionVariableCS strchr
    TryEnterCriticalSection WakeAllConditionVariable WakeConditionVariable
""".split())
VERSION = Path(__file__).resolve().parents[2] / "include/qxfax/version.h"
SHIPPED = ["QXTEXT64.DLL", "QXFAXDRV.DLL", "faxhost.exe", "qxfaxadm.exe"]
MOST_BYTES = 700_000
EXECUTABLE, WRITABLE = 0x20000000, 0x80000000
PROTECTIONS = {"HIGH_ENTROPY_VA", "DYNAMIC_BASE", "NX_COMPAT"}


def thread_kinds(library):
    symbols = subprocess.run(["x86_64-w64-mingw32-nm", "--demangle", library], check=True, capture_output=True,
                             text=True).stdout
    if not symbols:
        return ["no symbols at all"]
    return sorted(set(THREAD_KIND.findall(symbols)))


def sections(data):
    """(name, characteristics) of each section of an image."""
    header, = struct.unpack_from("<I", data, 0x3C)
    count, = struct.unpack_from("<H", data, header + 6)
    optional, = struct.unpack_from("<H", data, header + 20)
    table = header + 24 + optional
    return [(data[at:at + 8].rstrip(b"\0").decode(), struct.unpack_from("<I", data, at + 36)[0])
            for at in range(table, table + 40 * count, 40)]


def version_problems(path):
    """What is missing in the version information of an image."""
    data = path.read_bytes()
    expected = [int(number) for number in re.findall(r"define QXFAX_VERSION_[A-Z]+ (\d+)", VERSION.read_text())]
    fixed = data.find(struct.pack("<I", 0xFEEF04BD))
    if fixed < 0:
        return [f"{path.name} has no version"]
    _, _, high, low = struct.unpack_from("<4I", data, fixed)
    problems = []
    if [high >> 16, high & 0xFFFF, low >> 16] != expected:
        problems.append(f"{path.name} has version {high >> 16}.{high & 0xFFFF}.{low >> 16}")
    for text in "LegalCopyright", path.name, ".".join(map(str, expected)) + ".0":
        if text.encode("utf-16-le") not in data:
            problems.append(f"{path.name} lacks '{text}' in its version")
    return problems


def image_problems(module, dump):
    data = module.read_bytes()
    problems = [f"section {name} is both written and run" for name, flags in sections(data)
                if flags & EXECUTABLE and flags & WRITABLE]
    if "(Windows GUI)" not in dump:
        problems.append("not of the GUI subsystem")
    if not re.search(r"RSDS signature [0-9a-f]{32}", dump):
        problems.append("no build id")
    if any(name.startswith((".debug", "/")) for name, _ in sections(data)):
        problems.append("debugging information is left in it")
    symbols = subprocess.run(["x86_64-w64-mingw32-nm", f"{module}.debug"], capture_output=True, text=True).stdout
    if " T __stack_chk_fail" not in symbols:
        problems.append("its stack is not guarded, or its symbols are missing")
    return problems


def imported_functions(dump):
    return set(re.findall(r"^\t[0-9a-f]+\s+(?:<none>\s+[0-9a-f]+|\d+)\s+(\w+)", dump, re.MULTILINE))


def main(*arguments):
    shipped = arguments[0] == "--shipped"
    module, *libraries = arguments[shipped:]
    dump = subprocess.run(["x86_64-w64-mingw32-objdump", "-p", module], check=True, capture_output=True,
                          text=True).stdout
    problems = []
    imported = {name.lower() for name in re.findall(r"DLL Name: (\S+)", dump)}
    if not imported or imported - WINDOWS_LIBRARIES:
        problems.append(f"imports other than Windows' own: {sorted(imported - WINDOWS_LIBRARIES)}")
    if "VectoredExceptionHandler" in dump:
        problems.append("a thread library in it handles exceptions of the whole process")
    functions = imported_functions(dump)
    if not functions or functions - FUNCTIONS:
        problems.append(f"imports functions that are not on the list: {sorted(functions - FUNCTIONS)}")
    problems += image_problems(Path(module), dump)
    for binary in [Path(module), *(Path(module).parent / name for name in SHIPPED)]:
        problems += version_problems(binary)
    if shipped and Path(module).stat().st_size > MOST_BYTES:
        problems.append(f"{Path(module).stat().st_size} bytes: larger than {MOST_BYTES}")
    table = dump.split("[Ordinal/Name Pointer] Table", 1)[1].split("\n\n", 1)[0]
    # Newer binutils print the ordinal and the hint before the name.
    exported = set(re.findall(r"^\s*\[\s*\d+\](?: \+base\[\s*\d+\]\s+[0-9a-f]{4})?\s+(\S+)$", table, re.MULTILINE))
    if exported != EXPORTS:
        problems.append(f"exports: {sorted(exported)}")
    flags = set(re.findall(r"^\s+(\w+)$", dump, re.MULTILINE))
    if not PROTECTIONS <= flags:
        problems.append(f"missing protections: {sorted(PROTECTIONS - flags)}")
    resources = dump[dump.find("The .rsrc Resource Directory section"):]
    for kind, name in (("0x000010", "version information"), ("0x000018", "manifest")):
        if not re.search(rf"Entry: ID: {kind}\b", resources):
            problems.append(f"no {name}")
    problems += [f"{library}: {kinds}" for library in libraries if (kinds := thread_kinds(library))]
    for problem in problems:
        print(problem)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
