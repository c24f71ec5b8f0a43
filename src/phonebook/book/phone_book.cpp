#include "phonebook/book/phone_book.h"

#include "base/guarded.h"
#include "base/limits.h"
#include "base/text.h"
#include "base/unique.h"
#include "phonebook/book/item_deletion.h"
#include "phonebook/book/sort_order.h"
#include "settings/key_set.h"
#include "settings/registry.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace qx {

namespace {

constexpr wchar_t kShellFolders[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";

std::wstring DocumentsFolder()
{
    UniqueKey folders;
    std::wstring folder;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, kShellFolders, 0, KEY_READ, folders.Receive()) == ERROR_SUCCESS)
        ReadString(folders.Get(), L"Personal", folder);
    return folder.c_str(); // without what follows the terminator
}

} // namespace

PhoneBook::PhoneBook(ItemStore& store, const PhoneBookStorage& storage) noexcept : store_(store), storage_(storage) {}

void PhoneBook::Reserved() noexcept {}

void PhoneBook::SetPrinter(HANDLE printer) noexcept
{
    printer_ = printer;
}

// While a load or a save is under way, items that a reload replaces are not freed: messages that are answered meanwhile
// may reload the book whose items are being written.
class PhoneBook::Busy : NoCopy {
public:
    explicit Busy(PhoneBook& book) noexcept : book_(book) { ++book_.busy_; }
    ~Busy() { --book_.busy_; }

private:
    PhoneBook& book_;
};

BOOL PhoneBook::Load() noexcept
{
    return Guarded<BOOL>(TRUE, [this]() -> BOOL {
        const Busy busy(*this);
        seen_.reset(); // unless the load comes to its end
        if (filePath_.empty())
            BuildFilePath();
        const bool wasEmpty = items_.empty();
        const unsigned loadsBefore = loads_;
        const LoadedPhoneBook loaded = storage_.Load(filePath_, store_);
        const BOOL result = loaded.outcome != LoadOutcome::NoFile && loaded.outcome != LoadOutcome::NotReadable;
        if (loads_ != loadsBefore) { // a later load has come first
            store_.DiscardReplaced(loaded.items);
            return result;
        }
        items_.reserve(items_.size() + loaded.items.size());
        RaiseNextId(loaded);
        for (PhoneBookItem* const item : loaded.items)
            Add(item);
        if (loaded.outcome == LoadOutcome::Read && !loaded.dropped)
            seen_ = loaded.content;
        if (loaded.outcome == LoadOutcome::NotFinished)
            return result;
        if (wasEmpty && result)
            stamp_ = loaded.stamp;
        ++loads_;
        return result;
    });
}

BOOL PhoneBook::Save(DWORD count) noexcept
{
    Guarded([&] {
        const Busy busy(*this);
        if (filePath_.empty())
            BuildFilePath();
        const auto end = items_.begin() + static_cast<std::ptrdiff_t>(std::min<std::size_t>(count, items_.size()));
        const std::vector<PhoneBookItem*> saved(items_.begin(), end);
        const unsigned loadsBefore = loads_;
        std::optional<ContentHash> seen = seen_;
        if (storage_.Save(filePath_, saved, !seen, &seen) && loads_ == loadsBefore)
            seen_ = seen; // else the book is what was loaded meanwhile
    });
    return TRUE;
}

void PhoneBook::Reload() noexcept
{
    ReplaceItems(false);
}

// Nothing here needs memory but the load: an edit that was cancelled leaves the book in any case.
void PhoneBook::ReplaceItems(bool keepUnlessLoaded) noexcept
{
    std::vector<PhoneBookItem*> replaced = std::move(items_);
    const unsigned loadsBefore = loads_;
    RemoveAll();
    Load();
    if (keepUnlessLoaded && loads_ == loadsBefore)
        items_ = std::move(replaced);
    else if (busy_ == 0)
        store_.DiscardReplaced(replaced);
}

void PhoneBook::FollowChange(bool sorted)
{
    const bool holdsTheFile = stamp_.has_value() && storage_.StampOf(filePath_) == stamp_;
    if (!holdsTheFile)
        ReplaceItems(true);
    if (sorted)
        Sort(TRUE);
}

