#pragma once

#include <QString>

/// The version of this program: what the services are told, the about box shows and packages carry.
namespace ProgramVersion {

/// Three numbers with dots between, as the project line of the top CMakeLists.txt has them: the one place to
/// change them.
QString text();

} // namespace ProgramVersion
