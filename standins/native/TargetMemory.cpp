#include "native/TargetMemory.h"

#include "program/Layout.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSaveFile>
#include <QtEndian>

#include <algorithm>
#include <cstring>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace {

constexpr std::size_t pageSize = 4096;
// Below where a program that is not position-independent begins, and above what the kernel keeps free.
constexpr std::uintptr_t lowestImageBase = 0x100000;
constexpr std::uintptr_t imageBaseStep = 0x10000;
constexpr std::uintptr_t endOf32Bits = 0x100000000;

/// The header page of a Windows program or library: what "PE Format" (Microsoft) asks for up to the size of
/// the image, and no sections.
QByteArray headerPage(TargetMemory::Width width)
{
    constexpr int signatureAt = 0x80;
    constexpr int optionalHeaderAt = signatureAt + 24;
    const bool is32Bit = width == TargetMemory::Width::Bits32;
    QByteArray page(int(pageSize), '\0');
    const auto put16 = [&page](int offset, quint16 value) { qToLittleEndian(value, page.data() + offset); };
    const auto put32 = [&page](int offset, quint32 value) { qToLittleEndian(value, page.data() + offset); };
    page.replace(0, 2, "MZ");
    put32(0x3C, quint32(signatureAt));
    page.replace(signatureAt, 2, "PE");
    put16(signatureAt + 4, is32Bit ? 0x014C : 0x8664);  // Machine
    put16(signatureAt + 20, is32Bit ? 0xE0 : 0xF0);     // SizeOfOptionalHeader
    put16(optionalHeaderAt, is32Bit ? 0x010B : 0x020B); // Magic
    put32(optionalHeaderAt + 32, quint32(pageSize));    // SectionAlignment
    put32(optionalHeaderAt + 36, 0x200);                // FileAlignment
    put32(optionalHeaderAt + 56, Layout::imageSize);    // SizeOfImage
    put32(optionalHeaderAt + 60, quint32(pageSize));    // SizeOfHeaders
    return page;
}

char *map(void *place, std::size_t size, int flags, int file)
{
    void *mapped = ::mmap(place, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | flags, file, 0);
    return mapped == MAP_FAILED ? nullptr : static_cast<char *>(mapped);
}

/// Maps `size` bytes at the first free place from `lowest` on, within the first 4 GiB.
char *mapLow(std::uintptr_t lowest, std::size_t size)
{
    for (std::uintptr_t place = lowest; place < endOf32Bits - size; place += imageBaseStep) {
        auto *wanted = reinterpret_cast<void *>(place); // NOLINT(performance-no-int-to-ptr)
        char *mapped = map(wanted, size, MAP_ANONYMOUS | MAP_FIXED_NOREPLACE, -1);
        if (mapped == wanted)
            return mapped;
        if (mapped) // a kernel that does not know the flag takes the place for a hint
            ::munmap(mapped, size);
    }
    qFatal("There is no room for %zu bytes below 4 GiB", size);
}

/// Path of the module's file, which is made if it is not there yet. It is never changed: other stand-ins that
/// run have it mapped.
QString moduleFile(const QString &name, TargetMemory::Width width)
{
    const QString folder = QCoreApplication::applicationDirPath() + (width == TargetMemory::Width::Bits32
                                                                         ? QStringLiteral("/modules/32")
                                                                         : QStringLiteral("/modules/64"));
    const QString path = folder + QLatin1Char('/') + name;
    if (QFile::exists(path))
        return path;
    QSaveFile file(path);
    const QByteArray header = headerPage(width);
    if (!QDir().mkpath(folder) || !file.open(QIODevice::WriteOnly) || file.write(header) != header.size() ||
        !file.commit())
        qFatal("Cannot write %s", qUtf8Printable(path));
    return path;
}

/// Loads a module the way a Windows program's loader does where the file's alignment is finer than a page:
/// the header page comes from the file, all else is memory of its own.
char *loadModule(const QString &name, TargetMemory::Width width)
{
    const QString path = moduleFile(name, width);
    char *base = mapLow(lowestImageBase, Layout::imageSize);
    const int descriptor = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    if (!map(base, pageSize, MAP_FIXED, descriptor))
        qFatal("Cannot map %s", qUtf8Printable(path));
    ::close(descriptor);
    return base;
}

} // namespace

TargetMemory::TargetMemory(TradingProgram::Kind kind, Width width)
{
    if (kind == TradingProgram::Kind::Tdx) {
        loadModule(QStringLiteral("tdxw.exe"), width);
        const QString module =
            width == Width::Bits32 ? QStringLiteral("Viewthem.dll") : QStringLiteral("Viewthem64.dll");
        m_text = loadModule(module, width) + Layout::tdxCodeOffset;
        return;
    }
    char *pointerPlace = loadModule(QStringLiteral("hexin.exe"), width) + Layout::thsPointerOffset;
    m_text = mapLow(lowestImageBase, pageSize) + pageSize / 2;
    const auto pointer = std::uint32_t(reinterpret_cast<std::uintptr_t>(m_text));
    const std::uint32_t somethingElse = 0xCCCCCCCC; // what follows the pointer is not part of it
    std::memcpy(pointerPlace, &pointer, sizeof(pointer));
    std::memcpy(pointerPlace + sizeof(pointer), &somethingElse, sizeof(somethingElse));
}

void TargetMemory::setText(const std::array<char, 8> &text)
{
    std::memcpy(m_text, text.data(), text.size()); // one store: no reader sees half a code
}
