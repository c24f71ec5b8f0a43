#include "host/ui_driver.h"

#include "host/picture.h"
#include "host/utf8.h"
#include "host/window_query.h"

#include <algorithm>
#include <atomic>
#include <commctrl.h>
#include <memory>
#include <prsht.h>

namespace qx::host {

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kPollInterval = std::chrono::milliseconds(5);
// How often a marker goes round while other messages still wait behind it.
constexpr LPARAM kMarkerRounds = 100;

// ---- the UI thread's side ------------------------------------------------------------------------------------------

// What the hook tells the driving thread. Process-wide, so that a marker that is fetched too late finds it alive.
struct QueueWatch {
    HANDLE changed = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    std::atomic<WPARAM> marker{0};
    std::atomic<unsigned> keysReleased{0};
};

QueueWatch& Watch()
{
    static QueueWatch watch;
    return watch;
}

UINT MarkerMessage()
{
    static const UINT message = RegisterWindowMessageW(L"qx_ui_driver_marker");
    return message;
}

bool PostedMessagesWait()
{
    return (HIWORD(GetQueueStatus(QS_POSTMESSAGE)) & QS_POSTMESSAGE) != 0;
}

void MarkerFetched(WPARAM number, LPARAM rounds)
{
    if (rounds > 0 && PostedMessagesWait() &&
        PostThreadMessageW(GetCurrentThreadId(), MarkerMessage(), number, rounds - 1))
        return;
    Watch().marker = number;
    SetEvent(Watch().changed);
}

LRESULT CALLBACK WatchQueue(int code, WPARAM removed, LPARAM l)
{
    auto& message = *reinterpret_cast<MSG*>(l);
    if (code == HC_ACTION && removed == PM_REMOVE) {
        if (message.message == MarkerMessage()) {
            MarkerFetched(message.wParam, message.lParam);
            message.message = WM_NULL;
        } else if (message.message == WM_KEYUP || message.message == WM_SYSKEYUP) {
            ++Watch().keysReleased;
            SetEvent(Watch().changed);
        }
    }
    return CallNextHookEx(nullptr, code, removed, l);
}

// A window of the UI thread without appearance; it runs the functions that are posted to it.
constexpr wchar_t kExecutorClass[] = L"qx_ui_driver";
constexpr UINT kRun = WM_APP;

LRESULT CALLBACK ExecutorProcedure(HWND window, UINT message, WPARAM w, LPARAM l)
{
    if (message != kRun)
        return DefWindowProcW(window, message, w, l);
    const std::unique_ptr<std::function<void()>> action(reinterpret_cast<std::function<void()>*>(l));
    (*action)();
    return 0;
}

HWND FindExecutor(DWORD thread)
{
    HWND executor = nullptr;
    do
        executor = FindWindowExW(HWND_MESSAGE, executor, kExecutorClass, nullptr);
    while (executor != nullptr && GetWindowThreadProcessId(executor, nullptr) != thread);
    return executor;
}

// Hooks run on the hooked thread: the way to get a window created there.
LRESULT CALLBACK CreateExecutor(int code, WPARAM removed, LPARAM l)
{
    if (code == HC_ACTION && FindExecutor(GetCurrentThreadId()) == nullptr)
        CreateWindowExW(0, kExecutorClass, nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, GetModuleHandleW(nullptr),
                        nullptr);
    return CallNextHookEx(nullptr, code, removed, l);
}

void RegisterExecutorClass()
{
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = ExecutorProcedure;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.lpszClassName = kExecutorClass;
    RegisterClassW(&windowClass); // fails harmlessly from the second time on
}

// ---- windows -------------------------------------------------------------------------------------------------------

bool IsDialog(HWND window)
{
    return IsOfClass(window, L"#32770");
}

bool IsSheet(HWND dialog)
{
    return GetDlgItem(dialog, kSheetTabs) != nullptr;
}

std::vector<HWND> DialogsOf(DWORD thread)
{
    std::vector<HWND> dialogs = WindowsOf(thread);
    std::erase_if(dialogs, [](HWND window) { return !IsDialog(window) || !IsWindowVisible(window); });
    return dialogs;
}

bool IsButton(HWND window)
{
    return IsOfClass(window, L"Button");
}
bool IsStatic(HWND window)
{
    return IsOfClass(window, L"Static");
}
bool IsIcon(HWND window)
{
    return IsStatic(window) && (GetWindowLongW(window, GWL_STYLE) & SS_TYPEMASK) == SS_ICON;
}

// A message box has nothing but an icon, a text and the buttons of the standard answers.
bool IsBox(HWND dialog)
{
    if (dialog == nullptr || !IsDialog(dialog))
        return false;
    const std::vector<HWND> children = ChildrenOf(dialog);
    return !children.empty() && std::all_of(children.begin(), children.end(), [](HWND child) {
        const int id = GetDlgCtrlID(child);
        if (IsButton(child))
            return id >= IDOK && id <= IDCONTINUE;
        constexpr int kTextIds[] = {0xFFFF, -1, 100}, kIconIds[] = {20, 1088};
        return IsStatic(child) && (std::ranges::count(kTextIds, id) != 0 || std::ranges::count(kIconIds, id) != 0);
    });
}

UINT IconOf(HWND iconControl)
{
    const auto icon = reinterpret_cast<HICON>(SendMessageW(iconControl, STM_GETICON, 0, 0));
    static const struct {
        LPCWSTR resource;
        UINT icon;
    } kIcons[] = {{IDI_HAND, MB_ICONERROR},
                  {IDI_EXCLAMATION, MB_ICONWARNING},
                  {IDI_QUESTION, MB_ICONQUESTION},
                  {IDI_ASTERISK, MB_ICONINFORMATION}};
    for (const auto& known : kIcons) {
        if (icon == LoadIconW(nullptr, known.resource))
            return known.icon;
    }
    return 0;
}

LPARAM PointIn(const RECT& rectangle)
{
    return MAKELPARAM((rectangle.left + rectangle.right) / 2, (rectangle.top + rectangle.bottom) / 2);
}

INPUT KeyInput(WORD key, DWORD flags)
{
    INPUT input{};
    input.type = INPUT_KEYBOARD;
    input.ki.wVk = key;
    input.ki.wScan = static_cast<WORD>(MapVirtualKeyW(key, MAPVK_VK_TO_VSC));
    input.ki.dwFlags = flags;
    return input;
}

} // namespace

