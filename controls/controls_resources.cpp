#include "controls/controls_resources.h"

#include <QDir>

// In no namespace: the macro declares what it calls.
void initControlsResources() {
    Q_INIT_RESOURCE(controls);
}
