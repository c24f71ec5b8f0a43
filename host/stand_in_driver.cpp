// The driver that is installed with the stand-in printer. It prints nothing; it only answers what the spooler asks of
// every driver, so that printers can be added and opened.
#include <iterator>
#include <windows.h>

#include <winspool.h>

namespace {

// Defined by Windows' driver kit, which not every compiler brings.
struct DocumentPropertyHeader {
    WORD size;
    WORD reserved;
    HANDLE printer;
    wchar_t* printerName;
    DEVMODEW* settingsIn;
    DEVMODEW* settingsOut;
    DWORD settingsBytes;
    DWORD mode;
};

DEVMODEW DefaultSettings(const wchar_t* printerName)
{
    DEVMODEW settings{};
    settings.dmSpecVersion = DM_SPECVERSION;
    settings.dmSize = sizeof settings;
    settings.dmFields = DM_ORIENTATION | DM_PAPERSIZE | DM_COPIES;
    settings.dmOrientation = DMORIENT_PORTRAIT;
    settings.dmPaperSize = DMPAPER_A4;
    settings.dmCopies = 1;
    if (printerName != nullptr)
        lstrcpynW(settings.dmDeviceName, printerName, static_cast<int>(std::size(settings.dmDeviceName)));
    return settings;
}

} // namespace

// Without a page to add to (info null) it fills in the settings, or says how many bytes they take.
extern "C" __declspec(dllexport) LONG WINAPI DrvDocumentPropertySheets(void* info, LPARAM header)
{
    if (info != nullptr)
        return -1; // there are no pages to show
    auto& document = *reinterpret_cast<DocumentPropertyHeader*>(header);
    document.settingsBytes = sizeof(DEVMODEW);
    if (document.mode == 0 || document.settingsOut == nullptr)
        return sizeof(DEVMODEW);
    *document.settingsOut =
        document.settingsIn != nullptr ? *document.settingsIn : DefaultSettings(document.printerName);
    return 1;
}

// Windows installs no driver that does not say it runs in user mode.
extern "C" __declspec(dllexport) BOOL WINAPI DrvQueryDriverInfo(DWORD question, void* buffer, DWORD bytes,
                                                                DWORD* bytesNeeded)
{
    constexpr DWORD kIsUserMode = 1; // DRVQUERY_USERMODE, of the driver kit
    if (question != kIsUserMode) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    if (bytesNeeded != nullptr)
        *bytesNeeded = sizeof(DWORD);
    if (buffer == nullptr || bytes < sizeof(DWORD)) {
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return FALSE;
    }
    *static_cast<DWORD*>(buffer) = TRUE;
    return TRUE;
}

extern "C" __declspec(dllexport) DWORD WINAPI DrvDeviceCapabilities(HANDLE, const wchar_t*, WORD capability, void*,
                                                                    const DEVMODEW*)
{
    switch (capability) {
    case DC_COPIES:
        return 1;
    case DC_SIZE:
        return sizeof(DEVMODEW);
    default:
        return static_cast<DWORD>(-1); // not known to this driver
    }
}
