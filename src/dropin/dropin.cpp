// The life of the drop-in in a process.
#include "device.h"
#include "limits.h"
#include "report.h"

#include <cstdlib>

namespace tarn::dropin {

[[gnu::constructor]] static void begin()
{
    const char* log = std::getenv("TARN_BLAS_LOG");
    reporting = log && *log;
    readLimits();
    watchForks(clearReport);
}

[[gnu::destructor]] static void end() { writeReport(); }

} // namespace tarn::dropin
