#include "host/script.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>

namespace qx::test {
namespace {

std::string WhatIsWrongWith(const std::string& line)
{
    std::istringstream text("# a comment\n\n" + line + "\n");
    try {
        host::Script(text, "user.txt", ".");
    } catch (const host::ScriptError& error) {
        return error.what();
    }
    return "nothing";
}

TEST(Script, ALineThatIsNotUnderstoodIsNamedWithItsReason)
{
    constexpr std::pair<const char*, const char*> kLines[] = {
        {"jump 1", "unknown action 'jump'"},
        {"press", "the control is missing"},
        {"press somewhere", "'somewhere' is neither a control's number nor a button's name"},
        {"press 1 2", "'2' is too much"},
        {"page two", "'two' is not a number"},
        {"key Ctrl+Moon", "unknown key 'moon'"},
        {"picture ../x", "'../x' is not a plain name"},
        {"screen ../x", "'../x' is not a plain name"},
    };
    for (const auto& [line, why] : kLines)
        EXPECT_EQ(WhatIsWrongWith(line), std::string("user.txt:3: ") + why) << line;
    EXPECT_EQ(WhatIsWrongWith("press 1"), "nothing");
}

// Those that no test plays, too.
TEST(Script, EveryScriptThatIsDeliveredIsUnderstood)
{
    const char* const sources = std::getenv("QX_SOURCE_DIR");
    ASSERT_NE(sources, nullptr) << "run this test through ctest";
    int scripts = 0;
    for (const auto& file : std::filesystem::directory_iterator(std::filesystem::path(sources) / "host" / "scripts")) {
        std::ifstream text(file.path());
        EXPECT_NO_THROW(host::Script(text, file.path().filename().string(), ".")) << file.path();
        ++scripts;
    }
    EXPECT_GE(scripts, 3);
}

} // namespace
} // namespace qx::test
