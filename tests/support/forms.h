// A routine of the C interface on host arrays, and on copies of them in device memory.
#pragma once

#include "support/api.h"
#include "support/device.h"
#include "support/matrix.h"

#include <tuple>

namespace test {

enum class Form
{
    host,
    device
};

/// Calls routine(addresses...) with the arrays, or with copies in device memory that are brought back after the call.
template <class Routine, class... T>
tarnStatus callIn(Form form, const Routine& routine, std::vector<T>&... arrays)
{
    if (form == Form::host)
        return routine(native(arrays.data())...);
    const std::tuple<DeviceArray<T>...> copies(arrays...);
    return std::apply(
        [&](const DeviceArray<T>&... copy) {
            const tarnStatus status = routine(native(copy.data())...);
            ((arrays = copy.download()), ...);
            return status;
        },
        copies);
}

/// The library up, and the block size of the orthogonal factorisations on the device under test.
template <class T>
class BlockedTest : public testing::Test
{
protected:
    const Initialized library;
    const int block = capability() <= 13 ? 32 : (tarn::isComplex<T> ? 64 : 96);
};

} // namespace test
