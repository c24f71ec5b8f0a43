// An item that a dialog has made for the phone book and that may still be given up.
#pragma once

#include "phonebook/book/items.h"

#include <memory>

namespace qx {

struct DiscardFromStore {
    ItemStore* store = nullptr;
    void operator()(PhoneBookItem* item) const noexcept { store->Discard(item); }
};

// release() leaves the item with its store, for the book to point at; otherwise it is discarded with its owner.
template <class Item> using MadeItem = std::unique_ptr<Item, DiscardFromStore>;

} // namespace qx
