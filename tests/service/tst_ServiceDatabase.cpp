#include "service/Database.h"
#include "service/Schema.h"
#include "support/IsolatedHome.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

#include <stdexcept>
#include <thread>
#include <vector>

using namespace service;

/// The database file.
class ServiceDatabaseTest : public QObject
{
    Q_OBJECT

private:
    std::string file() const { return m_folder.filePath(QStringLiteral("d.sqlite")).toStdString(); }

    QTemporaryDir m_folder;

private slots:
    void init();
    void anEmptyFileGetsTheNewestTables();
    void whatWasWrittenIsThereAfterOpeningAgain();
    void aFailedWriteLeavesNothing();
    void aWriteInsideAWriteIsPartOfIt();
    void aReadInsideAWriteSeesWhatWasWritten();
    void readersDoNotWaitForTheWriter();
    void numbersOfManyThreadsAreAllDifferent();
    void aFileOfANewerVersionIsRefused();
    void whatIsNoDatabaseIsRefused_data();
    void whatIsNoDatabaseIsRefused();
};

void ServiceDatabaseTest::init()
{
    for (const QString &name : QDir(m_folder.path()).entryList(QDir::Files))
        QVERIFY(QFile::remove(m_folder.filePath(name)));
}

void ServiceDatabaseTest::anEmptyFileGetsTheNewestTables()
{
    Database database(file());
    const int version = database.read(
        [](SQLite::Database &reader) -> int { return reader.execAndGet("PRAGMA user_version").getInt(); });
    QCOMPARE(version, schemaVersion());
    const std::string mode = database.read([](SQLite::Database &reader) -> std::string {
        return reader.execAndGet("PRAGMA journal_mode").getString();
    });
    QCOMPARE(mode, std::string("wal"));
}

void ServiceDatabaseTest::whatWasWrittenIsThereAfterOpeningAgain()
{
    {
        Database database(file());
        database.setSetting("a", "'; DROP TABLE settings; --");
        database.setSetting("a", "'; DROP TABLE users; --");
    }
    Database database(file());
    QCOMPARE(database.setting("a"), std::string("'; DROP TABLE users; --"));
    QCOMPARE(database.setting("b"), std::string());
}

void ServiceDatabaseTest::aFailedWriteLeavesNothing()
{
    Database database(file());
    const auto failing = [&] {
        database.write([&](SQLite::Database &) {
            database.setSetting("a", "1");
            throw std::runtime_error("stop");
        });
    };
    QVERIFY_EXCEPTION_THROWN(failing(), std::runtime_error);
    QCOMPARE(database.setting("a"), std::string());
    database.setSetting("a", "2");
    QCOMPARE(database.setting("a"), std::string("2"));
}

void ServiceDatabaseTest::aWriteInsideAWriteIsPartOfIt()
{
    Database database(file());
    const std::int64_t number = database.write([&](SQLite::Database &) -> std::int64_t {
        database.nextNumber("n");
        return database.nextNumber("n");
    });
    QCOMPARE(number, std::int64_t(2));
    QCOMPARE(database.setting("n"), std::string("2"));
}

void ServiceDatabaseTest::aReadInsideAWriteSeesWhatWasWritten()
{
    Database database(file());
    database.write([&](SQLite::Database &) {
        database.setSetting("a", "1");
        QCOMPARE(database.setting("a"), std::string("1"));
    });
}

void ServiceDatabaseTest::readersDoNotWaitForTheWriter()
{
    Database database(file());
    database.setSetting("a", "before");
    std::string seen;
    database.write([&](SQLite::Database &) {
        database.setSetting("a", "after");
        std::thread reader([&] { seen = database.setting("a"); });
        reader.join();
    });
    QCOMPARE(seen, std::string("before"));
    QCOMPARE(database.setting("a"), std::string("after"));
}

void ServiceDatabaseTest::numbersOfManyThreadsAreAllDifferent()
{
    Database database(file());
    std::vector<std::thread> threads(8);
    for (std::thread &thread : threads) {
        thread = std::thread([&] {
            for (int i = 0; i < 25; ++i)
                database.nextNumber("n");
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    QCOMPARE(database.setting("n"), std::string("200"));
}

void ServiceDatabaseTest::aFileOfANewerVersionIsRefused()
{
    {
        SQLite::Database raw(file(), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
        raw.exec("PRAGMA user_version = " + std::to_string(schemaVersion() + 1));
    }
    const auto opening = [&] { Database database(file()); };
    QVERIFY_EXCEPTION_THROWN(opening(), std::runtime_error);
}

void ServiceDatabaseTest::whatIsNoDatabaseIsRefused_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("a folder") << m_folder.path();
    QTest::newRow("a folder that is not there") << m_folder.filePath(QStringLiteral("missing/d.sqlite"));
    QTest::newRow("another file") << m_folder.filePath(QStringLiteral("text"));
}

void ServiceDatabaseTest::whatIsNoDatabaseIsRefused()
{
    QFETCH(QString, name);
    QFile text(m_folder.filePath(QStringLiteral("text")));
    QVERIFY(text.open(QIODevice::WriteOnly));
    text.write(QByteArray(5000, 'x'));
    text.close();
    try {
        Database database(name.toStdString());
        QFAIL("it was taken");
    } catch (const std::runtime_error &error) {
        const QString message = QString::fromUtf8(error.what());
        QVERIFY2(message.contains(name) && !message.contains(QLatin1Char('\n')), qPrintable(message));
    }
}

LARKSPIRE_GUILESS_TEST_MAIN(ServiceDatabaseTest)
#include "tst_ServiceDatabase.moc"
