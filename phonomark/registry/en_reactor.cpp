// SPDX-License-Identifier: MIT
#include "phonomark/registry/en_reactor.h"

#include "phonomark/dbutil/run_time_class.h"

MxRxClass* PhonomarkEnReactor::gpDesc = nullptr;

MxRxClass* PhonomarkEnReactor::rxInit() {
    return registerUnfiledClass<PhonomarkEnReactor>(gpDesc, L"PhonomarkEnReactor", MxDbEntityReactor::desc());
}

MxRxObject* PhonomarkEnReactor::makeDefault() {
    return makeOnHostHeap<PhonomarkEnReactor>();
}
