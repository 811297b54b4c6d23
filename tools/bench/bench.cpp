#include "../commands.h"
#include "../failure.h"
#include "../progress.h"
#include "dropin.h"
#include "kernels.h"
#include "routine.h"
#include "table.h"

#include <fmt/format.h>

#include <charconv>
#include <cstdio>
#include <map>

namespace tarn::bench {

namespace {

using tool::BenchOptions;
using tool::Failure;
using tool::UsageError;

/// Appends what "N" or "N:N2:STEP" means: the sizes N, N + STEP, ... up to N2.
void appendSizes(std::vector<int>& sizes, const std::string& text)
{
    int value[3] = {0, 0, 1};
    int count = 0;
    const char *p = text.data(), *const end = p + text.size();
    while (count < 3) {
        const auto [next, error] = std::from_chars(p, end, value[count]);
        if (error != std::errc() || value[count] < 1)
            break;
        ++count;
        p = next;
        if (p == end || *p != ':')
            break;
        ++p;
    }
    if (p != end || (count != 1 && count != 3))
        throw UsageError(fmt::format("--size {}: give N or N:N2:STEP, whole numbers above 0", text));
    const int last = count == 3 ? value[1] : value[0];
    if (last < value[0])
        throw UsageError(fmt::format("--size {}: the last size is below the first", text));
    for (std::int64_t size = value[0]; size <= last; size += value[2])
        sizes.push_back(int(size));
}

std::vector<Routine> chooseRoutines(const std::vector<std::string>& names)
{
    std::vector<Routine> chosen;
    for (const std::string& name : names) {
        const std::size_t before = chosen.size();
        for (const Routine& routine : routines())
            if (name == "all" || name == routine.name || std::string(routine.name).rfind(name + "-", 0) == 0)
                chosen.push_back(routine);
        if (chosen.size() == before)
            throw UsageError(fmt::format("--routine {}: there is no such routine", name));
    }
    return chosen;
}

/// The routine's types among the letters asked for.
std::string commonTypes(const Routine& routine, const std::string& letters)
{
    std::string common;
    for (const char type : letters)
        if (routine.types.find(type) != std::string::npos)
            common += type;
    return common;
}

void checkTypes(const std::vector<Routine>& chosen, const BenchOptions& options)
{
    if (options.types.empty() || options.types.find_first_not_of("sdcz") != std::string::npos)
        throw UsageError(fmt::format("--type {}: give letters of s, d, c, z", options.types));
    for (const Routine& routine : chosen)
        if (options.routines.front() != "all" && commonTypes(routine, options.types).empty())
            throw UsageError(
                fmt::format("--type {}: {} exists in {} only", options.types, routine.name, routine.types));
}

/// One measurement.
struct Run
{
    const Routine* routine;
    char type;
    int size;

    Dimensions dimensions(const BenchOptions& options) const { return routine->dimensions(size, options.nrhs); }
    double flops(const BenchOptions& options) const
    {
        return routine->flops(dimensions(options)) * (type == 'c' || type == 'z' ? 4 : 1);
    }
};

std::vector<Run> planned(const std::vector<Routine>& chosen, const std::vector<int>& sizes, const BenchOptions& options)
{
    std::vector<Run> runs;
    for (const Routine& routine : chosen)
        for (const char type : commonTypes(routine, options.types))
            for (const int size : sizes)
                runs.push_back({&routine, type, size});
    return runs;
}

/// What the runs so far say of those to come.
class Forecast
{
public:
    explicit Forecast(const BenchOptions& options) : options_(options) {}

    void learn(const Run& run, const Timing& timing)
    {
        for (const char* name : {run.routine->name, ""}) {
            work_[name] += run.flops(options_);
            seconds_[name] += timing.host + timing.device + timing.reference;
        }
    }

