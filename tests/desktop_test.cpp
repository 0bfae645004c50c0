// The desktop that the program runs on: files, folders, dialogs, signals.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QLineEdit>
#include <QListView>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <chrono>
#include <csignal>
#include <functional>
#include <future>
#include <string>
#include <utility>

#include "desktop/desktop_dialogs.h"
#include "desktop/end_signals.h"
#include "desktop/library_file.h"
#include "desktop/local_file_names.h"
#include "desktop/private_folder.h"
#include "desktop/running_program.h"
#include "tests/temp_dir.h"

namespace melvane {
namespace {

using namespace melvane::test;
namespace fs = std::filesystem;

TEST(LocalFileNames, CommandLineWordsAreQuotedWhereNeeded) {
    for (const char* plain : {"/a/żółw's.mp3", "-x", "/\xFF\x80"})
        EXPECT_EQ(LocalFileNames().commandLineWord(plain), plain);
    for (const auto& [path, word] : {std::pair("/a b", "\"/a b\""),
                                     {"\tb\n", "\"\tb\n\""},
                                     {"/a\"b", R"("/a\"b")"},
                                     {R"(C:\x)", R"("C:\\x")"},
                                     {"", R"("")"}})
        EXPECT_EQ(LocalFileNames().commandLineWord(path), word) << path;
}

TEST(LocalFileNames, PathsBecomeAbsoluteByteByByte) {
    const LocalFileNames names;
    const std::string here = QDir::currentPath().toStdString();
    for (const std::string name : {"-o.mp3", "歌 ż.mp3", "\xFF\xC5.mp3", "a/../b"})
        EXPECT_EQ(names.shortPath(name), here + "/" + name);
    EXPECT_EQ(names.shortPath("/x//y\xFF"), "/x//y\xFF");
    EXPECT_EQ(names.shortPath(""), "");
    EXPECT_TRUE(QDir::isAbsolutePath(QString::fromStdString(names.systemDirectory())));
    EXPECT_EQ(names.programDirectory(), QFileInfo(QStringLiteral("/proc/self/exe")).canonicalPath().toStdString());
}

TEST(LocalFileNames, ASongThatWasTakenOutLiesInAFolderOfThisProcess) {
    const TempDir places;
    const std::string home = places / "run";
    fs::create_directories(home + "/melvane-song-mine!!");
    std::ofstream(home + "/melvane-song-mine!!/tmp.mid") << "a user's own";
    setenv("XDG_RUNTIME_DIR", home.c_str(), 1);
    const LocalFileNames one;
    auto other = std::make_unique<LocalFileNames>();
    const fs::path song = one.temporaryMidiFile();
    const fs::path released = other->temporaryMidiFile();
    EXPECT_EQ(song, one.temporaryMidiFile());
    EXPECT_NE(song, released);
    EXPECT_EQ(song.filename(), "tmp.mid");
    EXPECT_EQ(fs::path(home), song.parent_path().parent_path());
    EXPECT_EQ(fs::status(song.parent_path()).permissions(), fs::perms::owner_all);
    std::ofstream(song) << "song";
    std::ofstream(released) << "song";
    other.reset();
    EXPECT_FALSE(fs::exists(released.parent_path()));

    const auto folders = [&] { return std::distance(fs::directory_iterator(home), {}); };
    const auto before = folders();
    const pid_t child = fork();
    if (child == 0) {
        const LocalFileNames killed;
        std::ofstream(killed.temporaryMidiFile()) << "song";
        _exit(0);
    }
    waitpid(child, nullptr, 0);
    EXPECT_EQ(folders(), before + 1);
    PrivateFolder::removeLeftovers();
    EXPECT_EQ(folders(), before) << "what a killed process left is gone";
    EXPECT_TRUE(fs::exists(song) && fs::exists(home + "/melvane-song-mine!!/tmp.mid"));
}

TEST(LibraryFile, WhatIsNoAudioLibraryIsRefused) {
    const TempDir dir;
    const std::string garbage = dir.write("libbass.so", "\177ELF and nothing more");
    LibraryFile library;
    EXPECT_TRUE(library.exists(garbage));
    EXPECT_FALSE(library.exists(dir.path()) || library.exists(""));
    const std::string elsewhere = "libm.so.6";  // found by its bare name, were it looked for
    for (const std::string& path : {garbage, dir.path(), garbage + "x", elsewhere, std::string()})
        EXPECT_FALSE(library.load(path)) << path;
    EXPECT_EQ(library.BASS_GetVersion(), 0U);
    EXPECT_EQ(library.create({}), nullptr);
}

class DialogsTest : public testing::Test {
protected:
    // Runs `act` on the next dialog of type D that opens.
    template <typename D>
    void whenOpen(std::function<void(D&)> act) {
        QTimer::singleShot(0, &application_, [this, act] {
            if (auto* dialog = qobject_cast<D*>(QApplication::activeModalWidget()))
                act(*dialog);
            else
                whenOpen<D>(act);
        });
    }
    static void SetUpTestSuite() { qputenv("QT_QPA_PLATFORM", "offscreen"); }

