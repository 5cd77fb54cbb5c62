#include "program/Layout.h"
#include "windows/CodeModule.h"

namespace {

char programData[Layout::imageSize];

} // namespace

const wchar_t *CodeModule::name()
{
    return nullptr;
}

char *CodeModule::data()
{
    return programData;
}
