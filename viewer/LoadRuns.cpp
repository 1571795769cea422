#include "LoadRuns.h"

#include <QFile>
#include <new>

#include "viewer/RunPlot.h"

namespace lxm::viewer {

namespace {

const char* const kNoMemory = "there is not enough memory to hold its samples";

QString FileProblem(const QString& path, const ReadResult& r) {
    const QString name = QStringLiteral("\"%1\"").arg(path);
    if (!r.fileError.empty())
        return QStringLiteral("%1 could not be opened: %2. %3")
            .arg(name, QString::fromStdString(r.fileError),
                 r.fileError == kNoMemory ? QStringLiteral("Close other runs or programs and open it again.")
                                          : QStringLiteral("Check the name and that you may read it."));
    std::size_t samples = 0;
    for (const Run& run : r.runs) samples += run.Rows();
    if (r.badLines == 0 && samples > 0) return {};
    const QString where = QStringLiteral("line %1 (%2)").arg(r.firstBadLine).arg(QString::fromStdString(r.firstBadReason));
    if (samples == 0)
        return QStringLiteral("%1 holds no samples that could be read; the first line that could not be read is %2. "
                              "Open a log written by \"Log every sample\", --collect or \"Write to Disk\".")
            .arg(name, where);
    return QStringLiteral("%1: %2 line(s) could not be read, the first is %3. The %4 sample(s) that could be read "
                          "are shown.")
        .arg(name)
        .arg(r.badLines)
        .arg(where)
        .arg(samples);
}

}  // namespace

LoadedRuns LoadRuns(const QStringList& paths) {
    LoadedRuns out;
    QStringList problems;
    for (const QString& path : paths) {
        ReadResult r;
        try {
            r = ReadRunFile(QFile::encodeName(path).toStdString());
        } catch (const std::bad_alloc&) {
            r = {};
            r.fileError = kNoMemory;
        }
        const QString problem = FileProblem(path, r);
        if (!problem.isEmpty()) problems << problem;
        std::size_t samples = 0;
        for (Run& run : r.runs) {
            samples += run.Rows();
            if (run.Rows() > 0) out.runs.push_back(std::move(run));
        }
        if (samples == 0) out.anyUnusable = true;
    }
    out.problems = problems.join(QLatin1Char('\n'));
    return out;
}

int PlotToPicture(const QStringList& files, const QString& picture, const QString& title, QString& problems) {
    LoadedRuns loaded = LoadRuns(files);
    problems = loaded.problems;
    if (loaded.anyUnusable) return 2;
    RunPlot plot;
    for (Run& run : loaded.runs) plot.AddRun(std::move(run));
    plot.SetTitle(title);
    constexpr int kWidth = 1400, kHeight = 860;
    plot.resize(kWidth, kHeight);
    plot.ResetView();
    const QString error = plot.Export(picture, kWidth, kHeight);
    if (error.isEmpty()) return 0;
    if (!problems.isEmpty()) problems += QLatin1Char('\n');
    problems += QStringLiteral("The picture could not be written to \"%1\": %2.").arg(picture, error);
    return 2;
}

}  // namespace lxm::viewer
