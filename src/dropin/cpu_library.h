// The CPU library that would have answered if the drop-in were not there.
#pragma once

namespace tarn::dropin {

/// The routine `name` of the library that the code at `caller` would have called: the next one that all libraries of
/// the process see; or, where a program loaded its CPU library for itself alone, as interpreters do, the one that the
/// object around `caller` was linked to; or the one of the drop-in's own library. If there is none the process ends
/// with a message, as it does where the loader finds no such name.
void* cpuRoutine(const char* name, const void* caller);

} // namespace tarn::dropin
