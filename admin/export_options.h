// "--export" and "--export-gpp": settings into files instead of this computer.
#pragma once

#include "admin/command.h"
#include "admin/registry_files.h"

namespace qx::admin {

struct ExportOptions {
    std::wstring reg;
    std::wstring policy;
    bool overwrite = false;

    bool Wanted() const noexcept { return !reg.empty() || !policy.empty(); }
};
void AddExportOptions(CLI::App& command, ExportOptions& options);

// Throws Refusal.
void ExportSettings(const ExportOptions& options, const std::vector<RegistrySetting>& settings, Report& report);

} // namespace qx::admin
