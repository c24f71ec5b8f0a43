#include "text/help.h"

#include "base/printer.h"
#include "base/unique.h"
#include "support/built.h"
#include "support/cabinet.h"
#include "support/compiled_help.h"
#include "support/failing_calls.h"
#include "support/help_topics.h"
#include "support/help_viewer.h"
#include "support/languages.h"
#include "support/patched_function.h"
#include "support/redirected_import.h"
#include "support/resource_count.h"
#include "support/ui_language.h"
#include "text/help_names.h"
#include "text/help_viewer.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <setupapi.h>
#include <thread>

namespace qx {
namespace {

namespace fs = std::filesystem;

constexpr wchar_t kCabinet[] = L"QXHELPT.CAB";
constexpr wchar_t kHelpName[] = L"QXZH_XX_F1.CHM";
constexpr char kEnglish[] = "QXZHENF1.CHM";

std::string UserCode()
{
    return test::UsersHelpFile().substr(4, 2);
}
std::string UserVariant()
{
    return test::UsersHelpFile();
}

std::string Contents(const fs::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

void WriteFile(const fs::path& file, const std::string& content)
{
    std::ofstream(file, std::ios::binary) << content;
}

// A printer whose driver has these dependent files, until it goes out of scope.
class Printer {
public:
    explicit Printer(const std::vector<std::wstring>& dependentFiles)
    {
        const std::wstring suffix = std::to_wstring(GetCurrentProcessId());
        driver_ = L"Help test driver " + suffix;
        std::wstring name = L"Help test printer " + suffix;
        std::wstring files;
        for (const std::wstring& file : dependentFiles)
            files += file + L'\0';
        files += L'\0';

        DRIVER_INFO_3W driver{};
        driver.cVersion = 3;
        driver.pName = driver_.data();
        driver.pEnvironment = environment_.data();
        driver.pDriverPath = file_.data();
        driver.pDataFile = file_.data();
        driver.pConfigFile = file_.data();
        driver.pDependentFiles = files.data();
        EXPECT_TRUE(AddPrinterDriverW(nullptr, 3, reinterpret_cast<BYTE*>(&driver))) << GetLastError();

        PRINTER_INFO_2W printer{};
        printer.pPrinterName = name.data();
        printer.pPortName = port_.data();
        printer.pDriverName = driver_.data();
        printer.pPrintProcessor = processor_.data();
        printer.pDatatype = datatype_.data();
        const UniquePrinter added(AddPrinterW(nullptr, 2, reinterpret_cast<BYTE*>(&printer)));
        EXPECT_TRUE(added) << GetLastError();

        PRINTER_DEFAULTSW all{.pDatatype = nullptr, .pDevMode = nullptr, .DesiredAccess = PRINTER_ALL_ACCESS};
        EXPECT_TRUE(OpenPrinterW(name.data(), handle_.Receive(), &all)) << GetLastError();
    }

    ~Printer()
    {
        DeletePrinter(handle_.Get());
        handle_.Reset();
        DeletePrinterDriverExW(nullptr, environment_.data(), driver_.data(), 0, 0);
    }

    HANDLE Handle() const { return handle_.Get(); }

private:
    std::wstring driver_;
    std::wstring environment_ = L"Windows x64";
    std::wstring file_ = L"qxhelpt.dll";
    std::wstring port_ = L"LPT1:";
    std::wstring processor_ = L"WinPrint";
    std::wstring datatype_ = L"RAW";
    UniquePrinter handle_;
};

fs::path DriverFolder()
{
    wchar_t folder[MAX_PATH] = L"";
    DWORD bytes = 0;
    wchar_t environment[] = L"Windows x64";
    EXPECT_TRUE(
        GetPrinterDriverDirectoryW(nullptr, environment, 1, reinterpret_cast<BYTE*>(folder), sizeof folder, &bytes));
    return fs::path(folder) / "3";
}

// A temporary folder of its own for each test, and a driver folder with at most the test's cabinet in it.
class Help : public testing::Test {
protected:
    Help()
    {
        fs::create_directories(folder_);
        SetTemporaryFolder(folder_);
        fs::create_directories(cabinet_.parent_path());
        fs::remove(cabinet_);
        language_ = TextOwner(); // takes the user's language over
    }

    ~Help() override
    {
        SetTemporaryFolder(original_);
        for (const auto& entry : fs::recursive_directory_iterator(sandbox_))
            fs::permissions(entry, fs::perms::owner_write, fs::perm_options::add);
        fs::remove_all(sandbox_);
        fs::remove(cabinet_);
    }

    static void SetTemporaryFolder(const fs::path& folder)
    {
        for (const wchar_t* const variable : {L"TMP", L"TEMP"})
            ASSERT_TRUE(SetEnvironmentVariableW(variable, folder.c_str()));
    }

    // Relative to the sandbox, everything below it except the way to the temporary folder.
    std::vector<fs::path> FilesInSandbox() const
    {
        std::vector<fs::path> files;
        for (const auto& entry : fs::recursive_directory_iterator(sandbox_)) {
            if (entry.path() != folder_ && entry.path() != folder_.parent_path())
                files.push_back(fs::relative(entry.path(), sandbox_));
        }
        return files;
    }

    fs::path Extract(std::wstring_view helpName = kHelpName) const
    {
        return ExtractHelpFromCabinet(PrinterDriver(printer_.Handle()), kCabinet, helpName);
    }

    fs::path original_ = fs::temp_directory_path();
    fs::path sandbox_ = original_ / ("help test " + std::to_string(GetCurrentProcessId()));
    fs::path folder_ = sandbox_ / "user" / "temp";
    fs::path cabinet_ = DriverFolder() / kCabinet;
    Printer printer_{{L"qxother.dll", L"QXZHLF1.CHM"}};
    TextOwner language_;
};

TEST(HelpLanguage, ALanguageWithoutCodeGetsEnglish)
{
    wchar_t code[4] = L"xxx";
    VGetLocaleSubstring(0x0439, code);
    EXPECT_STREQ(code, L"EN");
    VGetLocaleSubstring(0x0404, code);
    EXPECT_STREQ(code, L"HT");
}

TEST(HelpLanguage, NothingIsWrittenToNowhere)
{
    VGetLocaleSubstring(0x0409, nullptr);
}

TEST_F(Help, TheLocalizedNameFollowsTheLanguage)
{
    EXPECT_EQ(BuildLocalizedHelpName(L"QXFXH_XX_F1.CHM", 0x0407), L"QXFXHDEF1.CHM");
    EXPECT_EQ(BuildLocalizedHelpName(L"QXFXH_XX_F1.CHM", 0x0439), L"QXFXHENF1.CHM");
}

TEST_F(Help, ADriverFileLiesBesideTheDriver)
{
    EXPECT_TRUE(
        fs::equivalent(fs::path(BuildDriverFilePath(printer_.Handle(), L"x.cab")).parent_path(), DriverFolder()));
    EXPECT_EQ(fs::path(BuildDriverFilePath(printer_.Handle(), L"x.cab")).filename(), L"x.cab");
}

TEST_F(Help, APrintServerHasNoDriverAndABadHandleNoFolder)
{
    EXPECT_EQ(BuildDriverFilePath(nullptr, L"x.cab"), L"");
    EXPECT_EQ(BuildDriverFilePath(INVALID_HANDLE_VALUE, L"x.cab"), L"");
}

// ---- the cabinet ---------------------------------------------------------------------------------------------------

TEST_F(Help, TheUsersVariantIsUnpackedIntoTheTemporaryFolder)
{
    test::WriteCabinet(cabinet_, {{"OTHER.TXT", "other"}, {kEnglish, "english"}, {UserVariant(), "variant"}});
    EXPECT_EQ(Extract(), folder_ / UserVariant());
    EXPECT_EQ(Contents(folder_ / UserVariant()), "variant");
    EXPECT_EQ(FilesInSandbox().size(), 1u);
}

// What another session, or a viewer, may find meanwhile.
TEST_F(Help, TheVariantTakesItsNameWhenItIsWhole)
{
    static fs::path target;
    static std::vector<fs::path> unpackedTo;
    static bool targetWasThere;
    static PSP_FILE_CALLBACK_W callback;
    static test::PatchedFunction* patch;
    target = folder_ / UserVariant();
    unpackedTo.clear();
    targetWasThere = false;
    const auto watch = +[](PVOID context, UINT notification, UINT_PTR first, UINT_PTR second) -> UINT {
        const UINT answer = callback(context, notification, first, second);
        if (notification == SPFILENOTIFY_FILEINCABINET && answer == FILEOP_DOIT)
            unpackedTo.emplace_back(reinterpret_cast<const FILE_IN_CABINET_INFO_W*>(first)->FullTargetName);
        return answer;
    };
    static PSP_FILE_CALLBACK_W watching;
    watching = watch;
    test::PatchedFunction iterate(
        L"setupapi.dll", "SetupIterateCabinetW",
        +[](PCWSTR cabinet, DWORD reserved, PSP_FILE_CALLBACK_W handler, PVOID context) -> BOOL {
            callback = handler;
            const BOOL good =
                patch->WithOriginal([&] { return SetupIterateCabinetW(cabinet, reserved, watching, context); });
            targetWasThere = fs::exists(target);
            return good;
        });
    patch = &iterate;

    test::WriteCabinet(cabinet_, {{UserVariant(), "variant"}});
    EXPECT_EQ(Extract(), target);
    ASSERT_EQ(unpackedTo.size(), 1u);
    EXPECT_NE(unpackedTo[0], target);
    EXPECT_EQ(unpackedTo[0].parent_path(), target.parent_path()); // renaming moves it in one step only there
    EXPECT_FALSE(targetWasThere);
    EXPECT_EQ(Contents(target), "variant");
    EXPECT_EQ(FilesInSandbox(), std::vector<fs::path>{fs::relative(target, sandbox_)});
}

TEST_F(Help, AVariantThatAnotherSessionHasUnpackedMeanwhileStays)
{
    static fs::path target;
    static test::PatchedFunction* patch;
    target = folder_ / UserVariant();
    test::PatchedFunction iterate(
        L"setupapi.dll", "SetupIterateCabinetW",
        +[](PCWSTR cabinet, DWORD reserved, PSP_FILE_CALLBACK_W handler, PVOID context) -> BOOL {
            WriteFile(target, "theirs");
            return patch->WithOriginal([&] { return SetupIterateCabinetW(cabinet, reserved, handler, context); });
        });
    patch = &iterate;
    test::WriteCabinet(cabinet_, {{UserVariant(), "ours"}});
    EXPECT_EQ(Extract(), target);
    EXPECT_EQ(Contents(target), "theirs");
    EXPECT_EQ(FilesInSandbox().size(), 1u);
}

// A virus scanner looks at every new file; because of that the help must not be missing for a whole session.
TEST_F(Help, AScannerThatLooksAtTheUnpackedFileIsWaitedFor)
{
    static int refusals;
    static test::RedirectedImport<decltype(CreateFileW)>* create;
    static test::RedirectedImport<decltype(MoveFileExW)>* move;
    test::RedirectedImport<decltype(CreateFileW)> creating(
        "CreateFileW", +[](LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security, DWORD disposition,
                           DWORD flags, HANDLE like) {
            if (access != GENERIC_WRITE || refusals == 0)
                return create->Original()(path, access, share, security, disposition, flags, like);
            --refusals;
            SetLastError(ERROR_SHARING_VIOLATION);
            return INVALID_HANDLE_VALUE;
        });
    create = &creating;
    test::RedirectedImport<decltype(MoveFileExW)> moving(
        "MoveFileExW", +[](LPCWSTR from, LPCWSTR to, DWORD flags) -> BOOL {
            if (refusals == 0)
                return move->Original()(from, to, flags);
            --refusals;
            SetLastError(ERROR_SHARING_VIOLATION);
            return FALSE;
        });
    move = &moving;

    test::WriteCabinet(cabinet_, {{UserVariant(), "variant"}});
    refusals = 3;
    EXPECT_EQ(Extract(), folder_ / UserVariant());
    EXPECT_EQ(refusals, 0);
    EXPECT_EQ(Contents(folder_ / UserVariant()), "variant");
    EXPECT_EQ(FilesInSandbox().size(), 1u);
}

TEST_F(Help, TheBuiltCabinetHoldsTheUsersVariant)
{
    fs::copy_file(test::BuiltFolder() / "QXFAXHLP.CAB", cabinet_);
    EXPECT_EQ(Extract(), folder_ / UserVariant());
    EXPECT_EQ(Contents(folder_ / UserVariant()).substr(0, 4), "ITSF");
}

TEST_F(Help, NamesInTheCabinetAreComparedWithoutCase)
{
    test::WriteCabinet(cabinet_, {{"qxzh" + UserCode() + "f1.ChM", "variant"}});
    EXPECT_EQ(Extract(), folder_ / UserVariant());
    EXPECT_EQ(Contents(folder_ / UserVariant()), "variant");
}

TEST_F(Help, AVariantThatIsThereIsNeverUnpackedAgain)
{
    WriteFile(folder_ / UserVariant(), "kept");
    test::WriteCabinet(cabinet_, {{UserVariant(), "variant"}});
    EXPECT_EQ(Extract(), folder_ / UserVariant());
    EXPECT_EQ(Contents(folder_ / UserVariant()), "kept");
    fs::remove(cabinet_);
    EXPECT_EQ(Extract(), folder_ / UserVariant());
}

// What a program that was ended in the middle has left, and nothing else.
TEST_F(Help, OldPartsOfAFileAreRemovedByTheNextExtraction)
{
    const std::vector<fs::path> strangers = {"qxh.1.2.tmp",     "qxh.1..3.tmp", "qxh.1.2.3.tmpx",
                                             "qxh.1.2.3.4.tmp", "qxhelp.tmp",   "xqxh.1.2.3.tmp"};
    std::vector<fs::path> all = strangers;
    all.insert(all.end(), {"qxh.12.34.5.tmp", "qxh.56.78.9.tmp"});
    for (const fs::path& name : all) {
        WriteFile(folder_ / name, "half");
        if (name != "qxh.56.78.9.tmp") // somebody may be writing it
            fs::last_write_time(folder_ / name, fs::file_time_type::clock::now() - std::chrono::hours(1));
    }
    test::WriteCabinet(cabinet_, {{UserVariant(), "variant"}});
    EXPECT_EQ(Extract(), folder_ / UserVariant());
    EXPECT_FALSE(fs::exists(folder_ / "qxh.12.34.5.tmp"));
    EXPECT_TRUE(fs::exists(folder_ / "qxh.56.78.9.tmp"));
    for (const fs::path& name : strangers)
        EXPECT_TRUE(fs::exists(folder_ / name)) << name;
}

TEST_F(Help, WithoutTheUsersVariantTheCabinetYieldsTheEnglishOne)
{
    test::WriteCabinet(cabinet_, {{"QXZHFIF1.CHM", "finnish"}, {kEnglish, "english"}});
    EXPECT_EQ(Extract(), folder_ / kEnglish);
    EXPECT_EQ(Contents(folder_ / kEnglish), "english");
}

TEST_F(Help, AnEnglishVariantThatIsThereServesWithoutCabinet)
{
    WriteFile(folder_ / kEnglish, "kept");
    EXPECT_EQ(Extract(), folder_ / kEnglish);
}

TEST_F(Help, AMissingCabinetGivesNoHelp)
{
    EXPECT_EQ(Extract(), "");
    EXPECT_TRUE(FilesInSandbox().empty());
}

TEST_F(Help, ACabinetWithOtherNamesGivesNoHelp)
{
    test::WriteCabinet(cabinet_, {{"QXZHENF1.CHM.BAK", "1"}, {"XQXZHENF1.CHM", "2"}, {"QXZHFIF1.CHM", "3"}});
    EXPECT_EQ(Extract(), "");
    EXPECT_TRUE(FilesInSandbox().empty());
}

TEST_F(Help, ACabinetsNamesNeverLeadAFileOutOfTheTemporaryFolder)
{
    const std::string absolute = (sandbox_ / kEnglish).string();
    test::WriteCabinet(cabinet_, {{"..\\" + UserVariant(), "1"},
                                  {"..\\..\\" + std::string(kEnglish), "2"},
                                  {"sub\\" + UserVariant(), "3"},
                                  {absolute, "4"},
                                  {"C:" + UserVariant(), "5"},
                                  {"../" + UserVariant(), "6"}});
    EXPECT_EQ(Extract(), "");
    EXPECT_TRUE(FilesInSandbox().empty());
}

TEST_F(Help, ATruncatedCabinetGivesNoHelpAndLeavesNoPartOfIt)
{
    const std::string whole = Contents(test::BuiltFolder() / "QXFAXHLP.CAB");
    ASSERT_GT(whole.size(), 10000u);
    for (const std::size_t bytes :
         {0, 3, 40, 100, 300, 2000, 6000}) { // in the header, the list of files, the first file
        WriteFile(cabinet_, whole.substr(0, bytes));
        EXPECT_EQ(Extract(), "") << bytes;
        EXPECT_TRUE(FilesInSandbox().empty()) << bytes;
    }
}

// Turns a cabinet of one file into the first of two, in the middle of the file; the second one is nowhere.
void LoseTheEnd(const fs::path& path)
{
    std::string cabinet = Contents(path);
    const auto number = [&cabinet](std::size_t at) -> std::uint32_t {
        std::uint32_t value = 0;
        std::memcpy(&value, cabinet.data() + at, sizeof value);
        return value;
    };
    const std::string next("NEXT.CAB\0second\0", 16);
    cabinet.replace(number(36) + 6, 2, 2, '\0'); // the block goes on in the next cabinet
    cabinet.replace(52, 2, "\xFE\xFF");          // and so does the file
    cabinet[30] = 2;                             // there is one
    for (const std::size_t length : {8, 16, 36}) {
        const auto moved = static_cast<std::uint32_t>(number(length) + next.size());
        std::memcpy(cabinet.data() + length, &moved, sizeof moved);
    }
    cabinet.insert(36, next);
    WriteFile(path, cabinet);
}

TEST_F(Help, ACabinetWhoseContinuationIsMissingGivesNoHelpAndEnds)
{
    for (const std::string& name : {UserVariant(), std::string(kEnglish)}) {
        test::WriteCabinet(cabinet_, {{name, "the beginning"}});
        LoseTheEnd(cabinet_);
        EXPECT_EQ(Extract(), "") << name;
        EXPECT_TRUE(FilesInSandbox().empty()) << name;
    }
}

TEST_F(Help, PrinterDataThatNamesNoPlainFileGivesNoHelp)
{
    const std::wstring long1 = std::wstring(120, L'A') + L"_X_" + std::wstring(136, L'B');
    for (const std::wstring& name :
         {std::wstring(), std::wstring(L"QXZHENF1.CHM"), std::wstring(L"QXZH_XX"), std::wstring(L"..\\QXZH_XX_F1.CHM"),
          std::wstring(L"QXZH_XX_*"), std::wstring(L"C:\\QXZH_XX_F1.CHM"), std::wstring(259, L'_'), long1}) {
        const std::string english = fs::path(BuildLocalizedHelpName(name, 1033)).string();
        test::WriteCabinet(cabinet_, {{english.empty() ? kEnglish : english, "english"}});
        WriteFile(folder_ / "QXZHENX.CHM", "what a wildcard would find");
        EXPECT_EQ(Extract(name), "") << name.substr(0, 30).c_str();
    }
    EXPECT_EQ(FilesInSandbox().size(), 1u);
}

// ---- the temporary folder ------------------------------------------------------------------------------------------

TEST_F(Help, AFolderInTheFilesPlaceIsNoHelp)
{
    fs::create_directory(folder_ / UserVariant());
    fs::create_directories(folder_ / kEnglish);
    test::WriteCabinet(cabinet_, {{UserVariant(), "variant"}, {kEnglish, "english"}});
    EXPECT_EQ(Extract(), "");
    EXPECT_TRUE(fs::is_directory(folder_ / UserVariant()));
    EXPECT_TRUE(fs::is_directory(folder_ / kEnglish));
}

TEST_F(Help, AReadOnlyFileInTheFilesPlaceIsUsedAsItIs)
{
    WriteFile(folder_ / UserVariant(), "kept");
    fs::permissions(folder_ / UserVariant(), fs::perms::owner_write, fs::perm_options::remove);
    test::WriteCabinet(cabinet_, {{UserVariant(), "variant"}});
    EXPECT_EQ(Extract(), folder_ / UserVariant());
    EXPECT_EQ(Contents(folder_ / UserVariant()), "kept");
}

TEST_F(Help, ATemporaryFolderThatCannotBeWrittenGivesNoHelp)
{
    test::WriteCabinet(cabinet_, {{UserVariant(), "variant"}, {kEnglish, "english"}});
    WriteFile(sandbox_ / "file", "");
    SetTemporaryFolder(sandbox_ / "file"); // nothing can be put below a file
    EXPECT_EQ(Extract(), "");
    EXPECT_EQ(FilesInSandbox(), std::vector<fs::path>{"file"});
}

TEST_F(Help, ATemporaryFolderTooLongForAFileBelowItGivesNoHelp)
{
    test::WriteCabinet(cabinet_, {{UserVariant(), "variant"}, {kEnglish, "english"}});
    fs::path folder = folder_;
    while (folder.native().size() < 245)
        folder /= std::wstring(std::min<std::size_t>(40, 250 - folder.native().size()), L'x');
    fs::create_directories(folder);
    SetTemporaryFolder(folder);
    EXPECT_EQ(Extract(), "");
    EXPECT_EQ(BuildHelpFilePath(PrinterDriver(printer_.Handle())), L"");
    EXPECT_TRUE(fs::is_empty(folder));
}

// The file itself finds room there, what it is unpacked to does not.
TEST_F(Help, ATemporaryFolderTooLongForAnUnpackedFileGivesNoHelp)
{
    test::WriteCabinet(cabinet_, {{UserVariant(), "variant"}, {kEnglish, "english"}});
    fs::path folder = folder_;
    while (folder.native().size() < 240)
        folder /= std::wstring(std::min<std::size_t>(40, 245 - folder.native().size()), L'x');
    fs::create_directories(folder);
    SetTemporaryFolder(folder);
    EXPECT_EQ(Extract(), "");
    EXPECT_TRUE(fs::is_empty(folder));
}

// ---- calls that fail -----------------------------------------------------------------------------------------------

TEST_F(Help, AnyCallThatFailsGivesTheWholeFileOrNone)
{
    test::WriteCabinet(cabinet_, {{UserVariant(), "variant"}});
    const auto extract = [this](const std::string& what) {
        const fs::path path = Extract();
        EXPECT_TRUE(path.empty() || Contents(path) == "variant") << what;
        EXPECT_LE(FilesInSandbox().size(), 1u) << what;
        const std::wstring help = BuildHelpFilePath(PrinterDriver(printer_.Handle()));
        EXPECT_TRUE(help.empty() || help == (folder_ / UserVariant()).native() + L"::/qxhelp.txt") << what;
        fs::remove(folder_ / UserVariant());
    };
    test::WhileEachFails<decltype(GetTempPathW)>("GetTempPathW", 0u, extract);
    test::WhileEachFails<decltype(GetPrinterDriverW)>("GetPrinterDriverW", FALSE, extract, ERROR_INVALID_HANDLE);
    test::WhileEachFails<decltype(FindFirstFileW)>("FindFirstFileW", INVALID_HANDLE_VALUE, extract);
    test::WhileEachFails<decltype(SetupIterateCabinetW)>("SetupIterateCabinetW", FALSE, extract);
    test::WhileEachFails<decltype(CreateFileW)>("CreateFileW", INVALID_HANDLE_VALUE, extract);
    test::WhileEachFails<decltype(FlushFileBuffers)>("FlushFileBuffers", FALSE, extract);
    test::WhileEachFails<decltype(MoveFileExW)>("MoveFileExW", FALSE, extract);
    test::WhileEachFails<decltype(GetLongPathNameW)>("GetLongPathNameW", 0u, extract);
    test::WhileEachFails<decltype(OpenPrinterW)>("OpenPrinterW", FALSE, [](const std::string& what) {
        EXPECT_EQ(BuildDriverFilePath(nullptr, L"x.cab"), L"") << what;
    });
}

// The question would never end if a name that cannot be remembered counted as another one.
TEST_F(Help, ACabinetWhoseContinuationHasANameTooLongGivesNoHelp)
{
    static UINT answers[3];
    const auto iterate = +[](PCWSTR, DWORD, PSP_FILE_CALLBACK_W callback, PVOID context) -> BOOL {
        CABINET_INFO_W next{};
        const auto ask = [&] {
            return callback(context, SPFILENOTIFY_NEEDNEWCABINET, reinterpret_cast<UINT_PTR>(&next), 0);
        };
        next.CabinetFile = L"NEXT.CAB";
        answers[0] = ask();
        const std::wstring name(MAX_PATH, L'x');
        next.CabinetFile = name.c_str();
        answers[1] = ask();
        next.CabinetFile = nullptr;
        answers[2] = ask();
        return FALSE;
    };
    const test::RedirectedImport<decltype(SetupIterateCabinetW)> iterating("SetupIterateCabinetW", iterate);
    test::WriteCabinet(cabinet_, {{kEnglish, "english"}});
    EXPECT_EQ(Extract(), "");
    EXPECT_EQ(answers[0], static_cast<UINT>(NO_ERROR));
    EXPECT_EQ(answers[1], static_cast<UINT>(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(answers[2], static_cast<UINT>(NO_ERROR)); // not asked for before
}

TEST_F(Help, ManyAttemptsLeaveNoHandleOpen)
{
    test::WriteCabinet(cabinet_, {{"..\\" + UserVariant(), "1"}, {"OTHER.CHM", "2"}});
    const auto attempt = [&] {
        Extract();
        BuildHelpFilePath(PrinterDriver(printer_.Handle()));
        BuildDriverFilePath(nullptr, kCabinet);
    };
    attempt();
    const std::size_t before = test::NextHandle();
    for (int i = 0; i < 50; ++i)
        attempt();
    EXPECT_EQ(test::NextHandle(), before);
}

// ---- the path that dialogs keep ------------------------------------------------------------------------------------

class HelpFilePath : public Help {
protected:
    std::wstring Of(const std::vector<std::wstring>& dependentFiles)
    {
        const Printer printer(dependentFiles);
        const std::wstring path = BuildHelpFilePath(PrinterDriver(printer.Handle()));
        const std::wstring folder = folder_.native() + L"\\";
        EXPECT_TRUE(path.empty() || path.starts_with(folder)) << fs::path(path).string();
        return path.empty() ? path : path.substr(folder.size());
    }

    std::wstring UserName(const std::wstring& behind) const
    {
        return L"QXZH" + fs::path(UserCode()).native() + behind + L".CHM::/qxhelp.txt";
    }
};

TEST_F(HelpFilePath, ComesFromTheDependentFileAndTheUsersLanguage)
{
    EXPECT_EQ(Of({L"QXZHLF1.CHM"}), UserName(L"F1"));
}

TEST_F(HelpFilePath, TheLastDependentFileThatNamesHelpCounts)
{
    EXPECT_EQ(Of({L"qxother.dll", L"QXZHLF1.CHM", L"QXZHLF2.CHM", L"last.dll"}), UserName(L"F2"));
}

TEST_F(HelpFilePath, SmallLettersBecomeCapitals)
{
    EXPECT_EQ(Of({L"qxzhlf1.chm"}), UserName(L"F1"));
}

TEST_F(HelpFilePath, WithoutSuchADependentFileThereIsNone)
{
    EXPECT_EQ(Of({}), L"");
    EXPECT_EQ(Of({L"qxother.dll", L"QXZHENF1.CHM"}), L"");
    EXPECT_EQ(Of({L"QXZHL"}), L"");
}

TEST_F(HelpFilePath, ABadPrinterHasNone)
{
    EXPECT_EQ(BuildHelpFilePath(PrinterDriver(nullptr)), L"");
    EXPECT_EQ(BuildHelpFilePath(PrinterDriver(INVALID_HANDLE_VALUE)), L"");
}

// ---- showing a page ------------------------------------------------------------------------------------------------

class HelpPage : public Help {
protected:
    TextOwner OwnerOf(const fs::path& chm) const
    {
        return TextOwner(nullptr, (chm.native() + L"::/qxhelp.txt").c_str());
    }

    fs::path PutChm(const char* name = kEnglish) const
    {
        WriteFile(folder_ / name, "help");
        return folder_ / name;
    }

    test::HelpViewerStandIn& viewer_ = test::HelpViewerStandIn::OfThisProgram();
};

TEST_F(HelpPage, IsAskedForByHelpFileAndNumber)
{
    const fs::path chm = PutChm();
    const HWND owner = GetDesktopWindow();
    ShowHelp(OwnerOf(chm), owner, 15596);
    const auto requests = viewer_.TakeRequests();
    ASSERT_EQ(requests.size(), 1u);
    EXPECT_EQ(requests[0].page, chm.native() + L"::/15596.html");
    EXPECT_EQ(requests[0].owner, owner);
    EXPECT_EQ(requests[0].command, 0u); // display the topic
    EXPECT_EQ(requests[0].data, 0u);
}

TEST_F(HelpPage, ControlsWithoutATopicOpenNone)
{
    ShowHelp(OwnerOf(PutChm()), nullptr, kNoTopic);
    EXPECT_TRUE(viewer_.TakeRequests().empty());
}

TEST_F(HelpPage, WithoutAHelpFilePathThereIsNone)
{
    ShowHelp(TextOwner(nullptr, nullptr), nullptr, 15596);
    ShowHelp(TextOwner(nullptr, L"nonsense"), nullptr, 15596);
    EXPECT_TRUE(viewer_.TakeRequests().empty());
}

TEST_F(HelpPage, AHelpFileThatIsNotThereIsNotAskedFor)
{
    ShowHelp(OwnerOf(folder_ / kEnglish), nullptr, 15596);
    fs::create_directory(folder_ / "FOLDER.CHM");
    ShowHelp(OwnerOf(folder_ / "FOLDER.CHM"), nullptr, 15596);
    EXPECT_TRUE(viewer_.TakeRequests().empty());
}

// It has windows and threads of its own: unloaded under them it would take the printing program along.
TEST_F(HelpPage, AViewerThatCannotBeKeptInTheProcessIsNotUsed)
{
    const TextOwner owner = OwnerOf(PutChm());
    {
        const test::PatchedFunction pin(
            L"kernel32.dll", "GetModuleHandleExW", +[](DWORD, LPCWSTR, HMODULE*) -> BOOL { return FALSE; });
        ShowHelp(owner, nullptr, 15596);
    }
    EXPECT_TRUE(viewer_.TakeRequests().empty());
    ShowHelp(owner, nullptr, 15596);
    EXPECT_EQ(viewer_.TakeRequests().size(), 1u);
}

// Runs body on a thread of its own in the apartment.
template <class Body> void InApartment(COINIT apartment, Body body)
{
    std::thread([&] {
        EXPECT_TRUE(SUCCEEDED(CoInitializeEx(nullptr, static_cast<DWORD>(apartment))));
        body();
        CoUninitialize();
    }).join();
}

TEST_F(HelpPage, IsShownByTheCallersThreadInASingleThreadedApartment)
{
    const TextOwner owner = OwnerOf(PutChm());
    InApartment(COINIT_APARTMENTTHREADED, [&] {
        ShowHelp(owner, nullptr, 15596);
        const auto requests = viewer_.TakeRequests();
        ASSERT_EQ(requests.size(), 1u);
        EXPECT_EQ(requests[0].thread, GetCurrentThreadId());
    });
}

TEST_F(HelpPage, IsShownByOneOtherThreadFromAMultithreadedApartment)
{
    const TextOwner owner = OwnerOf(PutChm());
    InApartment(COINIT_MULTITHREADED, [&] {
        ShowHelp(owner, nullptr, 15596);
        ShowHelp(owner, nullptr, 15597); // the viewer's window is there already, and its thread still is
        const auto requests = viewer_.TakeRequests();
        ASSERT_EQ(requests.size(), 2u);
        for (const auto& request : requests) {
            EXPECT_TRUE(request.apartment == APTTYPE_STA || request.apartment == APTTYPE_MAINSTA) << request.apartment;
            EXPECT_EQ(request.thread, requests[0].thread);
        }
        const HANDLE thread = OpenThread(SYNCHRONIZE, FALSE, requests[0].thread);
        EXPECT_EQ(WaitForSingleObject(thread, 0), static_cast<DWORD>(WAIT_TIMEOUT));
        CloseHelpViewer();
        EXPECT_EQ(WaitForSingleObject(thread, 0), WAIT_OBJECT_0);
        CloseHandle(thread);
    });
}

TEST_F(HelpPage, WithoutAViewerOrAThreadForItThereIsNoneAndTheNextIsShown)
{
    const TextOwner owner = OwnerOf(PutChm());
    ShowHelp(owner, nullptr, 15596); // loads the viewer
    EXPECT_EQ(viewer_.TakeRequests().size(), 1u);
    const auto show = [&](const std::string& what) {
        ShowHelp(owner, nullptr, 15596);
        const auto requests = viewer_.TakeRequests();
        EXPECT_LE(requests.size(), 1u) << what;
        CloseHelpViewer();
    };
    test::WhileEachFails<decltype(GetSystemDirectoryW)>("GetSystemDirectoryW", 0u, show);
    test::WhileEachFails<decltype(LoadLibraryExW)>("LoadLibraryExW", nullptr, show);
    test::WhileEachFails<decltype(GetModuleHandleExW)>("GetModuleHandleExW", FALSE, show);
    {
        test::FailingCalls<decltype(GetProcAddress), struct Viewers> functions(nullptr, "GetProcAddress", nullptr);
        functions.FailFrom(1);
        ShowHelp(owner, nullptr, 15596);
    }
    EXPECT_TRUE(viewer_.TakeRequests().empty());
    InApartment(COINIT_MULTITHREADED, [&] {
        test::WhileEachFails<decltype(CreateThread)>("CreateThread", nullptr, show);
        test::WhileEachFails<decltype(CreateEventW)>("CreateEventW", nullptr, show);
        ShowHelp(owner, nullptr, 15596);
        EXPECT_EQ(viewer_.TakeRequests().size(), 1u);
        CloseHelpViewer();
    });
}

// The list of viewers' threads has an end.
TEST_F(HelpPage, IsNotShownToMoreThreadsAtOnceThanThereIsRoomFor)
{
    constexpr int kRoom = 32;
    const TextOwner owner = OwnerOf(PutChm());
    std::vector<std::thread> threads;
    std::atomic<int> asked = 0;
    std::atomic<bool> over = false;
    for (int i = 0; i <= kRoom; ++i)
        threads.emplace_back([&] {
            CoInitializeEx(nullptr, COINIT_MULTITHREADED);
            ShowHelp(owner, nullptr, 15596);
            ++asked;
            while (!over)
                Sleep(1);
            CloseHelpViewer();
            CoUninitialize();
        });
    while (asked <= kRoom)
        Sleep(1);
    over = true;
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(viewer_.TakeRequests().size(), static_cast<std::size_t>(kRoom));
}

TEST_F(HelpPage, FollowsFromPrinterAndCabinetAsInASession)
{
    test::WriteCabinet(cabinet_, {{UserVariant(), "variant"}});
    Extract();
    ShowHelp(TextOwner(nullptr, BuildHelpFilePath(PrinterDriver(printer_.Handle())).c_str()), nullptr, 15619);
    const auto requests = viewer_.TakeRequests();
    ASSERT_EQ(requests.size(), 1u);
    EXPECT_EQ(requests[0].page, (folder_ / UserVariant()).native() + L"::/15619.html");
}

// Of languages that share a help, it is in the first.
TEST_F(HelpPage, IsInTheLanguageOfEveryUser)
{
    fs::copy_file(test::BuiltFolder() / "QXFAXHLP.CAB", cabinet_);
    for (const test::Language& language : test::Languages()) {
        const test::UiLanguage user(language.Id());
        const TextOwner session;
        Extract();
        ShowHelp(TextOwner(nullptr, BuildHelpFilePath(PrinterDriver(printer_.Handle())).c_str()), nullptr, 15619);
        const auto requests = viewer_.TakeRequests();
        ASSERT_EQ(requests.size(), 1u) << language.code;
        const auto help = std::ranges::find(test::Languages(), language.helpCode, &test::Language::helpCode);
        const std::string page = test::ReadCompiledHelp(HelpChmPath(requests[0].page)).at("15619.html");
        EXPECT_NE(page.find("<html lang=\"" + help->code + "\""), page.npos) << language.code;
    }
}

} // namespace
} // namespace qx
