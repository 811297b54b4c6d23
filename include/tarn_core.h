/** @file
 * tarn_core: status values, and the last status and error info of each thread. */
#ifndef TARN_CORE_H
#define TARN_CORE_H

#include <stdint.h>

#if defined(__GNUC__)
#    define TARN_API __attribute__((visibility("default")))
#else
#    define TARN_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup status Status and error info
 * Kept for each thread.
 * @{
 */

/** Result of every tarn routine. tarnGetStatusString() gives the text of a value. */
typedef enum tarnStatus
{
    tarnNoError = 0,                       /**< the routine did what it was asked to */
    tarnNotInitialized = 1,                /**< tarnInitialize has not succeeded yet */
    tarnNoHardware = 2,                    /**< no CUDA device is present */
    tarnInsufficientRuntime = 3,           /**< CUDA runtime, driver or cuBLAS is too old */
    tarnInsufficientComputeCapability = 4, /**< the device has no double precision */
    tarnInsufficientMemory = 5,            /**< host or device memory ran out */
    tarnFeatureNotImplemented = 6,         /**< the request is legal, but not served */
    tarnArgumentError = 7,                 /**< info: minus the one-based position of the argument */
    tarnDataError = 8,                     /**< info: the positive LAPACK info of the routine */
    tarnBlasError = 9,                     /**< info: the cuBLAS status code */
    tarnRuntimeError = 10,                 /**< info: the CUDA error code, -1, or a negative info of the CPU LAPACK */
    tarnBadStorageFormat = 11,             /**< of sparse matrices; no routine of tarn_lapack returns it */
    tarnUnspecifiedError = 12              /**< info: -1 */
} tarnStatus;

/** Detail that goes with a status; 0 where a status has none. */
typedef int32_t tarnInfo;

/**
 * Status of the last tarn call on the calling thread.
 *
 * @return the status of the last call that records one; tarnNoError before any
 */
TARN_API tarnStatus tarnGetLastStatus(void);

/**
 * Error info of the last tarn call on the calling thread.
 *
 * @return the info of the last call that records one; 0 before any
 */
TARN_API tarnInfo tarnGetErrorInfo(void);

/**
 * Records the status of the call that is ending, for tarnGetLastStatus() on this thread. For tarn libraries.
 *
 * @param[in] status  the status
 */
TARN_API void tarnSetLastStatus(tarnStatus status);

/**
 * Records the detail of the call that is running, for tarnGetErrorInfo() on this thread. For tarn libraries.
 *
 * @param[in] info  the detail
 */
TARN_API void tarnSetErrorInfo(tarnInfo info);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
