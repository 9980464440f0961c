// The sum of all elements of a picture, read with OpenImageIO: picture_openimageio FILE

#include <OpenImageIO/imageio.h>
#include <cstdint>
#include <cstdio>
#include <vector>

int main(int count, char **arguments) {
    const auto input = count == 2 ? OIIO::ImageInput::open(arguments[1]) : nullptr;
    if (input == nullptr) return 1;
    const OIIO::ImageSpec &spec = input->spec();
    std::vector<std::uint8_t> pixels(spec.image_bytes());
    if (!input->read_image(0, 0, 0, spec.nchannels, OIIO::TypeDesc::UINT8, pixels.data())) return 1;
    std::uint64_t sum = 0;
    const auto rowBytes = static_cast<std::size_t>(spec.width) * 3;
    for (std::size_t at = 0; at < pixels.size(); at += rowBytes) {
        std::uint32_t rowSum = 0;
        for (std::size_t i = at; i < at + rowBytes; ++i)
            rowSum += pixels[i];
        sum += rowSum;
    }
    std::printf("%llu\n", static_cast<unsigned long long>(sum));
    return 0;
}
