// What the user waits for: from the driver's call until the first page is painted, and from Send until the call
// returns. Beside it a bare property sheet with the same pages and captions, and the load of the phone book. And what
// the sheet holds meanwhile, however often other programs change the phone book.
#include "base/activation_context.h"
#include "base/no_copy.h"
#include "host/provision.h"
#include "pages/fax_job_page.h"
#include "pages/setup_page.h"
#include "phonebook/book/phone_book.h"
#include "phonebook/file/phone_book_file.h"
#include "phonebook/ui/phone_book_changed.h"
#include "support/measure.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <utility>

namespace {

using namespace qx;
using bench::HeapBytes;
using bench::kAnything;
using Clock = std::chrono::steady_clock;

constexpr int kRounds = 15;
constexpr int kReloads = 100;
constexpr int kTabs = 0x3020; // of every property sheet

void Need(bool holds)
{
    if (!holds)
        throw std::runtime_error("the benchmark does not do what it measures");
}

double MillisecondsSince(Clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

// ---- watching a sheet -----------------------------------------------------------------------------------------------

struct Sitting {
    double untilPainted = 0;
    double sending = 0;
    std::size_t bytes = 0; // that the sheet holds once it is painted
};

// Hears of the first sheet that becomes active, by a message that its loop dispatches: then it is laid out and shown.
class Watcher : NoCopy {
public:
    Watcher() : window_(CreateWindowExW(0, L"Static", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr))
    {
        SetWindowLongPtrW(window_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(Answer));
        watcher_ = this;
        hook_ = SetWindowsHookExW(WH_CBT, OnActivation, nullptr, GetCurrentThreadId());
    }
    ~Watcher()
    {
        UnhookWindowsHookEx(hook_);
        DestroyWindow(window_);
        watcher_ = nullptr;
    }

    // Before Send is pressed, meanwhile(sheet) is called.
    template <class Show> Sitting Watch(Show show, std::function<void(HWND)> meanwhile = {})
    {
        told_ = false;
        sitting_ = {};
        meanwhile_ = std::move(meanwhile);
        before_ = HeapBytes();
        start_ = Clock::now();
        show();
        sitting_.sending = MillisecondsSince(start_);
        Need(sitting_.untilPainted > 0);
        return sitting_;
    }

private:
    static LRESULT CALLBACK OnActivation(int code, WPARAM w, LPARAM l)
    {
        const auto window = reinterpret_cast<HWND>(w);
        if (code == HCBT_ACTIVATE && !watcher_->told_ && GetDlgItem(window, kTabs) != nullptr) {
            watcher_->told_ = true;
            PostMessageW(watcher_->window_, WM_APP, w, 0);
        }
        return CallNextHookEx(nullptr, code, w, l);
    }
    static LRESULT CALLBACK Answer(HWND window, UINT message, WPARAM w, LPARAM l)
    {
        if (message == WM_APP)
            watcher_->PaintAndSend(reinterpret_cast<HWND>(w));
        return DefWindowProcW(window, message, w, l);
    }
    void PaintAndSend(HWND sheet)
    {
        RedrawWindow(sheet, nullptr, nullptr, RDW_ALLCHILDREN | RDW_UPDATENOW);
        GdiFlush();
        sitting_.untilPainted = MillisecondsSince(start_);
        sitting_.bytes = HeapBytes() - before_;
        if (meanwhile_)
            meanwhile_(sheet);
        const auto page = reinterpret_cast<HWND>(SendMessageW(sheet, PSM_GETCURRENTPAGEHWND, 0, 0));
        SetDlgItemTextW(page, IDC_FAX_NUMBER, L"5550100");
        start_ = Clock::now();
        PostMessageW(sheet, PSM_PRESSBUTTON, PSBTN_OK, 0);
    }

    inline static Watcher* watcher_ = nullptr;

    HWND window_;
    HHOOK hook_ = nullptr;
    bool told_ = false;
    std::function<void(HWND)> meanwhile_;
    std::size_t before_ = 0;
    Clock::time_point start_;
    Sitting sitting_;
};

// ---- the two sheets -------------------------------------------------------------------------------------------------

// The same templates, captions and limits, and nothing behind them.
template <const auto& kPage> INT_PTR CALLBACK BarePage(HWND page, UINT message, WPARAM, LPARAM l)
{
    if (message == WM_INITDIALOG) {
        const auto* const texts = reinterpret_cast<const TextOwner*>(reinterpret_cast<PROPSHEETPAGEW*>(l)->lParam);
        SetUpControls(*texts, page, kPage.controls);
    }
    return message == WM_INITDIALOG;
}

template <const auto& kPage> PROPSHEETPAGEW Bare(const TextOwner& texts)
{
    PROPSHEETPAGEW page{};
    page.dwSize = sizeof page;
    page.dwFlags = PSP_USETITLE | PSP_HASHELP | PSP_PREMATURE;
    page.hInstance = ModuleInstance();
    page.pszTemplate = MAKEINTRESOURCEW(kPage.ids.Id());
    page.pszTitle = L"Page";
    page.pfnDlgProc = BarePage<kPage>;
    page.lParam = reinterpret_cast<LPARAM>(&texts);
    return page;
}

void ShowBareSheet(const TextOwner& texts)
{
    PROPSHEETPAGEW pages[] = {Bare<kFaxJobPage>(texts), Bare<kSetupPage>(texts)};
    PROPSHEETHEADERW header{};
    header.dwSize = sizeof header;
    header.dwFlags = PSH_PROPSHEETPAGE | PSH_NOAPPLYNOW | PSH_HASHELP | PSH_RTLREADING | PSH_NOCONTEXTHELP;
    header.hInstance = ModuleInstance();
    header.pszCaption = L"QX MFP Send Fax";
    header.nPages = 2;
    header.ppsp = pages;
    const ActivationScope context;
    PropertySheetW(&header);
}

class Driver : NoCopy {
public:
    explicit Driver(bool textLibrary)
    {
        wchar_t program[MAX_PATH] = L"";
        GetModuleFileNameW(nullptr, program, MAX_PATH);
        setup_.printer = L"QX Session Bench";
        setup_.guid = L"{session-bench}";
        setup_.moduleFolder = std::filesystem::path(program).parent_path().parent_path();
        setup_.textLibrary = textLibrary;
        host::Provision(setup_);
        // Else it is the user's first fax, which begins on the other page.
        host::SetUserValue(host::UserKey(*setup_.guid) + L"\\QX-FAX\\Default", {L"ApplyDefaults", 1u});
        PRINTER_DEFAULTSW access{nullptr, nullptr, PRINTER_ALL_ACCESS};
        OpenPrinterW(setup_.printer.data(), &printer_, &access);
        module_.Reset(LoadLibraryW((host::DriverFolder() / L"qxfaxui.dll").c_str()));
        library_.Reset(LoadLibraryExW((host::DriverFolder() / L"QXTEXT64.DLL").c_str(), nullptr,
                                      LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE));
        Need(printer_ != nullptr && module_ && static_cast<bool>(library_) == textLibrary);
        texts_.hStringDll = library_.Get();
        display_ = reinterpret_cast<decltype(display_)>(
            reinterpret_cast<void*>(GetProcAddress(module_.Get(), "DisplayFaxUI")));
    }
    ~Driver()
    {
        WritePhoneBook(0);
        ClosePrinter(printer_);
        host::RemovePrinter(setup_.printer);
        host::RemoveUserSettings(*setup_.guid);
    }

    // Of that many entries; 0: there is none.
    void WritePhoneBook(DWORD entries) const
    {
        WithBook([entries](PhoneBook& book) {
            DeleteFileW(book.FilePath().c_str());
            for (DWORD id = 1; id <= entries; ++id) {
                const std::wstring number = std::to_wstring(id);
                PhoneBookEntry* const entry = book.Store().NewEntry();
                entry->SetId(id);
                entry->SetTexts({L"Person " + number, L"555-" + number, L"Company " + std::to_wstring(id % 97)});
                book.Add(entry);
            }
            if (entries != 0)
                book.Save(entries);
        });
    }
    double LoadPhoneBook() const
    {
        double milliseconds = 0;
        WithBook([&](PhoneBook& book) {
            const auto start = Clock::now();
            book.Load();
            milliseconds = MillisecondsSince(start);
        });
        return milliseconds;
    }

    Sitting Send(std::function<void(HWND)> meanwhile = {})
    {
        FaxJobData job;
        QxFaxInitJob(&job);
        const Sitting sitting = watcher_.Watch([&] { display_(printer_, &job); }, std::move(meanwhile));
        Need(job.Cancelled == 0 && job.RecipientCount == 1);
        QxFaxReleaseJob(&job);
        return sitting;
    }
    Sitting SendBare()
    {
        return watcher_.Watch([this] { ShowBareSheet(texts_); });
    }

private:
    template <class Use> void WithBook(Use use) const
    {
        ItemStore store;
        PhoneBook* const book = new PhoneBook(store, PhoneBookFiles()); // frees itself in Destroy
        book->SetPrinter(printer_);
        book->BuildFilePath();
        use(*book);
        book->Destroy();
    }

    host::PrinterSetup setup_;
    HANDLE printer_ = nullptr;
    UniqueModule module_;
    UniqueModule library_;
    decltype(&DisplayFaxUI) display_ = nullptr;
    TextOwner texts_;
    Watcher watcher_;
};

// ---- what is compared -----------------------------------------------------------------------------------------------

void CompareSessions(bench::Benchmark& benchmark, Driver& driver, const std::string& withTexts)
{
    std::size_t bytesWithoutBook = 0;
    for (const DWORD entries : {0u, 1000u, 10000u}) {
        driver.WritePhoneBook(entries);
        const std::string with = ", " + std::to_string(entries) + " entries" + withTexts;
        Sitting last;
        bench::Work painted{.name = "call to first page painted" + with, .time = [&] {
                                last = driver.Send();
                                return last.untilPainted;
                            }};
        if (entries != 0)
            painted.bytesPerEntry = [&] { return static_cast<double>(last.bytes - bytesWithoutBook) / entries; };
        benchmark.Compare(painted,
                          {.name = "bare sheet and load of the book",
                           .time = [&] { return driver.SendBare().untilPainted + driver.LoadPhoneBook(); }},
                          1.25);
        if (entries == 0)
            bytesWithoutBook = last.bytes;
        // Without a limit: on some systems the other page is only made now, and the bare sheet stores nothing.
        benchmark.Compare({.name = "Send to return" + with, .time = [&] { return driver.Send().sending; }},
                          {.name = "bare sheet", .time = [&] { return driver.SendBare().sending; }}, kAnything);
    }
}

// Another program saves the book again and again, and tells.
void CompareReloads(bench::Benchmark& benchmark, Driver& driver)
{
    constexpr DWORD kEntries = 1000;
    std::size_t afterFirst = 0;
    std::size_t afterLast = 0;
    driver.WritePhoneBook(kEntries);
    driver.Send([&](HWND sheet) {
        const auto reload = [&] {
            driver.WritePhoneBook(kEntries);
            SendMessageW(sheet, PhoneBookChangedMessage(), 0, 0);
            return HeapBytes();
        };
        reload();
        afterFirst = reload();
        for (int i = 0; i < kReloads; ++i)
            afterLast = reload();
    });
    benchmark.CompareBytes("the heap after " + std::to_string(kReloads) + " reloads of 1000 entries, the sheet open",
                           static_cast<double>(afterLast), "before", static_cast<double>(afterFirst), 1.0);
}

} // namespace

int main(int count, char** arguments)
{
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    bench::Benchmark benchmark(kRounds);
    {
        Driver driver(true);
        CompareSessions(benchmark, driver, "");
        CompareReloads(benchmark, driver);
    }
    Driver withoutTexts(false);
    CompareSessions(benchmark, withoutTexts, ", no text library");
    return benchmark.Report(count, arguments);
}