    int argc_ = 1;
    char name_[5] = "test";
    char* argv_[2] = {name_, nullptr};
    QApplication application_{argc_, argv_};
    DesktopDialogs dialogs_;
};

TEST_F(DialogsTest, SignalsThatEndTheProgramAreEvents) {
    int came = 0;
    const EndSignals signals([&] { ++came; });
    for (const int number : {SIGTERM, SIGINT, SIGHUP}) std::raise(number);
    EXPECT_EQ(came, 0);
    for (int i = 0; i < 100 && came < 3; ++i) QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
    EXPECT_EQ(came, 3);
}

TEST_F(DialogsTest, FiltersHideTheirPatternsAndMatchBothCases) {
    const std::pair<const char*, const char*> cases[] = {
        {"Audio files (*mp3;*ogg;*mid;*midi;*kar)|**mp3;*ogg;*mid;*kar;*midi",
         "Audio files (*mp3 *MP3 *ogg *OGG *mid *MID *kar *KAR *midi *MIDI)"},
        {"Pliki audio *wav;|*wav;", "Pliki audio (*wav *WAV)"},
        {"Skompresowane plik audio (*mp3;)|*mp3;", "Skompresowane plik audio (*mp3 *MP3)"}};
    for (const auto& [filter, expected] : cases) EXPECT_EQ(nameFilter(filter).toStdString(), expected);
}

TEST_F(DialogsTest, BoxesAnswerWithTheirButton) {
    const std::pair<QMessageBox::StandardButton, BoxAnswer> cases[] = {
        {QMessageBox::Yes, BoxAnswer::yes}, {QMessageBox::No, BoxAnswer::no}, {QMessageBox::Cancel, BoxAnswer::cancel}};
    for (const auto& [button, answer] : cases) {
        whenOpen<QMessageBox>([button = button](QMessageBox& box) {
            EXPECT_EQ(box.textFormat(), Qt::PlainText);
            box.button(button)->click();
        });
        EXPECT_EQ(dialogs_.messageBox("<b>ż", "Melvane", BoxIcon::question, BoxButtons::yesNoCancel), answer);
    }
    whenOpen<QMessageBox>([](QMessageBox& box) { box.reject(); });
    EXPECT_EQ(dialogs_.messageBox("text", "", BoxIcon::question, BoxButtons::yesNoCancel), BoxAnswer::cancel);
    whenOpen<QMessageBox>([](QMessageBox& box) { box.reject(); });
    EXPECT_EQ(dialogs_.messageBox("text", "", BoxIcon::critical, BoxButtons::ok), BoxAnswer::ok);
}

TEST_F(DialogsTest, ABoxBelongsToAWindowWhoeverHasTheFocus) {
    QWidget window;
    window.show();
    whenOpen<QMessageBox>([&](QMessageBox& box) {
        EXPECT_EQ(box.parentWidget(), &window);
        box.reject();
    });
    ASSERT_EQ(QApplication::activeWindow(), nullptr);
    dialogs_.messageBox("text", "", BoxIcon::information, BoxButtons::ok);
}

TEST_F(DialogsTest, AMessageWithoutAQuestionHoldsUpNothing) {
    QWidget window;
    window.show();
    QTimer::singleShot(2000, &window, [] { QApplication::activeModalWidget()->close(); });
    dialogs_.tell("<b>ż", "Melvane", BoxIcon::critical);
    auto* box = window.findChild<QMessageBox*>();
    ASSERT_TRUE(box && box->isVisible()) << "nobody has closed it";
    EXPECT_EQ(box->text(), QStringLiteral("<b>ż"));
    EXPECT_EQ(box->textFormat(), Qt::PlainText);
    box->reject();
    EXPECT_FALSE(box->isVisible());
}

// What ended without a farewell leaves its socket.
TEST_F(DialogsTest, AProgramThatIsStartedAgainGivesItsFilesToTheOneThatRuns) {
    const TempDir dir;
    const QString place = QString::fromStdString(dir / "socket");
    const int dead = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{AF_UNIX, {}};
    (dir / "socket").copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(bind(dead, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    close(dead);
    RunningProgram first(place);
    QStringList taken;
    QObject::connect(&first, &RunningProgram::startedAgain, [&](const QStringList& files) { taken << files; });
    EXPECT_FALSE(first.handOver({QStringLiteral("/own.mp3")}));
    EXPECT_EQ(QFile::permissions(place) & (QFile::ReadOther | QFile::WriteOther | QFile::WriteGroup),
              QFile::Permissions());

    const QStringList files{QStringLiteral("/pieśń.mp3"), QStringLiteral("/voice.wav")};
    const auto startAgain = [&] { return RunningProgram(place).handOver(files); };
    auto second = std::async(std::launch::async, startAgain);
    while (second.wait_for(std::chrono::milliseconds(5)) != std::future_status::ready)
        QCoreApplication::processEvents();
    EXPECT_TRUE(second.get());
    QCoreApplication::processEvents();
    EXPECT_EQ(taken, files);
    EXPECT_FALSE(startAgain()) << "one that hangs does not keep another from starting";
}

TEST_F(DialogsTest, SavingProposesTheNameAndTakesAnExistingOne) {
    const TempDir dir;
    const std::string proposed = dir.write("-pieśń 1.mp3", "");
    whenOpen<QFileDialog>([&](QFileDialog& dialog) {
        EXPECT_EQ(dialog.windowTitle(), QStringLiteral("melvane"));
        EXPECT_EQ(dialog.selectedFiles().value(0).toStdString(), proposed);
        dialog.findChild<QLineEdit*>()->setText(QStringLiteral("-pieśń 1.mp3"));
        static_cast<QDialog&>(dialog).accept();
    });
    EXPECT_EQ(dialogs_.saveFile({"melvane", "Files (*mp3;)|*mp3;", proposed, "Save mix", "All"}), proposed);
    for (const char* name : {"a.WAV", "b.wav", "c.Wav", "d.txt"}) dir.write(name, "");
    for (const auto& [start, folder] : {std::pair(dir.path(), dir.path()), {"", dir / "Music"}}) {
        qputenv("HOME", dir.path().c_str());
        QDir().mkpath(QString::fromStdString(dir / "Music"));
        whenOpen<QFileDialog>([&, shown = folder](QFileDialog& dialog) {
            EXPECT_EQ(dialog.directory().path().toStdString(), shown);
            EXPECT_EQ(dialog.labelText(QFileDialog::Accept), QStringLiteral("Open voice"));
            EXPECT_EQ(dialog.nameFilters().value(1), QStringLiteral("All (*)"));
            const auto* list = dialog.findChild<QListView*>(QStringLiteral("listView"));
            QElapsedTimer patience;
            patience.start();
            const int wanted = shown == dir.path() ? 4 : 0;  // and the folder
            while (list->model()->rowCount(list->rootIndex()) != wanted && patience.elapsed() < 5000)
                QCoreApplication::processEvents();
            EXPECT_EQ(list->model()->rowCount(list->rootIndex()), wanted) << "upper and lower case alike";
            dialog.reject();
        });
        EXPECT_EQ(dialogs_.openFile({"melvane", "Files *wav;|*wav;", start, "Open voice", "All"}), "");
    }
}

}  // namespace
}  // namespace melvane
