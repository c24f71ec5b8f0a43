#include "scenarios.h"

#include "base/unique.h"
#include "dialog/dialog.h"
#include "host/utf8.h"
#include "phonebook/file/file_replacement.h"
#include "phonebook/recent/recent_list.h"
#include "res/add_recipients_ids.h"
#include "res/cover_page_ids.h"
#include "res/edit_defaults_ids.h"
#include "res/edit_phone_book_ids.h"
#include "res/entry_ids.h"
#include "res/fax_job_page_ids.h"
#include "res/group_ids.h"
#include "res/map_custom_fields_ids.h"
#include "res/setup_page_ids.h"
#include "support/help_topics.h"
#include "support/help_viewer.h"

#include <algorithm>
#include <map>
#include <optional>
#include <prsht.h>
#include <sstream>
#include <winspool.h>

namespace qx::test {

namespace {

using Items = std::vector<SavedItem>;
using Script = std::vector<ScriptedUser::Step>;

constexpr int kFaxJobPage = 0, kSetupPage = 1;
constexpr DWORD kOutcomeUnknown = 7; // what the driver would find had the module not written an outcome

const Recipient kBob{L"Bob", L"22", L"Mill"};
const Recipient kAnna{L"Anna", L"11", L"Orchard"};
const Recipient kZoe{L"Zoe", L"99", L"Zoo"};

std::wstring TextIn(HWND page, int id)
{
    return WindowText(GetDlgItem(page, id));
}

// What no page shows is sent as in hidden.
Job ShownIn(HWND sheet, const UserDefaults& hidden)
{
    Job shown;
    const HWND page = PropSheet_IndexToHwnd(sheet, kFaxJobPage); // a Send that the other refused has shown that one
    if (page == nullptr)
        throw std::runtime_error("no page");
    shown.recipients = RowsIn(GetDlgItem(page, IDC_RECIPIENTS));
    if (const std::wstring number = TextIn(page, IDC_FAX_NUMBER); !number.empty())
        shown.recipients.push_back({TextIn(page, IDC_NAME_BOX), number, TextIn(page, IDC_COMPANY)});
    shown.billingCode = TextIn(page, IDC_BILLING_CODE);
    shown.settings = CoverPageIn(page);
    if (const HWND setup = PropSheet_IndexToHwnd(sheet, kSetupPage); setup != nullptr) {
        shown.settings.merge(SenderSettingsIn(setup));
        if (shown.settings[L"NotifyOn"] == DefaultValue(0u))
            shown.settings[L"NotifyMethod"] = 0u;
    }
    shown.settings.insert(hidden.begin(), hidden.end());
    shown.settings.erase(L"ApplyDefaults"); // that the user's defaults could not be read shows nowhere
    return shown;
}

std::wstring OrNothing(const wchar_t* text)
{
    return text != nullptr ? text : L"";
}

Job JobOf(const FaxJobData& record)
{
    Job job;
    for (INT32 i = 0; i < record.RecipientCount; ++i) {
        const FaxRecipient& recipient = *record.Recipients.Items[i];
        job.recipients.push_back(
            {OrNothing(recipient.Name), OrNothing(recipient.FaxNumber), OrNothing(recipient.Company)});
    }
    job.settings = DefaultsOf(record);
    job.billingCode = OrNothing(record.BillingCode);
    return job;
}

std::string TextOf(const DefaultValue& value)
{
    const auto* const number = std::get_if<DWORD>(&value);
    return " " + (number != nullptr ? std::to_string(*number) : host::Utf8(std::get<std::wstring>(value)));
}

// Of job, to what it should be.
std::string Difference(const Job& job, const Job& shown)
{
    std::string what;
    if (job.recipients != shown.recipients) {
        what += " recipients";
        for (const Recipient& recipient : job.recipients)
            what += " " + host::Utf8(recipient.name + L"/" + recipient.faxNumber + L"/" + recipient.company);
    }
    for (const auto& [name, value] : job.settings) {
        if (const auto other = shown.settings.find(name); other != shown.settings.end() && other->second != value)
            what += " " + host::Utf8(name) + TextOf(value) + " for" + TextOf(other->second);
    }
    if (job.billingCode != shown.billingCode)
        what += " billing code";
    return what;
}

// Nobody's name stands beside another's number; a company may have been left out.
bool IsOneOf(const std::vector<Recipient>& known, const Recipient& recipient)
{
    return std::ranges::any_of(known, [&](const Recipient& one) {
        return one.name == recipient.name && one.faxNumber == recipient.faxNumber &&
               (recipient.company.empty() || recipient.company == one.company);
    });
}

// What a record says when nobody has set anything else.
UserDefaults NewSettings()
{
    return {{L"SenderName", L""},     {L"SenderCompany", L""},    {L"SenderFaxNo", L""}, {L"SenderVoiceNo", L""},
            {L"CoverPageNotes", L""}, {L"CoverPageSubject", L""}, {L"OverlayPath", L""}, {L"NotifyEmail", L""},
            {L"Resolution", 0u},      {L"NotifyOn", 0u},          {L"NotifyMethod", 1u}, {L"AddCoverPage", 0u},
            {L"ShowPreview", 0u},     {L"ApplyDefaults", 1u}};
}

// As they are sent.
UserDefaults UnchangedSettings()
{
    UserDefaults settings = NewSettings();
    settings[L"NotifyMethod"] = 0u; // nobody is notified
    return settings;
}

void Fill(ScriptedUser& user, const Recipient& recipient)
{
    user.Paste(IDC_NAME_BOX, recipient.name);
    user.Paste(IDC_FAX_NUMBER, recipient.faxNumber);
    user.Paste(IDC_COMPANY, recipient.company);
}

bool IsAmong(const Items& items, const SavedItem& item)
{
    return std::ranges::find(items, item) != items.end();
}

bool AreSame(Items a, Items b)
{
    std::ranges::sort(a, {}, &SavedItem::name); // in no order: sorting may fail
    std::ranges::sort(b, {}, &SavedItem::name);
    return a == b;
}

// Each has an id of its own, and groups name entries.
bool AreSound(const Items& items)
{
    const auto isEntry = [&](DWORD id) {
        return std::ranges::any_of(items, [&](const SavedItem& item) { return item.id == id && item.members.empty(); });
    };
    return std::ranges::all_of(items, [&](const SavedItem& item) {
        return std::ranges::count(items, item.id, &SavedItem::id) == 1 && std::ranges::all_of(item.members, isEntry);
    });
}

// ---- sessions that may end with Send

class Sending : public Scenario {
protected:
    virtual Job Typed() const = 0;                                 // or picked, with what else was stored
    virtual std::vector<UserDefaults> Given() const { return {}; } // what the record's settings may be before Send

