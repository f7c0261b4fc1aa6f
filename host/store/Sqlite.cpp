#include "host/store/Sqlite.h"

#include <sqlite3.h>

#include <cerrno>
#include <new>
#include <system_error>

namespace sqlite {

namespace {

constexpr int kPrimaryCode = 0xff;

// Of a failed write SQLite itself says "disk I/O error"; the system says why.
Failure failureOf(sqlite3* database) {
    int const code = sqlite3_errcode(database) & kPrimaryCode;
    int const known = sqlite3_system_errno(database);
    int const reason = known != 0 ? known : errno; // of a failed commit only errno knows
    bool const system = (code == SQLITE_IOERR || code == SQLITE_FULL || code == SQLITE_CANTOPEN) && reason != 0;
    return Failure(system ? std::generic_category().message(reason) : sqlite3_errmsg(database), code);
}

} // namespace

void Database::Close::operator()(sqlite3* handle) const {
    sqlite3_close(handle);
}

Database::Database(std::string const& path, Mode mode) {
    int const access = mode == Mode::ReadOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE;
    sqlite3* opened = nullptr;
    int const code = sqlite3_open_v2(path.c_str(), &opened, access | SQLITE_OPEN_NOMUTEX, nullptr);
    handle_.reset(opened);
    if (opened == nullptr) throw std::bad_alloc();
    if (code != SQLITE_OK) throw failureOf(opened);
}

void Database::execute(std::string const& statements) {
    errno = 0;
    if (sqlite3_exec(handle(), statements.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) throw failureOf(handle());
}

std::int64_t Database::number(std::string const& statement) {
    Statement query(*this, statement);
    return query.step() ? query.integer(0) : 0;
}

void Statement::Finalize::operator()(sqlite3_stmt* statement) const {
    sqlite3_finalize(statement);
}

Statement::Statement(Database& database, std::string const& text) : database_(database.handle()) {
    sqlite3_stmt* prepared = nullptr;
    int const code = sqlite3_prepare_v2(database_, text.c_str(), static_cast<int>(text.size()), &prepared, nullptr);
    statement_.reset(prepared);
    require(code);
}

void Statement::bind(int parameter, std::int64_t value) {
    require(sqlite3_bind_int64(statement_.get(), parameter, value));
}

void Statement::bind(int parameter, std::string const& value) {
    require(sqlite3_bind_text64(statement_.get(), parameter, value.data(), value.size(), SQLITE_STATIC, SQLITE_UTF8));
}

void Statement::bind(int parameter, std::vector<std::uint8_t> const& value) {
    require(sqlite3_bind_blob64(statement_.get(), parameter, value.data(), value.size(), SQLITE_STATIC));
}

void Statement::bindNull(int parameter) {
    require(sqlite3_bind_null(statement_.get(), parameter));
}

bool Statement::step() {
    errno = 0;
    int const code = sqlite3_step(statement_.get());
    if (code == SQLITE_ROW) return true;
    if (code != SQLITE_DONE) throw failureOf(database_);
    return false;
}

void Statement::reset() {
    // It repeats the code of the last step, which that one has thrown.
    sqlite3_reset(statement_.get());
}

bool Statement::isNull(int column) const {
    return sqlite3_column_type(statement_.get(), column) == SQLITE_NULL;
}

std::int64_t Statement::integer(int column) const {
    return sqlite3_column_int64(statement_.get(), column);
}

std::string Statement::text(int column) const {
    auto const* const text = reinterpret_cast<char const*>(sqlite3_column_text(statement_.get(), column));
    return text == nullptr ? ""
                           : std::string(text, static_cast<size_t>(sqlite3_column_bytes(statement_.get(), column)));
}

std::vector<std::uint8_t> Statement::blob(int column) const {
    auto const* const bytes = static_cast<std::uint8_t const*>(sqlite3_column_blob(statement_.get(), column));
    if (bytes == nullptr) return {};
    return {bytes, bytes + sqlite3_column_bytes(statement_.get(), column)};
}

void Statement::require(int code) const {
    if (code != SQLITE_OK) throw failureOf(database_);
}

} // namespace sqlite
