// tarn run: a program with the drop-in library before its BLAS and LAPACK. tarn report: what a log of it tells.
#include "call_report.h"
#include "commands.h"
#include "dropin_library.h"
#include "failure.h"

#include <fmt/format.h>

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tarn::tool {

namespace {

constexpr const char *preloadVariable = "LD_PRELOAD", *logVariable = "TARN_BLAS_LOG";

/// Puts the library first in the list of those that are loaded before all others.
void preload(const std::string& library)
{
    const char* others = std::getenv(preloadVariable);
    setenv(preloadVariable, (others && *others ? library + ":" + others : library).c_str(), 1);
}

std::vector<char*> arguments(std::vector<std::string>& command)
{
    std::vector<char*> pointers;
    for (std::string& word : command)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);
    return pointers;
}

[[noreturn]] void raiseNotRun(const std::string& program, int code)
{
    throw Failure(fmt::format("cannot run {}: {}", program, std::strerror(code)));
}

pid_t runningChild = 0;

void handOn(int signal) { kill(runningChild, signal); }

/// Runs the command and waits for it. The terminal's signals are the program's to answer; one that asks this process to
/// end is handed on. Returns an exit status as shells count them.
int runAndWait(std::vector<std::string> command)
{
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t defaults;
    sigemptyset(&defaults);
    for (const int signal : {SIGINT, SIGQUIT})
        sigaddset(&defaults, signal);
    posix_spawnattr_setsigdefault(&attributes, &defaults);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
    std::signal(SIGINT, SIG_IGN);
    std::signal(SIGQUIT, SIG_IGN);
    const int code =
        posix_spawnp(&runningChild, command[0].c_str(), nullptr, &attributes, arguments(command).data(), environ);
    posix_spawnattr_destroy(&attributes);
    if (code != 0)
        raiseNotRun(command[0], code);
    std::signal(SIGTERM, handOn);
    int status = 0;
    while (waitpid(runningChild, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

/// A file that goes away with this. Its name says nothing.
class TemporaryFile
{
public:
    TemporaryFile() : path_((std::filesystem::temp_directory_path() / "tarn-XXXXXX").string())
    {
        const int descriptor = mkstemp(path_.data());
        if (descriptor < 0)
            throw Failure(fmt::format("cannot write {}: {}", path_, std::strerror(errno)));
        close(descriptor);
    }
    ~TemporaryFile() { unlink(path_.c_str()); }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    const std::string& path() const { return path_; }

private:
    std::string path_;
};

int runWithReport(const RunOptions& options)
{
    const char* users = std::getenv(logVariable);
    const std::string usersLog = users ? users : "";
    const TemporaryFile log;
    setenv(logVariable, log.path().c_str(), 1);
    const int status = runAndWait(options.command);
    fmt::print(stderr, "\n{}", callReport(log.path()));
    // An empty source would mark the stream as failed.
    if (!usersLog.empty() && std::filesystem::file_size(log.path()) > 0)
        if (!(std::ofstream(usersLog, std::ios::app) << std::ifstream(log.path()).rdbuf()))
            throw Failure(fmt::format("cannot write {}", usersLog));
    return status;
}

} // namespace

int runProgram(RunOptions options)
{
    preload(dropinLibrary());
    if (options.report)
        return runWithReport(options);
    execvp(options.command[0].c_str(), arguments(options.command).data());
    raiseNotRun(options.command[0], errno);
}

int runReport(const std::string& log)
{
    fmt::print("{}", callReport(log));
    return 0;
}

} // namespace tarn::tool
