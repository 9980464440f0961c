#include "picture_filters.h"

#include "report.h"

#include <algorithm>
#include <utility>

namespace tool {

namespace {

class DepthFilter : public PictureSource {
public:
    DepthFilter(std::unique_ptr<PictureSource> source, unsigned elementBytes)
        : source_(std::move(source)), elementBytes_(elementBytes) {}

    PictureForm form() const override {
        PictureForm form = source_->form();
        form.elementBytes = elementBytes_;
        return form;
    }

    void readLine(std::uint16_t *line) override {
        source_->readLine(line);
        const std::size_t count = source_->form().lineElements();
        const unsigned bytes = source_->form().elementBytes;
        if (bytes < elementBytes_) {
            for (std::size_t i = 0; i < count; ++i)
                line[i] = static_cast<std::uint16_t>(line[i] * 257U);
        } else if (bytes > elementBytes_) {
            for (std::size_t i = 0; i < count; ++i)
                line[i] = static_cast<std::uint16_t>((line[i] + 128U) / 257U);
        }
    }

    void finish() override { source_->finish(); }

private:
    std::unique_ptr<PictureSource> source_;
    unsigned elementBytes_;
};

class PlaneFilter : public PictureSource {
public:
    PlaneFilter(std::unique_ptr<PictureSource> source, std::vector<unsigned> planes)
        : source_(std::move(source)),
          planes_(std::move(planes)),
          line_(source_->form().lineElements()) {}

    PictureForm form() const override {
        PictureForm form = source_->form();
        form.planes = static_cast<unsigned>(planes_.size());
        return form;
    }

    void readLine(std::uint16_t *line) override {
        source_->readLine(line_.data());
        const std::size_t width = source_->form().width;
        for (const unsigned plane : planes_)
            line = std::copy_n(line_.data() + plane * width, width, line);
    }

    void finish() override { source_->finish(); }

private:
    std::unique_ptr<PictureSource> source_;
    std::vector<unsigned> planes_;
    std::vector<std::uint16_t> line_;
};

}  // namespace

std::unique_ptr<PictureSource> withDepth(std::unique_ptr<PictureSource> source,
                                         unsigned elementBytes) {
    return std::make_unique<DepthFilter>(std::move(source), elementBytes);
}

std::unique_ptr<PictureSource> withPlanes(const std::string &path,
                                          std::unique_ptr<PictureSource> source,
                                          const std::vector<unsigned> &planes) {
    const unsigned count = source->form().planes;
    for (const unsigned plane : planes) {
        if (plane < count) continue;
        throw Error(path, "has no plane " + std::to_string(plane) + ", only 0 to " +
                              std::to_string(count - 1));
    }
    return std::make_unique<PlaneFilter>(std::move(source), planes);
}

}  // namespace tool
