// The drop-in library that belongs to this tool.
#pragma once

#include <string>

namespace tarn::tool {

/// Its path: it lies beside the library that the tool uses. Raises Failure if it is not there.
std::string dropinLibrary();

} // namespace tarn::tool
