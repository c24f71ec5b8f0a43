// Phone book files that nobody should write: none may crash, hang, fill the memory, or reach outside itself.
#include "base/no_copy.h"
#include "phonebook/file/phone_book_file.h"

#include "phonebook/file/com.h"
#include "support/documents_folder.h"
#include "support/redirected_import.h"

#include <gtest/gtest.h>
#include <map>
#include <msxml2.h>
#include <optional>
#include <psapi.h>
#include <string>
#include <winsock2.h>

namespace qx {
namespace {

using namespace test;
using namespace std::string_literals;

constexpr char kBefore[] = "<device><software><component><name>QX Fax Address Book</name><qxfax_phonebook>";
constexpr char kAfter[] = "</qxfax_phonebook></component></software></device>";
constexpr char kAnn[] = "<qxfax_pbentry entry_id='1' name='Ann' fax_number='1' company_name=''/>";

std::string Document(const std::string& items)
{
    return kBefore + items + kAfter;
}

std::string Repeated(const std::string& text, std::size_t times)
{
    std::string repeated;
    repeated.reserve(text.size() * times);
    for (std::size_t i = 0; i < times; ++i)
        repeated += text;
    return repeated;
}

std::string Wide(const std::string& ascii)
{
    std::string bytes = "\xFF\xFE";
    for (const char c : ascii)
        bytes += {c, '\0'};
    return bytes;
}

class HostilePhoneBookFile : public ::testing::Test {
protected:
    std::wstring Path() const { return documents.File(L"qxfaxab.xml"); }

    LoadedPhoneBook Load(const std::string& bytes)
    {
        WriteBytes(Path(), bytes);
        return LoadPhoneBookFile(Path(), store);
    }

