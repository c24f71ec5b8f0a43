// Printers of a print server, without a second computer.
#pragma once

#include "support/redirected_import.h"

#include <winspool.h>

namespace qx::test {

// As long as it lives, module hears from the spooler that every printer stands behind a print server. Everything else
// that the spooler says stays as it is.
class PrintersBehindServer {
public:
    explicit PrintersBehindServer(HMODULE module); // throws std::runtime_error when it asks no spooler

private:
    RedirectedImport<decltype(GetPrinterW)> import_;
};

} // namespace qx::test
