// The phone book against what nobody can avoid: the bare DOM with the cheapest calls it has, a sort over ready keys,
// one pass over the items. The literal rules stand beside it, to show what the indexes are for.
#include "phonebook/book/item_id.h"
#include "phonebook/book/sort_order.h"
#include "phonebook/file/com.h"
#include "phonebook/file/file_guard.h"
#include "phonebook/file/file_replacement.h"
#include "phonebook/file/phone_book_file.h"
#include "support/measure.h"
#include "support/phone_book.h"

#include <algorithm>
#include <map>
#include <memory>
#include <msxml2.h>
#include <random>
#include <stdexcept>
#include <unordered_set>

namespace {

using namespace qx;
using bench::Benchmark;
using bench::kAnything;
using test::TestBook;

void Need(bool holds)
{
    if (!holds)
        throw std::runtime_error("the benchmark does not do what it measures");
}

std::string Number(std::size_t count)
{
    return std::to_string(count);
}

// The phone book that is measured: entries as offices have them, no groups.
void FillWithEntries(TestBook& book, DWORD count)
{
    for (DWORD id = 0; id < count; ++id) {
        const std::wstring number = std::to_wstring(id);
        book.AddEntry((L"Person " + number).c_str(), (L"555-" + number).c_str(),
                      (L"Company " + std::to_wstring(id % 97)).c_str(), id);
    }
}

std::wstring BenchFile()
{
    wchar_t folder[MAX_PATH];
    GetTempPathW(MAX_PATH, folder);
    return std::wstring(folder) + L"qxbench.xml";
}

// The bare DOM: the same document, with names made once and no question asked twice.

constexpr CLSID kDocumentClass = {0x2933BF90, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};
constexpr IID kDocumentInterface = {0x2933BF81, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};

ComPtr<IXMLDOMDocument> NewDocument()
{
    ComPtr<IXMLDOMDocument> document;
    Need(CoCreateInstance(kDocumentClass, nullptr, CLSCTX_INPROC_SERVER, kDocumentInterface,
                          reinterpret_cast<void**>(document.Receive())) == S_OK);
    document->put_async(VARIANT_FALSE);
    return document;
}

ComPtr<IXMLDOMNode> AppendElement(IXMLDOMDocument& document, IXMLDOMNode& parent, const wchar_t* name)
{
    ComPtr<IXMLDOMElement> element;
    ComPtr<IXMLDOMNode> node;
    document.createElement(MakeBstr(name).Get(), element.Receive());
    parent.appendChild(element.Get(), node.Receive());
    return node;
}

ComPtr<IXMLDOMNode> BareSkeleton(IXMLDOMDocument& document)
{
    const ComPtr<IXMLDOMNode> device = AppendElement(document, document, L"device");
    const ComPtr<IXMLDOMNode> software = AppendElement(document, *device.Get(), L"software");
    const ComPtr<IXMLDOMNode> component = AppendElement(document, *software.Get(), L"component");
    const ComPtr<IXMLDOMNode> name = AppendElement(document, *component.Get(), L"name");
    name->put_text(MakeBstr(L"QX Fax Address Book").Get());
    return AppendElement(document, *component.Get(), L"qxfax_phonebook");
}

ComPtr<IXMLDOMDocument> BareDocument(const TestBook& book)
{
    ComPtr<IXMLDOMDocument> document = NewDocument();
    const ComPtr<IXMLDOMNode> parent = BareSkeleton(*document.Get());
    const UniqueBstr element = MakeBstr(L"qxfax_pbentry");
    const UniqueBstr names[] = {MakeBstr(L"entry_id"), MakeBstr(L"name"), MakeBstr(L"fax_number"),
                                MakeBstr(L"company_name")};
    for (const PhoneBookItem* const item : book->Items()) {
        const PhoneBookEntry& entry = *AsEntry(item);
        ComPtr<IXMLDOMElement> created;
        document->createElement(element.Get(), created.Receive());
        parent->appendChild(created.Get(), nullptr);
        const UniqueBstr values[] = {MakeBstr(FormatId(entry.GetId())), MakeBstr(entry.Name()),
                                     MakeBstr(entry.FaxNumber()), MakeBstr(entry.Company())};
        for (std::size_t i = 0; i < std::size(names); ++i)
            created->setAttribute(names[i].Get(), Variant::Borrowed(values[i]));
    }
    return document;
}

void SaveBare(const TestBook& book, const std::wstring& path)
{
    const UniqueBstr text = MakeBstr(path);
    Need(BareDocument(book)->save(Variant::Borrowed(text)) == S_OK);
}

// The same, with what a save must do to a file that it may neither lose nor show, and that others save, too.
void SaveBareInOneStep(const TestBook& book, const std::wstring& path)
{
    const FileGuard guard(path);
    const FolderLock lock(path);
    const ComPtr<IXMLDOMDocument> document = BareDocument(book);
    Replacement replacement(path);
    const UniqueBstr text = MakeBstr(replacement.Path());
    Need(document->save(Variant::Borrowed(text)) == S_OK && replacement.TakePlace([] { return true; }));
}

std::size_t WalkBare(IXMLDOMDocument& document)
{
    ComPtr<IXMLDOMNode> parent;
    ComPtr<IXMLDOMNodeList> children;
    long count = 0;
    document.selectSingleNode(MakeBstr(L"device/software/component/qxfax_phonebook").Get(), parent.Receive());
    parent->get_childNodes(children.Receive());
    children->get_length(&count);
    std::size_t units = 0;
    for (long i = 0; i < count; ++i) {
        ComPtr<IXMLDOMNode> child;
        UniqueBstr name;
        ComPtr<IXMLDOMNamedNodeMap> attributes;
        long attributeCount = 0;
        children->nextNode(child.Receive());
        child->get_nodeName(name.Receive());
        child->get_attributes(attributes.Receive());
        attributes->get_length(&attributeCount);
        for (long j = 0; j < attributeCount; ++j) {
            ComPtr<IXMLDOMNode> attribute;
            UniqueBstr attributeName;
            Variant value;
            attributes->get_item(j, attribute.Receive());
            attribute->get_nodeName(attributeName.Receive());
            attribute->get_nodeValue(value.Receive());
            units += SysStringLen(value.Get().bstrVal);
        }
    }
    return units;
}

// From bytes of one moment, while others save.
void LoadBare(const std::wstring& path)
{
    std::string bytes;
    std::optional<FileStamp> stamp;
    {
        const FileGuard guard(path);
        Need(ReadWholeFile(path, bytes, &stamp) == ERROR_SUCCESS);
    }
    const ComPtr<IXMLDOMDocument> document = NewDocument();
    VARIANT_BOOL loaded = VARIANT_FALSE;
    Need(document->load(Variant(bytes).Get(), &loaded) == S_OK && WalkBare(*document.Get()) != 0);
}

void LoadBareFromPath(const std::wstring& path)
{
    const ComPtr<IXMLDOMDocument> document = NewDocument();
    const UniqueBstr text = MakeBstr(path);
    VARIANT_BOOL loaded = VARIANT_FALSE;
    Need(document->load(Variant::Borrowed(text), &loaded) == S_OK && WalkBare(*document.Get()) != 0);
}

void MeasureFile(Benchmark& benchmark, const std::wstring& path, DWORD count)
{
    const auto book = std::make_shared<TestBook>();
    FillWithEntries(*book, count);
    const bench::Work save{"save " + Number(count), [=] { Need(SavePhoneBookFile(path, (*book)->Items(), false)); }};
    const auto store = std::make_shared<std::unique_ptr<ItemStore>>();
    const bench::Work load{"load " + Number(count),
                           [=] { Need(LoadPhoneBookFile(path, **store).items.size() == count); },
                           [=] { *store = std::make_unique<ItemStore>(); }, // a session frees them at its end
                           {},
                           [=] {
                               *store = std::make_unique<ItemStore>();
                               const std::size_t before = bench::HeapBytes();
                               LoadPhoneBookFile(path, **store);
                               return static_cast<double>(bench::HeapBytes() - before) / count;
                           }};
    const bench::Work bareLoad{"the bare DOM, from bytes of one moment", [=] { LoadBare(path); }};
    benchmark.Compare(save, {"the bare DOM, locked and replaced in one step", [=] { SaveBareInOneStep(*book, path); }},
                      1.15);
    benchmark.Compare(save, {"the bare DOM, written in place", [=] { SaveBare(*book, path); }}, kAnything);
    benchmark.Compare(load, bareLoad, 1.15);
    benchmark.Compare({"the bare DOM, from the path, " + Number(count), [=] { LoadBareFromPath(path); }}, bareLoad,
                      kAnything);
}

void MeasureFileGrowth(Benchmark& benchmark, const std::wstring& path)
{
    const auto small = std::make_shared<TestBook>();
    const auto large = std::make_shared<TestBook>();
    FillWithEntries(*small, 10000);
    FillWithEntries(*large, 40000);
    const std::wstring other = path + L".large.xml";
    SavePhoneBookFile(path, (*small)->Items(), false);
    SavePhoneBookFile(other, (*large)->Items(), false);
    const auto load = [](const std::wstring& from) {
        ItemStore store;
        LoadPhoneBookFile(from, store);
    };
    benchmark.Compare({"save 40000", [=] { SavePhoneBookFile(other, (*large)->Items(), false); }},
                      {"save 10000: growth", [=] { SavePhoneBookFile(path, (*small)->Items(), false); }}, 4.8);
    benchmark.Compare({"load 40000", [=] { load(other); }}, {"load 10000: growth", [=] { load(path); }}, 4.8);
    DeleteFileW(other.c_str());
}

// Sorting

struct NamePattern {
    const char* what;
    std::wstring (*name)(DWORD id);
    double allowed;
};

constexpr NamePattern kNamePatterns[] = {
    {"unequal names", [](DWORD id) { return L"Person " + std::to_wstring(id); }, 1.5},
    {"equal names", [](DWORD) { return std::wstring(L"Person"); }, 1.5},
    {"case-differing names", [](DWORD id) { return (id % 2 == 0 ? L"Person " : L"PERSON ") + std::to_wstring(id / 2); },
     1.5},
    {"accented names", [](DWORD id) { return L"Pérsön " + std::to_wstring(id); }, kAnything},
    {"Greek names", [](DWORD id) { return L"Πρόσωπο " + std::to_wstring(id); }, kAnything},
    {"names of which keys decide nothing", [](DWORD id) { return L"สมชาย " + std::to_wstring(id); }, kAnything},
};

std::vector<PhoneBookItem*> Shuffled(const TestBook& book)
{
    std::vector<PhoneBookItem*> items(book->Items().begin(), book->Items().end());
    std::shuffle(items.begin(), items.end(), std::mt19937(4711));
    return items;
}

std::string ReadyKey(const PhoneBookEntry& entry)
{
    std::string key;
    for (const std::wstring_view text :
         {std::wstring_view(entry.Name()), std::wstring_view(entry.FaxNumber()), std::wstring_view(entry.Company())}) {
        char bytes[1024];
        const int size =
            LCMapStringW(LOCALE_USER_DEFAULT, LCMAP_SORTKEY | NORM_IGNORECASE | SORT_STRINGSORT, text.data(),
                         static_cast<int>(text.size()), reinterpret_cast<wchar_t*>(bytes), sizeof bytes);
        key.append(bytes, static_cast<std::size_t>(size));
    }
    return key;
}

void MeasureSort(Benchmark& benchmark, const NamePattern& pattern, DWORD count)
{
    const auto book = std::make_shared<TestBook>();
    for (DWORD id = 0; id < count; ++id)
        book->AddEntry(pattern.name(id).c_str(), (L"555-" + std::to_wstring(id)).c_str(), L"Company", id);
    const std::vector<PhoneBookItem*> shuffled = Shuffled(*book);

    using Keyed = std::pair<std::string, PhoneBookItem*>;
    const auto items = std::make_shared<std::vector<PhoneBookItem*>>();
    const auto keyed = std::make_shared<std::vector<Keyed>>();
    const auto start = [=] { *items = shuffled; };
    const bench::Work ready{"std::sort over ready keys", [=] { std::sort(keyed->begin(), keyed->end()); },
                            [=] {
                                keyed->clear();
                                for (PhoneBookItem* const item : shuffled)
                                    keyed->emplace_back(ReadyKey(*AsEntry(item)), item);
                            }};
    const std::string what = Number(count) + ", " + pattern.what;
    benchmark.Compare({"sort " + what, [=] { SortItems(*items, true); }, start}, ready, pattern.allowed);
    benchmark.Compare({"literal comparator, " + what,
                       [=] {
                           std::stable_sort(items->begin(), items->end(),
                                            [](auto* a, auto* b) { return IsLessThan(*AsEntry(a), *AsEntry(b)); });
                       },
                       start},
                      ready, kAnything);
}

// Deleting, resolving, finding

std::vector<DWORD> EverySecondId(DWORD count)
{
    std::vector<DWORD> ids;
    for (DWORD id = 0; id < count; id += 2)
        ids.push_back(id);
    return ids;
}

// count entries, and a group for each hundred of them with all the hundred.
void FillWithGroups(TestBook& book, DWORD count)
{
    FillWithEntries(book, count);
    for (DWORD first = 0; first < count; first += 100) {
        PhoneBookGroup* const group = book.AddGroup(L"Group", {}, count + first);
        for (DWORD member = 0; member < 100; ++member)
            group->AddMemberId((first * 37 + member * 101) % count);
    }
}

void DeleteLiterally(PhoneBook& book, const std::vector<DWORD>& ids)
{
    for (const DWORD id : ids) {
        DWORD index = 0;
        while (index < book.GetCount() && book.GetAt(index)->GetId() != id)
            ++index;
        book.Delete(index);
    }
}

// One pass over items and members, with a set of the ids.
void DeleteInOnePass(TestBook& book, const std::vector<DWORD>& ids)
{
    const std::unordered_set<DWORD> gone(ids.begin(), ids.end());
    std::vector<PhoneBookItem*> kept;
    for (PhoneBookItem* const item : book->Items()) {
        if (PhoneBookGroup* const group = AsGroup(item)) {
            std::vector<DWORD> members(group->MemberIds().begin(), group->MemberIds().end());
            std::erase_if(members, [&](DWORD id) { return gone.contains(id); });
            group->SetMemberIds({});
            for (const DWORD member : members)
                group->AddMemberId(member);
        }
        if (!gone.contains(item->GetId()))
            kept.push_back(item);
    }
    Need(!kept.empty());
}

class Deleting {
public:
    explicit Deleting(DWORD count) : count_(count), ids_(EverySecondId(count)) {}