    // What it shows counts. Where Send is refused it is pressed once more.
    void AddSend(Script& steps)
    {
        shown_ = {};
        for (int press = 0; press < 2; ++press)
            steps.emplace_back([this](ScriptedUser& user) {
                if (!user.IsSheet())
                    throw std::runtime_error("no sheet");
                shown_ = ShownIn(user.Dialog(), Typed().settings);
                user.PressSheet(IDOK);
            });
    }

    Verdict Judge(const FaxJobData& record) override
    {
        const Verdict sending = JudgeSending(record);
        if (sending.kind == Kind::Wrong)
            return sending;
        const Verdict left = JudgeEnded();
        return left.kind == Kind::Wrong ? left : sending;
    }
    Verdict JudgeEnded() override
    {
        // Where a save stopped a list may lack an item, but has none that nobody has used.
        RecentRecipientList recents;
        recents.Open(Session().PrinterHandle());
        recents.Load();
        for (const PhoneBookItem* const item : recents.Slots()) {
            if (item != nullptr && !IsUsed(*item))
                return {Kind::Wrong, "a recent recipient who is none"};
        }
        return JudgeBook({});
    }

private:
    Verdict JudgeSending(const FaxJobData& record) const
    {
        const Job sent = JobOf(record), typed = Typed();
        for (const Recipient& recipient : sent.recipients) {
            if (!IsOneOf(typed.recipients, recipient))
                return {Kind::Wrong, "a recipient who is none:" + Difference(sent, shown_)};
        }
        if (record.Cancelled != 0)
            return JudgeUnsent(record, Given());
        if (const std::string difference = Difference(sent, shown_); !difference.empty())
            return {Kind::Wrong, "sent otherwise:" + difference};
        if (const std::string difference = Difference(sent, typed); !difference.empty())
            return {Kind::Less, "sent as shown, not as typed:" + difference};
        return {Kind::AsAsked, "sent"};
    }

    bool IsUsed(const PhoneBookItem& item) const
    {
        const std::vector<Recipient> typed = Typed().recipients;
        if (const PhoneBookEntry* const entry = AsEntry(&item))
            return IsOneOf(typed, entry->Texts());
        return std::ranges::all_of(AsGroup(&item)->Members(),
                                   [&](const PhoneBookEntry* entry) { return IsOneOf(typed, entry->Texts()); });
    }

