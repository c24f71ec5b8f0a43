// What a user does, one thing after the other.
#pragma once

#include <optional>
#include <random>
#include <span>
#include <string>
#include <vector>

namespace qx::test {

struct SheetUser;

// Where a user can be.
enum class Place {
    Outside, // no sheet
    FaxJob,
    Setup,
    Picker,
    Editor,
    Entry,
    Group,
    Details,
    Defaults,
    Map,
    File,
    Box,
    None, // nothing that can be used now
};

// What can be done at a place, and how often it is next to the others.
struct Verb {
    const char* name;
    unsigned weight;
    void (*act)(SheetUser&);
};
std::span<const Verb> VerbsAt(Place place);

// An event: what is done there; the number decides all that is random in it.
struct Event {
    Place place = Place::None;
    unsigned verb = 0;
    unsigned number = 0;
};
std::string TextOf(const Event& event); // "Picker to 4711"

class EventSource {
public:
    virtual ~EventSource() = default;
    // The next event at a place; none when there are no more, nor at Place::Outside when a session is to begin.
    virtual std::optional<Event> Next(Place place) = 0;
    virtual bool IsAtItsEnd() const = 0;
};

class RandomEvents : public EventSource {
public:
    RandomEvents(unsigned seed, int count) : random_(seed), left_(count) {}
    std::optional<Event> Next(Place place) override;
    bool IsAtItsEnd() const override { return left_ == 0; }

private:
    std::mt19937 random_;
    int left_;
};

// Those of a script, an event per line; what does not fit where the user is is left out.
class ScriptedEvents : public EventSource {
public:
    explicit ScriptedEvents(const std::vector<std::string>& script);
    std::optional<Event> Next(Place place) override;
    bool IsAtItsEnd() const override { return next_ == events_.size(); }

private:
    std::vector<Event> events_;
    std::size_t next_ = 0;
};

} // namespace qx::test
