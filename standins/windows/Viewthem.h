#pragma once

#ifdef STANDIN_VIEWTHEM
#define VIEWTHEM_EXPORT __declspec(dllexport)
#else
#define VIEWTHEM_EXPORT __declspec(dllimport)
#endif

/// Data of the module Viewthem64.dll, Layout::imageSize bytes.
extern "C" VIEWTHEM_EXPORT char *viewthemData();
