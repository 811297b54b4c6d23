#include "output.h"

#include "failure.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <utility>

namespace tarn::tool {

namespace {

namespace fs = std::filesystem;

/// Where files of the name "-" go, and the other name that was given for it, as "/dev/stdout".
int outputDescriptor = STDOUT_FILENO;
std::string otherName;

[[noreturn]] void failFor(const std::string& path)
{
    throw Failure((path == "-" ? "standard output" : path) + ": " + std::strerror(errno));
}

struct Place
{
    std::string target;
    bool standardOutput = false, exists = false, regular = true;
    struct stat status = {};
};

Place placeOf(const std::string& path)
{
    std::error_code ignored;
    // A symbolic link stays, and what it points to is replaced.
    const fs::path target = fs::canonical(path, ignored);
    Place place{target.empty() ? path : target.string()};
    place.exists = stat(place.target.c_str(), &place.status) == 0;
    place.regular = !place.exists || S_ISREG(place.status.st_mode);
    struct stat own = {};
    // A file that the standard output goes to, as /dev/stdout may be, must not be replaced under it.
    place.standardOutput = path == "-" || path == otherName ||
                           (place.exists && place.regular && fstat(outputDescriptor, &own) == 0 &&
                            own.st_dev == place.status.st_dev && own.st_ino == place.status.st_ino);
    return place;
}

std::string folderOf(const std::string& target)
{
    const std::string folder = fs::path(target).parent_path().string();
    return folder.empty() ? "." : folder;
}

/// Opens a new file in the target's folder, whose name gets into `partial`, with the permissions that the target has or
/// would get; -1 and errno if that fails.
int openBeside(const Place& place, std::string& partial)
{
    partial = folderOf(place.target) + "/.tarn-XXXXXX";
    const int descriptor = mkstemp(partial.data());
    if (descriptor < 0) {
        partial.clear();
        return -1;
    }
    const mode_t mask = umask(0);
    umask(mask);
    fchmod(descriptor, place.exists ? place.status.st_mode & 07777 : 0666 & ~mask);
    return descriptor;
}

bool isCompressed(const std::string& path) { return fs::path(path).extension() == ".gz"; }

} // namespace

void reserveOutput(const std::string& path)
{
    if (path.empty())
        return;
    const Place place = placeOf(path);
    if (place.standardOutput) {
        std::fflush(stdout);
        std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ); // in order with what goes to the error stream directly
        outputDescriptor = dup(STDOUT_FILENO);
        otherName = path;
        if (outputDescriptor < 0 || dup2(STDERR_FILENO, STDOUT_FILENO) < 0)
            failFor(path);
        return;
    }
    if (place.exists && S_ISDIR(place.status.st_mode)) {
        errno = EISDIR;
        failFor(path);
    }
    if ((place.exists && access(place.target.c_str(), W_OK) != 0) ||
        (place.regular && access(folderOf(place.target).c_str(), W_OK | X_OK) != 0))
        failFor(path);
}

OutputFile::OutputFile(const std::string& path) : path_(path)
{
    const Place place = placeOf(path);
    target_ = place.target;
    int descriptor = -1;
    if (place.standardOutput)
        descriptor = dup(outputDescriptor);
    else if (place.regular)
        descriptor = openBeside(place, partial_);
    else
        descriptor = open(target_.c_str(), O_WRONLY | O_CLOEXEC);
    if (descriptor < 0)
        fail();
    stream_ = gzdopen(descriptor, isCompressed(path) ? "wb" : "wbT");
    if (!stream_) {
        close(descriptor);
        errno = ENOMEM;
        fail();
    }
}

OutputFile::~OutputFile()
{
    if (stream_)
        gzclose_w(stream_);
    if (!partial_.empty())
        unlink(partial_.c_str());
}

void OutputFile::write(std::string_view text)
{
    if (!text.empty() && gzwrite(stream_, text.data(), unsigned(text.size())) == 0)
        fail();
}

void OutputFile::complete()
{
    if (gzclose_w(std::exchange(stream_, nullptr)) != Z_OK)
        fail();
    if (!partial_.empty() && std::rename(partial_.c_str(), target_.c_str()) != 0)
        fail();
    partial_.clear();
}

void OutputFile::fail() const { failFor(path_); }

void writeText(const std::string& path, std::string_view text)
{
    OutputFile file(path);
    file.write(text);
    file.complete();
}

} // namespace tarn::tool
