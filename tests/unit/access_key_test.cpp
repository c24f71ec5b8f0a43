#include "dialog/access_key.h"

#include <gtest/gtest.h>
#include <initializer_list>
#include <utility>

namespace qx {
namespace {

TEST(AccessKey, IsTheMarkedLetterInUpperCase)
{
    EXPECT_EQ(AccessKeyOf(L"Co&ver Page"), L'V');
    EXPECT_EQ(AccessKeyOf(L"R&&D &total"), L'T');
    EXPECT_EQ(AccessKeyOf(L"&\x00E4ndern"), L'\x00C4');
    EXPECT_EQ(AccessKeyOf(L"None"), 0);
    EXPECT_EQ(AccessKeyOf(L"R&&D"), 0);
    EXPECT_EQ(AccessKeyOf(L"None&"), 0);
    EXPECT_EQ(AccessKeyOf(L""), 0);
}

TEST(AccessKey, IsGivenToTheFirstLetterOfAWordWhenOneIsFree)
{
    EXPECT_EQ(WithAccessKey(L"Add From Phone Book", L""), L"&Add From Phone Book");
    EXPECT_EQ(WithAccessKey(L"-Add From Phone Book", L"AF"), L"-Add From &Phone Book");
}

TEST(AccessKey, IsElseAnyFreeLetter)
{
    EXPECT_EQ(WithAccessKey(L"Add From", L"AF"), L"A&dd From");
    EXPECT_EQ(WithAccessKey(L"\x05D0\x05D1", L"\x05D0"), L"\x05D0&\x05D1"); // Hebrew
}

TEST(AccessKey, StandsBehindATextThatHasNoLetterForIt)
{
    EXPECT_EQ(WithAccessKey(L"\x96FB\x8A71\x5E33", L"AB"), L"\x96FB\x8A71\x5E33(&C)"); // ideographs
    EXPECT_EQ(WithAccessKey(L"\x30A2\xFF21", L""), L"\x30A2\xFF21(&A)");               // Katakana, wide letters
    EXPECT_EQ(WithAccessKey(L"Add", L"AD"), L"Add(&B)");
    EXPECT_EQ(WithAccessKey(L"", L""), L"(&A)");
}

TEST(AccessKey, IsNotGivenWhereItWouldMarkAnotherLetterOrNoneIsFree)
{
    EXPECT_EQ(WithAccessKey(L"R&&D", L""), L"R&&D");
    EXPECT_EQ(WithAccessKey(L"Book", L"ABCDEFGHIJKLMNOPQRSTUVWXYZ"), L"Book");
}

TEST(AccessKey, GoesWithItsMarkFromACaptionThatIsReadOut)
{
    for (const auto& [caption, read] :
         std::initializer_list<std::pair<const wchar_t*, const wchar_t*>>{{L"", L""},
                                                                          {L"Fax To", L"Fax To"},
                                                                          {L"Co&ver Page", L"Cover Page"},
                                                                          {L"Fax &Recipients:", L"Fax Recipients:"},
                                                                          {L"宛先(&R):", L"宛先:"},
                                                                          {L"宛先(&R)", L"宛先"},
                                                                          {L"Fields && Sons", L"Fields & Sons"},
                                                                          {L"(&Add)", L"(Add)"}, // a word in brackets
                                                                          {L"A (B)", L"A (B)"},
                                                                          {L"(&) or (&X", L"() or (X"},
                                                                          {L"(&", L"(&"},
                                                                          {L"odd &", L"odd &"}})
        EXPECT_EQ(WithoutAccessKey(caption), read);
}

} // namespace
} // namespace qx
