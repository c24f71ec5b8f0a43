#include "sheet_user.h"

#include "base/unique.h"
#include "dialog/dialog.h"
#include "host/provision.h"
#include "phonebook/file/file_replacement.h"
#include "phonebook/recent/recent_list.h"
#include "phonebook/ui/phone_book_changed.h"
#include "res/add_recipients_ids.h"
#include "res/edit_phone_book_ids.h"
#include "res/fax_job_page_ids.h"
#include "support/phone_book.h"
#include "support/phone_book_session.h"
#include "support/temporary_folder.h"

#include <algorithm>
#include <commctrl.h>
#include <set>
#include <utility>

namespace qx::test {

namespace {

UserDefaults NoSettings()
{
    UserDefaults none = SampleDefaults();
    none.erase(L"ApplyDefaults");
    for (auto& [name, value] : none)
        value = std::holds_alternative<DWORD>(value) ? DefaultValue(0u) : DefaultValue(L"");
    return none;
}

void ExpectAmong(const UserDefaults& all, const UserDefaults& shown, const char* what)
{
    ExpectEqual(shown, ThoseAmong(all, shown), what);
}

// A number stands between marks in a mirrored list.
std::wstring WithoutMarks(std::wstring text)
{
    std::erase_if(text, [](wchar_t c) { return c == L'\u200E' || c == L'\u202A' || c == L'\u202C'; });
    return text;
}

} // namespace

DWORD IdOfRow(HWND list, int row)
{
    LVITEMW item{};
    item.mask = LVIF_PARAM;
    item.iItem = row;
    SendMessageW(list, LVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item));
    return static_cast<DWORD>(item.lParam);
}

// ---- life -----------------------------------------------------------------------------------------------------------

SheetUser::SheetUser(Surroundings surroundings, unsigned seed)
    : around(std::move(surroundings)), turns_([this](HWND dialog, Place place) { Turn(dialog, place); })
{
    if (seed % 2 == 0)
        windowsComboBoxes_.emplace();
    Restart();
}

// A phone book, recent recipients, and no defaults.
void SheetUser::Restart()
{
    const Recipient anna{L"Anna", L"111", L"Orchard"}, otherAnna{L"anna", L"222", L""},
        andrew{L"Andrew", L"444", L"Mill"}, noTeam{L"Team", L"333", L"No group"};
    for (const Recipient& texts : {anna, otherAnna, noTeam, andrew, Recipient{L"Bea", L"777", L" "}})
        file.items.push_back({.id = static_cast<DWORD>(file.items.size()), .texts = texts});
    std::vector<DWORD> guests;
    for (DWORD i = 1; i <= 12; ++i) {
        guests.push_back(100 + i);
        file.items.push_back(
            {.id = 100 + i, .texts = {L"Guest " + std::to_wstring(i), L"900" + std::to_wstring(i), L""}});
    }
    file.items.push_back({.id = 200, .texts = {L"Team", L"", L""}, .isGroup = true, .members = {0, 1, 3}});
    file.items.push_back({.id = 201, .texts = {L"Tea party", L"", L""}, .isGroup = true, .members = guests});
    SomebodySaves(true);

    const RecentItem used[] = {{{L"Team", L"", L""}, true, {anna, otherAnna, andrew}},
                               {{L"Tea party", L"", L""}, true, file.MembersOf(guests)},
                               {anna},
                               {otherAnna},
                               {noTeam},
                               {andrew},
                               {{L"\x5D0\x5D1\x5D2", L"555", L""}},
                               {{L"\xD83D\xDE00", L"666", L""}},
                               {{L"Nobody", L"no number", L""}}};
    RecentRecipientList list;
    TestBook book;
    list.Open(around.printer);
    for (const RecentItem& item : used) {
        recents.Use(item);
        PhoneBookGroup* const group = item.isGroup ? book.NewGroup(item.texts.name, 0) : nullptr;
        for (const Recipient& member : item.members)
            group->AddMember(MakeRecipient(member).release());
        list.AddRecent(group != nullptr ? static_cast<PhoneBookItem*>(group) : book.NewEntry(item.texts), &*book);
    }
    list.Save();
}

void SheetUser::Play(EventSource& events)
{
    events_ = &events;
    while (!events.IsAtItsEnd()) {
        if (const std::optional<Event> event = events.Next(Place::Outside)) {
            place_ = Place::Outside;
            Do(*event);
        } else if (!events.IsAtItsEnd()) {
            BeginSession();
            turns_.Begin();
            around.module->DisplayFaxUi(around.printer, record);
            turns_.End();
        }
    }
}

