// SPDX-License-Identifier: MIT
#include "phonomark/entity/audio_block.h"

#include <cstdlib>

AudioBlock::~AudioBlock() {
    if (m_owns)
        std::free(m_bytes);
}