    DocumentsFolder documents;
    ItemStore store;
};

TEST_F(HostilePhoneBookFile, CutOffAtAnyByteIsNoPhoneBook)
{
    const std::string whole =
        Document("<qxfax_group group_name='Sales' entry_id='2'><member_list><m_entry_id>1</m_entry_id>"
                 "</member_list></qxfax_group>"s +
                 kAnn);
    ASSERT_EQ(Load(whole).items.size(), 2u);
    for (std::size_t bytes = 0; bytes < whole.size(); ++bytes) {
        const LoadedPhoneBook loaded = Load(whole.substr(0, bytes));
        ASSERT_EQ(loaded.outcome, LoadOutcome::NotUnderstood) << bytes;
        ASSERT_TRUE(loaded.items.empty()) << bytes;
    }
}

TEST_F(HostilePhoneBookFile, WithAnyByteChangedIsReadOrRefused)
{
    const std::string whole = Document(kAnn);
    for (std::size_t at = 0; at < whole.size(); ++at) {
        for (const char byte : {'\0', '<', '\x80'}) {
            std::string changed = whole;
            changed[at] = byte;
            EXPECT_LE(Load(changed).items.size(), 1u) << at;
        }
    }
}

struct BadDocument {
    const char* what;
    std::string bytes;
};

TEST_F(HostilePhoneBookFile, OfAWrongEncodingOrFormIsNoPhoneBook)
{
    const BadDocument documentsThatAreNone[] = {
        {"text that is not UTF-8", Document("<qxfax_pbentry entry_id='1' name='\xE4'/>")},
        {"a longer form of a character", Document("<qxfax_pbentry entry_id='1' name='\xC0\xBC'/>")},
        {"half a surrogate pair", Document("<qxfax_pbentry entry_id='1' name='\xED\xA0\x80'/>")},
        {"a zero byte", Document("<qxfax_pbentry entry_id='1' name='A\0'/>"s)},
        {"a zero by reference", Document("<qxfax_pbentry entry_id='1' name='&#0;'/>")},
        {"an encoding that does not exist", "<?xml version='1.0' encoding='utf-99'?>" + Document(kAnn)},
        {"an encoding in which markup can hide", "<?xml version='1.0' encoding='UTF-7'?>" + Document(kAnn)},
        {"the same attribute twice", Document("<qxfax_pbentry entry_id='1' entry_id='2'/>")},
        {"two phone books in a row", Document(kAnn) + Document(kAnn)},
        {"something in front", "x" + Document(kAnn)},
        {"zeros only", std::string(4096, '\0')},
    };
    for (const auto& [what, bytes] : documentsThatAreNone) {
        const LoadedPhoneBook loaded = Load(bytes);
        EXPECT_EQ(loaded.outcome, LoadOutcome::NotUnderstood) << what;
        EXPECT_TRUE(loaded.items.empty()) << what;
    }
}

// Whether the system's parser understands a document that it is handed as bytes. Windows' does for each encoding below;
// the one of Wine 10 takes all bytes for UTF-8.
bool ParserReads(const std::string& bytes)
{
    const ComApartment apartment;
    ComPtr<IXMLDOMDocument> parser;
    VARIANT_BOOL loaded = VARIANT_FALSE;
    CLSID parserClass{};
    CLSIDFromProgID(L"Microsoft.XMLDOM", &parserClass);
    CoCreateInstance(parserClass, nullptr, CLSCTX_INPROC_SERVER, IID_IXMLDOMDocument,
                     reinterpret_cast<void**>(parser.Receive()));
    return parser && parser->load(Variant(bytes).Get(), &loaded) == S_OK && loaded != VARIANT_FALSE;
}

TEST_F(HostilePhoneBookFile, OfAnotherEncodingIsAPhoneBookWhereverTheParserReadsIt)
{
    EXPECT_EQ(Load("\xEF\xBB\xBF" + Document(kAnn)).items.size(), 1u);
    EXPECT_EQ(Load("<?xml version='1.0' encoding='us-ascii'?>" + Document(kAnn)).items.size(), 1u);

    const std::string ann = Document("<qxfax_pbentry entry_id='1' name='\xC4nn'/>");
    for (const std::string& bytes : {Wide(Document(kAnn)), "<?xml version='1.0' encoding='ISO-8859-1'?>" + ann,
                                     "<?xml version='1.0' encoding='windows-1252'?>" + ann}) {
        const LoadedPhoneBook loaded = Load(bytes);
        if (ParserReads(bytes)) {
            ASSERT_EQ(loaded.items.size(), 1u) << bytes;
            EXPECT_STREQ(loaded.items[0]->GetName(), bytes.ends_with(ann) ? L"\u00C4nn" : L"Ann");
        } else {
            EXPECT_EQ(loaded.outcome, LoadOutcome::NotUnderstood) << bytes; // and so kept, not written over
        }
    }
}

TEST_F(HostilePhoneBookFile, LosesOnlyTheItemsThatAreBad)
{
    const LoadedPhoneBook loaded =
        Load(Document("<qxfax_pbentry/><qxfax_group/><qxfax_pbentry entry_id='9' fax_number='no number'/>"
                      "<qxfax_group group_name='G'><member_list>" +
                      Repeated("<m_entry_id><![CDATA[1]]></m_entry_id>", 3) +
                      "</member_list></qxfax_group><qxfax_pbentry xmlns:x='urn:x' x:entry_id='5'/>" + kAnn));
    ASSERT_EQ(loaded.items.size(), 2u);
    EXPECT_TRUE(AsGroup(loaded.items[0])->MemberIds().empty());
    EXPECT_STREQ(loaded.items[1]->GetName(), L"Ann");
}

// Document types

std::string NestedEntities(int depth)
{
    std::string type = "<!DOCTYPE device [<!ENTITY e0 'boom boom boom boom'>";
    for (int i = 1; i <= depth; ++i)
        type += "<!ENTITY e" + std::to_string(i) + " '" + Repeated("&e" + std::to_string(i - 1) + ";", 10) + "'>";
    return type + "]>" + Document("<qxfax_pbentry entry_id='1' name='&e" + std::to_string(depth) + ";'/>");
}

TEST_F(HostilePhoneBookFile, WithADocumentTypeIsNoPhoneBookHoweverHarmless)
{
    for (const std::string& type : {"<!DOCTYPE device>"s, "<!DOCTYPE device [<!ENTITY a 'x'>]>"s,
                                    "<!-- -->\n<!DOCTYPE device SYSTEM 'x.dtd'>"s}) {
        EXPECT_EQ(Load(type + Document(kAnn)).outcome, LoadOutcome::NotUnderstood) << type;
        EXPECT_EQ(Load(Wide(type + Document(kAnn))).outcome, LoadOutcome::NotUnderstood) << type;
    }
}

// What the parser is told about itself, and whether it is told before it has a document.
class TellsTheParser : NoCopy {
public:
    TellsTheParser()
    {
        constexpr CLSID kClass = {0x2933BF90, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};
        constexpr IID kDocument2 = {0x2933BF95, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};
        ComPtr<IXMLDOMDocument2> document;
        CoCreateInstance(kClass, nullptr, CLSCTX_INPROC_SERVER, kDocument2,
                         reinterpret_cast<void**>(document.Receive()));
        place_ = *reinterpret_cast<void***>(document.Get()) + kSetProperty;
        original_ = reinterpret_cast<SetProperty*>(*place_);
        told_.clear();
        WritePointer(place_, reinterpret_cast<void*>(&Note));
    }
    ~TellsTheParser() { WritePointer(place_, reinterpret_cast<void*>(original_)); }

