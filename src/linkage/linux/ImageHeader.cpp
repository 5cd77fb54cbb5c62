#include "linkage/linux/ImageHeader.h"

#include <elf.h>

#include <cstdint>
#include <cstring>

namespace {

// "PE Format", Microsoft: the offset of the signature, the signature, the machine field behind it.
constexpr std::size_t signatureOffsetAt = 0x3C;
constexpr char signature[] = {'P', 'E', '\0', '\0'};
constexpr std::uint16_t machineI386 = 0x014C;
constexpr std::uint16_t machineAmd64 = 0x8664;
constexpr std::uint16_t machineArm64 = 0xAA64;

/// Reads a little-endian number at `offset`; false if it does not lie within the bytes.
template <typename Number>
bool readNumber(const unsigned char *bytes, std::size_t size, std::size_t offset, Number &number)
{
    if (offset > size || size - offset < sizeof(Number))
        return false;
    number = 0;
    for (std::size_t position = sizeof(Number); position > 0; --position)
        number = Number(number << 8) | Number(bytes[offset + position - 1]);
    return true;
}

ImageHeader::Kind kindOfPortableExecutable(const unsigned char *bytes, std::size_t size)
{
    std::uint32_t signatureAt = 0;
    std::uint16_t machine = 0;
    if (!readNumber(bytes, size, signatureOffsetAt, signatureAt) ||
        !readNumber(bytes, size, signatureAt + sizeof(signature), machine) ||
        std::memcmp(bytes + signatureAt, signature, sizeof(signature)) != 0)
        return ImageHeader::Kind::None;
    switch (machine) {
    case machineI386:
        return ImageHeader::Kind::Image32;
    case machineAmd64:
    case machineArm64:
        return ImageHeader::Kind::Image64;
    default:
        return ImageHeader::Kind::None;
    }
}

} // namespace

ImageHeader::Kind ImageHeader::kindOf(const void *bytes, std::size_t size)
{
    const auto *start = static_cast<const unsigned char *>(bytes);
    if (size >= 2 && start[0] == 'M' && start[1] == 'Z')
        return kindOfPortableExecutable(start, size);
    if (size > EI_CLASS && std::memcmp(start, ELFMAG, SELFMAG) == 0) {
        if (start[EI_CLASS] == ELFCLASS32)
            return Kind::Image32;
        if (start[EI_CLASS] == ELFCLASS64)
            return Kind::Image64;
    }
    return Kind::None;
}
