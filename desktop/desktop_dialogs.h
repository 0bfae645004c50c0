// Message boxes and file dialogs of the desktop, over the window of the program that they belong to.
#pragma once

#include <QString>
#include <string>

#include "platform/dialogs.h"

namespace melvane {

class DesktopDialogs : public Dialogs {
public:
    void tell(const std::string& text, const std::string& title, BoxIcon icon) override;
    BoxAnswer messageBox(const std::string& text, const std::string& title, BoxIcon icon, BoxButtons buttons) override;
    std::optional<std::size_t> choose(const std::string& text, const std::string& title,
                                      const std::vector<std::string>& answers) override;
    std::string openFile(const FileQuestion& question) override;
    std::string saveFile(const FileQuestion& question) override;
};

// "Sound (*mp3;*ogg)|**mp3;*ogg" as Qt writes it: "Sound (*mp3 *MP3 *ogg *OGG)".
QString nameFilter(const std::string& filter);

}  // namespace melvane
