// The frames of exported functions: where the library's exceptions become a status and an error info.
//
// A numerical routine has two frames of the same shape. The frame of the host form checks the arguments, builds mirrors
// of the caller's arrays and calls the frame of the device form, which calls the implementation. A failure inside the
// implementation is translated by the inner frame; that it marks the thread is what keeps the outer frame's mirrors
// from copying back. A tarnDataError does not mark: the factors computed are delivered.
#pragma once

#include "frame/device_table.h"
#include "frame/error_state.h"
#include "frame/lifecycle.h"
#include "frame/thread_state.h"

#include <tarndev/Complex>

namespace tarn {

/// Status of the exception being handled; records its error info, and marks the thread as failed unless the exception
/// is an InfoException.
tarnStatus translateException() noexcept;

/// Records a status for the calling thread and returns it.
inline tarnStatus record(tarnStatus status) noexcept
{
    tarnSetLastStatus(status);
    return status;
}

/// Ends the body of a host form: finishRoutine, then the status that the device form gave.
inline tarnStatus finished(tarnStatus status)
{
    finishRoutine();
    return status;
}

/// The frame of a numerical routine on elements T. body() returns a status, and its locals (the mirrors) die inside the
/// frame. In this order: refuse if not initialised, bind the device, refuse double precision that the device has not
/// got, clear the error info, enter, run the body, translate what it raises, leave, record.
template <class T, class Body>
tarnStatus routineFrame(Body&& body) noexcept
{
    if (!isInitialized())
        return record(tarnNotInitialized);
    tarnStatus status = tarnNoError;
    try {
        const int device = bindThreadDevice();
        if (isDouble<T> && !supportsDouble(device))
            return record(tarnInsufficientComputeCapability);
    } catch (...) {
        tarnSetErrorInfo(0);
        return record(translateException());
    }
    tarnSetErrorInfo(0);
    try {
        enterRoutine();
        status = body();
    } catch (...) {
        status = translateException();
    }
    leaveRoutine();
    return record(status);
}

/// The frame of a host form. body: check the arguments, build the mirrors, return finished(device form).
template <class T, class Body>
tarnStatus hostForm(Body&& body) noexcept
{
    return routineFrame<T>(body);
}

/// The frame of a device form. implementation: the routine on device addresses, which reports failure by raising.
template <class T, class Implementation>
tarnStatus deviceForm(Implementation&& implementation) noexcept
{
    return routineFrame<T>([&] {
        try {
            implementation();
        } catch (const InfoException& failure) {
            // The results are delivered: the device must come to rest first, and its own errors outrank this one.
            if (failure.status() != tarnArgumentError)
                finishRoutine();
            throw;
        }
        return finished(tarnNoError);
    });
}

/// The frame of a service function, which needs neither initialisation nor thread state. body() returns nothing.
template <class Body>
tarnStatus serviceFrame(Body&& body) noexcept
{
    tarnSetErrorInfo(0);
    tarnStatus status = tarnNoError;
    try {
        body();
        finishRoutine();
    } catch (...) {
        status = translateException();
    }
    return record(status);
}

} // namespace tarn
