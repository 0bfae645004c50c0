#include "job/job.h"

namespace melvane {

namespace {

template <typename Values>
void compare(std::vector<JobChange>& changes, JobPart part, const Values& before, const Values& after) {
    for (std::size_t i = 0; i < before.size(); ++i)
        if (before[i] != after[i]) changes.push_back({part, i});
}

void compareChannel(std::vector<JobChange>& changes, std::size_t index, const ChannelChoice& before,
                    const ChannelChoice& after) {
    if (before.on != after.on)
        changes.push_back({JobPart::channelSwitch, index});
    else if (before.volume != after.volume)
        changes.push_back({JobPart::channelVolume, index});
    if (before.balance != after.balance) changes.push_back({JobPart::channelBalance, index});
    if (before.instrument != after.instrument) changes.push_back({JobPart::channelInstrument, index});
}

}  // namespace

std::vector<JobChange> changesBetween(const Job& before, const Job& after) {
    std::vector<JobChange> changes;
    compare(changes, JobPart::volume, before.volume, after.volume);
    if (before.sync != after.sync) changes.push_back({JobPart::sync, 0});
    if (before.key != after.key) changes.push_back({JobPart::key, 0});
    compare(changes, JobPart::tone, before.tone, after.tone);
    compare(changes, JobPart::balance, before.balance, after.balance);
    for (std::size_t i = 0; i < before.effects.size(); ++i) {
        if (before.effects[i].on != after.effects[i].on) changes.push_back({JobPart::effectSwitch, i});
        if (before.effects[i].level != after.effects[i].level) changes.push_back({JobPart::effectLevel, i});
    }
    if (before.preset != after.preset) changes.push_back({JobPart::preset, 0});
    if (before.place != after.place) changes.push_back({JobPart::place, 0});
    if (before.tags != after.tags) changes.push_back({JobPart::tags, 0});
    if (before.loudness != after.loudness) changes.push_back({JobPart::loudness, 0});
    if (before.trim != after.trim) changes.push_back({JobPart::trim, 0});
    for (std::int16_t c = 0; c < kMidiChannels; ++c) {
        compareChannel(changes, static_cast<std::size_t>(c), before.channels[c], after.channels[c]);
        if (((before.soloed ^ after.soloed) >> c & 1) != 0)
            changes.push_back({JobPart::channelSolo, static_cast<std::size_t>(c)});
    }
    return changes;
}

}  // namespace melvane
