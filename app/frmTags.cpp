#include "app/frmTags.h"

#include <QBuffer>
#include <QEvent>
#include <QImageReader>
#include <QRegularExpressionValidator>
#include <utility>

#include "base/paths.h"
#include "controls/control_name.h"
#include "controls/window_layout.h"
#include "controls/window_region.h"
#include "controls/zoom.h"
#include "mixing/run_messages.h"
#include "settings/guarded.h"
#include "state/window_patience.h"
#include "tags/mix_tag.h"

namespace melvane {

namespace {

constexpr QRect kPicture(kLeft, 32, 118, 118);
constexpr QRect kChoose(kLeft, 154, 118, 24);
constexpr QRect kRemove(kLeft, 180, 118, 24);
constexpr QRect kLabel(142, 32, 76, 22);
constexpr QRect kField(220, 32, kRight - 220, 22);
constexpr int kRowStep = 24;
constexpr QRect kWanted(142, 154, kRight - 142, 22);
constexpr QRect kReset(142, 180, 186, 24);
constexpr QRect kOK(kRight - 110, 179, 110, 26);

constexpr int kLookMs = 20;
constexpr int kLongestText = 300;     // characters
constexpr int kLargestPicture = 720;  // pixels of a side: the preview at the largest zoom and twice that
constexpr const char* kDialogTitle = "melvane";
constexpr const char* kPictureFilter = " (*.jpg;*.jpeg;*.png)|*.jpg;*.jpeg;*.png;";

constexpr struct {
    const char* name;
    OwnText text;
} kFields[kTagFields] = {{"title", OwnText::tagTitle},
                         {"artist", OwnText::tagArtist},
                         {"album", OwnText::tagAlbum},
                         {"year", OwnText::tagYear},
                         {"genre", OwnText::tagGenre}};

// Not larger than it is ever shown; null where it is damaged.
QImage pictureOf(const Cover& cover) {
    QByteArray bytes = QByteArray::fromRawData(cover.bytes.data(), static_cast<qsizetype>(cover.bytes.size()));
    QBuffer buffer(&bytes);
    QImageReader reader(&buffer, QByteArray(cover.mime).mid(QByteArrayView("image/").size()));
    const QSize size = reader.size();
    if (size.width() > kLargestPicture || size.height() > kLargestPicture)
        reader.setScaledSize(
            size.scaled({kLargestPicture, kLargestPicture}, Qt::KeepAspectRatio).expandedTo(QSize(1, 1)));
    return reader.read();
}

}  // namespace

frmTags::frmTags(Mixer& mixer, const Environment& environment, QWidget* owner)
    : FramelessWindow(kWideRegion, kGripHeight, owner), mixer_(mixer), environment_(environment) {
    setObjectName(QStringLiteral("frmTags"));
    addTitle(kCaption);
    addFields();
    addCover();
    addButtons();
    timer_.setInterval(kLookMs);
    connect(&timer_, &QTimer::timeout, this, &frmTags::takeSight);
    GetTagsLanguage();
}

void frmTags::addFields() {
    for (std::size_t i = 0; i < kTagFields; ++i) {
        const int down = static_cast<int>(i) * kRowStep;
        labels_[i] = new QLabel(this);
        labels_[i]->setObjectName(QStringLiteral("label_") + QLatin1String(kFields[i].name));
        layOut(labels_[i], kLabel.translated(0, down));
        fields_[i] = new QLineEdit(this);
        fields_[i]->setObjectName(QLatin1String(kFields[i].name));
        fields_[i]->setMaxLength(kLongestText);
        layOut(fields_[i], kField.translated(0, down));
        connect(fields_[i], &QLineEdit::textEdited, this, [this, i](const QString& text) { edit(i, text); });
    }
    fields_[kYearTag]->setValidator(
        new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[0-9]{0,4}")), this));
}

void frmTags::addCover() {
    picture_ = new QLabel(this);
    picture_->setObjectName(QStringLiteral("picture"));
    picture_->setAlignment(Qt::AlignCenter);
    picture_->setWordWrap(true);
    layOut(picture_, kPicture);
}

void frmTags::addButtons() {
    const auto addPush = [this](const char* name, const QRect& place, auto click) {
        auto* button = new QPushButton(this);
        button->setObjectName(QLatin1String(name));
        layOut(button, place);
        connect(button, &QPushButton::clicked, this,
                [this, click] { guarded(environment_.dialogs, environment_.language, [&] { (this->*click)(); }); });
        return button;
    };
    choose_ = addPush("chooseCover", kChoose, &frmTags::chooseCover);
    wanted_ = new QCheckBox(this);
    wanted_->setObjectName(QStringLiteral("wanted"));
    layOut(wanted_, kWanted);
    connect(wanted_, &QCheckBox::clicked, this, [this](bool on) {
        mixer_.tags().wanted = on;
        showAll();
    });
    remove_ = addPush("removeCover", kRemove, &frmTags::removeCover);
    reset_ = addPush("songsTags", kReset, &frmTags::useSongsTags);
    bOK_ = addButton(this, "bOK", kOK, ButtonLook::plain, Symbol::close, [this] { close(); });
}

// The text that the song has itself is no choice of the user's.
void frmTags::edit(std::size_t field, const QString& text) {
    const std::string chosen = text.toStdString();
    auto& choice = mixer_.tags().texts[field];
    if (chosen == sight_.song.texts[field])
        choice.reset();
    else
        choice = chosen;
    showButtons();
}

void frmTags::chooseCover() {
    const modLang& language = environment_.language;
    const std::string song = mixer_.fields().background;
    const std::string near = mixer_.tags().cover.value_or("").empty() ? song : *mixer_.tags().cover;
    const std::string file = environment_.dialogs.openFile(
        {kDialogTitle, language.ownText(OwnText::pictures) + kPictureFilter, toText(toPath(near).parent_path()),
         language.ownText(OwnText::chooseCoverHere), language.ownText(OwnText::allFiles)});
    if (file.empty()) return;
    const auto fault = whileWanted(
        environment_.doEvents, [this] { return !mixer_.sourceFiles().givenUp(); },
        [file] {
            const CoverRead read = readCover(file);
            return read.cover && pictureOf(*read.cover).isNull() ? TagFault::coverNoPicture : read.fault;
        });
    if (!fault || song != mixer_.fields().background) return;
    if (*fault != TagFault::none)
        return environment_.dialogs.tell(
            coverCause(language, *fault) + " " + language.ownText(OwnText::cannotUseCover, file), kProductCaption,
            BoxIcon::information);
    mixer_.tags().cover = file;
    refresh();
}

void frmTags::removeCover() {
    mixer_.tags().cover = "";
    refresh();
}

void frmTags::useSongsTags() {
    mixer_.tags().clear();
    refresh();
}

void frmTags::takeFiles() {
    subject_.reset();
    refresh();
}

void frmTags::refresh() {
    const Subject subject{mixer_.fields().background, mixer_.run().isMidiBackground, mixer_.tags().cover};
    if (subject != subject_) {
        if (!subject_ || subject_->song != subject.song) sight_ = {};
        subject_ = subject;
        search_ = beside([subject] { return look(subject); });
        timer_.start();
    }
    showAll();
}

frmTags::Sight frmTags::look(const Subject& subject) {
    Sight sight;
    if (!subject.song.empty()) sight.song = readSongTags(subject.song, subject.isMidi);
    const CoverRead read = chosenCover(sight.song, {.cover = subject.cover});
    sight.fault = read.fault;
    if (read.cover) sight.picture = pictureOf(*read.cover);
    if (read.cover && sight.picture.isNull()) sight.fault = TagFault::coverNoPicture;
    return sight;
}

void frmTags::takeSight() {
    if (!isReady(search_)) return;
    timer_.stop();
    guarded(environment_.dialogs, environment_.language, [this] { sight_ = search_.get(); });
    showAll();
}

void frmTags::showAll() {
    const TagChoice& choice = mixer_.tags();
    const bool on = choice.wanted && !mixer_.fields().background.empty();
    for (std::size_t i = 0; i < kTagFields; ++i) {
        const QString text = toQt(choice.texts[i].value_or(sight_.song.texts[i]));
        if (fields_[i]->text() != text) {
            fields_[i]->setText(text);
            fields_[i]->home(false);  // its beginning is seen
        }
        fields_[i]->setEnabled(on);
    }
    showButtons();
    showCover();
}

void frmTags::showButtons() {
    const TagChoice& choice = mixer_.tags();
    const bool on = choice.wanted && !mixer_.fields().background.empty();
    wanted_->setChecked(choice.wanted);
    choose_->setEnabled(on);
    remove_->setEnabled(on && choice.cover != "" && (choice.cover || sight_.song.cover));
    TagChoice songs = choice;
    songs.clear();
    reset_->setEnabled(on && choice != songs);
}

void frmTags::showCover() {
    const modLang& language = environment_.language;
    const std::string fault = coverCause(language, sight_.fault);
    const QString text = toQt(fault.empty() ? language.ownText(OwnText::noCover) : fault);
    picture_->setAccessibleDescription(sight_.picture.isNull() ? text : QString());
    if (sight_.picture.isNull()) return picture_->setText(text);
    const double ratio = devicePixelRatioF();
    const QSize room = picture_->contentsRect().size() * ratio;
    QPixmap shown = QPixmap::fromImage(sight_.picture.scaled(room, Qt::KeepAspectRatio, Qt::SmoothTransformation));
    shown.setDevicePixelRatio(ratio);
    picture_->setPixmap(shown);
}

void frmTags::changeEvent(QEvent* event) {
    FramelessWindow::changeEvent(event);
    if (event->type() == QEvent::StyleChange && bOK_) showCover();
}

void frmTags::GetTagsLanguage() {
    const modLang& language = environment_.language;
    const auto own = [&](OwnText text) { return toQt(language.ownText(text)); };
    const auto setTexts = [](QAbstractButton* button, const QString& text) {
        button->setText(text);
        setName(button, text);
    };
    setTitle(own(OwnText::tagsOfMix));
    for (std::size_t i = 0; i < kTagFields; ++i) {
        labels_[i]->setText(own(kFields[i].text));
        setName(fields_[i], labels_[i]->text());
        fields_[i]->setPlaceholderText(own(OwnText::noTag));
    }
    setName(picture_, own(OwnText::cover));
    setTexts(choose_, own(OwnText::chooseCover));
    setTexts(remove_, own(OwnText::removeCover));
    setTexts(wanted_, own(OwnText::writeTags));
    setTexts(reset_, own(OwnText::songsTags));
    const QString close = toQt(language.lang(LangEntry::close));
    setButtonText(bOK_, close, close);
    refresh();
}

}  // namespace melvane
