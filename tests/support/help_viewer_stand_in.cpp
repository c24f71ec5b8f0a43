// Takes the place of the HTML Help control: it shows nothing and remembers what it was asked to show.
#include "help_request.h"

#include <deque>
#include <mutex>

namespace {

std::mutex g_mutex;
std::deque<qx::test::HelpRequest> g_requests;

} // namespace

extern "C" __declspec(dllexport) HWND WINAPI HtmlHelpW(HWND owner, LPCWSTR page, UINT command, DWORD_PTR data)
{
    qx::test::HelpRequest request{.owner = owner,
                                  .page = L"",
                                  .command = command,
                                  .data = data,
                                  .thread = GetCurrentThreadId(),
                                  .apartment = APTTYPE_CURRENT};
    APTTYPEQUALIFIER qualifier;
    if (FAILED(CoGetApartmentType(&request.apartment, &qualifier)))
        request.apartment = APTTYPE_CURRENT;
    lstrcpynW(request.page, page, static_cast<int>(std::size(request.page)));
    const std::scoped_lock lock(g_mutex);
    g_requests.push_back(request);
    return nullptr;
}

extern "C" __declspec(dllexport) BOOL WINAPI TakeHelpRequest(qx::test::HelpRequest* request)
{
    const std::scoped_lock lock(g_mutex);
    if (g_requests.empty())
        return FALSE;
    *request = g_requests.front();
    g_requests.pop_front();
    return TRUE;
}
