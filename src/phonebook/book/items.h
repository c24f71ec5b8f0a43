// Phone book items: entries and groups, and the one owner of all of them.
#pragma once

#include "base/no_copy.h"
#include "base/number_text.h"
#include "base/process_heap.h"
#include "base/text.h"
#include "record/recipient.h"

#include <memory>
#include <qxfax/send_fax.h>
#include <span>
#include <utility>
#include <vector>
#include <windows.h>

namespace qx {

inline constexpr DWORD kNoId = 0xFFFFFFFF;

// Base of an entry and a group. There is no virtual destructor, since the driver reads entries as plain records whose
// first member is the table of operations: whoever deletes an item uses DestroyItem.
class PhoneBookItem : public OnProcessHeap, NoCopy {
public:
    virtual BOOL IsGroup() const noexcept = 0;
    virtual const wchar_t* GetName() const noexcept = 0; // never null
    virtual DWORD GetId() const noexcept = 0;            // one id space for entries and groups

protected:
    ~PhoneBookItem() = default;
};

// A recipient. Its layout is FaxRecipient's: the driver reads entries as they are.
class PhoneBookEntry final : public PhoneBookItem {
public:
    PhoneBookEntry() noexcept = default;
    ~PhoneBookEntry();

    BOOL IsGroup() const noexcept override { return FALSE; }
    const wchar_t* GetName() const noexcept override { return OrEmpty(name_); }
    DWORD GetId() const noexcept override { return id_; }

    // The fields as they stand; null until first set.
    const wchar_t* Name() const noexcept { return name_; }
    const wchar_t* FaxNumber() const noexcept { return faxNumber_; }
    const wchar_t* Company() const noexcept { return company_; }

    // A null or empty text is stored as an owned empty one. No length limit. They throw std::bad_alloc, with the old
    // text in place: an entry never holds one person's name and another one's number for want of memory.
    void SetName(const wchar_t* text);
    void SetFaxNumber(const wchar_t* text);
    void SetCompany(const wchar_t* text);
    void SetTexts(const Recipient& texts); // all three, or none
    Recipient Texts() const;               // what was never set is empty
    void SetId(DWORD id) noexcept { id_ = id; }

    // The three texts and the id; nothing when both share a text buffer. Throws std::bad_alloc, with nothing changed.
    void CopyFrom(const PhoneBookEntry& other);

private:
    void ReplaceTexts(const wchar_t* name, const wchar_t* faxNumber, const wchar_t* company);

    wchar_t* name_ = nullptr;
    wchar_t* faxNumber_ = nullptr;
    wchar_t* company_ = nullptr;
    DWORD id_ = 0;
};

// A named list of entries. The ids are what the phone book file keeps; the member entries are copies of its own.
class PhoneBookGroup final : public PhoneBookItem {
public:
    PhoneBookGroup() = default;
    ~PhoneBookGroup();

    BOOL IsGroup() const noexcept override { return TRUE; }
    const wchar_t* GetName() const noexcept override { return OrEmpty(name_); }
    DWORD GetId() const noexcept override { return id_; }

    const wchar_t* Name() const noexcept { return name_; } // null until first set
    void SetName(const wchar_t* text);                     // throws std::bad_alloc, with the old name in place
    void SetId(DWORD id) noexcept { id_ = id; }

    std::span<const DWORD> MemberIds() const noexcept { return memberIds_; } // insertion order
    void AddMemberId(DWORD id) { memberIds_.push_back(id); }
    bool RemoveMemberId(DWORD id) noexcept; // the first occurrence; false when there is none
    void SetMemberIds(std::vector<DWORD> ids) noexcept { memberIds_ = std::move(ids); }

    std::span<PhoneBookEntry* const> Members() const noexcept { return members_; }
    void AddMember(PhoneBookEntry* entry); // takes ownership

