#pragma once

#include "service/Json.h"

namespace service {

/// The versions of the trading programs and where each keeps the code of the open stock, as
/// /stockhelper/software_list tells them. Of either program exactly one fits the stand-ins of this project;
/// none fits a real program.
Json softwareList();

} // namespace service
