// The real Fax Job page alone, in a window that stands for the sheet: driven by messages, without a message loop.
#pragma once

#include "pages/fax_job_page.h"
#include "phonebook/recent/recent_list.h"
#include "record/fax_job_data.h"
#include "support/dialog_hands.h"
#include "support/documented_controls.h"
#include "support/message_boxes.h"
#include "support/phone_book.h"
#include "support/recipients.h"
#include "support/windows_combo_box.h"

#include <optional>
#include <string>
#include <vector>

namespace qx::test {

class FaxJobPageStand : private PageHost {
public:
    FaxJobPageStand();
    ~FaxJobPageStand();

    // Its combo box behaves as on Windows. Before Show; in a run with documented controls it does anyway.
    void UseWindowsComboBox() { windowsComboBoxes_.emplace(); }

    // ---- before Show: what the session has (the last one given becomes the most recent)
    FaxJobData& Job() { return job_.Get(); }
    PhoneBook& Book() { return *book_; }
    void AddBookEntry(const wchar_t* name, const wchar_t* faxNumber)
    {
        book_->Add(book_.NewEntry({name, faxNumber, L""}));
    }
    void AddRecentEntry(const wchar_t* name, const wchar_t* faxNumber, const wchar_t* company = L"");
    void AddRecentGroup(const wchar_t* name, int members); // named "name 1", "name 2", ...

    void Show();
    FaxJobPage& Page() { return page_; }
    HWND SheetWindow() const { return sheet_; }
    HWND Control(int id) const { return GetDlgItem(page_.dialog, id); }

    // ---- the user
    void SetText(int id, const std::wstring& text); // as a paste over everything
    void TypeName(const std::wstring& text);        // character by character into the name box
    void PressNameKey(WPARAM key) { PressKeyIn(page_.fields.nameBox.edit, key); }
    void PressAltNameKey(WPARAM key) { PressAltKeyIn(page_.fields.nameBox.edit, key); }
    void Compose(const std::wstring& text); // with an input method into the name box, and not yet to the end
    void EndComposition();
    void Press(int id);        // a button, also one that is disabled does nothing
    void PickName(int row);    // an item of the name box, as its list would
    void DropNames(bool open); // by a click on the arrow
    void SelectRows(const std::vector<int>& rows);
    void PressListKey(WPARAM key);
    LRESULT Notify(UINT code);                                              // from the sheet
    void LetTheOtherPageRefuse(bool refuse) { otherPageRefuses_ = refuse; } // every Send; at first it accepts
    bool Send();                                                            // the answer is this page's

    // ---- what there is
    std::wstring Text(int id) const;
    bool IsEnabled(int id) const { return IsWindowEnabled(Control(id)) != FALSE; }
    bool IsVisible(int id) const; // as far as the page decides
    std::vector<Recipient> Rows() const { return RowsIn(Control(IDC_RECIPIENTS)); }
    std::vector<Recipient> Recipients() { return RecipientsIn(Job()); }
    std::vector<std::wstring> Names() const; // rows of the name box
    bool NamesShown() const { return IsWindowVisible(page_.fields.nameBox.list) != FALSE; }
    std::wstring SelectedTail() const; // the selected characters of the name
    MessageBoxes& Boxes() { return boxes_; }

private:
    bool PageCreated(HWND) override { return true; }
    SendRound& Round() noexcept override { return round_; }
    void SendJob() noexcept override;

    SendRound round_;
    bool otherPageRefuses_ = false;
    std::optional<WindowsComboBoxes> windowsComboBoxes_;
    TestBook book_;
    RecentRecipientList recent_;
    OwnedFaxJobData job_;
    FaxJobPage page_;
    HWND sheet_;
    MessageBoxes boxes_;
    std::unique_ptr<DocumentedControls> controls_ = DocumentedControls::WhenAsked();
};

} // namespace qx::test