void SheetUser::BeginSession()
{
    QxFaxReleaseJob(&record);
    record.Cancelled = kNothingSaid;
    TakeReloaded();
    recents.Reload();
    rows.clear();
    settings = stored;
    settings.erase(L"ApplyDefaults");
    if (stored.empty())
        settings = NoSettings();
    if (settings[L"NotifyMethod"] != DefaultValue(2u))
        settings[L"NotifyMethod"] = 1u;
    touched = touchedAsChosen = false;
    changed = true;
    setupShown = coverPageShown = false;
}

void SheetUser::Turn(HWND dialog, Place place)
{
    const HWND outerDialog = Dialog();
    const Place outerPlace = std::exchange(place_, place);
    TakeUp(dialog);
    if (const std::optional<Event> event = events_->Next(place))
        Do(*event);
    else if (place == Place::Box)
        AnswerBox(false);
    else
        PressCancel(dialog);
    place_ = outerPlace;
    TakeUp(outerDialog);
}

void SheetUser::Do(const Event& event)
{
    around.watcher(event);
    random.seed(event.number);
    const Place place = place_;
    try {
        LookAround(place);
        const Recipient fields = place == Place::FaxJob ? Fields() : Recipient{};
        pasted = false;
        try {
            VerbsAt(place)[event.verb].act(*this);
        } catch (const NotUsable&) {
        }
        if (place == Place::FaxJob && record.Cancelled == kNothingSaid && Page() != nullptr) {
            // The page fills the fields from the name; what the user puts into them is the user's.
            const Recipient now = Fields();
            const RecentItem* const named = recents.Suggestion(now.name);
            if (now.faxNumber != fields.faxNumber || now.company != fields.company) {
                touched = pasted;
                touchedAsChosen = false;
            }
            if (named != nullptr && named->texts.faxNumber == now.faxNumber && named->texts.company == now.company)
                touchedAsChosen = true;
            CheckFaxJob();
        }
        if (std::exchange(recentsChanged, false))
            CheckRecents();
    } catch (const std::exception& mistake) {
        around.mistaken(mistake.what());
    }
}

// Before an event.
void SheetUser::LookAround(Place place)
{
    if (place == Place::FaxJob) {
        COMBOBOXINFO info{};
        info.cbSize = sizeof info;
        GetComboBoxInfo(Control(IDC_NAME_BOX), &info);
        combo = info.hwndCombo;
        nameEdit = info.hwndItem;
        nameList = info.hwndList;
        if (!std::exchange(coverPageShown, true))
            ExpectAmong(settings, CoverPageIn(Page()), "the cover page shown is another one");
    }
    if (place == Place::Setup && !std::exchange(setupShown, true))
        ExpectAmong(settings, SenderSettingsIn(Page()), "the settings shown are others");
    if (place == Place::Editor)
        CheckBookRows(IDC_BOOK_LIST);
    if (place == Place::Picker)
        CheckBookRows(IDC_PICK_LIST);
}

// ---- hands ----------------------------------------------------------------------------------------------------------

void SheetUser::Replace(int id, const wchar_t* text)
{
    if (IsEnabled(id))
        PasteInto(Control(id), text);
}

void SheetUser::SelectSome(int list, int most)
{
    const int count = ListView_GetItemCount(Control(list));
    std::set<int> some;
    for (int left = count > 0 ? Pick(most + 1) : 0; left > 0; --left)
        some.insert(Pick(count));
    SelectRows(list, {some.begin(), some.end()});
}

void SheetUser::Look() const
{
    RedrawWindow(Dialog(), nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN | RDW_UPDATENOW);
}

void SheetUser::AnswerBox(bool yes)
{
    ++boxes;
    agreed = yes;
    if (yes)
        Answer(Dialog(), {IDYES, IDOK, IDRETRY, IDCANCEL});
    else
        Answer(Dialog(), {IDNO, IDCANCEL, IDOK});
}

void SheetUser::Cancel()
{
    if (place_ == Place::Editor || place_ == Place::Picker)
        TakeReloaded();
    PressCancel(Dialog());
}

