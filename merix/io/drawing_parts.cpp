// SPDX-License-Identifier: MIT
#include "merix/io/drawing_parts.h"

namespace merix::io {

std::string_view DrawingParts::keep(std::string text) {
    buffers.push_back(std::make_shared<const std::string>(std::move(text)));
    return *buffers.back();
}

std::unique_ptr<DrawingParts> DrawingParts::clone() const {
    auto copy = std::make_unique<DrawingParts>();
    copy->parts = parts;
    copy->buffers = buffers;
    copy->version = version;
    copy->codePage = codePage;
    copy->lineEnd = lineEnd;
    copy->form = form;
    copy->sourceForm = sourceForm;
    copy->handSeed = handSeed;
    copy->classNames = classNames;
    copy->implied = implied;
    copy->leftOut = leftOut;
    if (origin)
        copy->origin = std::make_unique<Origin>(*origin);
    copy->changedSinceOrigin = changedSinceOrigin;
    return copy;
}

DrawingParts* drawingParts(db::DatabaseImp& database) {
    return static_cast<DrawingParts*>(database.fileParts.get());
}

} // namespace merix::io