    Job shown_;
};

class TypeAndSend : public Sending {
    Script Steps() override
    {
        Script steps{
            [](ScriptedUser& user) {
                user.GoToPage(kFaxJobPage);
                Fill(user, kBob);
                user.Press(IDC_TO);
                Fill(user, kAnna);
                user.Check(IDC_COVER_PAGE, true);
                user.Paste(IDC_NOTES, L"\r\nline 2");
                user.Paste(IDC_SUBJECT, L"Offer 7");
                user.Paste(IDC_BILLING_CODE, L"0042");
                user.GoToPage(kSetupPage);
            },
            [](ScriptedUser& user) {
                user.Paste(IDC_SENDER_NAME, L"Carol");
                user.GoToPage(kFaxJobPage);
            },
        };
        AddSend(steps);
        return steps;
    }
    Job Typed() const override
    {
        UserDefaults settings = UnchangedSettings();
        settings[L"AddCoverPage"] = 1u;
        settings[L"CoverPageNotes"] = L"\r\nline 2";
        settings[L"CoverPageSubject"] = L"Offer 7";
        settings[L"SenderName"] = L"Carol";
        return {{kBob, kAnna}, settings, L"0042"};
    }
};

class OpenAndCancel : public Scenario {
    Script Steps() override { return {}; }
    Verdict Judge(const FaxJobData& record) override
    {
        const Verdict book = JudgeBook({});
        if (book.kind == Kind::Wrong)
            return book;
        const Verdict unsent = JudgeUnsent(record);
        return record.Cancelled == TRUE ? Verdict{Kind::AsAsked, "cancelled"} : unsent;
    }
};

// ---- the phone book

class AddToPhoneBook : public Scenario {
    void Prepare() override { file_ = Session().PhoneBookFile(); }
    Script Steps() override
    {
        before_.clear();
        Script steps;
        for (const Recipient* const recipient : {&kBob, &kAnna})
            steps.emplace_back([this, recipient](ScriptedUser& user) {
                before_ = ReadBytes(file_);
                user.GoToPage(kFaxJobPage);
                Fill(user, *recipient);
                user.Press(IDC_ADD_TO_PHONE_BOOK);
            });
        return steps;
    }
    Verdict Judge(const FaxJobData& record) override
    {
        if (record.Cancelled == 0)
            return {Kind::Wrong, "sent"};
        const SavedItem bob{kBob.name, kBob.faxNumber, kBob.company, {}};
        const SavedItem anna{kAnna.name, kAnna.faxNumber, kAnna.company, {}};
        if (before_.find("\"Bob\"") != before_.npos && !IsAmong(Session().SavedBook(), bob) && !AreKept({bob}))
            return Lost(); // what the first save has added
        std::vector<Items> accepted;
        for (const Items& added : {Items{bob, anna}, Items{bob}, Items{anna}}) {
            accepted.push_back(OldBook());
            accepted.back().insert(accepted.back().end(), added.begin(), added.end());
        }
        return JudgeBook(accepted);
    }

    // Which of its two saves have taken place is not known.
    Verdict JudgeEnded() override
    {
        before_.clear();
        return Scenario::JudgeEnded();
    }

    std::filesystem::path file_;
    std::string before_; // the file, when the last one was to be added
};

class PickAndSend : public Sending {
    Script Steps() override
    {
        Script steps{
            [](ScriptedUser& user) {
                user.GoToPage(kFaxJobPage);
                user.Paste(IDC_BILLING_CODE, L"0042");
                user.Press(IDC_PHONE_BOOK);
            },
            [](ScriptedUser& user) {
                // Dora, and the group Two: Emil and Gerda.
                user.SelectRows(IDC_PICK_LIST, {0, 6});
                user.Press(IDC_PICK_TO);
                user.Press(IDOK);
            },
        };
        AddSend(steps);
        return steps;
    }
    Job Typed() const override
    {
        return {{{L"Dora", L"31", L"Dairy"}, {L"Emil", L"32", L"Estate & Co"}, {L"Gerda", L"34", L"Garage"}},
                UnchangedSettings(),
                L"0042"};
    }
};

// Changes of the editor: whole when OK saved what it showed.
class Editing : public Scenario {
protected:
    void AddOpenEditor(Script& steps)
    {
        shown_.reset();
        steps.emplace_back([](ScriptedUser& user) { user.GoToPage(kSetupPage); });
        steps.emplace_back([](ScriptedUser& user) { user.Press(IDC_EDIT_PHONE_BOOK); });
    }
    void AddOk(Script& steps)
    {
        steps.emplace_back([this](ScriptedUser& user) {
            shown_ = RowsIn(user.Control(IDC_BOOK_LIST));
            user.Press(IDOK);
        });
    }

