// Where results go: files that come into being as a whole, or the standard output.
#pragma once

#include <zlib.h>

#include <string>
#include <string_view>

namespace tarn::tool {

/// To be called for each path that is going to be written, before the work starts: raises Failure, naming the path,
/// where no file can be written. "" is no path. With "-" the standard output is kept for the file: what is printed
/// goes to the error stream from then on.
void reserveOutput(const std::string& path);

/// A file that is written beside its place and moved there when it is complete; until then, and after a failure, what
/// was there stays. "-" is the standard output, a name that ends with ".gz" gets a compressed file, and what is no
/// regular file, as a pipe, is written in place. All but the destructor raise Failure, naming the path.
class OutputFile
{
public:
    explicit OutputFile(const std::string& path);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    void write(std::string_view text);

    /// To be called last.
    void complete();

private:
    [[noreturn]] void fail() const;

    std::string path_;
    std::string target_;  ///< where the file goes
    std::string partial_; ///< where it is until then; empty: in place
    gzFile stream_ = nullptr;
};

/// Writes a whole file of that text.
void writeText(const std::string& path, std::string_view text);

} // namespace tarn::tool
