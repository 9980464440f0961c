#include "platform/lock.h"

#include <windows.h>

namespace vx {

namespace {

CRITICAL_SECTION processLock;
bool exists;

}  // namespace

void createLock() {
    if (!exists) ::InitializeCriticalSection(&processLock);
    exists = true;
}

LockGuard::LockGuard() {
    ::EnterCriticalSection(&processLock);
}

LockGuard::~LockGuard() {
    ::LeaveCriticalSection(&processLock);
}

}  // namespace vx
