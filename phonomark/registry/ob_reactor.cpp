// SPDX-License-Identifier: MIT
#include "phonomark/registry/ob_reactor.h"

#include "host/ap/document.h"
#include "phonomark/dbutil/border.h"
#include "phonomark/dbutil/run_time_class.h"
#include "phonomark/registry/object_watch.h"
#include "phonomark/registry/phonomark_manager.h"
#include "phonomark/tagwindow/show_tag_window.h"

MxRxClass* PhonomarkObReactor::gpDesc = nullptr;

MxRxClass* PhonomarkObReactor::rxInit() {
    return registerUnfiledClass<PhonomarkObReactor>(gpDesc, L"PhonomarkObReactor", MxDbObjectReactor::desc());
}

MxRxObject* PhonomarkObReactor::makeDefault() {
    return makeOnHostHeap<PhonomarkObReactor>();
}

void PhonomarkObReactor::erased(const MxDbObject* object, bool erasing) try {
    if (erasing)
        noteErasedUnderTagWindow(object->objectId());
    PhonomarkManager* manager = livePhManager();
    const MxApDocManager* documents = mxDocManagerPtr();
    MxApDocument* document = manager && documents ? documents->document(object->database()) : nullptr;
    if (!document)
        return;
    if (erasing)
        manager->RemovePhonomark(object->objectId(), document);
    else if (!takeListedWhileErased(object->objectId()))
        manager->AppendPhonomark(object->objectId(), document);
} catch (...) {
    reportFailure("a note's erasure");
}

void PhonomarkObReactor::modified(const MxDbObject* object) try {
    noteChangedUnderTagWindow(object->objectId());
} catch (...) {
    reportFailure("a note's change");
}

void PhonomarkObReactor::goodbye(const MxDbObject* object) {
    forgetObject(object->objectId());
}
