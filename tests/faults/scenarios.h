// What users do in the sessions whose every call fails once, and what must be true afterwards.
#pragma once

#include "scripted_user.h"
#include "support/phone_book_session.h"
#include "support/temporary_folder.h"

#include <memory>
#include <span>
#include <string>
#include <vector>

namespace qx::test {

// What a sheet's user has typed, what the sheet shows when Send is pressed, and what a record says.
struct Job {
    std::vector<Recipient> recipients;
    bool coverPage = false;
    std::wstring notes, subject, billingCode, senderName;
    bool operator==(const Job&) const = default;
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

    void Enter(PhoneBookSession& session) { session_ = &session; }
    void Reset(); // before each session

protected:
    PhoneBookSession& Session() const { return *session_; }
    Verdict JudgeUnsent(const FaxJobData& record) const;
    // The book as it was, as one of those, or in a copy kept beside what is there now.
    Verdict JudgeBook(const std::vector<std::vector<SavedItem>>& accepted) const;
    const std::vector<SavedItem>& OldBook() const { return oldBook_; }

private:
    PhoneBookSession* session_ = nullptr;
    std::vector<SavedItem> oldBook_;
};

struct NamedScenario {
    const char* name;
    std::unique_ptr<Scenario> (*make)();
};
std::span<const NamedScenario> AllScenarios();

} // namespace qx::test
