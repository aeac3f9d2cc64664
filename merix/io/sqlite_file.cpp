// SPDX-License-Identifier: MIT
#include "merix/io/sqlite_file.h"

#include <cstring>
#include <sqlite3.h>

namespace merix::io {

SqliteFile::SqliteFile(const std::string& path, Mode mode) {
    // Reading, too, may have to take back what a process that died left half done; if the file cannot be written,
    // it is read as it is.
    int status = sqlite3_open_v2(path.c_str(), &m_file, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
    if (status != SQLITE_OK && mode == Mode::kRead) {
        sqlite3_close(m_file);
        status = sqlite3_open_v2(path.c_str(), &m_file, SQLITE_OPEN_READONLY | SQLITE_OPEN_NOMUTEX, nullptr);
    }
    try {
        if (status != SQLITE_OK)
            fail();
        sqlite3_extended_result_codes(m_file, 1);
        sqlite3_db_config(m_file, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
        sqlite3_db_config(m_file, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
        sqlite3_db_config(m_file, SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);
        sqlite3_db_config(m_file, SQLITE_DBCONFIG_ENABLE_VIEW, 0, nullptr);
        sqlite3_limit(m_file, SQLITE_LIMIT_LENGTH, kLongestCell);
        sqlite3_limit(m_file, SQLITE_LIMIT_ATTACHED, 0);
        sqlite3_busy_timeout(m_file, 2000);
        run("PRAGMA mmap_size = 0");
        run("PRAGMA cell_size_check = ON");
    } catch (...) {
        sqlite3_close(m_file);
        throw;
    }
}

SqliteFile::~SqliteFile() {
    sqlite3_close(m_file);
}

void SqliteFile::run(const char* sql) {
    if (sqlite3_exec(m_file, sql, nullptr, nullptr, nullptr) != SQLITE_OK)
        fail();
}

int SqliteFile::changes() const {
    return sqlite3_changes(m_file);
}

void SqliteFile::fail() const {
    const int code = sqlite3_errcode(m_file);
    std::string text = sqlite3_errmsg(m_file);
    const int error = sqlite3_system_errno(m_file);
    if ((code == SQLITE_IOERR || code == SQLITE_CANTOPEN) && error != 0)
        text = std::strerror(error);
    throw SqliteError(text, code);
}

SqliteStatement::SqliteStatement(SqliteFile& file, const char* sql)
    : m_file(file) {
    if (sqlite3_prepare_v3(file.handle(), sql, -1, SQLITE_PREPARE_PERSISTENT, &m_statement, nullptr) != SQLITE_OK)
        file.fail();
}

SqliteStatement::~SqliteStatement() {
    sqlite3_finalize(m_statement);
}

SqliteStatement& SqliteStatement::bind(int place, std::int64_t value) {
    if (sqlite3_bind_int64(m_statement, place, value) != SQLITE_OK)
        m_file.fail();
    return *this;
}

SqliteStatement& SqliteStatement::bindText(int place, std::string_view value) {
    if (sqlite3_bind_text64(m_statement, place, value.data() ? value.data() : "", value.size(), SQLITE_STATIC,
                            SQLITE_UTF8) != SQLITE_OK)
        m_file.fail();
    return *this;
}

SqliteStatement& SqliteStatement::bindBlob(int place, std::string_view value) {
    if (sqlite3_bind_blob64(m_statement, place, value.data() ? value.data() : "", value.size(), SQLITE_STATIC) !=
        SQLITE_OK)
        m_file.fail();
    return *this;
}

SqliteStatement& SqliteStatement::bindNull(int place) {
    if (sqlite3_bind_null(m_statement, place) != SQLITE_OK)
        m_file.fail();
    return *this;
}

bool SqliteStatement::step() {
    const int status = sqlite3_step(m_statement);
    if (status == SQLITE_ROW)
        return true;
    if (status != SQLITE_DONE) {
        try {
            m_file.fail();
        } catch (...) {
            sqlite3_reset(m_statement);
            throw;
        }
    }
    sqlite3_reset(m_statement);
    return false;
}

void SqliteStatement::execute() {
    while (step()) {
    }
}

std::int64_t SqliteStatement::integer(int column) const {
    return sqlite3_column_int64(m_statement, column);
}

std::string_view SqliteStatement::bytes(int column) const {
    const void* data = sqlite3_column_blob(m_statement, column);
    const int size = sqlite3_column_bytes(m_statement, column);
    return data ? std::string_view(static_cast<const char*>(data), static_cast<std::size_t>(size)) : std::string_view();
}

bool SqliteStatement::isNull(int column) const {
    return sqlite3_column_type(m_statement, column) == SQLITE_NULL;
}

} // namespace merix::io
