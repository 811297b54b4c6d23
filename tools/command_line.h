// The command line of tarn.
#pragma once

namespace tarn::tool {

/// Runs the tool: 0, or 1 after a failure, or 2 for a command line that does not parse, each with one line on the error
/// stream.
int runTool(int argc, char** argv);

} // namespace tarn::tool
