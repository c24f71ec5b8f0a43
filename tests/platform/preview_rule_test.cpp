#include "pages/preview_rule.h"

#include "support/server_printer.h"
#include "support/test_printer.h"

#include <gtest/gtest.h>

namespace qx {
namespace {

TEST(PreviewRule, APrinterWithoutServerNameOffersAPreview)
{
    EXPECT_TRUE(PreviewOffered(nullptr));
    EXPECT_TRUE(PreviewOffered(L""));
    EXPECT_FALSE(PreviewOffered(L"\\\\server"));
}

TEST(PreviewRule, APrinterInstalledHereIsLocal)
{
    const test::TestPrinter printer;
    EXPECT_TRUE(IsLocalPrinter(printer.Handle()));
}

TEST(PreviewRule, AConnectionToAServersPrinterIsNot)
{
    const test::TestPrinter printer;
    const test::PrintersBehindServer server(GetModuleHandleW(nullptr));
    EXPECT_FALSE(IsLocalPrinter(printer.Handle()));
}

TEST(PreviewRule, APrinterThatTheSpoolerDoesNotKnowOffersNone)
{
    EXPECT_FALSE(IsLocalPrinter(nullptr));
}

} // namespace
} // namespace qx
