#include "linkage/linux/ReadingRefusal.h"

namespace {

/// kernel.yama.ptrace_scope, Documentation/admin-guide/LSM/Yama.rst.
enum PtraceScope
{
    ClassicPermissions = 0,
    ChildrenOnly = 1,
    AdministratorsOnly = 2,
    Nobody = 3
};

} // namespace

QString ReadingRefusal::explanation() const
{
    QString reason;
    if (ownUser != 0 && otherUser && *otherUser != ownUser) {
        reason = QStringLiteral("it runs as user %1 and Larkspire as user %2. Start both as the same user.")
                     .arg(*otherUser)
                     .arg(ownUser);
    } else if (ptraceScope.value_or(ClassicPermissions) == Nobody) {
        reason = QStringLiteral(
            "kernel.yama.ptrace_scope is 3, which holds until the machine starts again. Set it "
            "to 0 in a file of /etc/sysctl.d and restart the machine.");
    } else if (sharesUserNamespace == false) {
        reason =
            QStringLiteral("it runs in a container of its own. Run Larkspire in the same container, or the "
                           "program outside it.");
    } else if (ptraceScope.value_or(ClassicPermissions) != ClassicPermissions) {
        reason =
            QStringLiteral("kernel.yama.ptrace_scope is %1. Run \"sysctl kernel.yama.ptrace_scope=0\" as "
                           "root, or \"setcap cap_sys_ptrace+ep\" on Larkspire's program file.")
                .arg(*ptraceScope);
    } else {
        reason = QStringLiteral("a container or a security policy forbids it. Allow the system call "
                                "process_vm_readv and the capability CAP_SYS_PTRACE to Larkspire.");
    }
    return QStringLiteral("Cannot read the memory of %1 (process %2): ").arg(program).arg(pid) + reason;
}
