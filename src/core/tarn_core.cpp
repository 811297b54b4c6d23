#include "tarn_core.h"

namespace {

struct LastCall
{
    tarnStatus status = tarnNoError;
    tarnInfo info = 0;
};

thread_local LastCall lastCall;

} // namespace

tarnStatus tarnGetLastStatus() { return lastCall.status; }

tarnInfo tarnGetErrorInfo() { return lastCall.info; }

void tarnSetLastStatus(tarnStatus status) { lastCall.status = status; }

void tarnSetErrorInfo(tarnInfo info) { lastCall.info = info; }
