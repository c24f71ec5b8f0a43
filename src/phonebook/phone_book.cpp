#include "phonebook/phone_book.h"

#include "base/guarded.h"
#include "base/text.h"
#include "base/unique.h"
#include "phonebook/item_deletion.h"
#include "phonebook/phone_book_file.h"
#include "phonebook/sort_order.h"
#include "settings/registry.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace qx {

namespace {

constexpr wchar_t kShellFolders[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";
constexpr std::size_t kPathUnits = 259; // and a terminator

std::wstring DocumentsFolder()
{
    UniqueKey folders;
    std::wstring folder;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, kShellFolders, 0, KEY_READ, folders.Receive()) == ERROR_SUCCESS)
        ReadString(folders.Get(), L"Personal", folder);
    return folder.c_str(); // without what follows the terminator
}

} // namespace

PhoneBook::PhoneBook(ItemStore& store) noexcept : store_(store) {}

void PhoneBook::Reserved() noexcept {}

void PhoneBook::SetPrinter(HANDLE printer) noexcept
{
    printer_ = printer;
}

BOOL PhoneBook::Load() noexcept
{
    return Guarded<BOOL>(TRUE, [this]() -> BOOL {
        if (filePath_.empty())
            BuildFilePath();
        keepUnreadable_ = true; // unless the load comes to its end
        const LoadedPhoneBook loaded = LoadPhoneBookFile(filePath_, store_);
        for (PhoneBookItem* const item : loaded.items)
            Add(item);
        RaiseNextId(loaded.largestId);
        keepUnreadable_ = loaded.outcome == LoadOutcome::NotUnderstood || loaded.outcome == LoadOutcome::NotReadable;
        return loaded.outcome == LoadOutcome::Read || loaded.outcome == LoadOutcome::NotUnderstood;
    });
}

BOOL PhoneBook::Save(DWORD count) noexcept
{
    Guarded([&] {
        if (filePath_.empty())
            BuildFilePath();
        const std::size_t saved = std::min<std::size_t>(count, items_.size());
        if (SavePhoneBookFile(filePath_, std::span(items_).first(saved), keepUnreadable_))
            keepUnreadable_ = false;
    });
    return TRUE;
}

BOOL PhoneBook::Add(PhoneBookItem* item)
{
    if (item == nullptr)
        return TRUE;
    items_.push_back(item);
    ForgetIndex();
    return TRUE;
}

BOOL PhoneBook::Delete(DWORD index)
{
    if (index >= items_.size())
        return TRUE;
    const PhoneBookEntry* const entry = AsEntry(items_[index]);
    const DWORD memberId = entry != nullptr ? entry->GetId() : kNoId;
    items_.erase(items_.begin() + static_cast<std::ptrdiff_t>(index));
    // Every group without member ids leaves the book, also one that had none before.
    std::erase_if(items_, [memberId](PhoneBookItem* item) {
        PhoneBookGroup* const group = AsGroup(item);
        if (group == nullptr)
            return false;
        group->RemoveMemberId(memberId);
        return group->MemberIds().empty();
    });
    ForgetIndex();
    return TRUE;
}

BOOL PhoneBook::SetAt(DWORD index, PhoneBookItem* item) noexcept
{
    if (item != nullptr && index < items_.size()) {
        items_[index] = item;
        ForgetIndex();
    }
    return TRUE;
}

DWORD PhoneBook::GetCount() const noexcept
{
    return static_cast<DWORD>(items_.size());
}

PhoneBookItem* PhoneBook::GetAt(DWORD index) const noexcept
{
    return index < items_.size() ? items_[index] : nullptr;
}

void PhoneBook::Destroy() noexcept
{
    RemoveAll();
    delete this;
}

void PhoneBook::RemoveAll() noexcept
{
    items_.clear();
    ForgetIndex();
}

BOOL PhoneBook::Sort(BOOL ascending)
{
    SortItems(items_, ascending != FALSE);
    ForgetIndex();
    return TRUE;
}

// A file may hold the largest id there is. From then on gaps are handed out, each once.
DWORD PhoneBook::NextId() noexcept
{
    if (nextId_ < std::numeric_limits<LONG>::max())
        return static_cast<DWORD>(nextId_++);
    while (std::any_of(items_.begin(), items_.end(), [this](const auto* item) { return item->GetId() == nextGap_; }))
        ++nextGap_;
    return nextGap_++;
}

void PhoneBook::RaiseNextId(LONG id) noexcept
{
    if (id >= nextId_)
        nextId_ = id < std::numeric_limits<LONG>::max() ? id + 1 : id;
}

void PhoneBook::BuildFilePath()
{
    std::wstring path(Cut(DocumentsFolder(), kPathUnits));
    path += L'\\';
    if (const auto guid = RestrictedUserGuid(printer_))
        path += *guid + L".xml";
    else
        path += L"qxfaxab.xml";
    filePath_ = Cut(path, kPathUnits);
}

PhoneBookItem* PhoneBook::FindItem(DWORD id) const
{
    return FindFirst(id, [](const PhoneBookItem*) { return true; });
}

PhoneBookEntry* PhoneBook::FindEntry(DWORD id) const
{
    return AsEntry(FindFirst(id, [](const PhoneBookItem* item) { return !item->IsGroup(); }));
}

template <class Wanted> PhoneBookItem* PhoneBook::FindFirst(DWORD id, Wanted wanted) const
{
    if (index_.empty() && !std::exchange(walkedSinceChange_, true)) {
        const auto found = std::find_if(items_.begin(), items_.end(),
                                        [&](const PhoneBookItem* item) { return item->GetId() == id && wanted(item); });
        return found != items_.end() ? *found : nullptr;
    }
    if (index_.empty())
        IndexIds();
    const auto first = std::lower_bound(index_.begin(), index_.end(), Place{id, 0});
    const auto found = std::find_if(first, index_.end(),
                                    [&](const Place& place) { return place.id != id || wanted(items_[place.index]); });
    return found != index_.end() && found->id == id ? items_[found->index] : nullptr;
}

void PhoneBook::IndexIds() const
{
    index_.reserve(items_.size());
    for (DWORD i = 0; i < GetCount(); ++i)
        index_.push_back({items_[i]->GetId(), i});
    std::sort(index_.begin(), index_.end());
}

void PhoneBook::ForgetIndex() noexcept
{
    index_.clear();
    walkedSinceChange_ = false;
}

void PhoneBook::DeleteIds(std::span<const DWORD> ids)
{
    DeleteItems(items_, ids);
    ForgetIndex();
}

bool PhoneBook::HoldsSameEntry(const PhoneBookEntry& entry) const noexcept
{
    return std::any_of(items_.begin(), items_.end(), [&entry](const PhoneBookItem* item) {
        const PhoneBookEntry* const other = AsEntry(item);
        return other != nullptr && other->GetId() != entry.GetId() && IsSameEntry(*other, entry);
    });
}

void ReloadSorted(PhoneBook& book)
{
    book.RemoveAll();
    book.Load();
    book.Sort(TRUE);
}

} // namespace qx
