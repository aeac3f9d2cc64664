// SPDX-License-Identifier: MIT
#include "phonomark/tagwindow/held_note.h"

#include "host/ap/document.h"
#include "phonomark/dbutil/documents.h"
#include "phonomark/entity/phonomark.h"

HeldNote::HeldNote(MxDbPhonomark* note)
    : m_note(note) {
    if (!note)
        return;
    m_id = note->objectId();
    const MxApDocManager* manager = mxDocManagerPtr();
    m_document = manager && note->database() ? manager->document(note->database()) : nullptr;
}

MxDbPhonomark* HeldNote::present() const {
    return m_note && (!m_document || IsValidDocument(m_document)) ? m_note : nullptr;
}

MxDbPhonomark* HeldNote::live() const {
    MxDbPhonomark* note = present();
    return note && !note->isErased() ? note : nullptr;
}
