#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

struct sqlite3_stmt;

/// The part of SQLite that a tile store needs, with owners of its handles.
namespace sqlite {

/// Longest path of a file, from the root and without links: SQLite's limit is 512, less the length of "-journal".
constexpr size_t kMaxPathBytes = 504;

class Failure : public std::runtime_error {
public:
    Failure(std::string const& text, int primaryCode) : std::runtime_error(text), code_(primaryCode) {}

    /// SQLITE_BUSY, SQLITE_FULL, ...
    int code() const { return code_; }

private:
    int code_;
};

/// Called now and then while a statement runs. An exception ends the statement and reaches its caller.
using Interruption = std::function<void()>;

/// One thread at a time. Every operation throws Failure, std::bad_alloc and what the interruption throws.
class Database {
public:
    /// ReadOnly is for files from untrusted sources that no program changes: SQLite takes no locks, looks for no
    /// journal and no log beside the file, creates none, maps no memory, and runs nothing that the file's schema says.
    /// A row has at most kFirstRowBytes until limitRows().
    enum class Mode { ReadOnly, ReadWrite };
    static constexpr size_t kFirstRowBytes = 16 * 1024;

    /// Opens an existing file, whatever its name.
    Database(std::string const& path, Mode mode, Interruption interruption = {});
    ~Database();
    Database(Database const&) = delete;
    Database& operator=(Database const&) = delete;

    void execute(std::string const& statements);
    /// The first number that a statement without parameters returns.
    std::int64_t number(std::string const& statement);

    /// From now on a row of more bytes is a Failure.
    void limitRows(size_t bytes);
    /// From now on a statement of more steps of SQLite's virtual machine, roughly, is a Failure.
    void limitSteps(size_t steps);

private:
    friend class Statement;
    struct State;
    std::unique_ptr<State> state_;
};

/// A prepared statement; the database must outlive it. Parameters count from 1, columns from 0. Bound texts and blobs
/// are not copied: they must live until reset().
class Statement {
public:
    Statement(Database& database, std::string const& text);

    void bind(int parameter, std::int64_t value);
    void bind(int parameter, std::string const& value);
    void bind(int parameter, std::vector<std::uint8_t> const& value);
    void bindNull(int parameter);

    /// True if there is a row to read. Throws Failure.
    bool step();
    /// Makes the statement ready for other parameters.
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
