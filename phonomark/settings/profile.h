// SPDX-License-Identifier: MIT
// The settings store: three per-user values kept between runs ("VoiceShow", "Spokesman", "VoiceType"). Every call
// opens the store, reads or writes one value and closes it, so nothing is cached here and a value written by one call
// is seen by the next. Errors are not reported: an unreadable store gives the defaults, a failed write is lost.
// Main thread only.
#pragma once

#include <string>

/// The section under which all values live: empty, the top level of the store.
std::wstring RegSection();

/// The value as an integer; `defaultValue` when the key is missing, 0 when its text is no number.
int GetProfileIntW(const std::wstring& section, const std::wstring& key, int defaultValue);

/// The value as text. A missing key gives the empty text: the default is accepted and ignored, and callers rely on it.
std::wstring GetProfileStringW(const std::wstring& section, const std::wstring& key,
                               const std::wstring& ignoredDefault);

/// The name of the host's present profile: the default value of the host's profile key in the store, a text of at most
/// 1024 characters. Empty when there is none, or when the host has no configuration object.
std::wstring GetProfileName();

void WriteProfileInt(const std::wstring& section, const std::wstring& key, int value);
void WriteProfileStringW(const std::wstring& section, const std::wstring& key, const std::wstring& value);
