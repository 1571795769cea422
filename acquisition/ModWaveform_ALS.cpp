#include "ModWaveform_ALS.h"

#include <algorithm>
#include <climits>
#include <cstring>

#include "core/VbText.h"

namespace lxm::ModWaveform_ALS {

namespace {

// Direct pixel access for the trace step, which writes a few thousand single pixels per
// reading: rows are looked up once, and the changed area is collected and repainted once.
class PixelWriter {
public:
    PixelWriter(PictureBox& picture, const QImage& background)
        : picture_(picture),
          image_(picture.image()),
          width_(image_.width()),
          height_(image_.height()),
          bits_(image_.bits()),
          stride_(image_.bytesPerLine()),
          back_(picture.BackColor().rgb()) {
        if (background.format() == QImage::Format_RGB32) {
            bg_ = background.constBits();
            bgStride_ = background.bytesPerLine();
            bgWidth_ = background.width();
            bgHeight_ = background.height();
        }
    }

    ~PixelWriter() {
        if (top_ <= bottom_) picture_.MarkDirty(QRect(QPoint(left_, top_), QPoint(right_, bottom_)));
    }

    bool HasColumn(int x) const { return x >= 0 && x < width_; }

    // Rows from..to of column x (clipped to the picture) in one colour. Only the rows between
    // the first and the last that change are written and marked: the stroke joining the last
    // column to row 1 is drawn again on every step, and marking all of it would repaint the
    // chart from its top down to the trace.
    void Fill(int x, int from, int to, QRgb colour) {
        if (!Clip(from, to)) return;
        const qsizetype column = x * qsizetype(sizeof(QRgb));
        const auto at = [&](int y) -> QRgb& { return *reinterpret_cast<QRgb*>(bits_ + y * stride_ + column); };
        while (from <= to && at(from) == colour) ++from;
        while (to >= from && at(to) == colour) --to;
        if (from > to) return;
        uchar* p = bits_ + from * stride_ + column;
        for (int y = from; y <= to; ++y, p += stride_) *reinterpret_cast<QRgb*>(p) = colour;
        Touch(x, from, to);
    }

    // Rows from..to of column x back from the saved background.
    void Restore(int x, int from, int to) {
        if (!Clip(from, to)) return;
        const qsizetype column = x * qsizetype(sizeof(QRgb));
        uchar* p = bits_ + from * stride_ + column;
        int y = from;
        if (x < bgWidth_) {
            const int saved = std::min(to, bgHeight_ - 1);
            const uchar* b = bg_ + from * bgStride_ + column;
            for (; y <= saved; ++y, p += stride_, b += bgStride_)
                *reinterpret_cast<QRgb*>(p) = *reinterpret_cast<const QRgb*>(b);
        }
        // Rows the background does not reach.
        for (; y <= to; ++y, p += stride_) *reinterpret_cast<QRgb*>(p) = back_;
        Touch(x, from, to);
    }

private:
    bool Clip(int& from, int& to) const {
        from = std::max(from, 0);
        to = std::min(to, height_ - 1);
        return from <= to;
    }

    void Touch(int x, int from, int to) {
        left_ = std::min(left_, x);
        right_ = std::max(right_, x);
        top_ = std::min(top_, from);
        bottom_ = std::max(bottom_, to);
    }

