// Translated texts with placeholders.
#include "base/text_template.h"

#include "fuzz.h"

using namespace qx;
using fuzz::Check;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::wstring text = fuzz::Utf16(data, size);
    const bool plain = text.find(L'%') == std::wstring::npos;
    const auto none = FillTemplate(text, {});
    const auto one = FillTemplate(text, {TemplateArgument(42)});
    const auto two = FillTemplate(text, {TemplateArgument(std::wstring_view(L"%s%d%%")), TemplateArgument(-1)});
    // A text fits one kind of arguments at most; one without percent signs fits none and stays as it is.
    Check(none.has_value() + one.has_value() + two.has_value() <= 1);
    Check(!plain || none == text);
    Check(!none || none->size() <= text.size());
    Check(FillTemplate(text, L"%d", {TemplateArgument(42)}) == one.value_or(L"42"));
    return 0;
}
