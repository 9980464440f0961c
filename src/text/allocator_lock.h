// The library's only lock. It guards the free list behind the map of open streams.

#ifndef VX_TEXT_ALLOCATOR_LOCK_H
#define VX_TEXT_ALLOCATOR_LOCK_H

// Makes the lock, once a process; it is never destroyed, so that a stream closed late in the
// life of the process still finds it.
void allocatorLockCreate();

// Holds the lock while it lives.
class AllocatorLockHolder {
public:
    AllocatorLockHolder();
    ~AllocatorLockHolder();
    AllocatorLockHolder(const AllocatorLockHolder &) = delete;
    AllocatorLockHolder &operator=(const AllocatorLockHolder &) = delete;
};

#endif
