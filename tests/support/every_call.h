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
    void Stop();

    bool HasFailed() const;
    std::vector<SeenCall> Seen() const; // of the last Count, in its order

    HeldCounts Holds() const;   // since the beginning
    void GaveBack(long blocks); // memory that the module handed out and others have released

private:
    std::vector<std::pair<void**, void*>> redirected_;
    std::unique_ptr<FailingDom> dom_;
};

} // namespace qx::test
