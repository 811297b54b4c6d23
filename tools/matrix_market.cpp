#include "matrix_market.h"

#include "output.h"
#include "progress.h"

#include <fmt/format.h>

#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <memory>
#include <string_view>

namespace tarn::tool {

namespace {

enum class Field
{
    real,
    integer,
    complex,
    pattern
};
enum class Symmetry
{
    general,
    symmetric,
    skew,
    hermitian
};

struct Banner
{
    bool coordinate = false;
    Field field = Field::real;
    Symmetry symmetry = Symmetry::general;
};

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r'; }

std::string lower(std::string_view text)
{
    std::string result(text);
    for (char& c : result)
        if (c >= 'A' && c <= 'Z')
            c = char(c - 'A' + 'a');
    return result;
}

/// Walks over the lines of a text and over the tokens of a line.
class Scanner
{
public:
    Scanner(const std::string& file, std::string_view text)
        : file_(file), text_(text), phase_("reading " + withoutFolder(file))
    {}

    /// Steps to the next line, false at the end of the text.
    bool nextLine()
    {
        if (next_ >= text_.size())
            return false;
        std::size_t end = text_.find('\n', next_);
        if (end == std::string_view::npos)
            end = text_.size();
        rest_ = text_.substr(next_, end - next_);
        next_ = end + 1;
        if (++line_ % linesPerReport == 0)
            phase_.done(double(next_) / double(text_.size()));
        return true;
    }

    /// Steps to the next line that is neither blank nor a comment, false at the end of the text.
    bool nextDataLine()
    {
        while (nextLine()) {
            skipBlanks();
            if (!rest_.empty() && rest_.front() != '%')
                return true;
        }
        return false;
    }

    /// Takes the next token of the line; empty at its end.
    std::string_view token()
    {
        skipBlanks();
        std::size_t length = 0;
        while (length < rest_.size() && !isBlank(rest_[length]))
            ++length;
        const std::string_view result = rest_.substr(0, length);
        rest_.remove_prefix(length);
        return result;
    }

    /// Takes a whole number.
    std::int64_t integer(const char* what)
    {
        std::string_view digits = required(what);
        const std::string_view whole = digits;
        if (digits.front() == '+' && digits.size() > 1 && digits[1] != '-')
            digits.remove_prefix(1);
        std::int64_t value = 0;
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
        if (error == std::errc::result_out_of_range)
            fail(fmt::format("{} {} is too large", what, whole));
        if (error != std::errc() || end != digits.data() + digits.size())
            fail(fmt::format("{} is '{}', not a whole number", what, whole));
        return value;
    }

    /// Takes a finite number; its exponent may be marked by a D, as Fortran writes double precision.
    double number(const char* what)
    {
        std::string_view digits = required(what);
        const std::string_view whole = digits;
        if (digits.front() == '+' && digits.size() > 1 && digits[1] != '-')
            digits.remove_prefix(1);
        std::string withE;
        if (const std::size_t d = digits.find_first_of("dD"); d != std::string_view::npos) {
            withE = digits;
            withE[d] = 'e';
            digits = withE;
        }
        double value = 0;
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
        if (error == std::errc::invalid_argument || end != digits.data() + digits.size())
            fail(fmt::format("{} is '{}', not a number", what, whole));
        // from_chars does not tell overflow from underflow, and gives no value for either.
        if (error == std::errc::result_out_of_range)
            value = std::strtod(std::string(digits).c_str(), nullptr);
        if (!std::isfinite(value))
            fail(fmt::format("{} {} is not finite", what, whole));
        return value;
    }

    void endOfLine()
    {
        if (const std::string_view more = token(); !more.empty())
            fail(fmt::format("'{}' stands behind the last value of the line", more));
    }

    [[noreturn]] void fail(const std::string& cause) const { throw MatrixMarketError(file_, line_, cause); }
    [[noreturn]] void failWhole(const std::string& cause) const { throw MatrixMarketError(file_, 0, cause); }

private:
    void skipBlanks()
    {
        while (!rest_.empty() && isBlank(rest_.front()))
            rest_.remove_prefix(1);
    }

    std::string_view required(const char* what)
    {
        const std::string_view result = token();
        if (result.empty())
            fail(fmt::format("{} is missing", what));
        return result;
    }

    static constexpr std::int64_t linesPerReport = 1 << 14;

