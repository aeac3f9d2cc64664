// SPDX-License-Identifier: MIT
// A second, independent view of DXF text for tests: lines taken in pairs, nothing understood.
#pragma once

#include <QByteArray>
#include <QString>

#include <vector>

namespace merix::test {

struct Tag {
    int code = 0;
    QByteArray value; ///< as it stands, without the line end
    bool operator==(const Tag&) const = default;
};

/// All tags of a text DXF file; empty when it cannot be read or a group code is no number.
std::vector<Tag> readTags(const QString& path);

/// Tags of one record, its code 0 first.
using Record = std::vector<Tag>;

/// The records of a section, e.g. "ENTITIES".
std::vector<Record> records(const std::vector<Tag>& tags, const char* section);

/// The first value of `code`, empty when there is none.
QByteArray value(const Record& record, int code);
double number(const Record& record, int code);

/// What `after` has and `before` has not when `before` is found in `after` in its order, tag by tag. `lost` gets the
/// index of the first tag of `before` that is missing, -1 when none is. Values behind `freeVariable` (a header
/// variable such as "$HANDSEED") may differ.
struct Difference {
    std::vector<Tag> added;
    long lost = -1;
};
Difference compare(const std::vector<Tag>& before, const std::vector<Tag>& after, const char* freeVariable);

} // namespace merix::test
