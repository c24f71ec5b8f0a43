#include "admin/user_keys.h"
#include "base/number_text.h"
#include "settings/fax_defaults.h"
#include "settings/names.h"

#include <algorithm>
#include <memory>

namespace qx::admin {

namespace {

struct Assignment {
    FaxDefaultName value;
    std::wstring text;
    DWORD number = 0;
};

FaxDefaultName Named(std::wstring_view name)
{
    std::string known;
    for (const FaxDefaultName& value : FaxDefaultNames()) {
        if (name == value.name)
            return value;
        known += (known.empty() ? "" : ", ") + Utf8(value.name);
    }
    throw UsageError("there is no fax default " + Quoted(name) + "; there are " + known);
}

void RefuseText(const Assignment& assignment)
{
    const std::wstring name = assignment.value.name;
    const std::optional<std::wstring> taken = FaxDefaultTakenOver(name, assignment.text);
    if (!taken) {
        const auto bad = std::ranges::find_if_not(assignment.text, AllowedInVoiceNumber);
        const std::string what = bad != assignment.text.end() ? "holds " + Quoted({&*bad, 1}) : "is not accepted";
        throw Refusal(Utf8(name) + ' ' + what +
                      ", and would be ignored as a whole: only digits and , - * # ( ) can stand in a number");
    }
    if (*taken != assignment.text)
        throw Refusal(Utf8(name) + " has " + std::to_string(assignment.text.size()) +
                      " characters, of which only the first " + std::to_string(taken->size()) + " would be taken over");
}

void RefuseNumber(const Assignment& assignment)
{
    const DWORD taken = FaxDefaultTakenOver(assignment.value.name, assignment.number);
    if (taken != assignment.number)
        throw Refusal(Utf8(assignment.value.name) + ' ' + std::to_string(assignment.number) + " would count as " +
                      std::to_string(taken));
}

Assignment ReadAssignment(const std::wstring& text)
{
    const std::size_t equals = text.find(L'=');
    if (equals == std::wstring::npos)
        throw UsageError(Quoted(text) + " is not NAME=VALUE");
    Assignment assignment{.value = Named(text.substr(0, equals)), .text = text.substr(equals + 1)};
    if (assignment.value.type == REG_SZ) {
        RefuseText(assignment);
        return assignment;
    }
    const bool isNumber = !assignment.text.empty() && assignment.text.size() < 10 &&
                          std::ranges::all_of(assignment.text, [](wchar_t c) { return c >= L'0' && c <= L'9'; });
    if (!isNumber)
        throw Refusal(Utf8(assignment.value.name) + " is a number, and " + Quoted(assignment.text) + " is none");
    assignment.number = static_cast<DWORD>(std::stoul(assignment.text));
    RefuseNumber(assignment);
    return assignment;
}

void Get(const std::wstring& printerName, Report& report)
{
    const UniquePrinter printer = OpenPrinterToRead(printerName);
    const UniqueKey key = OpenUserKey(GuidOrRefuse(printer.Get(), printerName), kDefaultsKey);
    Json values = Json::object();
    for (const FaxDefaultName& value : FaxDefaultNames()) {
        const std::string name = Utf8(value.name);
        std::wstring text;
        DWORD number = 0;
        if (ValueType(key.Get(), value.name) == REG_NONE)
            continue;
        if (value.type == REG_DWORD && ReadDword(key.Get(), value.name, number)) {
            const DWORD taken = FaxDefaultTakenOver(value.name, number);
            values[name] = {{"stored", number}, {"takenOver", taken}};
            report.Say(name + '=' + std::to_string(number) +
                       (taken != number ? " (counts as " + std::to_string(taken) + ")" : ""));
        } else if (value.type == REG_SZ && ReadString(key.Get(), value.name, text)) {
            const std::wstring stored = text.c_str();
            const std::optional<std::wstring> taken = FaxDefaultTakenOver(value.name, stored);
            values[name] = {{"stored", Utf8(stored)}, {"takenOver", taken ? Json(Utf8(*taken)) : Json()}};
            report.Say(name + '=' + Utf8(stored) +
                       (!taken             ? " (ignored: it holds a character that cannot stand in a number)"
                        : *taken != stored ? " (cut to " + std::to_string(taken->size()) + " characters)"
                                           : ""));
        }
    }
    if (values.empty())
        report.Say("The user has stored no defaults.");
    report.Data()["values"] = std::move(values);
}

void Set(const std::wstring& printerName, const std::vector<std::wstring>& texts, Report& report)
{
    std::vector<Assignment> assignments;
    assignments.reserve(texts.size());
    for (const std::wstring& text : texts)
        assignments.push_back(ReadAssignment(text)); // all of them, or none
    const UniquePrinter printer = OpenPrinterToRead(printerName);
    const std::wstring guid = GuidOrRefuse(printer.Get(), printerName);
    KeySet keys(printer.Get());
    if (!report.DryRun())
        OpenKeys(*keys);
    for (const Assignment& assignment : assignments) {
        const wchar_t* const name = assignment.value.name;
        const bool isText = assignment.value.type == REG_SZ;
        if (!report.DryRun()) {
            const HKEY key = keys->hDefaultKey;
            if (!(isText ? WriteString(key, name, assignment.text.c_str(), REG_SZ)
                         : WriteDword(key, name, assignment.number)))
                throw Refusal("cannot write the value " + Quoted(name));
        }
        report.Change("set " + Utf8(name) + " to " +
                      (isText ? Quoted(assignment.text) : std::to_string(assignment.number)));
    }
    const auto appliesDefaults = [](const Assignment& assignment) {
        return std::wstring_view(assignment.value.name) == L"ApplyDefaults";
    };
    if (std::ranges::none_of(assignments, appliesDefaults) &&
        ValueType(OpenUserKey(guid, kDefaultsKey).Get(), L"ApplyDefaults") == REG_NONE)
        report.Say("Note: without ApplyDefaults the sheet still opens on the Setup page, as for a first fax.");
}

void Clear(const std::wstring& printerName, const std::vector<std::wstring>& names, Report& report)
{
    std::vector<FaxDefaultName> values = FaxDefaultNames();
    if (!names.empty()) {
        values.clear();
        for (const std::wstring& name : names)
            values.push_back(Named(name));
    }
    const UniquePrinter printer = OpenPrinterToRead(printerName);
    const std::wstring guid = GuidOrRefuse(printer.Get(), printerName);
    UniqueKey key;
    RegOpenKeyExW(HKEY_CURRENT_USER, UserKeyPath(guid, kDefaultsKey).c_str(), 0, KEY_READ | KEY_WRITE, key.Receive());
    std::size_t cleared = 0;
    for (const FaxDefaultName& value : values) {
        if (ValueType(key.Get(), value.name) == REG_NONE)
            continue;
        if (!report.DryRun() && RegDeleteValueW(key.Get(), value.name) != ERROR_SUCCESS)
            throw Refusal("cannot remove the value " + Quoted(value.name));
        report.Change("remove " + Utf8(value.name));
        ++cleared;
    }
    if (cleared == 0)
        report.Say("There was nothing to remove.");
}

struct DefaultsOptions {
    std::wstring printer;
    std::vector<std::wstring> words;
};

CLI::App& AddCommand(CLI::App& group, const std::string& name, const std::string& help, Invocation& invocation,
                     void (*run)(const DefaultsOptions&, Report&), const std::string& words)
{
    const auto options = std::make_shared<DefaultsOptions>();
    CLI::App& command = *group.add_subcommand(name, help);
    AddText(command, "--printer", options->printer, "name of the printer")->required();
    if (!words.empty())
        AddTexts(command, words, options->words, words == "values" ? "NAME=VALUE" : "names of values");
    command.callback(
        [&invocation, options, run] { invocation.run = [options, run](Report& report) { run(*options, report); }; });
    return command;
}

} // namespace

void AddDefaultsCommands(CLI::App& app, Invocation& invocation)
{
    CLI::App& group = *app.add_subcommand("defaults", "The current user's fax defaults of a printer: get, set, clear.");
    group.require_subcommand(1);
    AddCommand(group, "get", "Show what is stored, and what of it is taken over.", invocation,
               [](const DefaultsOptions& options, Report& report) { Get(options.printer, report); }, {});
    AddCommand(
        group, "set", "Store values; one that would be ignored or altered is refused.", invocation,
        [](const DefaultsOptions& options, Report& report) { Set(options.printer, options.words, report); }, "values")
        .get_option("values")
        ->required();
    AddCommand(
        group, "clear", "Remove values, or all of them.", invocation,
        [](const DefaultsOptions& options, Report& report) { Clear(options.printer, options.words, report); }, "names");
}

} // namespace qx::admin
