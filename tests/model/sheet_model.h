// What a user of the whole sheet knows: the phone book, the recent recipients, the settings. No window here.
#pragma once

#include "base/limits.h"
#include "record/recipient.h"
#include "support/user_defaults.h"

#include <stdexcept>
#include <string>
#include <vector>
#include <windows.h>

namespace qx::test {

inline constexpr DWORD kIdUnknown = 0xFFFFFFFF; // of an item that the module has just made

struct BookItem {
    DWORD id = kIdUnknown;
    Recipient texts{}; // of a group the name alone
    bool isGroup = false;
    std::vector<DWORD> members{};
    bool operator==(const BookItem&) const = default;
};

struct BookModel {
    std::vector<BookItem> items;

    BookItem* Find(DWORD id);
    bool HoldsSame(const BookItem& item) const; // besides the one of its id
    bool IsTaken(DWORD id) const;
    DWORD NextId() const; // above all that it names
    std::vector<Recipient> MembersOf(const std::vector<DWORD>& ids) const;
    // As one deletion after the other: what is left without members goes as well.
    void Delete(const std::vector<DWORD>& ids);
    // Whether the id of what was there before names the same one still: after a reload it may be somebody else's.
    bool Has(const BookItem& before);
    // The rows of a file, as an import adds them; the ids stay unknown. A column below 0 is not mapped.
    void Import(const std::vector<std::vector<std::wstring>>& rows, const std::vector<int>& columns);
    void Sort(); // by id: to be compared
};

struct RecentItem {
    Recipient texts; // of a group the name alone
    bool isGroup = false;
    std::vector<Recipient> members{};
    bool operator==(const RecentItem&) const = default;
};

struct RecentModel {
    std::vector<RecentItem> slots; // the most recent first
    std::vector<Recipient> known;  // every entry that was ever suggested

    void Use(const RecentItem& item);
    void Reload(); // what the registry does not keep is gone
    const RecentItem* Group(const std::wstring& name) const;
    // The suggestion of that name: the one of the same letters first. Blanks suggest nobody.
    const RecentItem* Suggestion(const std::wstring& name) const;
    bool Knows(const std::wstring& name, const std::wstring& faxNumber) const;
};

// ---- expectations --------------------------------------------------------------------------------------------------

class Mistake : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

std::string Shown(const Recipient& texts);
std::string Shown(const BookItem& item);
std::string Shown(const RecentItem& item);
std::string Shown(const UserDefaults& settings);
inline std::string Shown(long long number)
{
    return std::to_string(number);
}
template <class Value> std::string Shown(const std::vector<Value>& values)
{
    std::string shown;
    for (const Value& value : values)
        shown += "\n  " + Shown(value);
    return shown;
}

inline void Expect(bool right, const char* what)
{
    if (!right)
        throw Mistake(what);
}

template <class Value> void ExpectEqual(const Value& is, const Value& expected, const char* what)
{
    if (!(is == expected))
        throw Mistake(std::string(what) + ": " + Shown(is) + "\ninstead of " + Shown(expected));
}

} // namespace qx::test
