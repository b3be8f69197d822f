// The module tasklog._native: what the package is built on. Python code is not to use it directly.
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <utility>

#include "arrays.h"
#include "cli/summarizer.h"
#include "cli/text.h"
#include "failures.h"
#include "record.h"
#include "tables.h"

namespace py = pybind11;

namespace python {
namespace {

// A text of the command line, from whatever bytes there are in a Python string.
using Text = std::optional<std::string>;

Text TextOf(const py::object& text) {
  return text.is_none() ? std::nullopt : std::optional(BytesOf(py::str(text)));
}

AnalysisOptions OptionsOf(const py::object& idle, const py::object& switches) {
  AnalysisOptions options;
  options.idle = TextOf(idle);
  options.switches = TextOf(switches);
  return options;
}

// Does it without the interpreter; gives its result and the warnings on the way.
template <class Work>
auto WithWarnings(Work work) {
  const py::gil_scoped_release others;
  cli::WarningCollector warnings;
  auto result = work();
  return std::pair(std::move(result), warnings.Take());
}

auto Find(const std::string& path) {
  return WithWarnings([&] { return cli::FindLanes({path}); });
}

auto Load(const cli::Lane& source, const py::object& idle, const py::object& switches) {
  const AnalysisOptions options = OptionsOf(idle, switches);
  return WithWarnings([&] { return std::make_unique<Lane>(source, options); });
}

std::chrono::nanoseconds Nanoseconds(double seconds) {
  return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::duration<double>(seconds));
}

auto RecordLoggers(const std::string& target, std::vector<std::string> loggers, bool start,
                   const std::string& trigger, double seconds, double every) {
  const RecordRequest request{target,  std::move(loggers),   start,
                              trigger, Nanoseconds(seconds), Nanoseconds(every)};
  const auto check = [] {
    const py::gil_scoped_acquire me;
    if (PyErr_CheckSignals() != 0) throw py::error_already_set();
  };
  return WithWarnings([&] { return Record(request, {}, check); });
}

std::unique_ptr<Lane> Between(const Lane& lane, const py::object& from, const py::object& to) {
  const Text bounds[] = {TextOf(from), TextOf(to)};
  const py::gil_scoped_release others;
  return std::make_unique<Lane>(lane.Between(bounds[0], bounds[1]));
}

std::string Explain(const Lane& lane, const py::object& task, const py::object& at, const py::object& issue,
                    const py::object& over, std::size_t limit, const Lane* good) {
  const cli::ExplainOptions options{TextOf(task), TextOf(at), TextOf(issue), TextOf(over)};
  const py::gil_scoped_release others;
  return lane.ExplainJson(options, limit, good);
}

py::dict Latencies(const Lane& lane, const py::object& begin, const py::object& end) {
  return LatenciesOf(lane, BytesOf(begin), BytesOf(end));
}

std::string Metadata(const Lane& lane) {
  return lane.Loaded().metadata ? cli::ToJson(*lane.Loaded().metadata) : "";
}

// One recording into a dataset: what came of it, and how many entries it has.
auto Summarize(const std::string& path, const std::string& dataset, const py::object& machine,
               const py::object& day, const py::object& idle, const py::object& switches) {
  static constexpr const char* names[] = {"added", "known", "broken"};
  const AnalysisOptions options = OptionsOf(idle, switches);
  const std::string machineName = TextOf(machine).value_or("");
  const std::string dayName = TextOf(day).value_or("");
  if (!dayName.empty() && !cli::IsDay(dayName)) throw cli::UsageError("day: a day is such as 2026-11-23");
  const py::gil_scoped_release others;
  return FailingAs("FileError", [&] {
    cli::Dataset place(dataset);
    const auto result = cli::Summarizer(options, machineName, dayName, place).Summarize(path);
    return std::pair(names[static_cast<std::size_t>(result.outcome)], result.entries);
  });
}

// A name as JSON has it.
std::string JsonName(const py::object& name) { return cli::JsonString(BytesOf(name)); }

void DefineLane(py::module_& module) {
  using Others = py::call_guard<py::gil_scoped_release>;
  py::class_<Lane>(module, "Lane")
      .def_property_readonly("name", [](const Lane& lane) { return NameOf(lane.Source().name); })
      .def_property_readonly("shown_as", [](const Lane& lane) { return NameOf(lane.Source().shownAs); })
      .def_property_readonly("start", [](const Lane& lane) { return lane.Lanes().StartTime(); })
      .def_property_readonly("stop", [](const Lane& lane) { return lane.Lanes().StopTime(); })
      .def_property_readonly("origin", [](const Lane& lane) { return lane.Loaded().log.StartTime(); })
      .def_property_readonly("ticks_per_second",
                             [](const Lane& lane) { return lane.Lanes().TicksPerSecond(); })
      .def_property_readonly("coverage", [](const Lane& lane) { return lane.Lanes().Coverage(); })
      .def_property_readonly("is_merged", &Lane::IsMerged)
      .def_property_readonly("idle", [](const Lane& lane) { return NameOf(lane.Analysed().IdleName()); })
      .def_property_readonly("switches",
                             [](const Lane& lane) { return lane.Analysed().conventions.meanings.Text(); })
      .def("between", &Between)
      .def("entries", &EntriesOf)
      .def("runs", &RunsOf)
      .def("jobs", &JobsOf)
      .def("latencies", &Latencies)
      .def("gaps", &GapsOf)
      .def("subjects", &SubjectsOf)
      .def("metadata_json", &Metadata)
      .def("stats_json", &Lane::StatsJson, Others())
      .def("explain_json", &Explain)
      .def(
          "save",
          [](const Lane& lane, const std::string& path) {
            return FailingAs("FileError", [&] { return lane.Save(path); });
          },
          Others());
}

}  // namespace
}  // namespace python

PYBIND11_MODULE(_native, module) {
  using namespace python;
  TranslateFailures();
  DescribeRows();
  py::class_<cli::Lane>(module, "Source")
      .def_property_readonly("name", [](const cli::Lane& lane) { return NameOf(lane.name); })
      .def_property_readonly("shown_as", [](const cli::Lane& lane) { return NameOf(lane.shownAs); });
  DefineLane(module);
  module.def("find", &Find);
  module.def("load", &Load);
  module.def("record", &RecordLoggers);
  module.def("json_name", &JsonName);
  module.def("summarize", &Summarize);
  module.attr("version") = TASKLOG_VERSION;
}
