// The numbers of a photometric web, from an IES file (LM-63).
#ifndef EXAMPLES_IES_FILE_H
#define EXAMPLES_IES_FILE_H

#include <cstddef>
#include <optional>
#include <vector>

struct IesData {
    std::vector<float> vertical;    // angles in degrees, ascending; 0 is straight down, 180 up
    std::vector<float> horizontal;  // angles of the planes around the vertical, ascending
    std::vector<float> candela;     // one value per vertical angle, plane after plane

    float at(std::size_t plane, std::size_t angle) const {
        return candela[plane * vertical.size() + angle];
    }
};

// Reads files without a table for tilted lamps and of type C (angles from straight down, around the
// lamp), as nearly all are. Empty for any other file and for a file that cannot be opened.
std::optional<IesData> readIesFile(const char *path);

#endif
