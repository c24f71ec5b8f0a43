#include <qxfax/send_fax.h>

#include <gtest/gtest.h>
#include <string>

extern "C" {
size_t OffsetOfStringsInC(void);
size_t SizeOfJobInC(void);
int RecipientCapacityAfterInitInC(void);
}

namespace {

TEST(SendFaxHeader, IsTheSameRecordInCAndInCpp)
{
    EXPECT_EQ(OffsetOfStringsInC(), offsetof(FaxJobData, Strings));
    EXPECT_EQ(SizeOfJobInC(), sizeof(FaxJobData));
}

TEST(SendFaxHeader, AnInitialisedRecordHasRoomForRecipients)
{
    EXPECT_GE(RecipientCapacityAfterInitInC(), 1);
}

TEST(SendFaxHeader, DigitsOfAllScriptsBecomeThoseThatADiallerKnows)
{
    const struct {
        const wchar_t* text;
        const wchar_t* expected;
    } rows[] = {
        {L"0123456789,-*#()[]", L"0123456789,-*#()[]"},
        {L"\u0660\u0661\u0669-\u06F0\u06F9", L"019-09"}, // Arabic-Indic, extended Arabic-Indic
        {L"\u0966\u096F \u0E50\u0E59", L"09 09"},        // Devanagari, Thai
        {L"\uFF10\uFF15\uFF19", L"059"},                 // full-width
        {L"Ann \u05D0\u3042\xD83D\xDE00", L"Ann \u05D0\u3042\xD83D\xDE00"},
        {L"", L""},
    };
    for (const auto& row : rows) {
        std::wstring text = row.text;
        QxFaxAsciiDigits(text.data());
        EXPECT_EQ(text, row.expected);
    }
    QxFaxAsciiDigits(nullptr);
}

TEST(SendFaxHeader, KnowsItsVersion)
{
    EXPECT_EQ(QXFAX_VERSION, QXFAX_VERSION_MAJOR * 10000 + QXFAX_VERSION_MINOR * 100 + QXFAX_VERSION_PATCH);
    EXPECT_GE(QXFAX_VERSION, 10000);
}

} // namespace
