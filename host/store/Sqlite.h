#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

struct sqlite3_stmt;

/// The little of SQLite that a tile store needs, with owners of its handles.
namespace sqlite {

/// Of a file's path from the root, without links: SQLite takes 512, less those of "-journal".
constexpr size_t kMaxPathBytes = 504;

class Failure : public std::runtime_error {
public:
    Failure(std::string const& text, int primaryCode) : std::runtime_error(text), code_(primaryCode) {}

    /// SQLITE_BUSY, SQLITE_FULL, ...
    int code() const { return code_; }

private:
    int code_;
};

/// Asked now and then while a statement runs. What it throws ends the statement, and reaches who runs it.
using Interruption = std::function<void()>;

/// One thread at a time. Every operation throws Failure, std::bad_alloc and what the interruption throws.
class Database {
public:
    /// ReadOnly is for files that may come from anywhere and that nobody changes: SQLite takes no locks, looks for no
    /// journal and no log beside the file, makes none, maps no memory, and runs nothing that the file's schema says.
    /// Its rows have at most kFirstRowBytes until limitRows().
    enum class Mode { ReadOnly, ReadWrite };
    static constexpr size_t kFirstRowBytes = 16 * 1024;

    /// Opens a file that exists, of any name.
    Database(std::string const& path, Mode mode, Interruption interruption = {});
    ~Database();
    Database(Database const&) = delete;
    Database& operator=(Database const&) = delete;

    void execute(std::string const& statements);
    /// The number that a statement without parameters gives first.
    std::int64_t number(std::string const& statement);

    /// A row of more bytes is a Failure from now on.
    void limitRows(size_t bytes);
    /// A statement that takes more steps of SQLite's machine, roughly, is a Failure from now on.
    void limitSteps(size_t steps);

private:
    friend class Statement;
    struct State;
    std::unique_ptr<State> state_;
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

    enum class Type { Null, Integer, Real, Text, Blob };
    Type type(int column) const;
    bool isNull(int column) const { return type(column) == Type::Null; }
    std::int64_t integer(int column) const;
    std::string text(int column) const;
    std::vector<std::uint8_t> blob(int column) const;

private:
    struct Finalize {
        void operator()(sqlite3_stmt* statement) const;
    };
    void require(int code) const;
    void requireMemory() const;

    Database::State& database_;
    std::unique_ptr<sqlite3_stmt, Finalize> statement_;
};

} // namespace sqlite
