// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>

/// Audio bytes in memory with their count, shared by the tag window and the audio workers. A worker counts up `size`
/// while the window reads it: the window goes through count().
class CaptureBuffer {
public:
    /// `capacity` zero bytes; null when there is no memory for them.
    static std::shared_ptr<CaptureBuffer> make(std::size_t capacity);

    char* bytes() const { return m_bytes.get(); }
    std::size_t capacity() const { return m_capacity; }
    /// The bytes below the count are safe to read.
    std::uint32_t count();
    void setCount(std::uint32_t count);
    /// The counter as a capture worker takes it.
    std::uint32_t* counter() { return &m_count; }

private:
    struct Free {
        void operator()(char* block) const { std::free(block); }
    };
    CaptureBuffer() = default;

    std::unique_ptr<char, Free> m_bytes;
    std::size_t m_capacity = 0;
    std::uint32_t m_count = 0;
};
