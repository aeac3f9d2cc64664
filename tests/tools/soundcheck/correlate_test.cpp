// SPDX-License-Identifier: MIT
#include "tools/soundcheck/correlate.h"

#include <cmath>
#include <gtest/gtest.h>
#include <random>

using namespace soundcheck;

namespace {

constexpr std::uint32_t kRate = 8000;

/// `ms` of noise with silence of `before` and `after` ms round it; never zero inside.
Sound noise(int ms, int before = 0, int after = 0, unsigned seed = 1) {
    std::mt19937 random(seed);
    Sound sound{kRate, std::vector<std::int16_t>(static_cast<std::size_t>(before) * kRate / 1000)};
    for (int i = 0; i < ms * 8; ++i)
        sound.samples.push_back(static_cast<std::int16_t>((random() & 1 ? 1 : -1) * (2000 + random() % 8000)));
    sound.samples.resize(sound.samples.size() + static_cast<std::size_t>(after) * kRate / 1000);
    return sound;
}

Sound silence(int ms) {
    return {kRate, std::vector<std::int16_t>(static_cast<std::size_t>(ms) * 8)};
}

void append(Sound& sound, const Sound& more) {
    sound.samples.insert(sound.samples.end(), more.samples.begin(), more.samples.end());
}

} // namespace

TEST(CorrelateTest, TheSameSoundLaterAndFainterIsFoundWhole) {
    const Sound spoken = noise(1000, 50, 80);
    Sound heard = silence(730);
    append(heard, spoken);
    for (std::int16_t& sample : heard.samples)
        sample = static_cast<std::int16_t>(sample / 4);
    const Likeness likeness = compare(spoken, heard);
    EXPECT_GT(likeness.peak, 0.999);
    EXPECT_NEAR(likeness.lagMs, 730, 0.01);
    EXPECT_NEAR(likeness.speechMs, 1000, 0.2);
    EXPECT_NEAR(likeness.gain, 0.25, 0.01);
    EXPECT_GT(likeness.first100Ms, 0.999);
    EXPECT_GT(likeness.last100Ms, 0.999);
    EXPECT_TRUE(likeness.gaps.empty());
}

TEST(CorrelateTest, ASoundThatBeginsBeforeTheRecordingHasANegativeLag) {
    const Sound spoken = noise(1000);
    Sound heard = spoken;
    heard.samples.erase(heard.samples.begin(), heard.samples.begin() + 300 * 8);
    const Likeness likeness = compare(spoken, heard);
    EXPECT_NEAR(likeness.lagMs, -300, 0.01);
    EXPECT_NEAR(likeness.peak, std::sqrt(0.7), 0.02);
    EXPECT_EQ(likeness.first100Ms, 0);
    EXPECT_GT(likeness.last100Ms, 0.999);
}

TEST(CorrelateTest, TheEndThatIsCutOffIsSeen) {
    const Sound spoken = noise(1000);
    Sound heard = spoken;
    heard.samples.resize(930 * 8);
    const Likeness likeness = compare(spoken, heard);
    EXPECT_LT(likeness.last100Ms, 0.8);
    EXPECT_NE(toJson(likeness).find("\"last_100ms_present\": false"), std::string::npos);
    EXPECT_NE(toJson(likeness).find("\"first_100ms_present\": true"), std::string::npos);
}

TEST(CorrelateTest, AnotherSoundIsNotLike) {
    EXPECT_LT(compare(noise(1000), noise(3000, 0, 0, 2)).peak, 0.2);
}

TEST(CorrelateTest, AnInvertedSoundIsNotLike) {
    const Sound spoken = noise(1000);
    Sound heard = spoken;
    for (std::int16_t& sample : heard.samples)
        sample = static_cast<std::int16_t>(-sample);
    EXPECT_LT(compare(spoken, heard).peak, 0.2);
}

TEST(CorrelateTest, SilenceInPlaceOfSpeechIsAGapAndAPauseOfTheSpeakerIsNone) {
    Sound spoken = noise(400);
    append(spoken, silence(100));
    append(spoken, noise(500, 0, 0, 3));
    Sound heard = spoken;
    std::fill_n(heard.samples.begin() + 600 * 8, 4 * 8, std::int16_t{0});
    EXPECT_TRUE(compare(spoken, heard).gaps.empty()) << "4 ms are no gap";
    std::fill_n(heard.samples.begin() + 600 * 8, 20 * 8, std::int16_t{0});
    const Likeness likeness = compare(spoken, heard);
    ASSERT_EQ(likeness.gaps.size(), 1u);
    EXPECT_NEAR(likeness.gaps[0].atMs, 600, 0.2);
    EXPECT_NEAR(likeness.gaps[0].lengthMs, 20, 0.2);
    EXPECT_NE(toJson(likeness).find("\"gaps\": [{\"at_ms\": 600.0, \"length_ms\": 20.0}]"), std::string::npos);
}

TEST(CorrelateTest, SilenceThatPushesTheRestBackSpoilsTheLikeness) {
    const Sound spoken = noise(1000);
    Sound heard = spoken;
    heard.samples.insert(heard.samples.begin() + 500 * 8, 10 * 8, std::int16_t{0});
    EXPECT_LT(compare(spoken, heard).peak, 0.8);
}

TEST(CorrelateTest, NothingHeardIsNotLike) {
    EXPECT_EQ(compare(noise(100), {kRate, {}}).peak, 0);
    EXPECT_EQ(compare(noise(100), silence(500)).peak, 0);
}

TEST(CorrelateTest, WhatCannotBeComparedIsRefused) {
    EXPECT_THROW(compare(noise(100), {kRate + 1, {1}}), std::runtime_error);
    EXPECT_THROW(compare(silence(100), noise(100)), std::runtime_error);
}
