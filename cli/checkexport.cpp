// Verdicts for programs: JSON, and JUnit's XML for build servers.
#include <string_view>

#include "checkformat.h"
#include "summaryformat.h"
#include "text.h"

namespace cli {
namespace {

using analysis::Budget;

std::string_view MeasureOf(const Budget& budget) {
  switch (budget.measure) {
    case Budget::Measure::load: return "load";
    case Budget::Measure::latency: return "latency";
    case Budget::Measure::issues: return "issues";
    case Budget::Measure::testpoints: return "testpoints";
    case Budget::Measure::coverage: return "coverage";
    case Budget::Measure::quantity: break;
  }
  return NameOf(budget.quantity);
}

bool IsTime(const Budget& budget) {
  return budget.measure == Budget::Measure::quantity || budget.measure == Budget::Measure::latency;
}

std::string_view UnitOf(const Budget& budget) {
  if (IsTime(budget)) return "ticks";
  const bool isCount =
      budget.measure == Budget::Measure::issues || budget.measure == Budget::Measure::testpoints;
  return isCount ? "count" : "share";
}

class CheckJson : public CheckFormat {
 public:
  CheckJson(fmt::memory_buffer& out, const std::string& budgetFile) : json_(out) {
    json_.BeginObject();
    json_.Key("schema").Count(1);
    json_.Key("budget").Text(budgetFile);
    json_.Key("lanes").BeginArray();
  }

  void Add(const LaneChecks& lane) override {
    json_.BeginRow();
    AddLaneKeys(json_, lane.source);
    const CheckCounts counts = CountChecks(lane.checks);
    json_.Key("kept").Count(counts.kept);
    json_.Key("broken").Count(counts.broken);
    json_.Key("notMeasured").Count(counts.notMeasured);
    json_.Key("checks").BeginArray();
    for (const Check& check : lane.checks) AddCheck(check, lane.source);
    json_.EndArray();
    json_.EndObject();
  }

  void End() override { json_.EndRows(); }

 private:
  void AddCheck(const Check& check, const AnalysedLane& lane) {
    const analysis::Verdict& verdict = check.verdict;
    json_.BeginRow();
    json_.Key("name").Text(NameOf(check, lane));
    json_.Key("place").Text(check.rule.place);
    json_.Key("task").TextOrNull(verdict.task == analysis::noTask ? ""
                                                                  : lane.lane.Tasks()[verdict.task].name);
    json_.Key("measure").Text(MeasureOf(check.budget));
    json_.Key("statistic").TextOrNull(IsTime(check.budget) ? NameOf(check.budget.statistic) : "");
    json_.Key("unit").Text(UnitOf(check.budget));
    json_.Key("value").Number(verdict.isMeasured ? std::optional(verdict.value) : std::nullopt);
    json_.Key("limit").Number(verdict.limit);
    json_.Key("bound").Text(IsUpperLimit(check) ? "atMost" : "atLeast");
    json_.Key("kept");
    verdict.isMeasured ? json_.Bool(verdict.isKept) : json_.Null();
    json_.Key("atTicks");
    verdict.at ? json_.Ticks(*verdict.at) : json_.Null();
    json_.EndObject();
  }

  JsonWriter json_;
};

// Text of an element or an attribute. SafeText has left no control characters but the line breaks between
// lines.
std::string Xml(std::string_view text) {
  std::string out;
  for (const char c : text) {
    switch (c) {
      case '&': out += "&amp;"; break;
      case '<': out += "&lt;"; break;
      case '>': out += "&gt;"; break;
      case '"': out += "&quot;"; break;
      default: out += c;
    }
  }
  return out;
}

class CheckJunit : public CheckFormat {
 public:
  explicit CheckJunit(fmt::memory_buffer& out) : out_(out) {
    Print("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites>\n");
  }

  void Add(const LaneChecks& lane) override {
    const CheckCounts counts = CountChecks(lane.checks);
    const std::string name = Xml(SafeText(lane.source.source.name));
    Print(fmt::format("<testsuite name=\"{}\" tests=\"{}\" failures=\"{}\" errors=\"0\" skipped=\"{}\">\n",
                      name, lane.checks.size(), counts.broken, counts.notMeasured));
    for (const Check& check : lane.checks) AddCase(check, lane.source, name);
    Print("</testsuite>\n");
  }

  void End() override { Print("</testsuites>\n"); }

 private:
  void AddCase(const Check& check, const AnalysedLane& lane, const std::string& suite) {
    Print(fmt::format("<testcase classname=\"{}\" name=\"{}\"", suite, Xml(SafeText(NameOf(check, lane)))));
    if (!check.verdict.isMeasured) return Print("><skipped message=\"the log has no value\"/></testcase>\n");
    if (check.verdict.isKept) return Print("/>\n");
    Print(fmt::format("><failure message=\"{}\">{}</failure></testcase>\n", Xml(Outcome(check, lane)),
                      Xml("\n" + EntriesOf(check, lane, ""))));
  }

  void Print(std::string_view text) { out_.append(text); }

  fmt::memory_buffer& out_;
};

}  // namespace

std::unique_ptr<CheckFormat> MakeCheckJson(fmt::memory_buffer& out, const std::string& budgetFile) {
  return std::make_unique<CheckJson>(out, budgetFile);
}

std::unique_ptr<CheckFormat> MakeCheckJunit(fmt::memory_buffer& out) {
  return std::make_unique<CheckJunit>(out);
}

}  // namespace cli
