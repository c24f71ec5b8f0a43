#include "support/server_printer.h"

namespace qx::test {

namespace {

wchar_t g_server[] = L"\\\\printserver";
decltype(&GetPrinterW) g_getPrinter = nullptr; // the spooler's own

BOOL WINAPI GetServerPrinter(HANDLE printer, DWORD level, BYTE* buffer, DWORD size, DWORD* needed)
{
    if (!g_getPrinter(printer, level, buffer, size, needed))
        return FALSE;
    if (level == 2)
        reinterpret_cast<PRINTER_INFO_2W*>(buffer)->pServerName = g_server;
    return TRUE;
}

} // namespace

PrintersBehindServer::PrintersBehindServer(HMODULE module) : import_("GetPrinterW", GetServerPrinter, module)
{
    g_getPrinter = import_.Original();
}

} // namespace qx::test
