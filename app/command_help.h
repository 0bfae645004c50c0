// What a program tells of its command line: behind --help, in its manual page, and to a shell that completes words.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace melvane {

struct OptionHelp {
    std::string_view name;
    std::string_view value;  // what the value is called; empty: the option takes none
    std::string_view help;
    std::string words{};         // values that a shell may offer, one a line
    std::string_view endings{};  // of the files that it may offer, joined by "|"
};

struct HelpTerm {
    std::string_view term;
    std::string_view meaning;
};

struct CommandHelp {
    std::string_view program;
    std::string_view purpose;                   // a sentence without its stop
    std::vector<std::string_view> usages;       // what may stand behind the program's name
    std::vector<std::string_view> description;  // paragraphs of the manual page
    std::vector<OptionHelp> options;
    std::string_view note;
    std::vector<HelpTerm> exits;
    std::vector<HelpTerm> files;
    std::vector<HelpTerm> examples;
    std::string endings;  // of the files that it takes, joined by "|"
};

// For OptionHelp::endings and CommandHelp::endings.
std::string joinedEndings(const std::vector<std::string_view>& endings);

// The text behind --help.
std::string usageText(const CommandHelp& help);

}  // namespace melvane
