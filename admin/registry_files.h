// Settings as files: for a logon script (.reg) and for group policy preferences (.xml). Texts in and out, no Windows.
#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace qx::admin {

enum class Hive { Machine, User };

struct RegistrySetting {
    Hive hive = Hive::User;
    std::wstring key;
    std::wstring name;
    std::variant<std::uint32_t, std::wstring> value; // REG_DWORD, REG_SZ
    bool remove = false;                             // takes the value back instead; value does not count
    bool operator==(const RegistrySetting&) const = default;
};

// Version 5.00 of the format, UTF-16.
std::wstring RegFile(const std::vector<RegistrySetting>& settings);

// Registry items of group policy preferences, UTF-8, to be pasted or imported into "Preferences, Windows Settings,
// Registry". The same settings give the same file.
std::string GroupPolicyFile(const std::vector<RegistrySetting>& settings);

} // namespace qx::admin
