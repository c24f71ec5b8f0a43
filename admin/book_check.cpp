#include "admin/book_check.h"

#include "admin/book_file.h"
#include "base/limits.h"
#include "base/text.h"
#include "phonebook/book/duplicate_index.h"
#include "phonebook/book/item_id.h"
#include "phonebook/file/file_replacement.h"
#include "phonebook/file/phone_book_document.h"

#include <set>

namespace qx::admin {

namespace {

// What is dropped is no longer in the book: the document itself tells.
class DroppedItems {
public:
    explicit DroppedItems(const std::wstring& path)
    {
        std::string bytes;
        PhoneBookDocument document;
        ComPtr<IXMLDOMNodeList> children;
        if (ReadWholeFile(FollowLink(path), bytes) != ERROR_SUCCESS || !document.Read(bytes) ||
            document.PhoneBookNode()->get_childNodes(children.Receive()) != S_OK)
            return;
        ComPtr<IXMLDOMNode> child;
        while (children->nextNode(child.Receive()) == S_OK)
            Look(*child.Get());
    }

    const std::vector<std::string>& Sentences() const noexcept { return sentences_; }

private:
    void Look(IXMLDOMNode& node)
    {
        UniqueBstr name;
        if (node.get_nodeName(name.Receive()) != S_OK)
            return;
        if (View(name) == xml::kEntry)
            LookAtEntry(node);
        else if (View(name) == xml::kGroup && !Attribute(node, xml::kGroupName))
            sentences_.emplace_back("a group has no name, and is not shown");
    }

    void LookAtEntry(IXMLDOMNode& node)
    {
        const std::wstring name = Attribute(node, xml::kName).value_or(std::wstring());
        const auto id = Attribute(node, xml::kId);
        const std::wstring number = Attribute(node, xml::kFaxNumber).value_or(std::wstring());
        if (!id || ParseId(id->c_str()) == kNoId)
            sentences_.push_back("the entry " + Quoted(name) + " has no entry_id, and is not shown");
        else if (!IsValidFaxNumber(number))
            sentences_.push_back("the entry " + Quoted(name) + " has the fax number " + Quoted(number) +
                                 ", which the dialogs do not accept, and is not shown");
    }

    static std::optional<std::wstring> Attribute(IXMLDOMNode& node, const wchar_t* name)
    {
        ComPtr<IXMLDOMNamedNodeMap> attributes;
        ComPtr<IXMLDOMNode> attribute;
        Variant value;
        if (node.get_attributes(attributes.Receive()) != S_OK ||
            attributes->getNamedItem(MakeBstr(name).Get(), attribute.Receive()) != S_OK ||
            attribute->get_nodeValue(value.Receive()) != S_OK)
            return std::nullopt;
        return value.Text();
    }

    ComApartment apartment_;
    std::vector<std::string> sentences_;
};

// What the dialogs show, but no user would want so.
std::vector<std::string> Oddities(PhoneBook& book)
{
    std::vector<std::string> told;
    DuplicateIndex seen({});
    std::set<DWORD> ids;
    for (const PhoneBookItem* const item : book.Items()) {
        if (!ids.insert(item->GetId()).second)
            told.push_back(Quoted(item->GetName()) + " has the id " + std::to_string(item->GetId()) +
                           ", which another item has, too: a group may take the wrong one");
        if (const PhoneBookGroup* const group = AsGroup(item)) {
            std::size_t lost = 0;
            for (const DWORD id : group->MemberIds())
                lost += book.FindEntry(id) == nullptr ? 1 : 0;
            if (lost != 0)
                told.push_back("the group " + Quoted(item->GetName()) + " names " + Counted(lost, "entry", "entries") +
                               " that the phone book does not hold");
            if (group->MemberIds().size() > kMaxRecipients)
                told.push_back("the group " + Quoted(item->GetName()) + " has more than " +
                               std::to_string(kMaxRecipients) + " members: no fax takes them all");
            continue;
        }
        const PhoneBookEntry& entry = *AsEntry(item);
        if (*OrEmpty(entry.FaxNumber()) == L'\0')
            told.push_back("the entry " + Quoted(entry.GetName()) + " has no fax number");
        const DuplicateIndex::Keys keys = seen.KeysOf(entry);
        if (seen.HoldsSame(entry, keys))
            told.push_back("the entry " + Quoted(entry.GetName()) + " is there twice");
        seen.Add(entry, keys);
    }
    return told;
}

std::uintmax_t SizeOf(const std::wstring& path)
{
    const auto stamp = StampOf(path);
    return stamp ? stamp->bytes : 0;
}

Json CheckBook(const std::wstring& path, Report& report)
{
    const BookFile file(path);
    Json result{{"path", Utf8(path)}, {"state", NameOf(file.Outcome())}};
    const std::string problem = ProblemOf(file.Outcome(), path);
    if (!problem.empty()) {
        report.Problem(problem);
        return result;
    }
    const BookCounts counts = CountItems(file.Book().Items());
    result["bytes"] = SizeOf(path);
    result["entries"] = counts.entries;
    result["groups"] = counts.groups;
    report.Say(Utf8(path) + ": " + Counted(counts.entries, "entry", "entries") + ", " +
               Counted(counts.groups, "group", "groups") + ", " + std::to_string(SizeOf(path)) + " bytes.");
    Json notes = Json::array();
    for (const std::string& note : Oddities(file.Book())) {
        notes.push_back(note);
        report.Say("Note: " + note + '.');
    }
    result["notes"] = std::move(notes);
    if (file.Book().GetCount() > kMaxPhoneBookItems)
        report.Problem(Utf8(path) + ": more than " + std::to_string(kMaxPhoneBookItems) + " items");
    if (file.Dropped()) {
        const DroppedItems dropped(path);
        for (const std::string& sentence : dropped.Sentences())
            report.Problem(Utf8(path) + ": " + sentence);
        if (dropped.Sentences().empty())
            report.Problem(Utf8(path) + ": a group's element has more children than one: its members are not read");
    }
    return result;
}

} // namespace

void CheckBooks(const std::vector<std::wstring>& paths, Report& report)
{
    Json books = Json::array();
    for (const std::wstring& path : paths)
        books.push_back(CheckBook(path, report));
    report.Data()["books"] = std::move(books);
}

} // namespace qx::admin
