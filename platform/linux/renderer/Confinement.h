// What the icon renderer may not do, for pictures are made by strangers.
#pragma once

namespace tavo {

// For the whole process, for good, once at its start: at most 512 MiB of addresses, 64 descriptors,
// no core dump, no byte written to a file; and where the kernel has Landlock and seccomp, no file
// opened for writing, made, removed or changed, no socket, no other program or process started or
// signalled. What is refused fails with EPERM or EACCES. Reading stays: icons may lie anywhere.
void confineRenderer();

// Has the kernel end this process with SIGALRM if clearTimeLimit() is not called within a second.
void setTimeLimit();
void clearTimeLimit();

}  // namespace tavo