UiDriver::UiDriver(DWORD uiThread, HANDLE finished)
    : uiThread_(uiThread), finished_(finished), hook_(SetWindowsHookExW(WH_GETMESSAGE, WatchQueue, nullptr, uiThread))
{
    if (hook_ == nullptr)
        throw UiFailure(SystemError("cannot watch the UI thread", GetLastError()));
    RegisterExecutorClass();
}

UiDriver::~UiDriver()
{
    UnhookWindowsHookEx(hook_);
    PostMessageW(FindExecutor(uiThread_), WM_CLOSE, 0, 0);
}

// ---- what is there -------------------------------------------------------------------------------------------------

HWND UiDriver::DialogNow() const
{
    // The owners of a modal dialog are disabled, so what is enabled is the innermost one.
    for (const HWND dialog : DialogsOf(uiThread_)) {
        if (IsWindowEnabled(dialog))
            return dialog;
    }
    return nullptr;
}

HWND UiDriver::Dialog()
{
    WaitUntil([&] { return DialogNow() != nullptr; }, "no dialog appears");
    if (DialogNow() != known_) {
        Settle(); // a new one may still be filling itself
        known_ = DialogNow();
    }
    return known_ != nullptr ? known_ : Dialog();
}

HWND UiDriver::Page()
{
    const HWND dialog = Dialog();
    return IsSheet(dialog) ? PropSheet_GetCurrentPageHwnd(dialog) : dialog;
}