    // may: what the items of a name may be. wanted: the book when nothing fails.
    Verdict JudgeEditing(const FaxJobData& record, const Items& may, const Items& wanted) const
    {
        if (record.Cancelled == 0)
            return {Kind::Wrong, "sent"};
        const Items saved = Session().SavedBook();
        const bool keepsIds = AreSound(saved) && KeepsIds(saved);
        if (keepsIds && AreSame(saved, wanted))
            return {Kind::AsAsked, "saved"}; // also where the list could not show all of it
        if (keepsIds && AreSame(saved, OldBook()))
            return {Kind::Less, "book as it was"};
        const auto isSaved = [&](const Recipient& row) {
            return std::ranges::any_of(saved, [&](const SavedItem& item) { return Shows(row, item); });
        };
        const auto isKnown = [&](const SavedItem& item) { return IsAmong(may, item); };
        if (!shown_ || !AreSound(saved) || !std::ranges::all_of(saved, isKnown) ||
            !std::ranges::all_of(*shown_, isSaved))
            return Lost();
        const auto isThere = [&](const SavedItem& old) {
            const auto isNamesake = [&](const SavedItem& item) { return item.name == old.name; };
            return std::ranges::none_of(wanted, isNamesake) || std::ranges::any_of(saved, isNamesake);
        };
        const bool isWhole = keepsIds && std::ranges::all_of(OldBook(), isThere);
        if (!isWhole && !AreKept(OldBook()))
            return Lost();
        std::string what = saved.size() == shown_->size() ? "saved as shown" : "saved, and more than shown";
        return {Kind::Less, what + (isWhole ? "" : ", old book kept")};
    }

    // A cell that could not be filled shows nothing.
    static bool Shows(const Recipient& row, const SavedItem& item)
    {
        return row.name == item.name && (row.faxNumber.empty() || row.faxNumber == item.faxNumber) &&
               (row.company.empty() || row.company == item.company);
    }

    std::optional<std::vector<Recipient>> shown_;
};

class EditPhoneBook : public Editing {
    Script Steps() override
    {
        Script steps;
        AddOpenEditor(steps);
        steps.emplace_back([](ScriptedUser& user) { user.Press(IDC_BOOK_ADD_ENTRY); });
        steps.emplace_back([](ScriptedUser& user) {
            user.Paste(IDC_ENTRY_NAME, kBob.name);
            user.Paste(IDC_ENTRY_FAX_NUMBER, kBob.faxNumber);
            user.Paste(IDC_ENTRY_COMPANY, kBob.company);
            user.Press(IDOK);
        });
        steps.emplace_back([](ScriptedUser& user) { // Dora moves
            user.SelectRows(IDC_BOOK_LIST, {RowOf(user, L"Dora")});
            user.Press(IDC_BOOK_EDIT);
        });
        steps.emplace_back([](ScriptedUser& user) {
            user.Paste(IDC_ENTRY_COMPANY, L"Dome");
            user.Press(IDOK);
        });
        steps.emplace_back([](ScriptedUser& user) { user.Press(IDC_BOOK_ADD_GROUP); });
        steps.emplace_back([](ScriptedUser& user) {
            user.SelectRows(IDC_GROUP_ENTRIES,
                            {RowOf(user, L"Dora", IDC_GROUP_ENTRIES), RowOf(user, L"Emil", IDC_GROUP_ENTRIES)});
            user.Press(IDC_GROUP_ADD);
            user.Paste(IDC_GROUP_NAME, L"Pair");
            user.Press(IDOK);
        });
        steps.emplace_back([](ScriptedUser& user) {
            user.SelectRows(IDC_BOOK_LIST, {RowOf(user, L"Hans")});
            user.Press(IDC_BOOK_DELETE);
        });
        AddOk(steps);
        return steps;
    }
    Verdict Judge(const FaxJobData& record) override
    {
        const SavedItem bob{kBob.name, kBob.faxNumber, kBob.company, {}}, moved{L"Dora", L"31", L"Dome", {}};
        const SavedItem pair{L"Pair", L"", L"", {1, 2}}, team{L"Team", L"", L"", {1, 3}};
        Items wanted = OldBook();
        std::erase_if(
            wanted, [](const SavedItem& item) { return item.name == L"Dora" || IsHans(item) || item.name == L"Team"; });
        wanted.insert(wanted.end(), {bob, moved, pair, team});
        Items may = OldBook();
        may.insert(may.end(), {bob, moved, pair});
        if (const Items saved = Session().SavedBook(); std::ranges::none_of(saved, IsHans)) {
            std::erase_if(may, [](const SavedItem& item) { return item.name == L"Team"; });
            may.push_back(team);
        }
        for (const DWORD alone : {DWORD{1}, DWORD{2}}) // of the members that were chosen, as the dialog showed
            may.push_back({pair.name, L"", L"", {alone}});
        return JudgeEditing(record, may, wanted);
    }