    std::string file_;
    std::string_view text_, rest_;
    std::size_t next_ = 0;
    std::int64_t line_ = 0;
    Phase phase_;
};

/// The text of a file, which may be compressed.
std::string readText(const std::string& path)
{
    const std::unique_ptr<gzFile_s, int (*)(gzFile)> file(gzopen(path.c_str(), "rb"), &gzclose_r);
    if (!file)
        throw MatrixMarketError(path, 0, std::strerror(errno));
    std::string text;
    constexpr unsigned chunk = 1 << 20;
    gzbuffer(file.get(), chunk);
    for (int got = chunk; got == int(chunk);) {
        const std::size_t size = text.size();
        text.resize(size + chunk);
        got = gzread(file.get(), text.data() + size, chunk);
        text.resize(size + std::size_t(std::max(got, 0)));
    }
    int error = Z_OK;
    gzerror(file.get(), &error);
    if (error == Z_ERRNO)
        throw MatrixMarketError(path, 0, std::strerror(errno));
    if (error != Z_OK && error != Z_STREAM_END)
        throw MatrixMarketError(path, 0, error == Z_BUF_ERROR ? "the compressed file is cut off" : "damaged");
    return text;
}

/// The value that belongs to a word of the banner.
template <class Value, std::size_t n>
Value oneOf(const Scanner& in, const char* what, std::string_view word,
            const std::pair<const char*, Value> (&choices)[n])
{
    std::string names;
    for (const auto& [name, value] : choices) {
        if (lower(word) == name)
            return value;
        names += names.empty() ? name : std::string(", ") + name;
    }
    in.fail(fmt::format("{} is '{}', not one of: {}", what, word, names));
}

Banner readBanner(Scanner& in)
{
    if (!in.nextLine())
        in.failWhole("the file is empty");
    if (lower(in.token()) != "%%matrixmarket")
        in.fail("a Matrix Market file begins with '%%MatrixMarket'");
    if (const std::string_view object = in.token(); lower(object) != "matrix")
        in.fail(fmt::format("the object is '{}', not 'matrix'", object));
    Banner banner;
    banner.coordinate = oneOf<bool>(in, "the format", in.token(), {{"coordinate", true}, {"array", false}});
    banner.field = oneOf<Field>(
        in, "the field", in.token(),
        {{"real", Field::real}, {"integer", Field::integer}, {"complex", Field::complex}, {"pattern", Field::pattern}});
    banner.symmetry = oneOf<Symmetry>(in, "the symmetry", in.token(),
                                      {{"general", Symmetry::general},
                                       {"symmetric", Symmetry::symmetric},
                                       {"skew-symmetric", Symmetry::skew},
                                       {"hermitian", Symmetry::hermitian}});
    in.endOfLine();
    if (banner.field == Field::pattern && !banner.coordinate)
        in.fail("an array cannot be a pattern");
    if (banner.symmetry == Symmetry::hermitian && banner.field != Field::complex)
        in.fail("only a complex matrix can be hermitian");
    if (banner.symmetry == Symmetry::skew && banner.field == Field::pattern)
        in.fail("a pattern cannot be skew-symmetric");
    return banner;
}

int dimension(Scanner& in, const char* what)
{
    const std::int64_t value = in.integer(what);
    if (value < 0 || value > INT_MAX)
        in.fail(fmt::format("{} {} is outside 0..{}", what, value, INT_MAX));
    return int(value);
}

/// Fails for a matrix that cannot fit this machine's memory, which the kernel would else notice by ending the process.
void checkMemory(const Scanner& in, int rows, int cols, std::size_t elementSize)
{
    const double bytes = double(rows) * cols * double(elementSize);
    if (bytes > double(sysconf(_SC_PHYS_PAGES)) * double(sysconf(_SC_PAGESIZE)))
        in.fail(fmt::format("a dense {} x {} matrix takes {:.0f} GiB, more than this machine has", rows, cols,
                            bytes / (1 << 30)));
}

template <class T>
T readValue(Scanner& in, Field field)
{
    if constexpr (isComplex<T>) {
        const double re = in.number("the real part");
        return {re, in.number("the imaginary part")};
    } else if (field == Field::pattern) {
        return 1;
    } else {
        return field == Field::integer ? double(in.integer("the value")) : in.number("the value");
    }
}

/// Adds a value at (i, j), from 0, and its image under the symmetry.
template <class T>
void add(Scanner& in, Matrix<T>& a, Symmetry symmetry, int i, int j, const T& value)
{
    a(i, j) += value;
    if (symmetry == Symmetry::hermitian && i == j && std::imag(value) != 0)
        in.fail("a hermitian matrix has a real diagonal");
    if (symmetry == Symmetry::general || i == j)
        return;
    if constexpr (isComplex<T>)
        a(j, i) += symmetry == Symmetry::skew ? -value : symmetry == Symmetry::hermitian ? std::conj(value) : value;
    else
        a(j, i) += symmetry == Symmetry::skew ? -value : value;
}

int index(Scanner& in, const char* what, int count)
{
    const std::int64_t value = in.integer(what);
    if (value < 1 || value > count)
        in.fail(fmt::format("{} {} is outside 1..{}", what, value, count));
    return int(value) - 1;
}

template <class T>
void readCoordinate(Scanner& in, const Banner& banner, Matrix<T>& a, std::int64_t count)
{
    for (std::int64_t entry = 0; entry < count; ++entry) {
        if (!in.nextDataLine())
            in.failWhole(fmt::format("the file ends after {} of {} entries", entry, count));
        const int i = index(in, "the row index", a.rows);
        const int j = index(in, "the column index", a.cols);
        if (banner.symmetry != Symmetry::general && i < j)
            in.fail(fmt::format("entry ({}, {}) is above the diagonal; a symmetry is stored as its lower triangle",
                                i + 1, j + 1));
        if (banner.symmetry == Symmetry::skew && i == j)
            in.fail("a skew-symmetric matrix has no diagonal entries");
        add(in, a, banner.symmetry, i, j, readValue<T>(in, banner.field));
        in.endOfLine();
    }
}

template <class T>
void readArray(Scanner& in, const Banner& banner, Matrix<T>& a)
{
    const bool general = banner.symmetry == Symmetry::general;
    const int offset = banner.symmetry == Symmetry::skew ? 1 : 0;
    for (int j = 0; j < a.cols; ++j) {
        for (int i = general ? 0 : j + offset; i < a.rows; ++i) {
            if (!in.nextDataLine())
                in.failWhole(fmt::format("the file ends before entry ({}, {})", i + 1, j + 1));
            add(in, a, banner.symmetry, i, j, readValue<T>(in, banner.field));
            in.endOfLine();
        }
    }
}

template <class T>
Matrix<T> readEntries(Scanner& in, const Banner& banner, int rows, int cols, std::int64_t count)
{
    checkMemory(in, rows, cols, sizeof(T));
    Matrix<T> a(rows, cols);
    if (banner.coordinate)
        readCoordinate(in, banner, a, count);
    else
        readArray(in, banner, a);
    if (in.nextDataLine())
        in.fail("there are more entries than announced");
    return a;
}

template <class T>
void write(const std::string& path, const Matrix<T>& a)
{
    constexpr std::size_t pieces = 1 << 16;
    constexpr int digits = std::numeric_limits<Real<T>>::max_digits10;
    Phase phase("writing " + withoutFolder(path));
    OutputFile file(path);
    fmt::memory_buffer text;
    const auto end = std::back_inserter(text);
    fmt::format_to(end, "%%MatrixMarket matrix array {} general\n{} {}\n", isComplex<T> ? "complex" : "real", a.rows,
                   a.cols);
    for (const T& x : a.values) {
        if constexpr (isComplex<T>)
            fmt::format_to(end, "{:.{}g} {:.{}g}\n", x.real(), digits, x.imag(), digits);
        else
            fmt::format_to(end, "{:.{}g}\n", x, digits);
        if (text.size() < pieces)
            continue;
        file.write({text.data(), text.size()});
        text.clear();
        phase.done(double(&x - a.values.data()) / double(a.values.size()));
    }
    file.write({text.data(), text.size()});
    file.complete();
}

} // namespace

AnyMatrix readMatrixMarket(const std::string& path)
{
    const std::string text = readText(path);
    Scanner in(path, text);
    const Banner banner = readBanner(in);
    if (!in.nextDataLine())
        in.failWhole("the size line is missing");
    const int rows = dimension(in, "the number of rows");
    const int cols = dimension(in, "the number of columns");
    const std::int64_t count = banner.coordinate ? in.integer("the number of entries") : 0;
    if (count < 0)
        in.fail(fmt::format("the number of entries {} is negative", count));
    in.endOfLine();
    if (banner.symmetry != Symmetry::general && rows != cols)
        in.fail(fmt::format("a {} x {} matrix has no symmetry", rows, cols));
    if (banner.field == Field::complex)
        return readEntries<std::complex<double>>(in, banner, rows, cols, count);
    return readEntries<double>(in, banner, rows, cols, count);
}

void writeMatrixMarket(const std::string& path, const Matrix<float>& a) { write(path, a); }

void writeMatrixMarket(const std::string& path, const Matrix<std::complex<float>>& a) { write(path, a); }

void writeMatrixMarket(const std::string& path, const Matrix<double>& a) { write(path, a); }

void writeMatrixMarket(const std::string& path, const Matrix<std::complex<double>>& a) { write(path, a); }

} // namespace tarn::tool