HWND UiDriver::Control(int id)
{
    const HWND dialog = Dialog();
    const HWND page = Page();
    const bool ofSheet = id == IDOK || id == IDCANCEL || id == kHelpButton || id == kSheetTabs;
    if (const HWND control = GetDlgItem(ofSheet ? dialog : page, id); control != nullptr)
        return control;
    // The system's own dialogs nest their controls.
    for (const HWND child : ChildrenOf(page)) {
        if (GetDlgCtrlID(child) == id)
            return child;
    }
    Fail("there is no control " + std::to_string(id));
}

bool UiDriver::HasControl(int id)
{
    try {
        Control(id);
        return true;
    } catch (const UiFailure&) {
        return false;
    }
}

std::wstring UiDriver::Title()
{
    return TextOf(Dialog());
}

bool UiDriver::Finished() const
{
    return WaitForSingleObject(finished_, 0) == WAIT_OBJECT_0;
}

HWND UiDriver::UsableControl(int id)
{
    const HWND control = Control(id);
    if (!IsWindowVisible(control))
        Fail("control " + std::to_string(id) + " is hidden");
    if (!IsWindowEnabled(control))
        Fail("control " + std::to_string(id) + " is disabled");
    return control;
}

HWND UiDriver::EditOf(int id)
{
    const HWND control = UsableControl(id);
    const HWND edit = FindWindowExW(control, nullptr, L"Edit", nullptr); // a combo box holds one
    return edit != nullptr ? edit : control;
}

// ---- waiting -------------------------------------------------------------------------------------------------------

template <class Condition> void UiDriver::WaitUntil(Condition condition, const std::string& what)
{
    const auto deadline = Clock::now() + patience_;
    while (!condition()) {
        if (Finished())
            Fail(what + ": the dialogs have ended");
        if (Clock::now() > deadline)
            Fail(what);
        WaitForSingleObject(finished_, static_cast<DWORD>(kPollInterval.count()));
    }
}

void UiDriver::WaitForControl(int id)
{
    WaitUntil([&] { return DialogNow() != nullptr && HasControl(id) && IsVisible(id); },
              "no dialog with control " + std::to_string(id) + " appears");
}

void UiDriver::WaitForTitle(std::wstring_view title)
{
    WaitUntil([&] { return DialogNow() != nullptr && Title() == title; },
              "no dialog titled '" + Utf8(title) + "' appears");
}

BoxContents UiDriver::WaitForBox()
{
    WaitUntil([&] { return IsBox(DialogNow()); }, "no message box appears");
    BoxContents box;
    const HWND dialog = Dialog();
    box.title = TextOf(dialog);
    for (const HWND child : ChildrenOf(dialog)) {
        if (IsButton(child) && IsWindowVisible(child))
            box.buttons.push_back(GetDlgCtrlID(child));
        else if (IsIcon(child))
            box.icon = IconOf(child);
        else if (IsStatic(child))
            box.text = TextOf(child);
    }
    return box;
}

void UiDriver::WaitForEnd()
{
    if (WaitForSingleObject(finished_, static_cast<DWORD>(patience_.count())) != WAIT_OBJECT_0)
        Fail("the dialogs do not end");
}

void UiDriver::Settle()
{
    static WPARAM number = 0;
    const WPARAM mine = ++number;
    if (!PostThreadMessageW(uiThread_, MarkerMessage(), mine, kMarkerRounds)) {
        if (Finished())
            return;
        Fail(SystemError("the UI thread takes no messages", GetLastError()));
    }
    const auto deadline = Clock::now() + patience_;
    const HANDLE events[] = {Watch().changed, finished_};
    while (Watch().marker != mine && !Finished()) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        if (left.count() <= 0)
            Fail("the UI thread does not answer");
        WaitForMultipleObjects(2, events, FALSE, static_cast<DWORD>(left.count()));
    }
}

// ---- reading -------------------------------------------------------------------------------------------------------

// Never SendMessage: a UI thread that hangs must fail the run, not hang it too.
LRESULT UiDriver::Ask(HWND window, UINT message, WPARAM w, LPARAM l) const
{
    DWORD_PTR answer = 0;
    if (!SendMessageTimeoutW(window, message, w, l, SMTO_NORMAL, static_cast<UINT>(patience_.count()), &answer))
        Fail("the UI thread does not answer");
    return static_cast<LRESULT>(answer);
}

