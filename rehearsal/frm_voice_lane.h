// The voice on the song's time, which is dragged to its place.
#pragma once

#include <memory>
#include <optional>

#include "rehearsal/frm_lanes.h"
#include "settings/modLang.h"

namespace melvane {

class VoiceLane : public Lane {
    Q_OBJECT

public:
    VoiceLane(QWidget* window, const TimeView& view, const Rehearsal& rehearsal, const RunState& run,
              const modLang& language);

    void setOutline(std::shared_ptr<const WaveformPyramid> outline);
    // Of the song; 0 while it is not known.
    void setSongFrames(std::int64_t frames) { songFrames_ = frames; }

    static constexpr int kCoarseMs = 10;
    static constexpr int kFineMs = 1;
    // Earlier by so much: from the song's end to its own whole length before the song.
    void moveBy(int milliseconds);
    void putBack();

    Value value() const override;  // seconds before the song
    void setValue(double seconds) override;

Q_SIGNALS:
    // Between the two, the place changes as often as it likes: it is one change.
    void changeBegins();
    void changeEnds();
    void placeWanted(const VoicePlace& place);

protected:
    void drawPage(QPainter& painter) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    Extremes between(std::int64_t begin, std::int64_t end) const;
    double withinReach(double earlier) const;
    VoicePlace placeAt(double earlier) const;
    void change(const VoicePlace& place);

    const RunState& run_;
    const modLang& language_;
    std::shared_ptr<const WaveformPyramid> outline_;
    std::int64_t songFrames_ = 0;

    // While the mouse holds it.
    struct Hold {
        double x = 0;
        double earlier = 0;  // the place, before it is rounded
        bool moved = false;
    };
    std::optional<Hold> hold_;
};

}  // namespace melvane
