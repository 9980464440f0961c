// Classes derived from all six containers against the installed library: three by hand, the
// others of vxtyped.h. Ends with 0 if all checks hold.

#include <vxstring.h>
#include <vxtyped.h>

namespace {

const VxString &text(const void *stored) {
    return *static_cast<const VxString *>(stored);
}

// Owns its strings.
template <typename Base>
class Owner : public Base {
protected:
    using Base::Base;
    ~Owner() override { this->empty(); }
    void *copyElement(const void *given) override { return new VxString(text(given)); }
    void destroyElement(void *stored) override { delete static_cast<VxString *>(stored); }
};

struct Names : Owner<VxArrayList> {
    using VxArrayList::append;
};

struct NameSet : Owner<VxHashTable> {
    explicit NameSet(int numBuckets) : Owner(numBuckets) {}
    using VxHashTable::insert;
    unsigned int hashElement(const void *given) override { return text(given).hash(); }
    short equalElements(const void *given, const void *stored) override {
        return text(given) == text(stored);
    }
};

struct RefSet : VxPHashTable {
    using VxPHashTable::insert;
    using VxPHashTable::remove;
};

}  // namespace

int main() {
    VxString words[] = {"oak", "ash"};
    Names names;
    NameSet nameSet(7);
    VxPointerList<VxString> refs;
    VxPointerList<const VxString> views;
    RefSet refSet;
    VxPointerTable<const VxString> viewSet;
    for (VxString &word : words) {
        names.append(&word);
        if (nameSet.insert(&word) != 1 || nameSet.insert(&word) != 0) return 1;
        if (!refs.append(&word) || !views.append(&word)) return 2;
        if (refSet.insert(&word) != 1 || !viewSet.insert(&word) || viewSet.insert(&word)) return 3;
    }
    const Names copy(names);
    names.remove(0, 2);
    names = copy;
    VxArrayListIterator name(names);
    if (text(name.postInc()) != words[0] || text(name.getElem()) != words[1]) return 4;
    VxHashTableConstIterator inSet(nameSet);
    const VxString &first = text(inSet.postInc());
    if (first == text(inSet.getElem())) return 5;
    VxCPArrayListConstIterator view(views);
    view.reset(1);
    if (view.postDec() != &words[1] || view.getElem() != refs[0]) return 6;
    for (VxString &word : words) {
        if (refSet.remove(&word) != 1 || refSet.remove(&word) != 0) return 7;
    }
    for (VxCPHashTableConstIterator it(viewSet); it.isValid() != 0;) {
        if (!viewSet.remove(static_cast<const VxString *>(it.postInc()))) return 8;
    }
    return viewSet.getNumElements();
}
