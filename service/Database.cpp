#include "service/Database.h"

#include "service/Schema.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <SQLiteCpp/VariadicBind.h>

#include <stdexcept>

namespace service {

namespace {

constexpr int busyTimeoutMs = 5000;

} // namespace

Database::Database(const std::string &file) : m_file(file)
{
    try {
        m_writer = std::make_unique<SQLite::Database>(file, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE,
                                                      busyTimeoutMs);
        m_writer->execAndGet("PRAGMA journal_mode = WAL");
        m_writer->exec("PRAGMA synchronous = NORMAL");
        m_writer->exec("PRAGMA foreign_keys = ON");
        migrateSchema(*m_writer);
        // A file that can be read but not written shows itself here and not at the first login.
        setSetting("schema", std::to_string(schemaVersion()));
    } catch (const std::exception &error) {
        throw std::runtime_error("cannot use the database " + file + ": " + error.what());
    }
}

Database::~Database() = default;

void Database::runWrite(const Step &step)
{
    if (m_writingThread == std::this_thread::get_id()) {
        step(*m_writer);
        return;
    }
    const std::lock_guard lock(m_writing);
    struct Mark
    {
        explicit Mark(std::atomic<std::thread::id> &thread) : m_thread(thread)
        {
            m_thread = std::this_thread::get_id();
        }
        ~Mark() { m_thread = std::thread::id(); }
        Mark(const Mark &) = delete;
        Mark &operator=(const Mark &) = delete;
        std::atomic<std::thread::id> &m_thread;
    };
    const Mark mark(m_writingThread);
    SQLite::Transaction transaction(*m_writer, SQLite::TransactionBehavior::IMMEDIATE);
    step(*m_writer);
    transaction.commit();
}

void Database::runRead(const Step &step)
{
    if (m_writingThread == std::this_thread::get_id()) {
        step(*m_writer);
        return;
    }
    std::unique_ptr<SQLite::Database> reader = borrowReader();
    {
        SQLite::Transaction transaction(*reader, SQLite::TransactionBehavior::DEFERRED);
        step(*reader);
        transaction.commit();
    }
    // A reader whose work threw is not given back but closed.
    giveBack(std::move(reader));
}

std::unique_ptr<SQLite::Database> Database::borrowReader()
{
    {
        const std::lock_guard lock(m_readersMutex);
        if (!m_readers.empty()) {
            std::unique_ptr<SQLite::Database> reader = std::move(m_readers.back());
            m_readers.pop_back();
            return reader;
        }
    }
    return std::make_unique<SQLite::Database>(m_file, SQLite::OPEN_READONLY, busyTimeoutMs);
}

void Database::giveBack(std::unique_ptr<SQLite::Database> reader)
{
    const std::lock_guard lock(m_readersMutex);
    m_readers.push_back(std::move(reader));
}

std::string Database::setting(const std::string &key)
{
    return read([&](SQLite::Database &database) -> std::string {
        SQLite::Statement query(database, "SELECT value FROM settings WHERE key = ?");
        SQLite::bind(query, key);
        return query.executeStep() ? query.getColumn(0).getString() : std::string();
    });
}

void Database::setSetting(const std::string &key, const std::string &value)
{
    write([&](SQLite::Database &database) {
        SQLite::Statement query(database, "INSERT INTO settings(key, value) VALUES(?, ?) "
                                          "ON CONFLICT(key) DO UPDATE SET value = excluded.value");
        SQLite::bind(query, key, value);
        query.exec();
    });
}

std::int64_t Database::nextNumber(const std::string &key)
{
    return write([&](SQLite::Database &database) -> std::int64_t {
        SQLite::Statement query(database, "INSERT INTO settings(key, value) VALUES(?, '1') "
                                          "ON CONFLICT(key) DO UPDATE SET value = CAST(value AS INTEGER) + 1 "
                                          "RETURNING CAST(value AS INTEGER)");
        SQLite::bind(query, key);
        query.executeStep();
        const std::int64_t number = query.getColumn(0).getInt64();
        while (query.executeStep()) {
        }
        return number;
    });
}

} // namespace service
