// SPDX-License-Identifier: MIT
#include "phonomark/tagwindow/capture_buffer.h"

#include <atomic>

std::shared_ptr<CaptureBuffer> CaptureBuffer::make(std::size_t capacity) {
    std::shared_ptr<CaptureBuffer> buffer(new CaptureBuffer);
    buffer->m_bytes.reset(static_cast<char*>(std::calloc(capacity, 1)));
    if (!buffer->m_bytes)
        return nullptr;
    buffer->m_capacity = capacity;
    return buffer;
}

// Acquire: the worker releases its count after the bytes that it counts.
std::uint32_t CaptureBuffer::count() {
    return std::atomic_ref<std::uint32_t>(m_count).load(std::memory_order_acquire);
}

void CaptureBuffer::setCount(std::uint32_t count) {
    std::atomic_ref<std::uint32_t>(m_count).store(count, std::memory_order_release);
}
