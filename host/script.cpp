#include "host/script.h"

#include "host/utf8.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <sstream>

namespace qx::host {

namespace {

using Action = std::function<void(UiDriver&)>;

// What a line holds after its action's word.
struct Arguments {
    std::istringstream words;
    std::filesystem::path shots;
};

[[noreturn]] void Refuse(const std::string& why)
{
    throw std::runtime_error(why);
}

std::string NextWord(Arguments& arguments, const char* meaning)
{
    std::string word;
    if (!(arguments.words >> word))
        Refuse(std::string(meaning) + " is missing");
    return word;
}

std::optional<int> Number(const std::string& word)
{
    int number = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
    if (error != std::errc() || end != word.data() + word.size())
        return std::nullopt;
    return number;
}

int NextNumber(Arguments& arguments, const char* meaning)
{
    const std::string word = NextWord(arguments, meaning);
    const std::optional<int> number = Number(word);
    if (!number)
        Refuse("'" + word + "' is not a number");
    return *number;
}

// A control by its id, or one of the buttons that every sheet or box has by its name.
int NextControl(Arguments& arguments)
{
    static constexpr struct {
        const char* name;
        int id;
    } kButtons[] = {{"send", IDOK}, {"ok", IDOK},       {"cancel", IDCANCEL}, {"yes", IDYES},
                    {"no", IDNO},   {"retry", IDRETRY}, {"help", kHelpButton}};
    const std::string word = NextWord(arguments, "the control");
    for (const auto& button : kButtons) {
        if (word == button.name)
            return button.id;
    }
    const std::optional<int> id = Number(word);
    if (!id)
        Refuse("'" + word + "' is neither a control's number nor a button's name");
    return *id;
}

// The rest of the line; \n stands for a line break and \\ for a backslash before an n.
std::wstring RestOfLine(Arguments& arguments)
{
    std::string rest;
    std::getline(arguments.words >> std::ws, rest);
    std::string text;
    for (std::size_t i = 0; i < rest.size(); ++i) {
        const std::string_view pair = std::string_view(rest).substr(i, 2);
        if (pair == "\\n" || pair == "\\\\") {
            text += pair == "\\n" ? "\r\n" : "\\";
            ++i;
        } else {
            text += rest[i];
        }
    }
    return Wide(text);
}

WORD NextKey(Arguments& arguments, std::vector<WORD>& modifiers)
{
    static constexpr struct {
        const char* name;
        WORD key;
    } kKeys[] = {{"ctrl", VK_CONTROL}, {"shift", VK_SHIFT},   {"alt", VK_MENU},     {"enter", VK_RETURN},
                 {"esc", VK_ESCAPE},   {"tab", VK_TAB},       {"space", VK_SPACE},  {"up", VK_UP},
                 {"down", VK_DOWN},    {"left", VK_LEFT},     {"right", VK_RIGHT},  {"home", VK_HOME},
                 {"end", VK_END},      {"delete", VK_DELETE}, {"back", VK_BACK},    {"f1", VK_F1},
                 {"f4", VK_F4},        {"pageup", VK_PRIOR},  {"pagedown", VK_NEXT}};
    std::istringstream parts(NextWord(arguments, "the key"));
    for (std::string part; std::getline(parts, part, '+');) {
        std::ranges::transform(part, part.begin(), [](unsigned char c) { return static_cast<char>(tolower(c)); });
        const auto* const known = std::ranges::find_if(kKeys, [&](const auto& key) { return part == key.name; });
        const bool single = part.size() == 1 && isalnum(static_cast<unsigned char>(part[0]));
        if (known == std::end(kKeys) && !single)
            Refuse("unknown key '" + part + "'");
        modifiers.push_back(known != std::end(kKeys) ? known->key : static_cast<WORD>(toupper(part[0])));
    }
    const WORD key = modifiers.back();
    modifiers.pop_back();
    return key;
}

// ---- the actions ---------------------------------------------------------------------------------------------------

Action ReadType(Arguments& arguments)
{
    return [id = NextControl(arguments), text = RestOfLine(arguments)](UiDriver& user) { user.Type(id, text); };
}

Action ReadPaste(Arguments& arguments)
{
    return [id = NextControl(arguments), text = RestOfLine(arguments)](UiDriver& user) { user.Paste(id, text); };
}

Action ReadPress(Arguments& arguments)
{
    return [id = NextControl(arguments)](UiDriver& user) { user.Press(id); };
}

Action ReadCheck(Arguments& arguments)
{
    return [id = NextControl(arguments)](UiDriver& user) { user.Check(id, true); };
}

Action ReadUncheck(Arguments& arguments)
{
    return [id = NextControl(arguments)](UiDriver& user) { user.Check(id, false); };
}

Action ReadChoose(Arguments& arguments)
{
    return [id = NextControl(arguments)](UiDriver& user) { user.Choose(id); };
}

Action ReadSelect(Arguments& arguments)
{
    return [id = NextControl(arguments), text = RestOfLine(arguments)](UiDriver& user) {
        const std::vector<std::wstring> items = user.ComboItems(id);
        const auto item = std::ranges::find(items, text);
        if (item == items.end())
            throw UiFailure("'" + Utf8(text) + "' is not among the items of " + std::to_string(id));
        user.Select(id, static_cast<int>(item - items.begin()));
    };
}

Action ReadRows(Arguments& arguments)
{
    const int id = NextControl(arguments);
    std::vector<int> rows;
    while (!(arguments.words >> std::ws).eof())
        rows.push_back(NextNumber(arguments, "the row") - 1);
    return [=](UiDriver& user) { user.SelectRows(id, rows); };
}

Action ReadKey(Arguments& arguments)
{
    std::vector<WORD> modifiers;
    const WORD key = NextKey(arguments, modifiers);
    return [=](UiDriver& user) { user.PressKey(key, modifiers); };
}

Action ReadWait(Arguments& arguments)
{
    return [id = NextControl(arguments)](UiDriver& user) { user.WaitForControl(id); };
}

Action ReadAnswer(Arguments& arguments)
{
    return [button = NextControl(arguments), expected = RestOfLine(arguments)](UiDriver& user) {
        const BoxContents box = user.WaitForBox();
        if (!expected.empty() && box.text.find(expected) == std::wstring::npos)
            throw UiFailure("the box says '" + Utf8(box.text) + "'");
        user.Press(button);
    };
}

Action ReadFile(Arguments& arguments)
{
    return [file = RestOfLine(arguments)](UiDriver& user) { user.AnswerFileDialog(file); };
}

Action ReadPage(Arguments& arguments)
{
    return [page = NextNumber(arguments, "the page") - 1](UiDriver& user) { user.GoToPage(page); };
}

// Of the next word, in the folder of pictures.
std::filesystem::path NextPictureFile(Arguments& arguments)
{
    const std::string name = NextWord(arguments, "the picture's name");
    if (name.find_first_of("/\\:") != std::string::npos)
        Refuse("'" + name + "' is not a plain name");
    if (arguments.shots.empty())
        Refuse("there is no folder for pictures");
    return arguments.shots / Wide(name + ".png");
}

Action ReadPicture(Arguments& arguments)
{
    return [file = NextPictureFile(arguments)](UiDriver& user) { user.SavePicture(file); };
}

Action ReadScreen(Arguments& arguments)
{
    return [file = NextPictureFile(arguments)](UiDriver& user) { user.SaveScreenPicture(file); };
}

struct Verb {
    const char* word;
    const char* arguments;
    const char* meaning;
    Action (*read)(Arguments&);
};

constexpr Verb kVerbs[] = {
    {"type", "ID TEXT", "replace the text of a field, key by key; \\n starts a new line", ReadType},
    {"paste", "ID TEXT", "replace the text of a field in one step", ReadPaste},
    {"press", "ID|NAME", "press a button: by id, or send, ok, cancel, yes, no, retry, help", ReadPress},
    {"check", "ID", "check a check box", ReadCheck},
    {"uncheck", "ID", "clear a check box", ReadUncheck},
    {"choose", "ID", "choose a radio button", ReadChoose},
    {"select", "ID TEXT", "choose an item of a combo box", ReadSelect},
    {"rows", "ID N...", "wait for these rows of a list, counted from 1, and select no others", ReadRows},
    {"key", "KEY", "press a key on the keyboard, such as F1, Tab or Ctrl+A", ReadKey},
    {"wait", "ID", "wait for a dialog that has this control", ReadWait},
    {"answer", "NAME [TEXT]", "wait for a message box (that says TEXT) and press its button", ReadAnswer},
    {"file", "PATH", "wait for a file dialog, name the file and confirm", ReadFile},
    {"page", "N", "go to a page of the sheet: 1 Fax Job, 2 Setup", ReadPage},
    {"picture", "NAME", "write a picture of the dialog to NAME.png in the folder of pictures", ReadPicture},
    {"screen", "NAME", "the same of all dialogs on screen", ReadScreen},
};

Action ReadStep(const std::string& line, const std::filesystem::path& shots)
{
    Arguments arguments{std::istringstream(line), shots};
    const std::string word = NextWord(arguments, "the action");
    const auto* const verb = std::ranges::find_if(kVerbs, [&](const Verb& known) { return word == known.word; });
    if (verb == std::end(kVerbs))
        Refuse("unknown action '" + word + "'");
    Action action = verb->read(arguments);
    if (std::string left; arguments.words >> left)
        Refuse("'" + left + "' is too much");
    return action;
}

std::string At(const std::string& name, int line)
{
    return name + ":" + std::to_string(line) + ": ";
}

} // namespace

Script::Script(std::istream& text, std::string name, const std::filesystem::path& shots) : name_(std::move(name))
{
    int number = 0;
    for (std::string line; std::getline(text, line);) {
        ++number;
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        const std::size_t start = line.find_first_not_of(" \t");
        if (start == std::string::npos || line[start] == '#')
            continue;
        try {
            steps_.push_back({number, ReadStep(line, shots)});
        } catch (const std::exception& refused) {
            throw ScriptError(At(name_, number) + refused.what());
        }
    }
}

void Script::Play(UiDriver& user) const
{
    for (const ScriptStep& step : steps_) {
        try {
            step.run(user);
        } catch (const std::exception& failure) {
            throw ScriptError(At(name_, step.line) + failure.what());
        }
    }
}

std::string ScriptHelp()
{
    std::string help = "A script has one user action per line; lines that start with # are comments.\n";
    for (const Verb& verb : kVerbs) {
        std::string usage = std::string("  ") + verb.word + " " + verb.arguments;
        usage.resize(std::max<std::size_t>(usage.size() + 2, 24), ' ');
        help += usage + verb.meaning + "\n";
    }
    return help;
}

} // namespace qx::host
