// The phone book dialogs on long phone books, against what the list view itself needs for the same rows.
#include "base/activation_context.h"
#include "base/no_copy.h"
#include "dialog/dialog.h"
#include "phonebook/ui/add_recipients_dialog.h"
#include "phonebook/ui/edit_phone_book_dialog.h"
#include "phonebook/ui/phone_book_list.h"
#include "phonebook/ui/recipient_picks.h"
#include "record/fax_job_data.h"
#include "support/measure.h"
#include "support/phone_book.h"

#include <algorithm>
#include <array>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace qx::bench {
namespace {

using test::TestBook;

constexpr int kRounds = 9;
constexpr std::array<DWORD, 3> kSizes{2500, 5000, 10000};

std::wstring NameOf(DWORD id)
{
    wchar_t name[32];
    wsprintfW(name, L"Person %05lu", id);
    return name;
}

// People named by number; every hundredth item is a group.
std::unique_ptr<TestBook> LongBook(DWORD count)
{
    auto book = std::make_unique<TestBook>();
    for (DWORD id = 0; id < count; ++id) {
        if (id % 100 == 99)
            book->AddGroup(NameOf(id).c_str(), {id - 1}, id);
        else
            book->AddEntry(NameOf(id).c_str(), L"(030)1234-567", L"Company", id);
    }
    return book;
}

// ---- the list view alone -------------------------------------------------------------------------------------------

class BareList : NoCopy {
public:
    BareList()
    {
        ShowWindow(parent_, SW_SHOWNA);
        LVCOLUMNW column{};
        column.mask = LVCF_WIDTH | LVCF_SUBITEM;
        column.cx = 108;
        for (; column.iSubItem < 3; ++column.iSubItem)
            Send(LVM_INSERTCOLUMNW, static_cast<WPARAM>(column.iSubItem), &column);
    }
    ~BareList() { DestroyWindow(parent_); }

    HWND Window() const { return list_; }
    HWND Parent() const { return parent_; }

    void Fill(const PhoneBook& book) const
    {
        Send(WM_SETREDRAW, FALSE);
        Send(LVM_DELETEALLITEMS);
        Send(LVM_SETITEMCOUNT, book.GetCount());
        LVITEMW item{};
        for (const PhoneBookItem* const shown : book.Items()) {
            item.mask = LVIF_TEXT | LVIF_PARAM;
            item.iSubItem = 0;
            item.pszText = const_cast<wchar_t*>(shown->GetName());
            item.lParam = static_cast<LPARAM>(shown->GetId());
            Send(LVM_INSERTITEMW, 0, &item);
            if (const PhoneBookEntry* const entry = AsEntry(shown)) {
                for (const wchar_t* const text : {entry->FaxNumber(), entry->Company()}) {
                    ++item.iSubItem;
                    item.pszText = const_cast<wchar_t*>(text);
                    Send(LVM_SETITEMTEXTW, static_cast<WPARAM>(item.iItem), &item);
                }
            }
            ++item.iItem;
        }
        Send(WM_SETREDRAW, TRUE);
        InvalidateRect(list_, nullptr, TRUE);
        UpdateWindow(list_);
    }

    void SelectEvery(int step) const
    {
        LVITEMW item{};
        item.stateMask = item.state = LVIS_SELECTED;
        const auto rows = static_cast<int>(Send(LVM_GETITEMCOUNT));
        for (int row = 0; row < rows; row += step)
            Send(LVM_SETITEMSTATE, static_cast<WPARAM>(row), &item);
    }

    std::vector<LPARAM> SelectedData() const
    {
        std::vector<LPARAM> data;
        LVITEMW item{};
        item.mask = LVIF_PARAM;
        item.iItem = -1;
        while ((item.iItem = Next(item.iItem)) >= 0) {
            Send(LVM_GETITEMW, 0, &item);
            data.push_back(item.lParam);
        }
        return data;
    }

private:
    LRESULT Send(UINT message, WPARAM w = 0, void* l = nullptr) const
    {
        return SendMessageW(list_, message, w, reinterpret_cast<LPARAM>(l));
    }
    int Next(int row) const
    {
        return static_cast<int>(SendMessageW(list_, LVM_GETNEXTITEM, static_cast<WPARAM>(row), LVNI_SELECTED));
    }

