// Help file names from printer data, driver files and the help file path.
#include "text/help_names.h"

#include "fuzz.h"

using namespace qx;
using fuzz::Check;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 3)
        return 0;
    const auto language = static_cast<std::uint16_t>(data[0] | data[1] << 8);
    const std::size_t capacity = data[2];
    const std::wstring name = fuzz::Utf16(data + 3, size - 3);

    const wchar_t* const found = FindHelpLanguageCode(language);
    const std::wstring code = found != nullptr ? found : L"";
    Check(found == nullptr || code.size() == 2);

    const std::wstring localized = LocalizedHelpName(name, code);
    Check(localized.empty() || IsPlainFileName(localized));
    const std::wstring inner = HelpFileInnerPath(name, code);
    Check(inner.empty() || IsPlainFileName(HelpChmPath(inner)));

    const std::wstring_view base = BaseName(name);
    Check(base.size() <= name.size() && name.ends_with(base));
    IsHelpFile(name);
    const std::wstring page = HelpPagePath(HelpChmPath(name), HelpTopicName(language), capacity);
    Check(page.empty() || page.size() < capacity);
    if (IsPlainFileName(name))
        Check(name.find_first_of(L"\\/:*?") == std::wstring::npos && !name.empty());
    return 0;
}
