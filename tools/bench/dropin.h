// What the drop-in library costs a call that stays on the CPU.
#pragma once

namespace tarn::bench {

/// Prints, for some routines at an order where the CPU library itself takes next to no time, the nanoseconds of a call
/// of the CPU library, of the same call through the drop-in library, and their difference. Raises tool::Failure.
int benchDropin();

} // namespace tarn::bench
