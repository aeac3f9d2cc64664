// SPDX-License-Identifier: MIT
#include "tests/support/alsa_script/alsa_script.h"

#include <alsa/asoundlib.h>
#include <cerrno>
#include <cstdio>
#include <cstring>

struct _snd_pcm {
    snd_pcm_stream_t stream = SND_PCM_STREAM_PLAYBACK;
};

struct _snd_pcm_hw_params {
    unsigned rate = 0;
    unsigned long buffer = 0;
    unsigned long period = 0;
};

AlsaScript& AlsaScript::instance() {
    static AlsaScript script;
    return script;
}

void AlsaScript::reset() {
    const std::lock_guard lock(m_mutex);
    grantedRate = 0;
    grantedBuffer = 0;
    grantedPeriod = 0;
    read = [](std::int16_t* samples, unsigned long frames) {
        std::memset(samples, 0, frames * sizeof *samples);
        return static_cast<long>(frames);
    };
    write = [](const std::int16_t*, unsigned long frames) { return static_cast<long>(frames); };
    delay = 0;
    m_hanging.clear();
    m_statuses.clear();
    m_calls.clear();
    m_devices = 0;
    m_blocks = 0;
}

void AlsaScript::hang(const std::string& call) {
    const std::lock_guard lock(m_mutex);
    m_hanging = call;
}

void AlsaScript::waitUntilItHangs() {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_hangs; });
}

void AlsaScript::answer() {
    const std::lock_guard lock(m_mutex);
    m_hangs = false;
    m_changed.notify_all();
}

void AlsaScript::setStatus(const std::string& call, int status) {
    const std::lock_guard lock(m_mutex);
    m_statuses[call] = status;
}

std::vector<std::string> AlsaScript::calls() const {
    const std::lock_guard lock(m_mutex);
    return m_calls;
}

int AlsaScript::count(const std::string& prefix) const {
    int count = 0;
    for (const std::string& call : calls())
        count += call.starts_with(prefix) ? 1 : 0;
    return count;
}

int AlsaScript::openDevices() const {
    const std::lock_guard lock(m_mutex);
    return m_devices;
}

int AlsaScript::parameterBlocks() const {
    const std::lock_guard lock(m_mutex);
    return m_blocks;
}

int AlsaScript::note(const std::string& call, const std::string& arguments) {
    std::unique_lock lock(m_mutex);
    m_calls.push_back(arguments.empty() ? call : call + " " + arguments);
    if (call == m_hanging) {
        m_hanging.clear();
        m_hangs = true;
        m_changed.notify_all();
        m_changed.wait(lock, [this] { return !m_hangs; });
    }
    const auto found = m_statuses.find(call);
    const int status = found == m_statuses.end() ? 0 : found->second;
    if (status < 0)
        errno = -status;
    return status;
}

void AlsaScript::countDevices(int change) {
    const std::lock_guard lock(m_mutex);
    m_devices += change;
}

void AlsaScript::countBlocks(int change) {
    const std::lock_guard lock(m_mutex);
    m_blocks += change;
}

namespace {

AlsaScript& script() {
    return AlsaScript::instance();
}

std::string text(unsigned long number) {
    return std::to_string(number);
}

} // namespace

