/* A program that gives its threads names, as debuggers expect it: by an exception that its own last handler passes
   over. In C, so that it carries no C++ library and no thread library that handles the exception before it.

   thread_name_host.exe MODULE: exit code 0 when the handler was asked while the module was loaded. */
#include <stdio.h>
#include <windows.h>

#define THREAD_NAME_EXCEPTION 0x406D1388

static int g_asked;

static LONG WINAPI LastHandler(EXCEPTION_POINTERS* exception)
{
    if (exception->ExceptionRecord->ExceptionCode != THREAD_NAME_EXCEPTION)
        return EXCEPTION_CONTINUE_SEARCH;
    ++g_asked;
    return EXCEPTION_CONTINUE_EXECUTION;
}

static int NamesReachTheHandler(const char* when)
{
    const int before = g_asked;
    RaiseException(THREAD_NAME_EXCEPTION, 0, 0, NULL);
    if (g_asked == before + 1)
        return 1;
    printf("%s: the exception does not reach the program's own last handler\n", when);
    return 0;
}

int wmain(int count, wchar_t** arguments)
{
    HMODULE module;
    int good;

    if (count != 2)
        return 2;
    SetUnhandledExceptionFilter(LastHandler);
    good = NamesReachTheHandler("before the module is loaded");
    module = LoadLibraryW(arguments[1]);
    if (module == NULL) {
        printf("cannot load the module, error %lu\n", GetLastError());
        return 2;
    }
    good &= NamesReachTheHandler("while the module is loaded");
    FreeLibrary(module);
    return good ? 0 : 1;
}