    /// Seconds that these runs will take at the rates so far, those of the same routine where there are; 0 without any.
    double secondsOf(const std::vector<Run>& runs, std::size_t first) const
    {
        double sum = 0;
        for (std::size_t i = first; i < runs.size() && !work_.empty(); ++i) {
            const std::string name = work_.count(runs[i].routine->name) ? runs[i].routine->name : "";
            const double once = runs[i].flops(options_) * seconds_.at(name) / work_.at(name);
            sum += once * (1 + timedCalls(once, options_.repeats));
        }
        return sum;
    }

private:
    const BenchOptions& options_;
    std::map<std::string, double> work_, seconds_; ///< by routine, and of all by ""
};

Timing measureRun(const Run& run, const BenchOptions& options, Table& table, tool::Phase& phase)
{
    const Routine& routine = *run.routine;
    const Dimensions d = run.dimensions(options);
    const Timing timing = routine.time(run.type, d, options.repeats);
    const double work = run.flops(options) * 1e-9;
    Row row = {routine.name,     run.type,         "host",       d, timing.host, work / timing.host, routine.reference,
               timing.reference, timing.hostError, routine.bound};
    phase.without([&] { table.add(row); });
    row.pointers = "device";
    row.seconds = timing.device;
    row.gflops = work / timing.device;
    row.error = timing.deviceError;
    phase.without([&] { table.add(row); });
    return timing;
}

std::string nameOf(const std::vector<Run>& runs, std::size_t i)
{
    return fmt::format("{} {} {}, {} of {}", runs[i].routine->name, runs[i].type, runs[i].size, i + 1, runs.size());
}

int measureAll(const std::vector<Run>& runs, const BenchOptions& options)
{
    int unsound = 0;
    {
        Table table(options.json ? Format::json : options.csv ? Format::csv : Format::text);
        Forecast forecast(options);
        tool::Phase phase("measuring");
        for (std::size_t i = 0; i < runs.size(); ++i) {
            phase.goesOn(nameOf(runs, i), forecast.secondsOf(runs, i));
            forecast.learn(runs[i], measureRun(runs[i], options, table, phase));
        }
        unsound = table.unsound();
    }
    if (unsound > 0)
        throw Failure(fmt::format("{} row{} with an error above the bound (tarn help bench has the bounds)", unsound,
                                  unsound == 1 ? "" : "s"));
    return 0;
}

/// A line for each number of threads, with its calls per second as a share of those of the first.
int measureUnderLoad(const std::vector<Run>& runs, const BenchOptions& options)
{
    fmt::print("{:<8} {:<4} {:>6} {:>7} {:>11} {:>6}  {:<12} {:>11} {:>6} {:>7}\n", "routine", "type", "size",
               "threads", "calls/s", "share", "beside", "calls/s", "share", "ratio");
    const double lines = double(runs.size() * options.threads.size());
    int line = 0;
    tool::Phase phase("measuring under load");
    for (const Run& run : runs) {
        Load first;
        for (const int threads : options.threads) {
            const Load load = run.routine->load(run.type, run.dimensions(options), threads);
            if (first.ours == 0)
                first = load;
            phase.without([&] {
                fmt::print("{:<8} {:<4} {:>6} {:>7} {:>11.2f} {:>6.2f}  {:<12} {:>11.2f} {:>6.2f} {:>7.2f}\n",
                           run.routine->name, run.type, run.size, threads, load.ours, load.ours / first.ours,
                           run.routine->reference, load.reference, load.reference / first.reference,
                           load.ours / load.reference);
                std::fflush(stdout);
            });
            phase.done(++line / lines);
        }
    }
    return 0;
}

/// A line per routine for scripts: name, types, largest size for a survey, reference.
void list()
{
    for (const Routine& routine : routines())
        fmt::print("{} {} {} {}\n", routine.name, routine.types, routine.largest, routine.reference);
}

int run(const BenchOptions& options)
{
    if (options.list) {
        list();
        return 0;
    }
    if (options.dropin)
        return benchDropin();
    std::vector<int> sizes;
    for (const std::string& text : options.sizes)
        appendSizes(sizes, text);
    if (options.kernels)
        return benchKernels(sizes, options.repeats);
    const std::vector<Routine> chosen = chooseRoutines(options.routines);
    checkTypes(chosen, options);

    const std::vector<Run> runs = planned(chosen, sizes, options);
    const tool::Library library;
    return options.threads.empty() ? measureAll(runs, options) : measureUnderLoad(runs, options);
}

std::string help()
{
    std::string names;
    for (const Routine& routine : routines())
        names += fmt::format("  {:<8} {}, beside {}\n", routine.name, routine.types, routine.reference);
    return "Routines, their types, and what they are measured beside:\n" + names +
           fmt::format(
               "\nEach size gives two rows: arrays in host memory (its time includes the copies to the device and "
               "back) "
               "and\n"
               "arrays in device memory. seconds are medians over the repeats, taken in turns with the reference; "
               "ratio "
               "is\n"
               "seconds over the reference's. error is a backward error in units of eps (2^-23, 2^-52 for d and z):\n"
               "  gemm symm hemm syrk herk syr2k her2k trmm gemv symv hemv\n"
               "         norm2((C - Cref) w) / (sqrt(k + 2) |alpha| |A| |B| + 2 |beta| |C|)       sound up to {blas}\n"
               "  trsm   norm2((A X - B) w) / (sqrt(m + 2) |A| |X|)                               sound up to {blas}\n"
               "  getrf  norm2((P A - L U) w) / (max(m, n) |A|)                                   sound up to "
               "{lapack}\n"
               "  gesv   norm1(B - A X) / (n norm1(A) norm1(X))                                   sound up to "
               "{lapack}\n"
               "  gels   the least change of A that makes X optimal over |A|                      sound up to {ls}\n"
               "  geqrf  norm2((A - Q R) w) / (m |A|)                                             sound up to "
               "{lapack}\n"
               "  gglse  the larger of norm2(d - B x) / (|B| norm2(x) + norm2(d)) and of\n"
               "         the least change of A that makes x optimal over |A|                      sound up to {ls}\n"
               "  gesvd-nn\n"
               "         |norm2(s) - |A|| / (max(m, n) |A|)                                       sound up to "
               "{lapack}\n"
               "  gesvd-ss gesvd-aa gesvd-os\n"
               "         the larger of norm2((A - U S V') w) / (max(m, n) |A|) and, for Q = U and Q = V,\n"
               "         norm2((I - Q' Q) w) / max(m, n)^1.5                                      sound up to "
               "{lapack}\n"
               "(gesvd: one row a pair of jobs, all by the name gesvd; for aa n = size / 2)\n"
               "(gglse: m equations and k constraints on n unknowns, m = size, n = size / 2, k = size / 4)\n"
               "where |.| is the Frobenius norm and w has random entries +1 and -1, so that norm2(E w)^2 has "
               "normF(E)^2 "
               "as\n"
               "its mean. A row with an unsound error is marked, and the exit status is then 1.",
               fmt::arg("blas", blasBound), fmt::arg("lapack", lapackBound), fmt::arg("ls", leastSquaresBound));
}

} // namespace

} // namespace tarn::bench

namespace tarn::tool {

int runBench(const BenchOptions& options) { return bench::run(options); }

std::string benchHelp() { return bench::help(); }

} // namespace tarn::tool
