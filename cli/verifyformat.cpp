#include "verifyformat.h"

#include "jsonwriter.h"
#include "print.h"
#include "text.h"

namespace cli {
namespace {

using taskfile::Fault;
using taskfile::Remark;
using taskfile::Remarks;

struct RemarkKind {
  const char* key;
  const Remark Remarks::*remark;
  const char* one;
  const char* many;
};

constexpr RemarkKind remarkKinds[] = {
    {"withoutLeft", &Remarks::withoutLeft, "switch has no record of the task that left: its type reads as 4",
     "switches have no record of the task that left: their type reads as 4"},
    {"withoutCame", &Remarks::withoutCame, "switch has no record of the task that came",
     "switches have no record of the task that came"},
    {"ofOneTime", &Remarks::ofOneTime, "switch shares its time with others and may have exchanged a task",
     "switches share their time with others and may have exchanged a task"},
    {"eventsAtSwitch", &Remarks::eventsAtSwitch,
     "task event has the time of a switch and may have taken a record of it",
     "task events have the time of a switch and may have taken a record of it"},
    {"prologsRead", &Remarks::prologsRead, "prolog reads as a switch to the task that ran at the start",
     "prologs read as switches to the tasks that ran at the start"},
    {"dropped", &Remarks::dropped, "entry reads as the begin or end of its section, and is dropped",
     "entries read as begin or end of their section, and are dropped"},
    {"outside", &Remarks::outside, "record lies outside the period of the log",
     "records lie outside the period of the log"},
};

const char* Plural(std::uint64_t count) { return count == 1 ? "" : "s"; }

class VerifyText : public VerifyFormat {
 public:
  explicit VerifyText(fmt::memory_buffer& out) : out_(out) {}

  void Add(const VerifiedFile& file) override {
    Print("{}: {}\n", SafeText(file.path), file.findings.fault ? "faulty" : "sound");
    if (file.findings.fault) return AddFault(*file.findings.fault, file.isReadable);
    const std::size_t sections = file.findings.sections.size();
    Print("  version       0x{:04X}\n", file.findings.header.Version());
    Print("  holds         {} record{} in {} section{}\n", file.findings.records,
          Plural(file.findings.records), sections, Plural(sections));
    for (const RemarkKind& kind : remarkKinds) AddRemark(kind, (*file.remarks).*kind.remark);
  }

 private:
  template <class... Values>
  void Print(fmt::format_string<Values...> format, Values&&... values) {
    cli::Print(out_, format, std::forward<Values>(values)...);
  }

  void AddFault(const Fault& fault, bool isReadable) {
    Print("  offset        {} (0x{:X})\n", fault.offset, fault.offset);
    Print("  field         {}\n", SafeText(fault.field));
    Print("  found         {}\n", SafeText(fault.found));
    Print("  expected      {}\n", SafeText(fault.expected));
    Print("  a reader      {}\n", isReadable ? "takes the file all the same" : "refuses the file");
  }

  void AddRemark(const RemarkKind& kind, const Remark& remark) {
    if (remark.count == 0) return;
    Print("  remark        {} {}; the first at {} ticks\n", remark.count,
          remark.count == 1 ? kind.one : kind.many, remark.firstTime);
  }

  fmt::memory_buffer& out_;
};

class VerifyJson : public VerifyFormat {
 public:
  explicit VerifyJson(fmt::memory_buffer& out) : json_(out) {
    json_.BeginObject();
    json_.Key("schema").Count(1);
    json_.Key("files").BeginArray();
  }

  void Add(const VerifiedFile& file) override {
    const taskfile::Findings& findings = file.findings;
    json_.BeginRow();
    json_.Key("file").Text(file.path);
    json_.Key("sound").Bool(!findings.fault);
    json_.Key("readable").Bool(file.isReadable);
    json_.Key("version");
    findings.fault ? json_.Null() : json_.Text(fmt::format("0x{:04X}", findings.header.Version()));
    json_.Key("sections");
    findings.fault ? json_.Null() : json_.Count(findings.sections.size());
    json_.Key("records");
    findings.fault ? json_.Null() : json_.Count(findings.records);
    json_.Key("fault");
    findings.fault ? AddFault(*findings.fault) : json_.Null();
    json_.Key("remarks").BeginArray();
    if (file.remarks)
      for (const RemarkKind& kind : remarkKinds) AddRemark(kind, (*file.remarks).*kind.remark);
    json_.EndArray();
    json_.EndObject();
  }

  void End() override { json_.EndRows(); }

 private:
  void AddFault(const Fault& fault) {
    json_.BeginObject();
    json_.Key("offset").Count(fault.offset);
    json_.Key("field").Text(fault.field);
    json_.Key("found").Text(fault.found);
    json_.Key("expected").Text(fault.expected);
    json_.EndObject();
  }

  void AddRemark(const RemarkKind& kind, const Remark& remark) {
    if (remark.count == 0) return;
    json_.BeginObject();
    json_.Key("kind").Text(kind.key);
    json_.Key("count").Count(remark.count);
    json_.Key("firstTicks").Ticks(remark.firstTime);
    json_.EndObject();
  }

  JsonWriter json_;
};

}  // namespace

std::unique_ptr<VerifyFormat> MakeVerifyText(fmt::memory_buffer& out) {
  return std::make_unique<VerifyText>(out);
}

std::unique_ptr<VerifyFormat> MakeVerifyJson(fmt::memory_buffer& out) {
  return std::make_unique<VerifyJson>(out);
}

}  // namespace cli
