// SPDX-License-Identifier: MIT
// Binary filers that keep the references they file beside the stream, as ids and not as handles: for looking at what an
// object refers to, and for handing its fields to an object elsewhere, of another drawing too.
#pragma once

#include "host/db/object.h"
#include "merix/db/dwg_filer.h"

#include <functional>
#include <vector>

namespace merix::db {

/// References in the order in which they were filed.
struct IdTape {
    struct Entry {
        MxDbObjectId id; ///< may be null
        bool hard;
    };
    std::vector<Entry> entries;
};

/// Writes the place in the tape where another filer writes a handle.
class TapeWriter final : public DwgWriter {
public:
    TapeWriter(IdTape& tape, MxDbFilerType type, MxDbDatabase* database)
        : DwgWriter(type, database)
        , m_tape(tape) {}
    Mx::ErrorStatus writeSoftPointerId(const MxDbObjectId& id) override;
    Mx::ErrorStatus writeHardPointerId(const MxDbObjectId& id) override;

private:
    IdTape& m_tape;
};

/// Reads what a TapeWriter wrote; every reference passes through `turn` on the way.
class TapeReader final : public DwgReader {
public:
    using Turn = std::function<MxDbObjectId(MxDbObjectId)>;
    TapeReader(std::string_view bytes, const IdTape& tape, Turn turn, MxDbFilerType type, MxDbDatabase* database)
        : DwgReader(bytes, type, database)
        , m_tape(tape)
        , m_turn(std::move(turn)) {}
    Mx::ErrorStatus readSoftPointerId(MxDbObjectId& id) override;
    Mx::ErrorStatus readHardPointerId(MxDbObjectId& id) override;

private:
    Mx::ErrorStatus take(DwgItem item, MxDbObjectId& id);

    const IdTape& m_tape;
    const Turn m_turn;
};

/// What `object` refers to through its fields, its reactors and its extension dictionary; null references too.
IdTape referencesOf(const MxDbObject& object);

/// Hands the fields of `from` to `to`, an object of the same class, turning every reference.
Mx::ErrorStatus copyFields(const MxDbObject& from, MxDbObject& to, MxDbDatabase* database, TapeReader::Turn turn);

} // namespace merix::db
