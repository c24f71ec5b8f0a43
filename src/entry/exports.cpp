// The module's three exports and its entry point.
#include "base/activation_context.h"
#include "base/guarded.h"
#include "base/guest.h"
#include "entry/escape_data.h"
#include "entry/exception_state.h"
#include "entry/send_session.h"

#include <qxfax/send_fax.h>

void WINAPI DisplayFaxUI(HANDLE printer, FaxJobData* record)
{
    if (printer == nullptr || record == nullptr)
        return;
    {
        const qx::GuestScope guest;
        qx::Guarded([&] { qx::SendSession(printer, *record).Run(); });
    }
    qx::ReleaseExceptionState();
}

BOOL WINAPI BStoreExtEscapeData(const void* data, DWORD size)
{
    return qx::StoreEscapeData(data, size);
}

BOOL WINAPI BGetStoredExtEscapeData(void** buffer, DWORD* size)
{
    return qx::FetchEscapeData(buffer, size);
}

BOOL WINAPI DllMain(HINSTANCE, DWORD reason, void* processIsEnding)
{
    // Nothing on attach: the loader lock is held, and the printing program waits.
    if (reason == DLL_PROCESS_DETACH && processIsEnding == nullptr)
        qx::ForgetActivationContext();
    return TRUE;
}
