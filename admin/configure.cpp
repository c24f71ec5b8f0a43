#include "admin/export_options.h"
#include "admin/help_names_check.h"
#include "admin/user_keys.h"
#include "base/limits.h"
#include "base/number_text.h"
#include "settings/device_state.h"
#include "settings/names.h"
#include "text/help.h"

#include <algorithm>
#include <memory>
#include <variant>

namespace qx::admin {

namespace {

// What buffers of 260 units leave for a path or a name.
constexpr std::size_t kPathUnits = 259;
constexpr std::size_t kRegistryNameUnits = 255;
constexpr wchar_t kPrintersKey[] = L"SYSTEM\\CurrentControlSet\\Control\\Print\\Printers\\";

using Value = std::variant<std::uint32_t, std::wstring>;

// A value that this command sets, of the printer's data or of the user's device state.
struct Setting {
    const wchar_t* printerKey; // null: of the device state
    const wchar_t* name;
    std::optional<Value> given;
    std::optional<Value> present;

    // What it is afterwards.
    const std::optional<Value>& Effective() const noexcept { return given ? given : present; }
};

std::string Shown(const Value& value)
{
    if (const auto* const number = std::get_if<std::uint32_t>(&value))
        return std::to_string(*number);
    return Quoted(std::get<std::wstring>(value));
}

// ---- the settings --------------------------------------------------------------------------------------------------

class Settings {
public:
    Settings()
    {
        rows_ = {{kPresetData, kRestrictedUserGuidValue, {}, {}}, {kDriverData, kHelpCabinetValue, {}, {}},
                 {kDriverData, kHelpFileValue, {}, {}},           {kDriverData, kCoverPageLockValue, {}, {}},
                 {kDriverData, kCoverPagePathValue, {}, {}},      {nullptr, kBillingCodeValue, {}, {}}};
        for (const DeviceNumber& number : kDeviceNumbers)
            rows_.push_back({nullptr, number.name, {}, {}});
    }

    std::vector<Setting>& Rows() noexcept { return rows_; }
    const std::vector<Setting>& Rows() const noexcept { return rows_; }

    Setting& Named(std::wstring_view name)
    {
        return *std::ranges::find(rows_, name, [](const Setting& row) { return std::wstring_view(row.name); });
    }

    std::optional<std::wstring> Text(std::wstring_view name)
    {
        const std::optional<Value>& value = Named(name).Effective();
        return value && std::holds_alternative<std::wstring>(*value) ? std::optional(std::get<std::wstring>(*value))
                                                                     : std::nullopt;
    }

    std::optional<std::uint32_t> Number(std::wstring_view name)
    {
        const std::optional<Value>& value = Named(name).Effective();
        return value && std::holds_alternative<std::uint32_t>(*value) ? std::optional(std::get<std::uint32_t>(*value))
                                                                      : std::nullopt;
    }

    bool AnyGiven() const
    {
        return std::ranges::any_of(rows_, [](const Setting& row) { return row.given.has_value(); });
    }

    void ReadPresent(HANDLE printer)
    {
        for (Setting& row : rows_) {
            if (row.printerKey == nullptr)
                continue;
            if (const auto text = PrinterText(printer, row.printerKey, row.name))
                row.present = *text;
            else if (const auto number = PrinterNumber(printer, row.printerKey, row.name))
                row.present = static_cast<std::uint32_t>(*number);
        }
        const auto guid = Text(kRestrictedUserGuidValue);
        if (guid)
            ReadDeviceValues(OpenUserKey(*guid, kDeviceStateKey).Get());
    }

private:
    void ReadDeviceValues(HKEY key)
    {
        for (Setting& row : rows_) {
            std::wstring text;
            DWORD number = 0;
            if (row.printerKey != nullptr)
                continue;
            if (ValueType(key, row.name) == REG_DWORD && ReadDword(key, row.name, number))
                row.present = static_cast<std::uint32_t>(number);
            else if (ValueType(key, row.name) == REG_SZ && ReadString(key, row.name, text))
                row.present = std::wstring(text.c_str());
        }
    }

