// SPDX-License-Identifier: MIT
#include "phonomark/dbutil/border.h"

#include <cstdio>
#include <exception>

void reportFailure(const char* what) noexcept {
    try {
        throw;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "phonomark: %s failed: %s\n", what, error.what());
    } catch (...) {
        std::fprintf(stderr, "phonomark: %s failed\n", what);
    }
}
