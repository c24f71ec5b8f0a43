// The phone book's XML file.
#pragma once

#include "phonebook/book/phone_book_storage.h"

namespace qx {

LoadedPhoneBook LoadPhoneBookFile(const std::wstring& path, ItemStore& store);

// Replaces the file, or the one that a link leads to, as Replacement does, and leaves it hidden.
bool SavePhoneBookFile(const std::wstring& path, std::span<PhoneBookItem* const> items, bool keepOld,
                       std::optional<ContentHash>* seen = nullptr);

// The two as a book's storage. Lives as long as the module.
const PhoneBookStorage& PhoneBookFiles() noexcept;

} // namespace qx
