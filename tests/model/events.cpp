#include "events.h"

#include "verbs.h"

#include <algorithm>
#include <numeric>
#include <sstream>

namespace qx::test {

namespace {

struct NamedPlace {
    const char* name;
    std::span<const Verb> verbs;
};

const NamedPlace& At(Place place)
{
    static const NamedPlace kPlaces[] = {{"Outside", kOutsideVerbs},
                                         {"FaxJob", kFaxJobVerbs},
                                         {"Setup", kSetupVerbs},
                                         {"Picker", kPickerVerbs},
                                         {"Editor", kEditorVerbs},
                                         {"Entry", kEntryVerbs},
                                         {"Group", kGroupVerbs},
                                         {"Details", kDetailsVerbs},
                                         {"Defaults", kDefaultsVerbs},
                                         {"Map", kMapVerbs},
                                         {"File", kFileVerbs},
                                         {"Box", kBoxVerbs},
                                         {"None", {}}};
    return kPlaces[static_cast<std::size_t>(place)];
}

std::optional<Event> EventOf(const std::string& line)
{
    std::istringstream words(line);
    std::string place, verb;
    Event event;
    if (!(words >> place >> verb >> event.number))
        return {};
    for (event.place = Place::Outside; event.place != Place::None;
         event.place = static_cast<Place>(static_cast<int>(event.place) + 1)) {
        const std::span<const Verb> verbs = VerbsAt(event.place);
        for (event.verb = 0; event.verb < verbs.size(); ++event.verb) {
            if (place == At(event.place).name && verb == verbs[event.verb].name)
                return event;
        }
    }
    return {};
}

} // namespace

std::span<const Verb> VerbsAt(Place place)
{
    return At(place).verbs;
}

std::string TextOf(const Event& event)
{
    return std::string(At(event.place).name) + ' ' + VerbsAt(event.place)[event.verb].name + ' ' +
           std::to_string(event.number);
}

std::optional<Event> RandomEvents::Next(Place place)
{
    if (left_ == 0 || (place == Place::Outside && random_() % 4 != 0))
        return {};
    --left_;
    const std::span<const Verb> verbs = VerbsAt(place);
    const unsigned sum =
        std::accumulate(verbs.begin(), verbs.end(), 0u, [](unsigned so, const Verb& v) { return so + v.weight; });
    unsigned chosen = static_cast<unsigned>(random_()) % sum;
    Event event{.place = place, .verb = 0, .number = static_cast<unsigned>(random_() >> 1)};
    while (chosen >= verbs[event.verb].weight)
        chosen -= verbs[event.verb++].weight;
    return event;
}

ScriptedEvents::ScriptedEvents(const std::vector<std::string>& script)
{
    for (const std::string& line : script) {
        if (const std::optional<Event> event = EventOf(line))
            events_.push_back(*event);
    }
}

std::optional<Event> ScriptedEvents::Next(Place place)
{
    for (; !IsAtItsEnd(); ++next_) {
        if (events_[next_].place == place)
            return events_[next_++];
        if (place == Place::Outside)
            return {};
    }
    return {};
}

} // namespace qx::test
