// Never the wrong recipient: random users against the real page and a small model of what they see.
//
// The model knows the rows that must stand in the list and in the job record, and the recent recipients. What "To ->"
// adds it reads off the fields, as the user does: the group whose text is shown, or else name, number and company. Only
// where the name has become another suggestion's and the user has not touched number and company since they were
// filled, that suggestion may be added instead. No fax ever goes to a known name with a number that is not that name's,
// unless the user put the number there, and no Send leaves out a number that was in sight until then. Every second user
// has a combo box that behaves as on Windows. The suite plays 30000 events; QX_SEEDS=1,40 plays 100000,
// QX_SEEDS=first,count any other sequences.
#include "host/utf8.h"
#include "support/fax_job_page_stand.h"
#include "support/string_library.h"
#include "support/thorough.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <random>

namespace qx::test {
namespace {

constexpr int kEventsPerSequence = 2500;
constexpr std::size_t kRecentSlots = 20;

struct ModelItem {
    Row entry;        // of a group: its name
    int members = -1; // -1: an entry
    bool IsGroup() const { return members >= 0; }
};

bool SameItem(const ModelItem& a, const ModelItem& b)
{
    return a.IsGroup() == b.IsGroup() && EqualUserText(a.entry.name, b.entry.name) &&
           (a.IsGroup() || EqualUserText(a.entry.faxNumber, b.entry.faxNumber));
}

class Model {
public:
    std::vector<Row> rows;
    std::vector<ModelItem> recent; // the most recent first
    std::vector<Row> known;        // every entry that was ever suggested

    void Remember(const ModelItem& item)
    {
        if (item.entry.name.empty())
            return;
        if (!item.IsGroup())
            known.push_back(item.entry);
        const auto found = std::ranges::find_if(recent, [&](const ModelItem& r) { return SameItem(r, item); });
        if (found != recent.end())
            recent.erase(found);
        recent.insert(recent.begin(), item);
        recent.resize(std::min(recent.size(), kRecentSlots));
    }
    bool HasGroup(const std::wstring& name) { return FindGroup(name) != recent.end(); }
    // The suggestion of that name: the one of the same letters first. Blanks suggest nobody.
    const ModelItem* Suggestion(const std::wstring& name) const
    {
        if (name.find_first_not_of(L' ') == std::wstring::npos)
            return nullptr;
        auto found = std::ranges::find(recent, name, [](const ModelItem& r) { return r.entry.name; });
        if (found == recent.end())
            found = std::ranges::find_if(recent, [&](const ModelItem& r) { return EqualUserText(r.entry.name, name); });
        return found != recent.end() ? &*found : nullptr;
    }
    bool Knows(const std::wstring& name, const std::wstring& faxNumber) const
    {
        return std::ranges::any_of(
            known, [&](const Row& r) { return EqualUserText(r.name, name) && r.faxNumber == faxNumber; });
    }
    void AddEntry(const Row& row)
    {
        if (rows.size() >= 100)
            return;
        rows.push_back(row);
        Remember({row});
    }
    void AddGroup(const std::wstring& name)
    {
        const auto group = FindGroup(name);
        if (rows.size() + static_cast<std::size_t>(group->members) > 100)
            return;
        for (int i = 1; i <= group->members; ++i)
            rows.push_back({group->entry.name + L" " + std::to_wstring(i), L"900" + std::to_wstring(i), L""});
        Remember(ModelItem(*group));
    }

private:
    std::vector<ModelItem>::iterator FindGroup(const std::wstring& name)
    {
        return std::ranges::find_if(
            recent, [&](const ModelItem& r) { return r.IsGroup() && EqualUserText(r.entry.name, name); });
    }
};

class User {
public:
    explicit User(unsigned seed) : random_(seed)
    {
        if (seed % 2 == 0)
            stand_.UseWindowsComboBox();
        stand_.Page().hStringDll = library_.Module();
        Know({{L"Team", L"", L""}, 3});
        Know({{L"Anna", L"111", L"Orchard"}});
        Know({{L"anna", L"222", L""}});
        Know({{L"Team", L"333", L"Not the group"}});
        Know({{L"Andrew", L"444", L"Mill"}});
        Know({{L"Tea party", L"", L""}, 12});
        Know({{L"\x5D0\x5D1\x5D2", L"555", L""}});
        Know({{L"\xD83D\xDE00", L"666", L""}});
        Know({{L"Nobody", L"no number", L""}});
        stand_.Show(FaxJobPageStand::Sheet::Hidden);
    }

