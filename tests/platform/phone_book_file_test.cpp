#include "phonebook/file/phone_book_document.h"
#include "phonebook/file/phone_book_file.h"

#include "support/documents_folder.h"
#include "support/phone_book.h"
#include "support/resource_count.h"
#include "support/test_printer.h"

#include <gtest/gtest.h>

namespace qx {
namespace {

using namespace test;
using Names = std::vector<std::wstring>;

constexpr char kBefore[] = "<device><software><component><name>QX Fax Address Book</name><qxfax_phonebook>";
constexpr char kAfter[] = "</qxfax_phonebook></component></software></device>";

class PhoneBookFile : public ::testing::Test {
protected:
    std::wstring Path() const { return documents.File(L"qxfaxab.xml"); }

    // Loads a file whose phone book holds this.
    BOOL LoadItems(const std::string& items) { return LoadBytes(kBefore + items + kAfter); }

    BOOL LoadBytes(const std::string& bytes)
    {
        SetFileAttributesW(Path().c_str(), FILE_ATTRIBUTE_NORMAL);
        WriteBytes(Path(), bytes);
        return book->Load();
    }

    void Reload()
    {
        book->RemoveAll();
        book->Load();
    }

    const PhoneBookEntry& Entry(DWORD index) const { return *AsEntry(book->GetAt(index)); }
    const PhoneBookGroup& Group(DWORD index) const { return *AsGroup(book->GetAt(index)); }

