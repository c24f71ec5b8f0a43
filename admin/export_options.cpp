#include "admin/export_options.h"

namespace qx::admin {

void AddExportOptions(CLI::App& command, ExportOptions& options)
{
    const std::string group = "Into files, instead of setting anything here";
    AddText(command, "--export", options.reg, "a .reg file, for a logon script")->group(group);
    AddText(command, "--export-gpp", options.policy, "an .xml file, for group policy preferences")->group(group);
    command.add_flag("--overwrite", options.overwrite, "replace files that are there")->group(group);
}

void ExportSettings(const ExportOptions& options, const std::vector<RegistrySetting>& settings, Report& report)
{
    for (const std::wstring& path : {options.reg, options.policy})
        if (!path.empty())
            RefuseExistingFile(path, options.overwrite);
    const std::string what = "write " + Counted(settings.size(), "setting", "settings") + " to ";
    if (!options.reg.empty()) {
        const std::wstring text = L'\xFEFF' + RegFile(settings);
        if (!report.DryRun())
            WriteFileOrRefuse(options.reg, {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t)},
                              options.overwrite);
        report.Change(what + Quoted(options.reg));
    }
    if (!options.policy.empty()) {
        if (!report.DryRun())
            WriteFileOrRefuse(options.policy, GroupPolicyFile(settings), options.overwrite);
        report.Change(what + Quoted(options.policy));
    }
}

} // namespace qx::admin
