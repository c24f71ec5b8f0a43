#include "base/text_template.h"

namespace qx {

std::optional<std::wstring> FillTemplate(std::wstring_view text, std::initializer_list<TemplateArgument> arguments)
{
    std::wstring filled;
    auto next = arguments.begin();
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != L'%') {
            filled += text[i];
            continue;
        }
        if (++i == text.size())
            return std::nullopt;
        if (text[i] == L'%') {
            filled += L'%';
            continue;
        }
        if (next == arguments.end())
            return std::nullopt;
        if (text[i] == L'd' && std::holds_alternative<int>(*next))
            filled += std::to_wstring(std::get<int>(*next));
        else if (text[i] == L's' && std::holds_alternative<std::wstring_view>(*next))
            filled += std::get<std::wstring_view>(*next);
        else
            return std::nullopt;
        ++next;
    }
    if (next != arguments.end())
        return std::nullopt;
    return filled;
}

std::wstring FillTemplate(std::wstring_view translation, std::wstring_view fallback,
                          std::initializer_list<TemplateArgument> arguments)
{
    if (auto filled = FillTemplate(translation, arguments))
        return *std::move(filled);
    return FillTemplate(fallback, arguments).value_or(std::wstring());
}

} // namespace qx
