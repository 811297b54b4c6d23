// Whether the library is up, and the lock that brings it up and down.
#pragma once

namespace tarn {

/// True between the first successful tarnInitialize and the tarnShutdown of the last registered thread.
bool isInitialized() noexcept;

} // namespace tarn
