#include "text/allocator_lock.h"

#include "platform/critical_section.h"

namespace {

vx::CriticalSection allocatorLock;
bool allocatorLockExists;

}  // namespace

void allocatorLockCreate() {
    if (allocatorLockExists) return;
    vx::InitializeCriticalSection(&allocatorLock);
    allocatorLockExists = true;
}

AllocatorLockHolder::AllocatorLockHolder() {
    vx::EnterCriticalSection(&allocatorLock);
}

AllocatorLockHolder::~AllocatorLockHolder() {
    vx::LeaveCriticalSection(&allocatorLock);
}
