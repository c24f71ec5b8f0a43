// Never the wrong recipient, and nothing lost: random users of the whole sheet and a model of what they know.
//
// A user types, pastes, clicks and selects on both pages, in the picker, the editor and its dialogs, edits defaults,
// imports and exports, sends and cancels, session after session, while somebody else changes the phone book. After each
// event (sheet_user.h says what one is) everything must be as the model says; first of all no recipient may have a
// number that is neither its own nor the user's.
//
// The suite plays one user. The events of a user who meets a mistake are shortened to those that are needed for
// it, and printed. tools/users.sh plays any others, by QX_USERS=first,count, and such a script again, by
// QX_SCRIPT=file.
#include "support/child_process.h"
#include "support/send_fax_session.h"
#include "support/temporary_folder.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>

namespace qx::test {
namespace {

constexpr int kEventsOfOneUser = 1000;
constexpr int kEnoughMistaken = 3; // users, to look into
constexpr auto kTimeToShorten = std::chrono::minutes(8);

using Script = std::vector<std::string>;

Script ReadLines(const std::filesystem::path& file)
{
    Script script;
    std::ifstream lines(file);
    for (std::string line; std::getline(lines, line);)
        script.push_back(line);
    return script;
}

std::string Joined(const Script& script)
{
    std::string text;
    for (const std::string& line : script)
        text += line + '\n';
    return text;
}

struct Outcome {
    bool good = false; // a process that was ended may have any code
    DWORD code = 0;
    unsigned user = 0;
    std::string mistake;
    // The kind of mistake, without the particulars.
    std::string Kind() const
    {
        return good ? "none" : std::to_string(code) + ' ' + mistake.substr(0, mistake.find_first_of(":\n"));
    }
};

class SheetModel : public ::testing::Test {
protected:
    Outcome Play(unsigned first, unsigned count)
    {
        return Run({L"play", std::to_wstring(first), std::to_wstring(count), std::to_wstring(kEventsOfOneUser)});
    }

    Outcome Replay(unsigned user, const Script& script)
    {
        WriteBytes(script_, Joined(script));
        return Run({L"replay", std::to_wstring(user)});
    }

    // Delta debugging: leaves out ever smaller parts for as long as the same mistake shows.
    Script Shortened(unsigned user, const std::string& kind, Script script)
    {
        const auto deadline = std::chrono::steady_clock::now() + kTimeToShorten;
        for (std::size_t parts = 2; script.size() > 1;) {
            const std::size_t length = (script.size() + parts - 1) / parts;
            bool shorter = false;
            for (std::size_t from = 0; from < script.size() && !shorter; from += length) {
                if (std::chrono::steady_clock::now() > deadline)
                    return script;
                Script rest = script;
                const auto begin = rest.begin() + static_cast<std::ptrdiff_t>(from);
                rest.erase(begin, begin + static_cast<std::ptrdiff_t>(std::min(length, script.size() - from)));
                shorter = Replay(user, rest).Kind() == kind;
                if (shorter)
                    script = std::move(rest);
            }
            if (!shorter && length == 1)
                break;
            parts = shorter ? std::max<std::size_t>(parts - 1, 2) : std::min(parts * 2, script.size());
        }
        return script;
    }

    void Tell(const Outcome& outcome)
    {
        const Script script = ReadLines(script_);
        std::printf("user %u, exit code %lu, after %zu events: %s", outcome.user, outcome.code, script.size(),
                    outcome.mistake.c_str());
        std::fflush(stdout);
        const Outcome again = Replay(outcome.user, script);
        ADD_FAILURE() << "user " << outcome.user << ", exit code " << outcome.code << ": " << outcome.mistake
                      << (again.good ? "(not again when replayed)\n" : "")
                      << Joined(again.good ? script : Shortened(outcome.user, again.Kind(), script));
    }

private:
    Outcome Run(const std::vector<std::wstring>& task)
    {
        std::error_code ignored;
        std::filesystem::remove(report_, ignored);
        std::vector<std::wstring> arguments{session_.Printer(), session_.Guid(), session_.PhoneBookFile().wstring(),
                                            report_.wstring(), script_.wstring()};
        arguments.insert(arguments.end(), task.begin(), task.end());
        const ChildProcess player(ProgramBeside(L"sheet_player.exe"), arguments, ChildProcess::Handles::Inherited);
        Outcome outcome;
        outcome.code = player.ExitCode();
        Script report = ReadLines(report_);
        if (report.empty())
            throw std::runtime_error("the player does not play");
        outcome.user = static_cast<unsigned>(std::stoul(report.front()));
        outcome.good = outcome.user == 0;
        report.erase(report.begin());
        outcome.mistake = Joined(report);
        return outcome;
    }

    SendFaxSession session_; // for its printer
    TemporaryFolder folder_;
    const std::filesystem::path report_ = folder_ / L"report", script_ = folder_ / L"script";
};

TEST_F(SheetModel, EveryUserSeesAndSendsAndFindsAgainWhatHeEntered)
{
    unsigned first = 2, count = 1; // with a combo box that behaves as on Windows
    if (const char* const chosen = std::getenv("QX_USERS"))
        std::sscanf(chosen, "%u,%u", &first, &count);
    const char* const script = std::getenv("QX_SCRIPT");
    for (int mistaken = 0; count > 0 && mistaken < kEnoughMistaken; ++mistaken) {
        const Outcome outcome = script != nullptr ? Replay(first, ReadLines(script)) : Play(first, count);
        if (outcome.good)
            return;
        Tell(outcome);
        count -= outcome.user + 1 - first;
        first = outcome.user + 1; // the others go on without him
    }
}

} // namespace
} // namespace qx::test
