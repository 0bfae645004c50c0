#include "app/program_help.h"

#include "app/source_files.h"
#include "job/job_file.h"

namespace melvane {

CommandHelp programHelp() {
    return {
        .program = "melvane",
        .purpose = "Mixes a karaoke background and a vocal recording into one MP3 file, in windows",
        .usages = {"[FILE...]"},
        .description =
            {"Each FILE is a song (MP3, OGG, MIDI, KAR or what else has sound in it), a recording of a voice, or a job "
             "that was saved. They go to the fields of the main window as if they had been dropped there.",
             "One program runs in a session: when it runs already, it is given the files.",
             "The help in the program's menu tells of its windows."},
        .options = {{"--help", "", "show this text"}, {"--version", "", "show the version"}},
        .note =
            "Names that begin with a dash go behind --. Options of the windows' toolkit, such as -platform, are taken "
            "too.",
        .exits = {{"0", "closed"}, {"1", "could not start"}},
        .files = {{"~/.config/Tessaro", "what the program keeps of its windows and knobs"},
                  {"~/.local/state/Tessaro/unfinished mixes",
                   "the mixes that run; one that was cut off is brought back"},
                  {"*.melvane", "jobs: song, voice, its place, every knob and the destination of a mix"}},
        .examples = {{"melvane evening-ferry.kar my-voice.wav", "opens the window with a song and a voice"},
                     {"melvane evening-ferry.melvane", "takes up a job again"}},
        .endings = joinedEndings(soundEndings(true)) + "|" + std::string(kJobExtension).substr(1),
    };
}

}  // namespace melvane
