// Options of a command line: they come as UTF-8, Windows wants UTF-16. Given nothing, a value stays as it is.
#pragma once

#include "host/utf8.h"

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace qx::host {

// value is a text, a path, or an optional one.
template <class Value>
CLI::Option* AddText(CLI::App& command, const std::string& name, Value& value, const std::string& help)
{
    return command
        .add_option_function<std::string>(
            name, [&value](const std::string& text) { value = Wide(text); }, help)
        ->type_name("TEXT");
}

inline CLI::Option* AddTexts(CLI::App& command, const std::string& name, std::vector<std::wstring>& values,
                             const std::string& help)
{
    const auto take = [&values](const std::vector<std::string>& texts) {
        for (const std::string& text : texts)
            values.push_back(Wide(text));
    };
    return command.add_option_function<std::vector<std::string>>(name, take, help)->type_name("TEXT");
}

} // namespace qx::host
