#include "../commands.h"
#include "../failure.h"
#include "dropin.h"
#include "kernels.h"
#include "routine.h"
#include "table.h"

#include <fmt/format.h>

#include <charconv>
#include <cstdio>
#include <memory>

namespace tarn::bench {

namespace {

using tool::Failure;

struct Options
{
    std::vector<std::string> routines = {"all"};
    std::string types = "s";
    std::vector<std::string> sizes = {"1024"};
    int nrhs = 10, repeats = 0;
    std::vector<int> threads; ///< of callers at a time; empty: one, call by call
    bool json = false, csv = false, list = false, kernels = false, dropin = false;
};

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
        throw Failure(fmt::format("--size {}: give N or N:N2:STEP, whole numbers above 0", text));
    const int last = count == 3 ? value[1] : value[0];
    if (last < value[0])
        throw Failure(fmt::format("--size {}: the last size is below the first", text));
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
            throw Failure(fmt::format("--routine {}: there is no such routine", name));
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

void checkTypes(const std::vector<Routine>& chosen, const Options& options)
{
    if (options.types.empty() || options.types.find_first_not_of("sdcz") != std::string::npos)
        throw Failure(fmt::format("--type {}: give letters of s, d, c, z", options.types));
    for (const Routine& routine : chosen)
        if (options.routines.front() != "all" && commonTypes(routine, options.types).empty())
            throw Failure(fmt::format("--type {}: {} exists in {} only", options.types, routine.name, routine.types));
}

void run(const Routine& routine, char type, int size, const Options& options, Table& table)
{
    const Dimensions d = routine.dimensions(size, options.nrhs);
    const Timing timing = routine.time(type, d, options.repeats);
    const double work = routine.flops(d) * (type == 'c' || type == 'z' ? 4 : 1) * 1e-9;
    Row row = {routine.name,    type, "host", d, timing.host, work / timing.host, routine.reference, timing.reference,
               timing.hostError};
    table.add(row);
    row.pointers = "device";
    row.seconds = timing.device;
    row.gflops = work / timing.device;
    row.error = timing.deviceError;
    table.add(row);
}

/// A line for each number of threads, with its calls per second as a share of those of the first.
void runUnderLoad(const Routine& routine, char type, int size, const Options& options)
{
    const Dimensions d = routine.dimensions(size, options.nrhs);
    Load first;
    for (const int threads : options.threads) {
        const Load load = routine.load(type, d, threads);
        if (first.ours == 0)
            first = load;
        fmt::print("{:<8} {:<4} {:>6} {:>7} {:>11.2f} {:>6.2f}  {:<12} {:>11.2f} {:>6.2f} {:>7.2f}\n", routine.name,
                   type, size, threads, load.ours, load.ours / first.ours, routine.reference, load.reference,
                   load.reference / first.reference, load.ours / load.reference);
        std::fflush(stdout);
    }
}

/// A line per routine for scripts: name, types, largest size for a survey, reference.
void list()
{
    for (const Routine& routine : routines())
        fmt::print("{} {} {} {}\n", routine.name, routine.types, routine.largest, routine.reference);
}

int runBench(const Options& options)
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

