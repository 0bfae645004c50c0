// The zoom of the windows, from one start to the next, and its keys: Ctrl+plus and Ctrl+minus, Ctrl+0 for 100 %, in
// every window.
#pragma once

#include <QObject>

#include "settings/settings_store.h"

namespace melvane {

// Before the first window. While there is one, every change of the zoom is stored at once, whoever made it.
class WindowZoom : public QObject {
public:
    // Takes the zoom that is stored or, before any was chosen, the one that suits the screen.
    explicit WindowZoom(const SettingsStore& store);

protected:
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    const SettingsStore& store_;
};

}  // namespace melvane
