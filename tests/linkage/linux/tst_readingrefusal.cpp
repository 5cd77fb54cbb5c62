#include "linkage/linux/ReadingRefusal.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>

class tst_ReadingRefusal : public QObject
{
    Q_OBJECT

private slots:
    void theLineNamesTheCauseAndWhatToChange_data()
    {
        QTest::addColumn<int>("ownUser");
        QTest::addColumn<int>("otherUser");
        QTest::addColumn<int>("sharesNamespace");
        QTest::addColumn<int>("ptraceScope");
        QTest::addColumn<QString>("reason");
        const int unknown = -1;
        const QString scope = QStringLiteral(
            "kernel.yama.ptrace_scope is %1. Run \"sysctl kernel.yama.ptrace_scope=0\" as root, or \"setcap "
            "cap_sys_ptrace+ep\" on Larkspire's program file.");
        const QString policy = QStringLiteral(
            "a container or a security policy forbids it. Allow the system call process_vm_readv and the "
            "capability CAP_SYS_PTRACE to Larkspire.");
        const QString container =
            QStringLiteral("it runs in a container of its own. Run Larkspire in the same "
                           "container, or the program outside it.");
        QTest::newRow("another user")
            << 1000 << 1001 << 1 << 1
            << QStringLiteral("it runs as user 1001 and Larkspire as user 1000. Start "
                              "both as the same user.");
        QTest::newRow("children only") << 1000 << 1000 << 1 << 1 << scope.arg(1);
        QTest::newRow("administrators only") << 1000 << 1000 << 1 << 2 << scope.arg(2);
        QTest::newRow("administrators only, user unknown") << 1000 << unknown << unknown << 2 << scope.arg(2);
        QTest::newRow("nobody") << 1000 << 1000 << 1 << 3
                                << QStringLiteral(
                                       "kernel.yama.ptrace_scope is 3, which holds until the machine "
                                       "starts again. Set it to 0 in a file of /etc/sysctl.d and "
                                       "restart the machine.");
        QTest::newRow("another namespace") << 1000 << 1000 << 0 << 1 << container;
        QTest::newRow("another namespace, no Yama") << 1000 << 1000 << 0 << unknown << container;
        QTest::newRow("a policy") << 1000 << 1000 << 1 << 0 << policy;
        QTest::newRow("nothing known") << 1000 << unknown << unknown << unknown << policy;
        QTest::newRow("root is no other user") << 0 << 1000 << 1 << unknown << policy;
    }

    void theLineNamesTheCauseAndWhatToChange()
    {
        QFETCH(int, ownUser);
        QFETCH(int, otherUser);
        QFETCH(int, sharesNamespace);
        QFETCH(int, ptraceScope);
        QFETCH(QString, reason);
        ReadingRefusal refusal;
        refusal.pid = 4711;
        refusal.program = QStringLiteral("TdxW.exe");
        refusal.ownUser = quint32(ownUser);
        if (otherUser >= 0)
            refusal.otherUser = quint32(otherUser);
        if (sharesNamespace >= 0)
            refusal.sharesUserNamespace = sharesNamespace == 1;
        if (ptraceScope >= 0)
            refusal.ptraceScope = ptraceScope;
        QCOMPARE(refusal.explanation(),
                 QStringLiteral("Cannot read the memory of TdxW.exe (process 4711): ") + reason);
    }
};

LARKSPIRE_GUILESS_TEST_MAIN(tst_ReadingRefusal)
#include "tst_readingrefusal.moc"
