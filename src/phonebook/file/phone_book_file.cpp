#include "phonebook/file/phone_book_file.h"

#include "base/file_in_use.h"
#include "base/no_copy.h"
#include "base/text.h"
#include "phonebook/book/item_id.h"
#include "phonebook/file/file_guard.h"
#include "phonebook/file/file_replacement.h"
#include "phonebook/file/phone_book_document.h"
#include "phonebook/file/xml_text.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <string_view>

namespace qx {

namespace {

// Reading

// Walks a document. Every call is expected to succeed: once one has not, the walk is not complete, whatever comes
// after.
class Walk {
public:
    bool Complete() const noexcept { return complete_; }

    // Calls visit(node) for each child, in order, and skips one that cannot be fetched: false then. By nextNode:
    // fetching children by index takes quadratic time.
    template <class Visit> bool ForEachChild(IXMLDOMNode& parent, Visit visit)
    {
        ComPtr<IXMLDOMNodeList> children;
        long count = 0;
        if (!Done(parent.get_childNodes(children.Receive())) || !Done(children->reset()) ||
            !Done(children->get_length(&count)))
            return false;
        bool allVisited = true;
        for (long i = 0; i < count; ++i) {
            ComPtr<IXMLDOMNode> child;
            if (children->nextNode(child.Receive()) == S_OK)
                visit(*child.Get());
            else
                allVisited = false;
        }
        return allVisited;
    }

    // Calls visit(name, text) for each attribute.
    template <class Visit> void ForEachAttribute(IXMLDOMNode& element, Visit visit)
    {
        ComPtr<IXMLDOMNamedNodeMap> attributes;
        long count = 0;
        if (!Done(element.get_attributes(attributes.Receive())) || !Done(attributes->get_length(&count)))
            return;
        for (long i = 0; i < count; ++i) {
            ComPtr<IXMLDOMNode> attribute;
            Variant value;
            if (Done(attributes->get_item(i, attribute.Receive())) && Done(attribute->get_nodeValue(value.Receive())))
                visit(View(NameOf(*attribute.Get())), value.Text());
        }
    }

    UniqueBstr NameOf(IXMLDOMNode& node)
    {
        UniqueBstr name;
        Done(node.get_nodeName(name.Receive()));
        return name;
    }

    // The only child; null when there are none or several.
    ComPtr<IXMLDOMNode> OnlyChild(IXMLDOMNode& parent, long& count)
    {
        ComPtr<IXMLDOMNodeList> children;
        ComPtr<IXMLDOMNode> child;
        if (Done(parent.get_childNodes(children.Receive())) && Done(children->get_length(&count)) && count == 1)
            Done(children->get_item(0, child.Receive()));
        return child;
    }

    // The text of a node's first child; none when that is not a text.
    std::optional<std::wstring> FirstText(IXMLDOMNode& node)
    {
        ComPtr<IXMLDOMNode> text;
        DOMNodeType type = NODE_INVALID;
        Variant value;
        const HRESULT found = node.get_firstChild(text.Receive());
        if (found == S_FALSE) // it has no children
            return std::nullopt;
        if (!Done(found) || !Done(text->get_nodeType(&type)) || type != NODE_TEXT ||
            !Done(text->get_nodeValue(value.Receive())))
            return std::nullopt;
        return value.Text();
    }

private:
    bool Done(HRESULT result) noexcept
    {
        complete_ = complete_ && result == S_OK;
        return result == S_OK;
    }

    bool complete_ = true;
};

class Reader {
public:
    Reader(LoadedPhoneBook& loaded, ItemStore& store) noexcept : loaded_(loaded), store_(store) {}

    // False when something could not be read; the items read so far are then half the truth. An item that cannot even
    // be fetched is only skipped, as one that is dropped for what it holds.
    bool ReadItems(IXMLDOMNode& phoneBook)
    {
        if (!walk_.ForEachChild(phoneBook, [this](IXMLDOMNode& element) { ReadItem(element); }))
            loaded_.dropped = true;
        return walk_.Complete() && membersComplete_;
    }

private:
    void ReadItem(IXMLDOMNode& element)
    {
        const UniqueBstr name = walk_.NameOf(element);
        if (View(name) == xml::kEntry)
            ReadEntry(element);
        else if (View(name) == xml::kGroup)
            ReadGroup(element);
    }

    void ReadEntry(IXMLDOMNode& element)
    {
        DWORD id = kNoId;
        for (std::wstring* const text : {&texts_.name, &texts_.faxNumber, &texts_.company})
            text->clear();
        walk_.ForEachAttribute(element, [&](std::wstring_view name, const wchar_t* text) {
            if (name == xml::kId)
                id = ParseId(text);
            else if (name == xml::kName)
                texts_.name = text;
            else if (name == xml::kFaxNumber)
                texts_.faxNumber = text;
            else if (name == xml::kCompany)
                texts_.company = text;
        });
        // An entry that is dropped for its number has its id all the same: it is not handed out again.
        NoteId(id);
        if (id == kNoId || !IsValidFaxNumber(texts_.faxNumber)) {
            loaded_.dropped = true;
            return;
        }
        PhoneBookEntry* const entry = AddItem(&ItemStore::NewEntry);
        entry->SetId(id);
        entry->SetTexts(texts_);
    }

