#include "phonebook/book/duplicate_index.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace qx {
namespace {

// Every pair of a name and a number, each with and without a key of its own, and twice: the index may only be quicker
// than the rule.
std::vector<UniqueItem<PhoneBookEntry>> AllKinds()
{
    constexpr const wchar_t* kNames[] = {nullptr, L"", L"Anna", L"ANNA", L"Ann", L"Anna\x301", L"\x0E41\x0E01"};
    constexpr const wchar_t* kNumbers[] = {nullptr, L"", L"555", L"556", L"5\x301"};
    std::vector<UniqueItem<PhoneBookEntry>> all;
    for (int copy = 0; copy < 2; ++copy) {
        for (const wchar_t* const name : kNames) {
            for (const wchar_t* const number : kNumbers) {
                PhoneBookEntry& entry = *all.emplace_back(new PhoneBookEntry);
                entry.SetId(static_cast<DWORD>(all.size()));
                if (name != nullptr)
                    entry.SetName(name);
                if (number != nullptr)
                    entry.SetFaxNumber(number);
            }
        }
    }
    return all;
}

TEST(DuplicateIndex, AnswersAsAComparisonWithEveryEntryDoes)
{
    const auto all = AllKinds();
    for (const auto& held : all) {
        PhoneBookGroup group;
        group.SetName(held->GetName());
        PhoneBookItem* const items[] = {&group, held.get()};
        DuplicateIndex index(items);
        for (const auto& asked : all) {
            const bool same = held->GetId() != asked->GetId() && IsSameEntry(*held, *asked);
            EXPECT_EQ(index.HoldsSame(*asked, index.KeysOf(*asked)), same) << held->GetId() << ' ' << asked->GetId();
        }
    }
}

TEST(DuplicateIndex, KnowsWhatIsAddedLater)
{
    const auto all = AllKinds();
    DuplicateIndex index({});
    std::vector<const PhoneBookEntry*> held;
    for (const auto& entry : all) {
        const DuplicateIndex::Keys keys = index.KeysOf(*entry);
        EXPECT_EQ(index.HoldsSame(*entry, keys),
                  std::ranges::any_of(held, [&](const PhoneBookEntry* one) { return IsSameEntry(*one, *entry); }))
            << entry->GetId();
        index.Add(*entry, keys);
        held.push_back(entry.get());
    }
}

} // namespace
} // namespace qx
