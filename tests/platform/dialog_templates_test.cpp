// The templates in the built module, byte by byte and beside the tables of their dialogs.
#include "base/unique.h"
#include "res/details_ids.h"
#include "support/all_dialogs.h"
#include "support/built.h"

#include <cstring>
#include <gtest/gtest.h>
#include <set>

namespace qx::test {
namespace {

constexpr std::size_t kExtendedStyle = 8; // where it stands in an extended template

// The bytes of an extended template, read from front to back.
class TemplateReader {
public:
    explicit TemplateReader(std::string_view bytes) : bytes_(bytes) {}

    template <class Value> Value Take()
    {
        Value value{};
        std::memcpy(&value, bytes_.data() + at_, sizeof value);
        at_ += sizeof value;
        return value;
    }
    void Skip(std::size_t bytes) { at_ += bytes; }
    void Align() { at_ = (at_ + 3) & ~std::size_t{3}; }
    // A menu, class or title: nothing, the number of something, which is the answer, or a text.
    WORD TakeName()
    {
        auto unit = Take<WORD>();
        if (unit == 0xFFFF)
            return Take<WORD>();
        while (unit != 0)
            unit = Take<WORD>();
        return 0;
    }

private:
    std::string_view bytes_;
    std::size_t at_ = 0;
};

struct TemplateControl {
    int id;
    DWORD style;
    WORD windowClass; // 0: one with a name

    // Has neither a caption nor anything to press or to type into: a frame, or a field of a dialog that only shows.
    bool OnlyShows() const
    {
        constexpr WORD kButton = 0x80, kEdit = 0x81;
        return (windowClass == kButton && (style & BS_TYPEMASK) == BS_GROUPBOX) ||
               (windowClass == kEdit && (style & ES_READONLY) != 0) || (windowClass == 0 && id == IDC_DETAILS_MEMBERS);
    }
};

std::vector<TemplateControl> ControlsIn(std::string_view bytes)
{
    TemplateReader reader(bytes);
    reader.Skip(2 * sizeof(WORD) + 2 * sizeof(DWORD)); // version and signature, help id, extended style
    reader.Skip(sizeof(DWORD));                        // DS_SETFONT is in every template of ours
    const auto count = reader.Take<WORD>();
    reader.Skip(4 * sizeof(WORD));
    for (int name = 0; name < 3; ++name)
        reader.TakeName();
    reader.Skip(3 * sizeof(WORD));
    reader.TakeName();
    std::vector<TemplateControl> controls;
    for (WORD i = 0; i < count; ++i) {
        reader.Align();
        reader.Skip(2 * sizeof(DWORD));
        const auto style = reader.Take<DWORD>();
        reader.Skip(4 * sizeof(WORD));
        const int id = reader.Take<int>();
        controls.push_back({id, style, reader.TakeName()});
        reader.TakeName();
        reader.Skip(reader.Take<WORD>());
    }
    return controls;
}

class DialogTemplates : public testing::TestWithParam<DialogCase> {
protected:
    void SetUp() override { ASSERT_TRUE(module_); }

    std::string Bytes(int id) const
    {
        const HRSRC found = FindResourceW(module_.Get(), MAKEINTRESOURCEW(id), reinterpret_cast<LPCWSTR>(RT_DIALOG));
        const auto* const bytes = static_cast<const char*>(LockResource(LoadResource(module_.Get(), found)));
        return bytes == nullptr ? std::string() : std::string(bytes, SizeofResource(module_.Get(), found));
    }

private:
    UniqueModule module_{LoadLibraryExW((BuiltFolder() / L"qxfaxui.dll").c_str(), nullptr,
                                        LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE)};
};

TEST_P(DialogTemplates, TheRightToLeftTwinDiffersInItsExtendedStyleAlone)
{
    std::string original = Bytes(GetParam().ids.leftToRight);
    const std::string twin = Bytes(GetParam().ids.rightToLeft);
    ASSERT_GT(original.size(), kExtendedStyle + sizeof(DWORD));
    DWORD style = 0;
    std::memcpy(&style, original.data() + kExtendedStyle, sizeof style);
    EXPECT_FALSE(style & WS_EX_LAYOUTRTL);
    style |= WS_EX_LAYOUTRTL;
    std::memcpy(original.data() + kExtendedStyle, &style, sizeof style);
    EXPECT_EQ(twin, original);
}

TEST_P(DialogTemplates, EveryRowOfTheTableIsAControlAndEveryControlWithATextOrForInputHasARow)
{
    std::set<int> rows, missing, unknown;
    for (const Control& control : GetParam().controls)
        rows.insert(control.id);
    unknown = rows;
    for (const TemplateControl& control : ControlsIn(Bytes(GetParam().ids.leftToRight))) {
        unknown.erase(control.id);
        if (!rows.contains(control.id) && !control.OnlyShows())
            missing.insert(control.id);
    }
    EXPECT_EQ(unknown, std::set<int>{});
    EXPECT_EQ(missing, std::set<int>{});
}

INSTANTIATE_TEST_SUITE_P(All, DialogTemplates, testing::ValuesIn(AllDialogs().begin(), AllDialogs().end()),
                         [](const auto& dialog) { return std::string(dialog.param.name); });

} // namespace
} // namespace qx::test
