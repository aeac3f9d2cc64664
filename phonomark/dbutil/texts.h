// SPDX-License-Identifier: MIT
// The user-visible texts, which live in the resource module and are named by number. Main thread only.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

/// The text of `id` (at most 1023 characters) from the module's resources, or from those in force in the host while
/// the module has none; empty when there is no such text.
std::wstring resourceText(unsigned id);

/// The text of `id`, or `fallback` (null: empty) when it is empty.
std::wstring LocalStr(unsigned id, const wchar_t* fallback);

/// Prints the text of `id` on the command line. The text is a printf format: a percent sign is doubled in it.
/// Returns 5100, or -5001 with nothing printed when there is no text.
int mxutPrintfById(unsigned id);

/// Puts `values` in the place of the `%s` in `format`, in order; `%%` becomes a percent sign. A `%s` too many becomes
/// nothing; other directives stay as they are.
std::wstring formatText(std::wstring_view format, std::initializer_list<std::wstring_view> values);
