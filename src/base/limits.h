// Limits that users meet. Lengths are UTF-16 units.
#pragma once

namespace qx {

inline constexpr int kMaxRecipients = 100; // of one job, and members of one group

inline constexpr int kNameLimit = 50; // names, fax numbers, companies and subjects
inline constexpr int kNotesLimit = 500;
inline constexpr int kImagePathLimit = 260;
inline constexpr int kEmailLimit = 256;
inline constexpr int kBillingCodeLimit = 16;

} // namespace qx
