// SPDX-License-Identifier: MIT
// Merges what an object says now into the text that it was read from. Three states are compared: the text, what the
// class makes of the text (`before`) and what the object says now. A tag that the class does not understand is in the
// first only and stays where it is; one that means the same before and now keeps its text; one that is no longer
// said goes; a new one is put behind the one that it follows.
#pragma once

#include "merix/io/dxf_record.h"

#include <string>
#include <string_view>
#include <vector>

namespace merix::io {

/// `before` is empty when the class cannot read the text. Extended data and the records that follow are kept.
std::string mergeRecord(std::string_view source, const DxfImage& now, const std::vector<DxfOutTag>& before,
                        const DrawingParts& parts);

/// The groups that name the extension dictionary and the reactors, those that are asked for and not empty.
std::string linkGroups(const DxfImage& image, bool extension, bool reactors, std::string_view lineEnd);

} // namespace merix::io
