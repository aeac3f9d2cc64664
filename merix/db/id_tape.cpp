// SPDX-License-Identifier: MIT
#include "merix/db/id_tape.h"

#include "merix/db/access.h"

namespace merix::db {

Mx::ErrorStatus TapeWriter::writeSoftPointerId(const MxDbObjectId& id) {
    m_tape.entries.push_back({id, false});
    return put(DwgItem::kSoftPointer, static_cast<std::uint64_t>(m_tape.entries.size()));
}

Mx::ErrorStatus TapeWriter::writeHardPointerId(const MxDbObjectId& id) {
    m_tape.entries.push_back({id, true});
    return put(DwgItem::kHardPointer, static_cast<std::uint64_t>(m_tape.entries.size()));
}

Mx::ErrorStatus TapeReader::readSoftPointerId(MxDbObjectId& id) {
    return take(DwgItem::kSoftPointer, id);
}

Mx::ErrorStatus TapeReader::readHardPointerId(MxDbObjectId& id) {
    return take(DwgItem::kHardPointer, id);
}

Mx::ErrorStatus TapeReader::take(DwgItem item, MxDbObjectId& id) {
    std::uint64_t place = 0;
    if (get(item, place) != Mx::eOk)
        return m_status;
    if (place == 0 || place > m_tape.entries.size())
        return fail(Mx::eItemUnreadable);
    const MxDbObjectId before = m_tape.entries[place - 1].id;
    id = before.isNull() ? before : m_turn(before);
    return Mx::eOk;
}

IdTape referencesOf(const MxDbObject& object) {
    IdTape tape;
    const ReadAccess readable(object);
    TapeWriter writer(tape, MxDbFilerType::kCopy, object.database());
    object.dwgOutFields(&writer);
    return tape;
}

Mx::ErrorStatus copyFields(const MxDbObject& from, MxDbObject& to, MxDbDatabase* database, TapeReader::Turn turn) {
    IdTape tape;
    TapeWriter writer(tape, MxDbFilerType::kCopy, from.database());
    {
        const ReadAccess readable(from);
        if (const auto status = from.dwgOutFields(&writer); status != Mx::eOk)
            return status;
    }
    const std::string bytes = writer.take();
    const FillAccess writable(to);
    TapeReader reader(bytes, tape, std::move(turn), MxDbFilerType::kCopy, database);
    const auto status = to.dwgInFields(&reader);
    return status == Mx::eOk ? reader.filerStatus() : status;
}

} // namespace merix::db