std::wstring UiDriver::TextOf(HWND window) const
{
    std::wstring text(static_cast<std::size_t>(Ask(window, WM_GETTEXTLENGTH)) + 1, L'\0');
    text.resize(static_cast<std::size_t>(Ask(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()))));
    return text;
}

std::wstring UiDriver::Text(int id)
{
    return TextOf(Control(id));
}
bool UiDriver::IsEnabled(int id)
{
    return IsWindowEnabled(Control(id)) != FALSE;
}
bool UiDriver::IsVisible(int id)
{
    return IsWindowVisible(Control(id)) != FALSE;
}
bool UiDriver::IsChecked(int id)
{
    return Ask(Control(id), BM_GETCHECK) == BST_CHECKED;
}

int UiDriver::FocusedControl()
{
    Dialog();
    GUITHREADINFO info{};
    info.cbSize = sizeof info;
    if (!GetGUIThreadInfo(uiThread_, &info) || info.hwndFocus == nullptr)
        return 0;
    const HWND parent = GetParent(info.hwndFocus);
    const bool inCombo = parent != nullptr && IsOfClass(parent, L"ComboBox");
    return GetDlgCtrlID(inCombo ? parent : info.hwndFocus);
}

std::vector<std::wstring> UiDriver::ComboItems(int id)
{
    const HWND combo = Control(id);
    std::vector<std::wstring> items(static_cast<std::size_t>(Ask(combo, CB_GETCOUNT)));
    for (std::size_t i = 0; i < items.size(); ++i) {
        items[i].resize(static_cast<std::size_t>(Ask(combo, CB_GETLBTEXTLEN, i)) + 1);
        items[i].resize(
            static_cast<std::size_t>(Ask(combo, CB_GETLBTEXT, i, reinterpret_cast<LPARAM>(items[i].data()))));
    }
    return items;
}

int UiDriver::RowCount(int id)
{
    return static_cast<int>(Ask(Control(id), LVM_GETITEMCOUNT));
}

int UiDriver::ColumnCount(int id)
{
    const auto header = reinterpret_cast<HWND>(Ask(Control(id), LVM_GETHEADER));
    return static_cast<int>(Ask(header, HDM_GETITEMCOUNT));
}

std::wstring UiDriver::ColumnTitle(int id, int column)
{
    wchar_t title[260] = L"";
    LVCOLUMNW request{};
    request.mask = LVCF_TEXT;
    request.pszText = title;
    request.cchTextMax = static_cast<int>(std::size(title));
    Ask(Control(id), LVM_GETCOLUMNW, static_cast<WPARAM>(column), reinterpret_cast<LPARAM>(&request));
    return title;
}

std::wstring UiDriver::CellText(int id, int row, int column)
{
    wchar_t text[1024] = L"";
    LVITEMW request{};
    request.iSubItem = column;
    request.pszText = text;
    request.cchTextMax = static_cast<int>(std::size(text));
    Ask(Control(id), LVM_GETITEMTEXTW, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&request));
    return request.pszText;
}

std::vector<std::wstring> UiDriver::Row(int id, int row)
{
    std::vector<std::wstring> cells(static_cast<std::size_t>(ColumnCount(id)));
    for (std::size_t column = 0; column < cells.size(); ++column)
        cells[column] = CellText(id, row, static_cast<int>(column));
    return cells;
}

std::vector<int> UiDriver::SelectedRows(int id)
{
    const HWND list = Control(id);
    std::vector<int> rows;
    int row = -1;
    while ((row = static_cast<int>(Ask(list, LVM_GETNEXTITEM, static_cast<WPARAM>(row), LVNI_SELECTED))) != -1)
        rows.push_back(row);
    return rows;
}

// ---- acting --------------------------------------------------------------------------------------------------------

