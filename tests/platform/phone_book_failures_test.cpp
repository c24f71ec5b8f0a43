// Calls of the system that fail while a phone book is loaded or saved, once, for a while or for good: what was in the
// file is in the file or in a copy.
#include "phonebook/file/file_replacement.h"
#include "phonebook/file/phone_book_document.h"
#include "phonebook/file/phone_book_file.h"

#include "support/documents_folder.h"
#include "support/failing_calls.h"
#include "support/failing_dom.h"
#include "support/phone_book.h"
#include "support/redirected_import.h"
#include "support/resource_count.h"
#include "support/temporary_folder.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <thread>

namespace qx {
namespace {

using namespace test;
using Names = std::vector<std::wstring>;

// What the stand-ins do. A call that is refused is one for which the function answers an error.
struct Refusals {
    std::function<DWORD(const std::wstring& path, DWORD access, DWORD disposition)> open;
    std::function<DWORD()> move, flush, write;
    std::function<DWORD(const std::wstring& to)> copy;
    std::function<DWORD()> allocate; // of texts for COM
    std::function<DWORD()> allocateHeap;
};
Refusals refusals;

DWORD Asked(const std::function<DWORD()>& refusal)
{
    return refusal ? refusal() : ERROR_SUCCESS;
}

// Refuses the first calls.
auto ForAWhile(DWORD error, int calls = 8)
{
    return [error, calls]() mutable -> DWORD { return calls-- > 0 ? error : ERROR_SUCCESS; };
}

auto Always(DWORD error)
{
    return [error](const auto&...) -> DWORD { return error; };
}

RedirectedImport<decltype(CreateFileW)>* createFile = nullptr;
HANDLE WINAPI CreateFileStandIn(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                                DWORD disposition, DWORD flags, HANDLE like)
{
    if (const DWORD error = refusals.open ? refusals.open(path, access, disposition) : DWORD{ERROR_SUCCESS};
        error != ERROR_SUCCESS) {
        SetLastError(error);
        return INVALID_HANDLE_VALUE;
    }
    return createFile->Original()(path, access, share, security, disposition, flags, like);
}

#define STAND_IN(name, function, refusal, parameters, arguments)                                                       \
    RedirectedImport<decltype(function)>* name = nullptr;                                                              \
    BOOL WINAPI function##StandIn parameters                                                                           \
    {                                                                                                                  \
        const DWORD error = Asked(refusals.refusal);                                                                   \
        if (error != ERROR_SUCCESS)                                                                                    \
            SetLastError(error);                                                                                       \
        return error == ERROR_SUCCESS && name->Original() arguments;                                                   \
    }
STAND_IN(moveFile, MoveFileExW, move, (LPCWSTR from, LPCWSTR to, DWORD flags), (from, to, flags))
STAND_IN(flushFile, FlushFileBuffers, flush, (HANDLE file), (file))
STAND_IN(writeFile, WriteFile, write, (HANDLE file, LPCVOID bytes, DWORD count, LPDWORD written, LPOVERLAPPED o),
         (file, bytes, count, written, o))

RedirectedImport<decltype(CopyFileW)>* copyFile = nullptr;
BOOL WINAPI CopyFileWStandIn(LPCWSTR from, LPCWSTR to, BOOL keep)
{
    const DWORD error = refusals.copy ? refusals.copy(to) : DWORD{ERROR_SUCCESS};
    if (error != ERROR_SUCCESS)
        SetLastError(error);
    return error == ERROR_SUCCESS && copyFile->Original()(from, to, keep);
}

RedirectedImport<decltype(SysAllocStringLen)>* allocateText = nullptr;
BSTR WINAPI SysAllocStringLenStandIn(const OLECHAR* text, UINT units)
{
    return Asked(refusals.allocate) == ERROR_SUCCESS ? allocateText->Original()(text, units) : nullptr;
}

RedirectedImport<decltype(HeapAlloc)>* allocateHeap = nullptr;
LPVOID WINAPI HeapAllocStandIn(HANDLE heap, DWORD flags, SIZE_T bytes)
{
    return Asked(refusals.allocateHeap) == ERROR_SUCCESS ? allocateHeap->Original()(heap, flags, bytes) : nullptr;
}

RedirectedImport<decltype(HeapFree)>* freeHeap = nullptr;
long blocksFreed = 0;
BOOL WINAPI HeapFreeStandIn(HANDLE heap, DWORD flags, LPVOID block)
{
    blocksFreed += block != nullptr ? 1 : 0;
    return freeHeap->Original()(heap, flags, block);
}

template <class Function> class StandIn {
public:
    StandIn(const char* name, Function* function, RedirectedImport<Function>*& current)
        : import_(name, function), current_(current)
    {
        current_ = &import_;
    }
    ~StandIn() { current_ = nullptr; }

private:
    RedirectedImport<Function> import_;
    RedirectedImport<Function>*& current_;
};

class FailingFiles : public ::testing::Test {
protected:
    FailingFiles()
    {
        refusals = {};
        SetEnvironmentVariableW(L"TMP", temporary.Path().c_str());
    }
    ~FailingFiles() override
    {
        refusals = {};
        SetEnvironmentVariableW(L"TMP", usersTemporary.c_str());
    }

    std::wstring Path() const { return documents.File(L"qxfaxab.xml"); }

    void WriteBook()
    {
        TestBook ann;
        ann.AddEntry(L"Ann", L"1", L"Acme", 1);
        ann.AddGroup(L"Group", {1}, 2);
        ASSERT_TRUE(SavePhoneBookFile(Path(), ann->Items(), false));
        before = ReadBytes(Path());
    }

    bool SaveBob(bool keepOld = false)
    {
        TestBook bob;
        bob.AddEntry(L"Bob", L"2", L"", 1);
        return SavePhoneBookFile(Path(), bob->Items(), keepOld);
    }

    Names NamesInFile()
    {
        refusals = {};
        Names names;
        for (const PhoneBookItem* const item : LoadPhoneBookFile(Path(), book.store).items)
            names.emplace_back(item->GetName());
        return names;
    }

    // After a load in which something failed: the book is whole; or it lacks an item that could not be fetched, or is
    // empty, and the file outlives the next save.
    void CheckNothingIsLost(int failing)
    {
        const bool whole = book->GetCount() == 2;
        for (const PhoneBookItem* const item : book->Items()) {
            if (const PhoneBookEntry* const entry = AsEntry(item)) {
                ASSERT_STREQ(entry->Name(), L"Ann") << failing;
                ASSERT_STREQ(entry->FaxNumber(), L"1") << failing;
            } else {
                ASSERT_STREQ(item->GetName(), L"Group") << failing;
                ASSERT_EQ(MemberIdsOf(*AsGroup(item)), std::vector<DWORD>{1}) << failing;
            }
        }
        book->Save(book->GetCount());
        ASSERT_TRUE(whole || ReadBytes(Path()) == before || ReadBytes(Path() + L".bak") == before) << failing;
        SetFileAttributesW((Path() + L".bak").c_str(), FILE_ATTRIBUTE_NORMAL);
        DeleteFileW((Path() + L".bak").c_str());
    }

    std::vector<std::filesystem::path> CopiesInTemporaryFolder() const
    {
        std::vector<std::filesystem::path> copies;
        for (const auto& file : std::filesystem::directory_iterator(std::filesystem::temp_directory_path())) {
            if (file.path().filename().wstring().starts_with(L"qxfax-phone-book."))
                copies.push_back(file.path());
        }
        return copies;
    }

    // Refuses new files beside the phone book.
    void TakeNoSecondFile(DWORD error)
    {
        refusals.copy = [this, error](const std::wstring& path) -> DWORD {
            return path.starts_with(Path()) ? error : ERROR_SUCCESS;
        };
        refusals.open = [beside = refusals.copy](const std::wstring& path, DWORD, DWORD disposition) -> DWORD {
            return disposition == CREATE_NEW ? beside(path) : ERROR_SUCCESS;
        };
    }

