// What a completing name box suggests and how it answers typing. No window here: the combo box asks, and shows.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace qx {

// A text to suggest, and a value of the page's own that is handed back when it is chosen.
struct SuggestionItem {
    std::wstring text;
    const void* data = nullptr;
    bool operator==(const SuggestionItem&) const = default;
};

class Suggestions {
public:
    // Replaces all items; there are no matches until the next Rebuild.
    void SetItems(std::vector<SuggestionItem> items) noexcept;

    // Takes as matches copies of the items that begin with typed, in their order. False when there is none.
    bool Rebuild(std::wstring_view typed);
    // Whether the matches are already those of typed.
    bool AreFor(std::wstring_view typed) const noexcept { return rebuilt_ && typed == typed_; }

    // The first item whose text is this one letter for letter or, without such an item, ignoring case. Null when there
    // is none; blank texts are nobody's.
    const SuggestionItem* Find(std::wstring_view text) const noexcept;

    // Addresses of items and matches stay valid until they are replaced.
    const std::vector<SuggestionItem>& Items() const noexcept { return items_; }
    const std::vector<SuggestionItem>& Matches() const noexcept { return matches_; }
    // The items that are not blank, in their order: what an opened list shows.
    std::vector<const SuggestionItem*> Offered() const;

private:
    std::vector<SuggestionItem> items_;
    std::vector<SuggestionItem> matches_;
    std::wstring typed_;
    bool rebuilt_ = false;
};

enum class EditAnswer {
    HideList,
    ShowList, // and leave the text alone: the user deletes or replaces
    Complete, // show the list, and complete the text from its first row that begins with it
};

// How a change of the edit is answered. typed is its text now; previousLength is the length of the text as it was typed
// before, without what a completion added to it.
EditAnswer AnswerTyping(std::wstring_view typed, std::size_t previousLength, bool rowFound) noexcept;

} // namespace qx
