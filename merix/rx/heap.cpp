// SPDX-License-Identifier: MIT
#include "host/rx/heap.h"

#include <cstdlib>

void* mxHeapAlloc(std::size_t size) {
    return std::malloc(size ? size : 1);
}

void mxHeapFree(void* block) {
    std::free(block);
}
