// The tests' own session with the module: what it shows, and that it leaves nothing behind.
#include "res/fax_job_page_ids.h"
#include "support/send_fax_session.h"

#include <gtest/gtest.h>
#include <winspool.h>

namespace qx::test {
namespace {

bool PrinterExists(std::wstring name)
{
    HANDLE printer = nullptr;
    if (!OpenPrinterW(name.data(), &printer, nullptr))
        return false;
    ClosePrinter(printer);
    return true;
}

bool KeyExists(const std::wstring& path)
{
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS)
        return false;
    RegCloseKey(key);
    return true;
}

TEST(SendFaxSession, HandsOutTheRecord)
{
    SendFaxSession session;
    session.SetDefault(L"ApplyDefaults", 1u);
    session.Start();
    session.Ui().Type(IDC_FAX_NUMBER, L"5550100");
    EXPECT_EQ(session.Send().Cancelled, 0u);
    EXPECT_EQ(session.Recipients(), (std::vector<Recipient>{{L"", L"5550100", L""}}));
}

TEST(SendFaxSession, MayBeStartedAgain)
{
    SendFaxSession session;
    session.Start();
    EXPECT_EQ(session.Cancel().Cancelled, 1u);
    session.Start();
    EXPECT_EQ(session.Cancel().Cancelled, 1u);
}

TEST(SendFaxSession, ClosesWhatIsOpenAndTakesEverythingBack)
{
    std::wstring printer, settings;
    std::filesystem::path phoneBook;
    {
        SendFaxSession session;
        session.WritePhoneBook("<device/>");
        printer = session.Printer();
        settings = session.SettingsKey();
        phoneBook = session.PhoneBookFile();
        EXPECT_TRUE(PrinterExists(printer));
        session.Start();
        session.Ui().Dialog();
        EXPECT_TRUE(KeyExists(settings));
        EXPECT_TRUE(std::filesystem::exists(phoneBook));
    }
    EXPECT_FALSE(PrinterExists(printer));
    EXPECT_FALSE(KeyExists(settings));
    EXPECT_FALSE(std::filesystem::exists(phoneBook));
}

TEST(SendFaxSession, RunsWithAndWithoutTheTextLibrary)
{
    {
        SendFaxSession without(WithoutTextLibrary());
        without.Start();
        EXPECT_EQ(without.Ui().Text(IDOK).front(), L'-'); // marks a built-in text
    }
    SendFaxSession with;
    with.Start();
    EXPECT_NE(with.Ui().Text(IDOK).front(), L'-');
}

} // namespace
} // namespace qx::test
