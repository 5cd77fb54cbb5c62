#pragma once

namespace SQLite {
class Database;
}

namespace service {

/// Brings the tables of a database file up to this version, step by step, each step whole or not at all.
/// Throws std::runtime_error when the file was written by a newer version.
void migrateSchema(SQLite::Database &database);

/// Number of the newest step.
int schemaVersion();

} // namespace service
