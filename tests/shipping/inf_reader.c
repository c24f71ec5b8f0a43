/* Reads a driver package's INF as Windows' installer does, and prints what it would do, a fact per line.

   inf_reader INF */
#include <stdio.h>
#include <windows.h>

#include <setupapi.h>

static void PrintField(INFCONTEXT* line, DWORD field, const char* before)
{
    WCHAR text[MAX_PATH] = L"";
    if (SetupGetStringFieldW(line, field, text, MAX_PATH, NULL))
        printf("%s%ls", before, text);
}

/* "SECTION: KEY | FIELD | ..." */
static void PrintSection(HINF inf, const WCHAR* section)
{
    INFCONTEXT line;
    BOOL more;
    for (more = SetupFindFirstLineW(inf, section, NULL, &line); more; more = SetupFindNextLine(&line, &line)) {
        DWORD field;
        printf("%ls: ", section);
        PrintField(&line, 0, "");
        for (field = 1; field <= SetupGetFieldCount(&line); ++field)
            PrintField(&line, field, " | ");
        printf("\n");
    }
}

int wmain(int count, WCHAR** arguments)
{
    static const WCHAR* const sections[] = {
        L"Version",         L"Manufacturer",           L"Models.NTamd64",        L"Install",
        L"DestinationDirs", L"SourceDisksNames.amd64", L"SourceDisksFiles.amd64"};
    WCHAR folder[MAX_PATH];
    INFCONTEXT line;
    HINF inf;
    UINT wrong = 0;
    size_t i;
    if (count != 2)
        return 2;
    inf = SetupOpenInfFileW(arguments[1], L"Printer", INF_STYLE_WIN4, &wrong);
    if (inf == INVALID_HANDLE_VALUE) {
        printf("cannot be opened, error %#lx in line %u\n", GetLastError(), wrong);
        return 1;
    }
    for (i = 0; i < sizeof sections / sizeof *sections; ++i)
        PrintSection(inf, sections[i]);
    if (SetupFindFirstLineW(inf, L"Install", L"CopyFiles", &line)) {
        DWORD field;
        for (field = 1; field <= SetupGetFieldCount(&line); ++field) {
            WCHAR section[MAX_PATH];
            INFCONTEXT file;
            BOOL more;
            if (!SetupGetStringFieldW(&line, field, section, MAX_PATH, NULL))
                return 1;
            for (more = SetupFindFirstLineW(inf, section, NULL, &file); more; more = SetupFindNextLine(&file, &file)) {
                printf("copied: ");
                PrintField(&file, 1, "");
                printf("\n");
            }
            if (SetupGetTargetPathW(inf, NULL, section, folder, MAX_PATH, NULL))
                printf("target of %ls: %ls\n", section, folder);
        }
    }
    SetupCloseInfFile(inf);
    return 0;
}
