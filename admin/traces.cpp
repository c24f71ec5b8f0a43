#include "admin/book_file.h"
#include "admin/user_keys.h"
#include "phonebook/file/file_replacement.h"
#include "settings/names.h"
#include "text/help_names.h"

#include <algorithm>
#include <filesystem>
#include <memory>
#include <set>

namespace qx::admin {

namespace {

namespace fs = std::filesystem;

// What the dialogs remember of a user: a file, or a key of the registry with what is in it.
struct Trace {
    enum class Kind { Recent, Help, Backup };
    Kind kind;
    std::wstring where; // below HKEY_CURRENT_USER for a key
    std::string what;
};

constexpr std::string_view NameOf(Trace::Kind kind) noexcept
{
    switch (kind) {
    case Trace::Kind::Recent:
        return "recents";
    case Trace::Kind::Help:
        return "help";
    case Trace::Kind::Backup:
        break;
    }
    return "backups";
}

fs::path TemporaryFolder()
{
    wchar_t folder[MAX_PATH + 1] = L"";
    const DWORD units = GetTempPathW(MAX_PATH + 1, folder);
    return units > 0 && units <= MAX_PATH ? fs::path(folder) : fs::path();
}

void FindRecents(const std::wstring& guid, std::vector<Trace>& traces)
{
    const UniqueKey list = OpenUserKey(guid, kRecentListKey);
    DWORD slots = 0;
    if (!list ||
        RegQueryInfoKeyW(list.Get(), nullptr, nullptr, nullptr, &slots, nullptr, nullptr, nullptr, nullptr, nullptr,
                         nullptr, nullptr) != ERROR_SUCCESS ||
        slots == 0)
        return;
    traces.push_back({Trace::Kind::Recent, UserKeyPath(guid, kRecentListKey),
                      Counted(slots, "recent recipient", "recent recipients") + " in the registry"});
}

// In every language, since users change theirs, and of every build: what stands behind the language's code may tell the
// build.
void FindHelp(HANDLE printer, std::vector<Trace>& traces)
{
    const std::wstring name = PrinterText(printer, kDriverData, kHelpFileValue).value_or(std::wstring());
    const fs::path folder = TemporaryFolder();
    std::set<std::wstring> starts;
    for (unsigned language = 1; language < 0x1000; ++language) {
        const wchar_t* const code = FindHelpLanguageCode(static_cast<LANGID>(language));
        if (code != nullptr && !LocalizedHelpName(name, code).empty() && !folder.empty())
            starts.insert(name.substr(0, name.find(L'_')) + code);
    }
    for (const std::wstring& start : starts) {
        WIN32_FIND_DATAW found;
        const UniqueFindFile search(FindFirstFileW((folder / (start + L"*.CHM")).c_str(), &found));
        if (!search)
            continue;
        do {
            traces.push_back({Trace::Kind::Help, (folder / found.cFileName).native(), "help file"});
        } while (FindNextFileW(search.Get(), &found));
    }
}

void FindBackups(const std::wstring& book, std::vector<Trace>& traces)
{
    for (const std::wstring& copy : KeptCopies(FollowLink(book)))
        traces.push_back({Trace::Kind::Backup, copy, "copy of the phone book"});
}

void Remove(const Trace& trace)
{
    if (trace.kind == Trace::Kind::Recent) {
        const LSTATUS error = RegDeleteTreeW(HKEY_CURRENT_USER, trace.where.c_str());
        if (error != ERROR_SUCCESS)
            throw Refusal(SystemError("cannot remove the recent recipients", static_cast<unsigned long>(error)));
        return;
    }
    SetFileAttributesW(trace.where.c_str(), FILE_ATTRIBUTE_NORMAL); // a copy is hidden
    if (!DeleteFileW(trace.where.c_str()))
        throw Refusal(SystemError("cannot remove " + Quoted(trace.where), GetLastError()));
}

struct Options {
    std::wstring printer;
    bool recents = false;
    bool help = false;
    bool backups = false;
    bool all = false;

    bool Wants(Trace::Kind kind) const noexcept
    {
        return all || (kind == Trace::Kind::Recent && recents) || (kind == Trace::Kind::Help && help) ||
               (kind == Trace::Kind::Backup && backups);
    }
};

std::vector<Trace> ListTraces(const Options& options, Report& report)
{
    const UniquePrinter printer = OpenPrinterToRead(options.printer);
    std::vector<Trace> traces;
    if (const auto guid = RestrictedUserGuid(printer.Get()))
        FindRecents(*guid, traces);
    FindHelp(printer.Get(), traces);
    FindBackups(PathOf({.file = {}, .printer = options.printer}), traces);
    Json listed = Json::array();
    for (const Trace& trace : traces) {
        listed.push_back({{"kind", NameOf(trace.kind)}, {"where", Utf8(trace.where)}});
        report.Say(std::string(NameOf(trace.kind)) + ": " + trace.what + ", " + Utf8(trace.where));
    }
    if (traces.empty())
        report.Say("There are no traces of this user.");
    report.Data()["traces"] = std::move(listed);
    return traces;
}

void Clear(const Options& options, Report& report)
{
    if (!options.recents && !options.help && !options.backups && !options.all)
        throw UsageError(
            "say what is to go: --recents, --help-files, --backups or --all; \"traces list\" tells what there is");
    for (const Trace& trace : ListTraces(options, report)) {
        if (!options.Wants(trace.kind))
            continue;
        if (!report.DryRun())
            Remove(trace);
        report.Change("remove the " + trace.what + ", " + Utf8(trace.where));
    }
}

} // namespace

void AddTracesCommands(CLI::App& app, Invocation& invocation)
{
    CLI::App& group = *app.add_subcommand("traces", "What the dialogs remember of the current user: list, clear.");
    group.require_subcommand(1);
    const auto options = std::make_shared<Options>();
    CLI::App& list = *group.add_subcommand("list", "Show it.");
    AddText(list, "--printer", options->printer, "name of the printer")->required();
    list.callback(
        [&invocation, options] { invocation.run = [options](Report& report) { ListTraces(*options, report); }; });
    CLI::App& clear = *group.add_subcommand("clear", "Show it, then remove what is chosen.");
    AddText(clear, "--printer", options->printer, "name of the printer")->required();
    clear.add_flag("--recents", options->recents, "the recent recipients");
    clear.add_flag("--help-files", options->help, "the help files in the temporary folder");
    clear.add_flag("--backups", options->backups, "the copies that were kept of the phone book");
    clear.add_flag("--all", options->all, "all of these");
    clear.callback([&invocation, options] { invocation.run = [options](Report& report) { Clear(*options, report); }; });
}

} // namespace qx::admin