    void Act()
    {
        const Row before = Fields();
        pasted_ = false;
        if (Pick(27) < 20)
            ActInNameBox();
        else
            ActElsewhere();
        const Row after = Fields();
        // The page fills the fields from the name; what the user puts into them is the user's.
        if (before.faxNumber != after.faxNumber || before.company != after.company)
            touched_ = pasted_;
    }

    void Check()
    {
        ASSERT_EQ(stand_.Job().RecipientCount, static_cast<INT32>(model_.rows.size()));
        ASSERT_EQ(ListView_GetItemCount(stand_.Control(IDC_RECIPIENTS)), static_cast<int>(model_.rows.size()));
        ASSERT_NE(stand_.IsVisible(IDC_GROUP_TEXT), stand_.IsVisible(IDC_FAX_NUMBER));
        const std::wstring name = stand_.Text(IDC_NAME_BOX);
        ASSERT_TRUE(!stand_.IsVisible(IDC_GROUP_TEXT) || model_.HasGroup(name)) << host::Utf8(name);
        ASSERT_EQ(stand_.IsEnabled(IDC_TO), stand_.Text(ShownNumber()) != L"");
        if (GetFocus() != stand_.Page().fields.nameBox.edit)
            CheckPair(Fields());
        if (!std::exchange(changed_, false))
            return;
        ASSERT_EQ(stand_.Rows(), model_.rows);
        ASSERT_EQ(stand_.Recipients(), model_.rows);
        ASSERT_EQ(RecentNames(), ModelNames());
    }

private:
    void ActInNameBox()
    {
        SetFocus(stand_.Page().fields.nameBox.edit);
        switch (Pick(20)) {
        case 0:
        case 1:
        case 2:
        case 3:
            Type();
            break;
        case 4:
            stand_.PressNameKey(VK_BACK);
            break;
        case 5:
            PasteName();
            break;
        case 6:
            stand_.PressNameKey(VK_DELETE);
            break;
        case 7:
            PressListKey();
            break;
        case 8:
        case 9:
            stand_.PressNameKey(VK_RETURN);
            break;
        case 10:
            stand_.PressNameKey(VK_ESCAPE);
            break;
        case 11:
        case 12:
            ClickOrHover();
            break;
        case 13:
            stand_.DropNames(true);
            break;
        case 14:
            SelectSomeOfTheName();
            break;
        case 15:
            stand_.PressNameKey(Pick(2) ? VK_END : VK_HOME);
            break;
        case 16:
            OpenByKey();
            break;
        case 17:
            TurnWheel();
            break;
        case 18:
            Compose();
            break;
        case 19:
            Leave();
            break;
        }
    }
    void ActElsewhere()
    {
        switch (Pick(7)) {
        case 0:
        case 1:
            AddRecipient();
            break;
        case 2:
            Delete();
            break;
        case 3:
            ClearSometimes();
            break;
        case 4:
            stand_.Notify(static_cast<UINT>(PSN_SETACTIVE));
            break;
        case 5:
            PasteField();
            break;
        case 6:
            Send();
            break;
        }
    }

    Row Fields() { return {stand_.Text(IDC_NAME_BOX), stand_.Text(IDC_FAX_NUMBER), stand_.Text(IDC_COMPANY)}; }

    // A known name has a number of its own or one that the user put there.
    void CheckPair(const Row& row)
    {
        const bool right = row.faxNumber.empty() || touched_ || model_.Suggestion(row.name) == nullptr ||
                           model_.Knows(row.name, row.faxNumber);
        EXPECT_TRUE(right) << row;
    }

    int Pick(int below) { return static_cast<int>(random_() % static_cast<unsigned>(below)); }
    int ShownNumber() { return stand_.IsVisible(IDC_GROUP_TEXT) ? IDC_GROUP_TEXT : IDC_FAX_NUMBER; }

    void Know(const ModelItem& item)
    {
        if (item.IsGroup())
            stand_.AddRecentGroup(item.entry.name.c_str(), item.members);
        else
            stand_.AddRecentEntry(item.entry.name.c_str(), item.entry.faxNumber.c_str(), item.entry.company.c_str());
        model_.Remember(item);
    }

