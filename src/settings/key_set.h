// The registry keys of the current user that belong to a printer: its subtree's, and the device-status software's.
#pragma once

#include "base/no_copy.h"

#include <optional>
#include <qxfax/send_fax.h>
#include <string>
#include <windows.h>

namespace qx {

// Null when not open. Also the head of the driver's job record.
struct RegistryKeySet {
    HKEY hDefaultKey = nullptr;
    HKEY hAddressBookKey = nullptr;
    HKEY hJobDataKey = nullptr;
    HKEY hBidiInfoKey = nullptr;
    HKEY hMruListKey = nullptr;
    HANDLE PrinterHandle = nullptr; // not owned
};

RegistryKeySet& KeySetOf(FaxJobData& record) noexcept;

// The name that the printer's data gives to the user's subtree, at most 259 units; none when it cannot be read.
std::optional<std::wstring> RestrictedUserGuid(HANDLE printer);

// While one lives, that name is asked for once: each question may go to a server, and a session needs the answer half a
// dozen times. Only an answer is kept: after a failure the next one who needs the name asks again.
class KeptSubtreeName : NoCopy {
public:
    explicit KeptSubtreeName(HANDLE printer) noexcept; // not owned
    ~KeptSubtreeName();

private:
    friend std::optional<std::wstring> RestrictedUserGuid(HANDLE printer);

    const HANDLE printer_;
    std::optional<std::wstring> name_;
    KeptSubtreeName* next_;
};

// Opens, creating what is missing, the four settings keys of the set's printer. Without a subtree name, or on a
// failure, what could not be opened stays as it was, and later reads find nothing.
void OpenKeys(RegistryKeySet& set);
// Opens the key that the device-status software keeps for the set's printer, if there is one; the one held before is
// closed. Without a subtree name the one held before stays. False when it cannot be told what the software has left.
bool OpenDeviceStateKey(RegistryKeySet& set);
// Closes the five keys and leaves them null.
void CloseKeys(RegistryKeySet& set) noexcept;

// The owner of a set, its own or the one at the head of a job record: closes the keys at its end.
class KeySet : NoCopy {
public:
    explicit KeySet(HANDLE printer = nullptr) noexcept : own_{.PrinterHandle = printer}, set_(own_) {}
    explicit KeySet(FaxJobData& record) noexcept : set_(KeySetOf(record)) {} // the record lives longer
    ~KeySet() { CloseKeys(set_); }

    RegistryKeySet& operator*() noexcept { return set_; }
    RegistryKeySet* operator->() noexcept { return &set_; }
    const RegistryKeySet* operator->() const noexcept { return &set_; }

private:
    RegistryKeySet own_;
    RegistryKeySet& set_;
};

} // namespace qx
