// Open lists follow every save of the phone book, in this process and in others.
#include "host/utf8.h"
#include "phonebook/ui/phone_book_changed.h"
#include "res/add_recipients_ids.h"
#include "res/edit_phone_book_ids.h"
#include "res/entry_ids.h"
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
        wchar_t program[MAX_PATH] = L"";
        GetModuleFileNameW(nullptr, program, MAX_PATH);
        const std::filesystem::path neighbour =
            std::filesystem::path(program).parent_path() / L"phone_book_neighbour.exe";
        std::wstring command = L"\"" + neighbour.wstring() + L"\" \"" + printer + L"\"";
        // Ours stay ours: the neighbour's input has to end when we close it.
        SetHandleInformation(input_.write, HANDLE_FLAG_INHERIT, 0);
        SetHandleInformation(output_.read, HANDLE_FLAG_INHERIT, 0);
        STARTUPINFOW start{};
        start.cb = sizeof start;
        start.dwFlags = STARTF_USESTDHANDLES;
        start.hStdInput = input_.read;
        start.hStdOutput = output_.write;
        start.hStdError = GetStdHandle(STD_ERROR_HANDLE);
        if (!CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start, &process_))
            throw std::runtime_error("cannot start the neighbour");
        input_.Close(&Pipe::read);
        output_.Close(&Pipe::write);
        if (const std::string answer = ReadLine(); answer != "ready")
            throw std::runtime_error("the neighbour says: " + answer);
    }
    ~Neighbour()
    {
        input_.Close(&Pipe::write); // its end of input
        if (WaitForSingleObject(process_.hProcess, 20000) != WAIT_OBJECT_0)
            TerminateProcess(process_.hProcess, 1);
        CloseHandle(process_.hThread);
        CloseHandle(process_.hProcess);
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
    PROCESS_INFORMATION process_{};
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

TEST(PhoneBookChanged, OpenListsOfTwoProcessesFollowEachOthersSaves)
{
    PhoneBookSession session(Acquaintances());
    UiDriver& ui = session.OpenPicker();
    Neighbour neighbour(session.Printer());
    EXPECT_EQ(neighbour.Tell("names"), "Bob|Ann"); // loaded, not sorted

    ui.Press(IDC_PICK_EDIT_BOOK);
    ui.Press(IDC_BOOK_ADD_ENTRY);
    ui.Type(IDC_ENTRY_NAME, L"Mia");
    ui.Type(IDC_ENTRY_FAX_NUMBER, L"5");
    ui.Press(IDOK);
    EXPECT_EQ(neighbour.Tell("names"), "Bob|Ann"); // not before it is saved
    ui.Press(IDOK);
    EXPECT_EQ(Eventually([&] { return neighbour.Tell("names"); }, std::string("Ann|Bob|Mia")), "Ann|Bob|Mia");

    ui.SelectRows(IDC_PICK_LIST, {0});
    ui.Press(IDC_PICK_TO);
    EXPECT_EQ(neighbour.Tell("add Zoe"), "Ann|Bob|Mia|Zoe");
    const Names all{L"Ann", L"Bob", L"Mia", L"Zoe"};
    EXPECT_EQ(Eventually([&] { return NamesIn(ui, IDC_PICK_LIST); }, all), all);
    EXPECT_EQ(NamesIn(ui, IDC_PICK_CHOSEN), Names{L"Ann"}); // what was chosen is not touched
    EXPECT_FALSE(ui.IsEnabled(IDC_PICK_TO));
}

TEST(PhoneBookChanged, EditorAndPickerBelowItReloadWhatAnotherProgramSaved)
{
    PhoneBookSession session(Acquaintances());
    UiDriver& ui = session.OpenPicker();
    ui.Press(IDC_PICK_EDIT_BOOK);
    session.WritePhoneBook(BookText().Entry(7, L"New", L"7").Text());
    BroadcastPhoneBookChanged();
    EXPECT_EQ(Eventually([&] { return NamesIn(ui, IDC_BOOK_LIST); }, Names{L"New"}), Names{L"New"});
    ui.Press(IDCANCEL);
    EXPECT_EQ(NamesIn(ui, IDC_PICK_LIST), Names{L"New"});
}

// The edit began before the reload and ends after it: it goes to the entry that has the id now.
TEST(PhoneBookChanged, EditThatAReloadOvertookReplacesTheEntryOfThatId)
{
    PhoneBookSession session(Acquaintances());
    UiDriver& ui = session.OpenEditor();
    ui.SelectRows(IDC_BOOK_LIST, {1}); // Ann
    ui.Press(IDC_BOOK_EDIT);
    session.WritePhoneBook(BookText().Entry(2, L"Ann", L"111").Entry(3, L"Amy", L"3").Entry(1, L"Bob", L"222").Text());
    BroadcastPhoneBookChanged();
    ui.Type(IDC_ENTRY_NAME, L"Zoe");
    ui.Press(IDOK);
    EXPECT_EQ(NamesIn(ui, IDC_BOOK_LIST), (Names{L"Amy", L"Bob", L"Zoe"}));
}

// What has the id now is not what the user was editing: nobody deleted it, so it stays.
TEST(PhoneBookChanged, EditOfAnEntryWhoseIdAReloadGaveToAnotherOneReplacesNothing)
{
    PhoneBookSession session(BookText().Entry(1, L"Bob", L"222"));
    UiDriver& ui = session.OpenEditor();
    ui.Press(IDC_BOOK_ADD_ENTRY);
    ui.Type(IDC_ENTRY_NAME, L"Zoe");
    ui.Type(IDC_ENTRY_FAX_NUMBER, L"5");
    ui.Press(IDOK); // id 2, not saved yet
    ui.SelectRows(IDC_BOOK_LIST, {1});
    ui.Press(IDC_BOOK_EDIT);
    session.WritePhoneBook(BookText().Entry(1, L"Bob", L"222").Entry(2, L"Amy", L"3").Text());
    BroadcastPhoneBookChanged();
    ui.Type(IDC_ENTRY_NAME, L"Zora");
    ui.Press(IDOK);
    ASSERT_EQ(NamesIn(ui, IDC_BOOK_LIST), (Names{L"Amy", L"Bob", L"Zora"}));
    ui.SelectRows(IDC_BOOK_LIST, {2});
    ui.Press(IDC_BOOK_EDIT);
    EXPECT_EQ(ui.Text(IDC_ENTRY_NAME), L"Zora"); // it has an id of its own
}

// Two programs that add at the same time draw the same id.
TEST(PhoneBookChanged, NewEntryNeverSharesItsIdWithOneThatAReloadBrought)
{
    PhoneBookSession session(BookText().Entry(1, L"Bob", L"222"));
    UiDriver& ui = session.OpenEditor();
    ui.Press(IDC_BOOK_ADD_ENTRY);
    session.WritePhoneBook(BookText().Entry(1, L"Bob", L"222").Entry(2, L"Amy", L"3").Text());
    BroadcastPhoneBookChanged();
    ui.Type(IDC_ENTRY_NAME, L"Zoe");
    ui.Type(IDC_ENTRY_FAX_NUMBER, L"5");
    ui.Press(IDOK);
    ASSERT_EQ(NamesIn(ui, IDC_BOOK_LIST), (Names{L"Amy", L"Bob", L"Zoe"}));
    ui.SelectRows(IDC_BOOK_LIST, {2});
    ui.Press(IDC_BOOK_EDIT);
    EXPECT_EQ(ui.Text(IDC_ENTRY_NAME), L"Zoe");
}

} // namespace
} // namespace qx::test