    void Type()
    {
        constexpr std::wstring_view kKeys = L"aAnNtTeEdbx m\x5D0\xD83D\xDE00\x0301";
        stand_.TypeName(std::wstring(1, kKeys[static_cast<std::size_t>(Pick(static_cast<int>(kKeys.size())))]));
    }
    void PasteName()
    {
        const wchar_t* const texts[] = {L"Team", L"anna", L"An", L"Somebody", L" ", L"", L"Tea party", L"NOBODY"};
        stand_.SetText(IDC_NAME_BOX, texts[Pick(static_cast<int>(std::size(texts)))]);
    }
    void PasteField()
    {
        const wchar_t* const texts[] = {L"5550100", L"", L"(030)1,#", L"+1", L"12a"};
        const int field = Pick(3) != 0 ? IDC_FAX_NUMBER : IDC_COMPANY;
        pasted_ = true;
        if (stand_.IsEnabled(field))
            stand_.SetText(field, texts[Pick(static_cast<int>(std::size(texts)))]);
    }
    void ClickOrHover()
    {
        const int count = static_cast<int>(SendMessageW(List(), LB_GETCOUNT, 0, 0));
        if (!stand_.NamesShown() || count == 0)
            return;
        RECT row{};
        SendMessageW(List(), LB_GETITEMRECT, static_cast<WPARAM>(Pick(count)), reinterpret_cast<LPARAM>(&row));
        const LPARAM point = MAKELPARAM(row.left + 2, row.top + 2);
        SendMessageW(List(), WM_MOUSEMOVE, 0, point);
        if (Pick(2) == 0)
            return;
        SendMessageW(List(), WM_LBUTTONDOWN, MK_LBUTTON, point);
        SendMessageW(List(), WM_LBUTTONUP, 0, point);
    }
    void ClearSometimes()
    {
        if (Pick(4) == 0)
            stand_.Press(IDC_CLEAR_FIELDS);
    }
    void SelectSomeOfTheName()
    {
        SendMessageW(stand_.Page().fields.nameBox.edit, EM_SETSEL, static_cast<WPARAM>(Pick(4)), Pick(8));
    }
    void Leave() { SetFocus(stand_.Control(Pick(2) ? IDC_COMPANY : IDC_RECIPIENTS)); }
    void PressListKey()
    {
        constexpr WPARAM kKeys[] = {VK_DOWN, VK_DOWN, VK_UP, VK_UP, VK_NEXT, VK_PRIOR};
        stand_.PressNameKey(kKeys[Pick(static_cast<int>(std::size(kKeys)))]);
    }
    void OpenByKey()
    {
        if (Pick(2) == 0)
            stand_.PressNameKey(VK_F4);
        else
            stand_.PressAltNameKey(Pick(2) ? VK_DOWN : VK_UP);
    }
    void TurnWheel()
    {
        const HWND window = Pick(2) ? stand_.Page().fields.nameBox.edit : stand_.Page().fields.nameBox.combo;
        SendMessageW(window, WM_MOUSEWHEEL, MAKEWPARAM(0, Pick(2) ? WHEEL_DELTA : -WHEEL_DELTA), 0);
    }
    void Compose()
    {
        stand_.Compose(L"an");
        if (Pick(4) == 0)
            Leave();
        stand_.EndComposition();
    }

