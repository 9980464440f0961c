// What a conversion is asked for.
#ifndef TOOLS_CONVERT_H
#define TOOLS_CONVERT_H

#include "batch.h"

#include <optional>
#include <string>
#include <vector>

namespace tool {

enum class Storage { kSmaller, kRunLength, kVerbatim };

struct ConvertOptions {
    BatchOptions batch;
    std::string folder;   // for the outputs; if empty, the two names are those of input and output
    std::string format;   // in the folder: "png", "sgi", or empty for the one that an input has not
    bool always = false;  // even where the output is up to date
    unsigned depth = 0;   // bits of an element; 0: as they are
    bool flipped = false;
    std::vector<unsigned> planes;  // if empty, all of them
    // The rest is for image files only.
    Storage storage = Storage::kSmaller;
    bool hostOrder = false;
    std::optional<std::string> name;
};

}  // namespace tool

#endif
