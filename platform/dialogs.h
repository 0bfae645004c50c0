// Message boxes and file dialogs. Called on the user-interface thread; each call returns when the user has
// answered.
#pragma once

#include <string>

namespace melvane {

enum class BoxIcon { none, information, question, critical };
enum class BoxButtons { ok, yesNoCancel };
enum class BoxAnswer { ok, yes, no, cancel };

class Dialogs {
public:
    virtual ~Dialogs() = default;

    virtual BoxAnswer messageBox(const std::string& text, const std::string& title, BoxIcon icon,
                                 BoxButtons buttons) = 0;
    // `filter` is "label|pattern;pattern;"; the label may end with the patterns. Matching ignores case. The
    // dialog opens in `initialDirectory`, or where the last one was left when that is empty. The result is an absolute
    // UTF-8 path, empty when cancelled.
    virtual std::string openFile(const std::string& title, const std::string& filter,
                                 const std::string& initialDirectory) = 0;
    // As openFile, with a name (and folder) filled in; an existing file is not asked about here.
    virtual std::string saveFile(const std::string& title, const std::string& filter,
                                 const std::string& proposedName) = 0;
};

}  // namespace melvane