    // Name, id, member ids and copies of the member entries. Throws std::bad_alloc, with nothing changed.
    void CopyFrom(const PhoneBookGroup& other);

private:
    std::vector<DWORD> memberIds_;
    wchar_t* name_ = nullptr;
    DWORD id_ = 0;
    std::vector<PhoneBookEntry*> members_;
};

// Null, or an item cast to what it is.
PhoneBookEntry* AsEntry(PhoneBookItem* item) noexcept;
const PhoneBookEntry* AsEntry(const PhoneBookItem* item) noexcept;
PhoneBookGroup* AsGroup(PhoneBookItem* item) noexcept;
const PhoneBookGroup* AsGroup(const PhoneBookItem* item) noexcept;

// Runs the entry's or the group's destructor and frees the item; null is fine.
void DestroyItem(PhoneBookItem* item) noexcept;
struct ItemDeleter {
    void operator()(PhoneBookItem* item) const noexcept { DestroyItem(item); }
};
template <class Item> using UniqueItem = std::unique_ptr<Item, ItemDeleter>;

// New entries outside every store, for the job record or a list of one's own. Throw std::bad_alloc.
UniqueItem<PhoneBookEntry> MakeCopy(const PhoneBookEntry& entry);
UniqueItem<PhoneBookEntry> MakeRecipient(const Recipient& texts, DWORD id = 0);

// The duplicate rule: names equal, and fax numbers equal or one of them null. False when a name is null.
bool IsSameEntry(const PhoneBookEntry& a, const PhoneBookEntry& b) noexcept;
// Order by name, then fax number, then company: CSTR_LESS_THAN, CSTR_EQUAL or CSTR_GREATER_THAN. A field that was never
// set compares as empty, or is equal to every other and ends the comparison.
enum class UnsetField { IsEmpty, EndsComparison };
int CompareEntries(const PhoneBookEntry& a, const PhoneBookEntry& b, UnsetField unset) noexcept;
// By that order, where an unset field ends the comparison.
bool IsLessThan(const PhoneBookEntry& a, const PhoneBookEntry& b) noexcept;
bool IsGreaterThan(const PhoneBookEntry& a, const PhoneBookEntry& b) noexcept;
// Names both present and equal.
bool IsSameGroup(const PhoneBookGroup& a, const PhoneBookGroup& b) noexcept;

// An entry as the driver reads it, and back. The record owns what it holds: hand it a new entry, never the book's own.
FaxRecipient* AsRecipient(PhoneBookEntry* entry) noexcept;
const PhoneBookEntry* AsEntry(const FaxRecipient* recipient) noexcept;

// Owns every item made during a session, until it is discarded or the session ends: the book, the lists and the dialogs
// only point.
class ItemStore : NoCopy {
public:
    ItemStore() = default;
    ~ItemStore();

    PhoneBookEntry* NewEntry() { return New<PhoneBookEntry>(); } // throws std::bad_alloc
    PhoneBookGroup* NewGroup() { return New<PhoneBookGroup>(); }
    // Frees an item that nobody points at any more, such as a refused duplicate.
    void Discard(PhoneBookItem* item) noexcept;
    // Frees the items that a reload of the book has replaced, but for those that somebody keeps. May leave all of them
    // to the end of the session when memory is short.
    void DiscardReplaced(std::span<PhoneBookItem* const> items) noexcept;

private:
    friend class KeptItem;

    template <class Item> Item* New();

    std::vector<PhoneBookItem*> items_;           // in the order of their making
    std::vector<const PhoneBookItem*> kept_;      // once for each keeper
    std::vector<PhoneBookItem*> replacedButKept_; // to be freed with their last keeper
};

// Keeps an item of the book for a dialog that works on it, while the book may be reloaded beneath. Throws
// std::bad_alloc.
class KeptItem : NoCopy {
public:
    KeptItem(ItemStore& store, PhoneBookItem* item);
    ~KeptItem();

    // The item is in the book again, although a reload had replaced it.
    void TakenBack() noexcept;

private:
    ItemStore& store_;
    PhoneBookItem* const item_;
};

} // namespace qx
