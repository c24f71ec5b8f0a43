// Walks the way that the module goes when a fax is sent, through the module's own functions, and changes nothing.
#include "admin/book_file.h"
#include "admin/cabinet.h"
#include "admin/help_names_check.h"
#include "admin/user_keys.h"
#include "base/limits.h"
#include "base/number_text.h"
#include "base/printer.h"
#include "base/text.h"
#include "phonebook/file/file_replacement.h"
#include "phonebook/recent/recent_list.h"
#include "record/fax_job_data.h"
#include "settings/device_state.h"
#include "settings/fax_defaults.h"
#include "settings/key_set.h"
#include "settings/names.h"
#include "text/help.h"

#include <algorithm>
#include <memory>

namespace qx::admin {

namespace {

constexpr wchar_t kModule[] = L"qxfaxui.dll";
constexpr std::size_t kPhoneBookPathUnits = 259;

bool FileIsThere(const std::wstring& path) noexcept
{
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

std::string LanguageName(LANGID language)
{
    wchar_t name[128] = L"";
    GetLocaleInfoW(MAKELCID(language, SORT_DEFAULT), LOCALE_SENGLANGUAGE, name, static_cast<int>(std::size(name)));
    return *name != L'\0' ? Utf8(name) : "language " + std::to_string(language);
}

class Doctor {
public:
    Doctor(std::wstring printerName, Report& report)
        : report_(report), name_(std::move(printerName)), printer_(OpenPrinterToRead(name_))
    {
    }

    void Run()
    {
        LookAtDriver();
        LookAtTexts();
        LookAtHelp();
        LookAtGuid();
        LookAtDefaults();
        LookAtDeviceState();
        LookAtCoverPage();
        LookAtPhoneBook();
        LookAtRecents();
        report_.Data()["printer"] = Utf8(name_);
        report_.Data()["findings"] = std::move(findings_);
        if (problems_ == 0)
            report_.Say("Nothing is wrong.");
    }

private:
    void Good(const char* about, const std::string& what) { Find(about, "good", what); }
    void Note(const char* about, const std::string& what) { Find(about, "note", what); }
    // One sentence: what is wrong, what the user sees, and what to do.
    void Problem(const char* about, const std::string& what)
    {
        ++problems_;
        findings_.push_back({{"about", about}, {"state", "problem"}, {"what", what}});
        report_.Problem(std::string(about) + ": " + what);
    }

    void Find(const char* about, const char* state, const std::string& what)
    {
        findings_.push_back({{"about", about}, {"state", state}, {"what", what}});
        report_.Say(std::string(about) + ": " + what + '.');
    }

    HANDLE Printer() const noexcept { return printer_.Get(); }

    // ---- the driver and its files --------------------------------------------------------------------------------

    void LookAtDriver()
    {
        const std::wstring module = PrinterDriver(Printer()).FileBeside(kModule);
        if (module.empty())
            return Problem("driver", "the spooler names no driver folder, so there are neither texts nor help: install "
                                     "the printer's driver again");
        Good("driver", "its folder is " + Utf8(module.substr(0, module.rfind(L'\\'))));
        if (!FileIsThere(module))
            Note("driver",
                 "there is no " + Utf8(kModule) + " in the folder; the driver must load it from another place");
    }

    void LookAtTexts()
    {
        const std::wstring path = StringLibraryPath(PrinterDriver(Printer()));
        if (!FileIsThere(path))
            return Problem("texts", "there is no text library " + Quoted(path) +
                                        ", so the dialogs show their built-in English texts: copy it there");
        const UniqueModule library(LoadLibraryExW(path.c_str(), nullptr, DONT_RESOLVE_DLL_REFERENCES));
        if (!library)
            return Problem("texts",
                           "the text library " + Quoted(path) +
                               " cannot be loaded, so the dialogs show their built-in English texts: replace it");
        TextOwner owner;
        owner.hStringDll = library.Get();
        wchar_t text[kTextUnits];
        constexpr unsigned kSend = 5214; // any that every language has
        if (!LoadLocalizedString(owner, kSend, text))
            return Problem("texts", "the text library " + Quoted(path) + " lacks texts: replace it");
        const LANGID wanted = GetUserDefaultUILanguage();
        const LANGID shown = CurrentTextLanguage();
        const std::string what = "the dialogs are shown in " + LanguageName(shown) + ", from " + Quoted(path);
        if (PRIMARYLANGID(wanted) == PRIMARYLANGID(shown))
            Good("texts", what);
        else
            Note("texts", what + ", which has no " + LanguageName(wanted));
    }

    // ---- help ----------------------------------------------------------------------------------------------------

    void LookAtHelp()
    {
        const std::wstring cabinetName = PrinterText(Printer(), kDriverData, kHelpCabinetValue).value_or(L"");
        const std::wstring helpFile = PrinterText(Printer(), kDriverData, kHelpFileValue).value_or(L"");
        for (const auto& [value, name] : {std::pair(cabinetName, kHelpCabinetValue), {helpFile, kHelpFileValue}}) {
            if (value.empty())
                return Problem("help",
                               "the printer has no " + Utf8(name) + ", so there is no help: set it with \"configure\"");
        }
        const HelpNames names = HelpNamesOf(Printer(), helpFile);
        const std::string why = WhyHelpNamesFail(names, helpFile);
        if (!why.empty())
            return Problem("help", why);
        const std::wstring cabinet = BuildDriverFilePath(Printer(), cabinetName);
        if (!FileIsThere(cabinet))
            return Problem("help", "there is no cabinet " + Quoted(cabinet) + ", so there is no help: copy it there");
        const auto files = FilesInCabinet(cabinet);
        if (!files)
            return Problem("help", "the cabinet " + Quoted(cabinet) + " cannot be read: replace it");
        const bool held =
            std::ranges::any_of(*files, [&](const std::wstring& file) { return SameFileName(file, names.unpacked); });
        if (!held)
            return Problem("help",
                           "the cabinet " + Quoted(cabinet) + " holds no " + Utf8(names.unpacked) + ", so " +
                               LanguageName(GetUserDefaultUILanguage()) +
                               " users have no help: add the file, or a copy of the English one, under that name");
        Good("help", "the names agree: " + Utf8(names.unpacked) + " is in " + Quoted(cabinet));
        LookAtUnpackedHelp(cabinet, names.unpacked);
        LookAtViewer();
    }

    void LookAtUnpackedHelp(const std::wstring& cabinet, const std::wstring& name)
    {
        const std::wstring path(HelpChmPath(BuildHelpFilePath(PrinterDriver(Printer()))));
        if (!FileIsThere(path))
            return Good("help", "the next fax unpacks it to " + Quoted(path));
        std::string unpacked;
        if (ReadWholeFile(path, unpacked) != ERROR_SUCCESS)
            return Note("help", Quoted(path) + " is in use, and was not compared with the cabinet's");
        if (FileFromCabinet(cabinet, name) != unpacked)
            return Problem("help", Quoted(path) +
                                       " is not the file that is in the cabinet, an older one as a rule, and "
                                       "stays as it is: remove it (\"traces clear --help-files\")");
        Good("help", Quoted(path) + " is the cabinet's");
    }

    void LookAtViewer()
    {
        wchar_t folder[MAX_PATH + 1] = L"";
        GetSystemDirectoryW(folder, MAX_PATH);
        const std::wstring viewer = std::wstring(folder) + L"\\hhctrl.ocx";
        if (!FileIsThere(viewer))
            Problem("help",
                    "Windows' help viewer " + Quoted(viewer) + " is missing, so no page is shown: repair Windows");
    }

    // ---- the user's settings -------------------------------------------------------------------------------------

    void LookAtGuid()
    {
        guid_ = RestrictedUserGuid(Printer());
        if (!guid_)
            return Problem("guid", "the printer has no " + Utf8(kRestrictedUserGuidValue) +
                                       ", so nothing is remembered for its users and the device counts as off: set one "
                                       "with \"configure --guid\"");
        if (!IsPlainFileName(*guid_))
            return Problem("guid", Utf8(kRestrictedUserGuidValue) + ' ' + Quoted(*guid_) +
                                       " cannot name a phone book file: set another one with \"configure --guid\"");
        Good("guid", "the user's settings are in HKEY_CURRENT_USER\\" + Utf8(UserKeyPath(*guid_, {})));
        for (const wchar_t* const key : {kAddressBookKey, kDefaultsKey, kJobDataKey, kRecentListKey}) {
            if (!OpenUserKey(*guid_, key))
                Note("guid", "the key " + Utf8(key) + " is not there yet; the first fax makes it");
        }
    }

    void LookAtDefaults()
    {
        if (!guid_)
            return;
        const UniqueKey key = OpenUserKey(*guid_, kDefaultsKey);
        bool any = false;
        for (const FaxDefaultName& value : FaxDefaultNames())
            any = LookAtDefault(key.Get(), value) || any;
        if (ValueType(key.Get(), L"ApplyDefaults") != REG_NONE)
            Good("defaults", "they are applied, and the sheet opens on the Fax Job page");
        else if (any)
            Note("defaults", "without ApplyDefaults the sheet opens on the Setup page, although values are stored");
        else
            Good("defaults", "none are stored, so the sheet opens on the Setup page");
    }

    bool LookAtDefault(HKEY key, const FaxDefaultName& value)
    {
        const DWORD type = ValueType(key, value.name);
        if (type == REG_NONE)
            return false;
        const std::string name = Utf8(value.name);
        std::wstring text;
        DWORD number = 0;
        if (type != value.type) {
            Problem("defaults", name + " is of another type than " + (value.type == REG_SZ ? "REG_SZ" : "REG_DWORD") +
                                    ": store it anew with \"defaults set\"");
        } else if (value.type == REG_SZ && ReadString(key, value.name, text)) {
            const std::wstring stored = text.c_str();
            const auto taken = FaxDefaultTakenOver(value.name, stored);
            if (!taken)
                Problem("defaults",
                        name + ' ' + Quoted(stored) +
                            " is ignored, since only digits and , - * # ( ) can stand in a number: store it "
                            "anew with \"defaults set\"");
            else if (*taken != stored)
                Note("defaults", name + " is cut to its first " + std::to_string(taken->size()) + " characters");
        } else if (value.type == REG_DWORD && ReadDword(key, value.name, number)) {
            const DWORD taken = FaxDefaultTakenOver(value.name, number);
            if (taken != number)
                Note("defaults", name + ' ' + std::to_string(number) + " counts as " + std::to_string(taken));
        }
        return true;
    }

    // ---- the device ----------------------------------------------------------------------------------------------

    void LookAtDeviceState()
    {
        if (!guid_)
            return;
        OwnedFaxJobData owned;
        FaxJobData& record = owned.Get();
        ReadDeviceState(record, Printer());
        const HKEY key = record.hBidiInfoKey;
        if (key == nullptr)
            Problem("device",
                    "there is no key " + Utf8(kDeviceStateKey) +
                        ", so the device counts as off and the user is warned: let the device-status software "
                        "run, or set values with \"configure\"");
        else
            LookAtDeviceValues(record);
        CloseKeys(KeySetOf(record));
    }

    void LookAtDeviceValues(const FaxJobData& record)
    {
        for (const DeviceNumber& number : kDeviceNumbers) {
            const DWORD type = ValueType(record.hBidiInfoKey, number.name);
            if (type != REG_NONE && type != REG_DWORD)
                Problem("device",
                        Utf8(number.name) + " is no REG_DWORD and counts as missing: set it with \"configure\"");
        }
        if (record.PcFaxSendOperational != 0)
            Good("device", "faxes from computers are accepted");
        else
            Note("device", "it does not accept faxes from computers: the user is warned, and can send all the same");
        Note("device", std::string(record.NotificationAvailable == 0     ? "the notification settings are hidden"
                                   : record.EmailServiceOperational != 0 ? "notifications are printed or sent by e-mail"
                                                                         : "notifications can only be printed"));
        LookAtBillingCode(record);
    }

    void LookAtBillingCode(const FaxJobData& record)
    {
        std::wstring text;
        if (ValueType(record.hBidiInfoKey, kBillingCodeValue) == REG_SZ &&
            ReadString(record.hBidiInfoKey, kBillingCodeValue, text)) {
            const std::wstring code = text.c_str();
            if (!std::ranges::all_of(code, AllowedInBillingCode))
                Problem("device", Utf8(kBillingCodeValue) + ' ' + Quoted(code) +
                                      " is ignored, since it can hold digits only: set it with \"configure\"");
            else if (code.size() > kBillingCodeLimit)
                Note("device",
                     "only the first " + std::to_string(kBillingCodeLimit) + " digits of the billing code count");
        }
        if (record.BillingCodeEnabled == 0)
            return;
        if (record.BillingCodeMinLength > kBillingCodeLimit)
            Problem("device", "a billing code of " + std::to_string(record.BillingCodeMinLength) +
                                  " digits is demanded, but the field takes " + std::to_string(kBillingCodeLimit) +
                                  ", so no fax can be sent: set a lower length");
        else
            Note("device",
                 "a billing code of at least " + std::to_string(record.BillingCodeMinLength) + " digits is demanded");
    }

    void LookAtCoverPage()
    {
        OwnedFaxJobData owned;
        FaxJobData& record = owned.Get();
        record.PrinterHandle = Printer();
        ReadCoverPageLock(record);
        const bool wanted = PrinterNumber(Printer(), kDriverData, kCoverPageLockValue).value_or(0) != 0;
        if (wanted && record.CoverPageLock != kCoverPageLocked)
            return Problem("cover page", "it is locked, but without a bitmap the lock does not hold: give "
                                         "\"configure --cover-page-bitmap\"");
        if (record.CoverPageLock != kCoverPageLocked)
            return Good("cover page", "users choose theirs");
        const std::wstring bitmap = OrEmpty(record.DefaultOverlayPath);
        if (FileIsThere(bitmap))
            Good("cover page", "every fax has the one of " + Quoted(bitmap));
        else
            Problem("cover page", "every fax is to have the one of " + Quoted(bitmap) +
                                      ", which is not there for this user: put it there, or give another path");
    }

    // ---- what users have -----------------------------------------------------------------------------------------

    void LookAtPhoneBook()
    {
        const std::wstring path = PathOf({.file = {}, .printer = name_});
        if (path.size() >= kPhoneBookPathUnits)
            Problem("phone book",
                    "its path has more than 259 characters and is cut: redirect the documents folder to a "
                    "shorter path");
        const BookFile file(path);
        report_.Data()["phoneBook"] = Utf8(path);
        if (file.Outcome() == LoadOutcome::NoFile) {
            Good("phone book", "there is none yet; " + Quoted(path) + " is where it will be");
        } else if (file.Outcome() != LoadOutcome::Read) {
            Problem("phone book", ProblemOf(file.Outcome(), path));
        } else {
            const BookCounts counts = CountItems(file.Book().Items());
            const auto stamp = StampOf(path);
            Good("phone book", Quoted(path) + " holds " + Counted(counts.entries, "entry", "entries") + " and " +
                                   Counted(counts.groups, "group", "groups") + " in " +
                                   std::to_string(stamp ? stamp->bytes : 0) + " bytes");
            if (file.Dropped())
                Problem("phone book",
                        Quoted(path) + " holds entries that are not shown: \"phonebook check\" tells which");
        }
        LookWhoHolds(path);
        const std::size_t copies = KeptCopies(FollowLink(path)).size();
        if (copies != 0)
            Note("phone book", Counted(copies, "copy was", "copies were") + " kept: \"phonebook restore\" lists them");
    }

    void LookWhoHolds(const std::wstring& path)
    {
        const UniqueFile alone(
            CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
        if (!alone && GetLastError() == ERROR_SHARING_VIOLATION)
            Note("phone book", "another program has " + Quoted(path) + " open; while it does, nothing can be saved");
        const DWORD attributes = GetFileAttributesW(path.c_str());
        if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0)
            Problem("phone book", Quoted(path) + " is read-only, so nothing can be saved: take the attribute away");
    }

    void LookAtRecents()
    {
        if (!guid_ || !OpenUserKey(*guid_, kAddressBookKey) || !OpenUserKey(*guid_, kDefaultsKey) ||
            !OpenUserKey(*guid_, kJobDataKey) || !OpenUserKey(*guid_, kRecentListKey))
            return Good("recents", "none are remembered"); // opening the list would make its keys
        RecentRecipientList list;
        list.Open(Printer());
        list.Load();
        const auto count =
            std::ranges::count_if(list.Slots(), [](const PhoneBookItem* slot) { return slot != nullptr; });
        Good("recents", Counted(static_cast<std::size_t>(count), "recipient is", "recipients are") + " remembered");
    }

    Report& report_;
    std::wstring name_;
    UniquePrinter printer_;
    std::optional<std::wstring> guid_;
    Json findings_ = Json::array();
    std::size_t problems_ = 0;
};

} // namespace

void AddDoctorCommand(CLI::App& app, Invocation& invocation)
{
    const auto printer = std::make_shared<std::wstring>();
    CLI::App& doctor = *app.add_subcommand("doctor", "Tell what a user of a printer will see, and what is wrong.");
    AddText(doctor, "--printer", *printer, "name of the printer")->required();
    doctor.callback(
        [&invocation, printer] { invocation.run = [printer](Report& report) { Doctor(*printer, report).Run(); }; });
}

} // namespace qx::admin
