#pragma once

namespace tandrel {

// What holds for the whole process; called once at the head of main, before any other thread.

// Connections, frames and pipes of a busy hour need more files than the usual soft limit of 1024.
// Logs when the limit can't be raised.
void raiseFileLimit();

// glibc gives nearly every thread a heap of its own, and each keeps the most it ever held: reading
// a screen needs megabytes, on whichever handler's thread it runs. With few heaps they share them.
void shareHeaps();

}  // namespace tandrel
