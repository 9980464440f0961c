// Normalising and joining paths, against the definition. Input: texts, the second one joined to
// the first.

#include "fuzz/fuzz.h"
#include "fuzz/models/path_model.h"

#include <vxsearchpath.h>

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    const Texts input(data, size, 2);
    const Exactly path(input[0]);
    CHECK(vxPathIsAbsolute(path) == (isAbsolutePlainly(input[0]) ? 1 : 0));
    CHECK(vxPathNormalize(path) == path);
    const std::string once = static_cast<const char *>(path);
    CHECK(once == normalizedPlainly(input[0]));
    vxPathNormalize(path);
    CHECK(once == static_cast<const char *>(path));

    const Exactly dir(input[0]);
    const Exactly file(input[1]);
    char *joined = vxPathJoin(dir, file, nullptr);
    const bool alone = isAbsolutePlainly(input[1]);
    CHECK((joined != nullptr) == (alone || isAbsolutePlainly(input[0])));
    if (joined == nullptr) return 0;
    CHECK(joined == normalizedPlainly(alone ? input[1] : input[0] + "/" + input[1]));
    const Exactly out("", alone ? input[1].size() : input[0].size() + 1 + input[1].size());
    CHECK(vxPathJoin(dir, file, out) == out);
    CHECK(std::string(joined) == static_cast<const char *>(out));
    std::free(joined);
    return 0;
}
