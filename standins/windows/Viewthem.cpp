#define STANDIN_VIEWTHEM
#include "windows/Viewthem.h"

#include "program/Layout.h"

namespace {

char data[Layout::imageSize];

} // namespace

char *viewthemData()
{
    return data;
}
