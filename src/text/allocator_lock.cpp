#include "text/allocator_lock.h"

#include "platform/critical_section.h"

namespace {

platform::CriticalSection allocatorLock;
bool allocatorLockExists;

}  // namespace

void allocatorLockCreate() {
    if (allocatorLockExists) return;
    platform::InitializeCriticalSection(&allocatorLock);
    allocatorLockExists = true;
}

AllocatorLockHolder::AllocatorLockHolder() {
    platform::EnterCriticalSection(&allocatorLock);
}

AllocatorLockHolder::~AllocatorLockHolder() {
    platform::LeaveCriticalSection(&allocatorLock);
}
