#include "service/SoftwareList.h"

namespace service {

namespace {

struct Version
{
    const char *version;
    const char *offset;
    const char *note;
};

constexpr Version tdxVersions[] = {
    {"V7.58", "0x118F30", "模拟版本"}, {"V7.60", "0x11A2C8", "模拟版本"},
    {"V7.62", "0x11D6A0", "模拟版本"}, {"V7.64", "0x120A50", "模拟版本，适用于随附的演示程序"},
    {"V7.65", "0x1231E8", "模拟版本"}, {"V7.66", "0x125B70", "模拟版本"},
};

constexpr Version thsVersions[] = {
    {"9.20.30", "0x11E2D0", "模拟版本"},
    {"9.30.51", "0x11FB94", "模拟版本"},
    {"9.40.10", "0x121C48", "模拟版本，适用于随附的演示程序"},
    {"9.40.40", "0x1240A8", "模拟版本"},
    {"9.50.12", "0x126E5C", "模拟版本"},
};

template <typename List>
Json listOf(const char *program, const List &versions)
{
    Json list = Json::array();
    for (const Version &version : versions) {
        list.push_back(Json{{"name", program},
                            {"version", version.version},
                            {"offset_address", version.offset},
                            {"description", version.note}});
    }
    return list;
}

} // namespace

Json softwareList()
{
    return {{"tdx", listOf("通达信", tdxVersions)}, {"ths", listOf("同花顺", thsVersions)}};
}

} // namespace service
