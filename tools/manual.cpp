#include "tools/manual.h"

#include <algorithm>

namespace melvane {

namespace {

constexpr std::string_view kCompletion = R"(# bash completion for @PROGRAM@
@FUNCTION@() {
    local cur prev words cword split
    _init_completion -s || return
    case $prev in
@VALUES@    esac
    $split && return
    if [[ $cur == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W '@OPTIONS@' -- "$cur")
    else
        _filedir '@(@ENDINGS@)'
    fi
}
complete -F @FUNCTION@ @PROGRAM@
)";

void fill(std::string& text, std::string_view place, std::string_view value) {
    for (std::size_t at = 0; (at = text.find(place, at)) != std::string::npos; at += value.size())
        text.replace(at, place.size(), value);
}

std::string escaped(std::string_view text) {
    std::string result;
    for (const char c : text) {
        if (c == '\\')
            result += "\\e";
        else if (c == '-')
            result += "\\-";
        else if (c == '~')
            result += "\\(ti";
        else if (c == '\'')
            result += "\\(aq";
        else
            result += c;
    }
    return result.starts_with('.') ? "\\&" + result : result;
}

std::string inUpperCase(std::string text) {
    std::ranges::transform(text, text.begin(), [](char c) { return c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c; });
    return text;
}

std::string tagged(const std::string& term, std::string_view meaning) {
    return ".TP\n" + term + "\n" + escaped(meaning) + ".\n";
}

std::string section(const char* title, const std::vector<HelpTerm>& terms, const char* font) {
    if (terms.empty()) return "";
    std::string text = std::string(".SH ") + title + "\n";
    for (const HelpTerm& term : terms) text += tagged(font + escaped(term.term) + "\\fR", term.meaning);
    return text;
}

std::string synopsis(const CommandHelp& help) {
    std::string text = ".SH SYNOPSIS\n";
    for (const std::string_view usage : help.usages)
        text += (text.ends_with("SYNOPSIS\n") ? "" : ".br\n") + ("\\fB" + escaped(help.program)) + "\\fR " +
                escaped(usage) + "\n";
    return text;
}

std::string optionSection(const CommandHelp& help) {
    std::string text = ".SH OPTIONS\n";
    for (const OptionHelp& option : help.options) {
        const std::string value = option.value.empty() ? "" : " \\fI" + escaped(option.value) + "\\fR";
        text += tagged("\\fB" + escaped(option.name) + "\\fR" + value, option.help);
    }
    return text + ".PP\n" + escaped(help.note) + "\n";
}

std::string names(const CommandHelp& help) {
    std::string text;
    for (const OptionHelp& option : help.options) text += (text.empty() ? "" : " ") + std::string(option.name);
    return text;
}

// How bash completes the value of an option; empty: not at all.
std::string completionOf(const OptionHelp& option) {
    // The words may have blanks, which are to be quoted as those of file names are.
    if (!option.words.empty())
        return "compopt -o filenames\n            mapfile -t COMPREPLY < <(IFS=$'\\n' compgen -W '" + option.words +
               "' -- \"$cur\")\n            ";
    return option.endings.empty() ? "" : "_filedir '@(" + std::string(option.endings) + ")'\n            ";
}

// The branches of a case for the options that take values.
std::string valueBranches(const CommandHelp& help) {
    std::string text;
    std::string others;
    for (const OptionHelp& option : help.options) {
        if (option.value.empty()) continue;
        const std::string name(option.name);
        const std::string completion = completionOf(option);
        if (completion.empty())
            others += (others.empty() ? "" : " | ") + name;
        else
            text += "        " + name + ")\n            " + completion + "return\n            ;;\n";
    }
    return others.empty() ? text : text + "        " + others + ")\n            return\n            ;;\n";
}

}  // namespace

std::string manualPage(const CommandHelp& help, std::string_view date) {
    const std::string program = escaped(help.program);
    std::string text =
        ".TH " + inUpperCase(program) + " 1 " + std::string(date) + " \"Melvane " MELVANE_VERSION "\" Melvane\n";
    std::string purpose(help.purpose);
    purpose.front() = static_cast<char>(purpose.front() - 'A' + 'a');
    text += ".SH NAME\n" + program + " \\- " + escaped(purpose) + "\n" + synopsis(help) + ".SH DESCRIPTION\n";
    for (const std::string_view paragraph : help.description)
        text += (text.ends_with("DESCRIPTION\n") ? "" : ".PP\n") + escaped(paragraph) + "\n";
    text += optionSection(help) + section("EXIT STATUS", help.exits, "\\fB") + section("FILES", help.files, "\\fI") +
            section("EXAMPLES", help.examples, "\\fB") + ".SH SEE ALSO\n";
    return text + (help.program == "melvane" ? ".BR melvane\\-mix (1)\n" : ".BR melvane (1),\n.BR lame (1)\n");
}

std::string bashCompletion(const CommandHelp& help) {
    std::string function = "_" + std::string(help.program);
    std::ranges::replace(function, '-', '_');
    std::string text(kCompletion);
    fill(text, "@PROGRAM@", help.program);
    fill(text, "@FUNCTION@", function);
    fill(text, "@VALUES@", valueBranches(help));
    fill(text, "@OPTIONS@", names(help));
    fill(text, "@ENDINGS@", help.endings);
    return text;
}

}  // namespace melvane
