#include "phonebook/file/phone_book_document.h"

#include "base/file_in_use.h"
#include "phonebook/file/xml_prolog.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace qx {

namespace {

// Written out: the import libraries do not hold them all.
constexpr CLSID kDocumentClass = {0x2933BF90, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};
constexpr IID kDocumentInterface = {0x2933BF81, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};

constexpr IID kNewerDocumentInterface = {0x2933BF95, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};

// A phone book's own elements nest eight deep.
constexpr LONG kDeepestElement = 256;

constexpr wchar_t kDevice[] = L"device";
constexpr std::string_view kEndTag = "</device>";
constexpr wchar_t kSoftware[] = L"software";
constexpr wchar_t kComponent[] = L"component";
constexpr wchar_t kPhoneBook[] = L"qxfax_phonebook";
constexpr wchar_t kPhoneBookPath[] = L"device/software/component/qxfax_phonebook";
constexpr wchar_t kComponentName[] = L"name";
constexpr wchar_t kComponentTitle[] = L"QX Fax Address Book";

// Whether a saved file holds the document to its end. Not every DOM reports that a disk was full.
bool IsComplete(const std::wstring& path)
{
    constexpr LONGLONG kTailBytes = 32; // the end tag, and line ends that may follow it
    const UniqueFile file = OpenWhenFree(path, GENERIC_READ);
    LARGE_INTEGER start{};
    if (!file || !GetFileSizeEx(file.Get(), &start))
        return false;
    start.QuadPart = std::max<LONGLONG>(start.QuadPart - kTailBytes, 0);
    char tail[kTailBytes];
    DWORD bytes = 0;
    if (!SetFilePointerEx(file.Get(), start, nullptr, FILE_BEGIN) ||
        !ReadFile(file.Get(), tail, sizeof tail, &bytes, nullptr))
        return false;
    const std::string_view end(tail, bytes);
    return end.substr(0, end.find_last_not_of("\r\n") + 1).ends_with(kEndTag);
}

// Nothing outside the document is fetched, and nothing in it can grow: without a document type there are no entities,
// and a parser that can refuse document types and deep nesting is told to. Those that cannot are not relied on.
bool Confine(IXMLDOMDocument& document)
{
    if (document.put_async(VARIANT_FALSE) != S_OK || document.put_validateOnParse(VARIANT_FALSE) != S_OK ||
        document.put_resolveExternals(VARIANT_FALSE) != S_OK)
        return false;
    ComPtr<IXMLDOMDocument2> newer;
    if (document.QueryInterface(kNewerDocumentInterface, reinterpret_cast<void**>(newer.Receive())) == S_OK) {
        VARIANT value;
        value.vt = VT_BOOL;
        value.boolVal = VARIANT_TRUE;
        newer->setProperty(MakeBstr(L"ProhibitDTD").Get(), value);
        value.vt = VT_I4;
        value.lVal = kDeepestElement;
        newer->setProperty(MakeBstr(L"MaxElementDepth").Get(), value);
    }
    return true;
}

// Why the DOM did not save onto a file, as far as waiting may help. Not every DOM says; the file itself is asked then,
// and once it is tried again anyway: it may be free by now.
DWORD SaveError(HRESULT result, const std::wstring& path, bool& triedAgain) noexcept
{
    constexpr DWORD kNotInUse = ERROR_WRITE_FAULT;
    if (HRESULT_FACILITY(result) == FACILITY_WIN32 || HRESULT_FACILITY(result) == FACILITY_STORAGE)
        return static_cast<DWORD>(HRESULT_CODE(result));
    const UniqueFile file(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    if (!file)
        return GetLastError();
    return std::exchange(triedAgain, true) ? kNotInUse : DWORD{ERROR_SHARING_VIOLATION};
}

} // namespace

PhoneBookDocument::PhoneBookDocument() noexcept
{
    CoCreateInstance(kDocumentClass, nullptr, CLSCTX_INPROC_SERVER, kDocumentInterface,
                     reinterpret_cast<void**>(document_.Receive()));
}

// The parser gets the bytes, not the path: what was looked at is what is parsed, a folder whose name holds # or % is
// not taken for an address, and large files do not take quadratic time.
bool PhoneBookDocument::Read(const std::string& bytes)
{
    if (!document_ || !HasPlainProlog(bytes) || !NestsAtMost(bytes, kDeepestElement) || !Confine(*document_.Get()))
        return false;
    VARIANT_BOOL loaded = VARIANT_FALSE;
    return document_->load(Variant(bytes).Get(), &loaded) == S_OK &&
           document_->selectSingleNode(MakeBstr(kPhoneBookPath).Get(), phoneBook_.Receive()) == S_OK;
}

bool PhoneBookDocument::Begin()
{
    if (!document_)
        return false;
    const ComPtr<IXMLDOMElement> device = CreateElement(MakeBstr(kDevice));
    if (!device || document_->putref_documentElement(device.Get()) != S_OK)
        return false;
    const ComPtr<IXMLDOMElement> software = AppendElement(device.Get(), MakeBstr(kSoftware));
    const ComPtr<IXMLDOMElement> component = AppendElement(software.Get(), MakeBstr(kComponent));
    const ComPtr<IXMLDOMElement> name = AppendElement(component.Get(), MakeBstr(kComponentName));
    if (!AppendText(name.Get(), MakeBstr(kComponentTitle)))
        return false;
    phoneBook_.Reset(AppendElement(component.Get(), MakeBstr(kPhoneBook)).Release());
    return static_cast<bool>(phoneBook_);
}

bool PhoneBookDocument::Save(const std::wstring& path)
{
    const UniqueBstr text = MakeBstr(path);
    bool triedAgain = false;
    const bool saved = RetryWhileInUse([&] {
        const HRESULT result = document_->save(Variant::Borrowed(text));
        if (result != S_OK)
            SetLastError(SaveError(result, path, triedAgain));
        return result == S_OK;
    });
    return saved && IsComplete(path);
}

ComPtr<IXMLDOMElement> PhoneBookDocument::AppendElement(IXMLDOMNode* parent, const UniqueBstr& name)
{
    ComPtr<IXMLDOMElement> element = CreateElement(name);
    if (parent == nullptr || !element || parent->appendChild(element.Get(), nullptr) != S_OK)
        element.Reset();
    return element;
}

bool PhoneBookDocument::AppendText(IXMLDOMNode* parent, const UniqueBstr& text)
{
    ComPtr<IXMLDOMNode> node;
    return parent != nullptr &&
           document_->createNode(Variant(INT{NODE_TEXT}).Get(), nullptr, nullptr, node.Receive()) == S_OK &&
           node->put_nodeValue(Variant::Borrowed(text)) == S_OK && parent->appendChild(node.Get(), nullptr) == S_OK;
}

// Null on failure.
ComPtr<IXMLDOMElement> PhoneBookDocument::CreateElement(const UniqueBstr& name)
{
    ComPtr<IXMLDOMElement> element;
    if (document_->createElement(name.Get(), element.Receive()) != S_OK)
        element.Reset();
    return element;
}

} // namespace qx