    static bool IsHans(const SavedItem& item) { return item.name == L"Hans"; }
    static int RowOf(const ScriptedUser& user, const wchar_t* name, int list = IDC_BOOK_LIST)
    {
        const std::vector<std::wstring> names = NamesIn(user.Control(list));
        const auto found = std::ranges::find(names, name);
        if (found == names.end())
            throw std::runtime_error("no such row");
        return static_cast<int>(found - names.begin());
    }
};

class Import : public Editing {
    Script Steps() override
    {
        WriteBytes(File(), "Who,Fax,Firm\r\nIda,41,Inn\r\nJan,42,\r\nDora,31,Dairy\r\n");
        Script steps;
        AddOpenEditor(steps);
        steps.emplace_back([](ScriptedUser& user) { user.Press(IDC_BOOK_IMPORT); });
        steps.emplace_back([this](ScriptedUser& user) { user.ChooseFile(File()); });
        steps.emplace_back([](ScriptedUser& user) {
            for (const int column : {0, 1, 2}) {
                user.SelectRows(IDC_MAP_SOURCE_FIELDS, {column});
                user.SelectRows(IDC_MAP_DESTINATIONS, {column});
                user.Press(IDC_MAP);
            }
            user.Press(IDOK);
        });
        AddOk(steps);
        return steps;
    }
    Verdict Judge(const FaxJobData& record) override
    {
        Items wanted = OldBook();
        wanted.insert(wanted.end(), {{L"Ida", L"41", L"Inn", {}}, {L"Jan", L"42", L"", {}}});
        Items may = wanted;
        may.push_back({L"Ida", L"41", L"", {}}); // with a company that could not be mapped
        return JudgeEditing(record, may, wanted);
    }

    std::filesystem::path File() const { return Folder() / L"friends.csv"; }
};

class Export : public Editing {
    Script Steps() override
    {
        std::filesystem::remove(File());
        Script steps;
        AddOpenEditor(steps);
        steps.emplace_back([this](ScriptedUser& user) {
            shown_ = RowsIn(user.Control(IDC_BOOK_LIST));
            user.Press(IDC_BOOK_EXPORT);
        });
        steps.emplace_back([this](ScriptedUser& user) { user.ChooseFile(File()); });
        return steps;
    }
    Verdict Judge(const FaxJobData&) override
    {
        const Verdict book = JudgeBook({});
        if (book.kind == Kind::Wrong)
            return book;
        const std::string bytes = ReadBytes(File());
        if (whole_.empty())
            whole_ = bytes; // by the first session, in which nothing fails
        if (bytes == whole_)
            return {Kind::AsAsked, "exported"};
        if (bytes == "<no file>" || bytes.empty())
            return {Kind::Less, bytes.empty() ? "empty file" : "no file"};
        // Of a book that could be read in part only, as the list told.
        if (shown_ && Text(bytes) == LinesOf(*shown_))
            return {Kind::Less, "exported as shown"};
        return {Kind::Wrong, "part of a file"};
    }

    // The file is written in place, and can be written again.
    Verdict JudgeEnded() override { return JudgeBook({}); }

    static std::wstring Text(const std::string& bytes)
    {
        return {reinterpret_cast<const wchar_t*>(bytes.data()), bytes.size() / sizeof(wchar_t)};
    }

    // The header and the entries of these rows' names.
    std::wstring LinesOf(const std::vector<Recipient>& rows) const
    {
        std::wistringstream lines(Text(whole_));
        std::wstring line, found;
        while (std::getline(lines, line)) {
            const auto isIn = [&](const Recipient& row) { return line.find(row.name) != line.npos; };
            if (found.empty() || std::ranges::any_of(rows, isIn))
                found += line + L'\n';
        }
        return found;
    }

