#include "engine/capture/command_line.h"

namespace melvane::engine {

std::vector<std::string> commandWords(std::string_view commandLine) {
    std::vector<std::string> words;
    bool inWord = false;
    bool quoted = false;
    for (std::size_t i = 0; i < commandLine.size(); ++i) {
        char c = commandLine[i];
        if (!quoted && c == ' ') {
            inWord = false;
            continue;
        }
        if (!inWord) words.emplace_back();
        inWord = true;
        if (c == '"') {
            quoted = !quoted;
            continue;
        }
        if (quoted && c == '\\' && i + 1 < commandLine.size()) c = commandLine[++i];
        words.back() += c;
    }
    return words;
}

}  // namespace melvane::engine