    void ReadGroup(IXMLDOMNode& element)
    {
        DWORD id = kNoId;
        std::optional<std::wstring> groupName;
        walk_.ForEachAttribute(element, [&](std::wstring_view name, const wchar_t* text) {
            if (name == xml::kGroupName)
                groupName = text;
            else if (name == xml::kId)
                id = ParseId(text);
        });
        NoteId(id);
        if (!groupName) {
            loaded_.dropped = true;
            return;
        }
        PhoneBookGroup* const group = AddItem(&ItemStore::NewGroup);
        group->SetId(id);
        group->SetName(groupName->c_str());
        ReadMembers(element, *group);
    }

    // Before it has its texts: whoever discards the items finds it when there is no memory for those.
    template <class Item> Item* AddItem(Item* (ItemStore::*make)())
    {
        PhoneBookItem*& place = loaded_.items.emplace_back();
        Item* const item = (store_.*make)();
        place = item;
        return item;
    }

    // The members stand in a group's only child, whatever it is called. A group with more children has no members.
    void ReadMembers(IXMLDOMNode& element, PhoneBookGroup& group)
    {
        long children = 0;
        const ComPtr<IXMLDOMNode> list = walk_.OnlyChild(element, children);
        if (children > 1)
            loaded_.dropped = true;
        if (!list)
            return;
        membersComplete_ &= walk_.ForEachChild(*list.Get(), [this, &group](IXMLDOMNode& child) {
            if (View(walk_.NameOf(child)) != xml::kMemberId)
                return;
            if (const auto text = walk_.FirstText(child)) {
                group.AddMemberId(ParseId(text->c_str()));
                NoteId(group.MemberIds().back()); // else a new entry might become a member
            } else {
                loaded_.dropped = true;
            }
        });
    }

    // Ids are compared as signed numbers: those above 0x7FFFFFFF never count.
    void NoteId(DWORD id) noexcept { loaded_.largestId = std::max(loaded_.largestId, static_cast<LONG>(id)); }

    LoadedPhoneBook& loaded_;
    ItemStore& store_;
    Walk walk_;
    Recipient texts_; // of the entry being read: its buffers serve them all
    bool membersComplete_ = true;
};

// Writing

class Writer {
public:
    explicit Writer(PhoneBookDocument& document) : document_(document) {}

    // False when the document is not what the item is: it is not to be saved then.
    bool WriteItem(const PhoneBookItem& item)
    {
        if (const PhoneBookGroup* const group = AsGroup(&item))
            return WriteGroup(*group);
        return WriteEntry(*AsEntry(&item));
    }

private:
    bool WriteEntry(const PhoneBookEntry& entry)
    {
        const ComPtr<IXMLDOMElement> element = document_.AppendElement(document_.PhoneBookNode(), entry_);
        return element && SetAttribute(*element.Get(), id_, FormatId(entry.GetId())) &&
               SetAttribute(*element.Get(), name_, OrEmpty(entry.Name())) &&
               SetAttribute(*element.Get(), faxNumber_, OrEmpty(entry.FaxNumber())) &&
               SetAttribute(*element.Get(), company_, OrEmpty(entry.Company()));
    }

    bool WriteGroup(const PhoneBookGroup& group)
    {
        const ComPtr<IXMLDOMElement> element = document_.AppendElement(document_.PhoneBookNode(), group_);
        if (!element || !SetAttribute(*element.Get(), groupName_, group.GetName()) ||
            !SetAttribute(*element.Get(), id_, FormatId(group.GetId())))
            return false;
        const ComPtr<IXMLDOMElement> list = document_.AppendElement(element.Get(), memberList_);
        return list && std::ranges::all_of(group.MemberIds(), [&](DWORD id) {
                   const ComPtr<IXMLDOMElement> member = document_.AppendElement(list.Get(), memberId_);
                   return document_.AppendText(member.Get(), MakeBstr(FormatId(id)));
               });
    }

