// The personal phone book: entries and groups in an order of their own, kept in one XML file per user.
#pragma once

#include "phonebook/items.h"

#include <string>
#include <winspool.h>

#undef SetPrinter // the spooler's macro would rename the operation below in those files that see it

namespace qx {

// Limit of the whole book, entries and groups together. The container itself has none.
inline constexpr DWORD kMaxPhoneBookItems = 10000;

// Holds item pointers and never frees an item: the store given to it owns them all.
class PhoneBook final {
public:
    explicit PhoneBook(ItemStore& store) noexcept;
    PhoneBook(const PhoneBook&) = delete;
    PhoneBook& operator=(const PhoneBook&) = delete;

    virtual void Reserved() noexcept; // keeps its slot
    virtual void SetPrinter(HANDLE printer) noexcept;
    // 0 when there is no readable file; 1 otherwise, also when the file could not be understood and nothing was added.
    virtual BOOL Load() noexcept;
    // Writes the first count items. Always 1.
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

    // First item (first entry) with that id, or null. One call is as fast as a walk; many calls between changes of
    // the book share an index, so an item keeps its id while it is in the book.
    PhoneBookItem* FindItem(DWORD id) const;
    PhoneBookEntry* FindEntry(DWORD id) const;
    // Deletes the first item of each id, in order, with the outcome of as many calls of Delete; ids that are not (or
    // no longer) there are skipped.
    void DeleteIds(std::span<const DWORD> ids);
    // Whether an entry of the book other than entry itself (by id) is the same.
    bool HoldsSameEntry(const PhoneBookEntry& entry) const noexcept;

private:
    struct Place {
        DWORD id = 0;
        DWORD index = 0;

        bool operator<(const Place& other) const noexcept
        {
            return id != other.id ? id < other.id : index < other.index;
        }
    };

    ~PhoneBook() = default; // Destroy frees the book

    template <class Wanted> PhoneBookItem* FindFirst(DWORD id, Wanted wanted) const;
    void IndexIds() const;
    void ForgetIndex() noexcept;
    void RaiseNextId(LONG id) noexcept;

    ItemStore& store_;
    std::vector<PhoneBookItem*> items_;
    HANDLE printer_ = nullptr;
    LONG nextId_ = 0;
    DWORD nextGap_ = 0;
    std::wstring filePath_;
    bool keepUnreadable_ = false; // the file was there and could not be understood: it is copied before it is replaced

    mutable std::vector<Place> index_; // by id, then by place in the book; empty when not made
    mutable bool walkedSinceChange_ = false;
};

// The reload sequence of every list that shows the book: RemoveAll, Load, Sort ascending.
void ReloadSorted(PhoneBook& book);

} // namespace qx
