// A process that works on a phone book file, for tests that kill such processes or let many work at once.
//
//   phone_book_worker save PATH EVENT     saves one stamped phone book after the other, until killed
//   phone_book_worker share PATH ROUNDS   loads and saves in turn; the exit code is a WorkerOutcome
#include "phone_book_worker.h"

#include "phonebook/file/phone_book_file.h"

#include <cwchar>
#include <string>

namespace qx::test {
namespace {

// As long as a user may have to wait for a load or a save.
constexpr ULONGLONG kPatienceMilliseconds = 2000;

[[noreturn]] void SaveForever(const std::wstring& path, const wchar_t* eventName)
{
    SaveStamped(path, L"0");
    SetEvent(OpenEventW(EVENT_MODIFY_STATE, FALSE, eventName));
    for (int number = 1;; ++number)
        SaveStamped(path, std::to_wstring(number));
}

class Stopwatch {
public:
    bool OutOfPatience() const noexcept { return GetTickCount64() - start_ > kPatienceMilliseconds; }

private:
    const ULONGLONG start_ = GetTickCount64();
};

WorkerOutcome Share(const std::wstring& path, int rounds)
{
    for (int round = 0; round < rounds; ++round) {
        const Stopwatch load;
        if (!HoldsOneStamp(path))
            return WorkerOutcome::ReadTornFile;
        if (load.OutOfPatience())
            return WorkerOutcome::WaitedTooLong;
        const Stopwatch save;
        if (!SaveStamped(path, std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(round)))
            return WorkerOutcome::CouldNotSave;
        if (save.OutOfPatience())
            return WorkerOutcome::WaitedTooLong;
    }
    return WorkerOutcome::Good;
}

} // namespace
} // namespace qx::test

int wmain(int count, wchar_t** arguments)
{
    using namespace qx::test;
    if (count != 4)
        return -1;
    if (std::wstring_view(arguments[1]) == L"save")
        SaveForever(arguments[2], arguments[3]);
    return static_cast<int>(Share(arguments[2], static_cast<int>(std::wcstol(arguments[3], nullptr, 10))));
}
