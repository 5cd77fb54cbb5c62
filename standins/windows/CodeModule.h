#pragma once

/// The module that the program keeps its code in; each program has its own.
namespace CodeModule {

/// File name of the module, null for the program itself.
const wchar_t *name();

/// Layout::imageSize bytes of data of that module. They are so many that the place at the layout's offset
/// lies in them wherever the linker has put them.
char *data();

} // namespace CodeModule
