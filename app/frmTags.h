// The tags of the mix: the song's, and what the user has in their place. What is changed counts at once.
#pragma once

#include <QCheckBox>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>
#include <array>
#include <future>
#include <optional>
#include <string>

#include "app/mixer.h"
#include "controls/Ed_Button.h"
#include "controls/frameless_window.h"
#include "tags/song_tags.h"

namespace melvane {

class frmTags : public FramelessWindow {
    Q_OBJECT

public:
    // Everything passed in outlives the window; `owner` owns it.
    frmTags(Mixer& mixer, const Environment& environment, QWidget* owner);

    // Sets all texts from the current language.
    void GetTagsLanguage();
    // Shows the tags as they are now. Those of another song, and another cover, are read beside the window.
    void refresh();
    // A song was chosen, perhaps the same that has changed.
    void takeFiles();

protected:
    void changeEvent(QEvent* event) override;  // at another zoom the cover is another picture

private:
    struct Subject {
        std::string song;
        bool isMidi = false;
        std::optional<std::string> cover;

        bool operator==(const Subject&) const = default;
    };
    struct Sight {
        SongTags song;
        TagFault fault = TagFault::none;  // of the cover
        QImage picture;                   // null: none
    };

    static Sight look(const Subject& subject);
    void addFields();
    void addCover();
    void addButtons();
    void takeSight();
    void edit(std::size_t field, const QString& text);
    void chooseCover();
    void removeCover();
    void useSongsTags();
    void showAll();
    void showButtons();
    void showCover();

    Mixer& mixer_;
    const Environment environment_;
    std::optional<Subject> subject_;  // that is shown, or is read
    Sight sight_;
    std::future<Sight> search_;
    QTimer timer_;  // runs while something is read

    std::array<QLabel*, kTagFields> labels_{};
    std::array<QLineEdit*, kTagFields> fields_{};
    QLabel* picture_;
    QPushButton* choose_;
    QPushButton* remove_;
    QCheckBox* wanted_;
    QPushButton* reset_;
    Ed_Button* bOK_ = nullptr;
};

}  // namespace melvane
