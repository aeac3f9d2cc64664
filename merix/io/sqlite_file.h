// SPDX-License-Identifier: MIT
// SQLite behind types that close what they opened. Failures are told by one exception, which stays inside this floor.
#pragma once

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace merix::io {

/// What went wrong, without the file's name.
class SqliteError : public std::runtime_error {
public:
    SqliteError(const std::string& what, int code)
        : std::runtime_error(what)
        , m_code(code) {}
    int code() const { return m_code; }

private:
    int m_code;
};

class SqliteFile {
public:
    enum class Mode { kRead, kReadWrite };
    /// Opens an existing file. It is taken as untrusted: its schema runs nothing, no cell is longer than kLongestCell.
    SqliteFile(const std::string& path, Mode mode);
    ~SqliteFile();
    SqliteFile(const SqliteFile&) = delete;
    SqliteFile& operator=(const SqliteFile&) = delete;

    void run(const char* sql);
    int changes() const;
    sqlite3* handle() const { return m_file; }
    [[noreturn]] void fail() const;

    static constexpr int kLongestCell = 1 << 30;

private:
    sqlite3* m_file = nullptr;
};

/// A statement that is prepared once and run often.
class SqliteStatement {
public:
    SqliteStatement(SqliteFile& file, const char* sql);
    ~SqliteStatement();
    SqliteStatement(const SqliteStatement&) = delete;
    SqliteStatement& operator=(const SqliteStatement&) = delete;

    /// Parameters from 1; texts and blobs are not copied and must live until the next step.
    SqliteStatement& bind(int place, std::int64_t value);
    SqliteStatement& bindText(int place, std::string_view value);
    SqliteStatement& bindBlob(int place, std::string_view value);
    SqliteStatement& bindNull(int place);

    /// True for a row. After the last one the statement is ready for the next run.
    bool step();
    /// For statements that give no rows.
    void execute();

    /// Columns from 0, valid until the next step.
    std::int64_t integer(int column) const;
    std::string_view bytes(int column) const;
    bool isNull(int column) const;

private:
    SqliteFile& m_file;
    sqlite3_stmt* m_statement = nullptr;
};

} // namespace merix::io
