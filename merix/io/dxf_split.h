// SPDX-License-Identifier: MIT
// Takes a text DXF apart into the parts of the drawing and its records, without making any object. Nothing is copied
// and nothing is left out: parts and records together are the file.
#pragma once

#include "merix/io/drawing_parts.h"
#include "merix/io/dxf_tag.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace merix::io {

/// One record with the records that belong to it (VERTEX, ATTRIB, SEQEND).
struct DxfRecord {
    std::string_view text;
    std::string_view name; ///< trimmed
    std::uint32_t line = 0;
    std::uint32_t part = 0;   ///< the run that it stands in
    std::uint64_t handle = 0; ///< 0: none
    std::uint64_t owner = 0;
    std::string_view layer;   ///< group 8, as bytes of the file
    std::string_view subject; ///< group 2: the name of a block, table or section
    bool paper = false;       ///< group 67
    bool damaged = false;     ///< its tags cannot be told apart
};

struct DxfSplit {
    std::unique_ptr<DrawingParts> parts;
    std::vector<DxfRecord> records; ///< of all runs, in file order
    std::vector<DxfRecord> blocks;  ///< BLOCK records; `part` is that of kBlockBegin
    db::DatabaseImp::Header header;
    std::string_view currentLayer, currentLinetype; ///< $CLAYER and $CELTYPE, as bytes of the file
    std::uint64_t lastHandle = 0;                   ///< the greatest handle that the file names
    std::string error;                              ///< one line, empty when all is well
    std::vector<std::string> notes;
};

/// Handles from here on are taken as damaged: there would be none left to give out.
constexpr std::uint64_t kHandleBound = std::uint64_t{1} << 62;

/// How a message names the place of a line, counted from 1.
using PlaceNamer = std::function<std::string(std::uint32_t line)>;
std::string nameLine(std::uint32_t line);

DxfSplit splitDxf(std::shared_ptr<const std::string> buffer, const PlaceNamer& placeName = nameLine);

/// The first record in `text`: everything but its line and part.
DxfRecord readHead(std::string_view text);

} // namespace merix::io
