// Explanations as JSON.
#include "explainformat.h"
#include "explainwords.h"
#include "summaryformat.h"

namespace cli {
namespace {

using analysis::Finding;
using analysis::Link;

// Findings of all lanes come behind the lanes, so they are gathered in a text of their own.
class ExplainJson : public ExplainFormat {
 public:
  ExplainJson(fmt::memory_buffer& out, std::size_t limit) : json_(out), limit_(limit) {
    json_.BeginObject();
    json_.Key("schema").Count(1);
    json_.Key("lanes").BeginArray();
    findings_.BeginArray();
  }

  void Add(const LaneExplanation& lane) override {
    json_.BeginRow();
    AddLaneKeys(json_, lane.source);
    json_.Key("tasks").Count(lane.explanation.tasks);
    json_.Key("jobs").Count(lane.explanation.jobs);
    json_.Key("findings").Count(lane.explanation.findings.size());
    json_.EndObject();
    std::size_t told = 0;
    for (const Finding& finding : lane.explanation.findings)
      if (told++ < limit_) AddFinding(lane.source, finding);
  }

  void End() override {
    json_.EndArray();
    findings_.EndArray();
    json_.Key("findings").Raw({text_.data(), text_.size()});
    json_.EndObject();
    json_.EndText();
  }

 private:
  static void AddName(JsonWriter& json, const AnalysedLane& lane, analysis::SubjectIndex subject) {
    subject == analysis::noSubject ? json.Null() : json.Text(lane.lane.Names().NameOf(subject));
  }

  void AddFinding(const AnalysedLane& lane, const Finding& finding) {
    findings_.BeginRow();
    findings_.Key("task");
    AddName(findings_, lane, finding.task);
    findings_.Key("lane").Text(lane.source.name);
    findings_.Key("verdict").Text(Verdict(lane, finding));
    findings_.Key("job");
    AddJob(finding.job);
    findings_.Key("normalTicks").Ticks(finding.cause.normal);
    findings_.Key("actualTicks").Ticks(finding.cause.actual);
    findings_.Key("excessTicks").Ticks(finding.excess);
    findings_.Key("sign").Text(NameOf(finding.sign));
    findings_.Key("issue");
    AddName(findings_, lane, finding.issue);
    findings_.Key("occurrences").BeginArray();
    for (const analysis::Occurrence& one : finding.occurrences) AddJob(one);
    findings_.EndArray();
    findings_.Key("since");
    finding.since ? findings_.Ticks(*finding.since) : findings_.Null();
    AddParts(lane, finding);
    findings_.Key("chain").BeginArray();
    for (const Link& link : finding.cause.chain) AddLink(lane, link);
    findings_.EndArray();
    findings_.Key("root");
    AddLink(lane, finding.cause.Root());
    findings_.Key("also").BeginArray();
    for (const Link& link : finding.cause.also) AddLink(lane, link);
    findings_.EndArray();
    AddAlsoLate(lane, finding);
    findings_.Key("confidence").Number(finding.confidence);
    findings_.Key("coverage").Number(lane.lane.Coverage());
    findings_.EndObject();
  }

  void AddJob(const analysis::Occurrence& job) {
    findings_.BeginObject();
    findings_.Key("activationTicks").Ticks(job.activation);
    findings_.Key("completionTicks").Ticks(job.completion);
    findings_.EndObject();
  }

  void AddParts(const AnalysedLane& lane, const Finding& finding) {
    findings_.Key("parts").BeginArray();
    for (const analysis::PartExcess& part : finding.cause.parts) {
      findings_.BeginObject();
      findings_.Key("kind").Text(NameOf(part.kind));
      findings_.Key("task");
      AddName(findings_, lane, part.task);
      findings_.Key("normalTicks").Ticks(part.normal);
      findings_.Key("actualTicks").Ticks(part.actual);
      findings_.EndObject();
    }
    findings_.EndArray();
  }

  void AddLink(const AnalysedLane& lane, const Link& link) {
    findings_.BeginObject();
    findings_.Key("kind").Text(NameOf(link.kind));
    findings_.Key("task");
    AddName(findings_, lane, link.task);
    findings_.Key("excessTicks").Ticks(link.excess);
    findings_.Key("share").Number(link.share);
    findings_.Key("from").Ticks(link.from);
    findings_.Key("to").Ticks(link.to);
    findings_.Key("at").Ticks(link.at);
    findings_.EndObject();
  }

  void AddAlsoLate(const AnalysedLane& lane, const Finding& finding) {
    findings_.Key("alsoLate").BeginArray();
    for (const analysis::AlsoLate& other : finding.alsoLate) {
      findings_.BeginObject();
      findings_.Key("task").Text(lane.lane.Names().NameOf(other.task));
      findings_.Key("count").Count(other.count);
      findings_.Key("excessTicks").Ticks(other.excess);
      findings_.EndObject();
    }
    findings_.EndArray();
  }

  JsonWriter json_;
  fmt::memory_buffer text_;
  JsonWriter findings_{text_};
  std::size_t limit_;
};

}  // namespace

std::unique_ptr<ExplainFormat> MakeExplainJson(fmt::memory_buffer& out, std::size_t limit) {
  return std::make_unique<ExplainJson>(out, limit);
}

}  // namespace cli
