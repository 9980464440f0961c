// The only lock of the library. It is never destroyed, so it serves until the process is gone.

#ifndef VX_PLATFORM_LOCK_H
#define VX_PLATFORM_LOCK_H

namespace vx {

// Once per process; further calls do nothing.
void createLock();

// Holds the lock as long as the object exists. REQUIRES: the lock exists.
class LockGuard {
public:
    LockGuard();
    ~LockGuard();
    LockGuard(const LockGuard &) = delete;
    LockGuard &operator=(const LockGuard &) = delete;
};

}  // namespace vx

#endif
