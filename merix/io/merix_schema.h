// SPDX-License-Identifier: MIT
// What a native drawing looks like inside; docs/merix-format.md tells the meaning of tables and columns.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace merix::io {

constexpr std::int64_t kMerixApplicationId = 0x4D525844; // "MRXD"
constexpr std::int64_t kMerixVersion = 1;

struct SchemaTable {
    std::string_view name;
    const char* sql;
};
constexpr std::array<SchemaTable, 6> kMerixSchema = {{
    {"meta", "CREATE TABLE meta(key TEXT PRIMARY KEY NOT NULL, value TEXT NOT NULL) WITHOUT ROWID"},
    {"class", "CREATE TABLE class(id INTEGER PRIMARY KEY, name TEXT NOT NULL, dxf TEXT NOT NULL)"},
    {"object", "CREATE TABLE object(handle INTEGER PRIMARY KEY, class INTEGER NOT NULL, owner INTEGER NOT NULL, "
               "run INTEGER NOT NULL, seq INTEGER NOT NULL, stale INTEGER NOT NULL, text_at INTEGER NOT NULL, "
               "text_size INTEGER NOT NULL, stream BLOB)"},
    {"bytes", "CREATE TABLE bytes(object INTEGER PRIMARY KEY, size INTEGER NOT NULL, data BLOB NOT NULL)"},
    {"text", "CREATE TABLE text(at INTEGER PRIMARY KEY, size INTEGER NOT NULL, data BLOB NOT NULL)"},
    {"part", "CREATE TABLE part(id INTEGER PRIMARY KEY, seq INTEGER NOT NULL, role INTEGER NOT NULL, "
             "owner INTEGER NOT NULL, text_at INTEGER NOT NULL, text_size INTEGER NOT NULL)"},
}};

/// The run of objects that the program needs and that are not in the skeleton.
constexpr std::int64_t kImpliedRun = -1;
/// Streams up to this size stand in the object's own row, as they are.
constexpr std::size_t kLongestInlineStream = 2048;
/// The row of bytes with the DXF tags of an object, beside the one with its stream.
constexpr std::int64_t tagsKey(std::int64_t handle) {
    return -handle;
}
/// The skeleton's text is stored in pieces of at most this size.
constexpr std::size_t kTextPiece = std::size_t{1} << 20;

/// `bytes` as they are stored: compressed when that makes them shorter. Of `size` bytes stored in as many, nothing was
/// compressed.
class Packer {
public:
    Packer();
    ~Packer();
    Packer(const Packer&) = delete;
    Packer& operator=(const Packer&) = delete;
    /// Valid until the next call.
    std::string_view pack(std::string_view bytes);
    /// Appends `size` bytes to `out`; false when `packed` is not what pack makes of that many.
    bool unpack(std::string_view packed, std::size_t size, std::string& out);

private:
    void* m_compressor;
    void* m_decompressor;
    std::string m_buffer;
};

} // namespace merix::io
