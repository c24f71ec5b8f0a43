// Another printing program of the same user: opens the phone book picker for a printer and does what it is told on its
// standard input, line by line, answering each line with one of its own.
//
//   phone_book_neighbour PRINTER
//   names        the names in the picker's list, separated by |
//   add NAME     adds an entry with the phone book editor, which saves the phone book
#include "host/job.h"
#include "host/provision.h"
#include "host/utf8.h"
#include "res/add_recipients_ids.h"
#include "res/edit_phone_book_ids.h"
#include "res/fax_job_page_ids.h"
#include "support/dialog_thread.h"
#include "support/phone_book_session.h"

#include <iostream>
#include <string>

namespace qx::test {
namespace {

std::string Names(host::UiDriver& ui)
{
    std::string names;
    for (const std::wstring& name : NamesIn(ui, IDC_PICK_LIST))
        names += (names.empty() ? "" : "|") + host::Utf8(name);
    return names;
}

void Add(host::UiDriver& ui, std::wstring_view name)
{
    ui.Press(IDC_PICK_EDIT_BOOK);
    AddEntry(ui, name, L"1");
    ui.Press(IDOK);
}

void Obey(host::UiDriver& ui)
{
    for (std::string line; std::getline(std::cin, line);) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        if (line.starts_with("add "))
            Add(ui, host::Wide(line.substr(4)));
        std::cout << Names(ui) << std::endl;
    }
}

int Run(const std::wstring& printerName)
{
    const host::FaxModule module(host::DriverFolder() / L"qxfaxui.dll");
    const UniquePrinter printer = host::OpenFaxPrinter(printerName);
    host::FaxJob job;
    DialogThread conversation([&] { module.DisplayFaxUi(printer.Get(), job.Record()); });
    conversation.Ui().WaitForControl(IDC_PHONE_BOOK);
    conversation.Ui().Press(IDC_PHONE_BOOK);
    std::cout << "ready" << std::endl;
    Obey(conversation.Ui());
    return 0;
}

} // namespace
} // namespace qx::test

int main(int count, char** arguments)
{
    try {
        return count == 2 ? qx::test::Run(qx::host::Wide(arguments[1])) : 2;
    } catch (const std::exception& failure) {
        std::cout << "failed: " << failure.what() << std::endl;
        return 1;
    }
}