    std::filesystem::path File() const { return Folder() / L"book.csv"; }
    std::string whole_;
};

// ---- the user's own settings

UserDefaults OldDefaults()
{
    UserDefaults old = SampleDefaults();
    old[L"OverlayPath"] = L""; // there is no such image
    old[L"ShowPreview"] = 0u;
    old[L"Resolution"] = 1u;
    return old;
}

Verdict JudgeDefaults(const UserDefaults& now, const UserDefaults& wanted)
{
    UserDefaults old = OldDefaults();
    if (now == wanted)
        return {Kind::AsAsked, "stored"};
    if (now == old)
        return {Kind::Less, "defaults as they were"};
    for (const auto& [name, value] : wanted) {
        if (const auto stored = now.find(name);
            stored == now.end() || (stored->second != value && stored->second != old[name]))
            return {Kind::Wrong, "a default lost: " + host::Utf8(name)};
    }
    return {now.size() == wanted.size() ? Kind::Less : Kind::Wrong, "stored in part"};
}

class EditDefaults : public Scenario {
    void Prepare() override { Session().SetDefaults(OldDefaults()); }
    Script Steps() override
    {
        return {
            [](ScriptedUser& user) { user.GoToPage(kSetupPage); },
            [](ScriptedUser& user) { user.Press(IDC_EDIT_DEFAULTS); },
            [](ScriptedUser& user) {
                user.Control(IDC_APPLY_DEFAULTS);
                user.Paste(IDC_SENDER_NAME, L"New Name");
                user.Paste(IDC_SENDER_COMPANY, L"New Company");
                user.Paste(IDC_SUBJECT, L"New Subject");
                user.Press(IDC_SUPERFINE);
                user.Press(IDOK);
            },
        };
    }
    Verdict Judge(const FaxJobData& record) override
    {
        if (record.Cancelled == 0)
            return {Kind::Wrong, "sent"};
        UserDefaults wanted = OldDefaults();
        wanted[L"SenderName"] = L"New Name";
        wanted[L"SenderCompany"] = L"New Company";
        wanted[L"CoverPageSubject"] = L"New Subject";
        wanted[L"Resolution"] = 2u;
        return JudgeDefaults(Session().StoredDefaults(), wanted);
    }
};

class EditDefaultsAndSend : public Sending {
    void Prepare() override { Session().SetDefaults(OldDefaults()); }
    Script Steps() override
    {
        Script steps{
            [](ScriptedUser& user) { user.GoToPage(kSetupPage); },
            [](ScriptedUser& user) { user.Press(IDC_EDIT_DEFAULTS); },
            [](ScriptedUser& user) {
                user.Control(IDC_APPLY_DEFAULTS);
                user.Paste(IDC_SENDER_NAME, L"New Name");
                user.Paste(IDC_SUBJECT, L"New Subject");
                user.Press(IDC_SUPERFINE);
                user.Press(IDOK);
            },
            [](ScriptedUser& user) {
                user.GoToPage(kFaxJobPage);
                Fill(user, kBob);
                user.Paste(IDC_BILLING_CODE, L"0042");
            },
        };
        AddSend(steps);
        return steps;
    }
    Job Typed() const override { return {{kBob}, NewDefaults(), L"0042"}; }
    std::vector<UserDefaults> Given() const override { return {OldDefaults(), NewDefaults()}; }
    Verdict JudgeEnded() override
    {
        const Verdict stored = JudgeDefaults(Session().StoredDefaults(), NewDefaults());
        return stored.kind == Kind::Wrong ? stored : Sending::JudgeEnded();
    }

    static UserDefaults NewDefaults()
    {
        UserDefaults wanted = OldDefaults();
        wanted[L"SenderName"] = L"New Name";
        wanted[L"CoverPageSubject"] = L"New Subject";
        wanted[L"Resolution"] = 2u;
        return wanted;
    }
};

class OldAddressBook : public Scenario {
    void Prepare() override
    {
        const std::wstring data =
            L"System\\CurrentControlSet\\Control\\Print\\Printers\\" + Session().Printer() + L"\\" + kData;
        RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, data.c_str(), kVersion); // not every spooler here forgets a value
        UniqueKey key;
        RegCreateKeyW(HKEY_CURRENT_USER, Key().c_str(), key.Receive());
        constexpr wchar_t kIda[] = L"Ida\0"
                                   L"41\0Inn\0";
        constexpr wchar_t kJan[] = L"Jan\0"
                                   L"42\0\0";
        RegSetValueExW(key.Get(), L"first", 0, REG_MULTI_SZ, reinterpret_cast<const BYTE*>(kIda), sizeof kIda);
        RegSetValueExW(key.Get(), L"second", 0, REG_MULTI_SZ, reinterpret_cast<const BYTE*>(kJan), sizeof kJan);
    }
    Script Steps() override { return {}; }
    Verdict Judge(const FaxJobData& record) override
    {
        if (record.Cancelled == 0)
            return {Kind::Wrong, "sent"};
        const SavedItem ida{L"Ida", L"41", L"Inn", {}}, jan{L"Jan", L"42", L"", {}};
        std::vector<Items> accepted;
        for (const Items& added : {Items{ida, jan}, Items{ida}, Items{jan}}) { // a value that cannot be read is skipped
            accepted.push_back(OldBook());
            accepted.back().insert(accepted.back().end(), added.begin(), added.end());
        }
        const Verdict book = JudgeBook(accepted);
        // Kept: the version is written whatever came of the import. The old values stay where they are.
        for (const wchar_t* const value : {L"first", L"second"}) {
            if (RegGetValueW(HKEY_CURRENT_USER, Key().c_str(), value, RRF_RT_REG_MULTI_SZ, nullptr, nullptr, nullptr) !=
                ERROR_SUCCESS)
                return {Kind::Wrong, "old values lost"};
        }
        return book;
    }

    std::wstring Key() const { return Session().SettingsKey() + L"\\QX-FAX\\Address Book"; }

