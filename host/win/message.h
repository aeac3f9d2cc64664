// SPDX-License-Identifier: MIT
// A window message in the form that message filters know.
#pragma once

#include <cstdint>

struct tagMSG {
    void* hwnd = nullptr; ///< the CWnd that it is for
    unsigned message = 0;
    std::uintptr_t wParam = 0; ///< mouse: the buttons held and the modifier keys; a key's or a timer's number
    std::intptr_t lParam = 0;  ///< mouse: the place in the window, x in the low 16 bits, y in the next
};

constexpr unsigned kWindowKeyDown = 256;
constexpr unsigned kWindowTimer = 275;
constexpr unsigned kWindowMouseMove = 0x200;
constexpr unsigned kWindowLeftDown = 513;
constexpr unsigned kWindowLeftUp = 514;
constexpr unsigned kWindowRightDown = 516;
constexpr unsigned kWindowRightUp = 517;
constexpr unsigned kWindowMiddleDown = 519;
constexpr unsigned kWindowMiddleUp = 520;

constexpr std::uintptr_t kMouseKeyLeft = 0x01;
constexpr std::uintptr_t kMouseKeyRight = 0x02;
constexpr std::uintptr_t kMouseKeyShift = 0x04;
constexpr std::uintptr_t kMouseKeyControl = 0x08;
constexpr std::uintptr_t kMouseKeyMiddle = 0x10;

constexpr std::uintptr_t kKeyEscape = 27;

/// The place of a mouse message, pixels of the window.
constexpr int mouseX(const tagMSG& message) {
    return static_cast<std::int16_t>(message.lParam & 0xFFFF);
}
constexpr int mouseY(const tagMSG& message) {
    return static_cast<std::int16_t>((message.lParam >> 16) & 0xFFFF);
}
