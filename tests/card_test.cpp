#include "platform/bass/graph/card.h"

#include <gtest/gtest.h>

#include "tests/sound.h"

namespace melvane::bass {
namespace {

using namespace melvane::test;

class Recorder : public CardListener {
public:
    void push(const float* mix, std::size_t frames) override { sound.insert(sound.end(), mix, mix + frames * 2); }
    bool congested() const override { return false; }
    Sound sound;
};

std::shared_ptr<Channel> channelOf(Sound sound, bool loop = false) {
    return std::make_shared<Channel>(std::make_shared<MemorySource>(std::move(sound)), loop);
}

// Mixes up to `frames` frames in blocks of `block`, less where the card stops.
std::size_t mix(Card& card, std::size_t frames, std::size_t block) {
    Sound buffer(block * 2);
    std::size_t done = 0;
    while (done < frames) {
        const std::size_t got = card.mix(buffer.data(), std::min(block, frames - done));
        done += got;
        if (got == 0) break;
    }
    return done;
}

struct Session {
    Card card;
    std::shared_ptr<Recorder> recorder = std::make_shared<Recorder>();

    Session() { card.listen(recorder); }
    void play(const std::shared_ptr<Channel>& channel) {
        channel->play(false);
        card.add(channel);
    }
};

TEST(Card, OneChannelAtFullLevelPassesBitByBit) {
    const Sound sound = noise16(5000, 1);
    Session session;
    session.play(channelOf(sound));
    mix(session.card, 5000, 441);
    EXPECT_EQ(session.recorder->sound, sound);
}

TEST(Card, ChannelsSetUpWhileHeldStartOnOneFrameAndNothingIsMixedBefore) {
    Session session;
    session.card.hold();
    session.play(channelOf(noise16(100, 1)));
    EXPECT_EQ(mix(session.card, 100, 10), 0U);
    session.play(channelOf(noise16(100, 2)));
    session.card.resume();
    mix(session.card, 100, 10);
    const Sound one = noise16(100, 1);
    const Sound two = noise16(100, 2);
    ASSERT_EQ(session.recorder->sound.size(), one.size());
    for (std::size_t i = 0; i < one.size(); ++i) EXPECT_FLOAT_EQ(session.recorder->sound[i], one[i] + two[i]);
}

TEST(Card, HoldsItselfBehindTheLastFrameOfTheSongWhateverTheBlock) {
    for (const std::size_t block : {1U, 64U, 441U, 1000U, 1001U, 4096U}) {
        Session session;
        const auto song = channelOf(noise16(1000, 1));
        session.play(channelOf(noise16(300, 2), true));
        session.play(song);
        session.card.holdAtEndOf(song);
        EXPECT_EQ(mix(session.card, 5000, block), 1000U) << block;
        EXPECT_EQ(session.recorder->sound.size(), 2000U) << block;
        EXPECT_FALSE(song->playing());
        EXPECT_EQ(song->position(), 1000);
        EXPECT_FALSE(session.card.running());
    }
}

TEST(Card, AShortVoiceLoopsWithoutAGap) {
    const Sound voice = noise16(300, 3);
    Session session;
    session.play(channelOf(voice, true));
    mix(session.card, 1000, 128);
    for (std::size_t i = 0; i < 2000; ++i) ASSERT_EQ(session.recorder->sound[i], voice[i % 600]) << i;
}

// A list of actions at given frames gives the same samples in blocks of any size.
TEST(Card, LevelChangesRampAndDoNotDependOnTheBlock) {
    const auto run = [](std::size_t block) {
        Session session;
        const auto song = channelOf(Sound(40000, 0.5F));
        song->setLevel(gainOf(100, 0));
        session.play(song);
        mix(session.card, 4096, block);
        song->setLevel(gainOf(30, -50));
        mix(session.card, 300, block);
        song->setLevel(gainOf(80, 100));
        mix(session.card, 8192, block);
        return session.recorder->sound;
    };
    const Sound reference = run(4096);
    for (const std::size_t block : {64U, 441U}) EXPECT_EQ(run(block), reference) << block;
    float largestStep = 0;
    for (std::size_t i = 2; i < reference.size(); ++i)
        largestStep = std::max(largestStep, std::abs(reference[i] - reference[i - 2]));
    EXPECT_LT(largestStep, 0.5F / 800);
    EXPECT_FLOAT_EQ(reference[reference.size() - 2], 0.0F);
    EXPECT_FLOAT_EQ(reference.back(), 0.4F);
}

TEST(Card, VolumeAndPanAreLinearAndClamped) {
    const struct {
        std::uint32_t volume;
        std::int32_t pan;
        float left, right;
    } cases[] = {{100, 0, 1, 1},       {50, 0, 0.5F, 0.5F}, {100, 100, 0, 1}, {100, -100, 1, 0},
                 {80, 25, 0.6F, 0.8F}, {0, 0, 0, 0},        {500, -300, 1, 0}};
    for (const auto& c : cases) {
        EXPECT_FLOAT_EQ(gainOf(c.volume, c.pan).left, c.left);
        EXPECT_FLOAT_EQ(gainOf(c.volume, c.pan).right, c.right);
    }
}

TEST(Channel, SeeksStopsAndStartsAgainFromTheEnd) {
    const Sound sound = noise16(100, 4);
    Session session;
    const auto channel = channelOf(sound);
    session.play(channel);
    EXPECT_TRUE(channel->seek(60));
    EXPECT_FALSE(channel->seek(101));
    EXPECT_EQ(channel->position(), 60);
    mix(session.card, 100, 100);
    EXPECT_FALSE(channel->playing());
    EXPECT_EQ(channel->position(), 100);
    EXPECT_EQ(session.recorder->sound[0], sound[120]);
    channel->play(false);
    EXPECT_EQ(channel->position(), 0);
}

}  // namespace
}  // namespace melvane::bass
