#include "sheet_model.h"

#include "base/text.h"
#include "host/utf8.h"

#include <algorithm>
#include <utility>

namespace qx::test {

namespace {

// What a block of texts keeps that ends with its first empty one.
Recipient AsStoredInTheRegistry(Recipient texts)
{
    if (texts.faxNumber.empty())
        texts.company.clear();
    return texts;
}

bool IsSameRecent(const RecentItem& a, const RecentItem& b)
{
    return a.isGroup == b.isGroup && EqualUserText(a.texts.name, b.texts.name) &&
           (a.isGroup || EqualUserText(a.texts.faxNumber, b.texts.faxNumber));
}

bool MayBeNumber(const std::wstring& text)
{
    return text.find_first_not_of(L"0123456789,-*#()[]") == std::wstring::npos;
}

} // namespace

std::string Shown(const Recipient& texts)
{
    return '{' + host::Utf8(texts.name) + " | " + host::Utf8(texts.faxNumber) + " | " + host::Utf8(texts.company) + '}';
}

std::string Shown(const BookItem& item)
{
    std::string shown = '#' + std::to_string(item.id) + (item.isGroup ? " group " : " ") + Shown(item.texts);
    for (const DWORD member : item.members)
        shown += " #" + std::to_string(member);
    return shown;
}

std::string Shown(const RecentItem& item)
{
    std::string shown = (item.isGroup ? "group " : "") + Shown(item.texts);
    for (const Recipient& member : item.members)
        shown += ' ' + Shown(member);
    return shown;
}

std::string Shown(const UserDefaults& settings)
{
    std::string shown;
    for (const auto& [name, value] : settings) {
        const std::wstring* const text = std::get_if<std::wstring>(&value);
        shown += "\n  " + host::Utf8(name) + ' ' +
                 (text != nullptr ? host::Utf8(*text) : std::to_string(std::get<DWORD>(value)));
    }
    return shown;
}

// ---- the phone book ------------------------------------------------------------------------------------------------

BookItem* BookModel::Find(DWORD id)
{
    const auto found = std::ranges::find(items, id, &BookItem::id);
    return found != items.end() ? &*found : nullptr;
}

bool BookModel::HoldsSame(const BookItem& item) const
{
    return std::ranges::any_of(items, [&](const BookItem& other) {
        return other.isGroup == item.isGroup && (other.id != item.id || item.id == kIdUnknown) &&
               EqualUserText(other.texts.name, item.texts.name) &&
               (item.isGroup || EqualUserText(other.texts.faxNumber, item.texts.faxNumber));
    });
}

bool BookModel::IsTaken(DWORD id) const
{
    return std::ranges::any_of(items, [id](const BookItem& item) {
        return item.id == id || std::ranges::find(item.members, id) != item.members.end();
    });
}

DWORD BookModel::NextId() const
{
    DWORD next = 0;
    for (const BookItem& item : items) {
        next = std::max(next, item.id + 1);
        for (const DWORD member : item.members)
            next = std::max(next, member + 1);
    }
    return next;
}

std::vector<Recipient> BookModel::MembersOf(const std::vector<DWORD>& ids) const
{
    std::vector<Recipient> members;
    for (const DWORD id : ids) {
        for (const BookItem& item : items) {
            if (item.id == id && !item.isGroup)
                members.push_back(item.texts);
        }
    }
    return members;
}

void BookModel::Delete(const std::vector<DWORD>& ids)
{
    for (const DWORD id : ids) {
        const auto found = std::ranges::find(items, id, &BookItem::id);
        if (found == items.end())
            continue;
        const bool isGroup = found->isGroup;
        items.erase(found);
        for (BookItem& item : items) {
            const auto member = std::ranges::find(item.members, id);
            if (!isGroup && member != item.members.end())
                item.members.erase(member);
        }
        std::erase_if(items, [](const BookItem& item) { return item.isGroup && item.members.empty(); });
    }
}

bool BookModel::Has(const BookItem& before)
{
    const BookItem* const found = Find(before.id);
    return found != nullptr && found->isGroup == before.isGroup &&
           EqualUserText(found->texts.name, before.texts.name) &&
           EqualUserText(found->texts.faxNumber, before.texts.faxNumber);
}

void BookModel::Sort()
{
    std::ranges::sort(items, {}, &BookItem::id);
}

void BookModel::Import(const std::vector<std::vector<std::wstring>>& rows, const std::vector<int>& columns)
{
    for (const std::vector<std::wstring>& row : rows) {
        const auto field = [&](std::size_t i) {
            return columns[i] < 0 ? std::wstring() : row[static_cast<std::size_t>(columns[i])];
        };
        const BookItem item{.texts = {field(0), field(1), field(2)}};
        if (!item.texts.name.empty() && !item.texts.faxNumber.empty() && MayBeNumber(item.texts.faxNumber) &&
            !HoldsSame(item))
            items.push_back(item);
    }
}

// ---- recent recipients ---------------------------------------------------------------------------------------------

void RecentModel::Use(const RecentItem& item)
{
    if (item.texts.name.empty())
        return;
    if (!item.isGroup)
        known.push_back(item.texts);
    const auto found = std::ranges::find_if(slots, [&](const RecentItem& slot) { return IsSameRecent(slot, item); });
    if (found != slots.end())
        slots.erase(found);
    slots.insert(slots.begin(), item);
    if (slots.size() > static_cast<std::size_t>(kMaxRecentRecipients))
        slots.pop_back();
}

void RecentModel::Reload()
{
    std::erase_if(slots, [](const RecentItem& slot) { return slot.isGroup && slot.members.empty(); });
    for (RecentItem& slot : slots) {
        slot.texts = AsStoredInTheRegistry(slot.texts);
        for (Recipient& member : slot.members)
            member = AsStoredInTheRegistry(member);
    }
}

const RecentItem* RecentModel::Group(const std::wstring& name) const
{
    const auto found = std::ranges::find_if(
        slots, [&](const RecentItem& slot) { return slot.isGroup && EqualUserText(slot.texts.name, name); });
    return found != slots.end() ? &*found : nullptr;
}

const RecentItem* RecentModel::Suggestion(const std::wstring& name) const
{
    if (name.find_first_not_of(L' ') == std::wstring::npos)
        return nullptr;
    auto found = std::ranges::find_if(slots, [&](const RecentItem& slot) { return slot.texts.name == name; });
    if (found == slots.end())
        found =
            std::ranges::find_if(slots, [&](const RecentItem& slot) { return EqualUserText(slot.texts.name, name); });
    return found != slots.end() ? &*found : nullptr;
}

bool RecentModel::Knows(const std::wstring& name, const std::wstring& faxNumber) const
{
    return std::ranges::any_of(
        known, [&](const Recipient& r) { return EqualUserText(r.name, name) && r.faxNumber == faxNumber; });
}

} // namespace qx::test
