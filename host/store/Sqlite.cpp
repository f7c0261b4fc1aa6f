#include "host/store/Sqlite.h"

#include <sqlite3.h>

#include <array>
#include <cerrno>
#include <exception>
#include <limits>
#include <new>
#include <system_error>
#include <utility>

namespace sqlite {

namespace {

constexpr int kPrimaryCode = 0xff;
constexpr int kStepsPerCheck = 10'000;
constexpr int kLongestLockWait = 1000; // milliseconds

struct Setting {
    int option;
    int value;
};

// The settings that SQLite's page "Defense Against The Dark Arts" recommends.
constexpr std::array<Setting, 7> kDefences{{{SQLITE_DBCONFIG_DEFENSIVE, 1},
                                            {SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0},
                                            {SQLITE_DBCONFIG_ENABLE_TRIGGER, 0},
                                            {SQLITE_DBCONFIG_ENABLE_VIEW, 0},
                                            {SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, 0},
                                            {SQLITE_DBCONFIG_DQS_DDL, 0},
                                            {SQLITE_DBCONFIG_DQS_DML, 0}}};

// Limits far above the needs of our statements and tables.
constexpr std::array<Setting, 10> kLimits{{{SQLITE_LIMIT_LENGTH, Database::kFirstRowBytes},
                                           {SQLITE_LIMIT_SQL_LENGTH, 1024},
                                           {SQLITE_LIMIT_COLUMN, 16},
                                           {SQLITE_LIMIT_EXPR_DEPTH, 16},
                                           {SQLITE_LIMIT_COMPOUND_SELECT, 2},
                                           {SQLITE_LIMIT_FUNCTION_ARG, 8},
                                           {SQLITE_LIMIT_ATTACHED, 0},
                                           {SQLITE_LIMIT_LIKE_PATTERN_LENGTH, 64},
                                           {SQLITE_LIMIT_TRIGGER_DEPTH, 1},
                                           {SQLITE_LIMIT_WORKER_THREADS, 0}}};

// More than SQLite allocates at once for files within the limits.
constexpr sqlite3_uint64 kMostAtOnce = 32 << 20;

constexpr auto kReadingSettings = "PRAGMA mmap_size = 0; PRAGMA query_only = ON; PRAGMA cell_size_check = ON";

// SQLite takes ":memory:" for no file, and a name that begins with "file:" for a URI.
std::string fileName(std::string const& path) {
    return path.rfind('/', 0) == 0 ? path : "./" + path;
}

// The URI of a file, with the parameters for opening it.
std::string immutableUri(std::string const& path) {
    constexpr auto kDigits = "0123456789abcdef";
    // The authority of the URI is empty: an absolute path follows it.
    std::string uri = path.rfind('/', 0) == 0 ? "file://" : "file:";
    for (char const character : fileName(path)) {
        if (character != '%' && character != '?' && character != '#') {
            uri += character;
            continue;
        }
        auto const byte = static_cast<unsigned char>(character);
        uri += {'%', kDigits[byte >> 4], kDigits[byte & 0xf]};
    }
    return uri + "?immutable=1";
}

// SQLite calls a file damaged whose bytes the system fails to read for one of these reasons (SQLITE_IOERR_CORRUPTFS).
bool isFailedRead(int reason) {
    return reason == EIO || reason == ENXIO || reason == ERANGE;
}

} // namespace

struct Database::State {
    explicit State(Interruption&& check) : interruption(std::move(check)) {}
    State(State const&) = delete;
    State& operator=(State const&) = delete;
    ~State() { sqlite3_close(handle); }

    void open(std::string const& path, Mode mode) {
        bool const reads = mode == Mode::ReadOnly;
        int const flags =
            (reads ? SQLITE_OPEN_READONLY | SQLITE_OPEN_URI : SQLITE_OPEN_READWRITE) | SQLITE_OPEN_NOMUTEX;
        errno = 0;
        int const code =
            sqlite3_open_v2((reads ? immutableUri(path) : fileName(path)).c_str(), &handle, flags, nullptr);
        if (handle == nullptr) throw std::bad_alloc();
        if (code != SQLITE_OK) fail();
        sqlite3_progress_handler(handle, kStepsPerCheck, &State::check, this);
        if (reads) return defend();
        // Nobody else writes it: where a lock is refused, the call was interrupted.
        sqlite3_busy_timeout(handle, kLongestLockWait);
        // SQLite falls back to reading if it cannot open a file for writing.
        if (sqlite3_db_readonly(handle, "main") != 0)
            throw Failure(errno != 0 ? std::generic_category().message(errno) : "it can only be read", SQLITE_READONLY);
    }

    void defend() {
        for (Setting const& setting : kDefences)
            sqlite3_db_config(handle, setting.option, setting.value, nullptr);
        for (Setting const& setting : kLimits)
            sqlite3_limit(handle, setting.option, setting.value);
        execute(kReadingSettings);
    }

    void execute(char const* statements) {
        begin();
        if (sqlite3_exec(handle, statements, nullptr, nullptr, nullptr) != SQLITE_OK) fail();
    }

    void begin() {
        errno = 0;
        checks = 0;
    }

