#include "explainformat.h"

#include <algorithm>
#include <utility>

#include "explainwords.h"
#include "print.h"
#include "summaryformat.h"
#include "text.h"
#include "texttable.h"

namespace cli {
namespace {

using analysis::CauseKind;
using analysis::Finding;
using analysis::Link;

constexpr std::size_t mostTimes = 6;

// So many bytes of a word fit into a line of its own; characters stay whole.
std::size_t LongestWord(std::string_view text, std::size_t indent) {
  std::size_t bytes = TextTable::widestLine - indent;
  while (bytes > 1 && bytes < text.size() && (static_cast<unsigned char>(text[bytes]) & 0xC0) == 0x80)
    --bytes;
  return bytes;
}

// Words in lines of at most 100 columns, those behind the first indented.
void Wrap(fmt::memory_buffer& out, std::string_view first, std::string_view text) {
  const std::string indent(DisplayWidth(first), ' ');
  std::string line(first);
  bool empty = true;
  while (!text.empty()) {
    const std::size_t end = std::min({text.find(' '), text.size(), LongestWord(text, indent.size())});
    const std::string_view word = text.substr(0, end);
    text.remove_prefix(end + (end < text.size() && text[end] == ' '));
    if (!empty && DisplayWidth(line) + 1 + DisplayWidth(word) > TextTable::widestLine) {
      Print(out, "{}\n", line);
      line = indent;
      empty = true;
    }
    if (!empty) line += ' ';
    line += word;
    empty = false;
  }
  Print(out, "{}\n", line);
}

class ExplainText : public ExplainFormat {
 public:
  ExplainText(fmt::memory_buffer& out, std::size_t limit) : out_(out), limit_(limit) {}

  void Add(const LaneExplanation& lane) override {
    Print(out_, "{}", std::exchange(separator_, "\n"));
    AddLaneText(out_, lane.source);
    const auto& findings = lane.explanation.findings;
    if (findings.empty()) return Wrap(out_, "  ", NothingFound(lane));
    for (std::size_t i = 0; i < std::min(limit_, findings.size()); ++i)
      AddFinding(lane.source, findings[i], i + 1);
    if (findings.size() > limit_)
      Print(out_, "\n  and {} more (--limit {})\n", findings.size() - limit_, findings.size());
  }

 private:
  static std::string NothingFound(const LaneExplanation& lane) {
    const std::string looked =
        fmt::format("{} jobs of {} tasks in {}", lane.explanation.jobs, lane.explanation.tasks,
                    ShortLength(lane.source, lane.source.lane.Length()));
    if (lane.question.AsksForJobs())
      return fmt::format("No job that was asked for took longer than is normal, of {}; looked at {}.",
                         lane.explanation.asked, looked);
    return fmt::format(
        "Nothing was late: looked at {}, at their responses and activations, at timing issues and at the "
        "load.",
        looked);
  }

  void AddFinding(const AnalysedLane& lane, const Finding& finding, std::size_t number) {
    Print(out_, "\n");
    Wrap(out_, fmt::format("{}. ", number), Verdict(lane, finding));
    if (!finding.cause.parts.empty()) AddParts(lane, finding);
    if (finding.cause.chain.size() > 1) AddChain(lane, finding);
    AddTimes(lane, finding);
    AddAlsoLate(lane, finding);
    Wrap(out_, "   How sure: ", Certainty(lane, finding));
    const analysis::Occurrence& job = finding.job;
    Print(out_, "   To see it: tasklog list {} --from {} --to {}\n", SafeText(lane.source.shownAs),
          job.activation, job.completion);
  }

  void AddParts(const AnalysedLane& lane, const Finding& finding) {
    fmt::memory_buffer table;
    TextTable parts({"part, in order of time", "normal", "this time", "excess", "share"});
    for (const analysis::PartExcess& part : finding.cause.parts) {
      const bool grew = part.Excess() > 0 && finding.cause.Excess() > 0;
      const double share =
          grew ? static_cast<double>(part.Excess()) / static_cast<double>(finding.cause.Excess()) : 0;
      parts.Add({PartText(lane, part), ShortLength(lane, part.normal), ShortLength(lane, part.actual),
                 grew ? ShortLength(lane, part.Excess()) : noValue,
                 grew ? fmt::format("{:.0f} %", std::min(share, 1.0) * 100) : noValue});
    }
    parts.Print(table, false);
    AddIndented(fmt::to_string(table));
  }

  void AddIndented(std::string_view lines) {
    while (!lines.empty()) {
      const std::size_t end = lines.find('\n');
      Print(out_, "   {}\n", lines.substr(0, end));
      lines.remove_prefix(end + 1);
    }
  }

  void AddChain(const AnalysedLane& lane, const Finding& finding) {
    const char* first = "   Why: ";
    for (const Link& link : finding.cause.chain) {
      Wrap(out_, std::exchange(first, "        "),
           fmt::format("{} at {} {} ({})", LinkText(lane, link, finding.task), lane.TimeText(link.at),
                       lane.Unit(), NameOf(link.kind)));
    }
  }

  void AddTimes(const AnalysedLane& lane, const Finding& finding) {
    if (finding.occurrences.size() < 2) return;
    std::string text =
        fmt::format("{} times, {} in all: ", finding.occurrences.size(), ShortLength(lane, finding.excess));
    for (std::size_t i = 0; i < std::min(mostTimes, finding.occurrences.size()); ++i)
      text += fmt::format("{}{}", i == 0 ? "" : ", ", lane.TimeText(finding.occurrences[i].activation));
    text += finding.occurrences.size() > mostTimes ? ", ..." : "";
    Wrap(out_, "   How often: ", fmt::format("{} {}", text, lane.Unit()));
  }

  void AddAlsoLate(const AnalysedLane& lane, const Finding& finding) {
    if (finding.alsoLate.empty()) return;
    std::string text;
    for (const analysis::AlsoLate& other : finding.alsoLate)
      text += fmt::format("{}{} ({} {}, {})", text.empty() ? "" : ", ", TaskName(lane, other.task),
                          other.count, other.count == 1 ? "time" : "times", ShortLength(lane, other.excess));
    Wrap(out_, "   Late with it: ", text);
  }

  fmt::memory_buffer& out_;
  std::size_t limit_;
  const char* separator_ = "";
};

}  // namespace

std::unique_ptr<ExplainFormat> MakeExplainText(fmt::memory_buffer& out, std::size_t limit) {
  return std::make_unique<ExplainText>(out, limit);
}

}  // namespace cli
