// Random numbers and texts, the same in each run.

#ifndef VX_TESTS_RANDOM_TEXT_H
#define VX_TESTS_RANDOM_TEXT_H

#include <cstddef>
#include <iterator>
#include <random>
#include <string>

class Random {
public:
    explicit Random(unsigned seed = 23) : engine_(seed) {}

    // A number from 0 to n - 1.
    template <typename Number>
    Number operator()(Number n) {
        return static_cast<Number>(engine_() % static_cast<unsigned>(n));
    }

    // A text of so many pieces: bytes of a text, or texts of an array.
    template <typename Pieces>
    std::string text(const Pieces &pieces, std::size_t count) {
        std::string result;
        while (count-- != 0)
            result += pieces[(*this)(std::size(pieces))];
        return result;
    }

private:
    std::mt19937 engine_;
};

#endif
