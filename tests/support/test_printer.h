// A real printer of the real spooler with a settings subtree of its own, both gone when the test is over.
#pragma once

#include "base/no_copy.h"
#include "base/unique.h"

#include <string>
#include <windows.h>

namespace qx::test {

class TestPrinter : NoCopy {
public:
    enum class Subtree { Named, Unnamed }; // whether the printer's data names one

    explicit TestPrinter(Subtree subtree = Subtree::Named); // throws std::runtime_error when the spooler refuses
    ~TestPrinter();                                         // removes the printer and the subtree

    HANDLE Handle() const noexcept { return printer_.Get(); } // with all access
    const std::wstring& Name() const noexcept { return name_; }
    const std::wstring& Guid() const noexcept { return guid_; } // what the printer's data names the subtree
    // Below HKEY_CURRENT_USER.
    std::wstring SubtreePath() const { return L"Software\\Quillmarsh\\" + guid_; }

    void SetData(const wchar_t* key, const wchar_t* name, DWORD type, const void* data, DWORD bytes) const;
    void SetText(const wchar_t* key, const wchar_t* name, const std::wstring& text) const;
    void SetNumber(const wchar_t* key, const wchar_t* name, DWORD number) const;

    // A key of the subtree, created when it is missing.
    UniqueKey Key(const std::wstring& below) const;

private:
    std::wstring name_;
    std::wstring guid_;
    UniquePrinter printer_;
};

// Values of an open key.
void PutBytes(HKEY key, const wchar_t* name, DWORD type, const void* data, std::size_t bytes);
void PutText(HKEY key, const wchar_t* name, const std::wstring& text, DWORD type = REG_SZ);
void PutNumber(HKEY key, const wchar_t* name, DWORD number);

struct StoredValue {
    DWORD type = REG_NONE;
    std::string bytes;
    bool operator==(const StoredValue&) const = default;
};
// Type REG_NONE and no bytes when there is no such value.
StoredValue GetStored(HKEY key, const wchar_t* name);
StoredValue AsStored(const std::wstring& text); // REG_SZ with its terminator
StoredValue AsStored(DWORD number);             // REG_DWORD

} // namespace qx::test
