#include "ChartPicture.h"

#include <QBuffer>
#include <QImageWriter>
#include <QPainter>

#include "acquisition/GraphDrawing.h"
#include "acquisition/Recording.h"

namespace lxm {

QImage ChartPicture(const PictureBox& labels, const PictureBox& graph) {
    QImage chart = labels.image().convertToFormat(QImage::Format_RGB32);
    QPainter painter(&chart);
    painter.drawImage(kGraphOrigin, graph.image());
    return chart;
}

QString SavePng(const QImage& image, const QString& path) {
    if (image.isNull()) return QStringLiteral("there is no picture to save");
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "png");
    if (!writer.write(image)) return writer.errorString();
    return WriteFileWhole(path, bytes, false);
}

}  // namespace lxm
