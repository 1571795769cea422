#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "acquisition/PictureBox.h"

namespace lxm {

// Block transfer of a picture's pixels to and from a byte array, for drawing many pixels at
// once and showing them with a single blit. Arrays hold 24-bit pixels as blue, green, red
// bytes with rows bottom-up (row 0 is the picture's bottom row) and no row padding.
class FastDrawing {
public:
    // Pixels indexed (channel, column, row): channel 0 blue, 1 green, 2 red. There is one
    // row more than the picture has (0..height); reads leave it zero, and drawing that runs
    // to row "height" inclusive lands there harmlessly.
    class Pixels3D {
    public:
        void Resize(int width, int height);
        int width() const { return width_; }
        int rows() const { return rows_; }
        std::uint8_t& operator()(int channel, int x, int y) { return bytes_[Index(channel, x, y)]; }
        std::uint8_t operator()(int channel, int x, int y) const { return bytes_[Index(channel, x, y)]; }
        const std::vector<std::uint8_t>& bytes() const { return bytes_; }
        std::uint8_t* data() { return bytes_.data(); }

    private:
        std::size_t Index(int channel, int x, int y) const {
            return (std::size_t(y) * width_ + x) * 3 + channel;
        }
        int width_ = 0;
        int rows_ = 0;
        std::vector<std::uint8_t> bytes_;
    };

    // Bitmap width - 1.
    int GetMaxX(const PictureBox& picture);
    int GetHeight(const PictureBox& picture);
    // height x width x 3.
    int GetByteCount(const PictureBox& picture);

    // The whole picture into the array, which is re-dimensioned to fit; also sets the size
    // that the next write blits.
    void ReadPixels3D(const PictureBox& picture, Pixels3D& pixels);
    // The array onto the picture in one go (clipped to both), then one repaint and one yield
    // to the user interface so that progressive drawing shows.
    void WritePixels3D(PictureBox& picture, const Pixels3D& pixels);
    // The same with a flat array of GetByteCount bytes; it carries no size of its own, so the
    // block is as large as the last read.
    void ReadPixels1D(const PictureBox& picture, std::vector<std::uint8_t>& bytes);
    void WritePixels1D(PictureBox& picture, const std::vector<std::uint8_t>& bytes);

private:
    void Describe(const PictureBox& picture);
    void Read(const PictureBox& picture, std::uint8_t* out);
    void Write(PictureBox& picture, const std::uint8_t* in, std::size_t size);

    // Description of the picture's current image, refreshed by every call.
    int bitmapWidth_ = 0;
    int bitmapHeight_ = 0;
    // Size of the block the last read took; writes blit this much.
    int blockWidth_ = 0;
    int blockHeight_ = 0;
};

}  // namespace lxm
