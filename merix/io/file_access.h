// SPDX-License-Identifier: MIT
// Whole files: read at once, and replaced at once. Whenever the process dies, the file is the old one or the new one.
#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace merix::io {

/// The bytes of a regular file; null with one line in `error` when it cannot be read.
std::shared_ptr<const std::string> readFile(const std::string& path, std::string& error);

/// True for a regular file that is not empty and can be read.
bool checkReadable(const std::string& path, std::string& error);

/// The absolute name of the file that `path` leads to, whether or not there is one yet; `path` itself when its folder
/// is none.
std::string finalPath(const std::string& path);

/// A file that takes the place of `path` when it is complete.
class ReplacementFile {
public:
    ReplacementFile() = default;
    /// Removes what was not committed.
    ~ReplacementFile();
    ReplacementFile(const ReplacementFile&) = delete;
    ReplacementFile& operator=(const ReplacementFile&) = delete;

    enum class Readers {
        kAsBefore, ///< those of the file that is replaced; of a new one, whom the user's mask allows
        kOwner,    ///< the user alone
    };
    /// Makes an empty file beside `path`. After a failure, here and below, error() says why.
    bool create(const std::string& path, Readers readers = Readers::kAsBefore);
    bool write(std::string_view bytes);
    /// Puts the file on disk and in place.
    bool commit();

    /// The name of the file until it is committed.
    const std::string& temporaryPath() const { return m_temporary; }
    const std::string& error() const { return m_error; }

private:
    bool fail(int error);
    bool flush();

    std::string m_path, m_temporary, m_error, m_buffer;
    int m_file = -1;
};

} // namespace merix::io
