#include "base/activation_context.h"

#include "base/lock.h"
#include "base/module.h"

namespace qx {

namespace {

// Created on first use, never in process attach, where loading another library would be unsafe.
Lock g_lock;
HANDLE g_context = INVALID_HANDLE_VALUE;
bool g_tried = false;

HANDLE ModuleContext() noexcept
{
    const Locked locked(g_lock);
    if (g_tried)
        return g_context;
    g_tried = true;
    wchar_t path[MAX_PATH];
    const DWORD units = GetModuleFileNameW(ModuleInstance(), path, MAX_PATH);
    if (units == 0 || units >= MAX_PATH)
        return g_context;
    ACTCTXW request{};
    request.cbSize = sizeof request;
    request.dwFlags = ACTCTX_FLAG_RESOURCE_NAME_VALID | ACTCTX_FLAG_HMODULE_VALID;
    request.lpSource = path;
    request.lpResourceName = MAKEINTRESOURCEW(2); // ISOLATIONAWARE_MANIFEST_RESOURCE_ID
    request.hModule = ModuleInstance();
    g_context = CreateActCtxW(&request);
    return g_context;
}

} // namespace

ActivationScope::ActivationScope() noexcept
{
    const HANDLE context = ModuleContext();
    active_ = context != INVALID_HANDLE_VALUE && ActivateActCtx(context, &cookie_);
}

ActivationScope::~ActivationScope()
{
    if (active_)
        DeactivateActCtx(0, cookie_);
}

void ForgetActivationContext() noexcept
{
    if (g_context != INVALID_HANDLE_VALUE)
        ReleaseActCtx(g_context);
    g_context = INVALID_HANDLE_VALUE;
    g_tried = false;
}

} // namespace qx