    const tool::Library library;
    if (!options.threads.empty()) {
        fmt::print("{:<8} {:<4} {:>6} {:>7} {:>11} {:>6}  {:<12} {:>11} {:>6} {:>7}\n", "routine", "type", "size",
                   "threads", "calls/s", "share", "beside", "calls/s", "share", "ratio");
        for (const Routine& routine : chosen)
            for (const char type : commonTypes(routine, options.types))
                for (const int size : sizes)
                    runUnderLoad(routine, type, size, options);
        return 0;
    }
    Table table(options.json ? Format::json : options.csv ? Format::csv : Format::text);
    for (const Routine& routine : chosen)
        for (const char type : commonTypes(routine, options.types))
            for (const int size : sizes)
                run(routine, type, size, options, table);
    return 0;
}

std::string help()
{
    std::string names;
    for (const Routine& routine : routines())
        names += fmt::format("  {:<6} {}, beside {}\n", routine.name, routine.types, routine.reference);
    return "Routines, their types, and what they are measured beside:\n" + names +
           "\nEach size gives two rows: arrays in host memory (its time includes the copies to the device and back) "
           "and\n"
           "arrays in device memory. seconds are medians over the repeats, taken in turns with the reference; ratio "
           "is\n"
           "seconds over the reference's. error is a backward error in units of eps (2^-23, 2^-52 for d and z):\n"
           "  gemm symm hemm syrk herk syr2k her2k trmm gemv symv hemv\n"
           "         norm2((C - Cref) w) / (sqrt(k + 2) |alpha| |A| |B| + 2 |beta| |C|)       sound up to 3\n"
           "  trsm   norm2((A X - B) w) / (sqrt(m + 2) |A| |X|)                               sound up to 3\n"
           "  getrf  norm2((P A - L U) w) / (max(m, n) |A|)                                   sound up to 30\n"
           "  gesv   norm1(B - A X) / (n norm1(A) norm1(X))                                   sound up to 30\n"
           "  gels   the least change of A that makes X optimal over |A|                      sound up to 10\n"
           "  geqrf  norm2((A - Q R) w) / (m |A|)                                             sound up to 30\n"
           "  gglse  the larger of norm2(d - B x) / (|B| norm2(x) + norm2(d)) and of\n"
           "         the least change of A that makes x optimal over |A|                      sound up to 10\n"
           "  gesvd-nn\n"
           "         |norm2(s) - |A|| / (max(m, n) |A|)                                       sound up to 30\n"
           "  gesvd-ss gesvd-aa gesvd-os\n"
           "         the larger of norm2((A - U S V') w) / (max(m, n) |A|) and, for Q = U and Q = V,\n"
           "         norm2((I - Q' Q) w) / max(m, n)^1.5                                      sound up to 30\n"
           "(gesvd: one row a pair of jobs, all by the name gesvd; for aa n = size / 2)\n"
           "(gglse: m equations and k constraints on n unknowns, m = size, n = size / 2, k = size / 4)\n"
           "where |.| is the Frobenius norm and w has random entries +1 and -1, so that norm2(E w)^2 has normF(E)^2 "
           "as\n"
           "its mean.";
}

} // namespace

} // namespace tarn::bench

namespace tarn::tool {

Command addBench(CLI::App& tarn)
{
    auto options = std::make_shared<bench::Options>();
    CLI::App* app = tarn.add_subcommand("bench", "Measure routines beside a reference library");
    app->add_option("--routine", options->routines, "Names with commas between, or all")
        ->delimiter(',')
        ->capture_default_str();
    app->add_option("--type", options->types, "Element types: letters of s, d, c, z")->capture_default_str();
    app->add_option("--size", options->sizes, "N or N:N2:STEP, or several with commas between")
        ->delimiter(',')
        ->capture_default_str();
    app->add_option("--nrhs", options->nrhs, "Right-hand sides of gesv and gels")
        ->check(CLI::PositiveNumber)
        ->capture_default_str();
    app->add_option("--repeat", options->repeats, "Timed calls; 0: about a second's worth a row, at least 3")
        ->check(CLI::NonNegativeNumber)
        ->capture_default_str();
    CLI::Option* json = app->add_flag("--json", options->json, "Print an array of JSON objects");
    CLI::Option* csv = app->add_flag("--csv", options->csv, "Print comma-separated values")->excludes(json);
    app->add_flag("--list", options->list,
                  "Measure nothing: print each routine's name, types, largest size for a survey, and reference");
    app->add_flag(
           "--kernels", options->kernels,
           "Measure copies, transposes and plane rotations of the device modules beside memcpy and LAPACK; of the "
           "other options --size and --repeat count")
        ->excludes(json);
    app->add_flag("--dropin", options->dropin,
                  "Measure what the drop-in library costs a call that stays on the CPU; no other option counts");
    app->add_option("--threads", options->threads,
                    "Threads that call at a time, several numbers with commas between: calls per second of all "
                    "together on host pointers, and their share of those of the first number")
        ->delimiter(',')
        ->check(CLI::PositiveNumber)
        ->excludes(json)
        ->excludes(csv);
    app->footer(bench::help());
    return {app, [options, app] {
                if (options->kernels && app->count("--size") == 0)
                    options->sizes = {"2048"};
                return bench::runBench(*options);
            }};
}

} // namespace tarn::tool
