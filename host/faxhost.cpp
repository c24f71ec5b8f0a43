// A stand-in for the printer driver: installs a fax printer, hands a job to the module and prints what came back.
#include "host/job.h"
#include "host/options.h"
#include "host/provision.h"
#include "host/script.h"
#include "host/ui_driver.h"
#include "host/utf8.h"

#include <cstdio>
#include <fcntl.h>
#include <fstream>
#include <io.h>
#include <iostream>
#include <optional>
#include <thread>

namespace qx::host {
namespace {

namespace fs = std::filesystem;

enum ExitCode { kSent = 0, kFailed = 1, kCancelled = 2 };

fs::path OwnFolder()
{
    wchar_t program[MAX_PATH] = L"";
    GetModuleFileNameW(nullptr, program, MAX_PATH);
    return fs::path(program).parent_path();
}

// ---- options -------------------------------------------------------------------------------------------------------

CLI::Option* AddPath(CLI::App& command, const std::string& name, fs::path& value, const std::string& help)
{
    return AddText(command, name, value, help)->type_name("PATH");
}

void AddDeviceNumber(CLI::App& command, PrinterSetup& setup, const std::string& option, const wchar_t* value,
                     const std::string& help)
{
    command.add_option_function<DWORD>(
               option, [&setup, value](DWORD number) { setup.SetDevice(value, number); }, help)
        ->group("Device state (of the current user)");
}

void AddPrinterName(CLI::App& command, std::wstring& printer)
{
    AddText(command, "--printer", printer, "name of the printer")->default_str(Utf8(printer));
}

void AddProvisionOptions(CLI::App& command, PrinterSetup& setup)
{
    AddPrinterName(command, setup.printer);
    AddText(command, "--driver", setup.driver, "name of the driver")->default_str(Utf8(setup.driver));
    AddPath(command, "--module-folder", setup.moduleFolder, "where the module's files lie")
        ->default_str("the program's own folder");
    command.add_flag_callback("--no-text-library", [&setup] { setup.textLibrary = false; }, "built-in texts only");
    AddPath(command, "--text-library", setup.textLibraryFile, "with another text library")
        ->default_str("the one in the module's folder");
    command.add_flag_callback("--no-help", [&setup] { setup.help = false; }, "neither help files nor their names");

    const std::string data = "Printer data";
    AddText(command, "--guid", setup.guid, "names the user's settings")
        ->default_str(Utf8(setup.guid.value_or(L"")))
        ->group(data);
    command.add_flag_callback("--no-guid", [&setup] { setup.guid.reset(); }, "a printer without one")->group(data);
    AddText(command, "--spooler-name", setup.spoolerName, "\"PrinterName\" of \"DsSpooler\"")
        ->default_str("the printer's name")
        ->group(data);
    AddText(command, "--help-cabinet", setup.helpCabinet, "\"HelpCabName\"")->group(data);
    AddText(command, "--help-file", setup.helpFile, "\"GPDHelpFileName\"")->group(data);
    command
        .add_option_function<DWORD>(
            "--cover-page-lock", [&setup](DWORD lock) { setup.coverPageLock = lock; },
            "1: the cover page is locked to the bitmap; 0: free")
        ->group(data);
    AddText(command, "--cover-page-bitmap", setup.coverPagePath, "the administrator's cover page")->group(data);

    AddDeviceNumber(command, setup, "--pc-fax-send-operational", L"PCFAX_SEND_OPERATIONAL", "0: the device is off");
    AddDeviceNumber(command, setup, "--notification-available", L"FAX_NOTIFICATION_AVAILABLE", "0 or 1");
    AddDeviceNumber(command, setup, "--billing-code-enabled", L"FAX_BILLING_CODE_ENABLED", "1: a code is demanded");
    AddDeviceNumber(command, setup, "--billing-code-minlength", L"FAX_BILLING_CODE_MINLENGTH", "digits");
    AddDeviceNumber(command, setup, "--email-service-operational", L"EMAIL-SERVICE-OPERATIONAL", "0 or 1");
    command
        .add_option_function<std::string>(
            "--billing-code", [&setup](const std::string& code) { setup.SetDevice(L"FAX_BILLING_CODE", Wide(code)); },
            "what the code field holds at first")
        ->group("Device state (of the current user)");
}

struct SendOptions {
    std::wstring printer = PrinterSetup().printer;
    fs::path module;
    fs::path script;
    fs::path shots;
};

void AddSendOptions(CLI::App& command, SendOptions& options)
{
    AddPrinterName(command, options.printer);
    AddPath(command, "--module", options.module, "file of the module")->default_str("the one beside the driver file");
    CLI::Option* const script = AddPath(command, "--script", options.script,
                                        "play the user actions of this file instead of waiting for a user");
    AddPath(command, "--shots", options.shots, "folder for the pictures that the script takes")->needs(script);
    command.footer(ScriptHelp() + "\nExit codes: 0 sent, 2 cancelled, 1 failed.");
}

// ---- sending -------------------------------------------------------------------------------------------------------

Script ReadScript(const SendOptions& options)
{
    std::ifstream file(options.script);
    if (!file)
        throw std::runtime_error("cannot read the script " + Utf8(options.script.native()));
    if (!options.shots.empty())
        fs::create_directories(options.shots);
    return Script(file, Utf8(options.script.filename().native()), options.shots);
}

// The user who plays a script beside the thread that shows the dialogs.
class ScriptedUser {
public:
    explicit ScriptedUser(Script script)
        : finished_(CreateEventW(nullptr, TRUE, FALSE, nullptr)), user_(GetCurrentThreadId(), finished_.Get()),
          thread_([this, played = std::move(script)] { Play(played); })
    {
    }

