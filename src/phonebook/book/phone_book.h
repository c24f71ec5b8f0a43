// The personal phone book: entries and groups in an order of their own, kept in one XML file per user.
#pragma once

#include "base/limits.h"
#include "base/no_copy.h"
#include "phonebook/book/item_places.h"
#include "phonebook/book/phone_book_storage.h"

#include <winspool.h>

#undef SetPrinter // the spooler's macro would rename the operation below in those files that see it

namespace qx {

// Holds item pointers and never frees an item: the store given to it owns them all. It has no limit; whoever adds items
// keeps to kMaxPhoneBookItems.
class PhoneBook final : NoCopy {
public:
    PhoneBook(ItemStore& store, const PhoneBookStorage& storage) noexcept; // both outlive the book

    virtual void Reserved() noexcept; // keeps its slot
    virtual void SetPrinter(HANDLE printer) noexcept;
    // 0 when there is no readable file; 1 otherwise, also when the file could not be understood and nothing was added.
    // While it reads, messages may be answered: when one of them loads the book, that is what the book then holds.
    virtual BOOL Load() noexcept;
    // Writes the first count items. Always 1. A file that the last load did not see whole, or that somebody else has
    // saved since, is copied before it is replaced.
    virtual BOOL Save(DWORD count) noexcept;
    virtual BOOL Add(PhoneBookItem* item);
    // Drops the item at index, its id from every group (first occurrence), and every group without member ids.
    virtual BOOL Delete(DWORD index);
    virtual BOOL SetAt(DWORD index, PhoneBookItem* item) noexcept;
    virtual DWORD GetCount() const noexcept;
    virtual PhoneBookItem* GetAt(DWORD index) const noexcept; // null outside the list
    virtual void Destroy() noexcept;                          // RemoveAll, then frees the book
    virtual void RemoveAll() noexcept;
    virtual BOOL Sort(BOOL ascending);
    virtual DWORD NextId() noexcept;
    virtual void BuildFilePath();

    ItemStore& Store() const noexcept { return store_; }
    std::span<PhoneBookItem* const> Items() const noexcept { return items_; }
    const std::wstring& FilePath() const noexcept { return filePath_; }

    // RemoveAll and Load. The items that were in the book are freed, but for those that a KeptItem keeps.
    void Reload() noexcept;
    // Reload, and, when sorted, Sort ascending; nothing is read when the book is as a load has left it and the file has
    // not changed since: every list of a thread is told of a change, and the first one reads it for all. The items
    // stay, too, when there is a phone book that cannot be read to its end: half of it would be shown, and worked on,
    // in place of it. A file that is gone, cannot be opened or is no phone book leaves an empty book, as after any
    // Reload; the next save keeps a copy of what is there then.
    void FollowChange(bool sorted);

    // Add for each of them, or, without memory, for none.
    void AddAll(std::span<PhoneBookItem* const> items);

    // How often the items were replaced by those of the file. What was learned about an id before the last time may no
    // longer hold.
    unsigned Loads() const noexcept { return loads_; }

    // Whether an item of the book has that id, or a group names it.
    bool IsTaken(DWORD id) const noexcept;
    // First item (first entry) with that id, or null. All calls between changes of the book share an index, so an item
    // keeps its id while it is in the book.
    PhoneBookItem* FindItem(DWORD id) const;
    PhoneBookEntry* FindEntry(DWORD id) const;
    // Only for a group without member entries: gives it copies of the book's entries that its ids name.
    void ResolveMembers(PhoneBookGroup& group) const;
    // Deletes the first item of each id, in order, with the outcome of as many calls of Delete; ids that are not (or
    // no longer) there are skipped.
    void DeleteIds(std::span<const DWORD> ids);
    // Whether an entry of the book other than entry itself (by id) is the same.
    bool HoldsSameEntry(const PhoneBookEntry& entry) const noexcept;

private:
    class Busy;
    ~PhoneBook() = default; // Destroy frees the book

    void ReplaceItems(bool keepUnlessLoaded) noexcept;
    template <class Wanted> PhoneBookItem* FindFirst(DWORD id, Wanted wanted) const;
    void Changed() noexcept;
    void RaiseNextId(const LoadedPhoneBook& loaded);

    ItemStore& store_;
    const PhoneBookStorage& storage_;
    std::vector<PhoneBookItem*> items_;
    HANDLE printer_ = nullptr;
    LONG nextId_ = 0;
    DWORD nextGap_ = 0;
    std::vector<DWORD> takenIds_; // of each load since ids are handed out from gaps, sorted
    std::wstring filePath_;
    // What the book knows all of, as it was last loaded or saved. Any other file is copied before it is replaced.
    std::optional<ContentHash> seen_;
    std::optional<FileStamp> stamp_; // of the file that the book is, unchanged
    unsigned loads_ = 0;             // that have come to their end
    unsigned busy_ = 0;              // loads and saves that are under way

    mutable std::vector<ItemPlace> places_; // of the items; empty when not made
};

// The reload sequence of every list that shows the book: Reload, Sort ascending.
void ReloadSorted(PhoneBook& book);

} // namespace qx
