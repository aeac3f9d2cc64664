// SPDX-License-Identifier: MIT
#include "tools/soundcheck/wav.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <stdexcept>

namespace soundcheck {
namespace {

constexpr std::size_t kMaxBytes = std::size_t{1} << 30;
constexpr std::size_t kHeaderBytes = 44;

std::uint32_t littleEndian(const unsigned char* bytes, int count) {
    std::uint32_t value = 0;
    for (int i = count - 1; i >= 0; --i)
        value = value << 8 | bytes[i];
    return value;
}

void append(std::vector<unsigned char>& bytes, std::uint32_t value, int count) {
    for (int i = 0; i < count; ++i, value >>= 8)
        bytes.push_back(static_cast<unsigned char>(value));
}

void append(std::vector<unsigned char>& bytes, const char* tag) {
    bytes.insert(bytes.end(), tag, tag + 4);
}

std::vector<std::int16_t> samplesOf(const unsigned char* bytes, std::size_t count) {
    std::vector<std::int16_t> samples(count / 2);
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = static_cast<std::int16_t>(littleEndian(bytes + 2 * i, 2));
    return samples;
}

[[noreturn]] void fail(const std::string& path, const std::string& reason) {
    throw std::runtime_error(path + ": " + reason);
}

Sound parseWav(const std::string& path, const std::vector<unsigned char>& bytes) {
    if (bytes.size() < 12 || std::memcmp(bytes.data(), "RIFF", 4) != 0 || std::memcmp(&bytes[8], "WAVE", 4) != 0)
        fail(path, "is no wav file");
    Sound sound;
    std::size_t at = 12;
    while (bytes.size() - at >= 8) {
        const unsigned char* chunk = &bytes[at];
        const std::size_t held = bytes.size() - at - 8;
        const std::size_t size = std::min<std::size_t>(littleEndian(chunk + 4, 4), held);
        if (std::memcmp(chunk, "fmt ", 4) == 0) {
            if (size < 16 || littleEndian(chunk + 8, 2) != 1 || littleEndian(chunk + 10, 2) != 1 ||
                littleEndian(chunk + 22, 2) != 16)
                fail(path, "is not mono 16-bit PCM");
            sound.rate = littleEndian(chunk + 12, 4);
        } else if (std::memcmp(chunk, "data", 4) == 0) {
            if (sound.rate == 0)
                fail(path, "has no sample rate before its samples");
            sound.samples = samplesOf(chunk + 8, size);
            return sound;
        }
        at += 8 + std::min(size + (size & 1), held);
    }
    fail(path, "holds no samples");
}

} // namespace

std::vector<unsigned char> readBytes(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file)
        fail(path, "cannot be opened");
    std::vector<unsigned char> bytes;
    char block[65536];
    while (file.read(block, sizeof block) || file.gcount() > 0) {
        bytes.insert(bytes.end(), block, block + file.gcount());
        if (bytes.size() > kMaxBytes)
            fail(path, "is longer than 1 GiB");
    }
    if (file.bad())
        fail(path, "cannot be read");
    return bytes;
}

Sound readSound(const std::string& path, std::uint32_t rawRate) {
    const std::vector<unsigned char> bytes = readBytes(path);
    if (path.ends_with(".raw"))
        return {rawRate, samplesOf(bytes.data(), bytes.size())};
    return parseWav(path, bytes);
}

void writeWav(const std::string& path, const Sound& sound) {
    const auto dataBytes = static_cast<std::uint32_t>(sound.samples.size() * 2);
    std::vector<unsigned char> bytes;
    bytes.reserve(kHeaderBytes + dataBytes);
    append(bytes, "RIFF");
    append(bytes, dataBytes + static_cast<std::uint32_t>(kHeaderBytes) - 8, 4);
    append(bytes, "WAVE");
    append(bytes, "fmt ");
    append(bytes, 16, 4);
    append(bytes, 1, 2); // PCM
    append(bytes, 1, 2); // channels
    append(bytes, sound.rate, 4);
    append(bytes, sound.rate * 2, 4);
    append(bytes, 2, 2); // bytes a frame
    append(bytes, 16, 2);
    append(bytes, "data");
    append(bytes, dataBytes, 4);
    for (const std::int16_t sample : sound.samples)
        append(bytes, static_cast<std::uint16_t>(sample), 2);
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file)
        fail(path, "cannot be written");
}

} // namespace soundcheck