    std::vector<Setting> rows_;
};

// ---- what the module would not understand --------------------------------------------------------------------------

void RefuseGuid(Settings& settings)
{
    const auto guid = settings.Text(kRestrictedUserGuidValue);
    const std::string name = Utf8(kRestrictedUserGuidValue);
    if (!guid) {
        for (const Setting& row : settings.Rows()) {
            if (row.printerKey == nullptr && row.given)
                throw Refusal("the device state is kept below the printer's " + name +
                              ", and there is none: give one with --guid");
        }
        return;
    }
    if (!IsPlainFileName(*guid))
        throw Refusal(name + ' ' + Quoted(*guid) +
                      " is no name: it becomes the name of a registry key and of the phone book file, so it can be "
                      "neither empty nor hold any of \\ / : * ? \" < > |");
    if (guid->size() > kRegistryNameUnits || UserKeyPath(*guid, kDeviceStateKey).size() > kPathUnits)
        throw Refusal(name + " has " + std::to_string(guid->size()) +
                      " characters, which is too long for a registry key");
}

void RefuseHelp(Settings& settings, HANDLE printer)
{
    const auto cabinet = settings.Text(kHelpCabinetValue);
    const auto file = settings.Text(kHelpFileValue);
    if (!settings.Named(kHelpCabinetValue).given && !settings.Named(kHelpFileValue).given)
        return;
    if (!cabinet || !file)
        throw Refusal("help needs both " + Utf8(kHelpCabinetValue) + " and " + Utf8(kHelpFileValue));
    if (!IsPlainFileName(*cabinet))
        throw Refusal(Utf8(kHelpCabinetValue) + ' ' + Quoted(*cabinet) +
                      " is no file name: the cabinet lies in the driver's folder");
    if (printer == nullptr) {
        if (BuildLocalizedHelpName(*file, GetUserDefaultUILanguage()).empty())
            throw Refusal(WhyHelpNamesFail({}, *file));
        return;
    }
    const std::string why = WhyHelpNamesFail(HelpNamesOf(printer, *file), *file);
    if (!why.empty())
        throw Refusal(why);
}

void RefuseCoverPage(Settings& settings)
{
    const auto path = settings.Text(kCoverPagePathValue);
    if (settings.Number(kCoverPageLockValue).value_or(0) != 0 && path.value_or(std::wstring()).empty())
        throw Refusal("a lock without a path locks nothing: give the bitmap with --cover-page-bitmap");
    if (path && path->size() > kPathUnits)
        throw Refusal(Utf8(kCoverPagePathValue) + " has " + std::to_string(path->size()) +
                      " characters, and a path has at most " + std::to_string(kPathUnits));
    if (settings.Named(kCoverPagePathValue).given && !settings.Number(kCoverPageLockValue))
        throw Refusal("a path without a lock says nothing: give --cover-page-lock 1, or 0");
}

void RefuseBillingCode(Settings& settings)
{
    const auto code = settings.Text(kBillingCodeValue);
    if (code && !std::ranges::all_of(*code, AllowedInBillingCode))
        throw Refusal(Utf8(kBillingCodeValue) + ' ' + Quoted(*code) + " would be ignored: it can hold digits only");
    if (code && code->size() > kBillingCodeLimit)
        throw Refusal(Utf8(kBillingCodeValue) + " has " + std::to_string(code->size()) + " digits, of which only " +
                      std::to_string(kBillingCodeLimit) + " would be used");
    for (const DeviceNumber& number : kDeviceNumbers) {
        const auto value = settings.Number(number.name);
        if (value && number.isFlag && *value > 1)
            throw Refusal(Utf8(number.name) + " is 0 or 1");
    }
    const auto least = settings.Number(L"FAX_BILLING_CODE_MINLENGTH");
    if (least && *least > kBillingCodeLimit)
        throw Refusal("no billing code has " + std::to_string(*least) + " digits: the field takes " +
                      std::to_string(kBillingCodeLimit) + ", so no fax could be sent");
}

// ---- setting and taking back ---------------------------------------------------------------------------------------

DWORD WritePrinterData(HANDLE printer, const Setting& row, const Value& value)
{
    if (const auto* const number = std::get_if<std::uint32_t>(&value)) {
        DWORD data = *number;
        return SetPrinterDataExW(printer, row.printerKey, row.name, REG_DWORD, reinterpret_cast<BYTE*>(&data),
                                 sizeof data);
    }
    std::wstring text = std::get<std::wstring>(value);
    return SetPrinterDataExW(printer, row.printerKey, row.name, REG_SZ, reinterpret_cast<BYTE*>(text.data()),
                             static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
}

std::wstring PrinterKeyPath(std::wstring printer, const wchar_t* key)
{
    std::ranges::replace(printer, L'\\', L','); // as the spooler names its keys
    return kPrintersKey + printer + L'\\' + key;
}

// A spooler that does not know how to remove a value keeps it in the registry all the same.
DWORD RemovePrinterData(HANDLE printer, const std::wstring& printerName, const Setting& row)
{
    const DWORD error = DeletePrinterDataExW(printer, row.printerKey, row.name);
    if (error != ERROR_INVALID_PARAMETER && error != ERROR_CALL_NOT_IMPLEMENTED)
        return error;
    return static_cast<DWORD>(
        RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, PrinterKeyPath(printerName, row.printerKey).c_str(), row.name));
}

DWORD WriteDeviceValue(HKEY key, const Setting& row, const Value& value)
{
    const bool written = std::holds_alternative<std::uint32_t>(value)
                             ? WriteDword(key, row.name, std::get<std::uint32_t>(value))
                             : WriteString(key, row.name, std::get<std::wstring>(value).c_str(), REG_SZ);
    return written ? ERROR_SUCCESS : ERROR_ACCESS_DENIED;
}

std::string Where(const Setting& row)
{
    return row.printerKey != nullptr ? "the printer data " : "the device state ";
}

UniqueKey DeviceKey(Settings& settings)
{
    UniqueKey key;
    if (const auto guid = settings.Text(kRestrictedUserGuidValue))
        RegCreateKeyExW(HKEY_CURRENT_USER, UserKeyPath(*guid, kDeviceStateKey).c_str(), 0, nullptr, 0,
                        KEY_READ | KEY_WRITE, nullptr, key.Receive(), nullptr);
    return key;
}

void Apply(Settings& settings, HANDLE printer, Report& report)
{
    bool allSet = true;
    UniqueKey device;
    for (const Setting& row : settings.Rows()) {
        if (!row.given || row.given == row.present)
            continue;
        allSet = false;
        if (!report.DryRun() && row.printerKey == nullptr && !device)
            device = DeviceKey(settings);
        const DWORD error = report.DryRun()             ? DWORD{ERROR_SUCCESS}
                            : row.printerKey != nullptr ? WritePrinterData(printer, row, *row.given)
                                                        : WriteDeviceValue(device.Get(), row, *row.given);
        if (error != ERROR_SUCCESS)
            throw Refusal(SystemError("cannot set " + Where(row) + Utf8(row.name), error));
        report.Change("set " + Where(row) + Utf8(row.name) + " to " + Shown(*row.given));
    }
    if (allSet)
        report.Say("Everything is set so already.");
}

void TakeBack(Settings& settings, HANDLE printer, const std::wstring& printerName, Report& report)
{
    // The device state first: the GUID tells where it is.
    UniqueKey device;
    if (const auto guid = settings.Text(kRestrictedUserGuidValue))
        RegOpenKeyExW(HKEY_CURRENT_USER, UserKeyPath(*guid, kDeviceStateKey).c_str(), 0, KEY_READ | KEY_WRITE,
                      device.Receive());
    std::size_t removed = 0;
    for (const Setting& row : settings.Rows()) {
        if (!row.present)
            continue;
        if (!report.DryRun()) {
            const DWORD error = row.printerKey != nullptr ? RemovePrinterData(printer, printerName, row)
                                                          : static_cast<DWORD>(RegDeleteValueW(device.Get(), row.name));
            if (error != ERROR_SUCCESS)
                throw Refusal(SystemError("cannot remove " + Where(row) + Utf8(row.name), error));
        }
        report.Change("remove " + Where(row) + Utf8(row.name));
        ++removed;
    }
    if (removed == 0)
        report.Say("There was nothing to take back.");
}

// ---- files ---------------------------------------------------------------------------------------------------------

std::vector<RegistrySetting> AsRegistry(Settings& settings, const std::wstring& printer, bool remove)
{
    std::vector<RegistrySetting> registry;
    const auto guid = settings.Text(kRestrictedUserGuidValue);
    for (const Setting& row : settings.Rows()) {
        const std::optional<Value>& value = row.Effective();
        if (!value && !remove)
            continue;
        const bool ofPrinter = row.printerKey != nullptr;
        if (!ofPrinter && !guid)
            continue;
        registry.push_back(
            {.hive = ofPrinter ? Hive::Machine : Hive::User,
             .key = ofPrinter ? PrinterKeyPath(printer, row.printerKey) : UserKeyPath(*guid, kDeviceStateKey),
             .name = row.name,
             .value = value.value_or(Value(std::wstring())),
             .remove = remove});
    }
    return registry;
}

// ---- the command ---------------------------------------------------------------------------------------------------

struct Options {
    std::wstring printer;
    Settings settings;
    bool remove = false;
    ExportOptions exported;
};

void Export(Options& options, Report& report)
{
    UniquePrinter printer;
    try {
        printer = OpenPrinterToRead(options.printer);
        options.settings.ReadPresent(printer.Get());
    } catch (const Refusal& refusal) {
        if (!options.settings.AnyGiven())
            throw;
        report.Say("Note: " + std::string(refusal.what()) + " here, so nothing was compared with its driver.");
    }
    RefuseGuid(options.settings);
    RefuseHelp(options.settings, printer.Get());
    RefuseCoverPage(options.settings);
    RefuseBillingCode(options.settings);
    ExportSettings(options.exported, AsRegistry(options.settings, options.printer, options.remove), report);
}

void Configure(Options& options, Report& report)
{
    if (options.remove && options.settings.AnyGiven())
        throw UsageError("--remove takes everything back, and no other settings");
    if (options.exported.Wanted())
        return Export(options, report);
    if (!options.remove && !options.settings.AnyGiven())
        throw UsageError("there is nothing to set; --help lists what can be");
    const UniquePrinter printer = OpenPrinterToConfigure(options.printer);
    options.settings.ReadPresent(printer.Get());
    if (options.remove)
        return TakeBack(options.settings, printer.Get(), options.printer, report);
    RefuseGuid(options.settings);
    RefuseHelp(options.settings, printer.Get());
    RefuseCoverPage(options.settings);
    RefuseBillingCode(options.settings);
    Apply(options.settings, printer.Get(), report);
}

void AddTextSetting(CLI::App& command, Options& options, const std::string& option, const wchar_t* name,
                    const std::string& group)
{
    command
        .add_option_function<std::string>(
            option, [&options, name](const std::string& text) { options.settings.Named(name).given = Wide(text); },
            Utf8(name))
        ->type_name("TEXT")
        ->group(group);
}

void AddNumberSetting(CLI::App& command, Options& options, const std::string& option, const wchar_t* name,
                      const std::string& group)
{
    command
        .add_option_function<std::uint32_t>(
            option, [&options, name](std::uint32_t number) { options.settings.Named(name).given = number; }, Utf8(name))
        ->group(group);
}

// "FAX_BILLING_CODE" is set by "--fax-billing-code".
std::string OptionOf(const wchar_t* name)
{
    std::string option = "--" + Utf8(name);
    for (char& c : option)
        c = c == '_' ? '-' : c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    return option;
}

} // namespace

void AddConfigureCommand(CLI::App& app, Invocation& invocation)
{
    const auto options = std::make_shared<Options>();
    CLI::App& command = *app.add_subcommand("configure", "Set what a printer's dialogs need, or take it back.");
    AddText(command, "--printer", options->printer, "name of the printer")->required();
    command.add_flag("--remove", options->remove, "take back all that this command can set");
    const std::string data = "Printer data";
    AddTextSetting(command, *options, "--guid", kRestrictedUserGuidValue, data);
    AddTextSetting(command, *options, "--help-cabinet", kHelpCabinetValue, data);
    AddTextSetting(command, *options, "--help-file", kHelpFileValue, data);
    AddNumberSetting(command, *options, "--cover-page-lock", kCoverPageLockValue, data);
    AddTextSetting(command, *options, "--cover-page-bitmap", kCoverPagePathValue, data);
    const std::string device = "Device state, of the current user";
    AddTextSetting(command, *options, OptionOf(kBillingCodeValue), kBillingCodeValue, device);
    for (const DeviceNumber& number : kDeviceNumbers)
        AddNumberSetting(command, *options, OptionOf(number.name), number.name, device);
    AddExportOptions(command, options->exported);
    command.callback(
        [&invocation, options] { invocation.run = [options](Report& report) { Configure(*options, report); }; });
}

} // namespace qx::admin
