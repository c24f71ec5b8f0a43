#include "phonebook/book/sort_order.h"

#include "base/text.h"
#include "base/user_text_key.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>

namespace qx {

namespace {

// By the stated comparison itself. That leaves some pairs open: a group and an entry of one name, and a field that was
// never set against any other. Settled as here (groups first, never set as empty) the order is a strict one, and
// entries of one name stay in order also around a group of that name.
bool ComesBefore(const PhoneBookItem* left, const PhoneBookItem* right) noexcept
{
    const PhoneBookEntry* const a = AsEntry(left);
    const PhoneBookEntry* const b = AsEntry(right);
    if (a != nullptr && b != nullptr)
        return CompareEntries(*a, *b, UnsetField::IsEmpty) == CSTR_LESS_THAN;
    const int order = CompareUserText(left->GetName(), right->GetName());
    return order != CSTR_EQUAL ? order == CSTR_LESS_THAN : a == nullptr && b != nullptr;
}

struct KeyedItem {
    std::uint64_t start = 0; // the first bytes of the key, which nearly always decide
    std::uint32_t offset = 0;
    std::uint32_t bytes = 0;
    PhoneBookItem* item = nullptr;
};

// All keys lie in one text: an allocation for each would take as long as the sorting.
class KeySorter {
public:
    explicit KeySorter(std::size_t items)
    {
        constexpr std::size_t kUsualBytes = 100; // of an item's keys
        keyed_.reserve(items);
        keys_.reserve(items * kUsualBytes);
    }

    // False when keys do not decide for the item.
    bool Take(PhoneBookItem* item)
    {
        const std::size_t offset = keys_.size();
        if (!AppendKey(*item)) {
            keys_.resize(offset);
            return false;
        }
        // Offsets are far below four gigabytes.
        keyed_.push_back({.offset = static_cast<std::uint32_t>(offset),
                          .bytes = static_cast<std::uint32_t>(keys_.size() - offset),
                          .item = item});
        return true;
    }

    std::vector<PhoneBookItem*> Sorted()
    {
        const std::uint32_t common = CommonBytes();
        for (KeyedItem& keyed : keyed_) {
            keyed.offset += common;
            keyed.bytes -= common;
            keyed.start = FirstBytes(KeyOf(keyed));
        }
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
    // In the order of ComesBefore: name, kind, and an entry's other fields.
    bool AppendKey(const PhoneBookItem& item)
    {
        if (!textKeys_.AppendDeciding(keys_, item.GetName()))
            return false;
        keys_ += item.IsGroup() ? '\1' : '\2';
        const PhoneBookEntry* const entry = AsEntry(&item);
        return entry == nullptr || (textKeys_.AppendDeciding(keys_, OrEmpty(entry->FaxNumber())) &&
                                    textKeys_.AppendDeciding(keys_, OrEmpty(entry->Company())));
    }

    std::string_view KeyOf(const KeyedItem& item) const noexcept { return {keys_.data() + item.offset, item.bytes}; }

    // With which all keys start.
    std::uint32_t CommonBytes() const noexcept
    {
        if (keyed_.empty())
            return 0;
        std::string_view common = KeyOf(keyed_.front());
        for (const KeyedItem& keyed : keyed_) {
            const std::string_view key = KeyOf(keyed);
            const auto [end, ignored] = std::mismatch(common.begin(), common.end(), key.begin(), key.end());
            common = {common.begin(), end};
        }
        return static_cast<std::uint32_t>(common.size());
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
