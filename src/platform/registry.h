// The registry: named values under keys, for the user and for the machine.
//
// A Registry is a root as it was when the object was made, and all its keys are of that moment.
// Changes of a key reach the system when it is saved, all at once or not at all. Other processes
// may save meanwhile: a save that finds this out changes nothing and reads the root again, so that
// the caller can apply the change to what is there now. No other process saves from then on as long
// as the Registry lives.
//
// Where the system has a registry of its own, a save replaces the values of a key one by one and
// takes no lock: of two processes, the one that saves last decides.
//
// Members throw std::bad_alloc when memory runs out, and nothing else; the system then has the
// values from before.

#ifndef VX_PLATFORM_REGISTRY_H
#define VX_PLATFORM_REGISTRY_H

#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace vx {

enum class RegistryRoot { kUser, kMachine };

// The types of values with a meaning here. Other numbers are kept as they are.
enum RegistryType : unsigned { kRegistryText = 1, kRegistryBinary = 3, kRegistryNumber = 4 };

struct RegistryValue {
    std::string name;
    unsigned type = 0;
    std::string data;  // a text with its terminator
};

// Names of keys and values are the same if their folded forms are: ASCII case does not count.
std::string foldedName(std::string_view name);

enum class SaveResult {
    kSaved,     // or there was nothing to change
    kOutdated,  // the root has changed meanwhile and was read again
    kFailed
};

class Registry;

class RegistryKey {
public:
    // The values of the key in their order, none if there is no such key.
    RegistryKey(Registry &registry, std::string path);

    std::span<const RegistryValue> values() const { return values_; }

    // Stores a value, in place of the first one of that name or after the last one.
    void set(RegistryValue value);

    // Removes the first `count` values. REQUIRES: count <= values().size().
    void removeFirst(std::size_t count);

    // Makes the system's values those of the key, and the key itself if it is missing. A value that
    // was removed and set again with the same data is not a change. The result is kFailed without
    // the right to write, on an I/O failure, for names that the system cannot keep, and when
    // another process holds the lock for five seconds.
    SaveResult save();

private:
    Registry &registry_;
    std::string path_;
    std::vector<RegistryValue> values_;
    std::unordered_map<std::string, std::size_t> places_;  // by folded name; made when needed
};

class Registry {
public:
    explicit Registry(RegistryRoot root);
    ~Registry();
    Registry(const Registry &) = delete;
    Registry &operator=(const Registry &) = delete;

    // False if something is there that could not be read. It may be good, so it must not be
    // replaced.
    bool isReadable() const;

private:
    friend class RegistryKey;
    class Store;  // of the system
    std::unique_ptr<Store> store_;
};

}  // namespace vx

#endif