    HWND parent_ =
        CreateWindowExW(0, L"#32770", L"", WS_POPUP, 0, 0, 600, 400, nullptr, nullptr, ModuleInstance(), nullptr);
    HWND list_ = CreateWindowExW(0, WC_LISTVIEWW, L"", WS_CHILD | WS_VISIBLE | LVS_REPORT | LVS_SHOWSELALWAYS, 0, 0,
                                 400, 300, parent_, nullptr, ModuleInstance(), nullptr);
};

// As the module sees a list whose rows are those of the book.
PhoneBookList Filled(const BareList& list, const PhoneBook& book)
{
    return {.window = list.Window(), .names = {}, .loads = book.Loads()};
}

// ---- a dialog, cancelled as soon as it waits for the user -----------------------------------------------------------

std::size_t g_bytesWhenIdle = 0; // in the heap, while the dialog is open

LRESULT CALLBACK OwnerProcedure(HWND window, UINT message, WPARAM w, LPARAM l)
{
    if (message == WM_ENTERIDLE && w == MSGF_DIALOGBOX) {
        if (g_bytesWhenIdle == 0)
            g_bytesWhenIdle = HeapBytes();
        PostMessageW(reinterpret_cast<HWND>(l), WM_COMMAND, IDCANCEL, 0);
        return 0;
    }
    return DefWindowProcW(window, message, w, l);
}

HWND MakeOwner()
{
    WNDCLASSW type{};
    type.lpfnWndProc = OwnerProcedure;
    type.hInstance = ModuleInstance();
    type.lpszClassName = L"BenchOwner";
    RegisterClassW(&type);
    return CreateWindowExW(0, type.lpszClassName, L"", WS_POPUP | WS_VISIBLE, 0, 0, 50, 50, nullptr, nullptr,
                           ModuleInstance(), nullptr);
}

void OpenEditor(HWND owner, TestBook& book)
{
    EditPhoneBookContext editor(TextOwner(), *book);
    ShowModal<kEditPhoneBookDialog>(owner, editor);
}

void OpenPicker(HWND owner, TestBook& book)
{
    OwnedFaxJobData job;
    AddRecipientsContext picker{{TextOwner(), *book}, job.Get(), nullptr};
    ShowModal<kAddRecipientsDialog>(owner, picker);
}

// ---- what is compared ----------------------------------------------------------------------------------------------

std::string Of(DWORD items, const char* what)
{
    return std::to_string(items) + " items: " + what;
}

void CompareOpening(Benchmark& benchmark, const char* dialog, void (*open)(HWND, TestBook&), HWND owner, DWORD items)
{
    const auto book = LongBook(items);
    TestBook nobody;
    const auto heldPerItem = [&] {
        const std::size_t before = HeapBytes();
        g_bytesWhenIdle = 0;
        open(owner, *book);
        return static_cast<double>(g_bytesWhenIdle - before) / items;
    };
    g_bytesWhenIdle = 1; // nobody asks
    benchmark.Compare(
        {.name = Of(items, "open the ") + dialog, .run = [&] { open(owner, *book); }, .bytesPerEntry = heldPerItem},
        {"the bare list and one without rows",
         [&] {
             BareList().Fill(**book);
             open(owner, nobody);
         }},
        1.0);
}

void CompareCollecting(Benchmark& benchmark, DWORD items)
{
    const auto book = LongBook(items);
    const BareList list;
    list.Fill(**book);
    list.SelectEvery(1);
    std::vector<PhoneBookItem*> collected;
    std::vector<LPARAM> read;
    const Work unavoidable{"reading the item data", [&] { read = list.SelectedData(); }};
    benchmark.Compare({Of(items, "CollectSelectedItems of all rows"),
                       [&] { collected = CollectSelectedItems(Filled(list, **book), **book); }},
                      unavoidable, 1.5);
    if (collected.size() != items || read.size() != items)
        throw std::logic_error("not all rows were collected");
    std::size_t picked = 0;
    benchmark.Compare({Of(items, "\"To ->\" of all rows, up to the limit"),
                       [&] {
                           const auto all = CollectSelectedItems(Filled(list, **book), **book);
                           picked = PickRecipients(all, 0, **book).entries.size();
                       }},
                      unavoidable, 1.5);
    if (picked != 100)
        throw std::logic_error("the limit was not met");
}

// Half of the rows, as the editor does it; the list has half the rows to fill afterwards.
void CompareDeleting(Benchmark& benchmark, DWORD items)
{
    const BareList bare;
    PhoneBookList list{.window = bare.Window(), .names = {}};
    std::unique_ptr<TestBook> book;
    const auto prepare = [&] {
        book = LongBook(items);
        FillPhoneBookList(list, **book, ListedItems::All);
        bare.SelectEvery(2);
    };
    const auto work = [&](bool deletes) {
        const std::vector<PhoneBookItem*> selected = CollectSelectedItems(Filled(bare, **book), **book);
        std::vector<DWORD> ids(selected.size());
        std::ranges::transform(selected, ids.begin(), &PhoneBookItem::GetId);
        if (deletes)
            (*book)->DeleteIds(ids);
        FillPhoneBookList(list, **book, ListedItems::All);
    };
    benchmark.Compare({Of(items, "delete every second item"), [&] { work(true); }, prepare},
                      {"collecting them and refilling the list", [&] { work(false); }, prepare}, 1.15);
}

void WaitOneFrame()
{
    LARGE_INTEGER frequency, start, now;
    QueryPerformanceFrequency(&frequency);
    QueryPerformanceCounter(&start);
    do
        QueryPerformanceCounter(&now);
    while ((now.QuadPart - start.QuadPart) * 60 < frequency.QuadPart);
}

void CompareKeystrokes(Benchmark& benchmark, DWORD items)
{
    const auto book = LongBook(items);
    const BareList bare;
    PhoneBookList list{.window = bare.Window(), .names = {}};
    FillPhoneBookList(list, **book, ListedItems::All);
    const HWND edit =
        CreateWindowExW(0, L"EDIT", L"", WS_CHILD, 0, 0, 50, 20, bare.Parent(), nullptr, ModuleInstance(), nullptr);
    const auto compare = [&](const char* what, const std::wstring& typed) {
        const auto prepare = [&] {
            ScrollItemToTop(bare.Window(), 0);
            UpdateWindow(bare.Window());
            SetWindowTextW(edit, typed.c_str());
        };
        const auto keystroke = [&] {
            FollowTypedName(list, edit);
            UpdateWindow(bare.Window());
        };
        benchmark.Compare({Of(items, what), keystroke, prepare}, {"a frame at 60 Hz", WaitOneFrame}, 1.0);
    };
    compare("keystroke without a match", L"Person X");
    compare("keystroke that finds the last row", NameOf(items - 1));
}

int Run(int count, char** arguments)
{
    const ActivationScope context;
    const INITCOMMONCONTROLSEX controls{sizeof controls, ICC_LISTVIEW_CLASSES};
    InitCommonControlsEx(&controls);
    const HWND owner = MakeOwner();
    Benchmark benchmark(kRounds);
    for (const DWORD items : kSizes)
        CompareOpening(benchmark, "editor", OpenEditor, owner, items);
    for (const DWORD items : kSizes)
        CompareOpening(benchmark, "picker", OpenPicker, owner, items);
    for (const DWORD items : kSizes)
        CompareCollecting(benchmark, items);
    for (const DWORD items : kSizes)
        CompareDeleting(benchmark, items);
    for (const DWORD items : kSizes)
        CompareKeystrokes(benchmark, items);
    return benchmark.Report(count, arguments);
}

} // namespace
} // namespace qx::bench

int main(int count, char** arguments)
{
    return qx::bench::Run(count, arguments);
}