extern "C" {

int snd_pcm_open(snd_pcm_t** pcm, const char* name, snd_pcm_stream_t stream, int mode) {
    const char* direction = stream == SND_PCM_STREAM_CAPTURE ? " capture " : " playback ";
    const int status = script().note("snd_pcm_open", name + std::string(direction) + std::to_string(mode));
    if (status >= 0) {
        *pcm = new _snd_pcm{stream};
        script().countDevices(1);
    }
    return status;
}

int snd_pcm_close(snd_pcm_t* pcm) {
    const int status = script().note("snd_pcm_close");
    delete pcm;
    script().countDevices(-1);
    return status;
}

int snd_pcm_hw_params_malloc(snd_pcm_hw_params_t** params) {
    const int status = script().note("snd_pcm_hw_params_malloc");
    if (status >= 0) {
        *params = new _snd_pcm_hw_params;
        script().countBlocks(1);
    }
    return status;
}

void snd_pcm_hw_params_free(snd_pcm_hw_params_t* params) {
    script().note("snd_pcm_hw_params_free");
    delete params;
    script().countBlocks(-1);
}

int snd_pcm_hw_params_any(snd_pcm_t*, snd_pcm_hw_params_t*) {
    return script().note("snd_pcm_hw_params_any");
}

int snd_pcm_hw_params_set_access(snd_pcm_t*, snd_pcm_hw_params_t*, snd_pcm_access_t access) {
    return script().note("snd_pcm_hw_params_set_access",
                         access == SND_PCM_ACCESS_RW_INTERLEAVED ? "interleaved" : "other");
}

int snd_pcm_hw_params_set_format(snd_pcm_t*, snd_pcm_hw_params_t*, snd_pcm_format_t format) {
    return script().note("snd_pcm_hw_params_set_format", format == SND_PCM_FORMAT_S16_LE ? "s16le" : "other");
}

int snd_pcm_hw_params_set_rate_near(snd_pcm_t*, snd_pcm_hw_params_t* params, unsigned* rate, int* direction) {
    const int status = script().note("snd_pcm_hw_params_set_rate_near", text(*rate) + " " + std::to_string(*direction));
    if (script().grantedRate != 0)
        *rate = script().grantedRate;
    params->rate = *rate;
    return status;
}

int snd_pcm_hw_params_set_channels(snd_pcm_t*, snd_pcm_hw_params_t*, unsigned channels) {
    return script().note("snd_pcm_hw_params_set_channels", text(channels));
}

int snd_pcm_hw_params_set_buffer_size_near(snd_pcm_t*, snd_pcm_hw_params_t* params, snd_pcm_uframes_t* frames) {
    const int status = script().note("snd_pcm_hw_params_set_buffer_size_near", text(*frames));
    if (status >= 0 && script().grantedBuffer != 0)
        *frames = script().grantedBuffer;
    params->buffer = *frames;
    return status;
}

int snd_pcm_hw_params_set_period_size_near(snd_pcm_t*, snd_pcm_hw_params_t* params, snd_pcm_uframes_t* frames,
                                           int* direction) {
    const int status = script().note("snd_pcm_hw_params_set_period_size_near",
                                     text(*frames) + (direction == nullptr ? "" : " with direction"));
    if (status >= 0 && script().grantedPeriod != 0)
        *frames = script().grantedPeriod;
    params->period = *frames;
    return status;
}

int snd_pcm_hw_params(snd_pcm_t*, snd_pcm_hw_params_t*) {
    return script().note("snd_pcm_hw_params");
}

int snd_pcm_hw_params_get_period_size(const snd_pcm_hw_params_t* params, snd_pcm_uframes_t* frames, int* direction) {
    const int status = script().note("snd_pcm_hw_params_get_period_size");
    *frames = params->period;
    *direction = 0;
    return status;
}

int snd_pcm_hw_params_get_buffer_size(const snd_pcm_hw_params_t* params, snd_pcm_uframes_t* frames) {
    const int status = script().note("snd_pcm_hw_params_get_buffer_size");
    *frames = params->buffer;
    return status;
}

int snd_pcm_hw_params_get_rate(const snd_pcm_hw_params_t* params, unsigned* rate, int* direction) {
    const int status = script().note("snd_pcm_hw_params_get_rate");
    *rate = params->rate;
    *direction = 0;
    return status;
}

snd_pcm_sframes_t snd_pcm_readi(snd_pcm_t*, void* samples, snd_pcm_uframes_t frames) {
    script().note("snd_pcm_readi", text(frames));
    return script().read(static_cast<std::int16_t*>(samples), frames);
}

snd_pcm_sframes_t snd_pcm_writei(snd_pcm_t*, const void* samples, snd_pcm_uframes_t frames) {
    script().note("snd_pcm_writei", text(frames));
    return script().write(static_cast<const std::int16_t*>(samples), frames);
}

int snd_pcm_delay(snd_pcm_t*, snd_pcm_sframes_t* frames) {
    *frames = script().delay;
    return script().note("snd_pcm_delay");
}

int snd_pcm_prepare(snd_pcm_t*) {
    return script().note("snd_pcm_prepare");
}

int snd_pcm_drain(snd_pcm_t*) {
    return script().note("snd_pcm_drain");
}

int snd_pcm_drop(snd_pcm_t*) {
    return script().note("snd_pcm_drop");
}

const char* snd_strerror(int status) {
    thread_local char message[32];
    std::snprintf(message, sizeof message, "status %d", status);
    return message;
}

} // extern "C"
