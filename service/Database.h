#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

namespace SQLite {
class Database;
}

namespace service {

/// The service's database file: SQLite in WAL mode, one writer at a time, readers beside it that never wait
/// for the writer. Safe to use from any thread. All statements bind their values.
class Database final
{
public:
    /// Opens or creates the file and brings its tables up to date.
    /// Throws std::runtime_error with one line of text when that cannot be done.
    explicit Database(const std::string &file);
    ~Database();
    Database(const Database &) = delete;
    Database &operator=(const Database &) = delete;

    /// Runs `work` on the writing connection inside one transaction and gives its result. A call inside
    /// another one on the same thread joins its transaction. An exception rolls everything back.
    template <typename Work>
    auto write(Work &&work)
    {
        return returning(std::forward<Work>(work), &Database::runWrite);
    }

    /// Runs `work` on a reading connection that sees one unchanging state. Inside a write on the same thread
    /// it sees what was written so far.
    template <typename Work>
    auto read(Work &&work)
    {
        return returning(std::forward<Work>(work), &Database::runRead);
    }

    /// A text kept under `key`, empty when there is none.
    std::string setting(const std::string &key);
    void setSetting(const std::string &key, const std::string &value);

    /// Counts the number kept under `key` up by one and gives it; the first is 1.
    std::int64_t nextNumber(const std::string &key);

private:
    using Step = std::function<void(SQLite::Database &)>;

    template <typename Work>
    auto returning(Work &&work, void (Database::*run)(const Step &))
    {
        using Result = std::invoke_result_t<Work, SQLite::Database &>;
        if constexpr (std::is_void_v<Result>) {
            (this->*run)(Step(std::forward<Work>(work)));
        } else {
            std::unique_ptr<Result> result;
            (this->*run)(
                [&](SQLite::Database &database) { result = std::make_unique<Result>(work(database)); });
            return Result(std::move(*result));
        }
    }

    void runWrite(const Step &step);
    void runRead(const Step &step);
    std::unique_ptr<SQLite::Database> borrowReader();
    void giveBack(std::unique_ptr<SQLite::Database> reader);

    std::string m_file;
    std::mutex m_writing;
    std::atomic<std::thread::id> m_writingThread;
    std::unique_ptr<SQLite::Database> m_writer;
    std::mutex m_readersMutex;
    std::vector<std::unique_ptr<SQLite::Database>> m_readers;
};

} // namespace service
