// SPDX-License-Identifier: MIT
#include "fuzz/decoders.h"

#include "merix/db/database_imp.h"
#include "merix/io/dxf_binary.h"
#include "merix/io/dxf_encoding.h"
#include "merix/io/dxf_reader.h"
#include "merix/io/dxf_record.h"
#include "merix/io/dxf_tag.h"
#include "merix/io/merix_schema.h"

#include <cstdlib>
#include <cstring>

namespace merix::fuzz {
namespace {

std::string_view text(const std::uint8_t* bytes, std::size_t size) {
    return {reinterpret_cast<const char*>(bytes), size};
}

} // namespace

void dxf(const std::uint8_t* bytes, std::size_t size) {
    MxDbDatabase database;
    if (!io::readDxf(std::make_shared<const std::string>(text(bytes, size)), "case", database))
        return;
    // Every object as if it had been changed: the merge sees the same bytes.
    const io::DrawingParts& parts = *io::drawingParts(database.imp());
    for (const io::Part& part : parts.parts) {
        for (const db::ObjectStub* stub : part.run)
            io::currentRecord(*stub->object, parts);
    }
}

void binaryDxf(const std::uint8_t* bytes, std::size_t size) {
    std::string whole(text(bytes, size));
    if (!io::isBinaryDxf(whole))
        whole.insert(0, std::string_view("AutoCAD Binary DXF\r\n\x1a\0", 22));
    const io::BinaryDxfText read = io::binaryDxfToText(whole);
    if (!read.error.empty())
        return;
    std::string again;
    io::BinaryDxfWriter writer(read.form, false, [&again](std::string_view piece) {
        again += piece;
        return true;
    });
    io::DxfScanner scanner(read.text);
    io::DxfTag tag;
    while (scanner.next(tag) == io::DxfScanner::Result::kTag) {
        if (tag.code != 0 || io::trimmed(tag.value) != "EOF")
            continue;
        const std::string_view tags(read.text);
        const std::size_t end = scanner.position() - tag.text.size();
        if (!writer.write(tags.substr(0, end)) || !writer.finish(tags.substr(end)) || again != whole)
            std::abort();
        break;
    }
    dxf(reinterpret_cast<const std::uint8_t*>(whole.data()), whole.size());
}

void packed(const std::uint8_t* bytes, std::size_t size) {
    if (size < 3)
        return;
    const std::size_t claimed =
        bytes[0] | static_cast<std::size_t>(bytes[1]) << 8 | static_cast<std::size_t>(bytes[2]) << 16;
    std::string out;
    io::Packer().unpack(text(bytes + 3, size - 3), claimed, out);
}

void encoding(const std::uint8_t* bytes, std::size_t size) {
    for (const char* page : {"ANSI_1252", "ANSI_932", "ANSI_936", "ANSI_949", "ANSI_950"}) {
        for (const char* version : {"AC1015", "AC1021"}) {
            const io::DxfEncoding encoding(version, page);
            encoding.encode(encoding.decode(text(bytes, size)));
        }
    }
}

} // namespace merix::fuzz
