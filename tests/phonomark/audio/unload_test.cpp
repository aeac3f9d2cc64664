// SPDX-License-Identifier: MIT
#include "tests/phonomark/audio/audio_fixture.h"

#include <dlfcn.h>

using UnloadTest = AudioTest;

TEST_F(UnloadTest, AModuleThatIsUnloadedWhileItSoundsLeavesNoThreadAndNoMapping) {
    const std::string file = MERIX_BINARY_DIR "/tests/libaudio_unloadable.so";
    std::atomic<int> moved = 0;
    const auto slowly = [&moved](auto*, unsigned long frames) {
        ++moved;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        return static_cast<long>(frames);
    };
    alsa.read = slowly;
    alsa.write = slowly;
    for (int round = 1; round <= 20; ++round) {
        void* module = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(module, nullptr) << dlerror();
        bool (*start)() = nullptr;
        *reinterpret_cast<void**>(&start) = dlsym(module, "startBoth");
        ASSERT_NE(start, nullptr);
        {
            const Printed printed;
            ASSERT_TRUE(start());
            for (const int before = moved; round % 2 == 0 && moved < before + 4;)
                std::this_thread::yield();
            ASSERT_EQ(dlclose(module), 0);
        }
        EXPECT_EQ(alsa.count("snd_pcm_close"), 2 * round);
        EXPECT_EQ(contents("/proc/self/maps").find("libaudio_unloadable"), std::string::npos);
        EXPECT_EQ(dlopen(file.c_str(), RTLD_NOW | RTLD_NOLOAD), nullptr);
    }
}
