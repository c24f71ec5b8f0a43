// The administrator's tool: sets printers and users up, tells what a user will see and why, checks and fills phone
// books.
#include "admin/command.h"

#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <io.h>

namespace qx::admin {
namespace {

// What cannot even be understood is told as everything else is.
int Tell(Report& report, const std::string& problem, int code)
{
    report.Problem(problem);
    report.Finish();
    return code;
}

int Run(std::vector<std::string> arguments)
{
    CLI::App app("Sets the send-fax dialogs up, tells what a user will see, checks and fills phone books.", "qxfaxadm");
    Invocation invocation;
    app.add_flag("--json", invocation.json, "answer with one JSON object");
    app.add_flag("--dry-run", invocation.dryRun, "tell what would be changed, and change nothing");
    app.footer("Exit codes: 0 done, 1 refused or failed, 2 wrong usage.");
    app.require_subcommand(1);
    app.allow_windows_style_options(false); // "/home/ann.vcf" is a file
    app.fallthrough();                      // the two may stand behind the command, too
    AddConfigureCommand(app, invocation);
    AddDefaultsCommands(app, invocation);
    AddDoctorCommand(app, invocation);
    AddPhoneBookCommands(app, invocation);
    AddTracesCommands(app, invocation);

    const bool json = std::ranges::find(arguments, "--json") != arguments.end();
    try {
        std::ranges::reverse(arguments); // the order in which the library takes them
        app.parse(arguments);
    } catch (const CLI::ParseError& refused) {
        if (refused.get_exit_code() == 0)
            return app.exit(refused); // the help
        Report report(json, false);
        return Tell(report, std::string(refused.what()) + "; --help tells more", kWrongUsage);
    }
    Report report(invocation.json, invocation.dryRun);
    try {
        invocation.run(report);
        return report.Finish();
    } catch (const UsageError& wrong) {
        return Tell(report, wrong.what(), kWrongUsage);
    } catch (const std::exception& refused) {
        return Tell(report, refused.what(), kRefused);
    }
}

} // namespace
} // namespace qx::admin

int wmain(int count, wchar_t** words)
{
    _setmode(_fileno(stdout), _O_BINARY);
    _setmode(_fileno(stderr), _O_BINARY);
    setvbuf(stdout, nullptr, _IOFBF, 1 << 16);
    SetConsoleOutputCP(CP_UTF8);
    try {
        std::vector<std::string> arguments;
        for (int i = 1; i < count; ++i)
            arguments.push_back(qx::admin::Utf8(words[i]));
        return qx::admin::Run(std::move(arguments));
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "qxfaxadm: %s\n", failure.what());
        return qx::admin::kRefused;
    }
}