void UiDriver::Do(std::function<void()> action)
{
    Dialog();
    if (FindExecutor(uiThread_) == nullptr) {
        const HHOOK creator = SetWindowsHookExW(WH_GETMESSAGE, CreateExecutor, nullptr, uiThread_);
        Settle();
        UnhookWindowsHookEx(creator);
    }
    auto owned = std::make_unique<std::function<void()>>(std::move(action));
    if (!PostMessageW(FindExecutor(uiThread_), kRun, 0, reinterpret_cast<LPARAM>(owned.get())))
        Fail(SystemError("the UI thread takes no messages", GetLastError()));
    static_cast<void>(owned.release()); // NOLINT(bugprone-unused-return-value): now the executor's
    Settle();                           // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks)
}

void UiDriver::Press(int id)
{
    const HWND button = UsableControl(id);
    Do([button] { SendMessageW(button, BM_CLICK, 0, 0); });
}

void UiDriver::Check(int id, bool checked)
{
    if (IsChecked(id) != checked)
        Press(id);
    if (IsChecked(id) != checked)
        Fail("check box " + std::to_string(id) + " cannot be switched");
}

void UiDriver::Choose(int radioButton)
{
    Press(radioButton);
    if (!IsChecked(radioButton))
        Fail("radio button " + std::to_string(radioButton) + " cannot be chosen");
}

void UiDriver::Focus(int id)
{
    const HWND control = UsableControl(id);
    const HWND dialog = Dialog();
    Do([=] { SendMessageW(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(control), TRUE); });
}

void UiDriver::Type(int id, std::wstring_view text)
{
    const HWND edit = EditOf(id);
    Focus(id);
    Do([=] {
        SendMessageW(edit, EM_SETSEL, 0, -1);
        SendMessageW(edit, WM_CLEAR, 0, 0);
    });
    TypeMore(id, text);
}

void UiDriver::TypeMore(int id, std::wstring_view text)
{
    const HWND edit = EditOf(id);
    for (const wchar_t character : text) {
        if (character != L'\n') // Enter is a carriage return
            PostMessageW(edit, WM_CHAR, character, 1);
    }
    Settle();
}

void UiDriver::Paste(int id, const std::wstring& text)
{
    const HWND edit = EditOf(id);
    Focus(id);
    Do([=] {
        SendMessageW(edit, EM_SETSEL, 0, -1);
        SendMessageW(edit, EM_REPLACESEL, TRUE, reinterpret_cast<LPARAM>(text.c_str()));
    });
}

void UiDriver::Select(int id, int item)
{
    const HWND combo = UsableControl(id);
    if (item >= static_cast<int>(Ask(combo, CB_GETCOUNT)))
        Fail("combo box " + std::to_string(id) + " has no item " + std::to_string(item));
    const HWND parent = GetParent(combo);
    Do([=] {
        // Choosing by program tells nobody; a user's choice does.
        SendMessageW(combo, CB_SETCURSEL, static_cast<WPARAM>(item), 0);
        for (const int code : {CBN_SELENDOK, CBN_SELCHANGE})
            SendMessageW(parent, WM_COMMAND, static_cast<WPARAM>(MAKELONG(id, code)), reinterpret_cast<LPARAM>(combo));
    });
}

void UiDriver::DropDown(int id, bool open)
{
    const HWND combo = UsableControl(id);
    Do([=] { SendMessageW(combo, CB_SHOWDROPDOWN, open, 0); });
}

