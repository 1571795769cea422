#pragma once

#include <QString>
#include <QStringList>
#include <vector>

#include "viewer/RunLog.h"

namespace lxm::viewer {

// The runs of several files, and one text for everything that went wrong reading them (empty
// when nothing did): a file that cannot be opened, holds no samples, or has lines that could
// not be read, each with the first such line.
struct LoadedRuns {
    std::vector<Run> runs;
    QString problems;
    bool anyUnusable = false;  // a file that gave no samples at all
};
LoadedRuns LoadRuns(const QStringList& paths);

// `lxmeval --plot`: the runs of `files` drawn into `picture` (.png or .svg) at a size fit for
// a report. Returns the exit status (0, or 2 for a file that gives nothing or a picture that
// cannot be written); `problems` gets what went wrong, also about files only partly read.
int PlotToPicture(const QStringList& files, const QString& picture, const QString& title, QString& problems);

}  // namespace lxm::viewer
