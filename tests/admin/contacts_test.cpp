#include "admin/contacts/csv_contacts.h"
#include "admin/contacts/delimited_text.h"
#include "admin/contacts/text_encoding.h"
#include "admin/contacts/vcard.h"

#include <gtest/gtest.h>
#include <ostream>

namespace qx::admin {

std::ostream& operator<<(std::ostream& out, const Contact& contact)
{
    return out << contact.line << ": " << EncodeUtf8(contact.name) << " | " << EncodeUtf8(contact.faxNumber) << " | "
               << EncodeUtf8(contact.company);
}

namespace {

using Contacts = std::vector<Contact>;

// Knows ISO 8859-1 only, so that the tests need no Windows.
std::optional<std::wstring> DecodeLatin1(std::string_view bytes, unsigned codePage)
{
    if (codePage != 1252 && codePage != 28591)
        return std::nullopt;
    std::wstring text;
    for (const char c : bytes)
        text += static_cast<wchar_t>(static_cast<unsigned char>(c));
    return text;
}

ContactFile Cards(std::string_view bytes, unsigned codePage = 0)
{
    return ReadVCards(bytes, codePage, DecodeLatin1);
}

std::wstring Wide(std::string_view utf8)
{
    return DecodeUtf8(utf8).value();
}

ContactFile Table(std::string_view utf8, const ColumnChoice& choice = {})
{
    return ReadCsvContacts(Wide(utf8), choice);
}

// ---- cards ---------------------------------------------------------------------------------------------------------

TEST(VCards, FaxNumbersAreTakenByTheirKindInEveryVersion)
{
    const ContactFile file =
        Cards("BEGIN:VCARD\r\nVERSION:2.1\r\nN:Lee;Ann\r\nTEL;WORK;VOICE:1\r\nTEL;WORK;FAX:+1 555 01\r\n"
              "END:VCARD\r\n"
              "begin:vcard\nversion:3.0\nFN:Ben Roe\nTEL;TYPE=fax,work:55502\nTEL;type=HOME;type=FAX:55503\n"
              "end:vcard\n"
              "BEGIN:VCARD\nVERSION:4.0\nFN:Cy Day\nTEL;VALUE=uri;TYPE=\"home,fax\":tel:+49-30-555\n"
              "END:VCARD\n");
    EXPECT_EQ(file.problem, "");
    EXPECT_EQ(file.people, 3u);
    EXPECT_EQ(file.contacts, (Contacts{{5, L"Ann Lee", L"+1 555 01", L""},
                                       {10, L"Ben Roe", L"55502", L""},
                                       {11, L"Ben Roe", L"55503", L""},
                                       {16, L"Cy Day", L"tel:+49-30-555", L""}}));
}

TEST(VCards, NamesComeFromTheFormattedNameThePartsOrTheCompany)
{
    const auto name = [](const std::string& lines) {
        const ContactFile file = Cards("BEGIN:VCARD\nVERSION:3.0\n" + lines + "TEL;TYPE=FAX:1\nEND:VCARD\n");
        return file.contacts.empty() ? L"<none>" : file.contacts.front().name;
    };
    EXPECT_EQ(name("FN:Dr. Ann Lee\nN:Lee;Ann;;;\n"), L"Dr. Ann Lee");
    EXPECT_EQ(name("N:Stevenson;John;Philip,Paul;Dr.;Jr.,M.D.\n"), L"Dr. John Philip,Paul Stevenson Jr.,M.D.");
    EXPECT_EQ(name("N:;;;;\nORG:Harbour Books;Sales\n"), L"Harbour Books");
    EXPECT_EQ(name("FN:Smith\\, John\\; and\\nCo\n"), L"Smith, John; and Co");
    EXPECT_EQ(name(""), L"<none>");
}

TEST(VCards, FoldedLinesAreOneLine)
{
    const ContactFile three =
        Cards("BEGIN:VCARD\r\nVERSION:3.0\r\nFN:Ann\r\n  Le\r\n\te\r\nTEL;TYPE=\r\n FAX:55\r\n 501\r\nEND:VCARD\r\n");
    EXPECT_EQ(three.contacts, (Contacts{{6, L"Ann Lee", L"55501", L""}}));
    const ContactFile two = Cards("BEGIN:VCARD\r\nVERSION:2.1\r\nFN:Ann\r\n Lee\r\nTEL;FAX:55501\r\nEND:VCARD\r\n");
    EXPECT_EQ(two.contacts, (Contacts{{5, L"Ann Lee", L"55501", L""}}));
}

TEST(VCards, QuotedPrintableAndCharacterSetsAreDecoded)
{
    const ContactFile file =
        Cards("BEGIN:VCARD\nVERSION:2.1\nFN;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:J=C3=BCrgen =\n"
              "Wei=C3=9F\nORG;CHARSET=ISO-8859-1;QUOTED-PRINTABLE:B=FCro;Halle\nTEL;FAX:1\nEND:VCARD\n"
              "BEGIN:VCARD\nVERSION:2.1\nFN;CHARSET=windows-1252:J\xFCrgen\nTEL;FAX:2\nEND:VCARD\n"
              "BEGIN:VCARD\nVERSION:2.1\nFN;CHARSET=klingon:K\nTEL;FAX:3\nEND:VCARD\n"
              "BEGIN:VCARD\nVERSION:2.1\nFN;ENCODING=QUOTED-PRINTABLE:a=Zb\nTEL;FAX:4\nEND:VCARD\n"
              "BEGIN:VCARD\nVERSION:3.0\nFN:J\xFCrgen\nTEL;TYPE=FAX:5\nEND:VCARD\n");
    EXPECT_EQ(file.contacts,
              (Contacts{{6, L"J\x00FCrgen Wei\x00DF", L"1", L"B\x00FCro"}, {11, L"J\x00FCrgen", L"2", L""}}));
    ASSERT_EQ(file.unusable.size(), 3u);
    EXPECT_EQ(file.unusable[0].line, 15u);
    EXPECT_NE(file.unusable[0].why.find("klingon"), std::string::npos);
    EXPECT_NE(file.unusable[1].why.find("quoted-printable"), std::string::npos);
    EXPECT_EQ(file.unusable[2].line, 25u);
    EXPECT_NE(file.unusable[2].why.find("--code-page"), std::string::npos);
    EXPECT_EQ(Cards("BEGIN:VCARD\nVERSION:3.0\nFN:J\xFCrgen\nTEL;TYPE=FAX:5\nEND:VCARD\n", 1252).contacts,
              (Contacts{{4, L"J\x00FCrgen", L"5", L""}}));
}

TEST(VCards, ACardWithinACardIsNotTheOtherOnesNumber)
{
    const ContactFile file = Cards("BEGIN:VCARD\nVERSION:2.1\nFN:Boss\nAGENT:\nBEGIN:VCARD\nVERSION:2.1\nFN:Helper\n"
                                   "TEL;FAX:1\nEND:VCARD\nTEL;FAX:2\nEND:VCARD\n");
    EXPECT_EQ(file.contacts, (Contacts{{10, L"Boss", L"2", L""}}));
}

TEST(VCards, UsersOwnKindsAreReadFromTheirLabels)
{
    const ContactFile file =
        Cards("BEGIN:VCARD\nVERSION:3.0\nFN:A\nitem1.TEL:1\nitem1.X-ABLabel:Work Fax\nitem2.TEL:2\n"
              "item2.X-ABLabel:Desk\nEND:VCARD\n");
    EXPECT_EQ(file.contacts, (Contacts{{4, L"A", L"1", L""}}));
}

TEST(VCards, PeopleWithoutAFaxNumberAreCountedAndNobodyIsRefusedForThem)
{
    const ContactFile file =
        Cards("BEGIN:VCARD\nVERSION:3.0\nFN:\xFF\nTEL:1\nEND:VCARD\nBEGIN:VCARD\nFN:B\nTEL;TYPE=FAX:\nEND:VCARD\n");
    EXPECT_EQ(file.people, 2u);
    EXPECT_EQ(file.withoutNumber, 2u);
    EXPECT_TRUE(file.unusable.empty());
}

TEST(VCards, ACardWithoutEndIsRefused)
{
    const ContactFile file = Cards("BEGIN:VCARD\nVERSION:3.0\nFN:A\nTEL;TYPE=FAX:1\n");
    EXPECT_TRUE(file.contacts.empty());
    ASSERT_EQ(file.unusable.size(), 1u);
    EXPECT_EQ(file.unusable[0].line, 1u);
}

TEST(VCards, FilesOfUtf16AndMarksAreRead)
{
    const std::string card = "BEGIN:VCARD\nVERSION:3.0\nFN:A\nTEL;TYPE=FAX:1\nEND:VCARD\n";
    std::string little = "\xFF\xFE", big = "\xFE\xFF";
    for (const char c : card) {
        little += {c, '\0'};
        big += {'\0', c};
    }
    for (const std::string& bytes : {"\xEF\xBB\xBF" + card, little, big}) {
        EXPECT_TRUE(LooksLikeVCards(bytes));
        EXPECT_EQ(Cards(bytes).contacts, (Contacts{{4, L"A", L"1", L""}}));
    }
    EXPECT_FALSE(LooksLikeVCards("Name,Fax\nBEGIN:VCARD,1\n"));
    EXPECT_NE(Cards("nothing").problem, "");
}

// ---- tables --------------------------------------------------------------------------------------------------------

TEST(Tables, DelimiterLineEndsAndQuotesAreFoundOut)
{
    const DelimitedText semicolons = ReadDelimited(L"a;b,c;\r\n\"1;2\";\"say \"\"hi\"\"\"\r\n\r\nx;y\r\n");
    ASSERT_EQ(semicolons.records.size(), 3u);
    EXPECT_EQ(semicolons.records[0].fields, (std::vector<std::wstring>{L"a", L"b,c", L""}));
    EXPECT_EQ(semicolons.records[1].fields, (std::vector<std::wstring>{L"1;2", L"say \"hi\""}));
    EXPECT_EQ(semicolons.records[2].line, 4u);
    EXPECT_EQ(ReadDelimited(L"a\tb,c\td\r1\t2\t3").records[1].fields, (std::vector<std::wstring>{L"1", L"2", L"3"}));
    EXPECT_EQ(ReadDelimited(L"sep=|\na|b,c,d\n").records[0].fields, (std::vector<std::wstring>{L"a", L"b,c,d"}));
    const DelimitedText broken = ReadDelimited(L"a,\"one\r\ntwo\nthree\",c\nd");
    EXPECT_EQ(broken.records[0].fields[1], L"one\r\ntwo\nthree");
    EXPECT_EQ(broken.records[1].line, 4u);
    const DelimitedText open = ReadDelimited(L"a,b\n1,\"2\n3");
    EXPECT_NE(open.problem, "");
    EXPECT_EQ(open.line, 2u);
}

TEST(Tables, HeadersAreRecognisedInSeveralLanguages)
{
    EXPECT_EQ(Table("Name,Fax Number,Company Name\nAnn,1,Acme\n").contacts, (Contacts{{2, L"Ann", L"1", L"Acme"}}));
    EXPECT_EQ(Table("Vorname;Nachname;Firma;Fax geschäftlich\nAnn;Lee;Acme;1\n").contacts,
              (Contacts{{2, L"Ann Lee", L"1", L"Acme"}}));
    EXPECT_EQ(Table("Prénom;Nom;Société;Télécopie (bureau);Télécopie (domicile)\nAnn;Lee;Acme;1;2\n").contacts,
              (Contacts{{2, L"Ann Lee", L"1", L"Acme"}, {2, L"Ann Lee", L"2", L"Acme"}}));
    EXPECT_EQ(Table("氏名,会社名,FAX\nリー,アクメ,1\n").contacts, (Contacts{{2, Wide("リー"), L"1", Wide("アクメ")}}));
    EXPECT_EQ(Table("שם פרטי,שם משפחה,חברה,פקס\nא,ב,ג,1\n").contacts, (Contacts{{2, Wide("א ב"), L"1", Wide("ג")}}));
}

TEST(Tables, ColumnsCanBeNamed)
{
    const std::string table = "Who,Also,Dial,Firm\nAnn,Lee,1,Acme\n";
    EXPECT_NE(Table(table).problem.find("--fax"), std::string::npos);
    EXPECT_EQ(Table(table, {.name = {L"who", L"ALSO"}, .fax = {L"Dial"}, .company = {L"Firm"}}).contacts,
              (Contacts{{2, L"Ann Lee", L"1", L"Acme"}}));
    EXPECT_NE(Table(table, {.name = {L"Whom"}, .fax = {L"Dial"}, .company = {}}).problem.find("\"Whom\""),
              std::string::npos);
    EXPECT_NE(Table("Fax Type,E-mail fax\n1,2\n").problem, "");
}

TEST(Tables, NumbersWithAKindBesideAreTakenByTheirKind)
{
    const ContactFile file = Table("Name,Phone 1 - Type,Phone 1 - Value,Phone 2 - Label,Phone 2 - Value\n"
                                   "Ann,Mobile,1,Work Fax,2 ::: 3\nBen,Home Fax,4,,\n");
    EXPECT_EQ(file.contacts, (Contacts{{2, L"Ann", L"2", L""}, {2, L"Ann", L"3", L""}, {3, L"Ben", L"4", L""}}));
}

TEST(Tables, ShiftedAndNamelessRowsAreRefused)
{
    const ContactFile file = Table("Name,Fax,Company\nLee, Ann,1,Acme\n,2,\nBen,3\nCy,4,Acme,,\n,,\n,5,Firm\n");
    EXPECT_EQ(file.contacts,
              (Contacts{{4, L"Ben", L"3", L""}, {5, L"Cy", L"4", L"Acme"}, {7, L"Firm", L"5", L"Firm"}}));
    ASSERT_EQ(file.unusable.size(), 2u);
    EXPECT_EQ(file.unusable[0].line, 2u);
    EXPECT_NE(file.unusable[0].why.find("more fields"), std::string::npos);
    EXPECT_EQ(file.unusable[1].line, 3u);
    EXPECT_EQ(file.withoutNumber, 1u);
}

// ---- encodings -----------------------------------------------------------------------------------------------------

TEST(Encodings, AreFoundByMarksAndZerosAndOtherwiseAsked)
{
    const auto decode = [](std::string_view bytes, unsigned codePage = 0) {
        return DecodeFile(bytes, codePage, DecodeLatin1);
    };
    EXPECT_EQ(decode("\xEF\xBB\xBF\xC3\xA4").text, L"\x00E4");
    EXPECT_EQ(decode("\xC3\xA4").text, L"\x00E4");
    EXPECT_EQ(decode(std::string_view("\xFF\xFE\xE4\0", 4)).text, L"\x00E4");
    EXPECT_EQ(decode(std::string_view("\xFE\xFF\0\xE4", 4)).text, L"\x00E4");
    EXPECT_EQ(decode(std::string_view("a\0b\0", 4)).text, L"ab");
    EXPECT_EQ(decode("a\n\xE4").line, 2u);
    EXPECT_NE(decode("a\n\xE4").problem.find("--code-page"), std::string::npos);
    EXPECT_EQ(decode("\xE4", 1252).text, L"\x00E4");
    EXPECT_NE(decode("\xE4", 932).problem, "");
    EXPECT_EQ(EncodeUtf8(DecodeUtf8("\xF0\x9F\x93\xA0").value()), "\xF0\x9F\x93\xA0");
    for (const char* const bad : {"\xC0\x80", "\xED\xA0\x80", "\xF5\x80\x80\x80", "\xE2\x82", "\x80", "\xE0\x80\xAF"})
        EXPECT_FALSE(DecodeUtf8(bad).has_value());
}

TEST(Encodings, HaveTheirNames)
{
    EXPECT_EQ(CodePageOf("Windows-1252"), 1252u);
    EXPECT_EQ(CodePageOf("cp850"), 850u);
    EXPECT_EQ(CodePageOf("1250"), 1250u);
    EXPECT_EQ(CodePageOf("ISO-8859-15"), 28605u);
    EXPECT_EQ(CodePageOf("iso_8859-1"), 28591u);
    EXPECT_EQ(CodePageOf("Shift_JIS"), 932u);
    EXPECT_EQ(CodePageOf("UTF-8"), 65001u);
    EXPECT_EQ(CodePageOf("klingon"), 0u);
    EXPECT_EQ(CodePageOf("iso-8859-99"), 0u);
}

} // namespace
} // namespace qx::admin
