// Scripts of user actions: one per line, words separated by blanks, # starts a comment line.
#pragma once

#include "host/ui_driver.h"

#include <filesystem>
#include <functional>
#include <istream>
#include <stdexcept>
#include <string>
#include <vector>

namespace qx::host {

// A line cannot be understood, or its step cannot be done; the text starts with the file's name and the line's number.
class ScriptError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

struct ScriptStep {
    int line;
    std::function<void(UiDriver&)> run;
};

class Script {
public:
    // name is what errors call it; pictures go into the folder shots. Throws ScriptError for a line that it does not
    // understand, before anything is done.
    Script(std::istream& text, std::string name, const std::filesystem::path& shots);

    // Throws ScriptError at the first step that cannot be done.
    void Play(UiDriver& user) const;

private:
    std::string name_;
    std::vector<ScriptStep> steps_;
};

// What can stand in a script, one line per action.
std::string ScriptHelp();

} // namespace qx::host
