// A set of byte positions in a subject: one bit for each, in a fixed number of words.

#ifndef VX_PATTERN_POSITION_SET_H
#define VX_PATTERN_POSITION_SET_H

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace vx {

template <std::size_t kWords>
class PositionSet {
public:
    // The positions 0 to `last`.
    static PositionSet upTo(std::size_t last) {
        PositionSet set;
        const std::size_t fullWords = (last + 1) / 64;
        for (std::size_t i = 0; i < fullWords; ++i)
            set.words_[i] = ~std::uint64_t{0};
        if (fullWords < kWords) set.words_[fullWords] = bit(last + 1) - 1;
        return set;
    }

    std::uint64_t &word(std::size_t i) { return words_[i]; }

    void insert(std::size_t position) { words_[position / 64] |= bit(position); }
    bool contains(std::size_t position) const {
        return (words_[position / 64] & bit(position)) != 0;
    }

    // The positions for which `keeps` is true. It is called in ascending order.
    template <typename Predicate>
    PositionSet filtered(Predicate keeps) const {
        PositionSet kept;
        for (std::size_t i = 0; i < kWords; ++i) {
            for (std::uint64_t rest = words_[i]; rest != 0; rest &= rest - 1) {
                const std::size_t position =
                    i * 64 + static_cast<std::size_t>(std::countr_zero(rest));
                if (keeps(position)) kept.words_[i] |= bit(position);
            }
        }
        return kept;
    }

    bool isEmpty() const {
        std::uint64_t any = 0;
        for (const std::uint64_t word : words_)
            any |= word;
        return any == 0;
    }

    // Whether there is exactly one position, and which.
    bool isSingleton(std::size_t &position) const {
        std::size_t found = 0;
        for (std::size_t i = 0; i < kWords; ++i) {
            if (words_[i] == 0) continue;
            if (++found > 1 || !std::has_single_bit(words_[i])) return false;
            position = i * 64 + static_cast<std::size_t>(std::countr_zero(words_[i]));
        }
        return found == 1;
    }

    PositionSet operator&(const PositionSet &other) const {
        return combined(other, [](std::uint64_t a, std::uint64_t b) { return a & b; });
    }
    PositionSet operator|(const PositionSet &other) const {
        return combined(other, [](std::uint64_t a, std::uint64_t b) { return a | b; });
    }
    PositionSet without(const PositionSet &other) const {
        return combined(other, [](std::uint64_t a, std::uint64_t b) { return a & ~b; });
    }

    // Each position plus 1 to 63 bytes.
    PositionSet shiftedBy(unsigned bytes) const {
        PositionSet shifted;
        std::uint64_t carry = 0;
        for (std::size_t i = 0; i < kWords; ++i) {
            shifted.words_[i] = words_[i] << bytes | carry;
            carry = words_[i] >> (64 - bytes);
        }
        return shifted;
    }

    // These positions and all that are reached from them by steps of one byte, each from a member
    // of `steps`. The carries of a sum run through each unbroken run of steps. Where the sum
    // differs from the steps, a run was entered or left.
    PositionSet closure(const PositionSet &steps) const {
        PositionSet closed;
        std::uint64_t carry = 0;
        for (std::size_t i = 0; i < kWords; ++i) {
            const std::uint64_t entered = words_[i] & steps.words_[i];
            const std::uint64_t sum = entered + steps.words_[i];
            const std::uint64_t total = sum + carry;
            carry = static_cast<std::uint64_t>(sum < entered) |
                    static_cast<std::uint64_t>(total < carry);
            closed.words_[i] = (total ^ steps.words_[i]) | words_[i];
        }
        return closed;
    }

private:
    static std::uint64_t bit(std::size_t position) { return std::uint64_t{1} << position % 64; }

    template <typename Operation>
    PositionSet combined(const PositionSet &other, Operation operation) const {
        PositionSet result;
        for (std::size_t i = 0; i < kWords; ++i)
            result.words_[i] = operation(words_[i], other.words_[i]);
        return result;
    }

    std::array<std::uint64_t, kWords> words_{};
};

}  // namespace vx

#endif
