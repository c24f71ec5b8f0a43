// What users do in the sessions whose every call fails once, and what must be true afterwards.
#pragma once

#include "support/phone_book_session.h"
#include "support/scripted_user.h"
#include "support/temporary_folder.h"

#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace qx::test {

// What a sheet's user has typed, what the sheet shows when Send is pressed, and what a record says.
struct Job {
    std::vector<Recipient> recipients;
    UserDefaults settings;
    std::wstring billingCode;
};

enum class Kind { AsAsked, Less, Wrong }; // Less: refused, cancelled or kept old, whole and visible to the user
struct Verdict {
    Kind kind = Kind::AsAsked;
    std::string what;
};

class Scenario {
public:
    virtual ~Scenario() = default;

    virtual SessionOptions Options() const;
    virtual BookText Book() const; // in the file before each session
    virtual void Prepare() {}
    virtual std::vector<ScriptedUser::Step> Steps() = 0;
    virtual Verdict Judge(const FaxJobData& record) = 0;
    // What is on the disk and in the registry after a session whose process was ended in the middle.
    virtual Verdict JudgeEnded();

    // The files of its own, and the folder for temporary files, lie in folder. Without a session it has only its steps.
    void Enter(PhoneBookSession* session, std::filesystem::path folder);
    void Reset(); // before each session

    // The session that follows one whose process was ended: its user adds somebody to the phone book. It finds whole
    // what was there before, which items tells, and leaves no files behind.
    static std::vector<ScriptedUser::Step> NextSteps();
    virtual Verdict JudgeNext(const std::vector<SavedItem>& items);

protected:
    PhoneBookSession& Session() const { return *session_; }
    const std::filesystem::path& Folder() const { return folder_; }
    std::filesystem::path TemporaryFiles() const;
    // given: what its settings may be besides those that the driver or the user's defaults gave it
    Verdict JudgeUnsent(const FaxJobData& record, const std::vector<UserDefaults>& given = {}) const;
    // The book as it was, as one of those, or in a copy kept beside what is there now.
    Verdict JudgeBook(const std::vector<std::vector<SavedItem>>& accepted) const;
    // Old items are there under their old ids, and no other item is.
    bool KeepsIds(const std::vector<SavedItem>& items) const;
    // Whether a kept copy has them all.
    bool AreKept(const std::vector<SavedItem>& items) const;
    Verdict Lost() const; // with what is there
    const std::vector<SavedItem>& OldBook() const { return oldBook_; }

private:
    PhoneBookSession* session_ = nullptr;
    std::filesystem::path folder_;
    std::vector<SavedItem> oldBook_;
};

struct NamedScenario {
    const char* name;
    std::unique_ptr<Scenario> (*make)();
};
std::span<const NamedScenario> AllScenarios();

} // namespace qx::test
