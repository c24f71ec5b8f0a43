/* Loads the module into a process that has all that it imports already, unloads it again, and tells what that changed.

   load_host MODULE RESOURCES LIBRARY...     exit code 0 when it was as little as with a library of nothing but
   RESOURCES */
#include <float.h>
#include <stdio.h>
#include <windows.h>

#include <tlhelp32.h>

typedef struct State {
    DWORD handles;
    DWORD nextHandle; /* its value: the first that is free; not every system counts handles */
    int threads;
    int modules;
    unsigned control; /* floating point */
    UINT errorMode;
    WCHAR folder[MAX_PATH];
} State;

static int CountThreads(void)
{
    THREADENTRY32 entry;
    HANDLE all = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    int count = 0;
    BOOL more;
    entry.dwSize = sizeof entry;
    for (more = Thread32First(all, &entry); more; more = Thread32Next(all, &entry))
        count += entry.th32OwnerProcessID == GetCurrentProcessId();
    CloseHandle(all);
    return count;
}

static int CountModules(void)
{
    MODULEENTRY32W entry;
    HANDLE all = CreateToolhelp32Snapshot(TH32CS_SNAPMODULE, GetCurrentProcessId());
    int count = 0;
    BOOL more;
    entry.dwSize = sizeof entry;
    for (more = Module32FirstW(all, &entry); more; more = Module32NextW(all, &entry))
        ++count;
    CloseHandle(all);
    return count;
}

static State Look(void)
{
    State state = {0};
    HANDLE next = CreateEventW(NULL, FALSE, FALSE, NULL);
    state.nextHandle = HandleToULong(next);
    CloseHandle(next);
    state.threads = CountThreads();
    state.modules = CountModules();
    state.control = _controlfp(0, 0);
    state.errorMode = GetErrorMode();
    GetCurrentDirectoryW(MAX_PATH, state.folder);
    GetProcessHandleCount(GetCurrentProcess(), &state.handles);
    return state;
}

/* What loading a library changes, and whether unloading it takes all of it back. */
static int Try(const WCHAR* library, int* handles)
{
    State before, loaded, after;
    HMODULE module;
    Look(); /* whatever looking itself needs is there now */
    before = Look();
    module = LoadLibraryW(library);
    if (module == NULL) {
        printf("%ls: cannot be loaded, error %lu\n", library, GetLastError());
        return 0;
    }
    loaded = Look();
    FreeLibrary(module);
    after = Look();
    /* Handle values come in steps of four. */
    *handles = (int)(loaded.nextHandle - before.nextHandle) / 4;
    if ((int)(loaded.handles - before.handles) > *handles)
        *handles = (int)(loaded.handles - before.handles);
    printf("%ls: handles %lu, %lu, %lu (the next: %#lx, %#lx, %#lx), threads %d, %d, %d, modules %d, %d, %d, "
           "floating point %#x, %#x, error mode %u, %u\n",
           library, before.handles, loaded.handles, after.handles, before.nextHandle, loaded.nextHandle,
           after.nextHandle, before.threads, loaded.threads, after.threads, before.modules, loaded.modules,
           after.modules, before.control, loaded.control, before.errorMode, loaded.errorMode);
    return before.handles == after.handles && before.nextHandle == after.nextHandle &&
           before.threads == loaded.threads && before.modules + 1 == loaded.modules &&
           before.modules == after.modules && before.control == loaded.control &&
           before.errorMode == loaded.errorMode && lstrcmpW(before.folder, loaded.folder) == 0;
}

int wmain(int count, WCHAR** arguments)
{
    int i, ofLibrary = 0, ofModule = 0;
    for (i = 3; i < count; ++i) {
        if (LoadLibraryW(arguments[i]) == NULL)
            return 2;
    }
    if (count < 3 || !Try(arguments[2], &ofLibrary) || !Try(arguments[1], &ofModule))
        return 1;
    /* One is a lock of the C++ library: of the memory that it keeps for exceptions. */
    return ofModule <= ofLibrary + 1 ? 0 : 1;
}
