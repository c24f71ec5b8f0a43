#include "pages/preview_rule.h"

#include <vector>
#include <winspool.h>

namespace qx {

bool IsLocalPrinter(HANDLE printer)
{
    DWORD bytes = 0;
    GetPrinterW(printer, 2, nullptr, 0, &bytes);
    std::vector<BYTE> buffer(bytes);
    if (bytes < sizeof(PRINTER_INFO_2W) || !GetPrinterW(printer, 2, buffer.data(), bytes, &bytes))
        return false;
    return PreviewOffered(reinterpret_cast<const PRINTER_INFO_2W*>(buffer.data())->pServerName);
}

} // namespace qx
