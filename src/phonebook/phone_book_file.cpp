#include "phonebook/phone_book_file.h"

#include "base/text.h"
#include "phonebook/file_guard.h"
#include "phonebook/file_replacement.h"
#include "phonebook/item_id.h"
#include "phonebook/phone_book_document.h"
#include "phonebook/xml_text.h"

#include <algorithm>
#include <optional>

namespace qx {

namespace {

// Reading

// Calls visit(node) for each child, in order. By nextNode: fetching children by index takes quadratic time.
template <class Visit> void ForEachChild(IXMLDOMNode& parent, Visit visit)
{
    ComPtr<IXMLDOMNodeList> children;
    long count = 0;
    if (parent.get_childNodes(children.Receive()) != S_OK || children->reset() != S_OK ||
        children->get_length(&count) != S_OK)
        return;
    for (long i = 0; i < count; ++i) {
        ComPtr<IXMLDOMNode> child;
        if (children->nextNode(child.Receive()) == S_OK)
            visit(*child.Get());
    }
}

UniqueBstr NameOf(IXMLDOMNode& node)
{
    UniqueBstr name;
    node.get_nodeName(name.Receive());
    return name;
}

// Calls visit(name, text) for each attribute.
template <class Visit> void ForEachAttribute(IXMLDOMNode& element, Visit visit)
{
    ComPtr<IXMLDOMNamedNodeMap> attributes;
    long count = 0;
    if (element.get_attributes(attributes.Receive()) != S_OK || attributes->get_length(&count) != S_OK)
        return;
    for (long i = 0; i < count; ++i) {
        ComPtr<IXMLDOMNode> attribute;
        Variant value;
        if (attributes->get_item(i, attribute.Receive()) == S_OK && attribute->get_nodeValue(value.Receive()) == S_OK)
            visit(View(NameOf(*attribute.Get())), value.Text());
    }
}

// The text of a member id's element: only when that is its first child.
std::optional<DWORD> ReadMemberId(IXMLDOMNode& element)
{
    ComPtr<IXMLDOMNode> text;
    DOMNodeType type = NODE_INVALID;
    Variant value;
    if (View(NameOf(element)) != xml::kMemberId || element.get_firstChild(text.Receive()) != S_OK ||
        text->get_nodeType(&type) != S_OK || type != NODE_TEXT || text->get_nodeValue(value.Receive()) != S_OK)
        return std::nullopt;
    return ParseId(value.Text());
}

// The members stand in a group's only child, whatever it is called. A group with more children has no members.
void ReadMembers(IXMLDOMNode& element, PhoneBookGroup& group)
{
    ComPtr<IXMLDOMNodeList> children;
    long count = 0;
    ComPtr<IXMLDOMNode> list;
    if (element.get_childNodes(children.Receive()) != S_OK || children->get_length(&count) != S_OK || count != 1 ||
        children->get_item(0, list.Receive()) != S_OK)
        return;
    ForEachChild(*list.Get(), [&group](IXMLDOMNode& child) {
        if (const auto id = ReadMemberId(child))
            group.AddMemberId(*id);
    });
}

class Reader {
public:
    Reader(LoadedPhoneBook& loaded, ItemStore& store) noexcept : loaded_(loaded), store_(store) {}

    void ReadItem(IXMLDOMNode& element)
    {
        const UniqueBstr name = NameOf(element);
        if (View(name) == xml::kEntry)
            ReadEntry(element);
        else if (View(name) == xml::kGroup)
            ReadGroup(element);
    }

private:
    void ReadEntry(IXMLDOMNode& element)
    {
        PhoneBookEntry* const entry = store_.NewEntry();
        entry->SetId(kNoId);
        ForEachAttribute(element, [entry](std::wstring_view name, const wchar_t* text) {
            if (name == xml::kId)
                entry->SetId(ParseId(text));
            else if (name == xml::kName)
                entry->SetName(text);
            else if (name == xml::kFaxNumber)
                entry->SetFaxNumber(text);
            else if (name == xml::kCompany)
                entry->SetCompany(text);
        });
        // An entry that is dropped for its number has its id all the same: it is not handed out again.
        NoteId(entry->GetId());
        if (entry->GetId() == kNoId || !IsValidFaxNumber(OrEmpty(entry->FaxNumber()))) {
            store_.Discard(entry);
            return;
        }
        if (entry->Name() == nullptr)
            entry->SetName(nullptr); // that is, empty
        if (entry->FaxNumber() == nullptr)
            entry->SetFaxNumber(nullptr);
        if (entry->Company() == nullptr)
            entry->SetCompany(nullptr);
        loaded_.items.push_back(entry);
    }

