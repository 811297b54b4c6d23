#include "frame/routine.h"

#include <exception>

namespace tarn {

namespace {

tarnStatus fail(tarnStatus status) noexcept
{
    markFailed();
    abandonRoutine();
    return status;
}

tarnStatus fail(tarnStatus status, tarnInfo info) noexcept
{
    tarnSetErrorInfo(info);
    return fail(status);
}

} // namespace

tarnStatus translateException() noexcept
{
    // The order counts: CudaMemoryException is a std::bad_alloc, and most others are std::exceptions.
    try {
        throw;
    } catch (const velk::CudaMemoryException&) {
        return fail(tarnInsufficientMemory);
    } catch (const std::bad_alloc&) {
        return fail(tarnInsufficientMemory);
    } catch (const velk::CudaRuntimeException& failure) {
        return fail(tarnRuntimeError, failure.code());
    } catch (const velk::CublasException& failure) {
        return fail(tarnBlasError, failure.code());
    } catch (const velk::CusparseException& failure) {
        return fail(tarnRuntimeError, failure.code());
    } catch (const InfoException& failure) {
        tarnSetErrorInfo(failure.info());
        return failure.status();
    } catch (const FeatNotImplException&) {
        return fail(tarnFeatureNotImplemented);
    } catch (const std::exception&) {
        return fail(tarnRuntimeError, -1);
    } catch (...) {
        return fail(tarnUnspecifiedError, -1);
    }
}

} // namespace tarn
