// Every call that a loaded module makes of the system: counted, and any one of them made to fail as documented.
//
//     EveryCall calls(module);
//     calls.Count();                              // a session
//     for (const SeenCall& call : calls.Seen())
//         calls.Fail(call, Onwards::No);          // the same session
//
// Calls are numbered from 1, function by function, so that a call keeps its number when others come and go. Methods of
// the XML DOM count as one function.
#pragma once

#include "base/no_copy.h"
#include "support/failing_dom.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>
#include <windows.h>

namespace qx::test {

// A call of a count: its function, its number, and a mark of where in the module it stands.
struct SeenCall {
    std::string function;
    long number = 0;
    unsigned place = 0;
};

enum class Onwards { No, Yes }; // only that call, or that and every later one of the function

enum class Instant { Before, After }; // of a call; methods of the XML DOM know no After
constexpr UINT kEndedByCall = 14;     // exit code of a process that such an instant has ended

// A call that the module makes of a file or of the registry, as it is about to be made and when it has been.
struct WatchedCall {
    const char* function;
    Instant instant;
    const std::uintptr_t* arguments;
    std::uintptr_t result; // after it
};

// What the module takes and has to give back.
enum class Held { Memory, Handles, Keys, Views, Searches, Libraries, Hooks, DeviceContexts, Contexts, Printers, Count };
using HeldCounts = std::array<long, static_cast<std::size_t>(Held::Count)>;
const char* NameOf(Held kind);

class EveryCall : NoCopy {
public:
    // One at a time per process. Not on the thread of the sessions, whose apartment is watched.
    explicit EveryCall(HMODULE module);
    ~EveryCall();

    // Each starts the numbers again.
    void Count();
    void Fail(const SeenCall& call, Onwards onwards);
    void End(const SeenCall& call, Instant instant);             // the process, without a word to anybody
    void Watch(std::function<void(const WatchedCall&)> watcher); // on the thread that makes the call
    void Stop();

    bool HasFailed() const;
    std::vector<SeenCall> Seen() const; // of the last Count, in its order
    // Whether what the function does can be seen on a disk or in the registry.
    static bool LeavesTraces(const std::string& function);

    HeldCounts Holds() const;   // since the beginning
    void GaveBack(long blocks); // memory that the module handed out and others have released

private:
    std::vector<std::pair<void**, void*>> redirected_;
    std::unique_ptr<FailingDom> dom_;
};

} // namespace qx::test
