#include "progress.h"

#include <fmt/format.h>

#include <sys/ioctl.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <utility>

namespace tarn::tool {

namespace {

using Seconds = std::chrono::duration<double>;

constexpr std::chrono::milliseconds patience(2000), interval(250);
const auto programStart = std::chrono::steady_clock::now();

std::string duration(double seconds)
{
    const auto whole = std::int64_t(std::ceil(seconds));
    if (whole < 60)
        return fmt::format("{} s", whole);
    if (whole < 3600)
        return fmt::format("{} min {} s", whole / 60, whole % 60);
    return fmt::format("{} h {} min", whole / 3600, whole % 3600 / 60);
}

int terminalWidth()
{
    winsize size{};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

} // namespace

bool showsProgress()
{
    const char* const kind = std::getenv("TERM");
    return isatty(STDERR_FILENO) && (!kind || std::string_view(kind) != "dumb");
}

std::string progressText(const std::string& phase, double elapsed, std::optional<double> left)
{
    if (!left)
        return fmt::format("{}: {} so far", phase, duration(elapsed));
    if (*left <= 0)
        return fmt::format("{}: {} so far, longer than estimated", phase, duration(elapsed));
    // The last per cent belongs to the end of the work, which this does not know.
    const int percent = std::min(99, int(100 * elapsed / (elapsed + *left)));
    return fmt::format("{}: {} % done, about {} left", phase, percent, duration(*left));
}

std::string withoutFolder(const std::string& path) { return std::filesystem::path(path).filename().string(); }

Phase::Phase(std::string name, double expected)
{
    if (!showsProgress())
        return;
    next(std::move(name), expected);
    watcher_ = std::thread([this] { watch(); });
}

void Phase::end()
{
    if (!watcher_.joinable())
        return;
    {
        const std::lock_guard lock(mutex_);
        over_ = true;
    }
    ended_.notify_one();
    watcher_.join();
    erase();
}

void Phase::next(std::string name, double expected)
{
    {
        const std::lock_guard lock(mutex_);
        begin_ = Clock::now();
    }
    goesOn(std::move(name), expected);
}

void Phase::done(double share)
{
    const std::lock_guard lock(mutex_);
    const auto now = Clock::now();
    endKnown_ = share > 0;
    if (endKnown_)
        end_ = now + std::chrono::duration_cast<Clock::duration>((now - begin_) * ((1 - share) / share));
}

void Phase::goesOn(std::string name, double seconds)
{
    const std::lock_guard lock(mutex_);
    name_ = std::move(name);
    endKnown_ = seconds > 0;
    if (endKnown_)
        end_ = Clock::now() + std::chrono::duration_cast<Clock::duration>(Seconds(seconds));
}

void Phase::watch()
{
    std::unique_lock lock(mutex_);
    for (auto due = std::max(programStart + patience, begin_ + interval);
         !ended_.wait_until(lock, due, [this] { return over_; }); due = Clock::now() + interval) {
        const auto now = Clock::now();
        const auto left = endKnown_ ? std::optional(Seconds(end_ - now).count()) : std::nullopt;
        const std::string text = progressText(name_, Seconds(now - begin_).count(), left);
        fmt::print(stderr, "\r\033[K{}", text.substr(0, std::size_t(terminalWidth() - 1)));
        drawn_ = true;
    }
}

void Phase::erase()
{
    if (std::exchange(drawn_, false))
        fmt::print(stderr, "\r\033[K");
}

} // namespace tarn::tool
