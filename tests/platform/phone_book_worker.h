// What the worker process and the tests that start it agree on: phone books that show whether they are whole.
#pragma once

#include "phonebook/file/phone_book_file.h"

#include <algorithm>
#include <string>

namespace qx::test {

enum class WorkerOutcome { Good, ReadTornFile, CouldNotSave, WaitedTooLong };

inline constexpr DWORD kStampedEntries = 60;

// A phone book whose entries all carry one stamp: a mixture of two saves, or part of one, has another look.
inline bool SaveStamped(const std::wstring& path, const std::wstring& stamp)
{
    ItemStore store;
    std::vector<PhoneBookItem*> items;
    for (DWORD id = 0; id < kStampedEntries; ++id) {
        PhoneBookEntry* const entry = store.NewEntry();
        entry->SetTexts({L"Person " + std::to_wstring(id), L"555-0100", stamp});
        entry->SetId(id);
        items.push_back(entry);
    }
    return SavePhoneBookFile(path, items, false);
}

inline bool HoldsOneStamp(const std::wstring& path)
{
    ItemStore store;
    const LoadedPhoneBook loaded = LoadPhoneBookFile(path, store);
    const auto stamp = [](const PhoneBookItem* item) { return std::wstring(AsEntry(item)->Company()); };
    return loaded.outcome == LoadOutcome::Read && loaded.items.size() == kStampedEntries &&
           std::all_of(loaded.items.begin(), loaded.items.end(),
                       [&](const PhoneBookItem* item) { return stamp(item) == stamp(loaded.items.front()); });
}

} // namespace qx::test
