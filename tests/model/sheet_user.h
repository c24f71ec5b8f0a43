// A user of the whole sheet who does one thing after the other, and looks after each whether everything is as it must
// be.
//
// An event is one thing that a user does by one move of a hand: a key (or one that an input method composes), a click
// on a button, on a row, on an arrow or on a tab, a selection of rows, a paste, a notch of the wheel, an answer to a
// box; or one change of the phone book by somebody else.
#pragma once

#include "events.h"
#include "host/job.h"
#include "sheet_model.h"
#include "support/dialog_hands.h"
#include "support/recipients.h"
#include "support/windows_combo_box.h"
#include "turns.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <qxfax/send_fax.h>
#include <random>
#include <string>
#include <vector>
#include <windows.h>

namespace qx::test {

struct Surroundings {
    HANDLE printer = nullptr;
    const host::FaxModule* module = nullptr;
    std::wstring guid;
    std::filesystem::path phoneBook;
    std::filesystem::path folder;                     // for files of the user's own
    std::function<void(const Event&)> watcher;        // before each event
    std::function<void(const std::string&)> mistaken; // ends the process: a window procedure cannot be left otherwise
};

// What the page may take: the fields as they are or, where it may, what the name has become.
struct Offer {
    Recipient fields;
    std::optional<RecentItem> suggestion;
    unsigned boxes = 0; // so far
};

struct SheetUser : DialogHands {
    // On every second seed with a combo box that behaves as on Windows.
    SheetUser(Surroundings surroundings, unsigned seed);

    // One session after the other until there are no more events.
    void Play(EventSource& events);

    // ---- hands
    int Pick(int below) { return static_cast<int>(random() % static_cast<unsigned>(below)); }
    template <class List> const auto& OneOf(const List& list)
    {
        return list[static_cast<std::size_t>(Pick(static_cast<int>(std::size(list))))];
    }
    bool IsShown(int id) const { return (GetWindowLongPtrW(Control(id), GWL_STYLE) & WS_VISIBLE) != 0; }
    void Replace(int id, const wchar_t* text); // a paste over all, wherever the focus is
    void SelectSome(int list, int most);       // of its rows
    void Look() const;                         // at everything, drawn anew
    void AnswerBox(bool yes);
    void Cancel();
    void SomebodySaves(bool told);

    // ---- what is seen
    using DialogHands::Page;
    static Recipient FieldsOn(HWND page);
    Recipient Fields() const { return FieldsOn(Page()); }
    std::vector<Recipient> RowsOf(int list) const;
    std::vector<int> SelectedRows(int list) const;
    std::vector<DWORD> SelectedIds(int list) const;
    bool WasAnswered(const Offer& offer) const { return boxes > offer.boxes; }

    // ---- expectations
    Offer OfferOf(const Recipient& shown) const;
    void CheckTaken(const Offer& offer, const Recipient& taken) const;
    void CheckFaxJob();
    void CheckBookRows(int list);
    void CheckDefaults() const;
    void CheckRecents() const;
    std::vector<BookItem> ReadFile() const;
    void TakeSaved();   // the book in memory has been saved
    void TakeReloaded() // and has been read again
    {
        memory = file;
        unseen.clear();
    }
    void Use(const RecentItem& item);
    void Note(const UserDefaults& shown); // as the job's settings
    void FinishEditing(BookItem edited);  // the button OK of an item's dialog

    const Surroundings around;
    std::minstd_rand random; // of the present event
    host::FaxJob job;
    FaxJobData& record = job.Record();
    unsigned boxes = 0;  // answered so far
    bool agreed = false; // to the last one
    HWND combo = nullptr, nameEdit = nullptr, nameList = nullptr;

    // What must be.
    BookModel file, memory;
    std::vector<std::string> unseen; // contents of the file that this program has not seen
    RecentModel recents;
    std::vector<Recipient> rows, chosen;
    UserDefaults stored, settings; // of the user, of the job
    bool changed = false;          // the list, since it was looked at
    bool recentsChanged = false;   // likewise
    bool pasted = false;           // by the present event
    bool touched = false;          // number or company are the user's
    bool touchedAsChosen = false;  // they may be the name's as well: what was put there is what the name has
    bool coverPageShown = false, setupShown = false; // since they were loaded

    // The subject of the dialog that is open.
    BookItem before; // with an unknown id: a new one
    std::vector<DWORD> members;
    std::filesystem::path fileToChoose;
    bool fileChosen = false;
    std::optional<std::vector<int>> columns; // that were mapped

private:
    void Restart();
    void BeginSession();
    void Turn(HWND dialog, Place place);
    void Do(const Event& event);
    void LookAround(Place place);
    void CheckPair(const Recipient& row) const;
    void CheckCopiesKept();

    std::optional<WindowsComboBoxes> windowsComboBoxes_;
    Turns turns_;
    EventSource* events_ = nullptr;
    Place place_ = Place::Outside;
};

inline constexpr int kFaxJobPage = 0, kSetupPage = 1;
inline constexpr DWORD kNothingSaid = 7;      // what the driver finds when the module has not written an outcome
inline constexpr std::size_t kMostItems = 40; // of a phone book: a longer one makes events dear, and nothing new

DWORD IdOfRow(HWND list, int row);

} // namespace qx::test
