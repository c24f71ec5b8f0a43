// The phone book's XML document, for one load or one save.
#pragma once

#include "phonebook/file/com.h"

#include <msxml2.h>
#include <string>

namespace qx {

// Names of the document's elements and attributes, which are case-sensitive.
namespace xml {
inline constexpr wchar_t kEntry[] = L"qxfax_pbentry";
inline constexpr wchar_t kGroup[] = L"qxfax_group";
inline constexpr wchar_t kMemberList[] = L"member_list";
inline constexpr wchar_t kMemberId[] = L"m_entry_id";
inline constexpr wchar_t kId[] = L"entry_id";
inline constexpr wchar_t kName[] = L"name";
inline constexpr wchar_t kFaxNumber[] = L"fax_number";
inline constexpr wchar_t kCompany[] = L"company_name";
inline constexpr wchar_t kGroupName[] = L"group_name";
} // namespace xml

class PhoneBookDocument {
public:
    PhoneBookDocument() noexcept;

    // Parses a document without touching anything outside it, and finds the phone book in it. False when there is
    // none to be found, or when the document nests deeper than any phone book.
    bool Read(const std::string& bytes);
    // Starts a document with an empty phone book.
    bool Begin();
    // Waits a moment for others to let go of the file. False also when the file did not take the whole document.
    bool Save(const std::wstring& path);

    IXMLDOMNode* PhoneBookNode() const noexcept { return phoneBook_.Get(); }

    // Both make a new node below parent; null and false on failure, and when parent is null.
    ComPtr<IXMLDOMElement> AppendElement(IXMLDOMNode* parent, const UniqueBstr& name);
    bool AppendText(IXMLDOMNode* parent, const UniqueBstr& text);

private:
    ComPtr<IXMLDOMElement> CreateElement(const UniqueBstr& name);

    ComApartment apartment_;
    ComPtr<IXMLDOMDocument> document_; // null when the system has no XML
    ComPtr<IXMLDOMNode> phoneBook_;
};

} // namespace qx
