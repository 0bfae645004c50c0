// Message boxes and file dialogs. Called on the user-interface thread; each call but tell() returns when the user has
// answered.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace melvane {

enum class BoxIcon { none, information, question, critical };
enum class BoxButtons { ok, yesNoCancel };
enum class BoxAnswer { ok, yes, no, cancel };

// What a dialog for files asks for; its texts are in the user's language.
struct FileQuestion {
    std::string title;
    std::string filter;      // "label|pattern;pattern;"; the label may end with the patterns. Matching ignores case.
    std::string start;       // a folder, for saving with the proposed name; empty: where the user keeps music
    std::string button;      // says what is wanted
    std::string allFiles;    // label of another filter, which shows every file
    std::string wider = {};  // a filter in between that shows more, and is the one to begin with; empty: none
};

class Dialogs {
public:
    virtual ~Dialogs() = default;

    // A message that wants no answer: what goes on behind it goes on.
    virtual void tell(const std::string& text, const std::string& title, BoxIcon icon) = 0;
    virtual BoxAnswer messageBox(const std::string& text, const std::string& title, BoxIcon icon,
                                 BoxButtons buttons) = 0;
    // A question with buttons of its own: which of `answers` it is; none when cancelled.
    virtual std::optional<std::size_t> choose(const std::string& text, const std::string& title,
                                              const std::vector<std::string>& answers) = 0;
    // The result is an absolute UTF-8 path, empty when cancelled.
    virtual std::string openFile(const FileQuestion& question) = 0;
    // As openFile; an existing file is not asked about here.
    virtual std::string saveFile(const FileQuestion& question) = 0;
};

}  // namespace melvane
