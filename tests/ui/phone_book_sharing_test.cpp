// Users of three programs save one phone book against each other, and one on another machine does so, too, who shares
// nothing with them but the file.
//
// The suite lets them go on for 20 seconds; with QX_THOROUGH=1 an hour, with QX_MINUTES=n that long.
#include "host/utf8.h"
#include "phonebook/file/file_replacement.h"
#include "support/child_process.h"
#include "support/phone_book_session.h"
#include "support/temporary_folder.h"
#include "support/thorough.h"

#include <gtest/gtest.h>
#include <iostream>
#include <set>

namespace qx::test {
namespace {

// Then all start again with a new book: with thousands of copies beside it each save would take long.
constexpr int kRoundSeconds = 20;

int RoundsToPlay()
{
    const char* const minutes = std::getenv("QX_MINUTES");
    return minutes != nullptr ? std::atoi(minutes) * 60 / kRoundSeconds : Rounds(1, 3600 / kRoundSeconds);
}

class PhoneBookUser : NoCopy {
public:
    PhoneBookUser(const std::wstring& printer, const std::wstring& role, bool away, std::filesystem::path log)
        : log_(std::move(log)),
          process_(ProgramBeside(L"phone_book_user.exe"),
                   {printer, role, std::to_wstring(kRoundSeconds), log_.wstring(), away ? L"away" : L"here"})
    {
    }
    ~PhoneBookUser() { process_.Kill(1); }

    void WaitForEnd() const
    {
        constexpr DWORD kPatienceMilliseconds = (kRoundSeconds + 60) * 1000;
        ASSERT_TRUE(process_.EndsWithin(kPatienceMilliseconds)) << "hangs: " << log_;
        EXPECT_EQ(process_.ExitCode(), 0u) << log_;
    }
    const std::filesystem::path& LogFile() const { return log_; }

private:
    const std::filesystem::path log_;
    const ChildProcess process_;
};

struct Tally {
    std::size_t saved = 0, deleted = 0, copies = 0, inCopiesAlone = 0;
    std::vector<std::string> lost;
};

void ReadLog(const std::filesystem::path& log, std::set<std::string>& saved, std::set<std::string>& deleted)
{
    std::ifstream lines(log);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("saved "))
            saved.insert(line.substr(6));
        else if (line.starts_with("deleting "))
            deleted.insert(line.substr(9));
    }
}

void AddNames(const std::filesystem::path& file, std::set<std::string>& names)
{
    for (const SavedItem& item : SavedIn(file))
        names.insert(host::Utf8(item.name));
}

void PlayRound(Tally& tally)
{
    const TemporaryFolder logs;
    PhoneBookSession session(BookText().Entry(0, L"First", L"1"));
    std::set<std::string> saved, deleted;
    {
        const PhoneBookUser users[] = {{session.Printer(), L"editor", false, logs / L"editor"},
                                       {session.Printer(), L"sender", false, logs / L"sender"},
                                       {session.Printer(), L"picker", false, logs / L"picker"},
                                       {session.Printer(), L"editor", true, logs / L"away"}};
        for (const PhoneBookUser& user : users) {
            user.WaitForEnd();
            ReadLog(user.LogFile(), saved, deleted);
        }
    }
    std::set<std::string> found;
    AddNames(session.PhoneBookFile(), found);
    std::set<std::string> kept = found;
    for (const std::wstring& copy : KeptCopies(session.PhoneBookFile().wstring())) {
        AddNames(copy, kept);
        ++tally.copies;
        SetFileAttributesW(copy.c_str(), FILE_ATTRIBUTE_NORMAL);
        DeleteFileW(copy.c_str());
    }
    for (const std::string& name : saved) {
        if (deleted.contains(name))
            continue;
        if (!kept.contains(name))
            tally.lost.push_back(name);
        else if (!found.contains(name))
            ++tally.inCopiesAlone;
    }
    tally.saved += saved.size();
    tally.deleted += deleted.size();
    ASSERT_GT(saved.size(), 8u);
}

TEST(PhoneBookSharing, WhatSomebodySavedAndNobodyDeletedIsInTheBookOrInAKeptCopy)
{
    Tally tally;
    const int rounds = RoundsToPlay();
    for (int round = 1; round <= rounds && !HasFatalFailure(); ++round) {
        PlayRound(tally);
        std::cout << round << " rounds of " << kRoundSeconds << " s: " << tally.saved << " entries saved, "
                  << tally.deleted << " deleted, " << tally.copies << " copies kept, " << tally.inCopiesAlone
                  << " entries in copies alone, " << tally.lost.size() << " lost" << std::endl;
    }
    EXPECT_EQ(tally.lost, std::vector<std::string>());
}

} // namespace
} // namespace qx::test
