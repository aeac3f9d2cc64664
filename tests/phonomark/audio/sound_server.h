// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <unistd.h>

/// On a busy machine a server may take longer to open a device than anybody is made to wait: then one presses again.
template <class Start> bool pressAgainUntil(Start start) {
    for (int i = 0; i < 10; ++i) {
        if (start())
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    return false;
}

/// A private sound server for as long as it lives. ALSA's "default" of this process points at it: it has to be made
/// before ALSA is used for the first time, so one process has one server.
class SoundServer {
public:
    /// `kind` as scripts/sound-server.sh knows it. `microphone` names the program that feeds the virtual microphone.
    SoundServer(const std::string& kind, const std::string& speech,
                const std::string& microphone = MERIX_BINARY_DIR "/bin/soundcheck") {
        char name[] = "/tmp/phonomark-sound-XXXXXX";
        m_folder = mkdtemp(name);
        setenv("SOUND_SERVER", kind.c_str(), 1);
        setenv("SOUNDCHECK", microphone.c_str(), 1);
        run("start", speech + " --owner " + std::to_string(getpid()));
        takeEnvironment();
    }
    SoundServer(const SoundServer&) = delete;
    SoundServer& operator=(const SoundServer&) = delete;
    ~SoundServer() {
        const std::string command = script("stop", "") + " && rm -r " + m_folder;
        if (std::system(command.c_str()) != 0)
            std::perror(command.c_str());
    }

    void speak() const { run("speak", ""); }
    void heard(const std::string& wav) const { run("heard", wav); }
    std::string path(const std::string& name) const { return m_folder + "/" + name; }

    /// Sends a signal to the processes that programs make sound through.
    void signal(int number) const {
        std::ifstream file(path("pids"));
        long started = 0;
        pid_t pid = 0;
        for (std::string name; file >> name >> pid >> started;) {
            if (name == "server" || name == "door")
                kill(pid, number);
        }
    }

private:
    std::string script(const std::string& command, const std::string& rest) const {
        return std::string(MERIX_SOURCE_DIR "/scripts/sound-server.sh ") + command + " " + m_folder + " " + rest;
    }
    void run(const std::string& command, const std::string& rest) const {
        if (std::system(script(command, rest).c_str()) != 0)
            throw std::runtime_error(script(command, rest));
    }
    /// Lines such as: export NAME='value'
    void takeEnvironment() const {
        std::ifstream file(path("env"));
        for (std::string word, line; file >> word && std::getline(file, line);) {
            const std::size_t equals = line.find('=');
            std::string value = line.substr(equals + 1);
            if (value.starts_with('\''))
                value = value.substr(1, value.size() - 2);
            setenv(line.substr(1, equals - 1).c_str(), value.c_str(), 1);
        }
    }

    std::string m_folder;
};
