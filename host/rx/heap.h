// SPDX-License-Identifier: MIT
// The host heap. Objects that the host may delete are allocated on it (see MxRxObject::operator new).
#pragma once

#include <cstddef>

/// `size` bytes aligned for any object, or null when memory is exhausted. Any thread.
void* mxHeapAlloc(std::size_t size);

/// Returns a block to the heap; null is allowed. Any thread.
void mxHeapFree(void* block);
