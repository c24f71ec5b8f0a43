#include "admin/registry_files.h"

#include <gtest/gtest.h>

namespace qx::admin {
namespace {

const std::vector<RegistrySetting> kSettings = {
    {.hive = Hive::Machine, .key = L"A\\B", .name = L"Path", .value = std::wstring(L"C:\\a \"b\" & <c>")},
    {.hive = Hive::Machine, .key = L"A\\B", .name = L"Lock", .value = std::uint32_t{26}},
    {.hive = Hive::User, .key = L"C", .name = L"Old", .value = std::uint32_t{1}, .remove = true},
};

TEST(RegistryFiles, ARegFileGroupsValuesByKeyAndEscapesTexts)
{
    EXPECT_EQ(RegFile(kSettings), L"Windows Registry Editor Version 5.00\r\n"
                                  L"\r\n[HKEY_LOCAL_MACHINE\\A\\B]\r\n"
                                  L"\"Path\"=\"C:\\\\a \\\"b\\\" & <c>\"\r\n"
                                  L"\"Lock\"=dword:0000001A\r\n"
                                  L"\r\n[HKEY_CURRENT_USER\\C]\r\n"
                                  L"\"Old\"=-\r\n");
}

TEST(RegistryFiles, APolicyFileUpdatesAndDeletesValues)
{
    const std::string file = GroupPolicyFile(kSettings);
    EXPECT_NE(file.find("hive=\"HKEY_LOCAL_MACHINE\" key=\"A\\B\" name=\"Path\" type=\"REG_SZ\" "
                        "value=\"C:\\a &quot;b&quot; &amp; &lt;c&gt;\""),
              std::string::npos);
    EXPECT_NE(file.find("type=\"REG_DWORD\" value=\"0000001A\""), std::string::npos);
    EXPECT_NE(file.find("action=\"D\" displayDecimal=\"1\" default=\"0\" hive=\"HKEY_CURRENT_USER\" key=\"C\""),
              std::string::npos);
    EXPECT_EQ(file, GroupPolicyFile(kSettings));
    // Each item has an identifier of its own.
    const std::size_t first = file.find("uid=\"{");
    const std::size_t second = file.find("uid=\"{", first + 1);
    EXPECT_NE(file.substr(first, 44), file.substr(second, 44));
}

} // namespace
} // namespace qx::admin
