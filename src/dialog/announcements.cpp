#include "dialog/announcements.h"

#include "base/apartment.h"
#include "base/guarded.h"
#include "dialog/access_key.h"
#include "dialog/dialog.h"

#include <memory>
#include <oleacc.h>

namespace qx {

namespace {

// The import libraries have not all of them.
constexpr GUID kServicesClass = {0xB5F8350B, 0x0548, 0x48B1, {0xA6, 0xEE, 0x88, 0xBD, 0x00, 0xB4, 0xA5, 0xE7}};
constexpr GUID kServicesInterface = {0x6E26E776, 0x04F0, 0x495D, {0x80, 0xE4, 0x33, 0x30, 0x35, 0x2E, 0x31, 0x69}};
constexpr GUID kName = {0x608D3DF8, 0x8128, 0x4AA7, {0xA4, 0x28, 0xF5, 0x5E, 0x49, 0x26, 0x72, 0x91}};
constexpr GUID kLiveSetting = {0xC12BCD8E, 0x2A8E, 0x4950, {0x8A, 0xE7, 0x36, 0x25, 0x11, 0x1D, 0x58, 0xEB}};
constexpr INT kPolite = 1;                   // said when the screen reader has come to an end
constexpr DWORD kLiveRegionChanged = 0x8019; // EVENT_OBJECT_LIVEREGIONCHANGED
constexpr DWORD kClient = static_cast<DWORD>(OBJID_CLIENT);

// The system's annotations. For the length of one function only: the program's thread is to be in no apartment of ours
// afterwards.
class Annotations {
public:
    Annotations() noexcept
    {
        CoCreateInstance(kServicesClass, nullptr, CLSCTX_INPROC_SERVER, kServicesInterface,
                         reinterpret_cast<void**>(services_.Receive()));
    }

    bool SetName(HWND window, DWORD child, const std::wstring& name) noexcept
    {
        return services_ && SUCCEEDED(services_->SetHwndPropStr(window, kClient, child, kName, name.c_str()));
    }
    bool MakeLive(HWND window) noexcept
    {
        VARIANT setting{};
        setting.vt = VT_I4;
        setting.lVal = kPolite;
        return services_ && SUCCEEDED(services_->SetHwndProp(window, kClient, CHILDID_SELF, kLiveSetting, setting));
    }
    void Clear(HWND window, DWORD child, const GUID& property) noexcept
    {
        if (services_)
            services_->ClearHwndProps(window, kClient, child, &property, 1);
    }

private:
    ComApartment apartment_;
    ComPtr<IAccPropServices> services_;
};

Announcements* Keep(HWND dialog, std::unique_ptr<Announcements> announcements) noexcept
{
    SetWindowLongPtrW(dialog, DWLP_USER, reinterpret_cast<LONG_PTR>(announcements.get()));
    if (Announcements::Of(dialog) == announcements.get())
        return announcements.release();
    SetWindowLongPtrW(dialog, DWLP_USER, 0); // or somebody would find what is gone
    return nullptr;
}

} // namespace

Announcements* Announcements::Of(HWND dialog) noexcept
{
    return reinterpret_cast<Announcements*>(GetWindowLongPtrW(dialog, DWLP_USER));
}

// While the windows are still there.
Announcements::~Announcements()
{
    if (names_.empty())
        return;
    Annotations annotations;
    for (const auto& [element, name] : names_) {
        annotations.Clear(element.first, element.second, kName);
        if (element.second == CHILDID_SELF)
            annotations.Clear(element.first, CHILDID_SELF, kLiveSetting);
    }
}

// Only what differs: a screen reader hears of each.
void Announcements::Replace(const std::map<Element, std::wstring>& names)
{
    if (names == names_)
        return;
    Annotations annotations;
    std::erase_if(names_, [&](const auto& old) {
        const auto [window, child] = old.first;
        const bool goes = !names.contains(old.first);
        if (goes)
            annotations.Clear(window, child, kName);
        return goes;
    });
    for (const auto& [element, name] : names) {
        const auto known = names_.find(element);
        if ((known != names_.end() && known->second == name) ||
            !annotations.SetName(element.first, element.second, name))
            continue;
        names_[element] = name;
        NotifyWinEvent(EVENT_OBJECT_NAMECHANGE, element.first, OBJID_CLIENT, static_cast<LONG>(element.second));
    }
}

void Announcements::Name(int control, const std::wstring& name) noexcept
{
    Guarded([&] {
        const HWND window = GetDlgItem(dialog_, control);
        auto names = names_;
        if (window != nullptr && !name.empty())
            names[{window, CHILDID_SELF}] = name;
        Replace(names);
    });
}

void Announcements::Say(int control, const std::wstring& name) noexcept
{
    Name(control, name);
    const HWND window = GetDlgItem(dialog_, control);
    const auto named = names_.find({window, CHILDID_SELF});
    if (named != names_.end() && named->second == name && Annotations().MakeLive(window))
        NotifyWinEvent(kLiveRegionChanged, window, OBJID_CLIENT, CHILDID_SELF);
}

void Announcements::NameRows(HWND list, const std::map<int, std::wstring>& names) noexcept
{
    Guarded([&] {
        auto all = names_;
        std::erase_if(all, [&](const auto& known) {
            const auto [window, child] = known.first;
            return window == list && child != CHILDID_SELF;
        });
        for (const auto& [row, name] : names)
            all[{list, static_cast<DWORD>(row) + 1}] = name;
        Replace(all);
    });
}

void Announcements::NameLists() noexcept
{
    Guarded([&] {
        auto names = names_;
        for (HWND child = GetWindow(dialog_, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
            const std::wstring label = IsOfClass(child, WC_LISTVIEWW) ? LabelOf(child) : std::wstring();
            if (!label.empty())
                names[{child, CHILDID_SELF}] = label;
        }
        Replace(names);
    });
}

bool FollowListeners(HWND dialog, UINT message)
{
    Announcements* const announcements = Announcements::Of(dialog);
    switch (message) {
    case WM_GETOBJECT:
        if (announcements == nullptr)
            PostMessageW(dialog, kListenerHasCome, 0, 0);
        return false;
    case kListenerHasCome:
        return announcements == nullptr && Keep(dialog, std::make_unique<Announcements>(dialog)) != nullptr;
    case WM_DESTROY:
        SetWindowLongPtrW(dialog, DWLP_USER, 0);
        delete announcements;
        return false;
    default:
        return false;
    }
}

std::wstring LabelOf(HWND control)
{
    const HWND label = GetWindow(control, GW_HWNDPREV);
    if (!IsOfClass(label, L"Static"))
        return {};
    const std::wstring text = WindowText(label);
    return (GetWindowLongPtrW(label, GWL_STYLE) & SS_NOPREFIX) != 0 ? text : WithoutAccessKey(text);
}

} // namespace qx
