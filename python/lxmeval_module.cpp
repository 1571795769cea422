// The Python module: the measuring core for bench scripts. Every transfer runs with the
// interpreter's lock released, so boards in threads of their own collect side by side.
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <QCoreApplication>
#include <memory>
#include <optional>

#include "acquisition/SampleLog.h"
#include "measure/Board.h"
#include "measure/Logging.h"
#include "measure/ScriptRun.h"
#include "measure/SimulatedBoard.h"
#include "transport/libusb/BoardList.h"
#include "transport/libusb/LibusbDriver.h"

namespace py = pybind11;

namespace lxm::python {

namespace {

using measure::Board;
using measure::Error;

SteadyClock& TheClock() {
    static SteadyClock clock;
    return clock;
}

// The real board's driver watches the USB through Qt's event machinery, which wants an
// application object; a script has none of its own.
void EnsureCoreApplication() {
    if (QCoreApplication::instance()) return;
    static int argc = 1;
    static char name[] = "lxmeval";
    static char* argv[] = {name, nullptr};
    static QCoreApplication app(argc, argv);
}

struct SceneKind {
    const char* name;
    sim::LightScene::Kind kind;
};
constexpr SceneKind kSceneKinds[] = {{"steady", sim::LightScene::Kind::Steady},
                                     {"sine", sim::LightScene::Kind::Sine},
                                     {"steps", sim::LightScene::Kind::Steps},
                                     {"noise", sim::LightScene::Kind::Noise},
                                     {"ramp", sim::LightScene::Kind::Ramp}};

// The simulated board's bench: the light at the sensor and the cable.
class Bench {
public:
    explicit Bench(measure::SimulatedBoard& sim) : sim_(sim) {}
    double light() const { return sim_.scene().ambientLux; }
    void set_light(double lux) { sim_.scene().ambientLux = Checked(lux, "light"); }
    double infrared() const { return sim_.scene().infrared; }
    void set_infrared(double v) { sim_.scene().infrared = Checked(v, "infrared"); }
    double distance() const { return sim_.scene().objectDistanceMm; }
    void set_distance(double mm) { sim_.scene().objectDistanceMm = mm; }
    std::string source() const {
        for (const auto& k : kSceneKinds)
            if (k.kind == sim_.scene().kind) return k.name;
        return "steady";
    }
    void set_source(const std::string& name) {
        for (const auto& k : kSceneKinds)
            if (name == k.name) {
                sim_.scene().kind = k.kind;
                return;
            }
        throw Error(Error::Kind::BadValue,
                    QStringLiteral("Unknown light source \"%1\": use steady, sine, steps or noise")
                        .arg(QString::fromStdString(name)));
    }
    void unplug() { sim_.Unplug(); }
    void plug() { sim_.Plug(); }
    bool plugged() const { return sim_.driver().IsPlugged(); }

private:
    static double Checked(double v, const char* what) {
        if (!(v >= 0) || v > 1e7)
            throw Error(Error::Kind::BadValue,
                        QStringLiteral("The %1 must be 0 to 10000000").arg(QString::fromLatin1(what)));
        return v;
    }
    measure::SimulatedBoard& sim_;
};

class PyBoard {
public:
    PyBoard(bool simulate, const std::string& sensor, std::optional<std::string> where, double latencyUs) {
        if (simulate) {
            sim_ = std::make_unique<measure::SimulatedBoard>(TheClock(), sensor, std::int64_t(latencyUs));
            bench_ = std::make_unique<Bench>(*sim_);
            board_ = &sim_->board();
            return;
        }
        std::optional<measure::Where> place;
        if (where) {
            place = ParseBoardPlace(*where);
            if (!place)
                throw Error(Error::Kind::BadValue, QStringLiteral("\"%1\" is not a board: give it as BUS:PORT, "
                                                                  "as lxmeval.boards() lists them")
                                                      .arg(QString::fromStdString(*where)));
        }
        EnsureCoreApplication();
        driver_ = std::make_unique<usb::LibusbDriver>();
        real_ = std::make_unique<Board>(*driver_, TheClock(), place);
        board_ = real_.get();
        board_->SelectSensor(sensor);
    }

