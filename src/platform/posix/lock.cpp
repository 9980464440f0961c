#include "platform/lock.h"

#include <mutex>
#include <optional>
#include <type_traits>

namespace vx {

namespace {

std::optional<std::mutex> processLock;
static_assert(std::is_trivially_destructible_v<decltype(processLock)>, "it is never destroyed");

}  // namespace

void createLock() {
    if (!processLock.has_value()) processLock.emplace();
}

LockGuard::LockGuard() {
    processLock->lock();
}

LockGuard::~LockGuard() {
    processLock->unlock();
}

}  // namespace vx