    void ReadGroup(IXMLDOMNode& element)
    {
        PhoneBookGroup* const group = store_.NewGroup();
        group->SetId(kNoId);
        ForEachAttribute(element, [group](std::wstring_view name, const wchar_t* text) {
            if (name == xml::kGroupName)
                group->SetName(text);
            else if (name == xml::kId)
                group->SetId(ParseId(text));
        });
        NoteId(group->GetId());
        if (group->Name() == nullptr) {
            store_.Discard(group);
            return;
        }
        ReadMembers(element, *group);
        loaded_.items.push_back(group);
    }

    // Ids are compared as signed numbers: those above 0x7FFFFFFF never count.
    void NoteId(DWORD id) noexcept { loaded_.largestId = std::max(loaded_.largestId, static_cast<LONG>(id)); }

    LoadedPhoneBook& loaded_;
    ItemStore& store_;
};

// Writing

class Writer {
public:
    explicit Writer(PhoneBookDocument& document) noexcept : document_(document) {}

    void WriteItem(const PhoneBookItem& item)
    {
        if (const PhoneBookGroup* const group = AsGroup(&item))
            WriteGroup(*group);
        else
            WriteEntry(*AsEntry(&item));
    }

private:
    void WriteEntry(const PhoneBookEntry& entry)
    {
        const ComPtr<IXMLDOMElement> element = Append(*document_.PhoneBookNode(), entry_);
        if (!element)
            return;
        SetAttribute(*element.Get(), id_, FormatId(entry.GetId()));
        SetAttribute(*element.Get(), name_, OrEmpty(entry.Name()));
        SetAttribute(*element.Get(), faxNumber_, OrEmpty(entry.FaxNumber()));
        SetAttribute(*element.Get(), company_, OrEmpty(entry.Company()));
    }

    void WriteGroup(const PhoneBookGroup& group)
    {
        const ComPtr<IXMLDOMElement> element = Append(*document_.PhoneBookNode(), group_);
        if (!element)
            return;
        SetAttribute(*element.Get(), groupName_, group.GetName());
        SetAttribute(*element.Get(), id_, FormatId(group.GetId()));
        const ComPtr<IXMLDOMElement> list = Append(*element.Get(), memberList_);
        if (!list)
            return;
        for (const DWORD id : group.MemberIds()) {
            const ComPtr<IXMLDOMElement> member = Append(*list.Get(), memberId_);
            const ComPtr<IXMLDOMNode> text = document_.CreateText(MakeBstr(FormatId(id)));
            if (member && text)
                member->appendChild(text.Get(), nullptr);
        }
    }

    // A new element below parent; null on failure.
    ComPtr<IXMLDOMElement> Append(IXMLDOMNode& parent, const UniqueBstr& name)
    {
        ComPtr<IXMLDOMElement> element = document_.CreateElement(name);
        if (element && parent.appendChild(element.Get(), nullptr) != S_OK)
            element.Reset();
        return element;
    }

    static void SetAttribute(IXMLDOMElement& element, const UniqueBstr& name, std::wstring_view text)
    {
        const UniqueBstr value = FitsXml(text) ? MakeBstr(text) : MakeBstr(XmlText(text));
        element.setAttribute(name.Get(), Variant::Borrowed(value));
    }

