// Failures that end a command, and the status of library calls.
#pragma once

#include "tarn_lapack.h"

#include <stdexcept>
#include <string>

namespace tarn::tool {

/// Ends a command: its text is the one line that the user sees.
class Failure : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// A failure that is the command line's.
class UsageError : public Failure
{
public:
    using Failure::Failure;
};

/// One line of text for a status and the error info that goes with it on this thread.
inline std::string statusText(tarnStatus status)
{
    const tarnInfo info = tarnGetErrorInfo();
    char message[256] = "";
    tarnGetErrorInfoString(status, info, message, sizeof message);
    // The message of a data error is a list of possible meanings over several lines.
    std::string text = message;
    if (text.empty() || text.find('\n') != std::string::npos)
        text = tarnGetStatusString(status);
    return info == 0 ? text : text + ", info " + std::to_string(info);
}

/// Raises Failure, naming the call, where status is not tarnNoError.
inline void check(tarnStatus status, const char* call)
{
    if (status != tarnNoError)
        throw Failure(std::string(call) + ": " + statusText(status));
}

/// Holds the library up for the calling thread.
class Library
{
public:
    Library() { check(tarnInitialize(), "tarnInitialize"); }
    ~Library() { tarnShutdown(); }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
};

} // namespace tarn::tool
