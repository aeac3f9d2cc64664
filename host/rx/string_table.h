// SPDX-License-Identifier: MIT
#pragma once

/// Remembers a text in the table that all modules share: names that were used, to be offered again. One that is known
/// moves to the front; null and the empty text are ignored. The table holds the 256 texts that were used last. Main
/// thread only.
void mxutUpdateStringTable(const wchar_t* text);
