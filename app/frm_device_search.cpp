#include "app/frm_device_search.h"

#include "state/window_patience.h"

namespace melvane {

namespace {
constexpr int kLookMs = 20;
}  // namespace

DeviceSearch::DeviceSearch(QObject* owner, Mixer& mixer, const Environment& environment)
    : QObject(owner), mixer_(mixer), environment_(environment) {
    timer_.setInterval(kLookMs);
    connect(&timer_, &QTimer::timeout, this, &DeviceSearch::look);
}

void DeviceSearch::start() {
    if (timer_.isActive()) return;
    ports_ = beside(environment_.music.portSearch());
    if (!mixer_.isRunning()) inputs_ = beside(environment_.library.inputSearch());
    timer_.start();
}

void DeviceSearch::look() {
    const bool portsCame = ports_.valid() && isReady(ports_);
    const bool inputsCame = inputs_.valid() && isReady(inputs_);
    if (portsCame) mixer_.midi().takePorts(ports_.get());
    if (inputsCame) {
        inputs_.get();
        if (!mixer_.isRunning()) environment_.library.BASS_RecordInit(-1);
    }
    if (!ports_.valid() && !inputs_.valid()) timer_.stop();
    if (portsCame || inputsCame) Q_EMIT found();
}

}  // namespace melvane