    StandIn<decltype(CreateFileW)> createFile_{"CreateFileW", CreateFileStandIn, createFile};
    StandIn<decltype(MoveFileExW)> moveFile_{"MoveFileExW", MoveFileExWStandIn, moveFile};
    StandIn<decltype(FlushFileBuffers)> flushFile_{"FlushFileBuffers", FlushFileBuffersStandIn, flushFile};
    StandIn<decltype(CopyFileW)> copyFile_{"CopyFileW", CopyFileWStandIn, copyFile};
    StandIn<decltype(WriteFile)> writeFile_{"WriteFile", WriteFileStandIn, writeFile};
    StandIn<decltype(SysAllocStringLen)> allocateText_{"SysAllocStringLen", SysAllocStringLenStandIn, allocateText};
    StandIn<decltype(HeapAlloc)> allocateHeap_{"HeapAlloc", HeapAllocStandIn, allocateHeap};
    const std::filesystem::path usersTemporary = std::filesystem::temp_directory_path();
    const TemporaryFolder temporary;
    DocumentsFolder documents;
    TestBook book;
    std::string before;
};

// A book that was not seen is not overwritten

TEST_F(FailingFiles, ABookThatWasNotVisibleAtLoadIsKeptBeforeItIsReplaced)
{
    for (const DWORD error : {ERROR_FILE_NOT_FOUND, ERROR_PATH_NOT_FOUND, ERROR_BAD_NETPATH}) {
        WriteBook();
        refusals.open = [error](const std::wstring&, DWORD access, DWORD) -> DWORD {
            return access == GENERIC_READ ? error : ERROR_SUCCESS;
        };
        EXPECT_EQ(book->Load(), FALSE);
        refusals = {};
        book->Save(0);
        EXPECT_EQ(ReadBytes(Path() + L".bak"), before) << error;
        SetFileAttributesW((Path() + L".bak").c_str(), FILE_ATTRIBUTE_NORMAL);
        DeleteFileW((Path() + L".bak").c_str());
    }
}

TEST_F(FailingFiles, ABookThatNobodyLoadedIsKeptBeforeItIsReplaced)
{
    WriteBook();
    book->Save(0);
    EXPECT_EQ(ReadBytes(Path() + L".bak"), before);
}

TEST_F(FailingFiles, ABookThatWasSeenOrWasNeverThereLeavesNoCopy)
{
    book->Load();
    book->Save(0);
    book->Reload();
    book->Save(0);
    EXPECT_EQ(documents.Files(), Names{L"qxfaxab.xml"});
}

TEST_F(FailingFiles, ABookThatSomebodyElseSavedUnnoticedIsKeptBeforeItIsReplaced)
{
    WriteBook();
    book->Reload();
    EXPECT_TRUE(SaveBob());
    const std::string theirs = ReadBytes(Path());
    book->Save(book->GetCount());
    EXPECT_EQ(ReadBytes(Path() + L".bak"), theirs);
    // From then on it is what this book saved; and the same again is no change.
    book->Save(1);
    EXPECT_TRUE(SaveBob());
    book->Reload();
    EXPECT_TRUE(SaveBob());
    book->Save(1);
    EXPECT_EQ(documents.Files(), (Names{L"qxfaxab.xml", L"qxfaxab.xml.bak"}));
}

// On another machine, which shares the file and no guard.
class SavedElsewhere : public FailingFiles {
protected:
    void SetUp() override
    {
        WriteBook();
        book->Reload();
    }

    void SaveElsewhere(const std::string& content)
    {
        SetFileAttributesW(Path().c_str(), FILE_ATTRIBUTE_NORMAL);
        WriteBytes(Path(), content);
    }

    // With the calls of that number, counted from 1.
    std::function<DWORD()> AtCall(int number, std::string content, DWORD error = ERROR_SUCCESS)
    {
        return [this, number, content, error, calls = 0]() mutable -> DWORD {
            if (++calls != number)
                return ERROR_SUCCESS;
            SaveElsewhere(content);
            return error;
        };
    }

    // Whether a call opens the book itself to write over what is in it.
    bool WritesOver(const std::wstring& path, DWORD access, DWORD disposition) const
    {
        return path == Path() && (access & GENERIC_WRITE) != 0 && disposition == OPEN_EXISTING;
    }

    std::string Kept(const wchar_t* ending) const { return ReadBytes(Path() + ending); }

    void ExpectTheirsInACopy()
    {
        const Names copies = KeptCopies(Path());
        ASSERT_EQ(copies.size(), 1u);
        EXPECT_EQ(ReadBytes(copies[0]), theirs);
        EXPECT_EQ(NamesInFile(), Names{L"Ann"});
    }

