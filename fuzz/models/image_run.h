// A run of calls that write an image, and a model of the file that they leave.

#ifndef VX_FUZZ_IMAGE_RUN_H
#define VX_FUZZ_IMAGE_RUN_H

#include "fuzz/models/image_model.h"

#include <string>
#include <utility>
#include <vector>

class ImageRun {
public:
    // In an empty file. If `brightest`, all elements are the largest value.
    ImageRun(const std::string &path, unsigned format, unsigned x, unsigned y, unsigned z,
             bool brightest)
        : file_(inHostOrder(format), x, y, z),
          image_(vxImageOpen(path.c_str(), "w", format & ~kBigEndian, 3U, x, y, z)),
          rows_(static_cast<int>(y)),
          planes_(static_cast<int>(z)),
          brightest_(brightest),
          pending_(x) {
        if ((format & kBigEndian) != 0) vxImageUseBigEndian(image_.get());
        takeReports();
    }

    // A few calls. below(n) chooses a number from 0 to n - 1.
    template <typename Below>
    void change(Below below) {
        const int action = below(16);
        if (action < 5) {
            put(madeRow(below), below(rows_ + 2) - 1, below(planes_ + 2) - 1);
        } else if (action < 12) {
            for (int steps = below(3 * width() + 1); width() != 0 && steps >= 0; --steps)
                drain(brightest_ ? 0x1FFFF : below(0x20000));
        } else if (action == 12) {
            seek(below(rows_ + 2) - 1, below(planes_ + 2) - 1);
        } else if (action == 13) {
            writePending();
            check(vxImageFlush(image_.get()) == 0, "flushing");
        } else if (action == 14) {
            read();
        } else {
            file_.name = std::string(static_cast<std::size_t>(below(90)), 'n');
            file_.colormap = static_cast<unsigned>(below(0x1000000));
            vxImageSetName(image_.get(), file_.name.c_str());
            vxImageSetColormap(image_.get(), file_.colormap);
        }
        check(image_->flags == flags_, "other flags");
        check(image_->y == y_ && image_->z == z_, "at another row");
        check(takeReports() == std::exchange(reports_, ""), "other reports");
    }

    // Closes the image in one of three ways. The result is the file that there is to be.
    std::string close(int way) {
        writePending();
        bool closed = true;
        if (way == 0) {
            closed = vxImageClose(image_.release()) == 0;
        } else if (way == 1) {
            closed = vxImageFinish(std::move(image_));
        } else {
            image_.reset();
        }
        check(closed && takeReports().empty(), "closing");
        return file_.bytes();
    }

    // The first thing that differed from the model; empty if nothing did.
    const std::string &difference() const { return difference_; }

private:
    using Row = std::vector<std::uint16_t>;

    void check(bool holds, const char *otherwise) {
        if (!holds && difference_.empty()) difference_ = otherwise;
    }

    int width() const { return static_cast<int>(pending_.size()); }
    std::size_t index() const { return static_cast<std::size_t>(z_ * rows_ + y_); }

    template <typename Below>
    Row madeRow(Below below) const {
        const int first = below(0x10000), length = 1 + below(40), step = below(0x200);
        Row row(pending_.size(), 0xFFFF);
        for (int x = 0; !brightest_ && x < width(); ++x)
            row[static_cast<std::size_t>(x)] =
                static_cast<std::uint16_t>(first + x / length % 3 * step);
        return row;
    }

    // Whether the image has the row. The stream continues there.
    bool moveTo(int y, int z) {
        if (y < 0 || y >= rows_ || z < 0 || z >= planes_) {
            reports_ += reportOf(20372);
            return false;
        }
        y_ = y;
        z_ = z;
        isFull_ = false;
        return true;
    }

    void put(const Row &row, int y, int z) {
        // What the dimension does not count is ignored.
        const bool exists = moveTo(rows_ * planes_ == 1 ? 0 : y, planes_ == 1 ? 0 : z);
        exists ? file_.put(row, index()) : file_.count(row);
        Row passed = row;
        check(vxImagePutRow(image_.get(), passed.data(), y, z) == (exists ? width() : -1),
              "putting a row");
        check(passed == row, "the caller's row has changed");
    }

    void seek(int y, int z) {
        const bool exists = moveTo(y, z);
        check(vxImageSeekRow(image_.get(), static_cast<unsigned>(y), static_cast<unsigned>(z)) ==
                  (exists ? file_.position(index()) : -1),
              "seeking");
        check(vxImageRowSize(image_.get()) == file_.storedBytes(index()), "the size of a row");
        if (!exists) {  // nothing is recorded then
            vxImageSetRowSize(image_.get(), 99, static_cast<unsigned>(y), static_cast<unsigned>(z));
        }
    }

    void writePending() {
        if (filled_ != 0) file_.put(pending_, index());
    }

    // The row after that of the stream is next.
    void advance() {
        if (++y_ == rows_) y_ = 0, ++z_;
        if (z_ < planes_) return;
        z_ = planes_ - 1;
        flags_ |= VX_IMAGE_EOF;
        isFull_ = true;
        filled_ = 0;
    }

    // A row that is given up before it is full is written, but counts as a failure.
    void drain(int value) {
        bool succeeds = true;
        if (left_-- == 0) {
            succeeds = filled_ == 0 || filled_ == pending_.size();
            if (!succeeds) flags_ |= VX_IMAGE_ERROR;
            writePending();
            if (filled_ != 0) advance();
            filled_ = 0;
            left_ = isFull_ ? 0 : width() - 1;
        }
        if (!isFull_) pending_[filled_++] = static_cast<std::uint16_t>(value);
        const int expected = succeeds && !isFull_ ? value : -1;
        check(step(value) == expected && image_->pixelsLeft == left_, "a step of the stream");
    }

    // The step as callers write it.
    int step(int value) const {
        if (--image_->pixelsLeft < 0) return vxImageDrainPixels(image_.get(), value);
        *image_->nextPixel++ = static_cast<std::uint16_t>(value);
        return value;
    }

    void read() {
        Row row(pending_.size() + 1, 7);
        check(vxImageGetRow(image_.get(), row.data(), 0, 0) == -1 && row == Row(row.size(), 7),
              "reads a row");
        check(vxImageFillPixels(image_.get()) == -1 && image_->pixelsLeft == 0, "reads the stream");
        check(!vxPictureRead(image_.get()), "reads the picture");
        left_ = 0;
    }

    FileModel file_;
    VxUniqueImage image_;
    int rows_, planes_;
    bool brightest_;
    int y_ = 0, z_ = 0;       // the row of the stream, ...
    Row pending_;             // ... what it holds, ...
    std::size_t filled_ = 0;  // ... how much of that was given, ...
    int left_ = 0;            // ... and the steps that only store
    bool isFull_ = false;     // the stream has written the last row
    unsigned flags_ = VX_IMAGE_WRITE;
    std::string reports_, difference_;
};

#endif