    static std::optional<LONG> Told(const wchar_t* property)
    {
        const auto found = told_.find(property);
        return found == told_.end() ? std::nullopt : std::optional(found->second);
    }

private:
    using SetProperty = HRESULT STDMETHODCALLTYPE(IXMLDOMDocument2*, BSTR, VARIANT);
    static constexpr int kSetProperty = 80;

    static HRESULT STDMETHODCALLTYPE Note(IXMLDOMDocument2* document, BSTR property, VARIANT value)
    {
        ComPtr<IXMLDOMElement> root;
        if (document->get_documentElement(root.Receive()) != S_OK)
            told_[property] = value.vt == VT_BOOL ? value.boolVal : value.vt == VT_I4 ? value.lVal : 0;
        return original_(document, property, value);
    }

    static inline SetProperty* original_ = nullptr;
    static inline std::map<std::wstring, LONG> told_;
    ComApartment apartment_;
    void** place_;
};

TEST_F(HostilePhoneBookFile, IsReadByAParserThatIsToldToRefuseDocumentTypesAndDeepNesting)
{
    const TellsTheParser parser;
    EXPECT_EQ(Load(Document(kAnn)).items.size(), 1u);
    EXPECT_EQ(parser.Told(L"ProhibitDTD"), VARIANT_TRUE);
    EXPECT_EQ(parser.Told(L"MaxElementDepth"), 256);
}

TEST_F(HostilePhoneBookFile, MadeOfEntitiesDoesNotGrow)
{
    EXPECT_TRUE(Load(NestedEntities(30)).items.empty());
    const std::string large(1 << 20, 'x');
    EXPECT_TRUE(Load("<!DOCTYPE device [<!ENTITY a '" + large + "'>]>" +
                     Document("<qxfax_pbentry entry_id='1' name='" + Repeated("&a;", 10000) + "'/>"))
                    .items.empty());
    EXPECT_TRUE(Load("<!DOCTYPE device [<!ENTITY a '&b;'><!ENTITY b '&a;'>]>" + Document("&a;")).items.empty());
}

TEST_F(HostilePhoneBookFile, NeverFetchesAFileOfTheSystem)
{
    WriteBytes(documents.File(L"secret.txt"), "secret");
    for (const char* const type :
         {"<!DOCTYPE device [<!ENTITY a SYSTEM 'secret.txt'>]>",
          "<!DOCTYPE device [<!ENTITY % p SYSTEM 'secret.txt'> %p;]>", "<!DOCTYPE device SYSTEM 'secret.txt'>"}) {
        const LoadedPhoneBook loaded =
            Load(type + Document("<qxfax_pbentry entry_id='1' name='A'/><qxfax_group group_name='&a;'/>"));
        EXPECT_TRUE(loaded.items.empty()) << type;
    }
    const LoadedPhoneBook included = Load(
        Document("<xi:include xmlns:xi='http://www.w3.org/2001/XInclude' href='secret.txt' parse='text'/>"s + kAnn));
    EXPECT_EQ(included.items.size(), 1u);
}

class LocalServer : NoCopy {
public:
    LocalServer()
    {
        WSADATA data;
        WSAStartup(MAKEWORD(2, 2), &data);
        socket_ = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        bind(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address);
        listen(socket_, 5);
        int bytes = sizeof address;
        getsockname(socket_, reinterpret_cast<sockaddr*>(&address), &bytes);
        address_ = "http://127.0.0.1:" + std::to_string(ntohs(address.sin_port)) + "/x";
    }
    ~LocalServer()
    {
        closesocket(socket_);
        WSACleanup();
    }

    const std::string& Address() const noexcept { return address_; }
    SOCKET Socket() const noexcept { return socket_; }