    const std::string theirs = "<theirs/>", theirNext = "<next/>";
};

TEST_F(SavedElsewhere, WhileTheNewContentIsMadeItIsKept)
{
    refusals.flush = AtCall(1, theirs);
    book->Save(1);
    EXPECT_EQ(Kept(L".bak"), theirs);
    EXPECT_EQ(NamesInFile(), Names{L"Ann"});
}

TEST_F(SavedElsewhere, WhileThatIsKeptItIsKeptAsWell)
{
    SaveElsewhere(theirs);
    refusals.flush = AtCall(1, theirNext); // of the copy
    book->Save(1);
    EXPECT_EQ(Kept(L".bak"), theirs);
    EXPECT_EQ(Kept(L".2.bak"), theirNext);
    EXPECT_EQ(NamesInFile(), Names{L"Ann"});
}

TEST_F(SavedElsewhere, WhileTheRenameWaitsItIsKept)
{
    refusals.move = AtCall(1, theirs, ERROR_SHARING_VIOLATION);
    book->Save(1);
    EXPECT_EQ(Kept(L".bak"), theirs);
    EXPECT_EQ(NamesInFile(), Names{L"Ann"});
}

TEST_F(SavedElsewhere, WhenItCannotBeKeptItStays)
{
    refusals.flush = AtCall(1, theirs);
    refusals.copy = Always(ERROR_DISK_FULL);
    book->Save(1);
    EXPECT_EQ(ReadBytes(Path()), theirs);
    EXPECT_EQ(documents.Files(), Names{L"qxfaxab.xml"});
}

TEST_F(SavedElsewhere, BeforeItIsWrittenOverInPlaceItIsKept)
{
    TakeNoSecondFile(ERROR_PATH_NOT_FOUND);
    refusals.flush = AtCall(1, theirs);
    book->Save(1);
    ExpectTheirsInACopy();
}

TEST_F(SavedElsewhere, WhileWhatIsWrittenOverIsCopiedItIsKept)
{
    TakeNoSecondFile(ERROR_PATH_NOT_FOUND);
    refusals.flush = AtCall(2, theirs); // of the copy that lies there while it is written over
    book->Save(1);
    ExpectTheirsInACopy();
    EXPECT_EQ(CopiesInTemporaryFolder().size(), 1u);
}

TEST_F(SavedElsewhere, RightBeforeItWouldBeWrittenOverItIsKept)
{
    TakeNoSecondFile(ERROR_PATH_NOT_FOUND);
    refusals.open = [&, beside = refusals.open, saved = false](const std::wstring& path, DWORD access,
                                                               DWORD disposition) mutable -> DWORD {
        if (WritesOver(path, access, disposition) && !std::exchange(saved, true))
            SaveElsewhere(theirs);
        return beside(path, access, disposition);
    };
    book->Save(1);
    ExpectTheirsInACopy();
    EXPECT_EQ(CopiesInTemporaryFolder().size(), 1u);
}

TEST_F(SavedElsewhere, AgainAndAgainBeforeItWouldBeWrittenOverItStays)
{
    TakeNoSecondFile(ERROR_PATH_NOT_FOUND);
    std::string last;
    refusals.open = [&, beside = refusals.open, saves = 0](const std::wstring& path, DWORD access,
                                                           DWORD disposition) mutable -> DWORD {
        if (WritesOver(path, access, disposition))
            SaveElsewhere(last = "<theirs number='" + std::to_string(++saves) + "'/>");
        return beside(path, access, disposition);
    };
    EXPECT_FALSE(SaveBob());
    EXPECT_EQ(ReadBytes(Path()), last);
    EXPECT_TRUE(CopiesInTemporaryFolder().empty());
}

// Who holds the file for longer than a save waits may save in it.
TEST_F(SavedElsewhere, WhileItCannotBeOpenedToBeWrittenOverItStays)
{
    TakeNoSecondFile(ERROR_PATH_NOT_FOUND);
    refusals.open = [&, beside = refusals.open, calls = 0](const std::wstring& path, DWORD access,
                                                           DWORD disposition) mutable -> DWORD {
        constexpr int kWholePatience = 41;
        if (!WritesOver(path, access, disposition) || ++calls > kWholePatience)
            return beside(path, access, disposition);
        if (calls == kWholePatience)
            SaveElsewhere(theirs);
        return ERROR_SHARING_VIOLATION;
    };
    EXPECT_FALSE(SaveBob());
    EXPECT_EQ(ReadBytes(Path()), theirs);
    EXPECT_TRUE(CopiesInTemporaryFolder().empty());
}

TEST_F(SavedElsewhere, RightAfterARenameItIsNotTakenForSeen)
{
    bool renamed = false;
    refusals.move = [&renamed]() -> DWORD {
        renamed = true;
        return ERROR_SUCCESS;
    };
    refusals.open = [&, saved = false](const std::wstring& path, DWORD, DWORD) mutable -> DWORD {
        if (renamed && path == Path() && !std::exchange(saved, true))
            SaveElsewhere(theirs);
        return ERROR_SUCCESS;
    };
    book->Save(1);
    book->Save(1);
    EXPECT_EQ(Kept(L".bak"), theirs);
}

TEST_F(FailingFiles, ABookOfWhichALoadDropsSomethingIsKeptBeforeItIsReplaced)
{
    for (const char* const item :
         {"<qxfax_pbentry entry_id='1' name='Ann' fax_number='555 0100'/>", "<qxfax_pbentry name='Ann'/>",
          "<qxfax_group entry_id='1'><member_list/></qxfax_group>",
          "<qxfax_group entry_id='1' group_name='G'><member_list/><member_list/></qxfax_group>",
          "<qxfax_group entry_id='1' group_name='G'><member_list><m_entry_id><![CDATA[1]]></m_entry_id></member_list>"
          "</qxfax_group>",
          "<qxfax_group entry_id='1' group_name='G'><member_list><m_entry_id><!-- -->1</m_entry_id></member_list>"
          "</qxfax_group>"}) {
        before = std::string("<device><software><component><qxfax_phonebook>") + item +
                 "</qxfax_phonebook></component></software></device>";
        SetFileAttributesW(Path().c_str(), FILE_ATTRIBUTE_NORMAL);
        WriteBytes(Path(), before);
        book->Reload();
        book->Save(book->GetCount());
        EXPECT_EQ(ReadBytes(Path() + L".bak"), before) << item;
        SetFileAttributesW((Path() + L".bak").c_str(), FILE_ATTRIBUTE_NORMAL);
        DeleteFileW((Path() + L".bak").c_str());
    }
}

TEST_F(FailingFiles, ABookIsKeptInTheTemporaryFolderWhereItsOwnTakesNoSecondFile)
{
    const Names kept = {temporary / L"qxfax-phone-book.qxfaxab.xml.bak",
                        temporary / L"qxfax-phone-book.qxfaxab.xml.2.bak"};
    for (const std::wstring& copy : kept) {
        before = "<device><software><component><qxfax_phonebook><qxfax_pbentry name='" + std::to_string(copy.size()) +
                 "'/></qxfax_phonebook></component></software></device>";
        SetFileAttributesW(Path().c_str(), FILE_ATTRIBUTE_NORMAL);
        WriteBytes(Path(), before);
        book->Reload();
        book.AddEntry(L"Bob", L"2", L"", 7);
        TakeNoSecondFile(ERROR_PATH_NOT_FOUND);
        book->Save(1);
        book.AddEntry(L"Cat", L"3", L"", 8);
        book->Save(2); // of which all is known by now
        EXPECT_EQ(NamesInFile(), (Names{L"Bob", L"Cat"}));
        EXPECT_EQ(ReadBytes(copy), before);
        EXPECT_TRUE(IsHidden(copy));
    }
    EXPECT_EQ(documents.Files(), Names{L"qxfaxab.xml"});
    EXPECT_EQ(KeptCopies(Path()), kept);
    EXPECT_EQ(KeptCopies(documents.File(L"other.xml")), Names());
}

// The replacement is never worse than the old file

TEST_F(FailingFiles, ARenameThatIsRefusedLeavesTheOldFile)
{
    for (const DWORD error : {ERROR_ACCESS_DENIED, ERROR_SHARING_VIOLATION, ERROR_DISK_FULL, ERROR_NOT_SAME_DEVICE}) {
        WriteBook();
        refusals.move = Always(error);
        EXPECT_FALSE(SaveBob()) << error;
        EXPECT_EQ(ReadBytes(Path()), before) << error;
        EXPECT_TRUE(IsHidden(Path()));
        EXPECT_EQ(documents.Files(), Names{L"qxfaxab.xml"}) << error;
        refusals = {};
    }
}

// Documented Windows: who may not delete a file by its security does not delete it. The phone book grants that to
// nobody.
RedirectedImport<decltype(GetFileSecurityW)>* getSecurity = nullptr;
RedirectedImport<decltype(SetFileSecurityW)>* setSecurity = nullptr;
RedirectedImport<decltype(DeleteFileW)>* deleteFile = nullptr;
Names undeletable;

template <class Visit> void ForEachAce(PSECURITY_DESCRIPTOR descriptor, Visit visit)
{
    BOOL present = FALSE;
    BOOL defaulted = FALSE;
    PACL acl = nullptr;
    void* ace = nullptr;
    if (!GetSecurityDescriptorDacl(descriptor, &present, &acl, &defaulted) || !present || acl == nullptr)
        return;
    for (DWORD i = 0; GetAce(acl, i, &ace); ++i)
        visit(*static_cast<ACCESS_ALLOWED_ACE*>(ace));
}
BOOL WINAPI SecurityWithoutDelete(LPCWSTR path, SECURITY_INFORMATION kind, PSECURITY_DESCRIPTOR descriptor, DWORD bytes,
                                  LPDWORD needed)
{
    const BOOL told = getSecurity->Original()(path, kind, descriptor, bytes, needed);
    if (told && std::wstring_view(path).ends_with(L"qxfaxab.xml"))
        ForEachAce(descriptor, [](ACCESS_ALLOWED_ACE& ace) { ace.Mask &= ~DWORD{DELETE}; });
    return told;
}
BOOL WINAPI SetFileSecurityStandIn(LPCWSTR path, SECURITY_INFORMATION kind, PSECURITY_DESCRIPTOR descriptor)
{
    bool grants = false;
    ForEachAce(descriptor, [&grants](const ACCESS_ALLOWED_ACE& ace) { grants |= (ace.Mask & DELETE) != 0; });
    std::erase(undeletable, path);
    if (!grants)
        undeletable.emplace_back(path);
    return setSecurity->Original()(path, kind, descriptor);
}
BOOL WINAPI DeleteFileStandIn(LPCWSTR path)
{
    if (std::ranges::find(undeletable, path) == undeletable.end())
        return deleteFile->Original()(path);
    SetLastError(ERROR_ACCESS_DENIED);
    return FALSE;
}

TEST_F(FailingFiles, ARenameThatIsRefusedLeavesNoFileThatNobodyMayDelete)
{
    WriteBook();
    const StandIn<decltype(GetFileSecurityW)> gets("GetFileSecurityW", SecurityWithoutDelete, getSecurity);
    const StandIn<decltype(SetFileSecurityW)> sets("SetFileSecurityW", SetFileSecurityStandIn, setSecurity);
    const StandIn<decltype(DeleteFileW)> deletes("DeleteFileW", DeleteFileStandIn, deleteFile);
    undeletable.clear();
    bool denied = false;
    refusals.move = [&denied]() -> DWORD {
        denied = !undeletable.empty();
        return ERROR_DISK_FULL;
    };
    EXPECT_FALSE(SaveBob());
    EXPECT_TRUE(denied);
    EXPECT_EQ(documents.Files(), Names{L"qxfaxab.xml"});
}

TEST_F(FailingFiles, ARenameThatIsRefusedForAWhileIsTriedAgain)
{
    for (const DWORD error : {ERROR_ACCESS_DENIED, ERROR_SHARING_VIOLATION, ERROR_LOCK_VIOLATION}) {
        WriteBook();
        refusals.move = ForAWhile(error, 20); // longer than half a second
        EXPECT_TRUE(SaveBob()) << error;
        EXPECT_EQ(NamesInFile(), Names{L"Bob"}) << error;
    }
}

TEST_F(FailingFiles, ATemporaryThatIsRefusedForAWhileIsTriedAgain)
{
    for (const DWORD error : {ERROR_ACCESS_DENIED, ERROR_SHARING_VIOLATION}) {
        WriteBook();
        refusals.open = [refuse = ForAWhile(error)](const std::wstring&, DWORD, DWORD disposition) mutable -> DWORD {
            return disposition == CREATE_NEW ? refuse() : ERROR_SUCCESS;
        };
        bool wroteInPlace = false;
        refusals.write = [&wroteInPlace]() -> DWORD {
            wroteInPlace = true;
            return ERROR_SUCCESS;
        };
        EXPECT_TRUE(SaveBob()) << error;
        EXPECT_FALSE(wroteInPlace) << error;
        EXPECT_EQ(NamesInFile(), Names{L"Bob"}) << error;
    }
}

TEST_F(FailingFiles, OpeningTheTemporaryForTheFlushIsTriedAgain)
{
    for (const DWORD error : {ERROR_ACCESS_DENIED, ERROR_SHARING_VIOLATION}) {
        WriteBook();
        refusals.open = [refuse = ForAWhile(error)](const std::wstring& path, DWORD access,
                                                    DWORD disposition) mutable -> DWORD {
            return path.ends_with(L".new") && access == GENERIC_WRITE && disposition == OPEN_EXISTING ? refuse()
                                                                                                      : ERROR_SUCCESS;
        };
        EXPECT_TRUE(SaveBob()) << error;
        EXPECT_EQ(NamesInFile(), Names{L"Bob"}) << error;
    }
}

TEST_F(FailingFiles, TheDocumentsSaveIsTriedAgainWhileTheFileIsInUse)
{
    for (const HRESULT error : {HRESULT_FROM_WIN32(ERROR_SHARING_VIOLATION), E_ACCESSDENIED, STG_E_SHAREVIOLATION}) {
        PhoneBookDocument document;
        ASSERT_TRUE(document.Begin());
        FailingDom dom([](int call) { return call < 5; }, error);
        EXPECT_TRUE(document.Save(documents.File(L"new.xml"))) << error;
    }
    // Of a DOM that does not say why, the file itself is asked.
    PhoneBookDocument document;
    ASSERT_TRUE(document.Begin());
    std::thread scanner;
    {
        UniqueFile looked(
            CreateFileW(documents.File(L"new.xml").c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        ASSERT_TRUE(looked);
        scanner = std::thread([file = std::move(looked)]() mutable {
            Sleep(300);
            file.Reset();
        });
    }
    EXPECT_TRUE(document.Save(documents.File(L"new.xml")));
    scanner.join();
}

TEST_F(FailingFiles, ADiskThatIsFullIsNoReasonToWriteOverTheOldFile)
{
    for (const DWORD error : {ERROR_DISK_FULL, ERROR_HANDLE_DISK_FULL, ERROR_SHARING_VIOLATION, ERROR_WRITE_PROTECT}) {
        WriteBook();
        TakeNoSecondFile(error);
        EXPECT_FALSE(SaveBob()) << error;
        EXPECT_EQ(ReadBytes(Path()), before) << error;
        refusals = {};
    }
}

TEST_F(FailingFiles, AFlushThatFailsStopsTheReplacement)
{
    WriteBook();
    refusals.flush = Always(ERROR_WRITE_FAULT);
    EXPECT_FALSE(SaveBob());
    EXPECT_EQ(ReadBytes(Path()), before);
    EXPECT_EQ(documents.Files(), Names{L"qxfaxab.xml"});
}

TEST_F(FailingFiles, ACopyThatCannotBeFlushedStopsTheReplacement)
{
    WriteBook();
    refusals.flush = ForAWhile(ERROR_WRITE_FAULT, 1); // the copy comes first
    EXPECT_FALSE(SaveBob(true));
    EXPECT_EQ(ReadBytes(Path()), before);
    EXPECT_EQ(documents.Files(), Names{L"qxfaxab.xml"});
    EXPECT_TRUE(SaveBob(true));
    EXPECT_EQ(ReadBytes(Path() + L".bak"), before);
}

// Writing in place

TEST_F(FailingFiles, WhereTheFolderTakesNoSecondFileACopyIsKeptUntilTheNewContentIsWhole)
{
    for (const DWORD error : {ERROR_ACCESS_DENIED, ERROR_PATH_NOT_FOUND, ERROR_FILENAME_EXCED_RANGE}) {
        WriteBook();
        TakeNoSecondFile(error);
        bool kept = false;
        refusals.write = [&]() -> DWORD {
            const auto copies = CopiesInTemporaryFolder();
            kept = std::ranges::any_of(copies, [this](const auto& file) {
                return file.extension() == L".bak" && ReadBytes(file.wstring()) == before;
            });
            return ERROR_SUCCESS;
        };
        EXPECT_TRUE(SaveBob()) << error;
        EXPECT_TRUE(kept) << error;
        EXPECT_EQ(NamesInFile(), Names{L"Bob"}) << error;
        EXPECT_TRUE(IsHidden(Path()));
        EXPECT_TRUE(CopiesInTemporaryFolder().empty()) << error;
    }
}

TEST_F(FailingFiles, WritingInPlaceThatFailsPutsTheOldContentBack)
{
    WriteBook();
    TakeNoSecondFile(ERROR_ACCESS_DENIED);
    refusals.write = ForAWhile(ERROR_DISK_FULL, 1);
    EXPECT_FALSE(SaveBob());
    EXPECT_EQ(ReadBytes(Path()), before);
    EXPECT_TRUE(CopiesInTemporaryFolder().empty());
}

TEST_F(FailingFiles, WritingInPlaceThatCannotBeTakenBackLeavesTheCopy)
{
    WriteBook();
    TakeNoSecondFile(ERROR_ACCESS_DENIED);
    refusals.write = Always(ERROR_DISK_FULL);
    EXPECT_FALSE(SaveBob());
    const auto copies = CopiesInTemporaryFolder();
    ASSERT_EQ(copies.size(), 1u);
    EXPECT_EQ(ReadBytes(copies[0].wstring()), before);
    SetFileAttributesW(copies[0].c_str(), FILE_ATTRIBUTE_NORMAL);
    DeleteFileW(copies[0].c_str());
}

// What an earlier session kept may have any of our names.
TEST_F(FailingFiles, ACopyOfTheSameNameDoesNotKeepWritingInPlaceFromItsOwn)
{
    WriteBook();
    TakeNoSecondFile(ERROR_PATH_NOT_FOUND);
    int taken = 0;
    refusals.copy = [&taken, beside = refusals.copy](const std::wstring& path) -> DWORD {
        const DWORD error = beside(path);
        return error == ERROR_SUCCESS && taken++ == 0 ? ERROR_FILE_EXISTS : error;
    };
    EXPECT_TRUE(SaveBob());
    EXPECT_EQ(taken, 2);
    EXPECT_EQ(NamesInFile(), Names{L"Bob"});
    EXPECT_TRUE(CopiesInTemporaryFolder().empty());
}

TEST_F(FailingFiles, AFolderInWhichEveryNameSeemsTakenEndsTheSave)
{
    WriteBook();
    refusals.open = [](const std::wstring&, DWORD, DWORD disposition) -> DWORD {
        return disposition == CREATE_NEW ? ERROR_FILE_EXISTS : ERROR_SUCCESS;
    };
    EXPECT_FALSE(SaveBob());
    TakeNoSecondFile(ERROR_PATH_NOT_FOUND);
    refusals.copy = Always(ERROR_FILE_EXISTS);
    EXPECT_FALSE(SaveBob());
    EXPECT_EQ(ReadBytes(Path()), before);
}

TEST_F(FailingFiles, WithoutACopyNothingIsWrittenInPlace)
{
    WriteBook();
    TakeNoSecondFile(ERROR_ACCESS_DENIED);
    refusals.copy = Always(ERROR_DISK_FULL);
    bool written = false;
    refusals.write = [&written]() -> DWORD {
        written = true;
        return ERROR_SUCCESS;
    };
    EXPECT_FALSE(SaveBob());
    EXPECT_FALSE(written);
    EXPECT_EQ(ReadBytes(Path()), before);
}

TEST_F(FailingFiles, TheCopyOfWhatIsWrittenOverLiesInTheTemporaryFolderOrNowhere)
{
    WriteBook();
    TakeNoSecondFile(ERROR_ACCESS_DENIED);
    refusals.copy = [this, beside = refusals.copy](const std::wstring& path) -> DWORD {
        EXPECT_TRUE(path.starts_with(temporary.Path().wstring())) << path;
        return beside(path);
    };
    FailingCalls<decltype(GetTempPathW), struct Folders> folders(nullptr, "GetTempPathW", 0);
    folders.FailFrom(2); // the replacement lies there by then
    const bool saved = SaveBob();
    folders.FailNone();
    EXPECT_TRUE(saved ? NamesInFile() == Names{L"Bob"} : ReadBytes(Path()) == before);
    EXPECT_TRUE(CopiesInTemporaryFolder().empty());
}

// Names

TEST_F(FailingFiles, EveryAttemptHasATemporaryOfItsOwn)
{
    Names temporaries;
    refusals.open = [&temporaries](const std::wstring& path, DWORD, DWORD disposition) -> DWORD {
        if (disposition == CREATE_NEW)
            temporaries.push_back(path);
        return disposition == CREATE_NEW && temporaries.size() == 1 ? ERROR_FILE_EXISTS : ERROR_SUCCESS;
    };
    EXPECT_TRUE(SaveBob());
    EXPECT_TRUE(SaveBob());
    std::thread([this] { EXPECT_TRUE(SaveBob()); }).join();
    std::ranges::sort(temporaries);
    EXPECT_EQ(temporaries.size(), 4u);
    EXPECT_EQ(std::ranges::adjacent_find(temporaries), temporaries.end());
}

TEST_F(FailingFiles, OnlyOldFilesOfATemporarysNameAreRemoved)
{
    const Names strangers = {L"qxfaxab.xml.1.2.new",    L"qxfaxab.xml.1.2.3.4.new", L"qxfaxab.xml.1.2.x.new",
                             L"qxfaxab.xml.1.2..new",   L"qxfaxab.xml.4711.new",    L"qxfaxab.xml.mine.new",
                             L"qxfaxab.xml.1.2.3.new1", L"other.xml.1.2.3.new",     L"qxfaxab.xml.1.2x.3.new"};
    Names left = strangers;
    left.insert(left.end(), {L"qxfaxab.xml", L"qxfaxab.xml.12.34.7.new"});
    std::ranges::sort(left);
    Names all = strangers;
    all.insert(all.end(), {L"qxfaxab.xml.12.34.6.new", L"qxfaxab.xml.12.34.7.new"});
    for (const std::wstring& name : all) {
        WriteBytes(documents.File(name), "half");
        if (name != L"qxfaxab.xml.12.34.7.new") // somebody may be writing it
            MakeOld(documents.File(name));
    }
    EXPECT_TRUE(SaveBob());
    EXPECT_EQ(documents.Files(), left);
}

RedirectedImport<decltype(GetSystemTimeAsFileTime)>* getTime = nullptr;
void WINAPI AnHourLater(FILETIME* time)
{
    constexpr ULONGLONG kHour = ULONGLONG{36000000000};
    getTime->Original()(time);
    const ULONGLONG later = (ULONGLONG{time->dwHighDateTime} << 32 | time->dwLowDateTime) + kHour;
    *time = {static_cast<DWORD>(later), static_cast<DWORD>(later >> 32)};
}

TEST_F(FailingFiles, WhatAnotherComputerIsMakingIsNotOldWhereTheShareIsBehindThisComputer)
{
    WriteBytes(documents.File(L"qxfaxab.xml.12.34.7.new"), "half");
    const StandIn<decltype(GetSystemTimeAsFileTime)> clock("GetSystemTimeAsFileTime", AnHourLater, getTime);
    EXPECT_TRUE(SaveBob());
    EXPECT_EQ(documents.Files(), (Names{L"qxfaxab.xml", L"qxfaxab.xml.12.34.7.new"}));
}

// The stamp of a file that was not saved is anybody's.
TEST_F(FailingFiles, ASaveThatIsRefusedRemovesNobodysTemporary)
{
    WriteBook();
    WriteBytes(documents.File(L"qxfaxab.xml.12.34.7.new"), "half");
    std::filesystem::last_write_time(Path(), std::filesystem::file_time_type::clock::now() + std::chrono::hours(1));
    refusals.move = Always(ERROR_DISK_FULL);
    EXPECT_FALSE(SaveBob());
    EXPECT_EQ(documents.Files(), (Names{L"qxfaxab.xml", L"qxfaxab.xml.12.34.7.new"}));
}

// Links

const wchar_t* linkName = L"";
std::wstring linkTarget;
RedirectedImport<decltype(GetFileAttributesW)>* getAttributes = nullptr;
DWORD WINAPI AttributesWithLink(LPCWSTR path)
{
    const DWORD attributes = getAttributes->Original()(path);
    return std::wstring_view(path).ends_with(linkName) ? attributes | FILE_ATTRIBUTE_REPARSE_POINT : attributes;
}
DWORD WINAPI FinalPathOfLink(HANDLE, LPWSTR path, DWORD units, DWORD)
{
    const std::wstring target = L"\\\\?\\" + linkTarget;
    if (units <= target.size())
        return static_cast<DWORD>(target.size() + 1);
    target.copy(path, target.size());
    path[target.size()] = L'\0';
    return static_cast<DWORD>(target.size());
}

RedirectedImport<decltype(CreateFileW)>* createTarget = nullptr;
HANDLE WINAPI CreateFileOfLink(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                               DWORD disposition, DWORD flags, HANDLE like)
{
    return createTarget->Original()(std::wstring_view(path).ends_with(linkName) ? linkTarget.c_str() : path, access,
                                    share, security, disposition, flags, like);
}
DWORD WINAPI AttributesOfLink(LPCWSTR path)
{
    return std::wstring_view(path).ends_with(linkName) ? FILE_ATTRIBUTE_REPARSE_POINT : getAttributes->Original()(path);
}

TEST_F(FailingFiles, ALinkToAFileThatIsNotThereYetStaysALink)
{
    linkName = L"qxfaxab.xml";
    linkTarget = documents.File(L"real.xml");
    const StandIn<decltype(GetFileAttributesW)> attributes("GetFileAttributesW", AttributesOfLink, getAttributes);
    const StandIn<decltype(CreateFileW)> files("CreateFileW", CreateFileOfLink, createTarget);
    const RedirectedImport<decltype(GetFinalPathNameByHandleW)> finalPath("GetFinalPathNameByHandleW", FinalPathOfLink);
    EXPECT_TRUE(SaveBob());
    EXPECT_EQ(documents.Files(), Names{L"real.xml"});
    EXPECT_NE(ReadBytes(linkTarget).find("Bob"), std::string::npos);
}

TEST_F(FailingFiles, ALinkIsFollowedToTheFileThatItLeadsTo)
{
    linkName = L"qxfaxab.xml";
    linkTarget = documents.File(L"real.xml");
    WriteBytes(Path(), "link");
    WriteBytes(linkTarget, "");
    const StandIn<decltype(GetFileAttributesW)> attributes("GetFileAttributesW", AttributesWithLink, getAttributes);
    const RedirectedImport<decltype(GetFinalPathNameByHandleW)> finalPath("GetFinalPathNameByHandleW", FinalPathOfLink);
    EXPECT_TRUE(SaveBob());
    EXPECT_EQ(ReadBytes(Path()), "link");
    EXPECT_EQ(LoadPhoneBookFile(linkTarget, book.store).items.size(), 1u);
    EXPECT_EQ(NamesInFile(), Names{L"Bob"});
    EXPECT_EQ(documents.Files(), (Names{L"qxfaxab.xml", L"real.xml"}));
}

TEST_F(FailingFiles, WhereALinkLeadsIsNamedAsEveryFunctionTakesIt)
{
    linkName = L"qxfaxab.xml";
    WriteBytes(Path(), "link");
    const StandIn<decltype(GetFileAttributesW)> attributes("GetFileAttributesW", AttributesWithLink, getAttributes);
    const RedirectedImport<decltype(GetFinalPathNameByHandleW)> finalPath("GetFinalPathNameByHandleW", FinalPathOfLink);
    linkTarget = L"C:\\real.xml";
    EXPECT_EQ(FollowLink(Path()), linkTarget);
    linkTarget = L"UNC\\server\\share\\real.xml";
    EXPECT_EQ(FollowLink(Path()), L"\\\\server\\share\\real.xml");
    linkTarget = L"C:\\" + std::wstring(300, L'x');
    EXPECT_EQ(FollowLink(Path()), L"\\\\?\\" + linkTarget);
}

TEST_F(FailingFiles, ALinkThatLeadsNowhereIsTheFile)
{
    linkName = L"qxfaxab.xml";
    const StandIn<decltype(GetFileAttributesW)> attributes("GetFileAttributesW", AttributesOfLink, getAttributes);
    EXPECT_EQ(FollowLink(Path()), Path());
    WriteBytes(Path(), "link");
    FailingCalls<decltype(GetFinalPathNameByHandleW), struct Ends> ends(nullptr, "GetFinalPathNameByHandleW", 0);
    ends.FailFrom(1);
    EXPECT_EQ(FollowLink(Path()), Path());
}

// Files that open and tell nothing

using FailingReads = FailingCalls<decltype(ReadFile), struct Reads>;
using FailingSizes = FailingCalls<decltype(GetFileSizeEx), struct Sizes>;

TEST_F(FailingFiles, AFileThatOpensAndCannotBeReadIsNotTakenForABook)
{
    WriteBook();
    FailingReads reads(nullptr, "ReadFile", FALSE, ERROR_CRC);
    reads.FailFrom(1);
    EXPECT_EQ(LoadPhoneBookFile(Path(), book.store).outcome, LoadOutcome::NotUnderstood);
    reads.FailNone();
    FailingSizes sizes(nullptr, "GetFileSizeEx", FALSE, ERROR_CRC);
    sizes.FailFrom(1);
    EXPECT_EQ(LoadPhoneBookFile(Path(), book.store).outcome, LoadOutcome::NotUnderstood);
}

TEST_F(FailingFiles, AFileThatCannotBeAskedHasNoStamp)
{
    EXPECT_FALSE(StampOf(Path()));
    WriteBook();
    EXPECT_TRUE(StampOf(Path()));
    FailingCalls<decltype(GetFileInformationByHandle), struct Stamps> stamps(nullptr, "GetFileInformationByHandle",
                                                                             FALSE);
    stamps.FailFrom(1);
    EXPECT_FALSE(StampOf(Path()));
}

TEST_F(FailingFiles, WhatMayBeThereIsKeptOrStays)
{
    EXPECT_TRUE(KeepCopy(Path())); // nothing to keep
    WriteBook();
    FailingCalls<decltype(GetFileAttributesExW), struct Looks> looks(nullptr, "GetFileAttributesExW", FALSE,
                                                                     ERROR_NETNAME_DELETED);
    looks.FailFrom(1);
    EXPECT_FALSE(KeepCopy(Path()));
    EXPECT_EQ(documents.Files(), Names{L"qxfaxab.xml"});
}

TEST_F(FailingFiles, ACopyThatCannotBeComparedIsNotTakenForOneOfThisFile)
{
    WriteBook();
    EXPECT_TRUE(KeepCopy(Path()));
    {
        FailingSizes sizes(nullptr, "GetFileSizeEx", FALSE, ERROR_CRC);
        sizes.FailOnly(2); // of the copy
        EXPECT_TRUE(KeepCopy(Path()));
    }
    for (const long call : {1, 2}) { // of the file, of the copy; the next copy is the one that the last round kept
        FailingReads reads(nullptr, "ReadFile", FALSE, ERROR_CRC);
        reads.FailOnly(call);
        EXPECT_TRUE(KeepCopy(Path())) << call;
    }
    EXPECT_EQ(documents.Files(), (Names{L"qxfaxab.xml", L"qxfaxab.xml.2.bak", L"qxfaxab.xml.bak"}));
}

TEST_F(FailingFiles, ABookInUseIsWaitedForOnceHoweverManyCopiesThereAre)
{
    WriteBook();
    int calls = 0;
    refusals.open = [&](const std::wstring& path, DWORD, DWORD) -> DWORD {
        calls += path == Path() ? 1 : 0;
        return path == Path() ? ERROR_SHARING_VIOLATION : ERROR_SUCCESS;
    };
    std::vector<int> callsWithCopies;
    for (std::size_t copies = 0; copies < 3; ++copies) {
        calls = 0;
        EXPECT_TRUE(KeepCopy(Path())); // the system's own copying is let through
        callsWithCopies.push_back(calls);
    }
    EXPECT_EQ(KeptCopies(Path()).size(), 3u);
    EXPECT_GT(callsWithCopies[1], 1);
    EXPECT_EQ(callsWithCopies[2], callsWithCopies[1]);
}

TEST_F(FailingFiles, AReadThatFailsWhileWritingInPlaceLosesNothing)
{
    int refused = 0;
    // The new content's end, its mark, itself, the copy, the old content.
    for (long call = 1; call <= 5; ++call) {
        refusals.open = nullptr;
        WriteBook();
        TakeNoSecondFile(ERROR_ACCESS_DENIED);
        FailingReads reads(nullptr, "ReadFile", FALSE, ERROR_CRC);
        reads.FailOnly(call);
        const bool saved = SaveBob();
        EXPECT_TRUE(reads.HasFailed()) << call;
        reads.FailNone();
        refused += saved ? 0 : 1;
        EXPECT_EQ(saved ? NamesInFile() : Names{L"Bob"}, Names{L"Bob"}) << call;
        EXPECT_TRUE(saved || ReadBytes(Path()) == before) << call;
    }
    EXPECT_EQ(refused, 4);
}

TEST_F(FailingFiles, WhereNoFolderTakesASecondFileNothingIsWritten)
{
    WriteBook();
    TakeNoSecondFile(ERROR_ACCESS_DENIED);
    FailingCalls<decltype(GetTempPathW), struct Folders> folders(nullptr, "GetTempPathW", 0);
    folders.FailFrom(1);
    EXPECT_FALSE(SaveBob());
    EXPECT_EQ(ReadBytes(Path()), before);
}

// Where the folder takes a second file, and where it does not.
class FailingSaves : public FailingFiles {
protected:
    // Saves Bob over Ann, with the first, the second, ... call failing alone.
    template <class Function, class Failure>
    void SaveWhileEachFails(const char* function, Failure failure, DWORD error = ERROR_GEN_FAILURE)
    {
        for (const bool inPlace : {false, true}) {
            bool failed = true;
            for (long call = 1; failed && !HasFailure(); ++call) {
                const std::string what = std::string(function) + (inPlace ? " in place " : " ") + std::to_string(call);
                WriteBook();
                if (inPlace)
                    TakeNoSecondFile(ERROR_PATH_NOT_FOUND);
                FailingCalls<Function, struct CallsOfSave> calls(nullptr, function, failure, error);
                calls.FailOnly(call);
                const bool saved = SaveBob(true);
                failed = calls.HasFailed();
                calls.FailNone();
                refusals = {};
                CheckOldOrNew(saved, what);
            }
        }
    }

    void CheckOldOrNew(bool saved, const std::string& what)
    {
        if (saved)
            EXPECT_EQ(NamesInFile(), Names{L"Bob"}) << what;
        else
            EXPECT_EQ(ReadBytes(Path()), before) << what;
        const Names copies = KeptCopies(Path());
        EXPECT_TRUE(!saved || !copies.empty()) << what;
        for (const std::wstring& copy : copies) {
            EXPECT_EQ(ReadBytes(copy), before) << what;
            SetFileAttributesW(copy.c_str(), FILE_ATTRIBUTE_NORMAL);
            DeleteFileW(copy.c_str());
        }
    }
};

TEST_F(FailingSaves, LeaveOldOrNewAndTheOldOneInACopy)
{
    SaveWhileEachFails<decltype(CreateFileW)>("CreateFileW", INVALID_HANDLE_VALUE);
    SaveWhileEachFails<decltype(CopyFileW)>("CopyFileW", FALSE, ERROR_PATH_NOT_FOUND);
    SaveWhileEachFails<decltype(ReadFile)>("ReadFile", FALSE);
    SaveWhileEachFails<decltype(FlushFileBuffers)>("FlushFileBuffers", FALSE);
    SaveWhileEachFails<decltype(SetEndOfFile)>("SetEndOfFile", FALSE);
    SaveWhileEachFails<decltype(GetFileAttributesW)>("GetFileAttributesW", INVALID_FILE_ATTRIBUTES);
    SaveWhileEachFails<decltype(GetFileSecurityW)>("GetFileSecurityW", FALSE);
    SaveWhileEachFails<decltype(GetTempPathW)>("GetTempPathW", 0u);
}

TEST_F(FailingFiles, ABookIsSavedAlsoWhereThereIsNoGuard)
{
    FailingCalls<decltype(CreateMutexW), struct Guards> guards(nullptr, "CreateMutexW", nullptr);
    guards.FailFrom(1);
    EXPECT_TRUE(SaveBob());
    EXPECT_EQ(NamesInFile(), Names{L"Bob"});
}

// Half a document

TEST_F(FailingFiles, WithoutADocumentNothingIsReadOrWritten)
{
    WriteBook();
    FailingCalls<decltype(CoCreateInstance), struct Documents> made(nullptr, "CoCreateInstance", E_FAIL);
    made.FailFrom(1);
    EXPECT_FALSE(SaveBob());
    EXPECT_EQ(LoadPhoneBookFile(Path(), book.store).outcome, LoadOutcome::NotUnderstood);
    EXPECT_EQ(ReadBytes(Path()), before);
}

TEST_F(FailingFiles, ADocumentWhoseEndCannotBeSeenIsNotTakenForWhole)
{
    WriteBook();
    {
        FailingSizes sizes(nullptr, "GetFileSizeEx", FALSE, ERROR_CRC);
        sizes.FailFrom(1);
        EXPECT_FALSE(SaveBob());
    }
    FailingCalls<decltype(SetFilePointerEx), struct Moves> moves(nullptr, "SetFilePointerEx", FALSE, ERROR_CRC);
    moves.FailFrom(1);
    EXPECT_FALSE(SaveBob());
    EXPECT_EQ(ReadBytes(Path()), before);
}

TEST_F(FailingFiles, AnyCallOfTheDomThatFailsWhileSavingLeavesTheOldFile)
{
    WriteBook();
    book.AddEntry(L"Bob", L"2", L"", 1);
    book.AddGroup(L"Both", {1, 7}, 2);
    int failing = 0;
    int saves = 0;
    for (bool failed = true; failed; ++failing) {
        {
            FailingDom dom([failing](int call) { return call == failing; });
            saves += SavePhoneBookFile(Path(), book->Items(), false);
            failed = dom.Calls() > failing;
        }
        if (ReadBytes(Path()) == before)
            continue;
        ASSERT_EQ(NamesInFile(), (Names{L"Bob", L"Both"})) << failing;
        WriteBook();
    }
    EXPECT_EQ(saves, 2); // the document's save, which was tried again, and the one in which nothing failed
    EXPECT_GT(failing, 30);
}

// Calls action until none of its allocations is left to fail; the function gets the number of the one that did.
void FailEachAllocation(std::function<DWORD()> Refusals::* kind, const std::function<void()>& action,
                        const std::function<void(int)>& check, int atLeast)
{
    int failing = 0;
    for (bool failed = true; failed; ++failing) {
        int calls = 0;
        refusals.*kind = [&calls, failing]() -> DWORD {
            return calls++ == failing ? ERROR_NOT_ENOUGH_MEMORY : ERROR_SUCCESS;
        };
        action();
        refusals = {};
        failed = calls > failing;
        if (failed)
            check(failing);
    }
    EXPECT_GT(failing, atLeast);
}

TEST_F(FailingFiles, AnyTextThatCannotBeAllocatedWhileSavingLeavesTheOldFile)
{
    WriteBook();
    book->Reload();
    FailEachAllocation(
        &Refusals::allocate, [this] { EXPECT_EQ(book->Save(1), TRUE); }, // and it comes back
        [this](int failing) { ASSERT_EQ(ReadBytes(Path()), before) << failing; }, 20);
}

TEST_F(FailingFiles, AnyCallOfTheDomThatFailsWhileLoadingIsNotTakenForAShorterBook)
{
    int failing = 0;
    int skipped = 0;
    for (bool failed = true; failed; ++failing) {
        WriteBook();
        book->RemoveAll();
        {
            FailingDom dom([failing](int call) { return call == failing; });
            book->Load();
            failed = dom.Calls() > failing;
        }
        skipped += book->GetCount() == 1;
        CheckNothingIsLost(failing);
    }
    EXPECT_GT(failing, 40);
    EXPECT_EQ(skipped, 2); // each item once: it could not be fetched, and the other one was
}

TEST_F(FailingFiles, AnyBlockThatCannotBeAllocatedWhileLoadingIsNotTakenForAnEmptyText)
{
    WriteBook();
    FailEachAllocation(
        &Refusals::allocateHeap, [this] { book->Load(); },
        [this](int failing) {
            CheckNothingIsLost(failing);
            WriteBook();
            book->RemoveAll();
        },
        6);
}

// Items and their texts are blocks of the process heap; nothing else here is.
TEST_F(FailingFiles, ALoadForWhichMemoryIsShortLeavesNoItemBehind)
{
    WriteBook();
    const StandIn<decltype(HeapFree)> frees("HeapFree", HeapFreeStandIn, freeHeap);
    FailingCalls<void*(std::size_t), struct LoadMemory> memory(nullptr, "malloc", nullptr);
    for (const bool ofItems : {true, false}) {
        int thrown = 0;
        int failing = 0;
        for (bool failed = true; failed; ++failing) {
            long blocks = 0;
            bool refused = false;
            blocksFreed = 0;
            refusals.allocateHeap = [&]() -> DWORD {
                if (ofItems && blocks == failing)
                    refused = true;
                blocks += refused ? 0 : 1;
                return refused ? ERROR_NOT_ENOUGH_MEMORY : ERROR_SUCCESS;
            };
            if (!ofItems)
                memory.FailOnly(failing + 1);
            try {
                LoadPhoneBookFile(Path(), book.store);
            } catch (const std::bad_alloc&) {
                ++thrown;
                EXPECT_EQ(blocks, blocksFreed) << ofItems << failing;
            }
            failed = refused || memory.HasFailed();
            memory.FailNone();
            refusals = {};
        }
        EXPECT_GT(thrown, 5) << ofItems;
    }
}

TEST_F(FailingFiles, AReloadForWhichMemoryIsShortLeavesNothingOfACancelledEdit)
{
    FailingCalls<void*(std::size_t), struct ReloadMemory> memory(nullptr, "malloc", nullptr);
    int failing = 0;
    for (bool failed = true; failed;) {
        WriteBook();
        book->Reload();
        AsEntry(book->GetAt(0))->SetFaxNumber(L"9");
        book->Delete(1);
        memory.FailOnly(++failing);
        try {
            book->Reload();
        } catch (const std::bad_alloc&) { // as the dialogs' barrier does
        }
        failed = memory.HasFailed();
        memory.FailNone();
        CheckNothingIsLost(failing);
    }
    EXPECT_GT(failing, 10);
}

TEST_F(FailingFiles, AnEntryWhoseCopyDoesNotFitIntoTheMemoryStaysAsItIs)
{
    PhoneBookEntry* const ann = book.AddEntry(L"Ann", L"1", L"Acme", 1);
    const PhoneBookEntry* const bob = book.AddEntry(L"Bob", L"2", L"", 2);
    for (int failing = 0; failing < 3; ++failing) {
        int calls = 0;
        refusals.allocateHeap = [&calls, failing]() -> DWORD {
            return calls++ == failing ? ERROR_NOT_ENOUGH_MEMORY : ERROR_SUCCESS;
        };
        EXPECT_THROW(ann->CopyFrom(*bob), std::bad_alloc);
        refusals = {};
        EXPECT_STREQ(ann->Name(), L"Ann");
        EXPECT_STREQ(ann->FaxNumber(), L"1");
        EXPECT_STREQ(ann->Company(), L"Acme");
    }
}

// While others work

std::function<void()> whileCreating;
int created = 0;
RedirectedImport<decltype(CoCreateInstance)>* createInstance = nullptr;
HRESULT WINAPI CreateInstanceStandIn(REFCLSID id, LPUNKNOWN outer, DWORD context, REFIID interfaceId, LPVOID* object)
{
    ++created;
    if (const auto once = std::exchange(whileCreating, nullptr))
        once(); // a message that the apartment answers meanwhile
    return createInstance->Original()(id, outer, context, interfaceId, object);
}

class BusyPhoneBook : public FailingFiles {
protected:
    StandIn<decltype(CoCreateInstance)> createInstance_{"CoCreateInstance", CreateInstanceStandIn, createInstance};
};

TEST_F(BusyPhoneBook, IsNotLoadedTwiceWhenItChangesWhileItIsLoaded)
{
    WriteBook();
    whileCreating = [this] {
        EXPECT_TRUE(SaveBob());
        ReloadSorted(*book);
    };
    ReloadSorted(*book);
    EXPECT_EQ(book.Names(), Names{L"Bob"}); // what was read last
}

TEST_F(BusyPhoneBook, IsSavedWholeWhenItIsReloadedMeanwhile)
{
    WriteBook();
    book->Reload();
    book.AddEntry(L"Bob", L"2", L"", 3);
    whileCreating = [this] { ReloadSorted(*book); };
    book->Save(3);
    book->Reload();
    EXPECT_EQ(book.Names(), (Names{L"Ann", L"Group", L"Bob"}));
}

TEST_F(BusyPhoneBook, IsReadOnceForAllListsThatFollowOneChange)
{
    WriteBook();
    ReloadSorted(*book);
    EXPECT_TRUE(SaveBob());
    created = 0;
    for (int list = 0; list < 3; ++list) {
        book->FollowChange(true);
        EXPECT_EQ(book.Names(), Names{L"Bob"});
    }
    EXPECT_EQ(created, 1);
    // What the user changed and did not save goes, as it always has.
    book.AddEntry(L"Unsaved", L"3", L"", 9);
    book->FollowChange(true);
    EXPECT_EQ(book.Names(), Names{L"Bob"});
}

TEST_F(BusyPhoneBook, DoesNotGrowWhileOthersSave)
{
    TestBook other;
    for (DWORD i = 0; i < 200; ++i)
        other.AddEntry(L"A name of some length, and then some more", L"555-0100", L"A company of some length", i);
    const auto change = [&] {
        ASSERT_TRUE(SavePhoneBookFile(Path(), other->Items(), false));
        book->FollowChange(true);
    };
    for (int i = 0; i < 3; ++i)
        change();
    const std::size_t bytes = HeapBytesInUse();
    for (int i = 0; i < 20; ++i)
        change();
    EXPECT_LT(HeapBytesInUse(), bytes + 200 * 100); // one book more would be 60000 bytes
}

TEST_F(BusyPhoneBook, KeepsTheItemThatADialogWorksOn)
{
    WriteBook();
    book->Reload();
    PhoneBookEntry* const ann = AsEntry(book->GetAt(0));
    {
        KeptItem kept(book.store, ann);
        book->Reload();
        EXPECT_NE(book->GetAt(0), ann);
        EXPECT_STREQ(ann->Name(), L"Ann");
        book->SetAt(0, ann);
        kept.TakenBack();
    }
    EXPECT_STREQ(book->GetAt(0)->GetName(), L"Ann");
}

// No book is no answer: what the lists show, and what the user works on, is better than that.
TEST_F(BusyPhoneBook, StaysAsItIsWhenAChangeCannotBeRead)
{
    int failing = 0;
    int kept = 0;
    for (bool failed = true; failed; ++failing) {
        WriteBook();
        ReloadSorted(*book);
        ASSERT_TRUE(SaveBob(false));
        before = ReadBytes(Path());
        {
            FailingDom dom([failing](int call) { return call == failing; });
            book->FollowChange(true);
            failed = dom.Calls() > failing;
        }
        if (book.Names() == Names{L"Ann", L"Group"}) {
            ++kept;
            book->Save(2);
            ASSERT_EQ(NamesInFile(), (Names{L"Ann", L"Group"})) << failing;
            ASSERT_EQ(ReadBytes(Path() + L".bak"), before) << failing; // what the book does not know of
        } else if (!failed) {
            ASSERT_EQ(book.Names(), Names{L"Bob"});
        }
        SetFileAttributesW((Path() + L".bak").c_str(), FILE_ATTRIBUTE_NORMAL);
        DeleteFileW((Path() + L".bak").c_str());
    }
    EXPECT_GT(kept, 10);
}

TEST_F(BusyPhoneBook, StaysAsItIsWhenThereIsNoMemoryToFollowAChange)
{
    WriteBook();
    ReloadSorted(*book);
    ASSERT_TRUE(SaveBob());
    before = ReadBytes(Path());
    refusals.allocateHeap = [] { return DWORD{ERROR_NOT_ENOUGH_MEMORY}; }; // of the items' texts
    book->FollowChange(true);
    refusals = {};
    EXPECT_EQ(book.Names(), (Names{L"Ann", L"Group"}));
    book->FollowChange(true); // and tries again
    EXPECT_EQ(book.Names(), Names{L"Bob"});
}

// Ids

TEST_F(FailingFiles, AnIdThatAGroupStillNamesIsNotHandedOutAgain)
{
    WriteBook();
    book->Reload();
    EXPECT_EQ(book->NextId(), 3u);
    const auto load = [this](const std::string& items) {
        SetFileAttributesW(Path().c_str(), FILE_ATTRIBUTE_NORMAL);
        WriteBytes(Path(), "<device><software><component><qxfax_phonebook>" + items +
                               "</qxfax_phonebook></component></software></device>");
        book->Reload();
    };
    const auto group = [](const std::string& ids) {
        return "<qxfax_group group_name='G' entry_id='4'><member_list>" + ids + "</member_list></qxfax_group>";
    };
    load(group("<m_entry_id>41</m_entry_id><m_entry_id>-5</m_entry_id>"));
    EXPECT_EQ(book->NextId(), 42u);
    EXPECT_TRUE(book->IsTaken(41));
    EXPECT_TRUE(book->IsTaken(4));
    EXPECT_FALSE(book->IsTaken(42));
    load(group("<m_entry_id>2147483647</m_entry_id><m_entry_id>0</m_entry_id><m_entry_id>2</m_entry_id>"));
    EXPECT_EQ(book->NextId(), 1u);
    EXPECT_EQ(book->NextId(), 3u);
    EXPECT_EQ(book->NextId(), 5u);
}

} // namespace
} // namespace qx
