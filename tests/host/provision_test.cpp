// Installing and removing beside another driver that has the same files.
#include "base/no_copy.h"
#include "host/provision.h"

#include "support/send_fax_session.h"

#include <gtest/gtest.h>
#include <winspool.h>

namespace qx::test {
namespace {

namespace fs = std::filesystem;

std::wstring Own(const wchar_t* name)
{
    return std::wstring(L"QX provision test ") + name + L' ' + std::to_wstring(GetCurrentProcessId());
}

// Drivers that other tests have left installed have the same files.
void RemoveDriversOfTests()
{
    wchar_t environment[] = L"Windows x64";
    DWORD bytes = 0, count = 0;
    EnumPrinterDriversW(nullptr, environment, 1, nullptr, 0, &bytes, &count);
    std::vector<BYTE> buffer(bytes);
    EnumPrinterDriversW(nullptr, environment, 1, buffer.data(), bytes, &bytes, &count);
    for (DWORD i = 0; i < count; ++i) {
        wchar_t* const name = reinterpret_cast<const DRIVER_INFO_1W*>(buffer.data())[i].pName;
        if (std::wstring_view(name).starts_with(L"QX "))
            DeletePrinterDriverExW(nullptr, environment, name, 0, 0);
    }
}

// A driver of somebody else, whose files lie in the driver folder already.
class OtherDriver : NoCopy {
public:
    OtherDriver(const wchar_t* file, const std::vector<std::wstring>& dependentFiles)
        : driverFile_((host::DriverFolder() / file).native())
    {
        for (const std::wstring& dependent : dependentFiles)
            dependents_ += (host::DriverFolder() / dependent).native() + L'\0';
        DRIVER_INFO_3W info{};
        info.cVersion = 3;
        info.pName = name_.data();
        info.pEnvironment = environment_.data();
        info.pDriverPath = info.pDataFile = info.pConfigFile = driverFile_.data();
        info.pDependentFiles = dependents_.data();
        EXPECT_TRUE(AddPrinterDriverW(nullptr, 3, reinterpret_cast<BYTE*>(&info))) << GetLastError();
    }
    ~OtherDriver() { DeletePrinterDriverExW(nullptr, environment_.data(), name_.data(), 0, 0); }

private:
    std::wstring name_ = Own(L"other driver");
    std::wstring environment_ = L"Windows x64";
    std::wstring driverFile_;
    std::wstring dependents_;
};

class Provisioning : public testing::Test {
protected:
    Provisioning()
    {
        RemoveDriversOfTests();
        setup_.printer = Own(L"printer");
        setup_.driver = Own(L"driver");
        setup_.guid = Own(L"guid");
        setup_.moduleFolder = BuiltFolder();
    }
    ~Provisioning() override
    {
        try {
            host::Unprovision(setup_.printer);
        } catch (const std::runtime_error&) {
            // gone already, as it should be
        }
    }

    static bool IsInstalled(const wchar_t* file) { return fs::exists(host::DriverFolder() / file); }

    host::PrinterSetup setup_;
};

TEST_F(Provisioning, TakesAllFilesBackThatNobodyElseHas)
{
    host::Provision(setup_);
    ASSERT_TRUE(IsInstalled(L"QXFAXDRV.DLL") && IsInstalled(L"qxfaxui.dll") && IsInstalled(L"QXTEXT64.DLL"));
    host::Unprovision(setup_.printer);
    EXPECT_FALSE(IsInstalled(L"QXFAXDRV.DLL") || IsInstalled(L"qxfaxui.dll") || IsInstalled(L"QXTEXT64.DLL"));
}

TEST_F(Provisioning, LeavesTheFilesOfAnotherDriver)
{
    host::Provision(setup_);
    const OtherDriver other(L"qxfaxdrv.dll", {L"QXFAXUI.DLL"}); // the same files, in other letters
    host::Unprovision(setup_.printer);
    EXPECT_TRUE(IsInstalled(L"QXFAXDRV.DLL"));
    EXPECT_TRUE(IsInstalled(L"qxfaxui.dll"));
    EXPECT_FALSE(IsInstalled(L"QXTEXT64.DLL"));
}

TEST_F(Provisioning, LeavesATextLibraryOfAnotherDriverAndSaysSo)
{
    host::Provision(setup_);
    const OtherDriver other(L"QXFAXDRV.DLL", {L"QXTEXT64.DLL"});
    setup_.textLibrary = false;
    EXPECT_THROW(host::Provision(setup_), std::runtime_error); // and all is as it was: the destructor finds the printer
    EXPECT_TRUE(IsInstalled(L"QXTEXT64.DLL"));
}

} // namespace
} // namespace qx::test
