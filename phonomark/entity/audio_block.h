// SPDX-License-Identifier: MIT
#pragma once

/// Owns one block of audio bytes of the C allocator. A note and the workers that play it share one AudioBlock, so
/// that the bytes live as long as anyone hears them.
class AudioBlock {
public:
    explicit AudioBlock(unsigned char* bytes)
        : m_bytes(bytes) {}
    ~AudioBlock();
    AudioBlock(const AudioBlock&) = delete;
    AudioBlock& operator=(const AudioBlock&) = delete;

    unsigned char* bytes() const { return m_bytes; }
    /// Gives the bytes to the caller, who frees them.
    void release() { m_owns = false; }

private:
    unsigned char* m_bytes;
    bool m_owns = true;
};