    // To be called when the dialogs have ended. Throws what stopped the script.
    void Join()
    {
        SetEvent(finished_.Get());
        thread_.join();
        if (failure_)
            std::rethrow_exception(failure_);
    }

private:
    void Play(const Script& script)
    {
        try {
            script.Play(user_);
            if (DialogIsLeft())
                throw ScriptError("the script has ended, but the fax is neither sent nor cancelled");
        } catch (...) {
            failure_ = std::current_exception();
        }
        Leave();
    }

    bool DialogIsLeft()
    {
        try {
            user_.Dialog();
            return true;
        } catch (const UiFailure&) {
            return !user_.Finished();
        }
    }

    // The driver's thread waits for the user: whatever happened, the dialogs must end.
    void Leave()
    {
        try {
            user_.CloseEverything();
        } catch (const std::exception& stuck) {
            std::fprintf(stderr, "faxhost: %s\n", stuck.what());
            TerminateProcess(GetCurrentProcess(), kFailed);
        }
    }

    UniqueKernelHandle finished_;
    UiDriver user_;
    std::exception_ptr failure_;
    std::thread thread_;
};

int Send(const SendOptions& options)
{
    const UniquePrinter printer = OpenFaxPrinter(options.printer);
    const FaxModule module(options.module.empty() ? ModuleOf(printer.Get()) : options.module);
    FaxJob job;
    if (options.script.empty()) {
        module.DisplayFaxUi(printer.Get(), job.Record());
    } else {
        ScriptedUser user(ReadScript(options));
        module.DisplayFaxUi(printer.Get(), job.Record());
        user.Join();
    }
    std::cout << job.Json() << '\n';
    return job.Sent() ? kSent : kCancelled;
}

// ---- commands ------------------------------------------------------------------------------------------------------

int Run(std::vector<std::string> arguments)
{
    CLI::App app("A stand-in for the printer driver that shows the send-fax dialogs.", "faxhost");
    app.require_subcommand(1);
    PrinterSetup setup;
    SendOptions sendOptions;
    std::wstring removedPrinter = setup.printer;
    CLI::App& provision = *app.add_subcommand("provision", "Install a driver and a fax printer.");
    CLI::App& unprovision = *app.add_subcommand("unprovision", "Take them back; the user's own settings stay.");
    CLI::App& send = *app.add_subcommand("send", "Show the dialogs for a job, then print the job as JSON.");
    AddProvisionOptions(provision, setup);
    AddPrinterName(unprovision, removedPrinter);
    AddSendOptions(send, sendOptions);

    try {
        std::ranges::reverse(arguments); // the order in which the library takes them
        app.parse(arguments);
    } catch (const CLI::ParseError& refused) {
        return app.exit(refused) == 0 ? 0 : kFailed;
    }
    if (send)
        return Send(sendOptions);
    if (unprovision) {
        Unprovision(removedPrinter);
    } else {
        if (setup.moduleFolder.empty())
            setup.moduleFolder = OwnFolder();
        Provision(setup);
    }
    return 0;
}

} // namespace
} // namespace qx::host

int wmain(int count, wchar_t** words)
{
    using namespace qx::host;
    _setmode(_fileno(stdout), _O_BINARY);
    SetConsoleOutputCP(CP_UTF8);
    try {
        std::vector<std::string> arguments;
        for (int i = 1; i < count; ++i)
            arguments.push_back(Utf8(words[i]));
        return Run(std::move(arguments));
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "faxhost: %s\n", failure.what());
        return kFailed;
    }
}