    PhoneBookDocument& document_;
    const UniqueBstr entry_ = MakeBstr(xml::kEntry);
    const UniqueBstr group_ = MakeBstr(xml::kGroup);
    const UniqueBstr memberList_ = MakeBstr(xml::kMemberList);
    const UniqueBstr memberId_ = MakeBstr(xml::kMemberId);
    const UniqueBstr id_ = MakeBstr(xml::kId);
    const UniqueBstr name_ = MakeBstr(xml::kName);
    const UniqueBstr faxNumber_ = MakeBstr(xml::kFaxNumber);
    const UniqueBstr company_ = MakeBstr(xml::kCompany);
    const UniqueBstr groupName_ = MakeBstr(xml::kGroupName);
};

// However a save ends, it leaves the file hidden.
class HiddenAfterwards {
public:
    explicit HiddenAfterwards(const std::wstring& path) noexcept : path_(path) {}
    ~HiddenAfterwards()
    {
        const DWORD attributes = GetFileAttributesW(path_.c_str());
        if (attributes != INVALID_FILE_ATTRIBUTES)
            SetFileAttributesW(path_.c_str(), attributes | FILE_ATTRIBUTE_HIDDEN);
    }
    HiddenAfterwards(const HiddenAfterwards&) = delete;
    HiddenAfterwards& operator=(const HiddenAfterwards&) = delete;

private:
    const std::wstring& path_;
};

bool Has(DWORD attributes, DWORD attribute) noexcept
{
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & attribute) != 0;
}

// Whether the file can be written; it is visible then, so that the document may be saved over it. One that was not
// there is there, and empty, from now on.
bool MakeWritable(const std::wstring& path)
{
    if (Has(GetFileAttributesW(path.c_str()), FILE_ATTRIBUTE_READONLY))
        return false; // asked first: to a privileged user some systems open it all the same
    const bool opened = RetryWhileInUse([&path] {
        return static_cast<bool>(UniqueFile(CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                                        OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr)));
    });
    if (opened && Has(GetFileAttributesW(path.c_str()), FILE_ATTRIBUTE_HIDDEN))
        SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    return opened;
}

bool Store(PhoneBookDocument& document, const std::wstring& path)
{
    Replacement replacement(path);
    if (!replacement)
        return document.Save(path); // better written in place than not at all
    if (!document.Save(replacement.Path()))
        return false; // a full disk, say: the old phone book stays
    return replacement.TakePlace() || document.Save(path);
}

DWORD ReadGuarded(const std::wstring& path, std::string& bytes)
{
    const FileGuard guard(path);
    return ReadWholeFile(path, bytes);
}

} // namespace

LoadedPhoneBook LoadPhoneBookFile(const std::wstring& path, ItemStore& store)
{
    std::string bytes;
    switch (ReadGuarded(path, bytes)) {
    case ERROR_SUCCESS:
        break;
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
        return {.outcome = LoadOutcome::NoFile};
    case ERROR_FILE_TOO_LARGE:
        return {.outcome = LoadOutcome::NotUnderstood};
    default:
        return {.outcome = LoadOutcome::NotReadable};
    }
    PhoneBookDocument document;
    if (!document.Read(bytes))
        return {.outcome = LoadOutcome::NotUnderstood};
    LoadedPhoneBook loaded{.outcome = LoadOutcome::Read};
    Reader reader(loaded, store);
    ForEachChild(*document.PhoneBookNode(), [&reader](IXMLDOMNode& child) { reader.ReadItem(child); });
    return loaded;
}

bool SavePhoneBookFile(const std::wstring& path, std::span<PhoneBookItem* const> items, bool keepOld)
{
    const FileGuard guard(path);
    if (keepOld && !KeepCopy(path))
        return false;
    const HiddenAfterwards hidden(path);
    PhoneBookDocument document;
    if (!MakeWritable(path) || !document.Begin())
        return false;
    Writer writer(document);
    for (const PhoneBookItem* const item : items)
        writer.WriteItem(*item);
    const bool stored = Store(document, path);
    RemoveAbandonedReplacements(path);
    return stored;
}

} // namespace qx
