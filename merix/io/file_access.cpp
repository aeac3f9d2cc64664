// SPDX-License-Identifier: MIT
#include "merix/io/file_access.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace merix::io {
namespace {

constexpr std::size_t kBufferSize = std::size_t{1} << 18;

std::string folderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos)
        return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

bool writeAll(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(file, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

/// Closes when it goes.
class File {
public:
    explicit File(int file)
        : m_file(file) {}
    File(File&& other) noexcept
        : m_file(std::exchange(other.m_file, -1)) {}
    File& operator=(File&&) = delete;
    ~File() {
        if (m_file >= 0)
            ::close(m_file);
    }
    int get() const { return m_file; }

private:
    int m_file;
};

/// A regular file that is not empty; no file with one line in `error` otherwise.
File openForRead(const std::string& path, std::size_t& size, std::string& error) {
    const auto fail = [&](const std::string& what) {
        error = path + ": " + what;
        return File(-1);
    };
    File file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (file.get() < 0)
        return fail(errno == ENOENT ? "there is no such file" : std::strerror(errno));
    struct stat status {};
    if (::fstat(file.get(), &status) != 0)
        return fail(std::strerror(errno));
    if (S_ISDIR(status.st_mode))
        return fail("this is a directory, not a drawing");
    if (!S_ISREG(status.st_mode))
        return fail("this is no regular file");
    if (status.st_size == 0)
        return fail("the file is empty");
    size = static_cast<std::size_t>(status.st_size);
    return file;
}

} // namespace

bool checkReadable(const std::string& path, std::string& error) {
    std::size_t size = 0;
    return openForRead(path, size, error).get() >= 0;
}

std::shared_ptr<const std::string> readFile(const std::string& path, std::string& error) {
    std::size_t length = 0;
    const File file = openForRead(path, length, error);
    if (file.get() < 0)
        return nullptr;
    auto bytes = std::make_shared<std::string>();
    bytes->resize(length);
    std::size_t size = 0;
    while (size < bytes->size()) {
        const ssize_t count = ::read(file.get(), bytes->data() + size, bytes->size() - size);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0) {
            error = path + ": " + std::strerror(errno);
            return nullptr;
        }
        if (count == 0)
            break; // it became shorter meanwhile
        size += static_cast<std::size_t>(count);
    }
    bytes->resize(size);
    return bytes;
}

std::string finalPath(const std::string& path) {
    const auto resolve = [](const std::string& name) {
        char* resolved = ::realpath(name.c_str(), nullptr);
        std::string result(resolved ? resolved : "");
        std::free(resolved);
        return result;
    };
    if (std::string whole = resolve(path); !whole.empty())
        return whole;
    const std::string folder = resolve(folderOf(path));
    return folder.empty() ? path : folder + "/" + path.substr(path.rfind('/') + 1);
}

ReplacementFile::~ReplacementFile() {
    if (m_file >= 0)
        ::close(m_file);
    if (!m_temporary.empty())
        ::unlink(m_temporary.c_str());
}

bool ReplacementFile::fail(int error) {
    m_error = m_path + ": cannot be written: " + std::strerror(error);
    return false;
}

bool ReplacementFile::create(const std::string& path, Readers readers) {
    m_path = finalPath(path);
    struct stat status {};
    const bool exists = ::stat(m_path.c_str(), &status) == 0;
    if (exists && !S_ISREG(status.st_mode))
        return fail(S_ISDIR(status.st_mode) ? EISDIR : EINVAL);
    if (exists && ::access(m_path.c_str(), W_OK) != 0)
        return fail(errno);
    std::string name = folderOf(m_path) + "/.merix-XXXXXX";
    m_file = ::mkostemp(name.data(), O_CLOEXEC);
    if (m_file < 0)
        return fail(errno);
    m_temporary = std::move(name);
    if (readers == Readers::kOwner)
        return true; // as it was made
    mode_t mode = status.st_mode & 07777U;
    if (!exists) {
        const mode_t mask = ::umask(0);
        ::umask(mask);
        mode = 0666U & ~mask;
    }
    return ::fchmod(m_file, mode) == 0 || fail(errno);
}

bool ReplacementFile::flush() {
    if (!writeAll(m_file, m_buffer))
        return fail(errno);
    m_buffer.clear();
    return true;
}

bool ReplacementFile::write(std::string_view bytes) {
    if (bytes.size() < kBufferSize) {
        m_buffer.append(bytes);
        return m_buffer.size() < kBufferSize || flush();
    }
    return flush() && (writeAll(m_file, bytes) || fail(errno));
}

bool ReplacementFile::commit() {
    if (!flush())
        return false;
    if (::fsync(m_file) != 0)
        return fail(errno);
    if (::close(std::exchange(m_file, -1)) != 0)
        return fail(errno);
    if (::rename(m_temporary.c_str(), m_path.c_str()) != 0)
        return fail(errno);
    m_temporary.clear();
    // The name is as durable as the bytes once the folder is on disk; not every file system can be asked for that.
    const int folder = ::open(folderOf(m_path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder >= 0) {
        ::fsync(folder);
        ::close(folder);
    }
    return true;
}

} // namespace merix::io
