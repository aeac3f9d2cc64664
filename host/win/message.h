// SPDX-License-Identifier: MIT
// A window message in the form that message filters know.
#pragma once

#include <cstdint>

struct tagMSG {
    void* hwnd = nullptr;
    unsigned message = 0;
    std::uintptr_t wParam = 0; ///< for mouse messages the keys and buttons held
    std::intptr_t lParam = 0;
};

constexpr unsigned kWindowMouseMove = 0x200;
constexpr std::uintptr_t kMouseKeyMiddle = 0x10;
