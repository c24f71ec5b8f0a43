#include "help_viewer.h"

#include <filesystem>
#include <stdexcept>
#include <string>
#include <windows.h>

namespace qx::test {

namespace {

std::filesystem::path SystemFile(const wchar_t* name)
{
    wchar_t folder[MAX_PATH];
    GetSystemDirectoryW(folder, MAX_PATH);
    return std::filesystem::path(folder) / name;
}

std::filesystem::path Viewer()
{
    return SystemFile(L"hhctrl.ocx");
}
std::filesystem::path PutAside()
{
    return SystemFile(L"hhctrl.real");
}
std::filesystem::path Used()
{
    return SystemFile(L"hhctrl.used");
}

void Move(const std::filesystem::path& from, const std::filesystem::path& to)
{
    if (!MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING))
        throw std::runtime_error("cannot move the help viewer, error " + std::to_string(GetLastError()));
}

// A stand-in that is loaded cannot be deleted, but it can be moved out of the way. What cannot be deleted now is
// deleted by a later run.
void RestoreViewer()
{
    std::error_code ignored;
    std::filesystem::remove(Used(), ignored);
    if (!std::filesystem::exists(PutAside()))
        return;
    if (std::filesystem::exists(Viewer()))
        Move(Viewer(), Used());
    Move(PutAside(), Viewer());
    std::filesystem::remove(Used(), ignored);
}

// The build leaves it beside the test programs.
std::filesystem::path StandIn()
{
    wchar_t program[MAX_PATH];
    GetModuleFileNameW(nullptr, program, MAX_PATH);
    return std::filesystem::path(program).replace_filename("help_viewer_stand_in.dll");
}

} // namespace

HiddenHelpViewer::HiddenHelpViewer()
{
    RestoreViewer(); // from a run that was cut short
    Move(Viewer(), PutAside());
}

HiddenHelpViewer::~HiddenHelpViewer()
{
    RestoreViewer();
}

HelpViewerStandIn::HelpViewerStandIn()
{
    std::filesystem::copy_file(StandIn(), Viewer());
}

HelpViewerStandIn& HelpViewerStandIn::OfThisProgram()
{
    static HelpViewerStandIn viewer;
    return viewer;
}

std::vector<HelpRequest> HelpViewerStandIn::TakeRequests()
{
    std::vector<HelpRequest> requests;
    const HMODULE viewer = GetModuleHandleW(L"hhctrl.ocx");
    if (viewer == nullptr)
        return requests; // never asked
    const auto take =
        reinterpret_cast<TakeHelpRequest>(reinterpret_cast<void*>(GetProcAddress(viewer, "TakeHelpRequest")));
    if (take == nullptr)
        throw std::runtime_error("another help viewer is loaded");
    for (HelpRequest request; take(&request);)
        requests.push_back(request);
    return requests;
}

} // namespace qx::test
