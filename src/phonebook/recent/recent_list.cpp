#include "phonebook/recent/recent_list.h"

#include "base/unique.h"
#include "phonebook/book/phone_book.h"
#include "phonebook/recent/registry_entry.h"
#include "settings/registry.h"

#include <algorithm>
#include <string>
#include <utility>

namespace qx {

namespace {

constexpr wchar_t kCount[] = L"Count";
constexpr wchar_t kIsGroup[] = L"IsGroup";
constexpr wchar_t kName[] = L"Name";
constexpr wchar_t kMemberCount[] = L"MemberCount";
constexpr wchar_t kDefaultValue[] = L"";

// Writing

// A group whose members are unknown keeps nothing but its kind, and is not there at the next load.
void WriteGroup(HKEY key, const PhoneBookGroup& group)
{
    const auto members = group.Members();
    if (members.empty())
        return;
    WriteString(key, kName, group.GetName(), REG_SZ);
    WriteDword(key, kMemberCount, static_cast<DWORD>(members.size()));
    for (std::size_t i = 0; i < members.size(); ++i)
        WriteRegistryEntry(key, std::to_wstring(i).c_str(), members[i]->Texts());
}

void WriteItem(HKEY key, const PhoneBookItem& item)
{
    if (!WriteDword(key, kIsGroup, item.IsGroup() ? 1 : 0))
        return;
    if (const PhoneBookGroup* const group = AsGroup(&item))
        WriteGroup(key, *group);
    else
        WriteRegistryEntry(key, kDefaultValue, AsEntry(&item)->Texts());
}

// An empty subkey with that name; none when the old one cannot be removed (it has subkeys, say).
UniqueKey FreshSubkey(HKEY list, const std::wstring& name)
{
    UniqueKey key;
    const LSTATUS deleted = RegDeleteKeyW(list, name.c_str());
    if (deleted == ERROR_SUCCESS || deleted == ERROR_FILE_NOT_FOUND)
        RegCreateKeyExW(list, name.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS, nullptr, key.Receive(),
                        nullptr);
    return key;
}

// Reading

UniqueItem<PhoneBookEntry> ReadEntry(HKEY key, const wchar_t* valueName)
{
    const std::optional<Recipient> texts = ReadRegistryEntry(key, valueName);
    return texts ? MakeRecipient(*texts) : nullptr;
}

// The indexes below count of the values that are really there, in order: a made-up count costs nothing.
std::vector<DWORD> MemberIndexes(HKEY key, DWORD count)
{
    std::vector<DWORD> indexes;
    for (const std::wstring& name : ValueNames(key)) {
        const unsigned long index = std::wcstoul(name.c_str(), nullptr, 10);
        if (index < count && std::to_wstring(index) == name)
            indexes.push_back(static_cast<DWORD>(index));
    }
    std::sort(indexes.begin(), indexes.end());
    return indexes;
}

// Missing members are skipped; but a group whose last member is missing was not saved to its end.
UniqueItem<PhoneBookGroup> ReadGroup(HKEY key)
{
    DWORD count = 0;
    ReadDword(key, kMemberCount, count);
    UniqueItem<PhoneBookGroup> group(new PhoneBookGroup);
    std::wstring name;
    if (ReadString(key, kName, name))
        group->SetName(name.c_str());
    bool lastRead = false;
    for (const DWORD index : MemberIndexes(key, count)) {
        UniqueItem<PhoneBookEntry> member = ReadEntry(key, std::to_wstring(index).c_str());
        lastRead = member != nullptr && index == count - 1;
        if (member != nullptr)
            group->AddMember(member.release());
    }
    return lastRead ? std::move(group) : nullptr;
}

UniqueItem<PhoneBookItem> ReadItem(HKEY list, const std::wstring& name)
{
    UniqueKey key;
    DWORD isGroup = 0;
    if (RegOpenKeyExW(list, name.c_str(), 0, KEY_ALL_ACCESS, key.Receive()) != ERROR_SUCCESS ||
        !ReadDword(key.Get(), kIsGroup, isGroup))
        return nullptr;
    if (isGroup != 0)
        return ReadGroup(key.Get());
    return ReadEntry(key.Get(), kDefaultValue);
}

// Copies

UniqueItem<PhoneBookItem> CopyOf(const PhoneBookItem& item, const PhoneBook& book)
{
    if (const PhoneBookEntry* const entry = AsEntry(&item))
        return MakeCopy(*entry);
    UniqueItem<PhoneBookGroup> copy(new PhoneBookGroup);
    copy->CopyFrom(*AsGroup(&item));
    book.ResolveMembers(*copy);
    return copy;
}

bool IsSameItem(const PhoneBookItem* a, const PhoneBookItem& b) noexcept
{
    if (a == nullptr || a->IsGroup() != b.IsGroup())
        return false;
    return b.IsGroup() ? IsSameGroup(*AsGroup(a), *AsGroup(&b)) : IsSameEntry(*AsEntry(a), *AsEntry(&b));
}

} // namespace

RecentRecipientList::~RecentRecipientList()
{
    Clear();
}

void RecentRecipientList::Open(HANDLE printer)
{
    keys_->PrinterHandle = printer;
    OpenKeys(*keys_);
}

void RecentRecipientList::Clear() noexcept
{
    for (PhoneBookItem*& slot : slots_)
        DestroyItem(std::exchange(slot, nullptr));
}

void RecentRecipientList::Load()
{
    Clear();
    DWORD count = 0;
    ReadDword(keys_->hMruListKey, kCount, count);
    for (std::size_t i = 0; i < std::min<std::size_t>(count, slots_.size()); ++i)
        slots_[i] = ReadItem(keys_->hMruListKey, std::to_wstring(i)).release();
}

// Kept: subkeys are named by slot while Count is the number of those written: with an empty slot in between the last
// items lie beyond Count. Kept: subkeys of empty slots stay as they are. Load counts on neither.
void RecentRecipientList::Save() const
{
    if (keys_->hMruListKey == nullptr)
        return;
    DWORD count = 0;
    for (std::size_t i = 0; i < slots_.size(); ++i) {
        if (slots_[i] == nullptr)
            continue;
        const UniqueKey key = FreshSubkey(keys_->hMruListKey, std::to_wstring(i));
        if (!key)
            continue;
        WriteItem(key.Get(), *slots_[i]);
        ++count;
    }
    WriteDword(keys_->hMruListKey, kCount, count);
}

BOOL RecentRecipientList::AddRecent(const PhoneBookItem* item, const PhoneBook* book)
{
    if (item == nullptr || book == nullptr || *item->GetName() == L'\0')
        return FALSE;
    UniqueItem<PhoneBookItem> copy = CopyOf(*item, *book);
    auto found = std::find_if(slots_.begin(), slots_.end(),
                              [&copy](const PhoneBookItem* slot) { return IsSameItem(slot, *copy); });
    if (found == slots_.end())
        found = std::prev(slots_.end());
    replaced_.emplace_back().reset(std::exchange(*found, copy.release()));
    std::rotate(slots_.begin(), found, std::next(found));
    return TRUE;
}

} // namespace qx
