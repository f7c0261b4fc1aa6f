#pragma once

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

/// The little of SQLite that a tile store needs, with owners of its handles.
namespace sqlite {

class Failure : public std::runtime_error {
public:
    Failure(std::string const& text, int primaryCode) : std::runtime_error(text), code_(primaryCode) {}

    /// SQLITE_BUSY, SQLITE_FULL, ...
    int code() const { return code_; }

private:
    int code_;
};

class Database {
public:
    enum class Mode { ReadOnly, ReadWrite };

    /// Opens a file that exists. One thread at a time. Throws Failure.
    Database(std::string const& path, Mode mode);

    void execute(std::string const& statements);
    /// The number that a statement without parameters gives first.
    std::int64_t number(std::string const& statement);
    sqlite3* handle() const { return handle_.get(); }

private:
    struct Close {
        void operator()(sqlite3* handle) const;
    };
    std::unique_ptr<sqlite3, Close> handle_;
};

/// A prepared statement; the database outlives it. Parameters count from 1, columns from 0. Texts and blobs that are
/// bound are not copied: they stay until reset().
class Statement {
public:
    Statement(Database& database, std::string const& text);

    void bind(int parameter, std::int64_t value);
    void bind(int parameter, std::string const& value);
    void bind(int parameter, std::vector<std::uint8_t> const& value);
    void bindNull(int parameter);

    /// True where there is a row to look at. Throws Failure.
    bool step();
    /// Ready for other parameters.
    void reset();

    bool isNull(int column) const;
    std::int64_t integer(int column) const;
    std::string text(int column) const;
    std::vector<std::uint8_t> blob(int column) const;

private:
    struct Finalize {
        void operator()(sqlite3_stmt* statement) const;
    };
    void require(int code) const;

    sqlite3* database_;
    std::unique_ptr<sqlite3_stmt, Finalize> statement_;
};

} // namespace sqlite
