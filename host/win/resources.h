// SPDX-License-Identifier: MIT
// Services with the names of another platform that modules are used to. Main thread only.
#pragma once

#include "host/rx/text.h"

/// Loads a resource module (a data file of texts, dialogs and images) found beside the program or in its library
/// folder. Null when there is none or it cannot be read. Loading twice counts twice.
void* LoadResourceDll(const wchar_t* fileName);
bool FreeLibrary(void* resource);

/// Copies text `id` with a terminator into `buffer` of `capacity` wide characters, cut to fit; returns the number of
/// characters copied, 0 when there is no such text or resource module.
int LoadStringW(void* resource, unsigned id, wchar_t* buffer, int capacity);

/// The resource module in force: the one pushed last on the document manager, else the host's own (null: it has none).
void* AfxGetResourceHandle();

/// The login name and the machine's name. `size` is the buffer's capacity in wide characters; it stays as it is when
/// the call succeeds. False, with nothing copied, when the name does not fit.
bool GetUserNameW(wchar_t* buffer, unsigned* size);
bool GetComputerNameW(wchar_t* buffer, unsigned* size);