// What is in the model of the file: as another program of this machine, which tells the others, or as one that does
// not.
void SheetUser::SomebodySaves(bool told)
{
    BookText text;
    for (const BookItem& item : file.items) {
        if (item.isGroup)
            text.Group(item.id, item.texts.name, item.members);
        else
            text.Entry(item.id, item.texts.name, item.texts.faxNumber, item.texts.company);
    }
    const std::filesystem::path fresh = around.folder / L"phone book";
    WriteBytes(fresh, text.Text());
    Expect(MoveFileExW(fresh.c_str(), around.phoneBook.c_str(), MOVEFILE_REPLACE_EXISTING) != FALSE,
           "nobody else can save the phone book");
    unseen.assign(1, text.Text()); // what was there before, they have seen
    if (!told)
        return;
    EnumThreadWindows(
        GetCurrentThreadId(),
        [](HWND window, LPARAM) -> BOOL {
            SendMessageW(window, PhoneBookChangedMessage(), 0, 0);
            return TRUE;
        },
        0);
    if (place_ == Place::Group) // whom the members' ids name no longer, they leave
        std::erase_if(members, [this](DWORD id) {
            const BookItem* const member = memory.Find(id);
            return member != nullptr && !file.Has(*member);
        });
    TakeReloaded();
}

// ---- what is seen ---------------------------------------------------------------------------------------------------

Recipient SheetUser::FieldsOn(HWND page)
{
    const auto text = [page](int id) { return WindowText(ItemOf(page, id)); };
    return {text(IDC_NAME_BOX), text(IDC_FAX_NUMBER), text(IDC_COMPANY)};
}

std::vector<Recipient> SheetUser::RowsOf(int list) const
{
    std::vector<Recipient> shown = RowsIn(Control(list));
    for (Recipient& row : shown)
        row.faxNumber = WithoutMarks(row.faxNumber);
    return shown;
}

std::vector<int> SheetUser::SelectedRows(int list) const
{
    std::vector<int> selected;
    const HWND window = Control(list);
    for (int row = ListView_GetNextItem(window, -1, LVNI_SELECTED); row >= 0;
         row = ListView_GetNextItem(window, row, LVNI_SELECTED))
        selected.push_back(row);
    return selected;
}

std::vector<DWORD> SheetUser::SelectedIds(int list) const
{
    std::vector<DWORD> ids;
    for (const int row : SelectedRows(list))
        ids.push_back(IdOfRow(Control(list), row));
    return ids;
}

// ---- expectations ---------------------------------------------------------------------------------------------------

Offer SheetUser::OfferOf(const Recipient& shown) const
{
    const bool users = touched && !touchedAsChosen;
    const RecentItem* const suggestion = users ? nullptr : recents.Suggestion(shown.name);
    return {shown, suggestion != nullptr ? std::optional(*suggestion) : std::nullopt, boxes};
}

// The worst mistake: a known name has a number of its own, or one that the user put there.
void SheetUser::CheckPair(const Recipient& row) const
{
    const bool right = row.faxNumber.empty() || touched || recents.Suggestion(row.name) == nullptr ||
                       recents.Knows(row.name, row.faxNumber);
    if (!right)
        throw Mistake("a name beside a number that is not its own: " + Shown(row));
}

void SheetUser::CheckTaken(const Offer& offer, const Recipient& taken) const
{
    if (taken != offer.fields) {
        if (!offer.suggestion)
            throw Mistake("other fields are taken than those shown: " + Shown(taken) + ", not " + Shown(offer.fields));
        ExpectEqual(taken, {offer.fields.name, offer.suggestion->texts.faxNumber, offer.suggestion->texts.company},
                    "other fields are taken");
    }
    CheckPair(taken);
}

void SheetUser::CheckFaxJob()
{
    ExpectEqual(record.RecipientCount, static_cast<INT32>(rows.size()), "recipients in the record");
    ExpectEqual(ListView_GetItemCount(Control(IDC_RECIPIENTS)), static_cast<int>(rows.size()), "rows in the list");
    const Recipient fields = Fields();
    const bool group = IsShown(IDC_GROUP_TEXT);
    Expect(group != IsShown(IDC_FAX_NUMBER), "number and group share their place");
    Expect(!group || recents.Group(fields.name) != nullptr, "the text of a group beside another name");
    Expect(IsEnabled(IDC_TO) == !Text(group ? IDC_GROUP_TEXT : IDC_FAX_NUMBER).empty(), "the To button");
    if (GetFocus() != nameEdit)
        CheckPair(fields);
    if (!std::exchange(changed, false))
        return;
    ExpectEqual(RowsOf(IDC_RECIPIENTS), rows, "the list");
    ExpectEqual(RecipientsIn(record), rows, "the record's recipients");
}

