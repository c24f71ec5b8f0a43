#include "phonebook/book/item_deletion.h"

#include "phonebook/book/item_places.h"

#include <algorithm>
#include <utility>

namespace qx {

namespace {

// How often an id stands in a group, and how many of these, from the front, have been taken out.
struct Membership {
    ItemPlace place; // the member's id, the group's position
    std::size_t left = 0;
    std::size_t taken = 0;
};

// Plays the deletions over indexes and writes the outcome back at the end: one deletion after the other takes
// quadratic time.
class Deletion {
public:
    explicit Deletion(std::span<PhoneBookItem* const> items)
        : items_(items), present_(items.size(), true), places_(PlacesOf(items))
    {
        FindMemberships();
    }

    void Delete(DWORD id)
    {
        const ItemPlace* const found = FindPlace(places_, id, [&](std::size_t position) { return present_[position]; });
        if (found == nullptr)
            return;
        present_[found->position] = false;
        DropEmptyGroups();
        TakeFromGroups(AsEntry(items_[found->position]) != nullptr ? id : kNoId);
    }

    // What is left, and the groups changed: all of it, or, when memory is short, nothing.
    std::vector<PhoneBookItem*> Finish()
    {
        std::vector<PhoneBookItem*> kept;
        std::vector<std::pair<PhoneBookGroup*, std::vector<DWORD>>> changed;
        for (std::size_t i = 0; i < items_.size(); ++i) {
            PhoneBookGroup* const group = AsGroup(items_[i]);
            if (group != nullptr && group->MemberIds().size() != members_[i])
                changed.emplace_back(group, MembersLeft(*group, i));
            if (present_[i])
                kept.push_back(items_[i]);
        }
        for (auto& [group, ids] : changed)
            group->SetMemberIds(std::move(ids));
        return kept;
    }

private:
    void FindMemberships()
    {
        members_.resize(items_.size());
        std::vector<ItemPlace> all;
        for (std::size_t i = 0; i < items_.size(); ++i) {
            const PhoneBookGroup* const group = AsGroup(items_[i]);
            if (group == nullptr)
                continue;
            members_[i] = group->MemberIds().size();
            for (const DWORD id : group->MemberIds())
                all.push_back({id, i});
        }
        std::sort(all.begin(), all.end());
        for (const ItemPlace& place : all) {
            if (memberships_.empty() || memberships_.back().place != place)
                memberships_.push_back({.place = place});
            ++memberships_.back().left;
        }
    }

    std::vector<Membership>::iterator FirstMembership(const ItemPlace& from)
    {
        return std::lower_bound(memberships_.begin(), memberships_.end(), from,
                                [](const Membership& a, const ItemPlace& b) { return a.place < b; });
    }

    // Groups that had no member ids before leave with the first deletion.
    void DropEmptyGroups()
    {
        if (std::exchange(emptyDropped_, true))
            return;
        for (std::size_t i = 0; i < items_.size(); ++i) {
            if (items_[i]->IsGroup() && members_[i] == 0)
                present_[i] = false;
        }
    }

    void TakeFromGroups(DWORD id)
    {
        for (auto it = FirstMembership({id, 0}); it != memberships_.end() && it->place.id == id; ++it) {
            const std::size_t group = it->place.position;
            if (!present_[group] || it->left == 0)
                continue;
            --it->left;
            ++it->taken;
            if (--members_[group] == 0)
                present_[group] = false;
        }
    }

    std::vector<DWORD> MembersLeft(const PhoneBookGroup& group, std::size_t position)
    {
        std::vector<DWORD> left;
        for (const DWORD id : group.MemberIds()) {
            const auto membership = FirstMembership({id, position});
            if (membership->taken != 0)
                --membership->taken;
            else
                left.push_back(id);
        }
        return left;
    }

    std::span<PhoneBookItem* const> items_;
    std::vector<bool> present_;
    const std::vector<ItemPlace> places_;
    std::vector<std::size_t> members_; // of the group at that position
    std::vector<Membership> memberships_;
    bool emptyDropped_ = false;
};

} // namespace

void DeleteItems(std::vector<PhoneBookItem*>& items, std::span<const DWORD> ids)
{
    Deletion deletion(items);
    for (const DWORD id : ids)
        deletion.Delete(id);
    items = deletion.Finish();
}

} // namespace qx
