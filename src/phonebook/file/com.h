// Owners of what crosses a COM interface.
#pragma once

#include "base/apartment.h"
#include "base/no_copy.h"
#include "base/unique.h"

#include <algorithm>
#include <new>
#include <oleauto.h>
#include <string_view>

namespace qx {

// A text for a COM call; throws std::bad_alloc.
inline UniqueBstr MakeBstr(std::wstring_view text)
{
    UniqueBstr made(SysAllocStringLen(text.data(), static_cast<UINT>(text.size())));
    if (!made)
        throw std::bad_alloc();
    return made;
}

inline std::wstring_view View(const UniqueBstr& text) noexcept
{
    return {text.Get(), SysStringLen(text.Get())};
}

class Variant : NoCopy {
public:
    Variant() noexcept { VariantInit(&value_); }
    explicit Variant(INT number) noexcept : Variant()
    {
        value_.vt = VT_INT;
        value_.intVal = number;
    }
    // An array of bytes; throws std::bad_alloc.
    explicit Variant(std::string_view bytes) : Variant()
    {
        SAFEARRAY* const array = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(bytes.size()));
        if (array == nullptr)
            throw std::bad_alloc();
        value_.vt = VT_ARRAY | VT_UI1;
        value_.parray = array;
        std::copy(bytes.begin(), bytes.end(), static_cast<char*>(array->pvData));
    }
    ~Variant() { VariantClear(&value_); }

    // Calls take a VARIANT by value; what it holds stays this object's.
    const VARIANT& Get() const noexcept { return value_; }
    VARIANT* Receive() noexcept
    {
        VariantClear(&value_);
        return &value_;
    }
    // For a call that only reads the text.
    static VARIANT Borrowed(const UniqueBstr& text) noexcept
    {
        VARIANT value;
        value.vt = VT_BSTR;
        value.bstrVal = text.Get();
        return value;
    }
    // Never null: an absent text is an empty one.
    const wchar_t* Text() const noexcept
    {
        return value_.vt == VT_BSTR && value_.bstrVal != nullptr ? value_.bstrVal : L"";
    }

private:
    VARIANT value_;
};

} // namespace qx
