#include "phonebook/book/items.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <new>
#include <utility>

namespace qx {

namespace {

// An entry is what the driver reads as FaxRecipient; the fields' order is tested, their extent is settled here.
static_assert(sizeof(PhoneBookEntry) == sizeof(FaxRecipient));

using OwnedText = std::unique_ptr<wchar_t, HeapDeleter>;

OwnedText CopyOf(const wchar_t* text)
{
    OwnedText copy(HeapText(text));
    if (copy == nullptr)
        throw std::bad_alloc();
    return copy;
}

void Replace(wchar_t*& field, OwnedText text) noexcept
{
    HeapRelease(std::exchange(field, text.release()));
}

bool SameBuffer(const wchar_t* a, const wchar_t* b) noexcept
{
    return a != nullptr && a == b;
}

bool BothPresentAndEqual(const wchar_t* a, const wchar_t* b) noexcept
{
    return a != nullptr && b != nullptr && EqualUserText(a, b);
}

} // namespace

UniqueItem<PhoneBookEntry> MakeCopy(const PhoneBookEntry& entry)
{
    UniqueItem<PhoneBookEntry> copy(new PhoneBookEntry);
    copy->CopyFrom(entry);
    return copy;
}

UniqueItem<PhoneBookEntry> MakeRecipient(const Recipient& texts, DWORD id)
{
    UniqueItem<PhoneBookEntry> entry(new PhoneBookEntry);
    entry->SetTexts(texts);
    entry->SetId(id);
    return entry;
}

PhoneBookEntry::~PhoneBookEntry()
{
    HeapRelease(name_);
    HeapRelease(faxNumber_);
    HeapRelease(company_);
}

void PhoneBookEntry::SetName(const wchar_t* text)
{
    Replace(name_, CopyOf(text));
}
void PhoneBookEntry::SetFaxNumber(const wchar_t* text)
{
    Replace(faxNumber_, CopyOf(text));
}
void PhoneBookEntry::SetCompany(const wchar_t* text)
{
    Replace(company_, CopyOf(text));
}

void PhoneBookEntry::SetTexts(const Recipient& texts)
{
    ReplaceTexts(texts.name.c_str(), texts.faxNumber.c_str(), texts.company.c_str());
}

Recipient PhoneBookEntry::Texts() const
{
    return {OrEmpty(name_), OrEmpty(faxNumber_), OrEmpty(company_)};
}

void PhoneBookEntry::CopyFrom(const PhoneBookEntry& other)
{
    if (SameBuffer(name_, other.name_) || SameBuffer(faxNumber_, other.faxNumber_) ||
        SameBuffer(company_, other.company_))
        return;
    ReplaceTexts(other.name_, other.faxNumber_, other.company_);
    id_ = other.id_;
}

void PhoneBookEntry::ReplaceTexts(const wchar_t* name, const wchar_t* faxNumber, const wchar_t* company)
{
    OwnedText newName = CopyOf(name);
    OwnedText newFaxNumber = CopyOf(faxNumber);
    OwnedText newCompany = CopyOf(company);
    Replace(name_, std::move(newName));
    Replace(faxNumber_, std::move(newFaxNumber));
    Replace(company_, std::move(newCompany));
}

PhoneBookGroup::~PhoneBookGroup()
{
    HeapRelease(name_);
    for (PhoneBookEntry* const member : members_)
        delete member;
}

void PhoneBookGroup::SetName(const wchar_t* text)
{
    Replace(name_, CopyOf(text));
}

bool PhoneBookGroup::RemoveMemberId(DWORD id) noexcept
{
    const auto found = std::find(memberIds_.begin(), memberIds_.end(), id);
    if (found == memberIds_.end())
        return false;
    memberIds_.erase(found);
    return true;
}

void PhoneBookGroup::AddMember(PhoneBookEntry* entry)
{
    UniqueItem<PhoneBookEntry> owned(entry);
    members_.push_back(nullptr); // without memory for the place the entry goes, too
    members_.back() = owned.release();
}

void PhoneBookGroup::CopyFrom(const PhoneBookGroup& other)
{
    if (this == &other || SameBuffer(name_, other.name_))
        return;
    PhoneBookGroup copy;
    copy.SetName(other.name_);
    copy.id_ = other.id_;
    copy.memberIds_ = other.memberIds_;
    for (const PhoneBookEntry* const member : other.members_)
        copy.AddMember(MakeCopy(*member).release());
    std::swap(name_, copy.name_);
    id_ = copy.id_;
    memberIds_.swap(copy.memberIds_);
    members_.swap(copy.members_);
}

PhoneBookEntry* AsEntry(PhoneBookItem* item) noexcept
{
    return item != nullptr && !item->IsGroup() ? static_cast<PhoneBookEntry*>(item) : nullptr;
}

const PhoneBookEntry* AsEntry(const PhoneBookItem* item) noexcept
{
    return item != nullptr && !item->IsGroup() ? static_cast<const PhoneBookEntry*>(item) : nullptr;
}

PhoneBookGroup* AsGroup(PhoneBookItem* item) noexcept
{
    return item != nullptr && item->IsGroup() ? static_cast<PhoneBookGroup*>(item) : nullptr;
}

const PhoneBookGroup* AsGroup(const PhoneBookItem* item) noexcept
{
    return item != nullptr && item->IsGroup() ? static_cast<const PhoneBookGroup*>(item) : nullptr;
}

void DestroyItem(PhoneBookItem* item) noexcept
{
    if (PhoneBookGroup* const group = AsGroup(item))
        delete group;
    else
        delete AsEntry(item);
}

bool IsSameEntry(const PhoneBookEntry& a, const PhoneBookEntry& b) noexcept
{
    if (!BothPresentAndEqual(a.Name(), b.Name()))
        return false;
    // An unknown number matches every number; the company does not count.
    return a.FaxNumber() == nullptr || b.FaxNumber() == nullptr || EqualUserText(a.FaxNumber(), b.FaxNumber());
}

int CompareEntries(const PhoneBookEntry& a, const PhoneBookEntry& b, UnsetField unset) noexcept
{
    const std::pair<const wchar_t*, const wchar_t*> fields[] = {
        {a.Name(), b.Name()}, {a.FaxNumber(), b.FaxNumber()}, {a.Company(), b.Company()}};
    for (const auto& [ours, theirs] : fields) {
        if (unset == UnsetField::EndsComparison && (ours == nullptr || theirs == nullptr))
            break;
        const int order = CompareUserText(OrEmpty(ours), OrEmpty(theirs));
        if (order != CSTR_EQUAL)
            return order;
    }
    return CSTR_EQUAL;
}

bool IsLessThan(const PhoneBookEntry& a, const PhoneBookEntry& b) noexcept
{
    return CompareEntries(a, b, UnsetField::EndsComparison) == CSTR_LESS_THAN;
}

bool IsGreaterThan(const PhoneBookEntry& a, const PhoneBookEntry& b) noexcept
{
    return CompareEntries(a, b, UnsetField::EndsComparison) == CSTR_GREATER_THAN;
}

bool IsSameGroup(const PhoneBookGroup& a, const PhoneBookGroup& b) noexcept
{
    return BothPresentAndEqual(a.Name(), b.Name());
}

FaxRecipient* AsRecipient(PhoneBookEntry* entry) noexcept
{
    return reinterpret_cast<FaxRecipient*>(entry);
}

const PhoneBookEntry* AsEntry(const FaxRecipient* recipient) noexcept
{
    return reinterpret_cast<const PhoneBookEntry*>(recipient);
}

ItemStore::~ItemStore()
{
    for (PhoneBookItem* const item : items_)
        DestroyItem(item);
}

template <class Item> Item* ItemStore::New()
{
    UniqueItem<Item> item(new Item);
    items_.push_back(item.get());
    return item.release();
}
template PhoneBookEntry* ItemStore::New();
template PhoneBookGroup* ItemStore::New();

void ItemStore::Discard(PhoneBookItem* item) noexcept
{
    // From the back: what is refused was nearly always made last.
    const auto found = std::find(items_.rbegin(), items_.rend(), item);
    if (item == nullptr || found == items_.rend())
        return;
    items_.erase(std::prev(found.base()));
    DestroyItem(item);
}

void ItemStore::DiscardReplaced(std::span<PhoneBookItem* const> items) noexcept
try {
    std::vector<PhoneBookItem*> freed(items.begin(), items.end());
    std::sort(freed.begin(), freed.end(), std::less<>());
    freed.erase(std::unique(freed.begin(), freed.end()), freed.end());
    for (const PhoneBookItem* const item : kept_) {
        const auto found = std::lower_bound(freed.begin(), freed.end(), item, std::less<>());
        if (found == freed.end() || *found != item)
            continue;
        if (std::find(replacedButKept_.begin(), replacedButKept_.end(), item) == replacedButKept_.end())
            replacedButKept_.push_back(*found);
        freed.erase(found);
    }
    std::erase_if(items_, [&freed](PhoneBookItem* item) {
        const bool found = std::binary_search(freed.begin(), freed.end(), item, std::less<>());
        if (found)
            DestroyItem(item);
        return found;
    });
} catch (const std::bad_alloc&) {
}

KeptItem::KeptItem(ItemStore& store, PhoneBookItem* item) : store_(store), item_(item)
{
    store_.kept_.push_back(item_);
}

KeptItem::~KeptItem()
{
    auto& kept = store_.kept_;
    kept.erase(std::find(kept.begin(), kept.end(), item_));
    auto& replaced = store_.replacedButKept_;
    const auto found = std::find(replaced.begin(), replaced.end(), item_);
    if (found == replaced.end() || std::find(kept.begin(), kept.end(), item_) != kept.end())
        return;
    replaced.erase(found);
    store_.Discard(item_);
}

void KeptItem::TakenBack() noexcept
{
    std::erase(store_.replacedButKept_, item_);
}

} // namespace qx
