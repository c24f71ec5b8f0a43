// Open lists follow every save of the phone book, in this process and in others.
#include "host/utf8.h"
#include "phonebook/ui/phone_book_changed.h"
#include "res/add_recipients_ids.h"
#include "res/details_ids.h"
#include "res/edit_phone_book_ids.h"
#include "res/entry_ids.h"
#include "res/group_ids.h"
#include "support/child_process.h"
#include "support/phone_book_session.h"

#include <chrono>
#include <gtest/gtest.h>

namespace qx::test {
namespace {

using host::UiDriver;
using Names = std::vector<std::wstring>;

BookText Acquaintances()
{
    return BookText().Entry(1, L"Bob", L"222").Entry(2, L"Ann", L"111");
}

struct Pipe {
    HANDLE read = nullptr, write = nullptr;

    Pipe()
    {
        SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
        CreatePipe(&read, &write, &inherited, 0);
    }
    void Close(HANDLE Pipe::* end)
    {
        if (this->*end != nullptr)
            CloseHandle(this->*end);
        this->*end = nullptr;
    }
    ~Pipe()
    {
        Close(&Pipe::read);
        Close(&Pipe::write);
    }
};

// Another printing program with its picker open; see phone_book_neighbour.cpp.
class Neighbour {
public:
    explicit Neighbour(const std::wstring& printer)
    {
        // Ours stay ours: the neighbour's input has to end when we close it.
        SetHandleInformation(input_.write, HANDLE_FLAG_INHERIT, 0);
        SetHandleInformation(output_.read, HANDLE_FLAG_INHERIT, 0);
        STARTUPINFOW start{};
        start.dwFlags = STARTF_USESTDHANDLES;
        start.hStdInput = input_.read;
        start.hStdOutput = output_.write;
        start.hStdError = GetStdHandle(STD_ERROR_HANDLE);
        process_.emplace(ProgramBeside(L"phone_book_neighbour.exe"), std::vector{printer},
                         ChildProcess::Handles::Inherited, start);
        input_.Close(&Pipe::read);
        output_.Close(&Pipe::write);
        if (const std::string answer = ReadLine(); answer != "ready")
            throw std::runtime_error("the neighbour says: " + answer);
    }
    ~Neighbour()
    {
        input_.Close(&Pipe::write); // its end of input
        if (!process_->EndsWithin(20000))
            process_->Kill(1);
    }

