// A run of operations on a pool, and a model that knows only what the calls return.

#ifndef VX_FUZZ_MODELS_POOL_MODEL_H
#define VX_FUZZ_MODELS_POOL_MODEL_H

#include "pool/poison.h"

#include <vxpool.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

// Each element in use is filled with a byte of its own.
class PoolModel {
public:
    explicit PoolModel(int elementSize) : size_(elementSize) {
        vxPoolInit(&pool, size_, perBlock_);
    }
    ~PoolModel() { vxPoolDestroy(&pool); }
    PoolModel(const PoolModel &) = delete;
    PoolModel &operator=(const PoolModel &) = delete;

    // One operation. below(n) chooses a number from 0 to n - 1.
    template <typename Below>
    void change(Below below) {
        const int action = below(80);
        if (action < 44) {
            alloc();
        } else if (action < 69) {
            freeOne(below);
        } else if (action < 74) {
            allocRun(below(9) - 1);
        } else if (action < 78) {
            perBlock_ = below(12) - 1;
            vxPoolSetBlockCount(&pool, perBlock_);
        } else if (below(5) != 0) {
            recycle();
        } else {
            destroy();
        }
        check(vxPoolSize(&pool) == bytes_, "another size");
    }

    // Whether the next element comes from new memory.
    bool needsMemory() const {
        return freed_.empty() && !hasRoom() && perBlock_ > 0 && retired_.empty();
    }

    // The first thing that differed from the model; empty if nothing did.
    const std::string &difference() const { return difference_; }

    int blocksMade() const { return blocksMade_; }

    VxPool pool;

private:
    using Element = std::pair<char *, char>;  // and the byte that fills it
    using Block = std::pair<char *, int>;     // its first element, and how many it was made for

    void check(bool holds, const char *otherwise) {
        if (!holds && difference_.empty()) difference_ = otherwise;
    }

    // Whether an element can be cut from the current block.
    bool hasRoom() const { return used_ < std::min(current_.second, perBlock_); }

    void alloc() {
        const bool isNew = needsMemory();
        auto *element = static_cast<char *>(vxPoolAlloc(&pool));
        if (!freed_.empty()) {
            check(element == freed_.back(), "not the element freed last");
            freed_.pop_back();
        } else if (hasRoom()) {
            check(element == current_.first + size_ * used_++, "not the next of the block");
        } else if (perBlock_ > 0) {
            current_ = isNew ? addBlock(element, perBlock_) : takeRetired(element);
            used_ = 1;
        } else {
            check(element == nullptr, "an element of no block");
            return;
        }
        take(element);
    }

    void allocRun(int count) {
        auto *run = static_cast<char *>(vxPoolAllocBlock(&pool, count));
        check((run != nullptr) == (count > 0), "a run of another length");
        if (count > 0) addBlock(run, count);
        hadRuns_ = hadRuns_ || count > 0;
        for (int i = 0; i < count; ++i)
            take(run + size_ * i);
    }

    Block addBlock(char *first, int count) {
        bytes_ += count * size_ + static_cast<int>(sizeof(VxPoolBlock));
        ++blocksMade_;
        return blocks_.emplace_back(first, count);
    }

    // Blocks come back in the order of their making, unless runs were made between them.
    Block takeRetired(char *first) {
        const auto place = std::ranges::find(retired_, first, &Block::first);
        check(place != retired_.end(), "not the start of a retired block");
        check(place == retired_.begin() || hadRuns_, "not the oldest block");
        if (place == retired_.end()) return {};
        const Block block = *place;
        retired_.erase(place);
        return block;
    }

    void take(char *element) {
        live_.emplace_back(element, static_cast<char>(++fills_));
        std::memset(element, live_.back().second, static_cast<std::size_t>(size_));
    }

    template <typename Below>
    void freeOne(Below below) {
        vxPoolFree(&pool, nullptr);
        if (live_.empty() || size_ < static_cast<int>(sizeof(void *))) return;
        std::swap(live_[static_cast<std::size_t>(below(static_cast<int>(live_.size())))],
                  live_.back());
        checkFill(live_.back());
        freed_.push_back(live_.back().first);
        live_.pop_back();
        vxPoolFree(&pool, freed_.back());
        checkGuard(freed_.back());
    }

    void recycle() {
        discardElements();
        vxPoolRecycle(&pool);
        retired_ = blocks_;
        for (const auto &[first, count] : blocks_)
            checkGuard(first + size_ * (count - 1));
    }

    // One owner discards the blocks, and another one frees them.
    void destroy() {
        discardElements();
        VxPool other = pool;
        vxPoolReset(&pool);
        vxPoolDestroy(&pool);
        vxPoolDestroy(&other);
        vxPoolDestroy(&other);
        bytes_ = sizeof(VxPool);
        check(vxPoolSize(&other) == bytes_, "destroyed, and not empty");
        blocks_.clear();
        retired_.clear();
        hadRuns_ = false;
    }

    void discardElements() {
        for (const Element &element : live_)
            checkFill(element);
        live_.clear();
        freed_.clear();
        current_ = {};
    }

    void checkFill(const Element &element) {
        check(std::count(element.first, element.first + size_, element.second) == size_,
              "an element was overwritten");
    }

    // AddressSanitizer guards elements that are not in use. A guard covers eight bytes.
    void checkGuard([[maybe_unused]] const char *element) {
#ifdef VX_POISON
        check(size_ % 8 != 0 || (__asan_address_is_poisoned(element) != 0 &&
                                 __asan_address_is_poisoned(element + size_ - 1) != 0),
              "an element that is not guarded");
#endif
    }

    int size_;
    int perBlock_ = 5;
    int bytes_ = sizeof(VxPool);
    std::vector<Block> blocks_;  // all, in the order of their making
    std::vector<Block> retired_;
    bool hadRuns_ = false;
    int blocksMade_ = 0;
    Block current_;
    int used_ = 0;
    std::vector<Element> live_;
    std::vector<char *> freed_;
    unsigned fills_ = 0;
    std::string difference_;
};

#endif
