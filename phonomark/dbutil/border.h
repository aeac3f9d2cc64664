// SPDX-License-Identifier: MIT
// The border to the host. Nothing that is thrown inside the module crosses it: what the host calls ends with a handler
// that says on standard error what failed, and gives back an answer that the host knows. Any thread.
#pragma once

/// Says in one line that `what` failed, and why. Call it while the exception is being handled.
void reportFailure(const char* what) noexcept;

/// The same, giving back `answer`: `catch (...) { return failed("drawing a note", true); }`.
template <class Answer> Answer failed(const char* what, Answer answer) noexcept {
    reportFailure(what);
    return answer;
}

/// Takes a step whose failure leaves the others to be taken. False when it failed, after saying so.
template <class Step> bool guarded(const char* what, const Step& step) noexcept {
    try {
        step();
        return true;
    } catch (...) {
        return failed(what, false);
    }
}
