#include "linkage/linux/ReservedSpace.h"

#include <QFile>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace {

char *map(void *place, int size, int protection, int flags, int file, int offset)
{
    void *mapped = ::mmap(place, std::size_t(size), protection, MAP_PRIVATE | flags, file, offset);
    if (mapped == MAP_FAILED || (place && mapped != place))
        qFatal("Cannot map %d bytes", size);
    return static_cast<char *>(mapped);
}

} // namespace

ReservedSpace::ReservedSpace() : m_start(map(nullptr, pageCount * pageSize, PROT_NONE, MAP_ANONYMOUS, -1, 0))
{}

ReservedSpace::~ReservedSpace()
{
    ::munmap(m_start, std::size_t(pageCount) * pageSize);
}

void ReservedSpace::mapFile(const QString &path, int number, int offset) const
{
    const int file = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    map(page(number), pageSize, PROT_READ | PROT_WRITE, MAP_FIXED, file, offset);
    ::close(file);
}

char *ReservedSpace::mapMemory(int number, int count) const
{
    return map(page(number), count * pageSize, PROT_READ | PROT_WRITE, MAP_FIXED | MAP_ANONYMOUS, -1, 0);
}
