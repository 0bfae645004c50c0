#include "app/midi_background.h"

namespace melvane {

MidiBackground::MidiBackground(MusicSystem& music, SystemMixer& systemMixer, RunState& run, Settings& settings,
                               const FileNames& names, Dialogs& dialogs, const DoEvents& doEvents)
    : lines(systemMixer, settings, dialogs),
      channels(state, device, settings, doEvents),
      playback(music, device, state, channels, run, settings, names, doEvents) {}

void MidiBackground::prepare() {
    lines.OpenMixer();
    lines.keepSpeakerTone();
    playback.ReadMap();
}

void MidiBackground::open(std::string fileName) {
    playback.OpenMidi(fileName);
}

void MidiBackground::close() {
    playback.CloseDevice();
    channels.updateChannels();
}

void MidiBackground::applyVolumeAndBalance() {
    channels.SetMidiVolume();
    lines.SetSynthBalance();
}

void MidiBackground::setTone() {
    lines.SetSpeakerBass();
    lines.SetSpeakerTreble();
}

void MidiBackground::restoreTone() {
    lines.RestoreSpeakerBass();
    lines.RestoreSpeakerTreble();
}

}  // namespace melvane
