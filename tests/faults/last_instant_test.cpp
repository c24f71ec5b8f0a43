// Every instant can be the last: of the process, before and after each call that leaves traces, and of the computer,
// which loses what has not reached the disk. What the next session finds is old or new, and whole.
#include "played_faults.h"
#include "power_cut.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>
#include <set>

namespace qx::test {
namespace {

constexpr std::size_t kSample = 3; // of a scenario's calls

class LastInstant : public testing::TestWithParam<const NamedScenario*> {};

// The document writes its file itself, by one call.
bool LeavesTraces(const SeenCall& call)
{
    return EveryCall::LeavesTraces(call.function) || call.function == "DOM";
}

TEST_P(LastInstant, OfTheProcessLeavesOldOrNewAndWhole)
{
    const PlayedFaults played(GetParam()->name, "ends");
    const Extent extent = ExtentAsked();
    std::vector<Fault> faults = played.FaultsOf(extent == Extent::Calls, LeavesTraces);
    if (extent == Extent::Sample) {
        std::erase_if(faults, [](const Fault& fault) { return fault.function == "DOM"; });
        faults = SampleOf(std::move(faults), kSample);
    }
    played.Report(faults, played.Play(faults), " (before) ", " (after) ");
}

TEST_P(LastInstant, OfTheComputerLeavesOldOrNewAndWhole)
{
    const PlayedFaults played(GetParam()->name, "cut");
    const std::vector<Result> results = played.Play();
    ASSERT_FALSE(results.empty());
    for (const Result& result : results)
        EXPECT_NE(result.mark, '!') << result.what;
    played.Tabulate(results);
}

// The sample has one scenario of each kind of what is saved.
std::vector<const NamedScenario*> SavingScenarios()
{
    std::vector<const NamedScenario*> scenarios = Scenarios();
    const std::set<std::string> sample{"add_to_phone_book", "import",        "export",
                                       "type_and_send",     "edit_defaults", "help"};
    if (ExtentAsked() == Extent::Sample)
        std::erase_if(scenarios, [&](const NamedScenario* named) { return !sample.contains(named->name); });
    return scenarios;
}

INSTANTIATE_TEST_SUITE_P(Sessions, LastInstant, testing::ValuesIn(SavingScenarios()),
                         [](const auto& instance) { return std::string(instance.param->name); });

// ---- the model

class PowerCut : public testing::Test {
protected:
    void Note(const char* function, Instant instant, std::uintptr_t first = 0, std::uintptr_t third = 0)
    {
        const std::uintptr_t arguments[] = {first, 0, third};
        recording.Take({function, instant, arguments, instant == Instant::After});
    }

    // A new file takes an old one's place.
    void Replace(bool flushed)
    {
        WriteBytes(made, "new and long");
        Note("WriteFile", Instant::After);
        if (flushed) {
            const HANDLE file =
                CreateFileW(made.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
            FlushFileBuffers(file);
            Note("FlushFileBuffers", Instant::After, reinterpret_cast<std::uintptr_t>(file));
            CloseHandle(file);
        }
        MoveFileExW(made.c_str(), book.c_str(), MOVEFILE_REPLACE_EXISTING);
        Note("MoveFileExW", Instant::After, 0, MOVEFILE_WRITE_THROUGH);
    }

    std::set<std::string> ContentsOfBook() const
    {
        std::set<std::string> contents;
        for (const FolderState& state : recording.StatesAfterPowerCut())
            contents.insert(state.contains(book) ? state.at(book) : "<no file>");
        return contents;
    }

    TemporaryFolder folder;
    const std::filesystem::path book = folder / L"book", made = folder / L"book.new";
    const int written = (WriteBytes(book, "old"), 0);
    DiskRecording recording{{folder.Path()}, folder / L"none"};
};

TEST_F(PowerCut, LosesTheContentOfAFileThatWasRenamedBeforeItWasFlushed)
{
    Replace(false);
    EXPECT_EQ(ContentsOfBook(), (std::set<std::string>{"old", "new and long", "", "new an", std::string(12, '\0')}));
}

TEST_F(PowerCut, LeavesOldOrNewWhenTheFileWasFlushedFirst)
{
    Replace(true);
    EXPECT_EQ(ContentsOfBook(), (std::set<std::string>{"old", "new and long"}));
}

} // namespace
} // namespace qx::test