    static bool SetAttribute(IXMLDOMElement& element, const UniqueBstr& name, std::wstring_view text)
    {
        const UniqueBstr value = FitsXml(text) ? MakeBstr(text) : MakeBstr(XmlText(text));
        return element.setAttribute(name.Get(), Variant::Borrowed(value)) == S_OK;
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
class HiddenAfterwards : NoCopy {
public:
    explicit HiddenAfterwards(const std::wstring& path) noexcept : path_(path) {}
    ~HiddenAfterwards()
    {
        const DWORD attributes = GetFileAttributesW(path_.c_str());
        if (attributes != INVALID_FILE_ATTRIBUTES)
            SetFileAttributesW(path_.c_str(), attributes | FILE_ATTRIBUTE_HIDDEN);
    }

private:
    const std::wstring& path_;
};

// Whether the file can be written; it is visible then, so that the document may be saved over it. One that was not
// there is there, and empty, from now on.
bool MakeWritable(const std::wstring& path)
{
    if (HasAttribute(path, FILE_ATTRIBUTE_READONLY))
        return false; // asked first: to a privileged user some systems open it all the same
    const bool opened = RetryWhileInUse([&path] {
        return static_cast<bool>(UniqueFile(CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                                        OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr)));
    });
    if (opened && HasAttribute(path, FILE_ATTRIBUTE_HIDDEN))
        SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    return opened;
}

ContentHash HashOf(std::string_view bytes) noexcept
{
    return std::hash<std::string_view>()(bytes);
}

// None when the file cannot be read.
std::optional<ContentHash> ContentOf(const std::wstring& path)
{
    std::string bytes;
    if (ReadWholeFile(path, bytes) != ERROR_SUCCESS)
        return std::nullopt;
    return HashOf(bytes);
}

// What may be in a file, to be replaced: what was seen, and what a copy has been kept of. Where the folder takes no
// lock, another machine may save at any moment, also while a copy is made.
class OldContent {
public:
    // Without seen, and unless it is to be kept, nobody asks for it.
    OldContent(const std::wstring& path, bool keep, const std::optional<ContentHash>* seen)
        : path_(path), matters_(keep || seen != nullptr), known_(keep || seen == nullptr ? std::nullopt : *seen)
    {
    }

    // Keeps a copy when there is another content by now. False when there is no copy of it.
    bool MayGo()
    {
        for (int saves = 0; matters_ && saves < kMostSavesWaitedFor; ++saves) {
            const std::optional<ContentHash> content = ContentOf(path_);
            if (content && content == known_)
                return true;
            if (!KeepCopy(path_))
                return false;
            if (!content)
                return true; // it can be copied and not read
            known_ = content;
        }
        return true;
    }

private:
    const std::wstring& path_;
    const bool matters_;
    std::optional<ContentHash> known_;
};

DWORD ReadGuarded(const std::wstring& path, std::string& bytes, std::optional<FileStamp>& stamp)
{
    const std::wstring real = FollowLink(path);
    const FileGuard guard(real);
    return ReadWholeFile(real, bytes, &stamp);
}

} // namespace

LoadedPhoneBook LoadPhoneBookFile(const std::wstring& path, ItemStore& store)
{
    std::string bytes;
    LoadedPhoneBook loaded;
    switch (ReadGuarded(path, bytes, loaded.stamp)) {
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
    loaded.content = HashOf(bytes);
    PhoneBookDocument document;
    loaded.outcome = LoadOutcome::NotUnderstood;
    if (!document.Read(bytes))
        return loaded;
    try {
        const bool whole = Reader(loaded, store).ReadItems(*document.PhoneBookNode());
        loaded.outcome = whole ? LoadOutcome::Read : LoadOutcome::NotFinished;
    } catch (...) {
        store.DiscardReplaced(loaded.items);
        throw;
    }
    if (loaded.outcome == LoadOutcome::NotFinished) {
        store.DiscardReplaced(loaded.items);
        loaded.items.clear();
    }
    return loaded;
}

bool SavePhoneBookFile(const std::wstring& path, std::span<PhoneBookItem* const> items, bool keepOld,
                       std::optional<ContentHash>* seen)
{
    // A link stays a link, also when what it leads to is only about to be there.
    const std::wstring real = FollowLink(path, OPEN_ALWAYS);
    const FileGuard guard(real);
    const FolderLock lock(real);
    const HiddenAfterwards hidden(real);
    // The copy comes after: what was not there before is there now, and nothing can appear unseen in between.
    if (!MakeWritable(real))
        return false;
    OldContent old(real, keepOld, seen);
    if (!old.MayGo())
        return false;
    PhoneBookDocument document;
    if (!document.Begin())
        return false;
    Writer writer(document);
    if (!std::ranges::all_of(items, [&writer](const PhoneBookItem* item) { return writer.WriteItem(*item); }))
        return false;
    Replacement replacement(real);
    if (!replacement || !document.Save(replacement.Path()))
        return false;
    // Looked at before it is where others save as well.
    const std::optional<ContentHash> saved = ContentOf(replacement.Path());
    const bool stored = replacement.TakePlace([&old] { return old.MayGo(); });
    if (!stored)
        return false;
    RemoveAbandonedReplacements(real);
    if (seen != nullptr)
        *seen = saved;
    return true;
}

namespace {

class Files final : public PhoneBookStorage {
public:
    LoadedPhoneBook Load(const std::wstring& path, ItemStore& store) const override
    {
        return LoadPhoneBookFile(path, store);
    }
    bool Save(const std::wstring& path, std::span<PhoneBookItem* const> items, bool keepOld,
              std::optional<ContentHash>* seen) const override
    {
        return SavePhoneBookFile(path, items, keepOld, seen);
    }
    std::optional<FileStamp> StampOf(const std::wstring& path) const noexcept override { return qx::StampOf(path); }
};

constexpr Files kFiles;

} // namespace

const PhoneBookStorage& PhoneBookFiles() noexcept
{
    return kFiles;
}

} // namespace qx
