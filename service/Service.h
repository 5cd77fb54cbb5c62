#pragma once

#include "service/AdminRoutes.h"
#include "service/AuthRoutes.h"
#include "service/BlacklistRoutes.h"
#include "service/Database.h"
#include "service/FaultPlan.h"
#include "service/FeedGenerator.h"
#include "service/FeedPublisher.h"
#include "service/HttpServer.h"
#include "service/Identification.h"
#include "service/KeywordRoutes.h"
#include "service/Market.h"
#include "service/MarketRoutes.h"
#include "service/MoveAnalysisRoutes.h"
#include "service/NewsRoutes.h"
#include "service/Relay.h"
#include "service/Statistics.h"
#include "service/StockRoutes.h"
#include "service/Stores.h"
#include "service/UserRoutes.h"

namespace service {

struct Options;

/// The whole service: database, routes, feed, server and relay, put together in the order in which they need
/// each other. A new area of the wire is one more class with an `addTo`.
class Service final
{
public:
    /// Opens the database and fills it as the options say. Throws std::runtime_error with one line of text.
    explicit Service(const Options &options);

    /// Stops when still running.
    ~Service();
    Service(const Service &) = delete;
    Service &operator=(const Service &) = delete;

    /// Starts to listen and to publish. @return the port. Throws std::runtime_error with one line of text.
    int start(const Options &options);

    /// Closes all connections and ends all threads, within a second.
    void stop();

private:
    void createDemoAccount(const Options &options);

    Clock m_clock;
    Database m_database;
    Stores m_stores;
    Statistics m_statistics;
    FaultPlan m_faults;
    Market m_market;
    FeedGenerator m_generator;
    FeedPublisher m_feed;
    Identification m_identification;
    AuthRoutes m_authRoutes;
    UserRoutes m_userRoutes;
    NewsRoutes m_newsRoutes;
    KeywordRoutes m_keywordRoutes;
    StockRoutes m_stockRoutes;
    BlacklistRoutes m_blacklistRoutes;
    MarketRoutes m_marketRoutes;
    MoveAnalysisRoutes m_moveAnalysisRoutes;
    AdminRoutes m_adminRoutes;
    Router m_router;
    HttpServer m_server;
    Relay m_relay;
};

} // namespace service
