// Typed classes derived by hand from all six containers, and the ready ones, against the installed
// library. Ends with 0 when all checks hold.

#include <vxstring.h>
#include <vxtyped.h>

#include <algorithm>
#include <cstdio>
#include <new>
#include <string>
#include <vector>

namespace {

int failures;

void check(bool holds, const char *what) {
    if (holds) return;
    std::printf("failed: %s\n", what);
    ++failures;
}

struct Light {
    VxString name;
    double power;
};

// Owns its lights.
class LightList : public VxArrayList {
public:
    LightList() = default;
    LightList(const LightList &) = default;
    LightList &operator=(const LightList &) = default;
    ~LightList() override { empty(); }
    void append(const Light &light) { VxArrayList::append(&light); }
    // Null if there was no memory for the element.
    const Light *get(int i) const { return static_cast<const Light *>(VxArrayList::get(i)); }

protected:
    void *copyElement(const void *light) override {
        if (light == nullptr) return nullptr;
        return new (std::nothrow) Light(*static_cast<const Light *>(light));
    }
    void destroyElement(void *light) override { delete static_cast<Light *>(light); }
};

// Lists of lights that others own.
struct LightRefs : VxPArrayList {
    using VxPArrayList::append;
    using VxPArrayList::get;
};

struct LightViews : VxCPArrayList {
    using VxCPArrayList::append;
    using VxCPArrayList::get;
};

// A set of names that owns its strings.
class NameTable : public VxHashTable {
public:
    explicit NameTable(int numBuckets) : VxHashTable(numBuckets) {}
    NameTable(const NameTable &) = default;
    NameTable &operator=(const NameTable &) = default;
    ~NameTable() override { empty(); }
    bool insert(const VxString &name) { return VxHashTable::insert(&name) != 0; }
    bool remove(const VxString &name) { return VxHashTable::remove(&name) != 0; }
    bool has(const VxString &name) const { return VxHashTable::has(&name) != nullptr; }
    void copyObjects(const NameTable &source) { VxHashTable::copyObjects(source); }

protected:
    unsigned int hashElement(const void *name) override { return string(name).hash(); }
    short equalElements(const void *one, const void *other) override {
        return string(one) == string(other);
    }
    void *copyElement(const void *name) override {
        return new (std::nothrow) VxString(string(name));
    }
    void destroyElement(void *name) override { delete static_cast<VxString *>(name); }

private:
    static const VxString &string(const void *name) { return *static_cast<const VxString *>(name); }
};

struct LightSet : VxPHashTable {
    using VxPHashTable::has;
    using VxPHashTable::insert;
};

struct LightViewSet : VxCPHashTable {
    LightViewSet() : VxCPHashTable(100) {}
    using VxCPHashTable::insert;
    using VxCPHashTable::remove;
};

void lists() {
    Light sun{"sun", 1000.0};
    Light lamp{"lamp", 60.0};
    LightList owned;
    owned.append(sun);
    owned.append(lamp);
    LightList copy(owned);
    owned.remove(0, 1);
    check(copy.length() == 2 && copy.get(0)->name == sun.name, "a copied list is complete");
    check(owned.length() == 1 && owned.get(0)->power == 60.0, "its source changes alone");
    copy = owned;
    check(copy.length() == 1, "assignment of lists");

    LightRefs refs;
    LightViews views;
    for (Light *light : {&sun, &lamp}) {
        refs.append(light);
        views.append(light);
    }
    refs.swap(0, 1);
    VxPArrayListIterator it(refs);
    check(it.postInc() == &lamp && it.getElem() == &sun, "a walk over pointers");
    it.getElem() = &lamp;
    check(refs.get(1) == &lamp, "a store through an iterator");
    VxCPArrayListConstIterator back(views);
    back.reset(1);
    check(back.postDec() == &lamp && back.postDec() == &sun && back.isValid() == 0, "a walk back");
    check(views.get(0) == &sun, "a pointer list holds what it was given");
}

void tables() {
    NameTable names(vxNumBuckets(3));
    for (const char *name : {"oak", "ash", "fir", "oak"})
        names.insert(name);
    check(names.getNumElements() == 3 && names.has("ash"), "a set of names");
    NameTable wide(1000);
    wide.copyObjects(names);
    check(wide.getNumElements() == 3 && wide.remove("fir") && names.has("fir"), "copied objects");

    Light sun{"sun", 1000.0};
    LightSet set;
    LightViewSet views;
    check(set.getNumBuckets() == 83 && set.insert(&sun) && !set.insert(&sun), "a set of pointers");
    check(set.has(&sun) && views.insert(&sun) && views.remove(&sun), "sets of pointers");
    VxPHashTableConstIterator it(set);
    check(it.postInc() == &sun && it.isValid() == 0, "a walk over a set");
}

void readyTypes() {
    VxOwningList<std::string> words;
    for (const char *word : {"b", "c", "a"})
        check(words.append(word), "an owned word");
    std::sort(words.begin(), words.end());
    VxOwningTable<std::string> table;
    VxPointerList<std::string> refs;
    VxPointerTable<const std::string> set;
    for (std::string &word : words)
        check(table.insert(word) && refs.append(&word) && set.insert(&word), "ready types");
    check(*refs[0] == "a" && set.has(&words[2]) && table.has("b") != nullptr, "what they hold");
    check(std::vector<std::string>(words.begin(), words.end()).back() == "c", "sorted");
    check(std::distance(table.begin(), table.end()) == 3, "a walk over a table");
}

void strings() {
    VxString text("pow");
    const VxString shared(text);
    text += "er";
    text.toUpper();
    check(text == VxString("POWER") && shared == VxString("pow"), "strings share until written to");
    check(text.findC("wer", 0) == 2 && VxString(1.5).getDouble(0) == 1.5, "searches and numbers");
    check(vxStringView(vxStringFrom(std::string_view("a\0b", 3))).size() == 3, "views");
}

}  // namespace

int main() {
    lists();
    tables();
    readyTypes();
    strings();
    if (failures == 0) std::printf("all checks hold\n");
    return failures == 0 ? 0 : 1;
}