void SheetUser::Use(const RecentItem& item)
{
    recents.Use(item);
    recentsChanged = true;
}

void SheetUser::Note(const UserDefaults& shown)
{
    for (const auto& [name, value] : shown)
        settings[name] = value;
}

void SheetUser::CheckRecents() const
{
    RecentRecipientList list;
    list.Open(around.printer);
    list.Load();
    std::vector<RecentItem> slots;
    for (const PhoneBookItem* const item : list.Slots()) {
        if (const PhoneBookGroup* const group = AsGroup(item)) {
            RecentItem& slot = slots.emplace_back(RecentItem{{group->GetName(), L"", L""}, true});
            for (const PhoneBookItem* const member : group->Members())
                slot.members.push_back(AsEntry(member)->Texts());
        } else if (item != nullptr) {
            slots.push_back({AsEntry(item)->Texts()});
        }
    }
    RecentModel expected = recents;
    expected.Reload();
    ExpectEqual(slots, expected.slots, "the recent recipients");
}

// What the list shows is the book in memory. An item that was just made shows its id.
void SheetUser::CheckBookRows(int list)
{
    BookModel shown;
    for (const Recipient& texts : RowsOf(list))
        shown.items.push_back({.id = IdOfRow(Control(list), static_cast<int>(shown.items.size())), .texts = texts});
    BookModel expected;
    for (BookItem& item : memory.items) {
        if (item.id == kIdUnknown) {
            const auto made = std::ranges::find_if(shown.items, [&](const BookItem& row) {
                return row.texts == item.texts && memory.Find(row.id) == nullptr;
            });
            Expect(made != shown.items.end(), "what was added is not shown");
            Expect(!memory.IsTaken(made->id), "a new item has the id of another one");
            item.id = made->id;
        }
        expected.items.push_back({.id = item.id, .texts = item.texts});
    }
    shown.Sort();
    expected.Sort();
    ExpectEqual(shown.items, expected.items, "the list of the phone book");
}

std::vector<BookItem> SheetUser::ReadFile() const
{
    ItemStore store;
    BookModel read;
    for (const PhoneBookItem* const item : LoadPhoneBookFile(around.phoneBook.wstring(), store).items) {
        BookItem& copy = read.items.emplace_back();
        copy.id = item->GetId();
        if (const PhoneBookGroup* const group = AsGroup(item)) {
            copy.isGroup = true;
            copy.texts.name = group->GetName();
            copy.members = MemberIdsOf(*group);
        } else {
            copy.texts = AsEntry(item)->Texts();
        }
    }
    read.Sort();
    return read.items;
}

// What others saved and the module replaced is in a copy that it has kept.
void SheetUser::CheckCopiesKept()
{
    std::set<std::string> kept;
    for (const std::wstring& copy : KeptCopies(around.phoneBook.wstring())) {
        kept.insert(ReadBytes(copy));
        SetFileAttributesW(copy.c_str(), FILE_ATTRIBUTE_NORMAL);
        DeleteFileW(copy.c_str());
    }
    for (const std::string& content : std::exchange(unseen, {}))
        Expect(kept.contains(content), "what somebody else saved is in no copy");
}

void SheetUser::TakeSaved()
{
    file = memory;
    file.Sort();
    ExpectEqual(ReadFile(), file.items, "the phone book file");
    CheckCopiesKept();
    TakeReloaded();
}

void SheetUser::CheckDefaults() const
{
    UniqueKey key;
    RegOpenKeyExW(HKEY_CURRENT_USER, (host::UserKey(around.guid) + L"\\QX-FAX\\Default").c_str(), 0, KEY_READ,
                  key.Receive());
    ExpectEqual(DefaultsIn(key.Get()), stored, "the stored defaults");
}

void SheetUser::FinishEditing(BookItem edited)
{
    if (!memory.Has(before))
        edited.id = kIdUnknown; // another program has deleted or changed it: it comes back
    const bool same = memory.HoldsSame(edited);
    const HWND dialog = Dialog();
    Press(IDOK);
    Expect((IsWindowVisible(dialog) != FALSE) == same, "whether an item is there already");
    if (same)
        return;
    if (edited.id == kIdUnknown)
        memory.items.push_back(edited);
    else
        *memory.Find(edited.id) = edited;
}

} // namespace qx::test
