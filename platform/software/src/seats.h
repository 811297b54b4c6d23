#pragma once
/// Seats for callers: how many work at a time on the cores that the device computes on.

namespace tarn::soft {

/// Half of the cores, at least one: a caller at work keeps its own core and, with large products, all others.
int seats();

/// Waits for a seat, in the order of arrival but no longer than a tenth of a second, so that a short routine does not
/// wait for the end of a long one. Returns whether the caller has one; it then gives it back by leaveSeat.
bool takeSeat();
void leaveSeat() noexcept;

} // namespace tarn::soft