    static constexpr wchar_t kData[] = L"QXPresetRoot", kVersion[] = L"Version";
};

// ---- help

class Help : public Scenario {
    void Prepare() override
    {
        HelpViewerStandIn::OfThisProgram().TakeRequests();
        std::error_code ignored;
        std::filesystem::remove(File(), ignored);
    }
    Script Steps() override
    {
        return {
            [](ScriptedUser& user) {
                user.GoToPage(kFaxJobPage);
                user.AskForHelp(IDC_FAX_NUMBER);
            },
            [](ScriptedUser& user) { user.PressSheet(IDHELP); },
        };
    }
    Verdict Judge(const FaxJobData& record) override
    {
        if (record.Cancelled == 0)
            return {Kind::Wrong, "sent"};
        const std::string help = ReadBytes(File());
        if (whole_.empty())
            whole_ = help; // by the first session, in which nothing fails
        if (help != whole_ && help != "<no file>")
            return {Kind::Wrong, "part of a help file"};
        const std::vector<HelpRequest> shown = HelpViewerStandIn::OfThisProgram().TakeRequests();
        for (const HelpRequest& request : shown) {
            if (help != whole_ || !std::wstring(request.page).starts_with(File().wstring() + L"::"))
                return {Kind::Wrong, "help that is not there"};
        }
        const Verdict book = JudgeBook({});
        if (book.kind == Kind::Wrong)
            return book;
        if (shown.size() == 2)
            return {Kind::AsAsked, "shown"};
        return {Kind::Less, shown.empty() ? "no help" : "shown once"};
    }
    Verdict JudgeEnded() override
    {
        const std::string help = ReadBytes(File());
        if (help != whole_ && help != "<no file>")
            return {Kind::Wrong, "part of a help file"};
        return JudgeBook({});
    }
    Verdict JudgeNext(const Items& items) override
    {
        return ReadBytes(File()) == whole_ ? Scenario::JudgeNext(items) : Verdict{Kind::Wrong, "no help any more"};
    }

    std::filesystem::path File() const { return TemporaryFiles() / UsersHelpFile(); }

    std::string whole_;
};

} // namespace

// ---- what all have in common

SessionOptions Scenario::Options() const
{
    SessionOptions options = WithDevice(L"EMAIL-SERVICE-OPERATIONAL", 1u);
    options.printer.SetDevice(L"FAX_BILLING_CODE_ENABLED", 1u);
    return options;
}

BookText Scenario::Book() const
{
    return BookText()
        .Entry(1, L"Dora", L"31", L"Dairy")
        .Entry(2, L"Emil", L"32", L"Estate & Co")
        .Entry(3, L"Finn", L"33")
        .Entry(4, L"Gerda", L"34", L"Garage")
        .Entry(5, L"Hans", L"35")
        .Group(6, L"Team", {1, 3, 5})
        .Group(7, L"Two", {2, 4});
}

void Scenario::Enter(PhoneBookSession* session, std::filesystem::path folder)
{
    session_ = session;
    folder_ = std::move(folder);
}

std::filesystem::path Scenario::TemporaryFiles() const
{
    return std::filesystem::temp_directory_path();
}

Verdict Scenario::JudgeEnded()
{
    FaxJobData record;
    QxFaxInitJob(&record);
    return Judge(record);
}

std::vector<ScriptedUser::Step> Scenario::NextSteps()
{
    return {[](ScriptedUser& user) {
        user.GoToPage(kFaxJobPage);
        Fill(user, kZoe);
        user.Press(IDC_ADD_TO_PHONE_BOOK);
    }};
}

Verdict Scenario::JudgeNext(const Items& items)
{
    Items expected = items;
    expected.push_back({kZoe.name, kZoe.faxNumber, kZoe.company, {}});
    const Items now = Session().SavedBook();
    for (const SavedItem& item : expected) {
        if (!IsAmong(now, item))
            return {Kind::Wrong, "the next session lacks an item"};
    }
    const std::filesystem::path file = Session().PhoneBookFile();
    for (const auto& entry : std::filesystem::directory_iterator(file.parent_path())) {
        const std::wstring name = entry.path().filename().wstring();
        if (name.starts_with(file.filename().wstring()) && entry.path() != file && !name.ends_with(L".bak"))
            return {Kind::Wrong, "a file is left beside the phone book"};
    }
    for (const auto& entry : std::filesystem::directory_iterator(TemporaryFiles())) {
        if (entry.path().extension() != L".CHM")
            return {Kind::Wrong, "a temporary file is left"};
    }
    return {Kind::AsAsked, "the next session finds all"};
}

