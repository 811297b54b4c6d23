#include "measure.h"

#include "../failure.h"
#include "../timing.h"
#include "device_array.h"
#include "host_arrays.h"
#include "reference.h"

#include <algorithm>
#include <limits>

namespace tarn::bench {

namespace {

constexpr double secondsPerRow = 1;
constexpr int rowsPerSize = 2, minRepeats = 3, maxRepeats = 200;

double median(std::vector<double> times)
{
    const auto middle = times.begin() + std::ptrdiff_t(times.size() / 2);
    std::nth_element(times.begin(), middle, times.end());
    return *middle;
}

/// The arrays of calls on device pointers.
template <class T>
class DeviceArrays
{
public:
    explicit DeviceArrays(const Problem<T>& problem) : problem_(problem), pivots_(problem.pivots)
    {
        for (const Matrix<T>& a : problem.operands) {
            arrays_.emplace_back(a.values.size());
            arrays_.back().set(a.values);
        }
    }

    Arrays<T> fresh()
    {
        for (const std::size_t i : problem_.overwritten)
            arrays_[i].set(problem_.operands[i].values);
        Arrays<T> arrays;
        for (DeviceArray<T>& a : arrays_)
            arrays.operand.push_back(a.data());
        arrays.pivots = pivots_.data();
        return arrays;
    }

    Outcome<T> outcome()
    {
        Outcome<T> result;
        result.operand.resize(arrays_.size());
        for (const std::size_t i : problem_.overwritten) {
            result.operand[i] = problem_.operands[i];
            arrays_[i].get(result.operand[i].values);
        }
        result.pivots.resize(problem_.pivots);
        pivots_.get(result.pivots);
        return result;
    }

private:
    const Problem<T>& problem_;
    std::vector<DeviceArray<T>> arrays_;
    DeviceArray<int> pivots_;
};

} // namespace

int timedCalls(double once, int repeats)
{
    return repeats > 0 ? repeats : int(std::clamp<double>(rowsPerSize * secondsPerRow / once, minRepeats, maxRepeats));
}

template <class T>
Timing measure(const Problem<T>& problem, int repeats)
{
    HostArrays<T> hostArrays(problem);
    DeviceArrays<T> deviceArrays(problem);

    const auto timeOurs = [](auto& routine, const Arrays<T>& arrays) {
        tarnStatus status = tarnNoError;
        const double seconds = tool::secondsOf([&] { status = routine(arrays); });
        tool::check(status, "the routine that is measured");
        return seconds;
    };
    const auto timeHost = [&] { return timeOurs(problem.host, hostArrays.fresh()); };
    const auto timeDevice = [&] { return timeOurs(problem.device, deviceArrays.fresh()); };
    const auto timeReference = [&] {
        const Arrays<T> arrays = reference::onDevice ? deviceArrays.fresh() : hostArrays.fresh();
        return tool::secondsOf([&] { problem.reference(arrays); });
    };

    Timing timing;
    double warmUp = timeHost();
    timing.hostError = problem.error(problem, hostArrays.outcome());
    warmUp += timeDevice();
    timing.deviceError = problem.error(problem, deviceArrays.outcome());
    warmUp += timeReference();

    std::vector<double> host, device, reference;
    for (int left = timedCalls(warmUp, repeats); left > 0; --left) {
        host.push_back(timeHost());
        reference.push_back(timeReference());
        device.push_back(timeDevice());
    }
    timing.host = median(host);
    timing.device = median(device);
    timing.reference = median(reference);
    return timing;
}

template <class T>
double hostSeconds(const Problem<T>& problem)
{
    HostArrays<T> arrays(problem);
    bool good = problem.host(arrays.fresh()) == tarnNoError;
    double best = std::numeric_limits<double>::infinity();
    for (int call = 0; call < 3 && good; ++call) {
        const Arrays<T> fresh = arrays.fresh();
        best = std::min(best, tool::secondsOf([&] { good = problem.host(fresh) == tarnNoError; }));
    }
    return good ? best : 0;
}

template Timing measure(const Problem<float>&, int);
template Timing measure(const Problem<double>&, int);
template Timing measure(const Problem<std::complex<float>>&, int);
template Timing measure(const Problem<std::complex<double>>&, int);
template double hostSeconds(const Problem<float>&);
template double hostSeconds(const Problem<double>&);
template double hostSeconds(const Problem<std::complex<float>>&);
template double hostSeconds(const Problem<std::complex<double>>&);

} // namespace tarn::bench
