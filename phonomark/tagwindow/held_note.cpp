// SPDX-License-Identifier: MIT
#include "phonomark/tagwindow/held_note.h"

#include "host/ap/document.h"
#include "phonomark/entity/phonomark.h"

#include <list>

namespace {

/// Of the notes that are held; those of holders that have gone are dropped at the next look.
template <class Held> std::list<std::weak_ptr<Held>>& known() {
    static std::list<std::weak_ptr<Held>> all;
    return all;
}

} // namespace

HeldNote::HeldNote(MxDbPhonomark* note) {
    if (!note)
        return;
    const MxApDocManager* manager = mxDocManagerPtr();
    m_held = std::make_shared<Held>();
    m_held->note = note;
    m_held->id = note->objectId();
    m_held->document = manager && note->database() ? manager->document(note->database()) : nullptr;
    known<Held>().remove_if([](const std::weak_ptr<Held>& held) { return held.expired(); });
    known<Held>().push_back(m_held);
}

void HeldNote::forgetDocument(const MxApDocument* document) {
    for (const std::weak_ptr<Held>& entry : known<Held>())
        if (const std::shared_ptr<Held> held = entry.lock(); held && document && held->document == document)
            *held = Held();
}

MxDbPhonomark* HeldNote::live() const {
    MxDbPhonomark* note = present();
    return note && !note->isErased() ? note : nullptr;
}