    std::string Tell(std::string line)
    {
        line += '\n';
        DWORD written = 0;
        WriteFile(input_.write, line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
        return ReadLine();
    }

private:
    std::string ReadLine()
    {
        std::string line;
        char c = 0;
        for (DWORD read = 0; ReadFile(output_.read, &c, 1, &read, nullptr) && read == 1 && c != '\n';) {
            if (c != '\r')
                line += c;
        }
        return line;
    }

    Pipe input_, output_;
    std::optional<ChildProcess> process_;
};

// A broadcast waits for each window, but not for ever: on a busy machine a list may follow a little later.
template <class Read, class Value> Value Eventually(Read read, const Value& expected)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    Value value = read();
    while (value != expected && std::chrono::steady_clock::now() < deadline) {
        Sleep(20);
        value = read();
    }
    return value;
}

// The rows of a list once they are these, or those that it has instead.
Names FollowedNames(UiDriver& ui, int list, const Names& expected)
{
    return Eventually([&] { return NamesIn(ui, list); }, expected);
}

void AnotherProgramSaves(const PhoneBookSession& session, const BookText& book)
{
    session.WritePhoneBook(book.Text());
    BroadcastPhoneBookChanged();
}

// Opens the dialog of a new group with these rows of the entries as its members.
void StartGroup(UiDriver& ui, std::wstring_view name, const std::vector<int>& rows)
{
    ui.Press(IDC_BOOK_ADD_GROUP);
    ui.Type(IDC_GROUP_NAME, name);
    AddMembers(ui, rows);
}

// The editor over a phone book with one entry.
class EditorOfBob : public ::testing::Test {
protected:
    PhoneBookSession session{BookText().Entry(1, L"Bob", L"222")};
    UiDriver& ui = session.OpenEditor();
};

TEST(PhoneBookChanged, OpenListsOfTwoProcessesFollowEachOthersSaves)
{
    PhoneBookSession session(Acquaintances());
    UiDriver& ui = session.OpenPicker();
    Neighbour neighbour(session.Printer());
    EXPECT_EQ(neighbour.Tell("names"), "Bob|Ann"); // loaded, not sorted

    ui.Press(IDC_PICK_EDIT_BOOK);
    AddEntry(ui, L"Mia", L"5");
    EXPECT_EQ(neighbour.Tell("names"), "Bob|Ann"); // not before it is saved
    ui.Press(IDOK);
    EXPECT_EQ(Eventually([&] { return neighbour.Tell("names"); }, std::string("Ann|Bob|Mia")), "Ann|Bob|Mia");

    Pick(ui, {0});
    EXPECT_EQ(neighbour.Tell("add Zoe"), "Ann|Bob|Mia|Zoe");
    const Names all{L"Ann", L"Bob", L"Mia", L"Zoe"};
    EXPECT_EQ(FollowedNames(ui, IDC_PICK_LIST, all), all);
    EXPECT_EQ(NamesIn(ui, IDC_PICK_CHOSEN), Names{L"Ann"}); // what was chosen is not touched
    EXPECT_FALSE(ui.IsEnabled(IDC_PICK_TO));
}

TEST(PhoneBookChanged, EditorAndPickerBelowItReloadWhatAnotherProgramSaved)
{
    PhoneBookSession session(Acquaintances());
    UiDriver& ui = session.OpenPicker();
    ui.Press(IDC_PICK_EDIT_BOOK);
    AnotherProgramSaves(session, BookText().Entry(7, L"New", L"7"));
    EXPECT_EQ(FollowedNames(ui, IDC_BOOK_LIST, Names{L"New"}), Names{L"New"});
    ui.Press(IDCANCEL);
    EXPECT_EQ(NamesIn(ui, IDC_PICK_LIST), Names{L"New"});
}

// The edit began before the reload and ends after it: it goes to the entry that has the id now.
TEST(PhoneBookChanged, EditThatAReloadOvertookReplacesTheEntryOfThatId)
{
    PhoneBookSession session(Acquaintances());
    UiDriver& ui = session.OpenEditor();
    EditRow(ui, 1); // Ann
    AnotherProgramSaves(session, BookText().Entry(2, L"Ann", L"111").Entry(3, L"Amy", L"3").Entry(1, L"Bob", L"222"));
    ui.Type(IDC_ENTRY_NAME, L"Zoe");
    ui.Press(IDOK);
    EXPECT_EQ(NamesIn(ui, IDC_BOOK_LIST), (Names{L"Amy", L"Bob", L"Zoe"}));
}

// What has the id now is not what the user was editing: nobody deleted it, so it stays.
TEST_F(EditorOfBob, EditOfAnEntryWhoseIdAReloadGaveToAnotherOneReplacesNothing)
{
    AddEntry(ui, L"Zoe", L"5"); // id 2, not saved yet
    EditRow(ui, 1);
    AnotherProgramSaves(session, BookText().Entry(1, L"Bob", L"222").Entry(2, L"Amy", L"3"));
    ui.Type(IDC_ENTRY_NAME, L"Zora");
    ui.Press(IDOK);
    ASSERT_EQ(NamesIn(ui, IDC_BOOK_LIST), (Names{L"Amy", L"Bob", L"Zora"}));
    EditRow(ui, 2);
    EXPECT_EQ(ui.Text(IDC_ENTRY_NAME), L"Zora"); // it has an id of its own
}

// Two programs that add at the same time draw the same id.
TEST_F(EditorOfBob, NewEntryNeverSharesItsIdWithOneThatAReloadBrought)
{
    ui.Press(IDC_BOOK_ADD_ENTRY);
    AnotherProgramSaves(session, BookText().Entry(1, L"Bob", L"222").Entry(2, L"Amy", L"3"));
    TypeEntry(ui, L"Zoe", L"5");
    ui.Press(IDOK);
    ASSERT_EQ(NamesIn(ui, IDC_BOOK_LIST), (Names{L"Amy", L"Bob", L"Zoe"}));
    EditRow(ui, 2);
    EXPECT_EQ(ui.Text(IDC_ENTRY_NAME), L"Zoe");
}

// ---- what a group's members were ----------------------------------------------------------------------------------

TEST_F(EditorOfBob, NewGroupDoesNotTakeWhoGotTheIdOfItsUnsavedMember)
{
    AddEntry(ui, L"Zoe", L"5"); // id 2
    StartGroup(ui, L"Team", {1});
    ASSERT_EQ(NamesIn(ui, IDC_GROUP_MEMBERS), Names{L"Zoe"});
    AnotherProgramSaves(session, BookText().Entry(1, L"Bob", L"222").Entry(2, L"Amy", L"3"));
    EXPECT_EQ(FollowedNames(ui, IDC_GROUP_ENTRIES, {L"Amy", L"Bob"}), (Names{L"Amy", L"Bob"}));
    EXPECT_EQ(NamesIn(ui, IDC_GROUP_MEMBERS), Names{});
    ASSERT_FALSE(ui.IsEnabled(IDOK));

    ui.SelectRows(IDC_GROUP_ENTRIES, {1}); // the list is that of the book: this is Bob
    ui.Press(IDC_GROUP_ADD);
    EXPECT_EQ(NamesIn(ui, IDC_GROUP_MEMBERS), Names{L"Bob"});
    OkAndSave(ui);
    EXPECT_EQ(session.Saved(L"Team").members, std::vector<DWORD>{1});
}

TEST(PhoneBookChanged, SavedGroupDoesNotTakeWhoGotTheIdOfAnUnsavedMember)
{
    const auto book = BookText().Entry(1, L"Bob", L"222").Group(2, L"Team", {1});
    PhoneBookSession session(book);
    UiDriver& ui = session.OpenEditor();
    AddEntry(ui, L"Zoe", L"5"); // id 3
    EditRow(ui, 1);
    AddMembers(ui, {1});
    ASSERT_EQ(NamesIn(ui, IDC_GROUP_MEMBERS), (Names{L"Bob", L"Zoe"}));
    AnotherProgramSaves(session, BookText(book).Entry(3, L"Amy", L"3"));
    EXPECT_EQ(FollowedNames(ui, IDC_GROUP_MEMBERS, {L"Bob"}), Names{L"Bob"});
    OkAndSave(ui);
    EXPECT_EQ(session.Saved(L"Team").members, std::vector<DWORD>{1});
}

TEST_F(EditorOfBob, UnsavedGroupThatGetsAnotherIdLeavesStrangersOut)
{
    AddEntry(ui, L"Zoe", L"5");      // id 2
    StartGroup(ui, L"Team", {0, 1}); // id 3
    ui.Press(IDOK);
    EditRow(ui, 1);
    AnotherProgramSaves(session, BookText().Entry(1, L"Bob", L"222").Entry(2, L"Amy", L"3").Entry(3, L"Cat", L"4"));
    EXPECT_EQ(FollowedNames(ui, IDC_GROUP_MEMBERS, {L"Bob"}), Names{L"Bob"});
    ui.Press(IDOK);
    EXPECT_EQ(NamesIn(ui, IDC_BOOK_LIST), (Names{L"Amy", L"Bob", L"Cat", L"Team"}));
    ui.Press(IDOK);
    EXPECT_EQ(session.Saved(L"Team").members, std::vector<DWORD>{1});
}

// The id of one who is gone would be drawn for somebody else one day.
TEST_F(EditorOfBob, GroupGivesUpAMemberWhomAReloadDidNotBring)
{
    AddEntry(ui, L"Zoe", L"5");
    StartGroup(ui, L"Team", {0, 1});
    AnotherProgramSaves(session, BookText().Entry(1, L"Bob", L"222").Entry(7, L"New", L"7"));
    EXPECT_EQ(FollowedNames(ui, IDC_GROUP_MEMBERS, {L"Bob"}), Names{L"Bob"});
    OkAndSave(ui);
    EXPECT_EQ(session.Saved(L"Team").members, std::vector<DWORD>{1});
}

// ---- nothing that was confirmed is lost ---------------------------------------------------------------------------

TEST_F(EditorOfBob, EditOfAnEntryThatAReloadDidNotBringAddsIt)
{
    AddEntry(ui, L"Zoe", L"5");
    EditRow(ui, 1);
    AnotherProgramSaves(session, BookText().Entry(1, L"Bob", L"333"));
    ui.Type(IDC_ENTRY_NAME, L"Zora");
    ui.Press(IDOK);
    EXPECT_EQ(NamesIn(ui, IDC_BOOK_LIST), (Names{L"Bob", L"Zora"}));
    ui.Press(IDOK);
    EXPECT_EQ(session.SavedBook(), (std::vector<SavedItem>{{L"Bob", L"333", L"", {}}, {L"Zora", L"5", L" ", {}}}));
}

TEST(PhoneBookChanged, EditOfAGroupThatAnotherProgramDeletedAddsIt)
{
    PhoneBookSession session(BookText().Entry(1, L"Bob", L"222").Group(2, L"Team", {1}));
    UiDriver& ui = session.OpenEditor();
    EditRow(ui, 1);
    AnotherProgramSaves(session, BookText().Entry(1, L"Bob", L"222"));
    ui.Type(IDC_GROUP_NAME, L"Club");
    ui.Press(IDOK);
    EXPECT_EQ(NamesIn(ui, IDC_BOOK_LIST), (Names{L"Bob", L"Club"}));
    ui.Press(IDOK);
    EXPECT_EQ(session.Saved(L"Club").members, std::vector<DWORD>{1});
}

TEST_F(EditorOfBob, EditOfAnUnsavedEntryReplacesNobodyWithTheSameNumber)
{
    AddEntry(ui, L"Zoe", L"555-0100"); // id 2
    EditRow(ui, 1);
    AnotherProgramSaves(session, BookText().Entry(1, L"Bob", L"222").Entry(2, L"Amy", L"555-0100"));
    ui.Type(IDC_ENTRY_COMPANY, L"Acme");
    ui.Press(IDOK);
    EXPECT_EQ(NamesIn(ui, IDC_BOOK_LIST), (Names{L"Amy", L"Bob", L"Zoe"}));
}

// ---- duplicates ---------------------------------------------------------------------------------------------------

TEST_F(EditorOfBob, NewEntryIsADuplicateOfTheOneThatGotItsId)
{
    ui.Press(IDC_BOOK_ADD_ENTRY); // draws id 2
    AnotherProgramSaves(session, BookText().Entry(1, L"Bob", L"222").Entry(2, L"Amy", L"3"));
    TypeEntry(ui, L"Amy", L"3");
    ui.Press(IDOK);
    EXPECT_EQ(ui.AnswerBox(IDOK).text, L"This is a duplicate entry. Please enter a different name or fax number.");
    ui.Press(IDCANCEL);
    EXPECT_EQ(NamesIn(ui, IDC_BOOK_LIST), (Names{L"Amy", L"Bob"}));
}

TEST_F(EditorOfBob, EditedEntryIsADuplicateOfTheOneThatGotItsId)
{
    AddEntry(ui, L"Zoe", L"5"); // id 2
    EditRow(ui, 1);
    AnotherProgramSaves(session, BookText().Entry(1, L"Bob", L"222").Entry(2, L"Amy", L"3"));
    TypeEntry(ui, L"Amy", L"3");
    ui.Press(IDOK);
    ui.AnswerBox(IDOK);
    ui.Press(IDCANCEL);
    EXPECT_EQ(NamesIn(ui, IDC_BOOK_LIST), (Names{L"Amy", L"Bob"}));
}

TEST_F(EditorOfBob, NewGroupIsADuplicateOfTheOneThatGotItsId)
{
    StartGroup(ui, L"Team", {0}); // id 2
    AnotherProgramSaves(session, BookText().Entry(1, L"Bob", L"222").Group(2, L"Team", {1}));
    ui.Press(IDOK);
    ui.AnswerBox(IDOK);
    ui.Press(IDCANCEL);
    EXPECT_EQ(NamesIn(ui, IDC_BOOK_LIST), (Names{L"Bob", L"Team"}));
}

// ---- what is only open --------------------------------------------------------------------------------------------

TEST(PhoneBookChanged, OpenDetailsStayThoseOfAnEntryThatIsGone)
{
    PhoneBookSession session(Acquaintances());
    UiDriver& ui = session.OpenPicker();
    ui.SelectRows(IDC_PICK_LIST, {1}); // Ann
    ui.Press(IDC_PICK_DETAILS);
    AnotherProgramSaves(session, BookText().Entry(1, L"Bob", L"222").Entry(7, L"New", L"7"));
    EXPECT_EQ(ui.Text(IDC_DETAILS_NAME), L"Ann");
    EXPECT_EQ(ui.Text(IDC_DETAILS_FAX_NUMBER), L"111");
    ui.Press(IDOK);
    EXPECT_EQ(FollowedNames(ui, IDC_PICK_LIST, {L"Bob", L"New"}), (Names{L"Bob", L"New"}));
}

// The rows that the question was about are gone.
TEST(PhoneBookChanged, DeletionThatAReloadOvertookDeletesNothing)
{
    PhoneBookSession session(BookText().Entry(1, L"Ann", L"111"));
    UiDriver& ui = session.OpenEditor();
    ui.SelectRows(IDC_BOOK_LIST, {0});
    ui.Press(IDC_BOOK_DELETE);
    ui.WaitForBox();
    AnotherProgramSaves(session, BookText().Entry(1, L"Ann", L"111").Entry(7, L"New", L"7"));
    ui.AnswerBox(IDOK);
    EXPECT_EQ(FollowedNames(ui, IDC_BOOK_LIST, {L"Ann", L"New"}), (Names{L"Ann", L"New"}));
    EXPECT_TRUE(ui.SelectedRows(IDC_BOOK_LIST).empty());
    EXPECT_FALSE(ui.IsEnabled(IDC_BOOK_DELETE));
}

} // namespace
} // namespace qx::test
