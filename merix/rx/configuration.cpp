// SPDX-License-Identifier: MIT
#include "merix/rx/configuration.h"

namespace {

const MxRxConfiguration* g_configuration = nullptr;

} // namespace

namespace merix::rx {

void setConfiguration(const MxRxConfiguration* configuration) {
    g_configuration = configuration;
}

} // namespace merix::rx

const MxRxConfiguration* mxrxConfiguration() {
    return g_configuration;
}
