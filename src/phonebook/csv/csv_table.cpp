#include "phonebook/csv/csv_table.h"

#include "base/file_in_use.h"
#include "phonebook/csv/mapped_copy.h"

#include <algorithm>
#include <climits>
#include <new>

namespace qx {

namespace {

using UniqueView = Unique<void*, UnmapViewOfFile>;

constexpr std::size_t kUtf16MarkBytes = 2;
constexpr std::size_t kUtf8MarkBytes = 3;
constexpr std::wstring_view kLineEnd = L"\r\n";
constexpr wchar_t kUtf16Mark = 0xFEFF;

// Room for one row: three texts of fifty quotes, each of them doubled, nearly fill it.
constexpr std::size_t kStorageUnitsPerRow = 328;

UniquePages AllocatePages(std::size_t bytes) noexcept
{
    return UniquePages(VirtualAlloc(nullptr, bytes, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
}

bool LooksLikeUtf16(std::span<const unsigned char> bytes)
{
    return IsTextUnicode(bytes.data(), static_cast<int>(bytes.size()), nullptr) != FALSE;
}

bool SetFileLength(HANDLE file, std::size_t bytes) noexcept
{
    LARGE_INTEGER end;
    end.QuadPart = static_cast<LONGLONG>(bytes);
    return SetFilePointerEx(file, end, nullptr, FILE_BEGIN) && SetEndOfFile(file);
}

} // namespace

bool CsvTable::Open(const std::wstring& path) noexcept
{
    file_.Reset(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL,
                            nullptr));
    LARGE_INTEGER size{};
    if (!file_ || !GetFileSizeEx(file_.Get(), &size))
        return false;
    bytes_ = static_cast<std::size_t>(size.QuadPart);
    return bytes_ != 0;
}

CsvStatus CsvTable::Read() noexcept
{
    try {
        // More cannot be handed to the conversions, nor held in memory three times over.
        if (bytes_ > INT_MAX)
            return CsvStatus::OutOfMemory;
        const UniqueKernelHandle mapping(CreateFileMappingW(file_.Get(), nullptr, PAGE_READONLY, 0, 0, nullptr));
        const UniqueView view(MapViewOfFile(mapping.Get(), FILE_MAP_READ, 0, 0, bytes_));
        if (!view)
            return CsvStatus::OutOfMemory;
        content_ = AllocatePages(bytes_);
        if (!content_)
            return CsvStatus::OutOfMemory;
        // Nothing else touches the view: each of its pages may turn out to be unreadable.
        if (!CopyMapped(content_.Get(), view.Get(), bytes_))
            return CsvStatus::Unreadable;
        const std::span bytes(static_cast<const unsigned char*>(content_.Get()), bytes_);
        const CsvEncoding encoding = DetectEncoding(bytes, LooksLikeUtf16);
        if (encoding == CsvEncoding::Utf16BigEndian || encoding == CsvEncoding::Unknown)
            return CsvStatus::UnusableEncoding;
        return fields_.Parse(Decode(encoding, bytes));
    } catch (const std::bad_alloc&) {
        return CsvStatus::OutOfMemory;
    }
}

std::wstring_view CsvTable::Decode(CsvEncoding encoding, std::span<const unsigned char> bytes)
{
    if (encoding == CsvEncoding::Utf16LittleEndian) {
        // Kept: the first two bytes are passed over whether or not they are a mark: a file without one, recognised by
        // its looks, loses its first character.
        const std::span<const unsigned char> text = bytes.subspan(kUtf16MarkBytes);
        return {reinterpret_cast<const wchar_t*>(text.data()), text.size() / sizeof(wchar_t)};
    }
    const std::size_t capacity = bytes.size() * 3 / 2; // no encoding makes more than one unit of a byte
    text_ = AllocatePages(capacity * sizeof(wchar_t));
    if (!text_)
        throw std::bad_alloc();
    auto* const text = static_cast<wchar_t*>(text_.Get());
    const UINT codePage = encoding == CsvEncoding::Utf8 ? CP_UTF8 : CP_ACP;
    if (encoding == CsvEncoding::Utf8)
        bytes = bytes.subspan(kUtf8MarkBytes);
    const int units = MultiByteToWideChar(codePage, 0, reinterpret_cast<const char*>(bytes.data()),
                                          static_cast<int>(bytes.size()), text, static_cast<int>(capacity));
    return {text, static_cast<std::size_t>(units)};
}

bool CsvTableWriter::Open(const std::wstring& path) noexcept
{
    file_.Reset(CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                            CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    return static_cast<bool>(file_);
}

bool CsvTableWriter::SetSize(std::size_t rows, std::size_t columns, std::size_t cellUnits) noexcept
{
    if (columns < 2)
        return false;
    storageUnits_ = rows * kStorageUnitsPerRow + 2;
    storage_ = AllocatePages(storageUnits_ * sizeof(wchar_t));
    if (!storage_)
        return false;
    try {
        cells_.assign(rows * columns, {});
    } catch (const std::bad_alloc&) {
        return false;
    }
    columns_ = columns;
    cellUnits_ = cellUnits;
    usedUnits_ = 0;
    return true;
}

bool CsvTableWriter::SetCell(std::size_t row, std::size_t column, std::wstring_view text) noexcept
{
    const std::size_t cell = row * columns_ + column;
    if (column >= columns_ || cell >= cells_.size() || text.size() >= cellUnits_)
        return false;
    if (storageUnits_ - usedUnits_ <= QuotedUnits(text.size()))
        return false;
    wchar_t* const begin = static_cast<wchar_t*>(storage_.Get()) + usedUnits_;
    cells_[cell] = {begin, QuoteField(text, begin)};
    usedUnits_ += cells_[cell].size() + 1;
    return true;
}

bool CsvTableWriter::Write() noexcept
{
    std::size_t bytes = 0;
    // A virus scanner may map the file, too, and while it does, nobody can shorten it.
    if (WriteMapped(bytes) && RetryWhileInUse([&] { return SetFileLength(file_.Get(), bytes); }))
        return true;
    // Of what was mapped and not written, zeros would stay. Asked in another way than before, which may have failed.
    FILE_END_OF_FILE_INFO nothing{};
    RetryWhileInUse(
        [&] { return SetFileInformationByHandle(file_.Get(), FileEndOfFileInfo, &nothing, sizeof nothing) != FALSE; });
    return false;
}

bool CsvTableWriter::WriteMapped(std::size_t& bytes) noexcept
{
    const std::size_t mapped = MappedBytes();
    const UniquePages text = AllocatePages(mapped);
    if (!text)
        return false;
    auto* const begin = static_cast<wchar_t*>(text.Get());
    *begin = kUtf16Mark;
    bytes = static_cast<std::size_t>(WriteRows(begin + 1) - begin) * sizeof(wchar_t);

    const UniqueKernelHandle mapping(CreateFileMappingW(
        file_.Get(), nullptr, PAGE_READWRITE, static_cast<DWORD>(mapped >> 32), static_cast<DWORD>(mapped), nullptr));
    if (!mapping)
        return false;
    const UniqueView view(MapViewOfFile(mapping.Get(), FILE_MAP_WRITE, 0, 0, mapped));
    return view && CopyMapped(view.Get(), begin, bytes) && FlushViewOfFile(view.Get(), 0);
    // Both are closed before the file gets its length: one that is mapped cannot be shortened.
}

// Enough for every text with its comma or line end, and always reaching into one more granule than it has to.
std::size_t CsvTableWriter::MappedBytes() const noexcept
{
    const std::size_t bytes = sizeof(wchar_t) * (cells_.size() + usedUnits_) + 4;
    SYSTEM_INFO system;
    GetSystemInfo(&system);
    return (bytes / system.dwAllocationGranularity + 1) * system.dwAllocationGranularity;
}

wchar_t* CsvTableWriter::WriteRows(wchar_t* to) const noexcept
{
    for (std::size_t row = 0; row < cells_.size(); row += columns_) {
        for (std::size_t column = 0; column < columns_; ++column) {
            const std::wstring_view cell = cells_[row + column];
            if (cell.empty())
                continue;
            to = std::ranges::copy(cell, to).out;
            if (column + 1 < columns_)
                *to++ = L',';
        }
        to = std::ranges::copy(kLineEnd, to).out;
    }
    return to;
}

} // namespace qx
