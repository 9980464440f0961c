// Locks between the threads of a process, over the C library's mutexes.

#ifndef VX_PLATFORM_CRITICAL_SECTION_H
#define VX_PLATFORM_CRITICAL_SECTION_H

#include <pthread.h>

namespace vx {

using CriticalSection = pthread_mutex_t;

inline void InitializeCriticalSection(CriticalSection *section) {
    pthread_mutex_init(section, nullptr);
}

inline void EnterCriticalSection(CriticalSection *section) {
    pthread_mutex_lock(section);
}

inline void LeaveCriticalSection(CriticalSection *section) {
    pthread_mutex_unlock(section);
}

}  // namespace vx

#endif
