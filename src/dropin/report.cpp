#include "report.h"

#include "device.h"
#include "table.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>

#include <fcntl.h>
#include <unistd.h>

namespace tarn::dropin {

bool reporting = false;

double now()
{
    timespec time;
    clock_gettime(CLOCK_MONOTONIC, &time);
    return double(time.tv_sec) + 1e-9 * double(time.tv_nsec);
}

void count(Tally& tally, Way way, double seconds, double flops, Size size)
{
    const std::lock_guard lock(tally.mutex);
    ++tally.calls[int(way)];
    tally.seconds[int(way)] += seconds;
    tally.flops[int(way)] += flops;
    if (flops >= tally.largestFlops) {
        tally.largestFlops = flops;
        tally.largest = size;
    }
}

namespace {

std::string quoted(const std::string& text)
{
    std::string result = "\"";
    for (const char c : text)
        if (c == '"' || c == '\\')
            result += std::string("\\") + c;
        else
            result += (unsigned char)c < ' ' ? ' ' : c;
    return result + '"';
}

std::string number(double x)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.6g", x);
    return text;
}

bool isEmpty(const Tally& tally) { return tally.calls[0] + tally.calls[1] + tally.calls[2] == 0; }

std::string routineEntry(const Routine& routine)
{
    const Tally& tally = routine.tally;
    std::string text = "{\"name\": " + quoted(routine.name);
    constexpr const char* ways[] = {"device", "cpu", "fell_back"};
    for (int way = 0; way < 3; ++way)
        text += std::string(", \"") + ways[way] + "\": {\"calls\": " + std::to_string(tally.calls[way]) +
                ", \"seconds\": " + number(tally.seconds[way]) + ", \"flops\": " + number(tally.flops[way]) + "}";
    return text + ", \"largest\": [" + std::to_string(tally.largest[0]) + ", " + std::to_string(tally.largest[1]) +
           ", " + std::to_string(tally.largest[2]) + "]}";
}

std::string reportLine()
{
    std::string entries;
    for (const Routine* routine : allRoutines)
        if (!isEmpty(routine->tally))
            entries += (entries.empty() ? "" : ", ") + routineEntry(*routine);
    if (entries.empty())
        return "";
    char host[256] = "";
    gethostname(host, sizeof host - 1);
    return "{\"program\": " + quoted(program_invocation_short_name) + ", \"host\": " + quoted(host) +
           ", \"pid\": " + std::to_string(getpid()) + ", \"device\": " + quoted(deviceDescription()) +
           ", \"routines\": [" + entries + "]}\n";
}

/// One write, so that the lines of processes that end together do not mix.
bool append(const char* file, const std::string& line)
{
    const int descriptor = open(file, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    if (descriptor < 0)
        return false;
    const bool whole = write(descriptor, line.data(), line.size()) == ssize_t(line.size());
    return close(descriptor) == 0 && whole;
}

} // namespace

void writeReport()
{
    const char* file = std::getenv("TARN_BLAS_LOG");
    const std::string line = file ? reportLine() : "";
    if (!line.empty() && !append(file, line))
        std::fprintf(stderr, "tarn_blas: cannot write %s: %s\n", file, std::strerror(errno));
}

void clearReport()
{
    for (Routine* routine : allRoutines)
        new (&routine->tally) Tally; // in a forked child: the mutex too may be in any state
}

} // namespace tarn::dropin