    DocumentsFolder documents;
    TestBook book;
};

// Where it is

TEST_F(PhoneBookFile, LiesInTheDocumentsFolder)
{
    book->BuildFilePath();
    EXPECT_EQ(book->FilePath(), Path());
}

TEST_F(PhoneBookFile, OfARestrictedUserIsNamedAfterTheGuid)
{
    const TestPrinter printer;
    book->SetPrinter(printer.Handle());
    book->BuildFilePath();
    EXPECT_EQ(book->FilePath(), documents.File(printer.Guid() + L".xml"));

    const TestPrinter unnamed(TestPrinter::Subtree::Unnamed);
    book->SetPrinter(unnamed.Handle());
    book->BuildFilePath();
    EXPECT_EQ(book->FilePath(), Path());
}

TEST_F(PhoneBookFile, HasABarePathWhenTheDocumentsFolderIsUnknown)
{
    documents.SetPersonal(nullptr);
    book->BuildFilePath();
    EXPECT_EQ(book->FilePath(), L"\\qxfaxab.xml");
}

TEST_F(PhoneBookFile, HasAPathOfAtMost259Characters)
{
    documents.SetPersonal(std::wstring(300, L'x').c_str());
    book->BuildFilePath();
    EXPECT_EQ(book->FilePath(), std::wstring(259, L'x'));
    documents.SetPersonal(std::wstring(250, L'x').c_str());
    book->BuildFilePath();
    EXPECT_EQ(book->FilePath(), std::wstring(250, L'x') + L"\\qxfaxab.");
    EXPECT_EQ(book->Load(), FALSE);
    EXPECT_EQ(book->Save(0), TRUE);
}

TEST_F(PhoneBookFile, MayLieInAFolderWhoseNameLooksLikeAnAddress)
{
    const std::wstring folder = documents.File(L"a #1 50%41 \u05d0");
    ASSERT_TRUE(CreateDirectoryW(folder.c_str(), nullptr));
    documents.SetPersonal(folder.c_str());
    book.AddEntry(L"Ann", L"1", L"Acme", 1);
    book->Save(1);
    Reload();
    EXPECT_EQ(book.Names(), Names{L"Ann"});
    EXPECT_TRUE(DeleteFileW((folder + L"\\qxfaxab.xml").c_str()));
    EXPECT_TRUE(RemoveDirectoryW(folder.c_str()));
}

// What it holds

TEST_F(PhoneBookFile, IsTheDocumentThatOtherVersionsRead)
{
    book.AddEntry(L"Ann Lee", L"555-0100", L"Acme", 0);
    book.AddGroup(L"Sales", {0, kNoId}, 1);
    book.AddGroup(L"Nobody", {}, 0x80000000);
    book->Save(3);
    EXPECT_EQ(ReadBytes(Path()),
              std::string(kBefore) +
                  "<qxfax_pbentry entry_id=\"0\" name=\"Ann Lee\" fax_number=\"555-0100\" company_name=\"Acme\"/>"
                  "<qxfax_group group_name=\"Sales\" entry_id=\"1\"><member_list><m_entry_id>0</m_entry_id>"
                  "<m_entry_id>-1</m_entry_id></member_list></qxfax_group>"
                  "<qxfax_group group_name=\"Nobody\" entry_id=\"-2147483648\"><member_list/></qxfax_group>" +
                  kAfter + "\n");
}

TEST_F(PhoneBookFile, HoldsTheFirstItemsThatASaveIsGiven)
{
    for (const wchar_t* const name : {L"A", L"B", L"C"})
        book.AddEntry(name, L"", L"", book->NextId());
    book->Save(2);
    Reload();
    EXPECT_EQ(book.Names(), (Names{L"A", L"B"}));
    book->Save(100); // more than there are
    Reload();
    EXPECT_EQ(book.Names(), (Names{L"A", L"B"}));
}

TEST_F(PhoneBookFile, FindsNothingOfWhatAReloadNoLongerHas)
{
    book.AddEntry(L"Ann", L"1", L"", 3);
    book->Save(1);
    ASSERT_NE(book->FindEntry(3), nullptr); // and remembers where
    std::filesystem::remove(Path());
    book->Reload();
    EXPECT_EQ(book->GetCount(), 0u);
    EXPECT_EQ(book->FindEntry(3), nullptr);
}

TEST_F(PhoneBookFile, GivesBackEveryTextThatXmlCanHold)
{
    const wchar_t name[] = L"<&>\"' \t\r\n äאあ漢 \xD83D\xDE00 ]]> &amp; --";
    book.AddEntry(name, L"", name, 1);
    book.AddGroup(name, {1}, 2);
    book->Save(2);
    Reload();
    EXPECT_STREQ(Entry(0).Name(), name);
    EXPECT_STREQ(Entry(0).Company(), name);
    EXPECT_STREQ(Group(1).Name(), name);
}

TEST_F(PhoneBookFile, StaysReadableWhenANameHoldsWhatNoDocumentCan)
{
    book.AddEntry(L"Ann\x01 Lee\xFFFE\xD800!", L"1", L"\x0B", 1);
    book.AddEntry(L"Bob", L"2", L"", 2);
    book->Save(2);
    Reload();
    EXPECT_EQ(book.Names(), (Names{L"Ann Lee!", L"Bob"}));
    EXPECT_STREQ(Entry(0).Company(), L"");
}

TEST_F(PhoneBookFile, GivesAnEntryWithoutCompanyAnEmptyOne)
{
    book.AddEntry(L"Ann", nullptr, nullptr, 1);
    book->Save(1);
    Reload();
    EXPECT_STREQ(Entry(0).Company(), L"");
    EXPECT_STREQ(Entry(0).FaxNumber(), L"");
}

TEST_F(PhoneBookFile, GivesAnEntryTheTextsThatAreMissingAsEmptyOnes)
{
    EXPECT_EQ(LoadItems("<qxfax_pbentry entry_id='3' other='x'/>"), TRUE);
    ASSERT_EQ(book->GetCount(), 1u);
    EXPECT_EQ(Entry(0).GetId(), 3u);
    EXPECT_STREQ(Entry(0).Name(), L"");
    EXPECT_STREQ(Entry(0).FaxNumber(), L"");
    EXPECT_STREQ(Entry(0).Company(), L"");
}

TEST_F(PhoneBookFile, IsLoadedInItsOwnOrderBehindWhatTheBookHolds)
{
    book.AddEntry(L"Z", L"", L"", 100);
    LoadItems("<qxfax_pbentry entry_id='1' name='B'/><qxfax_pbentry entry_id='2' name='A'/>");
    EXPECT_EQ(book.Names(), (Names{L"Z", L"B", L"A"}));
}

TEST_F(PhoneBookFile, DropsAnEntryWithASpaceInItsNumberButNotItsId)
{
    LoadItems("<qxfax_pbentry entry_id='41' name='Ann' fax_number='555 0100'/>"
              "<qxfax_pbentry entry_id='1' name='Bob' fax_number='5550100'/>");
    EXPECT_EQ(book.Names(), Names{L"Bob"});
    EXPECT_EQ(book->NextId(), 42u);
}

TEST_F(PhoneBookFile, DropsAnEntryWithoutIdOrWithTheOneThatMeansNone)
{
    LoadItems("<qxfax_pbentry name='Ann'/><qxfax_pbentry entry_id='-1' name='Bob'/>"
              "<qxfax_pbentry entry_id='-2' name='Eve'/>");
    EXPECT_EQ(book.Names(), Names{L"Eve"});
    EXPECT_EQ(Entry(0).GetId(), 0xFFFFFFFEu);
    EXPECT_EQ(book->NextId(), 0u); // negative ids raise nothing
}

TEST_F(PhoneBookFile, ReadsAnIdAsFarAsItIsANumber)
{
    LoadItems("<qxfax_pbentry entry_id='12abc' name='A'/><qxfax_pbentry entry_id='abc' name='B'/>"
              "<qxfax_pbentry entry_id=' +7' name='C'/><qxfax_pbentry entry_id='' name='D'/>");
    ASSERT_EQ(book->GetCount(), 4u);
    EXPECT_EQ(Entry(0).GetId(), 12u);
    EXPECT_EQ(Entry(1).GetId(), 0u);
    EXPECT_EQ(Entry(2).GetId(), 7u);
    EXPECT_EQ(Entry(3).GetId(), 0u);
}

TEST_F(PhoneBookFile, RaisesTheNextIdAboveTheLargestThatItHolds)
{
    LoadItems("<qxfax_pbentry entry_id='7'/><qxfax_group group_name='G' entry_id='41'/><qxfax_pbentry entry_id='9'/>");
    EXPECT_EQ(book->NextId(), 42u);
    Reload(); // and never lowers it
    EXPECT_EQ(book->NextId(), 43u);
}

TEST_F(PhoneBookFile, MayHoldTheLargestIdOfAllAndTheNextIdsAreStillFree)
{
    LoadItems("<qxfax_pbentry entry_id='2147483647'/><qxfax_pbentry entry_id='0'/><qxfax_pbentry entry_id='2'/>");
    EXPECT_EQ(book->NextId(), 1u);
    EXPECT_EQ(book->NextId(), 3u);
    EXPECT_EQ(book->NextId(), 4u);
}

TEST_F(PhoneBookFile, MayHoldNearlyTheLargestIdOfAllAndNoTakenOneIsHandedOutBehindIt)
{
    LoadItems("<qxfax_pbentry entry_id='2147483645'/><qxfax_pbentry entry_id='0'/><qxfax_group group_name='G' "
              "entry_id='2'><member_list><m_entry_id>0</m_entry_id><m_entry_id>1</m_entry_id></member_list>"
              "</qxfax_group>");
    EXPECT_EQ(book->NextId(), 2147483646u);
    EXPECT_EQ(book->NextId(), 3u);
    EXPECT_EQ(book->NextId(), 4u);
}

TEST_F(PhoneBookFile, HandsOutNoIdThatAGroupNamesWhichCameAfterTheLoad)
{
    LoadItems("<qxfax_pbentry entry_id='2147483647'/>");
    book.AddGroup(L"G", {1, 3}, 0);
    EXPECT_EQ(book->NextId(), 2u);
    EXPECT_EQ(book->NextId(), 4u);
}

TEST_F(PhoneBookFile, GivesAGroupTheMembersOfItsOnlyChildWhateverThatIsCalled)
{
    LoadItems("<qxfax_group group_name='G' entry_id='5'><members><m_entry_id>3</m_entry_id><other>4</other>"
              "<m_entry_id/><m_entry_id><b/>5</m_entry_id><m_entry_id> 6x</m_entry_id>text</members></qxfax_group>");
    ASSERT_EQ(book->GetCount(), 1u);
    EXPECT_EQ(Group(0).GetId(), 5u);
    EXPECT_EQ(MemberIdsOf(Group(0)), (std::vector<DWORD>{3, 6}));
    EXPECT_TRUE(Group(0).Members().empty()); // resolving them is not the file's business
}

TEST_F(PhoneBookFile, GivesAGroupWithTwoChildrenNoMembers)
{
    const std::string list = "<member_list><m_entry_id>3</m_entry_id></member_list>";
    LoadItems("<qxfax_group group_name='A'>" + list + "<stray/></qxfax_group><qxfax_group group_name='B'><!-- -->" +
              list + "</qxfax_group><qxfax_group group_name='C'>\n  " + list + "\n</qxfax_group>");
    ASSERT_EQ(book->GetCount(), 3u);
    EXPECT_TRUE(Group(0).MemberIds().empty());
    EXPECT_TRUE(Group(1).MemberIds().empty());
    EXPECT_EQ(MemberIdsOf(Group(2)), std::vector<DWORD>{3}); // white space is no child
}

TEST_F(PhoneBookFile, DropsAGroupWithoutNameButKeepsOneWhoseNameIsEmpty)
{
    LoadItems("<qxfax_group entry_id='50'/><qxfax_group group_name=''/>");
    ASSERT_EQ(book->GetCount(), 1u);
    EXPECT_STREQ(Group(0).Name(), L"");
    EXPECT_EQ(Group(0).GetId(), kNoId);
    EXPECT_EQ(book->NextId(), 51u);
}

TEST_F(PhoneBookFile, WithUnknownElementsOnlyIsAnEmptyBook)
{
    EXPECT_EQ(LoadItems("<entry entry_id='1' name='x'/><QXFAX_PBENTRY entry_id='2'/>text<!-- x -->"), TRUE);
    EXPECT_EQ(book->GetCount(), 0u);
}

// When it is not as it should be

TEST_F(PhoneBookFile, ThatIsMissingLeavesTheBookAsItIs)
{
    book.AddEntry(L"Ann", L"", L"", 1);
    EXPECT_EQ(book->Load(), FALSE);
    EXPECT_EQ(book.Names(), Names{L"Ann"});
}

TEST_F(PhoneBookFile, ThatIsMalformedOrSomethingElseLoadsAsNothing)
{
    for (const std::string& bytes :
         {std::string(), std::string("x"), std::string(kBefore), std::string("<device/>"),
          std::string("<Device><software><component><qxfax_phonebook/></component></software></Device>"),
          std::string("\x89PNG\r\n\x1a\n")}) {
        EXPECT_EQ(LoadBytes(bytes), TRUE) << bytes;
        EXPECT_EQ(book->GetCount(), 0u) << bytes;
    }
}

TEST_F(PhoneBookFile, IsHiddenAfterASaveAndCanBeSavedAgain)
{
    book.AddEntry(L"Ann", L"", L"", 1);
    book->Save(1);
    EXPECT_TRUE(IsHidden(Path()));
    book.AddEntry(L"Bob", L"", L"", 2);
    book->Save(2);
    EXPECT_TRUE(IsHidden(Path()));
    Reload();
    EXPECT_EQ(book.Names(), (Names{L"Ann", L"Bob"}));
    EXPECT_EQ(documents.Files(), Names{L"qxfaxab.xml"}); // nothing is left beside it
}

TEST_F(PhoneBookFile, ThatIsReadOnlyStaysAsItIs)
{
    LoadItems("<qxfax_pbentry entry_id='1' name='Ann'/>");
    const std::string before = ReadBytes(Path());
    SetFileAttributesW(Path().c_str(), FILE_ATTRIBUTE_READONLY);
    book->RemoveAll();
    EXPECT_EQ(book->Save(0), TRUE);
    EXPECT_EQ(ReadBytes(Path()), before);
    EXPECT_TRUE(IsHidden(Path()));
    EXPECT_EQ(documents.Files(), Names{L"qxfaxab.xml"});
}

TEST_F(PhoneBookFile, InUseByAnotherProgramStaysAsItIsAndIsReadAsMissing)
{
    LoadItems("<qxfax_pbentry entry_id='1' name='Ann'/>");
    {
        const UniqueFile used(
            CreateFileW(Path().c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        ASSERT_TRUE(used);
        EXPECT_EQ(book->Load(), FALSE);
        book->RemoveAll();
        EXPECT_EQ(book->Save(0), TRUE);
    }
    Reload();
    EXPECT_EQ(book.Names(), Names{L"Ann"});
}

TEST_F(PhoneBookFile, InAFolderThatDoesNotExistIsNotSaved)
{
    documents.SetPersonal(documents.File(L"missing").c_str());
    EXPECT_EQ(book->Load(), FALSE);
    EXPECT_EQ(book->Save(0), TRUE);
    EXPECT_TRUE(documents.Files().empty());
}

TEST_F(PhoneBookFile, KeepsItsSecurityWhenItIsReplaced)
{
    book->Save(0);
    // Full access for everybody, and nothing else.
    SID_IDENTIFIER_AUTHORITY world = {SECURITY_WORLD_SID_AUTHORITY};
    BYTE everybody[SECURITY_MAX_SID_SIZE];
    InitializeSid(everybody, &world, 1);
    *GetSidSubAuthority(everybody, 0) = SECURITY_WORLD_RID;
    BYTE list[256];
    InitializeAcl(reinterpret_cast<ACL*>(list), sizeof list, ACL_REVISION);
    AddAccessAllowedAce(reinterpret_cast<ACL*>(list), ACL_REVISION, GENERIC_ALL, everybody);
    SECURITY_DESCRIPTOR open;
    InitializeSecurityDescriptor(&open, SECURITY_DESCRIPTOR_REVISION);
    SetSecurityDescriptorDacl(&open, TRUE, reinterpret_cast<ACL*>(list), FALSE);

    const auto security = [this] {
        std::string bytes(4096, '\0');
        DWORD needed = 0;
        GetFileSecurityW(Path().c_str(), DACL_SECURITY_INFORMATION, bytes.data(), 4096, &needed);
        return bytes;
    };
    const std::string usual = security();
    ASSERT_TRUE(SetFileSecurityW(Path().c_str(), DACL_SECURITY_INFORMATION, &open));
    const std::string opened = security();
    ASSERT_NE(opened, usual);
    book->Save(0);
    EXPECT_EQ(security(), opened);
}

TEST_F(PhoneBookFile, KeepsOtherAttributesWhenItIsReplaced)
{
    book->Save(0);
    SetFileAttributesW(Path().c_str(), FILE_ATTRIBUTE_SYSTEM);
    book->Save(0);
    const DWORD attributes = GetFileAttributesW(Path().c_str());
    EXPECT_NE(attributes & FILE_ATTRIBUTE_SYSTEM, 0u);
    EXPECT_NE(attributes & FILE_ATTRIBUTE_HIDDEN, 0u);
}

TEST_F(PhoneBookFile, LeftBesideItByADeadProcessIsCleanedUp)
{
    WriteBytes(documents.File(L"qxfaxab.xml.4711.12.3.new"), "half");
    MakeOld(documents.File(L"qxfaxab.xml.4711.12.3.new"));
    WriteBytes(documents.File(L"mine.new"), "not ours");
    book->Save(0);
    EXPECT_EQ(documents.Files(), (Names{L"mine.new", L"qxfaxab.xml"}));
}

// An unreadable phone book is never lost

TEST_F(PhoneBookFile, ThatWasNotUnderstoodIsKeptBesideTheNextOne)
{
    LoadBytes("<device>my only copy");
    book.AddEntry(L"Ann", L"", L"", 1);
    book->Save(1);
    EXPECT_EQ(ReadBytes(documents.File(L"qxfaxab.xml.bak")), "<device>my only copy");
    EXPECT_TRUE(IsHidden(documents.File(L"qxfaxab.xml.bak")));
    Reload();
    EXPECT_EQ(book.Names(), Names{L"Ann"});
    book->Save(1); // and kept once
    EXPECT_EQ(documents.Files(), (Names{L"qxfaxab.xml", L"qxfaxab.xml.bak"}));
}

TEST_F(PhoneBookFile, ThatIsKeptNeverReplacesAnOlderOne)
{
    for (const char* const content : {"first", "second", "first", "second", "third"}) {
        LoadBytes(content);
        book->Save(0);
    }
    EXPECT_EQ(ReadBytes(documents.File(L"qxfaxab.xml.bak")), "first");
    EXPECT_EQ(ReadBytes(documents.File(L"qxfaxab.xml.2.bak")), "second");
    EXPECT_EQ(ReadBytes(documents.File(L"qxfaxab.xml.3.bak")), "third");
    EXPECT_EQ(documents.Files().size(), 4u);
}

TEST_F(PhoneBookFile, ThatWasEmptyOrUnderstoodIsNotKept)
{
    LoadBytes("");
    book->Save(0);
    LoadItems("<unknown/>");
    book->Save(0);
    EXPECT_EQ(documents.Files(), Names{L"qxfaxab.xml"});
}

// A file name so long that there is none for a second file beside it.
class PhoneBookFileThatStandsAlone : public ::testing::Test {
protected:
    PhoneBookFileThatStandsAlone()
    {
        constexpr std::size_t kLongestName = 255;
        const std::wstring start = L"qxtest-" + std::to_wstring(GetCurrentProcessId()) + L"-";
        path = L"C:\\" + start + std::wstring(kLongestName - start.size(), L'x');
    }
    ~PhoneBookFileThatStandsAlone() override
    {
        SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
        DeleteFileW(path.c_str());
    }

    std::wstring path;
    TestBook book;
};

TEST_F(PhoneBookFileThatStandsAlone, IsSavedInPlace)
{
    book.AddEntry(L"Ann", L"", L"", 1);
    EXPECT_TRUE(SavePhoneBookFile(path, book->Items(), false));
    EXPECT_TRUE(SavePhoneBookFile(path, book->Items(), false));
    EXPECT_EQ(LoadPhoneBookFile(path, book.store).items.size(), 1u);
    EXPECT_TRUE(IsHidden(path));
}

TEST_F(PhoneBookFileThatStandsAlone, IsNotReplacedWhenItWasNotUnderstoodSinceItCannotBeKept)
{
    WriteBytes(path, "my only copy");
    EXPECT_FALSE(SavePhoneBookFile(path, book->Items(), true));
    EXPECT_EQ(ReadBytes(path), "my only copy");
}

TEST_F(PhoneBookFile, ThatCouldNotBeOpenedIsKeptBeforeItIsReplaced)
{
    LoadItems("<qxfax_pbentry entry_id='1' name='Ann'/>");
    const std::string before = ReadBytes(Path());
    book->RemoveAll();
    {
        const UniqueFile used(
            CreateFileW(Path().c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        EXPECT_EQ(book->Load(), FALSE);
    }
    book->Save(0);
    EXPECT_EQ(ReadBytes(documents.File(L"qxfaxab.xml.bak")), before);
}

TEST_F(PhoneBookFile, OnADiskThatDidNotTakeItIsNotTakenForSaved)
{
    PhoneBookDocument document;
    ASSERT_TRUE(document.Begin());
    EXPECT_TRUE(document.Save(Path()));
    EXPECT_FALSE(document.Save(L"NUL")); // takes everything and keeps nothing; the DOM is content with that
}

// Nothing is left behind

TEST_F(PhoneBookFile, LeavesNoHandlesAndNoMemoryBehindHoweverOftenItIsUsed)
{
    const auto session = [this] {
        TestBook used;
        for (DWORD i = 0; i < 100; ++i)
            used.AddEntry(L"A name of some length", L"555-0100", L"A company", i);
        used.AddGroup(L"Group", {1, 2, 3}, 100);
        used->Save(101);
        ReloadSorted(*used);
        WriteBytes(documents.File(L"other"), "");
        LoadPhoneBookFile(documents.File(L"other"), used.store);
        LoadPhoneBookFile(documents.File(L"missing"), used.store);
    };
    for (int i = 0; i < 3; ++i)
        session(); // what the system allocates once
    const std::size_t handle = NextHandle();
    const std::size_t bytes = HeapBytesInUse();
    for (int i = 0; i < 20; ++i)
        session();
    EXPECT_EQ(NextHandle(), handle);
    const UniqueKernelHandle another(CreateEventW(nullptr, FALSE, FALSE, nullptr));
    EXPECT_GT(NextHandle(), handle);                // it does grow
    EXPECT_LT(HeapBytesInUse(), bytes + 20 * 1000); // a session that lost its items would lose 20000 bytes each time
}

} // namespace
} // namespace qx
