#include "phonebook/csv/csv_text.h"
#include "support/literal_csv.h"

#include <gtest/gtest.h>
#include <random>

namespace qx {
namespace {

using namespace std::literals;
using Rows = std::vector<std::vector<std::wstring>>;

bool Yes(std::span<const unsigned char>)
{
    return true;
}
bool No(std::span<const unsigned char>)
{
    return false;
}

CsvEncoding Detect(std::string_view bytes, bool (*looksLikeUtf16)(std::span<const unsigned char>) = No)
{
    return DetectEncoding({reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()}, looksLikeUtf16);
}

// The table's raw fields, rows filled up to its columns.
Rows RowsOf(const CsvFields& fields)
{
    Rows rows(fields.Rows());
    for (std::size_t row = 0; row < rows.size(); ++row) {
        for (std::size_t column = 0; column < fields.Columns(); ++column)
            rows[row].emplace_back(fields.Field(row, column));
    }
    return rows;
}

struct Parsed {
    CsvStatus status;
    Rows rows;
};
Parsed Parse(const std::wstring& text)
{
    CsvFields fields;
    const CsvStatus status = fields.Parse(text);
    return {status, RowsOf(fields)};
}

std::wstring Read(std::wstring_view field)
{
    std::wstring text = L"left over";
    ReadField(field, text);
    return text;
}

TEST(CsvEncoding, MarksDecideFirst)
{
    EXPECT_EQ(Detect("\xEF\xBB\xBF"
                     "a",
                     Yes),
              CsvEncoding::Utf8);
    EXPECT_EQ(Detect("\xFF\xFE"
                     "a\0"s,
                     No),
              CsvEncoding::Utf16LittleEndian);
    EXPECT_EQ(Detect("\xFE\xFF\0a"s, Yes), CsvEncoding::Utf16BigEndian);
}

TEST(CsvEncoding, WhatLooksLikeUtf16IsTakenForIt)
{
    EXPECT_EQ(Detect("plain", Yes), CsvEncoding::Utf16LittleEndian);
}

TEST(CsvEncoding, AFileBelowFourBytesIsNotLookedAt)
{
    EXPECT_EQ(Detect("abc", Yes), CsvEncoding::Unknown);
    EXPECT_EQ(Detect("\xEF\xBB\xBF", Yes), CsvEncoding::Unknown);
    EXPECT_EQ(Detect("", Yes), CsvEncoding::Unknown);
}

TEST(CsvEncoding, AnsiIsPrintableAsciiWithCommasAndLineEndsOnly)
{
    for (int byte = 0; byte < 256; ++byte) {
        const bool plain = byte == '\r' || byte == '\n' || (byte >= 0x20 && byte <= 0x7E);
        EXPECT_EQ(Detect("abc"s + static_cast<char>(byte)), plain ? CsvEncoding::Ansi : CsvEncoding::Unknown) << byte;
    }
}

TEST(CsvText, TheHeaderGivesTheNumberOfColumns)
{
    const Parsed parsed = Parse(L"a,b,c\r\n1,2,3\r\n");
    EXPECT_EQ(parsed.status, CsvStatus::Good);
    EXPECT_EQ(parsed.rows, (Rows{{L"a", L"b", L"c"}, {L"1", L"2", L"3"}}));
}

TEST(CsvText, ARowWithFewerFieldsIsFilledUpWithEmptyCells)
{
    EXPECT_EQ(Parse(L"a,b,c\r\n1\r\n2,3").rows, (Rows{{L"a", L"b", L"c"}, {L"1", L"", L""}, {L"2", L"3", L""}}));
}

TEST(CsvText, ARowWithMoreFieldsThanTheHeaderMakesTheFileInvalid)
{
    const Parsed parsed = Parse(L"a,b\r\n1,2\r\n1,2,3\r\n");
    EXPECT_EQ(parsed.status, CsvStatus::TooManyFields);
    EXPECT_TRUE(parsed.rows.empty());
}

TEST(CsvText, OneLineEndAtTheEndIsFineAndTwoAreAnEmptyLine)
{
    EXPECT_EQ(Parse(L"a\r\n1\r\n").rows, (Rows{{L"a"}, {L"1"}}));
    EXPECT_EQ(Parse(L"a\r\n1\r\n\r\n").status, CsvStatus::EmptyLine);
    EXPECT_EQ(Parse(L"\r\na").status, CsvStatus::EmptyLine);
}

TEST(CsvText, ACommaAtTheEndOfALineAddsNoFurtherField)
{
    EXPECT_EQ(Parse(L"a,b,\r\n1,,\r\n").rows, (Rows{{L"a", L"b"}, {L"1", L""}}));
    EXPECT_EQ(Parse(L",").rows, (Rows{{L""}}));
}

TEST(CsvText, OnlyCarriageReturnAndLineFeedTogetherEndALine)
{
    EXPECT_EQ(Parse(L"a\rb\nc\r").rows, (Rows{{L"a\rb\nc\r"}}));
    EXPECT_EQ(Parse(L"a\n\r\nb").rows, (Rows{{L"a\n"}, {L"b"}}));
    EXPECT_EQ(Parse(L"a\r\r\nb").rows, (Rows{{L"a\r"}, {L"b"}}));
}

TEST(CsvText, CommasAndLineEndsInsideQuotesAreText)
{
    EXPECT_EQ(Parse(L"n,f\r\n\"Smith, John\",\"1\r\n2\"\r\n").rows,
              (Rows{{L"n", L"f"}, {L"\"Smith, John\"", L"\"1\r\n2\""}}));
    EXPECT_EQ(Parse(L"a\"b,c\"d,e").rows, (Rows{{L"a\"b,c\"d", L"e"}}));
}

TEST(CsvText, AQuoteWithoutAPartnerRunsToTheEndOfTheText)
{
    EXPECT_EQ(Parse(L"a,b\r\n\"1,2\r\n3,4\r\n").rows, (Rows{{L"a", L"b"}, {L"\"1,2\r\n3,4\r\n", L""}}));
    EXPECT_EQ(Parse(L"a\"").rows, (Rows{{L"a\""}}));
}

TEST(CsvText, TheTextEndsAtItsFirstZero)
{
    EXPECT_EQ(Parse(L"a,b\0,c\r\nd"s).rows, (Rows{{L"a", L"b"}}));
    EXPECT_EQ(Parse(L"a,\"b\0\",c"s).rows, (Rows{{L"a", L"\"b"}}));
}

TEST(CsvText, NoTextIsAGoodTableWithoutColumns)
{
    EXPECT_EQ(Parse(L"").status, CsvStatus::Good);
    EXPECT_TRUE(Parse(L"").rows.empty());
    EXPECT_TRUE(Parse(L"\0a"s).rows.empty());
}

TEST(CsvText, CellsOutsideTheTableAreEmpty)
{
    CsvFields fields;
    ASSERT_EQ(fields.Parse(L"a,b\r\n1"), CsvStatus::Good);
    EXPECT_EQ(fields.Field(1, 1), L"");
    EXPECT_EQ(fields.Field(0, 2), L"");
    EXPECT_EQ(fields.Field(2, 0), L"");
    EXPECT_EQ(fields.Field(1, static_cast<std::size_t>(-1)), L"");
}

TEST(CsvText, AFailureLeavesNothingOfAnEarlierText)
{
    CsvFields fields;
    ASSERT_EQ(fields.Parse(L"a,b\r\n1"), CsvStatus::Good);
    ASSERT_EQ(fields.Parse(L"a\r\n\r\n"), CsvStatus::EmptyLine);
    EXPECT_EQ(fields.Rows(), 0u);
    EXPECT_EQ(fields.Columns(), 0u);
}

TEST(CsvText, ShortRowsUnderAWideHeaderCostNoMoreThanTheirText)
{
    std::wstring text(200000, L',');
    for (int row = 0; row < 100000; ++row)
        text += L"\r\nx"; // filled up, this would be 20 thousand million cells
    CsvFields fields;
    ASSERT_EQ(fields.Parse(text), CsvStatus::Good);
    EXPECT_EQ(fields.Rows(), 100001u);
    EXPECT_EQ(fields.Field(100000, 0), L"x");
}

TEST(CsvField, QuotesAroundItAreRemovedAndDoubledOnesMadeSingle)
{
    EXPECT_EQ(Read(L"\"Smith, John\""), L"Smith, John");
    EXPECT_EQ(Read(L"\"say \"\"yes\"\"\""), L"say \"yes\"");
    EXPECT_EQ(Read(L"\"\""), L"");
    EXPECT_EQ(Read(L"\"\"\"\""), L"\"");
    EXPECT_EQ(Read(L"\"\"\"\"\"\""), L"\"\"");
}

TEST(CsvField, AQuoteWithoutAPartnerIsRemovedAtTheBeginningOnly)
{
    EXPECT_EQ(Read(L"\"abc"), L"abc");
    EXPECT_EQ(Read(L"\"ab\"c"), L"ab\"c");
    EXPECT_EQ(Read(L"\""), L"");
    EXPECT_EQ(Read(L"\"\"\""), L"\"");
}

TEST(CsvField, QuotesAreOrdinaryInAFieldThatDoesNotBeginWithOne)
{
    EXPECT_EQ(Read(L"5\"\" disk"), L"5\"\" disk");
    EXPECT_EQ(Read(L" \"a\""), L" \"a\"");
}

TEST(CsvField, WhatIsQuotedReadsBackAsItWas)
{
    for (const std::wstring text : {L"", L"\"", L"\"\"", L"a,\"b\"\r\n", L"plain"}) {
        std::wstring quoted(QuotedUnits(text.size()), L'?');
        quoted.resize(static_cast<std::size_t>(QuoteField(text, quoted.data()) - quoted.data()));
        EXPECT_EQ(Read(quoted), text);
        EXPECT_EQ(Parse(quoted).rows, (Rows{{quoted}}));
    }
}

std::wstring RandomText(std::mt19937& random)
{
    // Mostly what means something to the reader.
    constexpr std::wstring_view kUnits = L",,,\"\"\"\r\n\r\nab\0\u00e9"sv;
    std::wstring text;
    for (std::size_t units = random() % 24; text.size() < units;) {
        text += kUnits[random() % kUnits.size()];
        if (random() % 4 == 0)
            text += L"\r\n";
    }
    return text;
}

TEST(CsvText, TheReaderAgreesWithTheRulesTakenLiterally)
{
    std::mt19937 random(20);
    for (int round = 0; round < 200000; ++round) {
        const std::wstring text = RandomText(random);
        const test::LiteralTable literal = test::ParseLiterally(text);
        const Parsed parsed = Parse(text);
        ASSERT_EQ(parsed.status, literal.status) << round;
        ASSERT_EQ(parsed.rows, literal.rows) << round;
        for (const std::vector<std::wstring>& row : literal.rows) {
            for (const std::wstring& field : row)
                ASSERT_EQ(Read(field), test::ReadLiterally(field)) << round;
        }
    }
}

} // namespace
} // namespace qx