    PictureBox& picture_;
    QImage& image_;
    const int width_;
    const int height_;
    uchar* bits_;
    const qsizetype stride_;
    const QRgb back_;
    const uchar* bg_ = nullptr;
    qsizetype bgStride_ = 0;
    int bgWidth_ = 0;
    int bgHeight_ = 0;
    int left_ = INT_MAX, right_ = -1, top_ = INT_MAX, bottom_ = -1;
};

void TraceStep(PictureBox& picture, const QImage& background, TraceRows& rows, const QColor& traceColour,
               int start, std::uint8_t* marks) {
    if (start < 404) {
        const QRgb colour = traceColour.rgb();
        const QRgb markColour = qRgb(150, 150, 150);
        PixelWriter pixels(picture, background);
        for (int k = std::max(start - 1, 0); k <= kTraceLastColumn; ++k) {
            const int x = k;
            const std::int32_t old = rows[k];
            const std::int32_t incoming = rows[k + 1];
            const std::int32_t p = incoming == 0 ? 1 : incoming;
            if (pixels.HasColumn(x)) {
                // The dot and the stroke joining the next point form one run of rows.
                // Entries 404.. stay 1, so column 402 is also joined up to row 1.
                const std::int32_t next = rows[k + 2];
                const std::int32_t paintFrom = std::min({p - 1, incoming, next});
                const std::int32_t paintTo = std::max({p + 1, incoming, next});
                const bool wasMarked = marks && marks[k], marked = marks && marks[k + 1];
                // Erase what this column showed (its old dot and the stroke that joined it to
                // the point now moving in, or a mark's whole line) where the new run does not
                // cover it, so that each pixel is written once.
                if (wasMarked && !marked) {
                    pixels.Restore(x, 0, paintFrom - 1);
                    pixels.Restore(x, paintTo + 1, INT_MAX / 2);
                } else if (marked) {
                    pixels.Fill(x, 0, paintFrom - 1, markColour);
                    pixels.Fill(x, paintTo + 1, INT_MAX / 2, markColour);
                } else if (old != incoming) {
                    const std::int32_t eraseFrom = std::min(old, incoming) - 1;
                    const std::int32_t eraseTo = std::max(old, incoming) + 1;
                    pixels.Restore(x, eraseFrom, std::min(eraseTo, paintFrom - 1));
                    pixels.Restore(x, std::max(eraseFrom, paintTo + 1), eraseTo);
                }
                pixels.Fill(x, paintFrom, paintTo, colour);
            }
            rows[k] = p;
            if (marks) marks[k] = marks[k + 1];
        }
    }
    picture.Refresh();
}

}  // namespace

void SaveGraphBackground(const PictureBox& picture, PlotState& state) {
    // A deep copy, so that later drawing never has to detach a shared image mid-trace.
    state.GraphBackground = picture.image().convertToFormat(QImage::Format_RGB32).copy();
}

void RestoreGraphBackground(PictureBox& picture, PlotState& state) {
    state.Ink = {};
    QImage& image = picture.image();
    const QImage background = state.GraphBackground.convertToFormat(QImage::Format_RGB32);
    image.fill(picture.BackColor());
    const int width = std::min(image.width(), background.width());
    const int height = std::min(image.height(), background.height());
    for (int y = 0; y < height; ++y)
        std::memcpy(image.scanLine(y), background.constScanLine(y), std::size_t(width) * sizeof(QRgb));
    picture.MarkDirty(image.rect());
    picture.Refresh();
}

void ScrollTrace(PictureBox& picture, PlotState& state, int start, bool withMarks) {
    TraceStep(picture, state.GraphBackground, state.TracePixels, state.TraceColour, start,
              withMarks ? state.TraceMarks.data() : nullptr);
}

void ScrollTrace2(PictureBox& picture, PlotState& state, int start, bool withMarks) {
    TraceStep(picture, state.GraphBackground, state.TracePixels2, state.TraceColour, start,
              withMarks ? state.TraceMarks.data() : nullptr);
}

void ShiftTrace(TraceRows& rows, PlotState& state, int start, bool withMarks) {
    if (start >= 404) return;
    std::uint8_t* marks = withMarks ? state.TraceMarks.data() : nullptr;
    for (int k = std::max(start - 1, 0); k <= kTraceLastColumn; ++k) {
        rows[k] = rows[k + 1] == 0 ? 1 : rows[k + 1];
        if (marks) marks[k] = marks[k + 1];
    }
    state.Ink.newest = rows[kTraceNewest];
    state.Ink.owed = true;
}

// After a step, column k shows the run from its row to the next point's and nothing else of
// the trace (a step erases all the run it drew before), over the background or, in a marked
// column, over grey: so the picture follows from the rows alone, whichever steps led there.
void DrawTrace(PictureBox& picture, PlotState& state, const TraceRows& rows, int start, bool withMarks) {
    PlotState::TraceInk& ink = state.Ink;
    if (!ink.owed || start >= 404) return;
    ink.owed = false;
    const QRgb colour = state.TraceColour.rgb();
    const QRgb markColour = qRgb(150, 150, 150);
    PixelWriter pixels(picture, state.GraphBackground);
    for (int k = std::max(start - 1, 0); k <= kTraceLastColumn; ++k) {
        if (!pixels.HasColumn(k)) continue;
        // The row the last step stored and the point it joined it to, as that step found it:
        // the next column's row before it moved (which it keeps, 0 apart), for column 401 the
        // newest reading, for 402 row 1.
        const std::int32_t p = rows[std::size_t(k)];
        const std::int32_t next = k < kTraceLastColumn - 1 ? rows[std::size_t(k + 1)]
                                  : k == kTraceLastColumn - 1 ? ink.newest
                                                              : rows[kTraceNewest + 1];
        const std::int32_t from = std::min(p - 1, next), to = std::max(p + 1, next);
        const bool marked = withMarks && state.TraceMarks[std::size_t(k)];
        if (marked) {
            pixels.Fill(k, 0, from - 1, markColour);
            pixels.Fill(k, to + 1, INT_MAX / 2, markColour);
        } else if (ink.drawn[std::size_t(k)] == PlotState::TraceInk::kMarkedRun) {
            pixels.Restore(k, 0, from - 1);
            pixels.Restore(k, to + 1, INT_MAX / 2);
        } else if (ink.drawn[std::size_t(k)] == PlotState::TraceInk::kRun) {
            const std::int32_t was = ink.from[std::size_t(k)], wasTo = ink.to[std::size_t(k)];
            pixels.Restore(k, was, std::min(wasTo, from - 1));
            pixels.Restore(k, std::max(was, to + 1), wasTo);
        }
        pixels.Fill(k, from, to, colour);
        ink.drawn[std::size_t(k)] = marked ? PlotState::TraceInk::kMarkedRun : PlotState::TraceInk::kRun;
        ink.from[std::size_t(k)] = from;
        ink.to[std::size_t(k)] = to;
    }
    picture.Refresh();
}

void PlotDots(PictureBox& picture, const TraceRows& rows) {
    const QColor red(255, 0, 0);
    const int last = std::min(picture.ScaleWidth(), kTracePoints) - 1;
    for (int x = last; x >= 0; --x) {
        picture.SetPixel(x, rows[x] - 1, red);
        picture.SetPixel(x, rows[x], red);
        picture.SetPixel(x, rows[x] + 1, red);
        if (x % 25 == 0) picture.Refresh();
    }
    picture.Refresh();
}

TraceRows StaircaseRows() {
    TraceRows rows = PlotState::FilledRows();
    for (int i = 1; i <= 8; ++i) {
        const double level = 100.0 * i;
        auto row = std::int32_t(RoundEven(304 - level * (304.0 / 1000)));
        if (row == 0) row = 1;
        std::fill_n(rows.begin() + 50 * (i - 1), 50, row);
    }
    return rows;
}

}  // namespace lxm::ModWaveform_ALS
