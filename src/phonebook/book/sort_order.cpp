#include "phonebook/book/sort_order.h"

#include "base/text.h"
#include "base/user_text_key.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <span>
#include <string>

namespace qx {

namespace {

// What the order looks at. The comparison of two items leaves some pairs open: a group and an entry of one name, and a
// field that was never set against any other. Settled as here (groups first, never set as empty) the order is a
// strict one, and entries of one name stay in order also around a group of that name.
struct SortFields {
    std::wstring_view name;
    bool isEntry = false;
    std::wstring_view faxNumber; // of entries
    std::wstring_view company;
};

SortFields FieldsOf(const PhoneBookItem& item) noexcept
{
    SortFields fields;
    fields.name = item.GetName();
    if (const PhoneBookEntry* const entry = AsEntry(&item)) {
        fields.isEntry = true;
        fields.faxNumber = OrEmpty(entry->FaxNumber());
        fields.company = OrEmpty(entry->Company());
    }
    return fields;
}

// By the stated comparison itself.
bool ComesBefore(const PhoneBookItem* left, const PhoneBookItem* right) noexcept
{
    const SortFields a = FieldsOf(*left);
    const SortFields b = FieldsOf(*right);
    if (const int order = CompareUserText(a.name, b.name); order != CSTR_EQUAL)
        return order == CSTR_LESS_THAN;
    if (a.isEntry != b.isEntry)
        return b.isEntry;
    if (const int order = CompareUserText(a.faxNumber, b.faxNumber); order != CSTR_EQUAL)
        return order == CSTR_LESS_THAN;
    return CompareUserText(a.company, b.company) == CSTR_LESS_THAN;
}

// What an item is sorted by next.
struct KeyedItem {
    std::uint64_t start = 0; // the first bytes of the key, which nearly always decide
    std::uint32_t offset = 0;
    std::uint32_t bytes = 0;
    PhoneBookItem* item = nullptr;
};

// By one field after the other: the later ones hardly ever count, and need no keys then.
class KeySorter {
public:
    explicit KeySorter(std::size_t items)
    {
        constexpr std::size_t kUsualBytes = 100; // of an item's keys
        keyed_.reserve(items);
        keys_.reserve(items * kUsualBytes);
    }

    // False when keys do not decide for the item's name.
    bool Take(PhoneBookItem* item)
    {
        KeyedItem keyed{.item = item};
        if (!TakeKey(keyed, item->GetName()))
            return false;
        keys_ += item->IsGroup() ? '\1' : '\2';
        ++keyed.bytes;
        keyed_.push_back(keyed);
        return true;
    }

    std::vector<PhoneBookItem*> Sorted()
    {
        SortByKeys(keyed_);
        ForEachRun(keyed_, [this](std::span<KeyedItem> run) { SortByField(run, &PhoneBookEntry::FaxNumber); });
        std::vector<PhoneBookItem*> items;
        items.reserve(keyed_.size());
        for (const KeyedItem& keyed : keyed_)
            items.push_back(keyed.item);
        return items;
    }

private:
    using Field = const wchar_t* (PhoneBookEntry::*)() const noexcept;

    bool TakeKey(KeyedItem& keyed, std::wstring_view text)
    {
        const std::size_t offset = keys_.size();
        const bool taken = textKeys_.AppendDeciding(keys_, text);
        keyed.offset = Narrow(offset);
        keyed.bytes = Narrow(keys_.size() - offset);
        return taken;
    }

    // Items of one kind that are equal so far.
    void SortByField(std::span<KeyedItem> items, Field field)
    {
        if (items.front().item->IsGroup())
            return;
        if (!std::all_of(items.begin(), items.end(),
                         [&](KeyedItem& keyed) { return TakeKey(keyed, OrEmpty((AsEntry(keyed.item)->*field)())); })) {
            std::stable_sort(items.begin(), items.end(),
                             [](const KeyedItem& a, const KeyedItem& b) { return ComesBefore(a.item, b.item); });
            return;
        }
        SortByKeys(items);
        if (field == &PhoneBookEntry::FaxNumber)
            ForEachRun(items, [this](std::span<KeyedItem> run) { SortByField(run, &PhoneBookEntry::Company); });
    }

    // Leaves the items with the part of their keys behind what all have in common.
    void SortByKeys(std::span<KeyedItem> items)
    {
        const std::uint32_t common = CommonBytes(items);
        for (KeyedItem& keyed : items) {
            keyed.offset += common;
            keyed.bytes -= common;
            keyed.start = FirstBytes(KeyOf(keyed));
        }
        std::sort(items.begin(), items.end(), [this](const KeyedItem& a, const KeyedItem& b) {
            return a.start != b.start ? a.start < b.start : KeyOf(a) < KeyOf(b);
        });
    }

    // Calls visit for each two or more items in a row whose keys are equal.
    template <class Visit> void ForEachRun(std::span<KeyedItem> items, Visit visit)
    {
        for (std::size_t begin = 0; begin < items.size();) {
            std::size_t end = begin + 1;
            while (end < items.size() && KeyOf(items[end]) == KeyOf(items[begin]))
                ++end;
            if (end - begin > 1)
                visit(items.subspan(begin, end - begin));
            begin = end;
        }
    }

    std::string_view KeyOf(const KeyedItem& item) const noexcept { return {keys_.data() + item.offset, item.bytes}; }

    // Offsets into the keys, which are far below four gigabytes.
    static std::uint32_t Narrow(std::size_t offset) noexcept { return static_cast<std::uint32_t>(offset); }

    // With which all keys start.
    std::uint32_t CommonBytes(std::span<const KeyedItem> items) const noexcept
    {
        if (items.empty())
            return 0;
        std::string_view common = KeyOf(items.front());
        for (const KeyedItem& keyed : items) {
            const std::string_view key = KeyOf(keyed);
            const auto [end, ignored] = std::mismatch(common.begin(), common.end(), key.begin(), key.end());
            common = {common.begin(), end};
        }
        return Narrow(common.size());
    }

    static std::uint64_t FirstBytes(std::string_view key) noexcept
    {
        std::uint64_t start = 0;
        for (std::size_t i = 0; i < sizeof start; ++i)
            start = start << 8 | (i < key.size() ? static_cast<unsigned char>(key[i]) : 0u);
        return start;
    }

    UserTextKeys textKeys_;
    std::string keys_;
    std::vector<KeyedItem> keyed_;
};

} // namespace

void SortItems(std::vector<PhoneBookItem*>& items, bool ascending)
{
    KeySorter byKey(items.size());
    std::vector<PhoneBookItem*> others;
    for (PhoneBookItem* const item : items) {
        if (!byKey.Take(item))
            others.push_back(item);
    }
    std::stable_sort(others.begin(), others.end(), ComesBefore);

    const std::vector<PhoneBookItem*> keyed = byKey.Sorted();
    std::vector<PhoneBookItem*> sorted;
    sorted.reserve(items.size());
    std::merge(keyed.begin(), keyed.end(), others.begin(), others.end(), std::back_inserter(sorted), ComesBefore);
    if (!ascending)
        std::reverse(sorted.begin(), sorted.end());
    items = std::move(sorted);
}

} // namespace qx
