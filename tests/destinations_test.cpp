// What stands at a destination while a mix is made for it, and afterwards.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <map>
#include <set>
#include <thread>
#include <vector>

#include "desktop/local_destinations.h"
#include "tests/temp_dir.h"

namespace {
// As on file systems that don't know it.
bool noExclusiveRenaming = false;
}  // namespace

extern "C" int renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) noexcept {
    if (!noExclusiveRenaming) return static_cast<int>(syscall(SYS_renameat2, fromFolder, from, toFolder, to, flags));
    errno = EINVAL;
    return -1;
}

namespace melvane {
namespace {

using namespace melvane::test;
namespace fs = std::filesystem;
using Names = std::set<std::string>;

struct DestinationsFixture : testing::Test {
    Names files() const {
        Names names;
        for (const auto& entry : fs::recursive_directory_iterator(dir.path()))
            if (!fs::is_directory(entry.symlink_status()))
                names.insert(entry.path().lexically_relative(dir.path()).string());
        return names;
    }
    ClaimFailure failure(const std::string& name, bool mayReplace = true) {
        return destinations.claim(dir / name, mayReplace).failure;
    }

    TempDir dir;
    TempDir state;
    LocalDestinations destinations{state / "mixes"};
};

TEST_F(DestinationsFixture, ANewFileTakesThePlaceInOneStepAndWithItsMode) {
    fs::create_directories(dir / "real/deep");
    const std::string longest = std::string(251, 'x') + ".mp3";
    fs::create_symlink("real/deep/" + longest, dir / "link.mp3");
    for (const std::string& name : {std::string("new.mp3"), "real/../real/deep/" + longest, std::string("link.mp3")}) {
        const bool stood = fs::exists(dir / name);
        if (stood) fs::permissions(dir / name, fs::perms(0640));
        const Names before = files();
        const std::string content = readFile(dir / name);
        for (const bool completed : {false, true}) {
            auto claim = destinations.claim(dir / name, true);
            ASSERT_EQ(claim.failure, ClaimFailure::none) << name;
            EXPECT_EQ(readFile(dir / name), stood ? content : "\r\n");
            const std::string written = claim.destination->privateFile();
            EXPECT_EQ(fs::path(written).parent_path(), fs::canonical(dir / name).parent_path());
            std::ofstream(written) << "mix of " << name;
            EXPECT_EQ(failure(name), ClaimFailure::busy);
            EXPECT_EQ(claim.destination->prepend("the "), 0);
            EXPECT_EQ(readFile(written), "the mix of " + name);
            if (completed) {
                EXPECT_EQ(claim.destination->replace(), 0);
            }
            claim.destination.reset();
            EXPECT_EQ(readFile(dir / name), completed ? "the mix of " + name : content);
            if (!completed) {
                EXPECT_EQ(files(), before);
            }
        }
        EXPECT_EQ(fs::status(dir / name).permissions() == fs::perms(0640), stood);
    }
    EXPECT_EQ(files(), (Names{"link.mp3", "new.mp3", "real/deep/" + longest}));
    EXPECT_TRUE(fs::is_symlink(dir / "link.mp3"));
}

TEST_F(DestinationsFixture, WhatIsNoPlaceForAMixIsLeftAlone) {
    fs::create_directory(dir / "folder.mp3");
    mkfifo((dir / "pipe.mp3").c_str(), 0600);
    fs::create_symlink("nothing.mp3", dir / "dangling.mp3");
    fs::create_symlink("round.mp3", dir / "round.mp3");
    dir.write("old.mp3", "old");
    const Names before = files();
    const std::map<std::string, int> causes = {{"folder.mp3", EISDIR},   {"pipe.mp3", EISDIR},
                                               {"dangling.mp3", ELOOP},  {"round.mp3", ELOOP},
                                               {"none/mix.mp3", ENOENT}, {std::string(300, 'x'), ENAMETOOLONG}};
    for (const auto& [name, cause] : causes)
        for (const bool mayReplace : {true, false}) {
            const DestinationClaim claim = destinations.claim(dir / name, mayReplace);
            EXPECT_EQ(claim.failure, ClaimFailure::notWritable) << name;
            EXPECT_EQ(claim.cause, cause) << name;
        }
    EXPECT_EQ(failure("old.mp3", false), ClaimFailure::exists);
    auto claim = destinations.claim(dir / "mix.mp3", false);
    std::ofstream(claim.destination->privateFile()) << "mix";
    fs::remove(dir / "mix.mp3");
    fs::create_directory(dir / "mix.mp3");
    EXPECT_EQ(claim.destination->replace(), EISDIR);
    claim.destination.reset();
    EXPECT_EQ(files(), before);
}

// A program that is killed closes its files and removes none.
TEST_F(DestinationsFixture, WhatAKilledRunLeftIsFoundOnceAndPutBesideItsDestination) {
    dir.write("old.mp3", "old mix");
    const std::string longest = std::string(249, 'x') + "\u00E9.mp3";  // cut off within the last character
    const std::string tail = "x." + std::string(253, 'y');
    for (const std::string& name :
         {std::string("old.mp3"), std::string("new.mp3"), std::string("new.mp3"), longest, tail}) {
        const pid_t run = fork();
        if (run == 0) {
            const auto claim = destinations.claim(dir / name, true);
            std::ofstream(claim.destination->privateFile()) << "part of " << name;
            std::ofstream(claim.destination->privateFile() + ".new") << "a copy of it that was cut off";
            _exit(claim.failure == ClaimFailure::none ? 0 : 1);
        }
        const auto living = destinations.claim(dir / "living.mp3", true);
        int status = -1;
        waitpid(run, &status, 0);
        ASSERT_EQ(status, 0);
        auto found = destinations.interrupted();
        ASSERT_EQ(found.size(), 1U) << "not the one that lives";
        EXPECT_EQ(found[0]->file(), dir / name);
        EXPECT_TRUE(LocalDestinations(state / "mixes").interrupted().empty());
        EXPECT_EQ(readFile(found[0]->putBeside()), "part of " + name);
        EXPECT_EQ(failure(name), ClaimFailure::busy) << "while it is held";
    }
    EXPECT_EQ(readFile(dir / "old.mp3"), "old mix");
    EXPECT_EQ(files(), (Names{"old.mp3", "old (part).mp3", "new (part).mp3", "new (part 2).mp3",
                              std::string(244, 'x') + " (part).mp3", tail.substr(0, 244) + " (part).mp3"}));
    EXPECT_FALSE(fs::exists(state / "mixes"));
    // What is not taken goes; what can't be put anywhere stays for the next start.
    for (const bool takes : {true, false}) {
        auto claim = destinations.claim(dir / "mix.mp3", true);
        const std::string written = claim.destination->privateFile();
        fs::rename(dir.path(), dir.path() + "away");
        if (takes) {
            EXPECT_EQ(claim.destination->putBeside(), "");
        }
        claim.destination.reset();
        EXPECT_TRUE(destinations.interrupted().empty()) << "the drive is away";
        fs::rename(dir.path() + "away", dir.path());
        EXPECT_EQ(destinations.interrupted().size(), takes ? 1U : 0U);
        fs::remove(written);
        fs::remove(dir / "mix.mp3");
    }
}

// A run that was killed between taking a name and renaming leaves an empty file.
TEST_F(DestinationsFixture, WithoutExclusiveRenamingNothingIsReplacedAndNoEmptyFileStays) {
    noExclusiveRenaming = true;
    for (const auto& [standing, expected] : {std::pair("", "mix (part).mp3"), {"a take", "mix (part 2).mp3"}}) {
        dir.write("mix (part).mp3", standing);
        auto claim = destinations.claim(dir / "mix.mp3", true);
        std::ofstream(claim.destination->privateFile()) << "part";
        EXPECT_EQ(claim.destination->putBeside(), dir / expected);
        EXPECT_EQ(readFile(dir / expected), "part");
    }
    noExclusiveRenaming = false;
    EXPECT_EQ(readFile(dir / "mix (part).mp3"), "a take");
    EXPECT_EQ(files(), (Names{"mix (part).mp3", "mix (part 2).mp3"}));
}

TEST_F(DestinationsFixture, WhateverThePagesSayNothingButPrivateFilesIsTouched) {
    fs::create_directory(dir / "other");
    fs::create_directory(dir / ".melvane-folder.mp3");
    for (const std::string name : {"song.mp3", "other/.melvane-1.mp3"}) dir.write(name, "precious");
    dir.write("two.mp3", "\r\n");
    fs::create_symlink("song.mp3", dir / ".melvane-link.mp3");
    const Names before = files();
    const std::pair<std::string, std::string> pages[] = {{dir / "two.mp3", dir / "song.mp3"},
                                                         {dir / "mix.mp3", dir / "other/.melvane-1.mp3"},
                                                         {dir / "mix.mp3", "song.mp3"},
                                                         {dir / "mix.mp3", dir / ".melvane-link.mp3"},
                                                         {dir / "mix.mp3", dir / ".melvane-folder.mp3"},
                                                         {"", ""}};
    for (const auto& [file, privateFile] : pages) {
        fs::create_directories(state / "mixes");
        state.write("mixes/page.mix", file + '\0' + privateFile + '\0');
        state.write("mixes/cut.mix", file);
        for (const auto& found : destinations.interrupted()) found->putBeside();
        EXPECT_EQ(files(), before) << privateFile;
        EXPECT_FALSE(fs::exists(state / "mixes")) << privateFile;
    }
    for (const bool mayReplace : {true, false}) {
        failure("two.mp3", mayReplace);
        EXPECT_EQ(files(), before) << "it looks like a placeholder, but is none";
    }
}

TEST_F(DestinationsFixture, OfManyRunsOneWritesAFile) {
    for (const bool mayReplace : {false, true})
        for (int round = 0; round < 20; ++round) {
            fs::remove(dir / "mix.mp3");
            std::vector<DestinationClaim> claims(10);
            std::vector<std::thread> runs;
            for (DestinationClaim& claim : claims)
                runs.emplace_back(
                    [&] { claim = LocalDestinations(state / "mixes").claim(dir / "mix.mp3", mayReplace); });
            for (std::thread& run : runs) run.join();
            EXPECT_EQ(std::ranges::count(claims, ClaimFailure::none, &DestinationClaim::failure), 1);
            EXPECT_EQ(std::ranges::count(claims, ClaimFailure::notWritable, &DestinationClaim::failure), 0);
            claims.clear();
            EXPECT_EQ(files(), Names());
        }
}

}  // namespace
}  // namespace melvane
