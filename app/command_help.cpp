#include "app/command_help.h"

namespace melvane {

std::string joinedEndings(const std::vector<std::string_view>& endings) {
    std::string joined;
    for (const std::string_view ending : endings) joined += (joined.empty() ? "" : "|") + std::string(ending);
    return joined;
}

std::string usageText(const CommandHelp& help) {
    const std::string program(help.program);
    std::string text;
    for (const std::string_view usage : help.usages)
        text += (text.empty() ? "Usage: " : "       ") + program + " " + std::string(usage) + "\n";
    text += std::string(help.purpose) + ".\n\n";
    for (const OptionHelp& option : help.options) {
        std::string left = "  " + std::string(option.name) + " " + std::string(option.value);
        left.resize(26, ' ');
        text += left + std::string(option.help) + "\n";
    }
    text += "\n" + std::string(help.note) + "\nExit status: ";
    for (const HelpTerm& exit : help.exits)
        text += (&exit == &help.exits.front() ? "" : ", ") + std::string(exit.term) + " " + std::string(exit.meaning);
    return text + ".\n";
}

}  // namespace melvane
