#include "FastDrawing.h"

#include <algorithm>

#include "core/Yield.h"

namespace lxm {

void FastDrawing::Pixels3D::Resize(int width, int height) {
    width_ = std::max(width, 0);
    rows_ = std::max(height, 0) + 1;
    bytes_.assign(std::size_t(width_) * rows_ * 3, 0);
}

void FastDrawing::Describe(const PictureBox& picture) {
    bitmapWidth_ = picture.image().width();
    bitmapHeight_ = picture.image().height();
}

int FastDrawing::GetMaxX(const PictureBox& picture) {
    Describe(picture);
    return bitmapWidth_ - 1;
}

int FastDrawing::GetHeight(const PictureBox& picture) {
    Describe(picture);
    return bitmapHeight_;
}

int FastDrawing::GetByteCount(const PictureBox& picture) {
    Describe(picture);
    return bitmapHeight_ * bitmapWidth_ * 3;
}

void FastDrawing::Read(const PictureBox& picture, std::uint8_t* out) {
    const QImage& image = picture.image();
    blockWidth_ = bitmapWidth_;
    blockHeight_ = bitmapHeight_;
    for (int y = 0; y < bitmapHeight_; ++y) {
        const QRgb* line = reinterpret_cast<const QRgb*>(image.constScanLine(bitmapHeight_ - 1 - y));
        std::uint8_t* row = out + std::size_t(y) * bitmapWidth_ * 3;
        for (int x = 0; x < bitmapWidth_; ++x) {
            row[3 * x] = std::uint8_t(qBlue(line[x]));
            row[3 * x + 1] = std::uint8_t(qGreen(line[x]));
            row[3 * x + 2] = std::uint8_t(qRed(line[x]));
        }
    }
}

void FastDrawing::Write(PictureBox& picture, const std::uint8_t* in, std::size_t size) {
    QImage& image = picture.image();
    const int width = std::min(blockWidth_, bitmapWidth_);
    const std::size_t rowBytes = std::size_t(blockWidth_) * 3;
    int height = std::min(blockHeight_, bitmapHeight_);
    if (rowBytes == 0)
        height = 0;
    else
        height = std::min<std::size_t>(height, size / rowBytes);
    // Bottom-up rows of the block land on the picture's bottom rows.
    for (int y = 0; y < height; ++y) {
        QRgb* line = reinterpret_cast<QRgb*>(image.scanLine(bitmapHeight_ - 1 - y));
        const std::uint8_t* row = in + std::size_t(y) * rowBytes;
        for (int x = 0; x < width; ++x) line[x] = qRgb(row[3 * x + 2], row[3 * x + 1], row[3 * x]);
    }
    picture.MarkDirty(image.rect());
    picture.Refresh();
    DoEvents();
}

void FastDrawing::ReadPixels3D(const PictureBox& picture, Pixels3D& pixels) {
    Describe(picture);
    pixels.Resize(bitmapWidth_, bitmapHeight_);
    Read(picture, pixels.data());
}

void FastDrawing::WritePixels3D(PictureBox& picture, const Pixels3D& pixels) {
    Describe(picture);
    blockWidth_ = pixels.width();
    blockHeight_ = pixels.rows() - 1;
    Write(picture, pixels.bytes().data(), pixels.bytes().size());
}

void FastDrawing::ReadPixels1D(const PictureBox& picture, std::vector<std::uint8_t>& bytes) {
    bytes.assign(std::size_t(GetByteCount(picture)), 0);
    Read(picture, bytes.data());
}

void FastDrawing::WritePixels1D(PictureBox& picture, const std::vector<std::uint8_t>& bytes) {
    Describe(picture);
    Write(picture, bytes.data(), bytes.size());
}

}  // namespace lxm
