/* Loads the module, makes it read through a pointer that points nowhere, and leaves a crash dump.

   crash_host MODULE DUMP */
#include <qxfax/send_fax.h>
#include <stdio.h>

#include <dbghelp.h>

static const WCHAR* dumpPath;

static LONG WINAPI WriteDump(EXCEPTION_POINTERS* exception)
{
    MINIDUMP_EXCEPTION_INFORMATION information = {GetCurrentThreadId(), exception, FALSE};
    HANDLE file = CreateFileW(dumpPath, GENERIC_WRITE, 0, NULL, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, NULL);
    if (file == INVALID_HANDLE_VALUE ||
        !MiniDumpWriteDump(GetCurrentProcess(), GetCurrentProcessId(), file, MiniDumpNormal, &information, NULL, NULL))
        ExitProcess(3);
    CloseHandle(file);
    printf("%p\n", exception->ExceptionRecord->ExceptionAddress);
    fflush(stdout);
    ExitProcess(42);
}

int wmain(int count, WCHAR** arguments)
{
    typedef BOOL(WINAPI * Fetch)(void**, DWORD*);
    HMODULE module = count == 3 ? LoadLibraryW(arguments[1]) : NULL;
    Fetch fetch = module != NULL ? (Fetch)(void*)GetProcAddress(module, "BGetStoredExtEscapeData") : NULL;
    if (fetch == NULL)
        return 2;
    dumpPath = arguments[2];
    SetUnhandledExceptionFilter(WriteDump);
    printf("%p\n", (void*)module);
    fetch(NULL, (DWORD*)16);
    return 0;
}
