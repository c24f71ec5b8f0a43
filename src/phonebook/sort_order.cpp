#include "phonebook/sort_order.h"

#include "base/text.h"
#include "base/user_text_key.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

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

// One chained key for all fields of an item. The first bytes stand in the record, since they nearly always decide.
struct KeyedItem {
    std::uint64_t start = 0;
    std::size_t offset = 0;
    std::size_t bytes = 0;
    PhoneBookItem* item = nullptr;
};

std::uint64_t FirstBytes(std::string_view key) noexcept
{
    std::uint64_t start = 0;
    for (std::size_t i = 0; i < sizeof start; ++i)
        start = start << 8 | (i < key.size() ? static_cast<unsigned char>(key[i]) : 0u);
    return start;
}

class KeySorter {
public:
    // False when keys do not decide for a text of the item.
    bool Take(PhoneBookItem* item)
    {
        const SortFields fields = FieldsOf(*item);
        const std::size_t offset = keys_.size();
        if (!AppendKeys(fields)) {
            keys_.resize(offset);
            return false;
        }
        const std::string_view key = std::string_view(keys_).substr(offset);
        keyed_.push_back({FirstBytes(key), offset, key.size(), item});
        return true;
    }

    std::vector<PhoneBookItem*> Sorted()
    {
        std::sort(keyed_.begin(), keyed_.end(), [this](const KeyedItem& a, const KeyedItem& b) {
            return a.start != b.start ? a.start < b.start : KeyOf(a) < KeyOf(b);
        });
        std::vector<PhoneBookItem*> items;
        items.reserve(keyed_.size());
        for (const KeyedItem& keyed : keyed_)
            items.push_back(keyed.item);
        return items;
    }

private:
    bool AppendKeys(const SortFields& fields)
    {
        if (!AppendKey(fields.name))
            return false;
        keys_ += fields.isEntry ? '\2' : '\1';
        return !fields.isEntry || (AppendKey(fields.faxNumber) && AppendKey(fields.company));
    }

    bool AppendKey(std::wstring_view text) { return UserTextKeys::Decide(text) && textKeys_.Append(keys_, text); }

    std::string_view KeyOf(const KeyedItem& item) const noexcept
    {
        return std::string_view(keys_).substr(item.offset, item.bytes);
    }

    UserTextKeys textKeys_;
    std::string keys_;
    std::vector<KeyedItem> keyed_;
};

} // namespace

void SortItems(std::vector<PhoneBookItem*>& items, bool ascending)
{
    KeySorter byKey;
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
