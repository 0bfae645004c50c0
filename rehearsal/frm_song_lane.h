// The song on the timeline: its waveform, or the notes of a MIDI song in the colours of their channels.
#pragma once

#include <memory>

#include "midi/midi_background.h"
#include "rehearsal/frm_lanes.h"

namespace melvane {

class SongLane : public Lane {
    Q_OBJECT

public:
    SongLane(QWidget* window, const TimeView& view, const Rehearsal& rehearsal, const MidiState& midi);

    // nullptr: there is none. Notes are shown where the song has some.
    void setOutline(std::shared_ptr<const WaveformPyramid> outline);
    void setShowsNotes(bool shows);

protected:
    void drawPage(QPainter& painter) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    void drawNotes(QPainter& painter) const;
    bool isHeard(std::int16_t channel) const;

    const MidiState& midi_;
    std::shared_ptr<const WaveformPyramid> outline_;
    bool showsNotes_ = false;
};

}  // namespace melvane
