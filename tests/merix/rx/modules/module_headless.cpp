// SPDX-License-Identifier: MIT
// A library that is no module.
extern "C" unsigned mxrxGetApiVersion() {
    return 0;
}