void Scenario::Reset()
{
    namespace fs = std::filesystem;
    const fs::path file = Session().PhoneBookFile();
    for (const auto& entry : fs::directory_iterator(TemporaryFiles())) {
        if (entry.path().extension() != L".CHM")
            fs::remove_all(entry.path());
    }
    for (const fs::path& folder : {file.parent_path(), fs::path(L"\\")}) { // with a documents folder, and without
        for (const auto& entry : fs::directory_iterator(folder)) {
            if (entry.path().filename().wstring().starts_with(file.filename().wstring())) {
                SetFileAttributesW(entry.path().c_str(), FILE_ATTRIBUTE_NORMAL);
                fs::remove(entry.path());
            }
        }
    }
    Session().WritePhoneBook(Book().Text());
    if (oldBook_.empty())
        oldBook_ = Session().SavedBook();
    Prepare();
}

Verdict Scenario::JudgeUnsent(const FaxJobData& record, const std::vector<UserDefaults>& given) const
{
    if (record.Cancelled != TRUE && record.Cancelled != kOutcomeUnknown)
        return {Kind::Wrong, "an outcome that there is not"};
    std::vector<UserDefaults> all = given;
    all.push_back(NewSettings());
    all.push_back({{L"ApplyDefaults", 0u}}); // not read
    for (const auto& [name, value] : DefaultsOf(record)) {
        const auto has = [&](const UserDefaults& one) { return one.contains(name) && one.at(name) == value; };
        if (value != DefaultValue(L"<null>") && value != DefaultValue(L"") && std::ranges::none_of(all, has))
            return {Kind::Wrong, "not sent, but changed: " + host::Utf8(name)};
    }
    if (!OrNothing(record.BillingCode).empty())
        return {Kind::Wrong, "not sent, but changed: billing code"};
    return {Kind::Less, record.Cancelled == TRUE ? "cancelled" : "no sheet"};
}

bool Scenario::KeepsIds(const Items& items) const
{
    return std::ranges::all_of(items, [&](const SavedItem& item) {
        return std::ranges::all_of(
            OldBook(), [&](const SavedItem& old) { return (item.name == old.name) == (item.id == old.id); });
    });
}

bool Scenario::AreKept(const Items& items) const
{
    return std::ranges::any_of(KeptCopies(Session().PhoneBookFile()), [&](const std::wstring& file) {
        const Items copy = SavedIn(file);
        return AreSound(copy) && KeepsIds(copy) &&
               std::ranges::all_of(items, [&](const SavedItem& item) { return IsAmong(copy, item); });
    });
}

Verdict Scenario::JudgeBook(const std::vector<Items>& accepted) const
{
    const Items now = Session().SavedBook();
    const auto isNow = [&](const Items& items) { return AreSame(items, now); };
    if (AreSound(now) && KeepsIds(now)) {
        if (!accepted.empty() && isNow(accepted.front()))
            return {Kind::AsAsked, "saved"};
        if (isNow(OldBook()))
            return {accepted.empty() ? Kind::AsAsked : Kind::Less, "book as it was"};
        if (std::ranges::any_of(accepted, isNow))
            return {Kind::Less, "saved in part"};
    }
    // What could not be read is kept beside what took its place: as it was, or as an earlier save of the session left
    // it.
    const Items& most = accepted.empty() ? OldBook() : accepted.front();
    const auto isKnown = [&](const SavedItem& item) { return IsAmong(most, item); };
    if (AreSound(now) && std::ranges::all_of(now, isKnown) && AreKept(OldBook()))
        return {Kind::Less, "book in the kept copy"};
    return Lost();
}

Verdict Scenario::Lost() const
{
    std::string items;
    for (const SavedItem& item : Session().SavedBook()) {
        items +=
            " [" + std::to_string(item.id) + " " + host::Utf8(item.name + L"/" + item.faxNumber + L"/" + item.company);
        for (const auto id : item.members)
            items += " " + std::to_string(id);
        items += "]";
    }
    return {Kind::Wrong, "book lost:" + items};
}

template <class Made> std::unique_ptr<Scenario> Make()
{
    return std::make_unique<Made>();
}

std::span<const NamedScenario> AllScenarios()
{
    static constexpr NamedScenario kScenarios[] = {
        {"type_and_send", Make<TypeAndSend>},
        {"add_to_phone_book", Make<AddToPhoneBook>},
        {"open_and_cancel", Make<OpenAndCancel>},
        {"edit_phone_book", Make<EditPhoneBook>},
        {"pick_and_send", Make<PickAndSend>},
        {"import", Make<Import>},
        {"edit_defaults", Make<EditDefaults>},
        {"export", Make<Export>},
        {"old_address_book", Make<OldAddressBook>},
        {"help", Make<Help>},
        {"edit_defaults_and_send", Make<EditDefaultsAndSend>},
    };
    return kScenarios;
}

} // namespace qx::test