    // The page takes the fields as they are or, where it may, what the name has become.
    void TakeFields(const Row& fields, const std::vector<Row>& taken)
    {
        const ModelItem* const other = touched_ ? nullptr : model_.Suggestion(fields.name);
        if (taken.size() == 1 && !(taken[0] == fields)) {
            ASSERT_NE(other, nullptr) << taken[0];
            ASSERT_EQ(taken[0], (Row{fields.name, other->entry.faxNumber, other->entry.company}));
        }
        if (taken.size() == 1)
            CheckPair(taken[0]);
    }
    void AddRecipient()
    {
        if (!stand_.IsEnabled(IDC_TO))
            return;
        changed_ = true;
        const Row fields = Fields();
        const std::size_t rows = model_.rows.size();
        const ModelItem* const suggestion = touched_ ? nullptr : model_.Suggestion(fields.name);
        const bool isGroup = stand_.IsVisible(IDC_GROUP_TEXT);
        const ModelItem other = suggestion != nullptr ? *suggestion : ModelItem{};
        stand_.Press(IDC_TO);
        const std::vector<Row> all = stand_.Recipients();
        if (isGroup || (other.IsGroup() && !(all.size() == rows + 1 && all.back() == fields))) {
            model_.AddGroup(fields.name);
            return;
        }
        if (all.size() == rows) { // no room, or a name that has become one without a number
            const bool without = suggestion != nullptr && stand_.Text(IDC_FAX_NUMBER).empty();
            ASSERT_TRUE(rows >= 100 || without) << fields;
            return;
        }
        TakeFields(fields, {all.begin() + static_cast<std::ptrdiff_t>(rows), all.end()});
        model_.AddEntry(all.back());
    }
    // With every other Send the other page refuses. After one that is accepted the sheet would be gone: what it added
    // to the record is taken back, and the user goes on.
    void Send()
    {
        if (model_.rows.empty() || model_.rows.size() >= 100)
            return;
        changed_ = true;
        const Row fields = Fields();
        const std::size_t rows = model_.rows.size();
        const bool refused = Pick(2) == 0;
        stand_.LetTheOtherPageRefuse(refused);
        const bool accepted = stand_.Send();
        const bool shows = !stand_.Text(IDC_FAX_NUMBER).empty();
        const std::vector<Row> all = stand_.Recipients();
        ASSERT_EQ(all.size(), accepted && shows && !refused ? rows + 1 : rows);
        ASSERT_FALSE(accepted && !shows && !fields.faxNumber.empty()) << fields; // nobody has seen the number go
        if (!accepted) {
            ASSERT_FALSE(shows);
            ASSERT_TRUE(stand_.Send());
            ASSERT_EQ(stand_.Recipients().size(), rows);
        }
        if (all.size() > rows) {
            TakeFields(fields, {all.back()});
            model_.Remember({all.back()});
            DeleteRecipient(stand_.Job(), static_cast<INT32>(rows));
        }
    }
    void Delete()
    {
        std::vector<int> selected;
        for (int row = 0; row < static_cast<int>(model_.rows.size()); ++row) {
            if (Pick(3) == 0)
                selected.push_back(row);
        }
        stand_.SelectRows(selected);
        for (auto row = selected.rbegin(); row != selected.rend(); ++row)
            model_.rows.erase(model_.rows.begin() + *row);
        changed_ = true;
        if (Pick(2) == 0)
            stand_.Press(IDC_DELETE);
        else
            stand_.PressListKey(VK_DELETE);
    }

    std::vector<std::wstring> RecentNames()
    {
        std::vector<std::wstring> names;
        for (const PhoneBookItem* item : stand_.Page().recent->Slots()) {
            if (item != nullptr)
                names.push_back(item->GetName());
        }
        return names;
    }
    std::vector<std::wstring> ModelNames()
    {
        std::vector<std::wstring> names;
        for (const ModelItem& item : model_.recent)
            names.push_back(item.entry.name);
        return names;
    }
    HWND List() { return stand_.Page().fields.nameBox.list; }

    StringLibrary library_;
    FaxJobPageStand stand_;
    Model model_;
    std::mt19937 random_;
    bool changed_ = false;
    bool pasted_ = false;  // by the present act
    bool touched_ = false; // number or company are the user's
};

struct Seeds {
    unsigned first = 1;
    unsigned count = static_cast<unsigned>(Rounds(4, 12));
};

Seeds ChosenSeeds()
{
    Seeds seeds;
    if (const char* const chosen = std::getenv("QX_SEEDS"))
        std::sscanf(chosen, "%u,%u", &seeds.first, &seeds.count);
    return seeds;
}

TEST(FaxJobModel, TheRecordAlwaysHoldsTheRowsAndEveryRowIsWhatTheFieldsShowed)
{
    const Seeds seeds = ChosenSeeds();
    std::printf("seeds %u to %u, %d events each\n", seeds.first, seeds.first + seeds.count - 1, kEventsPerSequence);
    for (unsigned seed = seeds.first; seed < seeds.first + seeds.count; ++seed) {
        User user(seed);
        for (int event = 0; event < kEventsPerSequence; ++event) {
            user.Act();
            user.Check();
            ASSERT_FALSE(HasFailure()) << "seed " << seed << ", event " << event;
        }
    }
}

} // namespace
} // namespace qx::test
