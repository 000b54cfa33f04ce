// Limits on what the icon renderer may do, because pictures may be hostile.
#pragma once

namespace tavo {

// Restricts the whole process for good; called once, at its start. Allowed are at most 512 MiB of
// addresses, 64 descriptors, no core dump, no byte written to a file; where the kernel has Landlock
// and seccomp, no file opened for writing, made, removed or changed, no socket, no other program or
// process started or signalled. What is refused fails with EACCES or ENOSYS. Reading stays allowed:
// icons may lie anywhere.
void confineRenderer();

// Makes the kernel end this process with SIGALRM if clearTimeLimit() is not called within a second.
void setTimeLimit();
void clearTimeLimit();

}  // namespace tavo
