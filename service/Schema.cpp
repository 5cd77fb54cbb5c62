#include "service/Schema.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <iterator>
#include <stdexcept>
#include <string>

namespace service {

namespace {

/// Step n brings a file from version n to n + 1. A step that was once released is never changed.
const char *const steps[] = {
    R"sql(
CREATE TABLE settings(
    key TEXT PRIMARY KEY,
    value TEXT NOT NULL
) WITHOUT ROWID;

CREATE TABLE users(
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    username TEXT NOT NULL UNIQUE COLLATE NOCASE,
    email TEXT UNIQUE COLLATE NOCASE,
    password_hash TEXT,
    api_key TEXT NOT NULL UNIQUE,
    bound_device TEXT UNIQUE,
    wechat_id TEXT UNIQUE,
    max_devices INTEGER NOT NULL,
    device_limit_enabled INTEGER NOT NULL,
    is_active INTEGER NOT NULL DEFAULT 1,
    created_at INTEGER NOT NULL
);

CREATE TABLE devices(
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    user_id INTEGER NOT NULL REFERENCES users(id) ON DELETE CASCADE,
    device_id TEXT NOT NULL,
    name TEXT NOT NULL,
    type TEXT NOT NULL,
    os_info TEXT NOT NULL,
    app_version TEXT NOT NULL,
    ip_address TEXT NOT NULL,
    last_login INTEGER NOT NULL,
    created_at INTEGER NOT NULL,
    UNIQUE(user_id, device_id)
);

CREATE TABLE sessions(
    fingerprint TEXT PRIMARY KEY,
    user_id INTEGER NOT NULL REFERENCES users(id) ON DELETE CASCADE,
    device_id TEXT NOT NULL,
    issued_at INTEGER NOT NULL,
    expires_at INTEGER NOT NULL
) WITHOUT ROWID;
CREATE INDEX sessions_by_user ON sessions(user_id, device_id);

CREATE TABLE keywords(
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    user_id INTEGER NOT NULL REFERENCES users(id) ON DELETE CASCADE,
    keyword TEXT NOT NULL,
    is_active INTEGER NOT NULL,
    is_selected INTEGER NOT NULL,
    is_preset INTEGER NOT NULL DEFAULT 0,
    created_at INTEGER NOT NULL,
    updated_at INTEGER NOT NULL,
    UNIQUE(user_id, keyword)
);

CREATE TABLE codes(
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    email TEXT NOT NULL COLLATE NOCASE,
    code_type TEXT NOT NULL,
    code TEXT NOT NULL,
    issued_at INTEGER NOT NULL,
    expires_at INTEGER NOT NULL,
    wrong_tries INTEGER NOT NULL DEFAULT 0,
    is_used INTEGER NOT NULL DEFAULT 0
);
CREATE INDEX codes_by_email ON codes(email, code_type);

CREATE TABLE wechat_tickets(
    qr_token TEXT PRIMARY KEY,
    user_id INTEGER REFERENCES users(id) ON DELETE CASCADE,
    wechat_id TEXT NOT NULL,
    is_scanned INTEGER NOT NULL DEFAULT 0,
    expires_at INTEGER NOT NULL
) WITHOUT ROWID;

CREATE TABLE news(
    seq INTEGER PRIMARY KEY AUTOINCREMENT,
    id TEXT NOT NULL,
    title TEXT NOT NULL,
    content TEXT NOT NULL,
    published_at INTEGER NOT NULL,
    is_interactive INTEGER NOT NULL,
    wire TEXT NOT NULL
);
CREATE INDEX news_by_time ON news(published_at DESC, seq DESC);
CREATE INDEX news_by_id ON news(id);
CREATE INDEX news_interactive ON news(published_at DESC, seq DESC) WHERE is_interactive = 1;
)sql",
    R"sql(
CREATE TABLE linkage_configs(
    user_id INTEGER PRIMARY KEY REFERENCES users(id) ON DELETE CASCADE,
    current_software TEXT NOT NULL,
    tdx_version TEXT NOT NULL,
    ths_version TEXT NOT NULL,
    tdx_offset TEXT NOT NULL,
    ths_offset TEXT NOT NULL,
    updated_at INTEGER NOT NULL
);

CREATE TABLE blacklist(
    user_id INTEGER NOT NULL REFERENCES users(id) ON DELETE CASCADE,
    stock_code TEXT NOT NULL,
    stock_name TEXT NOT NULL,
    reason_type INTEGER NOT NULL,
    custom_reason TEXT NOT NULL,
    created_at INTEGER NOT NULL,
    PRIMARY KEY(user_id, stock_code)
) WITHOUT ROWID;

CREATE TABLE move_analyses(
    user_id INTEGER NOT NULL REFERENCES users(id) ON DELETE CASCADE,
    stock_code TEXT NOT NULL,
    trade_date TEXT NOT NULL,
    stock_name TEXT NOT NULL,
    title TEXT NOT NULL,
    publish_time TEXT NOT NULL,
    content TEXT NOT NULL,
    source_url TEXT NOT NULL,
    saved_at INTEGER NOT NULL,
    PRIMARY KEY(user_id, stock_code, trade_date)
) WITHOUT ROWID;
)sql",
};

} // namespace

int schemaVersion()
{
    return static_cast<int>(std::size(steps));
}

void migrateSchema(SQLite::Database &database)
{
    const int found = database.execAndGet("PRAGMA user_version").getInt();
    if (found > schemaVersion())
        throw std::runtime_error("the file was written by a newer version of this service");
    for (int version = found; version < schemaVersion(); ++version) {
        SQLite::Transaction transaction(database, SQLite::TransactionBehavior::IMMEDIATE);
        database.exec(steps[version]);
        database.exec("PRAGMA user_version = " + std::to_string(version + 1));
        transaction.commit();
    }
}

} // namespace service
