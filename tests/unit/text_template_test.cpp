#include "base/text_template.h"

#include <gtest/gtest.h>

namespace qx {
namespace {

TEST(TextTemplate, FillsNumbersAndTextsInOrder)
{
    EXPECT_EQ(FillTemplate(L"%s has %d of %d%%", {L"Ann", 3, 4}), L"Ann has 3 of 4%");
    EXPECT_EQ(FillTemplate(L"nothing to fill", {}), L"nothing to fill");
    EXPECT_EQ(FillTemplate(L"%d", {-7}), L"-7");
}

TEST(TextTemplate, RefusesPlaceholdersThatDoNotFitTheArguments)
{
    struct Case {
        const wchar_t* text;
        std::initializer_list<TemplateArgument> arguments;
    };
    const Case cases[] = {
        {L"%s", {4}},  {L"%d", {L"text"}}, {L"%d %d", {4}}, {L"no placeholder", {4}}, {L"%", {}},        {L"%d %", {4}},
        {L"%n", {4}},  {L"%5d", {4}},      {L"%x", {4}},    {L"%s%s%s%s", {}},        {L"100 % d", {4}}, {L"%ld", {4}},
        {L"%*d", {4}},
    };
    for (const Case& c : cases)
        EXPECT_FALSE(FillTemplate(c.text, c.arguments).has_value()) << std::string(c.text, c.text + wcslen(c.text));
}

TEST(TextTemplate, AnUnsafeTranslationGivesWayToTheBuiltInText)
{
    EXPECT_EQ(FillTemplate(L"mindestens %s Ziffern", L"at least %d digits", {4}), L"at least 4 digits");
    EXPECT_EQ(FillTemplate(L"mindestens %d Ziffern", L"at least %d digits", {4}), L"mindestens 4 Ziffern");
    EXPECT_EQ(FillTemplate(L"%s", L"", {4}), L"");
}

TEST(TextTemplate, AnArgumentIsNeverReadAsATemplate)
{
    EXPECT_EQ(FillTemplate(L"Cannot open %s.", {L"100%d%s%n.csv"}), L"Cannot open 100%d%s%n.csv.");
}

} // namespace
} // namespace qx
