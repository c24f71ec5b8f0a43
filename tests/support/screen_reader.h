// What a screen reader would say, where the platform of the tests keeps no annotations: the system's service for them
// is this one as long as it lives, for everything that is linked into the test.
#pragma once

#include "support/redirected_import.h"

#include <map>
#include <oleacc.h>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace qx::test {

class ScreenReader final : private IAccPropServices {
public:
    // Missing: the class is not registered. Refuses: it is, and every call fails.
    enum class Service { Works, Missing, Refuses };
    using Element = std::pair<HWND, DWORD>; // and the number of a row, from 1 on, or CHILDID_SELF

    explicit ScreenReader(Service service = Service::Works) : service_(service) { current_ = this; }
    ~ScreenReader() { current_ = nullptr; }
    ScreenReader(const ScreenReader&) = delete;
    ScreenReader& operator=(const ScreenReader&) = delete;

    // Asks a dialog for what it has to say, as for one that comes into sight, and lets it answer.
    static void Meet(HWND dialog)
    {
        SendMessageW(dialog, WM_GETOBJECT, 0, static_cast<LPARAM>(OBJID_CLIENT));
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
            DispatchMessageW(&message);
    }

    // Empty: as the system finds it.
    std::wstring NameOf(HWND window, int row = -1) const
    {
        const auto found = names_.find({window, static_cast<DWORD>(row + 1)});
        return found != names_.end() ? found->second : std::wstring();
    }
    std::size_t NamedElements() const { return names_.size(); }
    // What was said without being asked for, in order.
    const std::vector<std::wstring>& Said() const { return said_; }
    // Of the service.
    int References() const { return references_; }
    int Created() const { return created_; }

private:
    static HRESULT STDAPICALLTYPE Create(REFCLSID classId, IUnknown* outer, DWORD context, REFIID interfaceId,
                                         void** object)
    {
        constexpr GUID kServices = {0xB5F8350B, 0x0548, 0x48B1, {0xA6, 0xEE, 0x88, 0xBD, 0x00, 0xB4, 0xA5, 0xE7}};
        if (!IsEqualGUID(classId, kServices))
            return current_->create_.Original()(classId, outer, context, interfaceId, object);
        if (current_->service_ == Service::Missing)
            return REGDB_E_CLASSNOTREG;
        ++current_->created_;
        ++current_->references_;
        *object = static_cast<IAccPropServices*>(current_);
        return S_OK;
    }
    static void WINAPI Notice(DWORD event, HWND window, LONG object, LONG child)
    {
        constexpr DWORD kLiveRegionChanged = 0x8019;
        if (event == kLiveRegionChanged && object == OBJID_CLIENT && current_->live_.contains(window))
            current_->said_.push_back(current_->NameOf(window, child - 1));
        current_->notify_.Original()(event, window, object, child);
    }

    HRESULT WINAPI QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG WINAPI AddRef() override { return static_cast<ULONG>(++references_); }
    ULONG WINAPI Release() override { return static_cast<ULONG>(--references_); }
    HRESULT WINAPI SetHwndPropStr(HWND window, DWORD object, DWORD child, MSAAPROPID property, LPCWSTR text) override
    {
        if (service_ == Service::Refuses || object != static_cast<DWORD>(OBJID_CLIENT) || !IsName(property))
            return E_FAIL;
        names_[{window, child}] = text;
        return S_OK;
    }
    HRESULT WINAPI SetHwndProp(HWND window, DWORD object, DWORD child, MSAAPROPID property, VARIANT value) override
    {
        if (service_ == Service::Refuses || object != static_cast<DWORD>(OBJID_CLIENT) || child != CHILDID_SELF ||
            !IsLiveSetting(property) || value.vt != VT_I4 || value.lVal != 1)
            return E_FAIL;
        live_.insert(window);
        return S_OK;
    }
    HRESULT WINAPI ClearHwndProps(HWND window, DWORD, DWORD child, const MSAAPROPID* properties, int count) override
    {
        for (int i = 0; i < count; ++i) {
            if (IsName(properties[i]))
                names_.erase({window, child});
            if (IsLiveSetting(properties[i]))
                live_.erase(window);
        }
        return S_OK;
    }

    HRESULT WINAPI SetPropValue(const BYTE*, DWORD, MSAAPROPID, VARIANT) override { return E_NOTIMPL; }
    HRESULT WINAPI SetPropServer(const BYTE*, DWORD, const MSAAPROPID*, int, IAccPropServer*, AnnoScope) override
    {
        return E_NOTIMPL;
    }
    HRESULT WINAPI ClearProps(const BYTE*, DWORD, const MSAAPROPID*, int) override { return E_NOTIMPL; }
    HRESULT WINAPI SetHwndPropServer(HWND, DWORD, DWORD, const MSAAPROPID*, int, IAccPropServer*, AnnoScope) override
    {
        return E_NOTIMPL;
    }
    HRESULT WINAPI ComposeHwndIdentityString(HWND, DWORD, DWORD, BYTE**, DWORD*) override { return E_NOTIMPL; }
    HRESULT WINAPI DecomposeHwndIdentityString(const BYTE*, DWORD, HWND*, DWORD*, DWORD*) override { return E_NOTIMPL; }
    HRESULT WINAPI SetHmenuProp(HMENU, DWORD, MSAAPROPID, VARIANT) override { return E_NOTIMPL; }
    HRESULT WINAPI SetHmenuPropStr(HMENU, DWORD, MSAAPROPID, LPCWSTR) override { return E_NOTIMPL; }
    HRESULT WINAPI SetHmenuPropServer(HMENU, DWORD, const MSAAPROPID*, int, IAccPropServer*, AnnoScope) override
    {
        return E_NOTIMPL;
    }
    HRESULT WINAPI ClearHmenuProps(HMENU, DWORD, const MSAAPROPID*, int) override { return E_NOTIMPL; }
    HRESULT WINAPI ComposeHmenuIdentityString(HMENU, DWORD, BYTE**, DWORD*) override { return E_NOTIMPL; }
    HRESULT WINAPI DecomposeHmenuIdentityString(const BYTE*, DWORD, HMENU*, DWORD*) override { return E_NOTIMPL; }

    static bool IsName(REFGUID property)
    {
        constexpr GUID kName = {0x608D3DF8, 0x8128, 0x4AA7, {0xA4, 0x28, 0xF5, 0x5E, 0x49, 0x26, 0x72, 0x91}};
        return IsEqualGUID(property, kName) != FALSE;
    }
    static bool IsLiveSetting(REFGUID property)
    {
        constexpr GUID kLiveSetting = {0xC12BCD8E, 0x2A8E, 0x4950, {0x8A, 0xE7, 0x36, 0x25, 0x11, 0x1D, 0x58, 0xEB}};
        return IsEqualGUID(property, kLiveSetting) != FALSE;
    }

    static inline ScreenReader* current_ = nullptr;

    const Service service_;
    std::map<Element, std::wstring> names_;
    std::set<HWND> live_;
    std::vector<std::wstring> said_;
    int references_ = 0;
    int created_ = 0;
    RedirectedImport<decltype(CoCreateInstance)> create_{"CoCreateInstance", Create};
    RedirectedImport<decltype(NotifyWinEvent)> notify_{"NotifyWinEvent", Notice};
};

} // namespace qx::test