    Board& b() {
        if (!board_) throw Error(Error::Kind::BoardGone, QStringLiteral("The board was closed: open it again"));
        return *board_;
    }
    void close() {
        board_ = nullptr;
        real_.reset();
        driver_.reset();
    }
    Bench* bench() { return bench_.get(); }

private:
    std::unique_ptr<measure::SimulatedBoard> sim_;
    std::unique_ptr<Bench> bench_;
    std::unique_ptr<usb::LibusbDriver> driver_;
    std::unique_ptr<Board> real_;
    Board* board_ = nullptr;
};

py::dict ReadingDict(const measure::Reading& r) {
    py::dict d;
    d["count"] = r.raw;
    d["value"] = r.value;
    d["unit"] = r.lux ? "lux" : "counts";
    d["status"] = r.Status();
    d["failed"] = bool(r.flags & measure::kFailed);
    d["saturated"] = bool(r.flags & measure::kSaturated);
    d["early"] = bool(r.flags & measure::kEarly);
    // The dual mode's parts: the ambient IR and the proximity count it was subtracted from.
    if (r.ir) d["ir"] = *r.ir;
    if (r.prox) d["prox"] = *r.prox;
    return d;
}

#pragma pack(push, 1)
struct Row {
    double time;
    std::int32_t count;
    double value;
    std::uint8_t flags;
};
#pragma pack(pop)

py::array Collect(PyBoard& self, std::int64_t n, std::optional<int> intervalMs, std::optional<std::string> logPath) {
    if (n < 1) throw Error(Error::Kind::BadValue, QStringLiteral("n must be at least 1"));
    Board& b = self.b();
    const int interval = intervalMs.value_or(b.DefaultIntervalMs());
    // The same file as the program's per-sample log, when asked for.
    QString logProblem;
    SampleLog log(TheClock(), [&](const QString& path, const QString& reason) {
        if (logProblem.isEmpty()) logProblem = SampleLogErrorMessage(path, reason);
    });
    if (logPath && !log.Open(QString::fromStdString(*logPath), measure::LogHeader(b, interval)))
        throw Error(Error::Kind::BadValue, logProblem);
    std::vector<Row> rows;
    rows.reserve(std::size_t(n));
    bool interrupted = false;
    {
        py::gil_scoped_release release;
        b.Collect(n, interval, [&](const measure::Sample& s) {
            rows.push_back(Row{s.seconds, s.reading.raw, s.reading.value, std::uint8_t(s.reading.flags)});
            if (log.IsOpen()) log.Append(measure::LogRow(s));
            // Ctrl-C ends a long collection with what it has taken.
            if (rows.size() % 256 == 0) {
                py::gil_scoped_acquire acquire;
                if (PyErr_CheckSignals() != 0) {
                    interrupted = true;
                    return false;
                }
            }
            return true;
        });
    }
    log.Close();
    if (interrupted) throw py::error_already_set();
    if (!logProblem.isEmpty()) throw Error(Error::Kind::BadValue, logProblem);
    py::array_t<Row> out(py::ssize_t(rows.size()));
    std::copy(rows.begin(), rows.end(), out.mutable_data());
    return out;
}

}  // namespace

}  // namespace lxm::python

