// Waiting for several descriptors at once.
#pragma once

struct pollfd;

namespace OSAPI {

/// Waits until one of the `n` descriptors is ready, at most `timeout` milliseconds; negative waits
/// for ever. Returns how many are ready, 0 after the time. When a signal interrupts it, the wait
/// begins anew, with its whole time, or -1 is returned if `return_on_interrupt` is set. Throws
/// "poll: ...".
int poll(pollfd* descriptors, unsigned int n, int timeout, bool return_on_interrupt);

}  // namespace OSAPI
