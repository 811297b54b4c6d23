// A line on the error stream that shows that long work goes on.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace tarn::tool {

/// Whether phases show themselves: the error stream is a terminal.
bool showsProgress();

/// A part of a command's work. If the error stream is a terminal, and from two seconds after the start of the program
/// on, a line there says for how long it will go on, as in "solving: 43 % done, about 12 s left". The line is gone when
/// the phase ends.
class Phase
{
public:
    /// expected: the seconds that it will take, as far as can be told; 0 for not at all.
    explicit Phase(std::string name, double expected = 0);
    ~Phase() { end(); }
    Phase(const Phase&) = delete;
    Phase& operator=(const Phase&) = delete;

    /// Another phase begins.
    void next(std::string name, double expected = 0);

    /// Ends it before the object does; then nothing else may be called.
    void end();

    /// That share, from 0 to 1, is done: the rest goes on at the rate so far.
    void done(double share);

    /// Goes on under that name for so many seconds; 0 for who knows.
    void goesOn(std::string name, double seconds);

    /// Prints to a terminal that may be the same.
    template <class Print>
    void without(const Print& print)
    {
        const std::lock_guard lock(mutex_);
        erase();
        print();
    }

private:
    using Clock = std::chrono::steady_clock;

    void watch();
    void erase();

    std::mutex mutex_;
    std::condition_variable ended_;
    std::string name_;
    Clock::time_point begin_, end_;
    bool endKnown_ = false, over_ = false, drawn_ = false;
    std::thread watcher_;
};

/// The line's text after `elapsed` seconds of a phase that will take `left` more; nothing: unknown.
std::string progressText(const std::string& phase, double elapsed, std::optional<double> left);

/// The last part of a path.
std::string withoutFolder(const std::string& path);

} // namespace tarn::tool