PYBIND11_MODULE(lxmeval, m) {
    using namespace lxm;
    using namespace lxm::python;
    m.doc() = "The LXM evaluation board from Python: registers, readings and paced collections.";
    PYBIND11_NUMPY_DTYPE_EX(Row, time, "time", count, "count", value, "value", flags, "flags");

    // One class per kind of failure, all under lxmeval.Error; the standard classes too, so that
    // `except TimeoutError` and `except ValueError` catch what they mean.
    static PyObject* errors[5] = {};
    auto define = [&m](const char* name, PyObject* bases) {
        PyObject* cls = PyErr_NewException((std::string("lxmeval.") + name).c_str(), bases, nullptr);
        m.attr(name) = py::handle(cls);
        return cls;
    };
    PyObject* base = define("Error", PyExc_RuntimeError);
    auto both = [&](PyObject* standard) { return py::make_tuple(py::handle(base), py::handle(standard)); };
    errors[int(measure::Error::Kind::NoBoard)] = define("NoBoard", base);
    errors[int(measure::Error::Kind::BoardGone)] = define("BoardGone", both(PyExc_ConnectionError).ptr());
    errors[int(measure::Error::Kind::Timeout)] = define("Timeout", both(PyExc_TimeoutError).ptr());
    errors[int(measure::Error::Kind::OutOfRange)] = define("OutOfRange", both(PyExc_IndexError).ptr());
    errors[int(measure::Error::Kind::BadValue)] = define("BadValue", both(PyExc_ValueError).ptr());
    py::register_exception_translator([](std::exception_ptr p) {
        try {
            if (p) std::rethrow_exception(p);
        } catch (const measure::Error& e) {
            PyErr_SetString(errors[int(e.kind())], e.what());
        }
    });

    m.attr("FAILED") = int(measure::kFailed);
    m.attr("SATURATED") = int(measure::kSaturated);
    m.attr("EARLY") = int(measure::kEarly);

    py::class_<usb::AttachedBoard>(m, "AttachedBoard")
        .def_readonly("bus", &usb::AttachedBoard::bus)
        .def_readonly("port", &usb::AttachedBoard::port)
        .def_readonly("openable", &usb::AttachedBoard::openable)
        .def_readonly("problem", &usb::AttachedBoard::problem)
        .def("__repr__", [](const usb::AttachedBoard& b) {
            return "<board " + std::to_string(b.bus) + ":" + std::to_string(b.port) +
                   (b.openable ? "" : " (cannot open: " + b.problem + ")") + ">";
        });
    m.def("boards", &usb::ListBoards, "The evaluation boards attached now: bus, port, whether you may open them.");

    py::class_<Bench>(m, "SimulatedBench")
        .def_property("light", &Bench::light, &Bench::set_light, "ambient light at the sensor, lux")
        .def_property("infrared", &Bench::infrared, &Bench::set_infrared)
        .def_property("distance", &Bench::distance, &Bench::set_distance, "reflecting object, mm (<= 0: none)")
        .def_property("source", &Bench::source, &Bench::set_source, "steady, sine, steps or noise")
        .def_property_readonly("plugged", &Bench::plugged)
        .def("unplug", &Bench::unplug)
        .def("plug", &Bench::plug, py::call_guard<py::gil_scoped_release>());

    using Guard = py::call_guard<py::gil_scoped_release>;
    py::class_<PyBoard>(m, "Board")
        .def("__enter__", [](PyBoard& b) -> PyBoard& { return b; }, py::return_value_policy::reference)
        .def("__exit__", [](PyBoard& b, py::args) { b.close(); })
        .def("close", &PyBoard::close)
        .def_property_readonly("sensor", [](PyBoard& b) { return b.b().sensor(); })
        .def_property_readonly("where", [](PyBoard& b) {
            return b.b().where().Text();
        })
        .def_property_readonly("sim", &PyBoard::bench, py::return_value_policy::reference_internal,
                               "the simulated board's bench; None on a real board")
        .def("read", [](PyBoard& b, int reg) { return int(b.b().Read(reg)); }, py::arg("reg"), Guard())
        .def("write", [](PyBoard& b, int reg, int value) { b.b().Write(reg, value); }, py::arg("reg"),
             py::arg("value"), Guard())
        .def("read_block",
             [](PyBoard& b, int reg, int n) {
                 const auto bytes = b.b().ReadBlock(reg, n);
                 return std::vector<int>(bytes.begin(), bytes.end());
             },
             py::arg("reg"), py::arg("n"), Guard())
        .def("write_block", [](PyBoard& b, int reg, const std::vector<int>& v) { b.b().WriteBlock(reg, v); },
             py::arg("reg"), py::arg("values"), Guard())
        .def("configure",
             [](PyBoard& self, std::optional<int> range, std::optional<int> resolution,
                std::optional<std::string> measure, std::optional<double> drive, std::optional<int> persistence,
                std::optional<std::pair<int, int>> thresholds) {
                 py::gil_scoped_release release;
                 Board& b = self.b();
                 // The resolution first: the thresholds are checked against it.
                 if (resolution) b.SetResolution(*resolution);
                 if (range) b.SetRange(*range);
                 if (drive) b.SetDrive(*drive);
                 if (persistence) b.SetPersistence(*persistence);
                 if (thresholds) b.SetThresholds(thresholds->first, thresholds->second);
                 if (measure) b.SetMeasure(*measure);
             },
             py::kw_only(), py::arg("range") = py::none(), py::arg("resolution") = py::none(),
             py::arg("measure") = py::none(), py::arg("drive") = py::none(), py::arg("persistence") = py::none(),
             py::arg("thresholds") = py::none())
        .def_property_readonly("settings",
                               [](PyBoard& self) {
                                   Board& b = self.b();
                                   py::dict d;
                                   d["range"] = b.rangeLux();
                                   d["resolution"] = b.resolutionBits();
                                   d["measure"] = b.measure();
                                   d["interval_ms"] = b.DefaultIntervalMs();
                                   return d;
                               })
        .def("reading",
             [](PyBoard& self) {
                 measure::Reading r;
                 {
                     py::gil_scoped_release release;
                     r = self.b().TakeReading();
                 }
                 return ReadingDict(r);
             })
        .def("collect", &Collect, py::arg("n") = 1000, py::arg("interval_ms") = py::none(), py::kw_only(),
             py::arg("log") = py::none(),
             "n readings paced interval_ms apart (default: what the resolution suggests), as a numpy array "
             "with the fields time (s since the start), count, value and flags; log: also the per-sample "
             "CSV log of the program to this file")
        .def("run_script",
             [](PyBoard& self, const std::string& path, int loops, bool abortOnFail) {
                 measure::ScriptOutcome o;
                 {
                     py::gil_scoped_release release;
                     o = measure::RunScriptFile(self.b(), path, loops, abortOnFail);
                 }
                 py::dict d;
                 d["passed"] = o.passed;
                 d["failed"] = o.failed;
                 d["rows"] = o.rows;
                 return d;
             },
             py::arg("path"), py::arg("loops") = 1, py::arg("abort_on_fail") = false);

    m.def("open",
          [](bool simulate, const std::string& sensor, std::optional<std::string> board, double latencyUs) {
              return std::make_unique<PyBoard>(simulate, sensor, board, latencyUs);
          },
          py::kw_only(), py::arg("simulate") = false, py::arg("sensor") = "LXM410", py::arg("board") = py::none(),
          py::arg("latency_us") = 1000.0,
          "Opens an evaluation board: the real one at board=\"BUS:PORT\" (the first one without), or a "
          "simulated one of its own.");
}
