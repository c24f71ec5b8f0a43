// Every limit, once. Lengths are UTF-16 units without a terminator, capacities with one.
#pragma once

#include <cstddef>

namespace qx {

inline constexpr int kMaxRecipients = 100;               // of one job, and members of one group
inline constexpr std::size_t kMaxPhoneBookItems = 10000; // of the whole book, entries and groups together
inline constexpr int kMaxRecentRecipients = 20;

// What the user types, and what is taken over of what is stored.
inline constexpr int kNameLimit = 50; // names, fax numbers, companies and subjects, in fields, settings and CSV files
inline constexpr int kNotesLimit = 500;
inline constexpr int kImagePathLimit = 260;
inline constexpr int kEmailLimit = 256;
inline constexpr int kBillingCodeLimit = 16;

inline constexpr std::size_t kHeaderLimit = 260;      // of the header fields of a CSV file, as they are told apart
inline constexpr std::size_t kTypedPrefixLimit = 254; // of the texts that are compared with what is typed
inline constexpr std::size_t kRowNameLimit = 98;      // of the names of a phone book list's rows, compared with it
inline constexpr std::size_t kNameBoxLimit = 1023;    // of the text of the name box, while it is typed

inline constexpr int kTextUnits = 256;                // capacity of fixed text buffers
inline constexpr std::size_t kOverlayUnits = 260;     // capacity of the record's buffer of the image path, which the
                                                      // driver knows
inline constexpr std::size_t kOverlayLimit = 258;     // of the image path in it
inline constexpr std::size_t kPrinterTextUnits = 260; // stored units of a text of the printer's data
inline constexpr std::size_t kPathLimit = 259;        // of a path that is put together, of a file or a key

} // namespace qx