void UiDriver::SelectRows(int id, const std::vector<int>& rows)
{
    const HWND list = UsableControl(id);
    const auto areThere = [&, this] {
        const int count = RowCount(id);
        return std::ranges::all_of(rows, [count](int row) { return 0 <= row && row < count; });
    };
    WaitUntil(areThere, "list " + std::to_string(id) + " does not have these rows");
    Do([=] {
        // Not all rows at once: some systems then tell of every single one, also in a list of a million.
        for (int row = -1; (row = ListView_GetNextItem(list, row, LVNI_SELECTED)) >= 0;)
            ListView_SetItemState(list, row, 0, LVIS_SELECTED);
        for (const int row : rows)
            ListView_SetItemState(list, row, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
    });
}

void UiDriver::DoubleClickRow(int id, int row)
{
    const HWND list = UsableControl(id);
    Ask(list, LVM_ENSUREVISIBLE, static_cast<WPARAM>(row), FALSE);
    RECT rectangle{LVIR_LABEL, 0, 0, 0};
    if (!Ask(list, LVM_GETITEMRECT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&rectangle)))
        Fail("list " + std::to_string(id) + " has no row " + std::to_string(row));
    const LPARAM point = PointIn(rectangle);
    for (const UINT message : {WM_LBUTTONDOWN, WM_LBUTTONUP, WM_LBUTTONDBLCLK, WM_LBUTTONUP})
        PostMessageW(list, message, message == WM_LBUTTONUP ? 0 : MK_LBUTTON, point);
    Settle();
}

void UiDriver::ClickColumn(int id, int column)
{
    const auto header = reinterpret_cast<HWND>(Ask(UsableControl(id), LVM_GETHEADER));
    RECT rectangle{};
    if (!Ask(header, HDM_GETITEMRECT, static_cast<WPARAM>(column), reinterpret_cast<LPARAM>(&rectangle)))
        Fail("list " + std::to_string(id) + " has no column " + std::to_string(column));
    PostMessageW(header, WM_LBUTTONDOWN, MK_LBUTTON, PointIn(rectangle));
    PostMessageW(header, WM_LBUTTONUP, 0, PointIn(rectangle));
    Settle();
}

void UiDriver::GoToPage(int index)
{
    const HWND sheet = Dialog();
    if (!IsSheet(sheet))
        Fail("the dialog has no pages");
    if (index < 0 || index >= static_cast<int>(Ask(GetDlgItem(sheet, kSheetTabs), TCM_GETITEMCOUNT)))
        Fail("there is no page " + std::to_string(index));
    Do([=] { PropSheet_SetCurSel(sheet, nullptr, static_cast<WPARAM>(index)); });
}

void UiDriver::PressKey(WORD key, const std::vector<WORD>& modifiers)
{
    std::vector<INPUT> inputs;
    inputs.reserve(2 * (modifiers.size() + 1));
    for (const WORD modifier : modifiers)
        inputs.push_back(KeyInput(modifier, 0));
    inputs.push_back(KeyInput(key, 0));
    inputs.push_back(KeyInput(key, KEYEVENTF_KEYUP));
    for (const WORD modifier : modifiers)
        inputs.push_back(KeyInput(modifier, KEYEVENTF_KEYUP));
    SendKeys(std::move(inputs));
}

void UiDriver::HoldKey(WORD key, int times)
{
    std::vector<INPUT> inputs(static_cast<std::size_t>(times), KeyInput(key, 0));
    inputs.push_back(KeyInput(key, KEYEVENTF_KEYUP));
    SendKeys(std::move(inputs));
}

// Wine's display tells each window that gets the focus which keys are down there, and none of ours is: what comes late
// would release them between two of ours. Whoever gets a second answer from the display finds that news waiting.
void UiDriver::HearTheDisplay()
{
    Do([] {
        for (int answer = 0; answer < 2; ++answer) {
            const HDC screen = GetDC(nullptr);
            GetPixel(screen, 0, 0);
            ReleaseDC(nullptr, screen);
        }
        GetQueueStatus(QS_ALLINPUT); // looks at what the display has sent, too
    });
}

void UiDriver::SendKeys(std::vector<INPUT> inputs)
{
    SetForegroundWindow(Dialog());
    HearTheDisplay();
    // Keyboard input is fetched after all posted messages, so a marker could overtake it: the releases are counted.
    const auto released =
        std::ranges::count_if(inputs, [](const INPUT& input) { return (input.ki.dwFlags & KEYEVENTF_KEYUP) != 0; });
    const unsigned expected = Watch().keysReleased + static_cast<unsigned>(released);
    if (SendInput(static_cast<UINT>(inputs.size()), inputs.data(), sizeof(INPUT)) != inputs.size())
        Fail(SystemError("the system takes no keyboard input", GetLastError()));
    const auto deadline = Clock::now() + patience_;
    const HANDLE events[] = {Watch().changed, finished_};
    while (static_cast<int>(expected - Watch().keysReleased) > 0 && !Finished()) {
        if (Clock::now() > deadline)
            Fail("the key does not arrive");
        WaitForMultipleObjects(2, events, FALSE, static_cast<DWORD>(kPollInterval.count()));
    }
    Settle();
}

