// The toolkit's own texts: the buttons of boxes and file dialogs.
#pragma once

#include <QTranslator>
#include <string>

namespace melvane {

class ToolkitTexts {
public:
    // From now on they are in the language of this code; in English when the toolkit does not know it.
    void use(const std::string& languageCode);

private:
    QTranslator texts_;
};

}  // namespace melvane
