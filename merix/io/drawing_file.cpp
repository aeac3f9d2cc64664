// SPDX-License-Identifier: MIT
#include "merix/io/drawing_file.h"

#include "merix/io/dxf_reader.h"
#include "merix/io/dxf_writer.h"
#include "merix/io/file_access.h"
#include "merix/io/merix_reader.h"
#include "merix/io/merix_writer.h"

#include <algorithm>
#include <exception>

namespace merix::io {
namespace {

enum class Kind { kDxf, kMerix, kUnknown };

bool endsWith(const std::string& path, std::string_view suffix) {
    return path.size() >= suffix.size() &&
           std::equal(
               suffix.begin(), suffix.end(), path.end() - static_cast<std::ptrdiff_t>(suffix.size()),
               [](char a, char b) { return a == (b >= 'A' && b <= 'Z' ? static_cast<char>(b - 'A' + 'a') : b); });
}

Kind kindOf(const std::string& path) {
    if (endsWith(path, ".dxf"))
        return Kind::kDxf;
    return endsWith(path, ".merix") || endsWith(path, ".ms$") ? Kind::kMerix : Kind::kUnknown;
}

FileResult failed(Mx::ErrorStatus status, std::string error) {
    return {status, std::move(error), {}};
}

FileResult unknownKind(const std::string& path) {
    return failed(Mx::eInvalidInput, path + ": the name of a drawing ends in .dxf or .merix");
}

FileResult dwgKind(const std::string& path) {
    return failed(Mx::eInvalidInput,
                  path + ": a .dwg file cannot be read; save it as DXF in the program that it comes from");
}

/// By the first bytes, whatever its name is: AC1012 and later, which is what people have.
bool isDwg(std::string_view bytes) {
    return bytes.starts_with("AC10") && bytes.size() > 6 && bytes[6] == 0;
}

FileResult read(const std::string& path, MxDbDatabase& database) {
    const Kind kind = kindOf(path);
    if (endsWith(path, ".dwg"))
        return dwgKind(path);
    if (kind == Kind::kUnknown)
        return unknownKind(path);
    std::string error;
    if (kind == Kind::kMerix) {
        if (!checkReadable(path, error))
            return failed(error.ends_with("no such file") ? Mx::eFileNotFound : Mx::eFileUnreadable, error);
        return readMerix(path, database);
    }
    auto bytes = readFile(path, error);
    if (!bytes)
        return failed(error.ends_with("no such file") ? Mx::eFileNotFound : Mx::eFileUnreadable, error);
    if (isDwg(*bytes))
        return dwgKind(path);
    return readDxf(std::move(bytes), path, database);
}

FileResult write(const std::string& path, MxDbDatabase& database, std::optional<DxfForm> form) {
    if (endsWith(path, ".ms$"))
        return unknownKind(path);
    switch (kindOf(path)) {
    case Kind::kDxf:
        return writeDxf(path, database, form);
    case Kind::kMerix:
        return writeMerix(path, database);
    case Kind::kUnknown:
        break;
    }
    return unknownKind(path);
}

/// Memory is the one thing that may run out anywhere.
template <class Operation> FileResult guarded(const std::string& path, Operation operation) {
    try {
        return operation();
    } catch (const std::exception& exception) {
        return failed(Mx::eFileUnreadable, path + ": " + exception.what());
    }
}

} // namespace

FileResult readDrawing(const std::string& path, MxDbDatabase& database) {
    return guarded(path, [&] { return read(path, database); });
}

FileResult writeDrawing(const std::string& path, MxDbDatabase& database, std::optional<DxfForm> form) {
    return guarded(path, [&] { return write(path, database, form); });
}

FileResult writeSnapshot(const std::string& path, MxDbDatabase& database) {
    return guarded(path, [&] { return writeMerixSnapshot(path, database); });
}

} // namespace merix::io
