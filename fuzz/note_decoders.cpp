// SPDX-License-Identifier: MIT
#include "fuzz/note_decoders.h"

#include "merix/db/database_imp.h"
#include "merix/db/dwg_filer.h"
#include "merix/io/dxf_in_filer.h"
#include "merix/io/dxf_out_filer.h"
#include "phonomark/entity/phonomark.h"
#include "phonomark/entity/ps_reactor.h"

#include <cstdlib>

namespace merix::fuzz {
namespace {

/// A drawing that handles are looked up in, with an object for them to find.
class Drawing {
public:
    Drawing()
        : m_working(&m_database) {
        m_database.imp().createDefaults();
    }
    MxDbDatabase& database() { return m_database; }

private:
    MxDbDatabase m_database;
    const db::WorkingDatabaseScope m_working;
};

template <class Class> void stream(const std::uint8_t* bytes, std::size_t size) {
    Drawing drawing;
    for (const MxDbFilerType type : {MxDbFilerType::kFile, MxDbFilerType::kUndo}) {
        Class first, second;
        db::DwgReader reader({reinterpret_cast<const char*>(bytes), size}, type, &drawing.database());
        if (first.dwgInFields(&reader) != Mx::eOk)
            continue;
        const std::string written = db::dwgImage(first, type);
        db::DwgReader again(written, type, &drawing.database());
        if (second.dwgInFields(&again) != Mx::eOk || db::dwgImage(second, type) != written)
            std::abort();
    }
}

bool readTags(MxDbObject& object, MxDbDatabase& database, const std::vector<io::DxfTag>& tags) {
    const io::DxfEncoding encoding("AC1032", "");
    io::DxfInFiler filer(database, encoding, tags);
    return object.dxfInFields(&filer) == Mx::eOk && filer.filerStatus() == Mx::eOk;
}

std::string writeTags(const MxDbObject& object, MxDbDatabase& database) {
    const io::DxfEncoding encoding("AC1032", "");
    io::DxfOutFiler filer(database, encoding);
    if (object.dxfOutFields(&filer) != Mx::eOk)
        std::abort();
    std::string text;
    for (const io::DxfOutTag& tag : filer.takeTags())
        io::appendTag(text, tag.code, tag.value, "\n");
    return text;
}

std::vector<io::DxfTag> scan(std::string_view text) {
    std::vector<io::DxfTag> tags;
    io::DxfScanner scanner(text);
    io::DxfTag tag;
    while (scanner.next(tag) == io::DxfScanner::Result::kTag)
        tags.push_back(tag);
    return tags;
}

template <class Class> void tags(const std::uint8_t* bytes, std::size_t size) {
    Drawing drawing;
    Class first, second;
    if (!readTags(first, drawing.database(), scan({reinterpret_cast<const char*>(bytes), size})))
        return;
    const std::string written = writeTags(first, drawing.database());
    if (!readTags(second, drawing.database(), scan(written)) || writeTags(second, drawing.database()) != written)
        std::abort();
}

} // namespace

void noteStream(const std::uint8_t* bytes, std::size_t size) {
    stream<MxDbPhonomark>(bytes, size);
}
void reactorStream(const std::uint8_t* bytes, std::size_t size) {
    stream<PhonomarkPsReactor>(bytes, size);
}
void noteTags(const std::uint8_t* bytes, std::size_t size) {
    tags<MxDbPhonomark>(bytes, size);
}
void reactorTags(const std::uint8_t* bytes, std::size_t size) {
    tags<PhonomarkPsReactor>(bytes, size);
}

} // namespace merix::fuzz