    // SQLite reports a failed write as "disk I/O error" only; the system's reason is more precise.
    [[noreturn]] void fail() {
        if (thrown) std::rethrow_exception(std::exchange(thrown, nullptr));
        int const last = errno; // begin() has made it 0
        int const extended = sqlite3_extended_errcode(handle);
        int const code = extended & kPrimaryCode;
        if (code == SQLITE_NOMEM || extended == SQLITE_IOERR_NOMEM) failWithoutMemory();
        if (code == SQLITE_INTERRUPT) throw Failure("reading it takes too many steps", code);
        if (code == SQLITE_CORRUPT && isFailedRead(last))
            throw Failure(std::generic_category().message(last), SQLITE_IOERR);
        int const known = sqlite3_system_errno(handle);
        int const reason = known != 0 ? known : last; // a failed commit leaves its reason in errno only
        bool const system = (code == SQLITE_IOERR || code == SQLITE_FULL || code == SQLITE_CANTOPEN) && reason != 0;
        throw Failure(system ? std::generic_category().message(reason) : sqlite3_errmsg(handle), code);
    }

    // SQLite says that it has no memory also where a damaged row asks for more than it ever allocates.
    [[noreturn]] static void failWithoutMemory() {
        void* const enough = sqlite3_malloc64(kMostAtOnce);
        sqlite3_free(enough);
        if (enough == nullptr) throw std::bad_alloc();
        throw Failure("a row says more bytes than there can be", SQLITE_CORRUPT);
    }

    // A result other than 0 ends the statement. No exception may pass through SQLite.
    static int check(void* database) {
        auto& self = *static_cast<State*>(database);
        if (++self.checks > self.maxChecks) return 1;
        try {
            if (self.interruption) self.interruption();
        } catch (...) {
            self.thrown = std::current_exception();
        }
        return self.thrown ? 1 : 0;
    }

    sqlite3* handle = nullptr;
    Interruption interruption;
    std::exception_ptr thrown;
    size_t checks = 0; // of the current statement
    size_t maxChecks = std::numeric_limits<size_t>::max();
};

Database::Database(std::string const& path, Mode mode, Interruption interruption)
    : state_(std::make_unique<State>(std::move(interruption))) {
    state_->open(path, mode);
}

Database::~Database() = default;

void Database::execute(std::string const& statements) {
    state_->execute(statements.c_str());
}

std::int64_t Database::number(std::string const& statement) {
    Statement query(*this, statement);
    return query.step() ? query.integer(0) : 0;
}

void Database::limitRows(size_t bytes) {
    sqlite3_limit(state_->handle, SQLITE_LIMIT_LENGTH, static_cast<int>(bytes));
}

void Database::limitSteps(size_t steps) {
    state_->maxChecks = steps / kStepsPerCheck;
}

void Statement::Finalize::operator()(sqlite3_stmt* statement) const {
    sqlite3_finalize(statement);
}

Statement::Statement(Database& database, std::string const& text) : database_(*database.state_) {
    database_.begin();
    sqlite3_stmt* prepared = nullptr;
    int const code =
        sqlite3_prepare_v2(database_.handle, text.c_str(), static_cast<int>(text.size()), &prepared, nullptr);
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
    // SQLite takes a null pointer for a missing value.
    void const* const bytes = value.empty() ? "" : static_cast<void const*>(value.data());
    require(sqlite3_bind_blob64(statement_.get(), parameter, bytes, value.size(), SQLITE_STATIC));
}

void Statement::bindNull(int parameter) {
    require(sqlite3_bind_null(statement_.get(), parameter));
}

bool Statement::step() {
    database_.begin();
    int const code = sqlite3_step(statement_.get());
    if (code == SQLITE_ROW) return true;
    if (code != SQLITE_DONE) database_.fail();
    return false;
}

void Statement::reset() {
    // sqlite3_reset repeats the error code of the last step, which step() has thrown.
    sqlite3_reset(statement_.get());
}

Statement::Type Statement::type(int column) const {
    switch (sqlite3_column_type(statement_.get(), column)) {
    case SQLITE_INTEGER:
        return Type::Integer;
    case SQLITE_FLOAT:
        return Type::Real;
    case SQLITE_TEXT:
        return Type::Text;
    case SQLITE_BLOB:
        return Type::Blob;
    default:
        return Type::Null;
    }
}

std::int64_t Statement::integer(int column) const {
    return sqlite3_column_int64(statement_.get(), column);
}

std::string Statement::text(int column) const {
    auto const* const text = reinterpret_cast<char const*>(sqlite3_column_text(statement_.get(), column));
    if (text == nullptr) return requireMemory(), "";
    return {text, static_cast<size_t>(sqlite3_column_bytes(statement_.get(), column))};
}

std::vector<std::uint8_t> Statement::blob(int column) const {
    auto const* const bytes = static_cast<std::uint8_t const*>(sqlite3_column_blob(statement_.get(), column));
    if (bytes == nullptr) return requireMemory(), std::vector<std::uint8_t>();
    return {bytes, bytes + sqlite3_column_bytes(statement_.get(), column)};
}

// Distinguishes a column without bytes from one for which there is no memory.
void Statement::requireMemory() const {
    if (sqlite3_errcode(database_.handle) == SQLITE_NOMEM) database_.fail();
}

void Statement::require(int code) const {
    if (code != SQLITE_OK) database_.fail();
}

} // namespace sqlite
