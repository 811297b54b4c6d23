// Versions, status texts and error messages.
#include "frame/routine.h"
#include "tarn_lapack.h"

#include <array>
#include <cstdio>
#include <cstring>

namespace tarn {

namespace {

constexpr std::array<const char*, 13> statusTexts = {
    "No errors",
    "TARN is not initialized",
    "No hardware is present to run TARN",
    "CUDA runtime or driver is not supported",
    "Hardware does not have the required compute capability for this problem",
    "Insufficient memory to complete this operation",
    "A required feature is not yet implemented",
    "Argument error; see tarnGetErrorInfo for error code",
    "Data error; see tarnGetErrorInfo for error code",
    "Blas error; see tarnGetErrorInfo for error code",
    "Runtime error; see tarnGetErrorInfo for error code",
    "Invalid storage format; this operation cannot continue",
    "Unspecified error; contact the TARN team",
};

bool isStatus(int e) { return e >= 0 && e < int(statusTexts.size()); }

const char* cublasPhrase(int code)
{
    switch (code) {
    case 0:
        return "call tarnGetErrorInfo() to determine this error with specificity";
    case 1:
        return "not initialized";
    case 3:
        return "allocation failure";
    case 7:
        return "Invalid argument value";
    case 8:
        return "architecture mismatch";
    case 11:
        return "mapping error";
    case 13:
        return "execution failed";
    case 14:
        return "internal error";
    default:
        return "unknown";
    }
}

/// The message for status e and detail v, cut to size bytes.
void formatMessage(tarnStatus e, unsigned v, char* buf, std::size_t size)
{
    switch (e) {
    case tarnArgumentError:
        std::snprintf(buf, size, "Argument %u is invalid (see the Reference Manual for more information)", v);
        break;
    case tarnDataError:
        std::snprintf(buf, size,
                      "This status can mean one of the following:\n"
                      "    TARN Lapack: Data error at pos %u (see the Reference Manual for guidance)\n"
                      "    TARN Sparse: A data problem was found; inspect result.flag to discriminate",
                      v);
        break;
    case tarnBlasError:
        std::snprintf(buf, size, "CUBLAS error: %s", cublasPhrase(int(v)));
        break;
    case tarnRuntimeError:
        std::snprintf(buf, size, "CUDA Error:  %s (see Programmer's Guide)", cudaGetErrorString(cudaError_t(v)));
        cudaGetLastError();
        break;
    case tarnBadStorageFormat:
        std::snprintf(buf, size, "See the TARN Sparse user guide for the requirements for matrix formats");
        break;
    default:
        std::snprintf(buf, size, "%s", tarnGetStatusString(e));
    }
}

/// What a CUDA or cuBLAS version query reports, 0 if it fails. The failure is not left for the next call to report.
template <class Query>
tarnVersion versionOf(Query&& query)
{
    int version = 0;
    if (query(&version) == 0)
        return version;
    cudaGetLastError();
    return 0;
}

} // namespace

} // namespace tarn

using namespace tarn;

tarnVersion tarnGetVersion() { return 14000; }

tarnVersion tarnGetCudaMinimumVersion() { return 4010; }

tarnVersion tarnGetCudaRuntimeVersion() { return versionOf(cudaRuntimeGetVersion); }

tarnVersion tarnGetCudaDriverVersion() { return versionOf(cudaDriverGetVersion); }

tarnVersion tarnGetCublasMinimumVersion() { return 4010; }

tarnVersion tarnGetCublasRuntimeVersion()
{
    return versionOf([](int* version) { return cublasGetVersion_v2(nullptr, version); });
}

const char* tarnGetStatusString(tarnStatus e) { return isStatus(e) ? statusTexts[e] : "Invalid tarnStatus"; }

tarnStatus tarnGetErrorInfoString(tarnStatus e, tarnInfo i, char* buf, int bufsize)
{
    return serviceFrame([&] {
        require(isStatus(e), -1);
        require(buf != nullptr, -3);
        require(bufsize > 0, -4);
        std::memset(buf, 0, bufsize);
        formatMessage(e, i < 0 ? 0u - unsigned(i) : unsigned(i), buf, bufsize);
        buf[bufsize - 1] = 0;
    });
}
