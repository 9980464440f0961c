// The same ints in every kind of container: as copies, and as pointers to cells of that number.

#ifndef VX_FUZZ_MODELS_CONTAINER_VALUES_H
#define VX_FUZZ_MODELS_CONTAINER_VALUES_H

#include <string>
#include <type_traits>
#include <vector>

alignas(16) inline int cells[1000];

inline int value(int v) {
    return v;
}
inline int value(const int *cell) {
    return static_cast<int>(cell - cells);
}

// The element for a number, as this container takes it.
template <typename Container>
auto element(int v) {
    using Element = std::decay_t<decltype(*std::declval<Container &>().begin())>;
    if constexpr (std::is_pointer_v<Element>) {
        return &cells[v];
    } else {
        return v;
    }
}

inline std::vector<int> values(const auto &container) {
    std::vector<int> all;
    for (const auto &each : container)
        all.push_back(value(each));
    return all;
}

// What the hooks of containers under test record.
inline std::string hookLog;

std::string logOf(auto &&action) {
    hookLog.clear();
    action();
    return hookLog;
}

// Owns ints. Each hook logs one word: its owner, what it did, and on which number.
template <typename Base>
class Logging : public Base {
public:
    static constexpr int kRefused = 666;

    template <typename... Arguments>
    explicit Logging(char name, Arguments... arguments) : Base(arguments...), name_(name) {}
    Logging(const Logging &source) : Base(source), name_('b') {}
    Logging &operator=(const Logging &source) {
        Base::operator=(source);
        return *this;
    }
    ~Logging() override { this->empty(); }

protected:
    int log(char what, const void *which) {
        const int v = *static_cast<const int *>(which);
        hookLog += std::string({name_, what}) + std::to_string(v) + ' ';
        return v;
    }
    void *copyElement(const void *given) override {
        const int v = log('+', given);
        return v == kRefused ? nullptr : new int(v);
    }
    void destroyElement(void *stored) override {
        log('-', stored);
        delete static_cast<int *>(stored);
    }

private:
    char name_;
};

#endif
