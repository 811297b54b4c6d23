#include "table.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <cstdio>

namespace tarn::bench {

namespace {

std::string json(const Row& row)
{
    const nlohmann::ordered_json object = {{"routine", row.routine},
                                           {"type", std::string(1, row.type)},
                                           {"pointers", row.pointers},
                                           {"m", row.size.m},
                                           {"n", row.size.n},
                                           {"k", row.size.k},
                                           {"nrhs", row.size.nrhs},
                                           {"seconds", row.seconds},
                                           {"gflops", row.gflops},
                                           {"reference", row.reference},
                                           {"reference_seconds", row.referenceSeconds},
                                           {"ratio", row.ratio()},
                                           {"error", row.error},
                                           {"bound", row.bound}};
    return object.dump();
}

std::string csv(const Row& row)
{
    return fmt::format("{},{},{},{},{},{},{},{:.6g},{:.6g},{},{:.6g},{:.4g},{:.4g},{:.4g}", row.routine, row.type,
                       row.pointers, row.size.m, row.size.n, row.size.k, row.size.nrhs, row.seconds, row.gflops,
                       row.reference, row.referenceSeconds, row.ratio(), row.error, row.bound);
}

std::string text(const Row& row)
{
    const auto count = [](int n) { return n == 0 ? std::string("-") : std::to_string(n); };
    return fmt::format(
        "{:<8} {:<4} {:<8} {:>6} {:>6} {:>6} {:>5} {:>11.6f} {:>9.2f}  {:<10} {:>11.6f} {:>7.2f} {:>9.2g}{}",
        row.routine, row.type, row.pointers, count(row.size.m), count(row.size.n), count(row.size.k),
        count(row.size.nrhs), row.seconds, row.gflops, row.reference, row.referenceSeconds, row.ratio(), row.error,
        row.sound() ? "" : " UNSOUND");
}

} // namespace

Table::Table(Format format) : format_(format)
{
    if (format == Format::text)
        fmt::print("{:<8} {:<4} {:<8} {:>6} {:>6} {:>6} {:>5} {:>11} {:>9}  {:<10} {:>11} {:>7} {:>9}\n", "name",
                   "type", "pointers", "m", "n", "k", "nrhs", "seconds", "GFLOP/s", "reference", "its seconds", "ratio",
                   "error");
    else if (format == Format::csv)
        fmt::print("routine,type,pointers,m,n,k,nrhs,seconds,gflops,reference,reference_seconds,ratio,error,bound\n");
    else
        fmt::print("[");
}

Table::~Table()
{
    if (format_ == Format::json)
        std::fputs(empty_ ? "]\n" : "\n]\n", stdout);
    std::fflush(stdout);
}

void Table::add(const Row& row)
{
    if (format_ == Format::json)
        fmt::print("{}{}", empty_ ? "\n" : ",\n", json(row));
    else
        fmt::print("{}\n", format_ == Format::csv ? csv(row) : text(row));
    empty_ = false;
    unsound_ += !row.sound();
    std::fflush(stdout);
}

} // namespace tarn::bench
