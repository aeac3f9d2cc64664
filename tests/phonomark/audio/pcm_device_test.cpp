// SPDX-License-Identifier: MIT
#include "phonomark/audio/pcm_device.h"

#include "phonomark/audio/player.h"
#include "phonomark/audio/recorder.h"
#include "tests/phonomark/audio/audio_fixture.h"

#include <climits>

using phonomark::workerCensus;

namespace {

class PcmDeviceTest : public AudioTest {
protected:
    /// The period that is taken when the device grants `frames`.
    int periodFor(unsigned long frames) {
        alsa.grantedPeriod = frames;
        phonomark::PcmReport report;
        const phonomark::PcmHandle pcm = phonomark::openDefaultPcm(SND_PCM_STREAM_CAPTURE, report);
        const phonomark::HwParams params = phonomark::allocateHwParams(report);
        phonomark::requestPeriodSize(pcm.get(), params.get(), 0, report);
        return phonomark::grantedPeriodFrames(params.get(), report);
    }

    void recordAndPlay() {
        std::vector<char> buffer(VkAudioRecorder::kBufferBytes);
        std::uint32_t size = 0;
        VkAudioRecorder recorder;
        const Printed printed;
        EXPECT_TRUE(recorder.record(buffer.data(), &size));
        recorder.stop();
        EXPECT_TRUE(VkAudioPlayer().play("", 0));
        workerCensus().wait();
    }
};

} // namespace

TEST_F(PcmDeviceTest, APeriodIsTakenAsLongAsItsChunkFitsAnInt) {
    const Printed printed;
    EXPECT_EQ(periodFor(64), 64);
    EXPECT_EQ(periodFor(INT_MAX / 4), INT_MAX / 4);
    EXPECT_EQ(periodFor(INT_MAX / 4 + 1), 0);
    EXPECT_EQ(periodFor(ULONG_MAX), 0);
    EXPECT_EQ(periodFor(0), 0);
}

TEST_F(PcmDeviceTest, HandlesAndBlocksGoWithTheirOwners) {
    periodFor(64);
    EXPECT_EQ(alsa.count("snd_pcm_close"), 1);
    EXPECT_EQ(alsa.count("snd_pcm_hw_params_free"), 1);
}

TEST_F(PcmDeviceTest, WhatIsGrantedIsLoggedInOneLineADeviceWhenALogIsNamed) {
    setenv("PHONOMARK_AUDIO_LOG", path("log").c_str(), 1);
    alsa.grantedRate = 44'100;
    alsa.grantedBuffer = 192;
    alsa.grantedPeriod = 64;
    recordAndPlay();
    EXPECT_EQ(contents(path("log")),
              "capture rate=44100 period=64 buffer=192\nplayback rate=44100 period=64 buffer=192\n");
}

TEST_F(PcmDeviceTest, WithoutALogTheDeviceIsNotAskedForItsRate) {
    recordAndPlay();
    setenv("PHONOMARK_AUDIO_LOG", "", 1);
    recordAndPlay();
    EXPECT_EQ(alsa.count("snd_pcm_hw_params_get_rate"), 0);
    setenv("PHONOMARK_AUDIO_LOG", path("no folder/log").c_str(), 1);
    recordAndPlay(); // a log that cannot be written hinders nothing
}
