// What the spooler asks of a driver that it is to install.
#include "base/unique.h"
#include "support/built.h"
#include "support/send_fax_session.h"

#include <gtest/gtest.h>
#include <set>

namespace qx::test {
namespace {

class StandInDriver : public testing::Test {
protected:
    std::set<std::string> Exports() const
    {
        const auto* const image = reinterpret_cast<const BYTE*>(driver_.Get());
        const auto& dos = *reinterpret_cast<const IMAGE_DOS_HEADER*>(image);
        const auto& headers = *reinterpret_cast<const IMAGE_NT_HEADERS64*>(image + dos.e_lfanew);
        const auto& place = headers.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT];
        const auto& table = *reinterpret_cast<const IMAGE_EXPORT_DIRECTORY*>(image + place.VirtualAddress);
        const auto* const names = reinterpret_cast<const DWORD*>(image + table.AddressOfNames);
        std::set<std::string> exported;
        for (DWORD i = 0; i < table.NumberOfNames; ++i)
            exported.insert(reinterpret_cast<const char*>(image + names[i]));
        return exported;
    }

    UniqueModule driver_{LoadLibraryW((BuiltFolder() / L"QXFAXDRV.DLL").c_str())};
};

TEST_F(StandInDriver, ExportsWhatADriverInUserModeExports)
{
    ASSERT_TRUE(driver_);
    EXPECT_EQ(Exports(),
              (std::set<std::string>{"DrvDeviceCapabilities", "DrvDocumentPropertySheets", "DrvQueryDriverInfo"}));
}

TEST_F(StandInDriver, SaysThatItRunsInUserMode)
{
    using Query = BOOL(WINAPI*)(DWORD, void*, DWORD, DWORD*);
    const auto query =
        reinterpret_cast<Query>(reinterpret_cast<void*>(GetProcAddress(driver_.Get(), "DrvQueryDriverInfo")));
    ASSERT_NE(query, nullptr);
    DWORD answer = 0, needed = 0;
    EXPECT_TRUE(query(1, &answer, sizeof answer, &needed));
    EXPECT_EQ(answer, 1u);
    EXPECT_EQ(needed, sizeof answer);

    EXPECT_FALSE(query(1, nullptr, 0, &needed));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INSUFFICIENT_BUFFER));
    EXPECT_FALSE(query(2, &answer, sizeof answer, &needed));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
}

} // namespace
} // namespace qx::test
