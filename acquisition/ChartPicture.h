#pragma once

#include <QImage>
#include <QString>

#include "acquisition/PictureBox.h"

// The strip chart as a picture file, for a report or a lab notebook.
namespace lxm {

// The chart as the user sees it: the label picture with the graph's persistent image at its
// place inside it, so the trace keeps its scale and sample axis.
QImage ChartPicture(const PictureBox& labels, const PictureBox& graph);

// Writes the image as a PNG file in one action: the file is replaced only once the whole
// picture is encoded and written, so a failure leaves an earlier file as it was. Returns the
// system's reason for a failure, empty on success.
QString SavePng(const QImage& image, const QString& path);

}  // namespace lxm
