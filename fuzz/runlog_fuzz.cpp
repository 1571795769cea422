// Any bytes as a logged run: the reader must never crash, and what it gives back must be what
// the viewer relies on: columns of equal length, times that never go back, finite numbers,
// and a first unreadable line exactly when some line was skipped.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "viewer/RunLog.h"

using namespace lxm::viewer;

namespace {

void Check(bool ok) {
    if (!ok) std::abort();
}

void CheckSorted(const std::vector<double>& t) {
    for (std::size_t i = 0; i < t.size(); ++i) {
        Check(std::isfinite(t[i]));
        if (i > 0) Check(t[i - 1] <= t[i]);
    }
}

void CheckFinite(const std::vector<double>& v) {
    for (double x : v) Check(std::isfinite(x));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const ReadResult r = ReadRunText(text);
    Check((r.firstBadLine > 0) == (r.badLines > 0));
    Check(r.badLines == 0 || !r.firstBadReason.empty());
    for (const Run& run : r.runs) {
        Check(run.t.size() == run.v.size() && run.saturatedT.size() == run.saturatedV.size() &&
              run.earlyT.size() == run.earlyV.size());
        for (const auto* t : {&run.t, &run.saturatedT, &run.earlyT, &run.failedT}) CheckSorted(*t);
        for (const auto* v : {&run.v, &run.saturatedV, &run.earlyV}) CheckFinite(*v);
        for (const SettingChange& c : run.changes) Check(std::isfinite(c.t));
        (void)SettingsText(run);
    }
    return 0;
}