BoxContents UiDriver::AnswerBox(int button)
{
    BoxContents box = WaitForBox();
    Press(button);
    return box;
}

void UiDriver::AnswerFileDialog(const std::filesystem::path& file)
{
    const auto fileName = [&] { return HasControl(kFileNameCombo) ? kFileNameCombo : kFileNameEdit; };
    WaitUntil([&] { return DialogNow() != nullptr && HasControl(fileName()); }, "no file dialog appears");
    const HWND control = Control(fileName());
    Do([=] { SetWindowTextW(control, file.c_str()); });
    Press(IDOK);
}

void UiDriver::CloseEverything()
{
    const auto deadline = Clock::now() + patience_;
    while (!Finished()) {
        if (Clock::now() > deadline)
            Fail("the dialogs cannot be closed");
        const HWND dialog = DialogNow();
        if (dialog == nullptr) {
            WaitForSingleObject(finished_, static_cast<DWORD>(kPollInterval.count()));
            continue;
        }
        // A box may lack Cancel: any other answer will do.
        for (const int answer : {IDCANCEL, IDNO, IDOK}) {
            if (const HWND button = GetDlgItem(dialog, answer); button != nullptr) {
                PostMessageW(dialog, WM_COMMAND, static_cast<WPARAM>(answer), reinterpret_cast<LPARAM>(button));
                break;
            }
        }
        Settle();
    }
}

// ---- looking -------------------------------------------------------------------------------------------------------

void UiDriver::SavePicture(const std::filesystem::path& file)
{
    const HWND dialog = Dialog();
    Do([=] {
        SetForegroundWindow(dialog);
        // Wine forgets to say so to a window that had the focus before it was shown.
        SendMessageW(dialog, WM_NCACTIVATE, GetForegroundWindow() == dialog, 0);
        RedrawWindow(dialog, nullptr, nullptr, RDW_INVALIDATE | RDW_FRAME | RDW_ALLCHILDREN | RDW_UPDATENOW);
    });
    Settle();
    RECT rectangle{};
    GetWindowRect(dialog, &rectangle);
    host::SaveScreenPicture(rectangle, file);
}

void UiDriver::SaveScreenPicture(const std::filesystem::path& file)
{
    Dialog();
    Settle();
    RECT all{};
    for (const HWND dialog : DialogsOf(uiThread_)) {
        RECT rectangle{}, before = all;
        GetWindowRect(dialog, &rectangle);
        UnionRect(&all, &before, &rectangle);
    }
    host::SaveScreenPicture(all, file);
}

// ---- failing -------------------------------------------------------------------------------------------------------

std::string UiDriver::Describe() const
{
    std::string description;
    for (const HWND dialog : DialogsOf(uiThread_)) {
        wchar_t title[256] = L"";
        GetWindowTextW(dialog, title, static_cast<int>(std::size(title)));
        description += description.empty() ? " [on screen: '" : ", '";
        description += Utf8(title) + "'";
        if (!IsBox(dialog))
            continue;
        for (const HWND child : ChildrenOf(dialog)) {
            wchar_t text[512] = L"";
            if (IsStatic(child) && !IsIcon(child) && GetWindowTextW(child, text, static_cast<int>(std::size(text))) > 0)
                description += " saying '" + Utf8(text) + "'";
        }
    }
    return description.empty() ? " [no dialog on screen]" : description + "]";
}

void UiDriver::Fail(const std::string& what) const
{
    throw UiFailure(what + Describe());
}

} // namespace qx::host
