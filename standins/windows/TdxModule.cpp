#include "windows/CodeModule.h"
#include "windows/Viewthem.h"

const wchar_t *CodeModule::name()
{
    return L"Viewthem64.dll";
}

char *CodeModule::data()
{
    return viewthemData();
}
