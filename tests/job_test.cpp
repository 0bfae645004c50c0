// Jobs as records, documents and what is remembered of them.
#include "job/job_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>

#include "app/mixer_job.h"
#include "desktop/local_destinations.h"
#include "desktop/local_documents.h"
#include "desktop/registry_file.h"
#include "job/recent_jobs.h"
#include "tests/silent_parts.h"

namespace melvane {
namespace {

using namespace melvane::test;

// Nothing as in a new one.
Job oddJob(const std::string& folder) {
    Job job;
    job.files = {folder + "/zażółć \"1\"\n\\.kar", folder + "/deep/głos.wav", folder + "/../mix.mp3"};
    job.place = {-123456789012, 0.1 + 0.2};
    job.trim = -12.3F;
    job.loudness = -14.5F;
    job.key = -4.999999999999999;
    job.sync = 0.04F;
    job.volume = {0, 99};
    job.tone = {0, 1, 99, 100};
    job.balance = {-100, 103};
    job.effects = {{{true, 35}, {false, 100}, {true, 0}, {false, 1}, {true, 0}}};
    job.preset = 13;
    job.channels[0] = {true, 127, std::nullopt, std::nullopt};
    job.channels[3] = {false, std::nullopt, 0, 64};
    job.channels[15] = {true, 128, 1, 0};
    job.soloed = 0x8001;
    job.midiPort = 2;
    job.midiPortName = "Keys: 20:0";
    job.soundFont = "/usr/share/sounds/sf2/a.sf2";
    job.tags = {false, {"Zażółć \"1\"", "", std::nullopt, "1999", std::nullopt}, ""};
    return job;
}

std::string faultOf(const std::string& text) {
    try {
        readJobText(text, "");
        return "none";
    } catch (const JobError& error) {
        return std::to_string(static_cast<int>(error.fault)) + error.what();
    }
}

TEST(JobText, ComesBackToTheLastBit) {
    const TempDir dir;
    const Job job = oddJob(dir.path());
    for (const JobLayout layout : {JobLayout::document, JobLayout::line})
        EXPECT_EQ(readJobText(jobText(job, "", layout), ""), job);
    EXPECT_EQ(jobText(job, "", JobLayout::line).find('\n'), std::string::npos);
    EXPECT_NE(jobText(job, "").find("\"synchronisation\": 0.04,"), std::string::npos) << "the shortest that is exact";
    EXPECT_EQ(readJobText(R"({"melvane job": 1, "of a later program": [1]})", ""), Job());
}

TEST(JobText, TellsWhatIsWrong) {
    const std::string good = jobText(oddJob("/a"), "/b", JobLayout::line);
    for (std::size_t length = 0; length < good.size(); ++length)
        EXPECT_EQ(faultOf(good.substr(0, length)), std::to_string(static_cast<int>(JobFault::noJob))) << length;
    const std::string value = std::to_string(static_cast<int>(JobFault::value));
    const std::pair<const char*, std::string> cases[] = {
        {R"({"melvane job": 2})", std::to_string(static_cast<int>(JobFault::newer))},
        {R"({"melvane job": "1"})", std::to_string(static_cast<int>(JobFault::noJob))},
        {R"([{"melvane job": 1}])", std::to_string(static_cast<int>(JobFault::noJob))},
        {R"({"melvane job": 1, "key": 5.0001})", value + "key"},
        {R"({"melvane job": 1, "key": "1"})", value + "key"},
        {R"({"melvane job": 1, "volume": [100]})", value + "volume"},
        {R"({"melvane job": 1, "volume": [1.5, 2]})", value + "volume"},
        {R"({"melvane job": 1, "balance": [103, 0]})", value + "balance"},
        {R"({"melvane job": 1, "voice": {"earlier": 1e300}})", value + "voice: earlier"},
        {R"({"melvane job": 1, "voice": {"trim": 24.1}})", value + "voice: trim"},
        {R"({"melvane job": 1, "loudness": 0})", value + "loudness"},
        {R"({"melvane job": 1, "song": {"path": "a\u0000b"}})", value + "song: path"},
        {R"({"melvane job": 1, "channels": [{"on": true}]})", value + "channels: channel"},
        {R"({"melvane job": 1, "channels": [{"channel": 4, "on": false}]})", value + "channels: volume"},
        {R"({"melvane job": 1, "effects": [1]})", value + "effects"},
        {R"({"melvane job": 1, "solo": [17]})", value + "solo"},
    };
    for (const auto& [text, fault] : cases) EXPECT_EQ(faultOf(text), fault) << text;
}

TEST(JobFile, FindsItsFilesWhereItsFolderWasMoved) {
    TempDir dir;
    namespace fs = std::filesystem;
    LocalDocuments documents;
    fs::create_directories(dir / "old/deep");
    Job job;
    job.files = {dir.write("old/song.mp3", ""), dir.write("old/deep/voice.wav", ""), dir / "old/mix.mp3"};
    job.tags.cover = dir.write("old/cover.jpg", "");
    ASSERT_EQ(writeJobFile(documents, dir / "old/one.melvane", job), 0);
    fs::rename(dir / "old", dir / "new");
    EXPECT_EQ(readJobFile(documents, dir / "new/one.melvane").files,
              (PathFields{dir / "new/song.mp3", dir / "new/deep/voice.wav", dir / "new/mix.mp3"}));
    EXPECT_EQ(readJobFile(documents, dir / "new/one.melvane").tags.cover, dir / "new/cover.jpg");
    fs::copy(dir / "new", dir / "old", fs::copy_options::recursive);
    EXPECT_EQ(readJobFile(documents, dir / "new/one.melvane").files.background, dir / "new/song.mp3");
    fs::create_directory(dir / "alone");
    fs::rename(dir / "new/one.melvane", dir / "alone/one.melvane");
    EXPECT_EQ(readJobFile(documents, dir / "alone/one.melvane").files.background, dir / "old/song.mp3");
}

TEST(JobFile, IsReplacedWholeOrStays) {
    TempDir dir;
    LocalDocuments documents;
    modLang language;
    language.InitLanguage(FakeFileNames(), "en");
    const auto messageOf = [&](const std::string& path) {
        try {
            readJobFile(documents, path);
            return std::string();
        } catch (const JobError& error) {
            return jobMessage(language, error, path);
        }
    };
    const std::string path = dir.write("one.melvane", std::string(2 << 20, ' '));
    EXPECT_EQ(messageOf(path), "This file is no Melvane job, or it is damaged. The job cannot be opened: " + path);
    EXPECT_NE(messageOf(dir / "none").find("There is no such file"), std::string::npos);
    ASSERT_EQ(mkfifo((dir / "pipe").c_str(), 0600), 0);
    EXPECT_NE(messageOf(dir / "pipe").find("There is no such file"), std::string::npos);
    EXPECT_EQ(writeJobFile(documents, dir / "no folder/one.melvane", Job()), ENOENT);
    EXPECT_EQ(writeJobFile(documents, path, Job()), 0);
    EXPECT_EQ(messageOf(path), "");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), 2) << "nothing is left beside it";
}