BOOL PhoneBook::Add(PhoneBookItem* item)
{
    if (item == nullptr)
        return TRUE;
    items_.push_back(item);
    Changed();
    return TRUE;
}

void PhoneBook::AddAll(std::span<PhoneBookItem* const> items)
{
    items_.insert(items_.end(), items.begin(), items.end());
    Changed();
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
    Changed();
    return TRUE;
}

BOOL PhoneBook::SetAt(DWORD index, PhoneBookItem* item) noexcept
{
    if (item != nullptr && index < items_.size()) {
        items_[index] = item;
        Changed();
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
    Changed();
}

BOOL PhoneBook::Sort(BOOL ascending)
{
    SortItems(items_, ascending != FALSE);
    places_.clear();
    return TRUE;
}

// A file may hold the largest id there is. From then on gaps are handed out, each once.
DWORD PhoneBook::NextId() noexcept
{
    if (nextId_ < std::numeric_limits<LONG>::max())
        return static_cast<DWORD>(nextId_++);
    // Those of the items: the file may not have had the largest id yet when they were loaded.
    while (std::binary_search(takenIds_.begin(), takenIds_.end(), nextGap_) || IsTaken(nextGap_))
        ++nextGap_;
    return nextGap_++;
}

void PhoneBook::RaiseNextId(const LoadedPhoneBook& loaded)
{
    if (loaded.largestId >= nextId_)
        nextId_ = std::min(loaded.largestId, std::numeric_limits<LONG>::max() - 1) + 1;
    if (nextId_ < std::numeric_limits<LONG>::max())
        return;
    std::vector<DWORD> taken = takenIds_; // which stay sorted whatever there is no memory for
    for (const PhoneBookItem* const item : loaded.items) {
        taken.push_back(item->GetId());
        if (const PhoneBookGroup* const group = AsGroup(item))
            taken.insert(taken.end(), group->MemberIds().begin(), group->MemberIds().end());
    }
    std::sort(taken.begin(), taken.end());
    taken.erase(std::unique(taken.begin(), taken.end()), taken.end());
    takenIds_ = std::move(taken);
}

bool PhoneBook::IsTaken(DWORD id) const noexcept
{
    return std::any_of(items_.begin(), items_.end(), [id](const PhoneBookItem* item) {
        const PhoneBookGroup* const group = AsGroup(item);
        return item->GetId() == id ||
               (group != nullptr && std::ranges::find(group->MemberIds(), id) != group->MemberIds().end());
    });
}

void PhoneBook::BuildFilePath()
{
    const std::wstring name = RestrictedUserGuid(printer_).value_or(L"qxfaxab") + L".xml";
    filePath_ = Cut(DocumentsFolder() + L'\\' + name, kPathLimit);
}

PhoneBookItem* PhoneBook::FindItem(DWORD id) const
{
    return FindFirst(id, [](const PhoneBookItem*) { return true; });
}

PhoneBookEntry* PhoneBook::FindEntry(DWORD id) const
{
    return AsEntry(FindFirst(id, [](const PhoneBookItem* item) { return !item->IsGroup(); }));
}

void PhoneBook::ResolveMembers(PhoneBookGroup& group) const
{
    if (!group.Members().empty())
        return;
    for (const DWORD id : group.MemberIds()) {
        if (const PhoneBookEntry* const entry = FindEntry(id))
            group.AddMember(MakeCopy(*entry).release());
    }
}

template <class Wanted> PhoneBookItem* PhoneBook::FindFirst(DWORD id, Wanted wanted) const
{
    if (places_.empty())
        places_ = PlacesOf(items_);
    const ItemPlace* const found =
        FindPlace(places_, id, [&](std::size_t position) { return wanted(items_[position]); });
    return found != nullptr ? items_[found->position] : nullptr;
}

void PhoneBook::Changed() noexcept
{
    places_.clear();
    stamp_.reset();
}

void PhoneBook::DeleteIds(std::span<const DWORD> ids)
{
    DeleteItems(items_, ids);
    Changed();
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
    book.Reload();
    book.Sort(TRUE);
}

} // namespace qx
