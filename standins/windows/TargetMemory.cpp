#include "windows/TargetMemory.h"

#include "program/Layout.h"
#include "windows/CodeModule.h"

#include <cstdint>
#include <cstring>

#include <windows.h>

namespace {

constexpr std::uintptr_t lowestPlace = 0x10000000;
constexpr std::uintptr_t placeStep = 0x10000;
constexpr std::uintptr_t endOf32Bits = 0x100000000;
constexpr SIZE_T pageSize = 4096;

/// The place at that offset from the base of the program's module; null if it does not lie in the module's
/// data.
char *placeInModule(std::uint32_t offset)
{
    const auto base = reinterpret_cast<std::uintptr_t>(GetModuleHandleW(CodeModule::name()));
    const auto data = reinterpret_cast<std::uintptr_t>(CodeModule::data());
    const std::uintptr_t place = base + offset;
    if (place < data || place + Layout::textSize > data + Layout::imageSize)
        return nullptr;
    return CodeModule::data() + (place - data);
}

/// A page of memory that a 32-bit pointer reaches.
char *allocateLow()
{
    for (std::uintptr_t place = lowestPlace; place < endOf32Bits - pageSize; place += placeStep) {
        auto *wanted = reinterpret_cast<void *>(place); // NOLINT(performance-no-int-to-ptr)
        if (void *page = VirtualAlloc(wanted, pageSize, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE))
            return static_cast<char *>(page);
    }
    return nullptr;
}

} // namespace

TargetMemory::TargetMemory(TradingProgram::Kind kind)
{
    if (kind == TradingProgram::Kind::Tdx) {
        m_text = placeInModule(Layout::tdxCodeOffset);
        return;
    }
    char *pointerPlace = placeInModule(Layout::thsPointerOffset);
    char *page = allocateLow();
    if (!pointerPlace || !page)
        return;
    m_text = page + pageSize / 2;
    const auto pointer = std::uint32_t(reinterpret_cast<std::uintptr_t>(m_text));
    const std::uint32_t somethingElse = 0xCCCCCCCC; // what follows the pointer is not part of it
    std::memcpy(pointerPlace, &pointer, sizeof(pointer));
    std::memcpy(pointerPlace + sizeof(pointer), &somethingElse, sizeof(somethingElse));
}

void TargetMemory::setText(const std::array<char, 8> &text)
{
    std::memcpy(m_text, text.data(), text.size()); // one store: no reader sees half a code
}