TEST(RecentJobs, AreOneForEachSongAndVoiceTheLatestFirst) {
    TempDir dir;
    RegistryFile registry(dir / "registry.json");
    const SettingsStore store(registry);
    const RecentJobs recent(store);
    Job job = oddJob("/a");
    recent.add(job);
    for (const char* voice : {"/1", "/2", "/3", "/4", "/5", "/6", "/7"}) {
        job.files.vocal = voice;
        recent.add(job);
    }
    job = oddJob("/a");
    job.key = 1;
    recent.add(job);
    ASSERT_EQ(recent.list().size(), RecentJobs::kMost);
    EXPECT_EQ(recent.list()[0], job);
    EXPECT_EQ(recent.list()[7].files.vocal, "/1");
    store.WriteSetting(kRecentKey, "jobs", "{}\n" + jobText(job, "", JobLayout::line));
    EXPECT_EQ(recent.list(), std::vector{job});
}

struct MixerJob : SilentParts {
    LocalDestinations destinations{dir / "mixes"};
    Mixer mixer{{library, music, systemMixer, names, destinations, dialogs, shell, language, [] {}}};

    Job job() { return takeJob(mixer); }
    std::vector<std::string> restore(const Job& job) {
        return restoreJob(job, mixer, [] {});
    }
};

TEST_F(MixerJob, IsRestoredWholeAndWhatHasGoneIsNamed) {
    names.temporaryMidi = dir / "tmp.mid";
    Job wanted = oddJob(dir.path());
    wanted.files = {dir.write("song.mid", songOf("\x90\x93\x9F")), dir.write("voice.wav", ""), dir / "mix.mp3"};
    music.soundFont = wanted.soundFont = dir.write("a.sf2", "");
    music.ports = {"Synthesiser", "Other", "Keys: 20:0"};
    mixer.Form_Load(nullptr);
    EXPECT_EQ(restore(wanted), std::vector<std::string>());
    EXPECT_EQ(jobText(job(), ""), jobText(wanted, ""));
    EXPECT_TRUE(mixer.midi().onDevice());
    music.calls.clear();
    applyKnobs(wanted, mixer);
    EXPECT_EQ(music.calls, std::vector<std::string>()) << "what is so already is not sent again";

    std::filesystem::remove(wanted.files.background);
    wanted.files.destination = dir / "no folder/mix.mp3";
    wanted.channels = {};
    EXPECT_EQ(restore(wanted), (std::vector<std::string>{dir / "song.mid", dir / "no folder/mix.mp3"}));
    EXPECT_EQ(job().files, (PathFields{"", dir / "voice.wav", ""}));
    EXPECT_EQ(job().effects, wanted.effects) << "the rest is applied";
}

TEST_F(MixerJob, ChannelsGoBackToTheSongsOwnAndForthToTheUsers) {
    names.temporaryMidi = dir / "tmp.mid";
    mixer.Form_Load(nullptr);
    mixer.sourceFiles().chooseBackground(dir.write("song.mid", songOf("\x90\x93")));
    const Job before = job();
    mixer.midi().switchChannel(3, 0, false);
    mixer.midi().setChannelInstrument(0, 40);
    const Job after = job();
    EXPECT_EQ(changesBetween(before, after),
              (std::vector<JobChange>{{JobPart::channelInstrument, 0}, {JobPart::channelSwitch, 3}}));
    music.calls.clear();
    applyKnobs(before, mixer);
    EXPECT_EQ(job(), before);
    EXPECT_EQ(music.calls, Words{"liftChannelSettings"});
    music.calls.clear();
    applyKnobs(after, mixer);
    EXPECT_EQ(job(), after);
    EXPECT_EQ(music.calls, (Words{"sendPatch 0 1 0 40 0 0", "sendMidi 10 1 3 176 7 0"}));
}

}  // namespace
}  // namespace melvane
