// The program with its windows. Implementations of the platform's interfaces are chosen here.
#include <QApplication>
#include <QFileInfo>
#include <csignal>
#include <cstdio>
#include <span>
#include <string>
#include <string_view>

#include "app/program.h"
#include "app/program_help.h"
#include "controls/program_icon.h"
#include "controls/skin.h"
#include "desktop/desktop_dialogs.h"
#include "desktop/desktop_shell.h"
#include "desktop/end_signals.h"
#include "desktop/library_file.h"
#include "desktop/local_destinations.h"
#include "desktop/local_documents.h"
#include "desktop/local_file_names.h"
#include "desktop/private_folder.h"
#include "desktop/registry_file.h"
#include "desktop/running_program.h"
#include "music/music.h"

namespace melvane {

namespace {

// What is told instead of opening a window; empty: nothing.
std::string toldInstead(std::span<const char* const> arguments) {
    for (const std::string_view argument : arguments) {
        if (argument == "--") break;
        if (argument == "--help") return usageText(programHelp());
        if (argument == "--version") return "melvane " MELVANE_VERSION "\n";
    }
    return "";
}

// What was named behind the program's name, as absolute paths.
QStringList filesOf(QStringList arguments) {
    arguments.removeFirst();
    arguments.removeOne(QStringLiteral("--"));
    QStringList files;
    for (const QString& argument : arguments) files << QFileInfo(argument).absoluteFilePath();
    return files;
}

std::vector<std::string> toPaths(const QStringList& files) {
    std::vector<std::string> paths;
    for (const QString& file : files) paths.push_back(file.toStdString());
    return paths;
}

std::function<Instruments(AudioLibrary&)> maker(const music::MusicOptions& options) {
    return [options](AudioLibrary& library) {
        music::Music made = music::createMusic(library, options);
        return Instruments{std::move(made.system), std::move(made.mixer)};
    };
}

int run() {
    const QStringList files = filesOf(QCoreApplication::arguments());
    RunningProgram running;
    if (running.handOver(files)) return 0;
    RegistryFile registry(RegistryFile::defaultPath());
    PrivateFolder::removeLeftovers();
    const LocalFileNames names;
    const LocalFileNames otherNames;
    LocalDocuments documents;
    LocalDestinations destinations(LocalDestinations::usualJournal());
    DesktopDialogs dialogs;
    DesktopShell shell;
    LibraryFile libraryFile;
    Program program({libraryFile, maker({}), registry, names, destinations, documents, dialogs, shell,
                     maker({.devicePorts = false}), otherNames},
                    toPaths(files));
    QObject::connect(&running, &RunningProgram::startedAgain, &program.startWindow(),
                     [&](const QStringList& more) { program.startedAgain(toPaths(more)); });
    const EndSignals signals([&program] { program.endSession(); });
    return QApplication::exec();
}

}  // namespace

}  // namespace melvane

int main(int argc, char** argv) {
    if (const std::string told = melvane::toldInstead({argv, static_cast<std::size_t>(argc)}); !told.empty()) {
        std::fputs(told.c_str(), stdout);
        return 0;
    }
#ifdef SIGCHLD
    // The encoder's exit status is wanted, whatever the parent had set.
    std::signal(SIGCHLD, SIG_DFL);
#endif
#ifdef SIGXFSZ
    // A file that may not grow shows as a failed write.
    std::signal(SIGXFSZ, SIG_IGN);
#endif
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("melvane"));
    QGuiApplication::setDesktopFileName(QStringLiteral("melvane"));
    melvane::applyStyle(app);
    QApplication::setWindowIcon(melvane::programIcon());
    try {
        return melvane::run();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "melvane: %s\n", error.what());
        return melvane::Program::kCannotStart;
    }
}
