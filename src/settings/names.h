// Names that others rely on: values of the printer's data, which the driver's installation and administrators set, and
// the user's keys in the registry.
#pragma once

namespace qx {

// Of the printer data key kPresetData.
inline constexpr wchar_t kRestrictedUserGuidValue[] = L"QXRestrictedUserGuid"; // text
inline constexpr wchar_t kPhoneBookVersionValue[] = L"Version";                // number

// Of kDriverData, where values without a key are, too.
inline constexpr wchar_t kCoverPageLockValue[] = L"FaxCPDefaultOverlayBitmapLock"; // number
inline constexpr wchar_t kCoverPagePathValue[] = L"FaxCPDefaultOverlayBitmapPath"; // text
inline constexpr wchar_t kHelpCabinetValue[] = L"HelpCabName";                     // text
inline constexpr wchar_t kHelpFileValue[] = L"GPDHelpFileName";                    // text

// Keys below HKEY_CURRENT_USER: the printer's subtree is the vendor's root with the GUID behind it, and these are in
// it.
inline constexpr wchar_t kVendorRoot[] = L"Software\\Quillmarsh\\";
inline constexpr wchar_t kAddressBookKey[] = L"QX-FAX\\Address Book";
inline constexpr wchar_t kDefaultsKey[] = L"QX-FAX\\Default";
inline constexpr wchar_t kJobDataKey[] = L"QX-FAX\\JobData";
inline constexpr wchar_t kRecentListKey[] = L"QX-FAX\\MRUList";
inline constexpr wchar_t kDeviceStateKey[] = L"QXBIDIInfo";

inline constexpr wchar_t kBillingCodeValue[] = L"FAX_BILLING_CODE"; // of the device state; text

} // namespace qx
