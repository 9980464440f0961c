#include "faults.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <iterator>
#include <new>

namespace faults {

void (*observer)(const char *name);

namespace {

struct Plan {
    bool armed = false;
    unsigned kinds = 0;
    int left = 0;
    bool onward = false;
    Effect effect = Effect::kFail;
    bool hasFailed = false;
};

Plan plan;
int counts[kAll + kNew + 1];  // by kind
int blocks;
char names[4096];  // of fixed size, since this must not allocate

}  // namespace

bool isToFail(Kind kind, const char *name) {
    if (observer != nullptr) observer(name);
    if (*name != '\0' && std::strlen(names) + std::strlen(name) + 2 < sizeof names) {
        std::strcat(std::strcat(names, name), " ");
    }
    ++counts[kind];
    if (!plan.armed || (plan.kinds & kind) == 0) return false;
    --plan.left;
    if (plan.onward ? plan.left > 0 : plan.left != 0) return false;
    plan.hasFailed = true;
    if (plan.effect == Effect::kKill) std::_Exit(kKilled);
    errno = kind == kMemory || kind == kNew ? ENOMEM : EIO;
    if (plan.effect == Effect::kInterrupt) errno = EINTR;
    return true;
}

bool isShort() {
    return plan.effect == Effect::kShort;
}

void arm(unsigned kinds, int n, bool onward, Effect effect) {
    resetCounts();
    plan = {true, kinds, n, onward, effect, false};
}

bool disarm() {
    plan.armed = false;
    return plan.hasFailed;
}

const char *trace() {
    return names;
}

int count(unsigned kinds) {
    int sum = 0;
    for (unsigned kind = 1; kind < std::size(counts); kind *= 2)
        sum += (kinds & kind) != 0 ? counts[kind] : 0;
    return sum;
}

void resetCounts() {
    names[0] = '\0';
    std::ranges::fill(counts, 0);
}

void failEach(unsigned kinds, const std::function<void(bool once)> &trial,
              const std::function<void()> &prepare, std::initializer_list<Effect> effects) {
    const auto failEachWith = [&](Effect effect, bool onward) {
        bool hasFailed = true;
        for (int n = 1; hasFailed && !testing::Test::HasFailure(); ++n) {
            SCOPED_TRACE(testing::Message() << "call " << n << (onward ? " onward" : ""));
            prepare();
            arm(kinds, n, onward, effect);
            trial(!onward);
            hasFailed = disarm();
            EXPECT_TRUE(hasFailed || n > 1) << "no call can fail";
        }
    };
    for (const Effect effect : effects) {
        // Without transfers nothing falls short, and a signal without end is waited for.
        if (effect == Effect::kShort && (kinds & (kRead | kWrite)) == 0) continue;
        failEachWith(effect, false);
        if (effect != Effect::kInterrupt) failEachWith(effect, true);
    }
}

SuspendFaults::SuspendFaults() : armed_(plan.armed) {
    plan.armed = false;
}
SuspendFaults::~SuspendFaults() {
    plan.armed = armed_;
}

int blocksOut() {
    return blocks;
}

}  // namespace faults

using faults::isToFail;

// The linker sends the calls of NAME to __wrap_NAME, and __real_NAME is the C library's. A block
// handed out counts, unless it replaces the block `old`.
#define VX_WRAP_MEMORY(type, name, old, parameters, arguments)                      \
    type __real_##name parameters;                                                  \
    type __wrap_##name parameters {                                                 \
        const bool isNew = (old) == nullptr;                                        \
        type given = isToFail(faults::kMemory) ? nullptr : __real_##name arguments; \
        faults::blocks += given != nullptr && isNew ? 1 : 0;                        \
        return given;                                                               \
    }

extern "C" {

VX_WRAP_MEMORY(void *, malloc, nullptr, (size_t size), (size))
VX_WRAP_MEMORY(void *, calloc, nullptr, (size_t count, size_t size), (count, size))
VX_WRAP_MEMORY(void *, realloc, block, (void *block, size_t size), (block, size))
void __real_free(void *block);
void __wrap_free(void *block) {
    faults::blocks -= block != nullptr ? 1 : 0;
    __real_free(block);
}

}  // extern "C"

// The standard library allocates inside its own shared object, which only a replacement reaches.
void *operator new(size_t size, const std::nothrow_t &) noexcept {
    return isToFail(faults::kMemory) ? nullptr : __real_malloc(size != 0 ? size : 1);
}
void *operator new(size_t size) {
    void *block = isToFail(faults::kNew) ? nullptr : __real_malloc(size != 0 ? size : 1);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}
void *operator new[](size_t size) {
    return operator new(size);
}
void *operator new[](size_t size, const std::nothrow_t &none) noexcept {
    return operator new(size, none);
}

#define VX_DELETE(parameters)                    \
    void operator delete parameters noexcept {   \
        __real_free(block);                      \
    }                                            \
    void operator delete[] parameters noexcept { \
        __real_free(block);                      \
    }

VX_DELETE((void *block))
VX_DELETE((void *block, size_t))
VX_DELETE((void *block, const std::nothrow_t &))
