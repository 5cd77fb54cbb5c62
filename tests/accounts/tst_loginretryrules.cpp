#include "accounts/LoginRetryRules.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>

class TestLoginRetryRules : public QObject
{
    Q_OBJECT

private slots:
    void failuresOfTheNetworkAreToldByTheirWords_data()
    {
        QTest::addColumn<QString>("error");
        QTest::addColumn<bool>("network");
        const auto row = [](const char *error, bool network) {
            QTest::newRow(error) << QString::fromUtf8(error) << network;
        };
        row("网络", true);
        row("网络请求失败", true);
        row("当前网络不可用", true);
        row("network", true);
        row("Network unreachable", true);
        row("NETWORK", true);
        row("connection", true);
        row("Connection refused", true);
        row("lost CONNECTION", true);
        row("timeout", true);
        row("Gateway Timeout", true);
        row("socketTimeOut", true);

        row("", false);
        row("密码错误", false);
        row("连接超时", false);
        row("time out", false);
        row("timed out", false);
        row("connect", false);
        row("net work", false);
        row("网 络", false);
    }

    void failuresOfTheNetworkAreToldByTheirWords()
    {
        QFETCH(QString, error);
        QTEST(LoginRetryRules::isNetworkFailure(error), "network");
    }
};

LARKSPIRE_GUILESS_TEST_MAIN(TestLoginRetryRules)
#include "tst_loginretryrules.moc"