    bench::Work Module() const
    {
        return {"delete " + Number(ids_.size()) + " of " + Number(count_), [*this] { (*Current())->DeleteIds(ids_); },
                [*this] { Restart(); }};
    }
    bench::Work Literal() const
    {
        return {"one by one, " + Number(ids_.size()) + " of " + Number(count_),
                [*this] { DeleteLiterally(**Current(), ids_); }, [*this] { Restart(); }};
    }
    bench::Work OnePass() const
    {
        return {"one pass over items and members", [*this] { DeleteInOnePass(*Current(), ids_); },
                [*this] { Restart(); }};
    }

private:
    TestBook* Current() const { return book_->get(); }
    void Restart() const
    {
        *book_ = std::make_unique<TestBook>();
        FillWithGroups(**book_, count_);
    }

    DWORD count_;
    std::vector<DWORD> ids_;
    std::shared_ptr<std::unique_ptr<TestBook>> book_ = std::make_shared<std::unique_ptr<TestBook>>();
};

void MeasureDeleting(Benchmark& benchmark)
{
    const Deleting small(1000);
    const Deleting large(10000);
    benchmark.Compare(large.Module(), large.OnePass(), kAnything);
    benchmark.Compare(large.Literal(), large.OnePass(), kAnything);
    bench::Work growth = small.Module();
    growth.name += ": growth";
    benchmark.Compare(large.Module(), growth, 15);
}

std::vector<PhoneBookGroup*> GroupsOf(const TestBook& book)
{
    std::vector<PhoneBookGroup*> groups;
    for (PhoneBookItem* const item : book->Items()) {
        if (PhoneBookGroup* const group = AsGroup(item))
            groups.push_back(group);
    }
    return groups;
}

// Works on copies, as dialogs do: a group that has its members is not resolved again.
template <class Resolve> void ResolveAll(const TestBook& book, Resolve resolve)
{
    for (PhoneBookGroup* const group : GroupsOf(book)) {
        PhoneBookGroup copy;
        copy.CopyFrom(*group);
        resolve(copy);
        Need(copy.Members().size() == 100);
    }
}

void AddCopy(PhoneBookGroup& group, const PhoneBookEntry& entry)
{
    UniqueItem<PhoneBookEntry> copy(new PhoneBookEntry);
    copy->CopyFrom(entry);
    group.AddMember(copy.release());
}

void MeasureResolving(Benchmark& benchmark)
{
    const auto small = std::make_shared<TestBook>();
    const auto large = std::make_shared<TestBook>();
    FillWithGroups(*small, 1000);
    FillWithGroups(*large, 10000);
    const auto module = [](const TestBook& book) {
        book->SetAt(0, book->GetAt(0)); // a change: no index is left from the run before
        ResolveAll(book, [&book](PhoneBookGroup& group) { book->ResolveMembers(group); });
    };
    const bench::Work resolve{"resolve 100 groups of 100", [=] { module(*large); }};
    benchmark.Compare(resolve,
                      {"copies of the members",
                       [=] {
                           const PhoneBookEntry& entry = *(*large)->FindEntry(5);
                           ResolveAll(*large, [&entry](PhoneBookGroup& group) {
                               for (std::size_t i = group.MemberIds().size(); i > 0; --i)
                                   AddCopy(group, entry);
                           });
                       }},
                      kAnything);
    benchmark.Compare({"a walk for each member",
                       [=] {
                           ResolveAll(*large, [&](PhoneBookGroup& group) {
                               for (const DWORD id : group.MemberIds()) {
                                   for (PhoneBookItem* const item : (*large)->Items()) {
                                       if (!item->IsGroup() && item->GetId() == id) {
                                           AddCopy(group, *AsEntry(item));
                                           break;
                                       }
                                   }
                               }
                           });
                       }},
                      resolve, kAnything);
    benchmark.Compare(resolve, {"resolve 10 of 100: growth", [=] { module(*small); }}, 15);
}

void MeasureFinding(Benchmark& benchmark)
{
    const auto small = std::make_shared<TestBook>();
    const auto large = std::make_shared<TestBook>();
    FillWithEntries(*small, 1000);
    FillWithEntries(*large, 10000);
    const auto findAll = [](const TestBook& book) {
        book->SetAt(0, book->GetAt(0)); // a change: no index is left from the run before
        for (DWORD id = 0; id < book->GetCount(); ++id)
            Need(book->FindItem(id) != nullptr);
    };
    const bench::Work find{"find each of 10000 by id", [=] { findAll(*large); }};
    benchmark.Compare(find,
                      {"a map made and asked",
                       [=] {
                           std::map<DWORD, PhoneBookItem*> byId;
                           for (PhoneBookItem* const item : (*large)->Items())
                               byId.emplace(item->GetId(), item);
                           for (DWORD id = 0; id < 10000; ++id)
                               Need(byId.contains(id));
                       }},
                      kAnything);
    benchmark.Compare(
        {"a walk for each",
         [=] {
             const auto items = (*large)->Items();
             for (DWORD id = 0; id < 10000; ++id)
                 Need(std::any_of(items.begin(), items.end(), [id](auto* item) { return item->GetId() == id; }));
         }},
        find, kAnything);
    benchmark.Compare(find, {"find each of 1000: growth", [=] { findAll(*small); }}, 15);
}

} // namespace

int main(int count, char** arguments)
{
    const ComApartment apartment;
    const std::wstring path = BenchFile();
    Benchmark benchmark(15);
    for (const DWORD items : {1000u, 10000u, 40000u})
        MeasureFile(benchmark, path, items);
    MeasureFileGrowth(benchmark, path);
    for (const NamePattern& pattern : kNamePatterns)
        MeasureSort(benchmark, pattern, 10000);
    MeasureDeleting(benchmark);
    MeasureResolving(benchmark);
    MeasureFinding(benchmark);
    DeleteFileW(path.c_str());
    return benchmark.Report(count, arguments);
}
