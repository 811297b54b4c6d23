// Prints benchmark results, each row as soon as it is there.
#pragma once

#include "problem.h"

#include <string>

namespace tarn::bench {

enum class Format
{
    text,
    json,
    csv
};

/// One routine, type, kind of pointers and size.
struct Row
{
    std::string routine;
    char type;
    const char* pointers; ///< "host" or "device"
    Dimensions size;
    double seconds, gflops;
    const char* reference; ///< library that reference_seconds belongs to
    double referenceSeconds;
    double error; ///< backward error in units of eps
    double bound; ///< errors up to this are sound

    double ratio() const { return seconds / referenceSeconds; }
    bool sound() const { return error <= bound; } ///< false for a NaN too
};

/// A table on the standard output: a heading or an opening bracket first, a closing bracket last.
class Table
{
public:
    explicit Table(Format format);
    ~Table();
    Table(const Table&) = delete;
    Table& operator=(const Table&) = delete;

    void add(const Row& row);

    /// Number of rows that are not sound.
    int unsound() const { return unsound_; }

private:
    Format format_;
    bool empty_ = true;
    int unsound_ = 0;
};

} // namespace tarn::bench
