#include "dialog/type_ahead.h"

#include "base/text.h"
#include "dialog/typed_prefix.h"

#include <algorithm>

namespace qx {

namespace {

// The first half of a surrogate pair, whose second half the next keystroke message brings.
bool EndsInHalfCharacter(std::wstring_view text) noexcept
{
    return !text.empty() && text.back() >= 0xD800 && text.back() <= 0xDBFF;
}

} // namespace

void Suggestions::SetItems(std::vector<SuggestionItem> items) noexcept
{
    items_ = std::move(items);
    matches_.clear();
    rebuilt_ = false;
}

bool Suggestions::Rebuild(std::wstring_view typed)
{
    matches_.clear();
    rebuilt_ = false;
    for (const SuggestionItem& item : items_) {
        if (MatchesTypedPrefix(item.text, typed))
            matches_.push_back(item);
    }
    typed_ = typed;
    rebuilt_ = true;
    return !matches_.empty();
}

const SuggestionItem* Suggestions::Find(std::wstring_view text) const noexcept
{
    if (text.empty() || IsBlankText(text))
        return nullptr;
    auto found = std::ranges::find(items_, text, &SuggestionItem::text);
    if (found == items_.end())
        found =
            std::ranges::find_if(items_, [&](const SuggestionItem& item) { return EqualUserText(item.text, text); });
    return found != items_.end() ? &*found : nullptr;
}

std::vector<const SuggestionItem*> Suggestions::Offered() const
{
    std::vector<const SuggestionItem*> offered;
    offered.reserve(items_.size());
    for (const SuggestionItem& item : items_) {
        if (!IsBlankText(item.text))
            offered.push_back(&item);
    }
    return offered;
}

EditAnswer AnswerTyping(std::wstring_view typed, std::size_t previousLength, bool rowFound) noexcept
{
    if (!rowFound)
        return EditAnswer::HideList;
    if (typed.size() <= previousLength || EndsInHalfCharacter(typed))
        return EditAnswer::ShowList;
    return EditAnswer::Complete;
}

} // namespace qx
