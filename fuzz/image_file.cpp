// Image files of any bytes: each row reads as a simple reader reads it, or fails with the right
// message, whatever was read before and whatever the memory held. A complete picture is written
// again, in both storages. The input is the file.

#include "fuzz/fuzz.h"
#include "fuzz/memory_file.h"
#include "fuzz/models/image_model.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    static const MemoryFile input, output;
    collectReports();
    input.set(data, size);
    const ImageModel model(input.contents());
    const std::string found = differences(input.path, model);
    if (!found.empty()) std::fputs(found.c_str(), stderr);
    CHECK(found.empty());
    const auto picture = model.opening().empty() ? model.picture(1 << 14) : std::nullopt;
    for (const unsigned storage : {VX_IMAGE_VERBATIM, VX_IMAGE_RUN_LENGTH}) {
        if (!picture) break;
        output.set(data, 0);
        CHECK(vxPictureWrite(output.path.c_str(), *picture, storage));
        CHECK(output.contents() == FileModel(*picture, storage).bytes());
    }
    return 0;
}
