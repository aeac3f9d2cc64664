// SPDX-License-Identifier: MIT
#include "tests/phonomark/audio/audio_fixture.h"

#include <dlfcn.h>

namespace {

class UnloadTest : public AudioTest {
protected:
    void open() {
        module = dlopen(MERIX_BINARY_DIR "/tests/libaudio_unloadable.so", RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(module, nullptr) << dlerror();
    }
    bool start() const { return function<bool()>("startBoth")(); }
    bool stop(int patienceMs) const { return function<bool(int)>("stopBoth")(patienceMs); }
    static bool isMapped() { return contents("/proc/self/maps").find("libaudio_unloadable") != std::string::npos; }

    /// A device that answers nothing until it is let go.
    void hang() {
        alsa.read = [this](auto*, unsigned long frames) { return answer(frames); };
        alsa.write = [this](auto*, unsigned long frames) { return answer(frames); };
    }
    /// Unloads the module while both of its workers hang.
    void unloadHanging() {
        open();
        hang();
        check(start(), "it did not start");
        asked.wait();
        check(!stop(1), "a hanging worker was not left behind");
        check(dlclose(module) == 0, "dlclose failed");
        check(isMapped(), "the code of a worker has gone");
    }
    void check(bool good, const char* what) const {
        if (!good) {
            std::fprintf(stderr, "%s\n", what);
            _exit(1);
        }
    }

    void* module = nullptr;
    std::latch asked{2}, letGo{1};

private:
    long answer(unsigned long frames) {
        if (m_asked++ < 2)
            asked.count_down();
        letGo.wait();
        return static_cast<long>(frames);
    }
    template <class F> F* function(const char* name) const { return reinterpret_cast<F*>(dlsym(module, name)); }

    std::atomic<int> m_asked = 0;
};

using UnloadDeathTest = UnloadTest;

} // namespace

TEST_F(UnloadTest, AModuleThatIsUnloadedWhileItSoundsLeavesNoThreadAndNoMapping) {
    std::atomic<int> moved = 0;
    const auto slowly = [&moved](auto*, unsigned long frames) {
        ++moved;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        return static_cast<long>(frames);
    };
    alsa.read = slowly;
    alsa.write = slowly;
    for (int round = 1; round <= 20; ++round) {
        open();
        {
            const Printed printed;
            ASSERT_TRUE(start());
            for (const int before = moved; round % 2 == 0 && moved < before + 4;)
                std::this_thread::yield();
            if (round % 4 > 1) {
                EXPECT_TRUE(stop(60'000));
                EXPECT_EQ(alsa.count("snd_pcm_close"), 2 * round);
            }
            ASSERT_EQ(dlclose(module), 0);
        }
        EXPECT_EQ(alsa.count("snd_pcm_close"), 2 * round);
        EXPECT_FALSE(isMapped());
    }
}

// In processes of their own, where what is left behind does not disturb the other tests.

TEST_F(UnloadDeathTest, ADeviceThatNeverAnswersHoldsUpNeitherTheUnloadNorTheEndOfTheProcess) {
    EXPECT_EXIT(
        {
            unloadHanging();
            std::exit(0);
        },
        testing::ExitedWithCode(0), "the sound device does not answer");
}

TEST_F(UnloadDeathTest, AWorkerThatComesBackAfterTheUnloadEndsInItsOwnCode) {
    EXPECT_EXIT(
        {
            unloadHanging();
            letGo.count_down();
            while (alsa.openDevices() > 0)
                std::this_thread::yield();
            std::exit(0);
        },
        testing::ExitedWithCode(0), "the sound device does not answer");
}

TEST_F(UnloadDeathTest, AnOpeningThatHangsHoldsUpNoUnloadAndComesBackInItsOwnCode) {
    EXPECT_EXIT(
        {
            open();
            alsa.hang("snd_pcm_open");
            check(!start(), "it started");
            check(!stop(1), "a hanging opening was not left behind");
            check(dlclose(module) == 0, "dlclose failed");
            check(isMapped(), "the code of an opening has gone");
            alsa.answer();
            while (alsa.count("snd_pcm_close") == 0)
                std::this_thread::yield();
            check(alsa.count("snd_pcm_writei") == 0, "it played");
            std::exit(0);
        },
        testing::ExitedWithCode(0), "the sound device does not answer\n.*its worker is left behind");
}

TEST_F(UnloadDeathTest, AModuleThatStayedMappedSoundsAgainWhenItIsLoadedAgain) {
    EXPECT_EXIT(
        {
            unloadHanging();
            letGo.count_down();
            open();
            check(start(), "it did not start again");
            check(stop(60'000), "a worker was left behind");
            std::exit(0);
        },
        testing::ExitedWithCode(0), "");
}
