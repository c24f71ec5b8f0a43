// Filling the placeholders of translated texts. A translation is data from outside and never a printf format.
#pragma once

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace qx {

// %d takes a number, %s a text.
using TemplateArgument = std::variant<int, std::wstring_view>;

// The filled text, or nothing when the placeholders (%d, %s; %% is a percent sign) are not exactly those that the
// arguments need, in their order.
std::optional<std::wstring> FillTemplate(std::wstring_view text, std::initializer_list<TemplateArgument> arguments);

// Fills the translation or, when that does not fit the arguments, the built-in text; empty when neither fits.
std::wstring FillTemplate(std::wstring_view translation, std::wstring_view fallback,
                          std::initializer_list<TemplateArgument> arguments);

} // namespace qx
