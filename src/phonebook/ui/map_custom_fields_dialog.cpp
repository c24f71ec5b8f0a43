#include "phonebook/ui/map_custom_fields_dialog.h"

#include "dialog/list_view.h"
#include "dialog/typed_prefix.h"
#include "res/map_custom_fields_ids.h"

#include <algorithm>
#include <array>

namespace qx {

namespace {

constexpr Control kControls[] = {
    {.id = IDC_MAP_INSTRUCTION,
     .text = 6092,
     .fallback = L"-Select a value from the source file on the left. Select a destination field on the right and then "
                 L"click on the Map button."},
    {.id = IDC_MAP_SOURCE_BOX, .text = 6084, .fallback = L"-From"},
    {.id = IDC_MAP_SOURCE_LABEL, .text = 6087, .fallback = L"-Comma Seperated Values"},
    {.id = IDC_MAP_FILE_NAME, .leftToRight = true},
    {.id = IDC_MAP_SOURCE_FIELDS, .topic = 15718},
    {.id = IDC_MAP_DESTINATION_BOX, .text = 6085, .fallback = L"-To"},
    {.id = IDC_MAP_DESTINATION_LABEL, .text = 6086, .fallback = L"-Fax Phone Book"},
    {.id = IDC_MAP_DESTINATIONS, .topic = 15719},
    {.id = IDC_MAP, .text = 6083, .fallback = L"-Map", .topic = 15717},
    {.id = IDOK, .text = 5249, .fallback = L"-OK"},
    {.id = IDCANCEL, .text = 5224, .fallback = L"-Cancel"},
};
static_assert(IdsAreUnique(kControls));

constexpr ListColumn kSourceColumns[] = {{6088, 180}};
constexpr ListColumn kDestinationColumns[] = {{6088, 80}, {6089, 120}};
// The rows of the right list, in MappedField's order; without built-in texts like all headings.
constexpr unsigned kDestinationTexts[kMappedFieldCount] = {kNameHeading, kFaxNumberHeading, kCompanyHeading};
constexpr int kMappedColumn = 1; // of the right list: the source field

using HeaderBuffer = std::array<wchar_t, kHeaderLimit + 1>;

// Of a row of the left list; empty when there is none of that number.
const std::wstring& SourceText(const MapCustomFieldsContext& context, int row) noexcept
{
    static const std::wstring none;
    const auto index = static_cast<std::size_t>(row);
    if (row < 0 || index >= context.sources.size())
        return none;
    const std::optional<std::wstring>& header = context.headers[context.sources[index]];
    return header ? *header : none;
}

int SelectedRow(HWND list) noexcept
{
    return NextSelectedRow(list, -1);
}

std::wstring_view ItemText(HWND list, int row, int column, HeaderBuffer& buffer) noexcept
{
    LVITEMW item{};
    item.iSubItem = column;
    item.pszText = buffer.data();
    item.cchTextMax = static_cast<int>(buffer.size());
    const LRESULT units =
        SendMessageW(list, LVM_GETITEMTEXTW, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
    return {item.pszText, static_cast<std::size_t>(units)};
}

// ---- start-up -----------------------------------------------------------------------------------------------------

void FillSourceList(MapCustomFieldsContext& context)
{
    context.sourceList = GetDlgItem(context.dialog, IDC_MAP_SOURCE_FIELDS);
    SetUpListView(context, context.sourceList, kSourceColumns);
    for (std::size_t column = 0; column < context.headers.size(); ++column) {
        auto& header = context.headers[column];
        if (!header)
            continue;
        header->resize(UpToLineBreak(Cut(*header, kHeaderLimit)).size());
        if (!header->empty())
            context.sources.push_back(column);
    }
    SendMessageW(context.sourceList, LVM_SETITEMCOUNT, context.sources.size(), 0);
}

void FillDestinationList(MapCustomFieldsContext& context)
{
    context.destinationList = GetDlgItem(context.dialog, IDC_MAP_DESTINATIONS);
    SetUpListView(context, context.destinationList, kDestinationColumns);
    for (const unsigned text : kDestinationTexts)
        AppendRow(context.destinationList, {LocalizedText(context, {text}).c_str()});
}

void ShowFileName(const MapCustomFieldsContext& context)
{
    const HWND control = GetDlgItem(context.dialog, IDC_MAP_FILE_NAME);
    AddStyle(control, SS_WORDELLIPSIS);
    SetWindowTextW(control, context.fileName.c_str());
}

// ---- commands -----------------------------------------------------------------------------------------------------

void SelectionChanged(MapCustomFieldsContext& context)
{
    EnableControl(context.dialog, IDC_MAP,
                  SelectedRow(context.sourceList) >= 0 && SelectedRow(context.destinationList) >= 0);
}

bool IsMapped(HWND destinations, int row) noexcept
{
    HeaderBuffer buffer;
    return !ItemText(destinations, row, kMappedColumn, buffer).empty();
}

// One source field feeds one entry field at most: mapping it again moves it.
void LeaveEarlierDestination(HWND destinations, std::wstring_view source) noexcept
{
    HeaderBuffer buffer;
    for (int row = 0; row < kMappedFieldCount; ++row) {
        if (ItemText(destinations, row, kMappedColumn, buffer) == source) {
            SetCell(destinations, row, kMappedColumn, L"");
            return;
        }
    }
}

void MapSelected(MapCustomFieldsContext& context)
{
    const HWND destinations = context.destinationList;
    const std::wstring& source = SourceText(context, SelectedRow(context.sourceList));
    LeaveEarlierDestination(destinations, source);
    SetCell(destinations, SelectedRow(destinations), kMappedColumn, source.c_str());
    // The company may stay out.
    EnableControl(context.dialog, IDOK,
                  IsMapped(destinations, kMappedName) && IsMapped(destinations, kMappedFaxNumber));
}

void Accept(MapCustomFieldsContext& context)
{
    HeaderBuffer buffer;
    for (int row = 0; row < kMappedFieldCount; ++row) {
        const std::wstring_view source = ItemText(context.destinationList, row, kMappedColumn, buffer);
        // Of two fields with one text, the first.
        const auto header = std::ranges::find_if(context.headers, [&](const auto& text) { return text == source; });
        if (!source.empty() && header != context.headers.end())
            context.mapping.push_back({static_cast<int>(header - context.headers.begin()), row});
    }
    EndDialog(context.dialog, IDOK);
}

void Cancel(MapCustomFieldsContext& context)
{
    context.result = 0;
    EndDialog(context.dialog, IDCANCEL);
}

// ---- the left list's questions ------------------------------------------------------------------------------------

void TellText(const MapCustomFieldsContext& context, LVITEMW& item) noexcept
{
    if ((item.mask & LVIF_TEXT) != 0)
        item.pszText = const_cast<wchar_t*>(SourceText(context, item.iItem).c_str()); // only read
}

// The first row, from one on and then from the top, that begins with what was typed; -1 when there is none.
int FindTyped(const MapCustomFieldsContext& context, const NMLVFINDITEMW& search)
{
    const int rows = static_cast<int>(context.sources.size());
    if ((search.lvfi.flags & (LVFI_STRING | LVFI_PARTIAL)) == 0 || search.lvfi.psz == nullptr)
        return -1;
    for (int i = 0; i < rows; ++i) {
        const int row = (std::max(search.iStart, 0) + i) % rows;
        if (MatchesTypedPrefix(SourceText(context, row), search.lvfi.psz))
            return row;
    }
    return -1;
}

// ---- messages -----------------------------------------------------------------------------------------------------

constexpr Route<MapCustomFieldsContext> kRoutes[] = {
    {IDC_MAP_SOURCE_FIELDS, static_cast<UINT>(LVN_ITEMCHANGED), SelectionChanged},
    {IDC_MAP_DESTINATIONS, static_cast<UINT>(LVN_ITEMCHANGED), SelectionChanged},
    {IDC_MAP, BN_CLICKED, MapSelected},
    {IDOK, BN_CLICKED, Accept},
    {IDCANCEL, BN_CLICKED, Cancel},
};

void Fill(MapCustomFieldsContext& context)
{
    context.mapping.reserve(kMappedFieldCount); // OK is not to fail for want of memory
    EnableControl(context.dialog, IDC_MAP, false);
    EnableControl(context.dialog, IDOK, false);
    ShowFileName(context);
    FillSourceList(context);
    FillDestinationList(context);
}

INT_PTR AnswerOther(MapCustomFieldsContext& context, UINT message, WPARAM w, LPARAM l)
{
    if (message != WM_NOTIFY || w != IDC_MAP_SOURCE_FIELDS)
        return FALSE;
    switch (reinterpret_cast<const NMHDR*>(l)->code) {
    case static_cast<UINT>(LVN_GETDISPINFOW):
        TellText(context, reinterpret_cast<NMLVDISPINFOW*>(l)->item);
        return TRUE;
    case static_cast<UINT>(LVN_ODFINDITEMW):
        return Answer(context.dialog, FindTyped(context, *reinterpret_cast<const NMLVFINDITEMW*>(l)));
    default:
        return FALSE;
    }
}

} // namespace

constexpr Dialog<MapCustomFieldsContext> kMapCustomFieldsDialog{
    .ids = {IDD_MAP_CUSTOM_FIELDS, IDD_MAP_CUSTOM_FIELDS_RTL},
    .title = {6082, L"-Map Custom Fields"},
    .controls = kControls,
    .routes = kRoutes,
    .fill = Fill,
    .other = AnswerOther,
};

} // namespace qx