    bool WasCalled(long withinMilliseconds) const
    {
        fd_set waiting;
        FD_ZERO(&waiting);
        waiting.fd_array[waiting.fd_count++] = socket_;
        timeval time{0, withinMilliseconds * 1000};
        return select(0, &waiting, nullptr, nullptr, &time) == 1;
    }

private:
    SOCKET socket_ = INVALID_SOCKET;
    std::string address_;
};

TEST_F(HostilePhoneBookFile, NeverCallsTheNetwork)
{
    const LocalServer server;
    const std::string& address = server.Address();
    for (const std::string& bytes :
         {"<!DOCTYPE device SYSTEM '" + address + "'>" + Document(kAnn),
          "<!DOCTYPE device [<!ENTITY a SYSTEM '" + address + "'>]>" + Document("&a;"),
          "<?xml-stylesheet type='text/xsl' href='" + address + "'?>" + Document(kAnn),
          Document("<x xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' xsi:noNamespaceSchemaLocation='" +
                   address + "'/>" + kAnn)})
        Load(bytes);
    EXPECT_FALSE(server.WasCalled(100));

    // The same look would have seen a call.
    const SOCKET caller = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    sockaddr_in target{};
    int bytes = sizeof target;
    getsockname(server.Socket(), reinterpret_cast<sockaddr*>(&target), &bytes);
    connect(caller, reinterpret_cast<sockaddr*>(&target), sizeof target);
    EXPECT_TRUE(server.WasCalled(1000));
    closesocket(caller);
}

// Size

std::size_t PeakMemory()
{
    PROCESS_MEMORY_COUNTERS counters{};
    GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
    return counters.PeakWorkingSetSize;
}

TEST_F(HostilePhoneBookFile, WithAnAttributeOf100MegabytesTakesASmallMultipleOfThat)
{
    constexpr std::size_t kSize = 100 << 20;
    WriteBytes(Path(), Document("<qxfax_pbentry entry_id='1' name='" + std::string(kSize, 'x') + "'/>"));
    const std::size_t before = PeakMemory();
    ASSERT_GT(before, kSize); // the counter works: the text above was in memory
    LoadPhoneBookFile(Path(), store);
    EXPECT_LT(PeakMemory() - before, 5 * kSize);
}

TEST_F(HostilePhoneBookFile, LongerThanAnyPhoneBookIsNotReadAtAll)
{
    WriteBytes(Path(), "");
    {
        const UniqueFile file(CreateFileW(Path().c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        LARGE_INTEGER size;
        size.QuadPart = LONGLONG{8} << 30; // mostly a hole
        ASSERT_TRUE(SetFilePointerEx(file.Get(), size, nullptr, FILE_BEGIN) && SetEndOfFile(file.Get()));
    }
    const std::size_t before = PeakMemory();
    EXPECT_EQ(LoadPhoneBookFile(Path(), store).outcome, LoadOutcome::NotUnderstood);
    EXPECT_LT(PeakMemory() - before, std::size_t{16} << 20);
}

TEST_F(HostilePhoneBookFile, NestedDeeplyIsReadOrRefused)
{
    Load(Document(Repeated("<a>", 200) + Repeated("</a>", 200)));
    Load(Document(Repeated("<a>", 200000) + Repeated("</a>", 200000)));
    Load(Document(Repeated("<qxfax_group group_name='G'>", 200) + Repeated("</qxfax_group>", 200) + kAnn));
    EXPECT_EQ(Load(Document(Repeated("<a>", 10000000))).outcome, LoadOutcome::NotUnderstood);
    EXPECT_EQ(Load(Document(kAnn)).items.size(), 1u);
}

TEST_F(HostilePhoneBookFile, OfManyStrangersStillYieldsItsItems)
{
    EXPECT_EQ(Load(Document(Repeated("<a/>", 200000) + kAnn)).items.size(), 1u);
    std::string attributes;
    for (int i = 0; i < 5000; ++i)
        attributes += " a" + std::to_string(i) + "=''";
    EXPECT_EQ(Load(Document("<qxfax_pbentry" + attributes + " entry_id='1'/>" + kAnn)).items.size(), 2u);
    const LoadedPhoneBook group =
        Load(Document("<qxfax_group group_name='G'><member_list>" + Repeated("<m_entry_id>7</m_entry_id>", 100000) +
                      "</member_list></qxfax_group>"));
    ASSERT_EQ(group.items.size(), 1u);
    EXPECT_EQ(AsGroup(group.items[0])->MemberIds().size(), 100000u);
}

} // namespace
} // namespace qx
