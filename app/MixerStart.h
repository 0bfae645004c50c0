// The start window: what the program is, and a button that goes on to the main window.
#pragma once

#include "controls/Ed_Button.h"
#include "controls/frameless_window.h"
#include "settings/modLang.h"

namespace melvane {

class MixerStart : public FramelessWindow {
    Q_OBJECT

public:
    explicit MixerStart(const modLang& language);

Q_SIGNALS:
    // Once; the button is off from then on.
    void continued();
    void closed();

protected:
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;  // Escape closes

private:
    Ed_Button* CON_;
    Ed_Button* bClose_;
};

}  // namespace melvane
