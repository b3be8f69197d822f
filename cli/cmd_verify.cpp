// tasklog verify: whether TaskLog files are whole.
#include "commandline.h"
#include "failure.h"
#include "longwork.h"
#include "signals.h"
#include "stdoutwriter.h"
#include "taskfile/remarks.h"
#include "text.h"

namespace cli {
namespace {

using taskfile::Fault;
using taskfile::Findings;
using taskfile::Remark;
using taskfile::Remarks;

const char* Plural(std::uint64_t count) { return count == 1 ? "" : "s"; }

void PrintFault(StdoutWriter& out, const Fault& fault, bool isReadable) {
  out.Print("  offset        {} (0x{:X})\n", fault.offset, fault.offset);
  out.Print("  field         {}\n", SafeText(fault.field));
  out.Print("  found         {}\n", SafeText(fault.found));
  out.Print("  expected      {}\n", SafeText(fault.expected));
  out.Print("  a reader      {}\n", isReadable ? "takes the file all the same" : "refuses the file");
}

void PrintRemark(StdoutWriter& out, const Remark& remark, const char* one, const char* many) {
  if (remark.count == 0) return;
  out.Print("  remark        {} {}; the first at {} ticks\n", remark.count, remark.count == 1 ? one : many,
            remark.firstTime);
}

void PrintRemarks(StdoutWriter& out, const Remarks& remarks) {
  PrintRemark(out, remarks.withoutLeft, "switch has no record of the task that left: its type reads as 4",
              "switches have no record of the task that left: their type reads as 4");
  PrintRemark(out, remarks.withoutCame, "switch has no record of the task that came",
              "switches have no record of the task that came");
  PrintRemark(out, remarks.ofOneTime, "switch shares its time with others and may have exchanged a task",
              "switches share their time with others and may have exchanged a task");
  PrintRemark(out, remarks.eventsAtSwitch,
              "task event has the time of a switch and may have taken a record of it",
              "task events have the time of a switch and may have taken a record of it");
  PrintRemark(out, remarks.prologsRead, "prolog reads as a switch to the task that ran at the start",
              "prologs read as switches to the tasks that ran at the start");
  PrintRemark(out, remarks.dropped, "entry reads as the begin or end of its section, and is dropped",
              "entries read as begin or end of their section, and are dropped");
  PrintRemark(out, remarks.outside, "record lies outside the period of the log",
              "records lie outside the period of the log");
}

// Whether the file is sound.
bool Verify(StdoutWriter& out, const std::string& path) {
  LongWork work("verifying " + SafeText(path));
  const std::string bytes = ReadWhole(path, work.Part(0, 0.4));
  const Findings findings = taskfile::Check(bytes, work.Part(0.4, 0.7));
  if (findings.fault) {
    work.Clear();
    out.Print("{}: faulty\n", SafeText(path));
    PrintFault(out, *findings.fault, taskfile::AsReaderTakesIt(bytes).has_value());
    return false;
  }
  const Remarks remarks = taskfile::FindRemarks(bytes, findings.header, findings.sections, work.Part(0.7, 1));
  work.Clear();
  out.Print("{}: sound\n", SafeText(path));
  out.Print("  version       0x{:04X}\n", findings.header.Version());
  out.Print("  holds         {} record{} in {} section{}\n", findings.records, Plural(findings.records),
            findings.sections.size(), Plural(findings.sections.size()));
  PrintRemarks(out, remarks);
  return true;
}

int VerifyAll(const std::vector<std::string>& paths) {
  StdoutWriter out;
  int exitCode = exitSuccess;
  for (const std::string& path : paths) {
    try {
      if (!Verify(out, path)) exitCode = exitFailure;
    } catch (const Failure& failure) {
      out.Finish();  // what was shown before comes before the message
      PrintError(failure.what());
      exitCode = exitFailure;
      if (StopRequests() > 0) break;
    }
  }
  out.Finish();
  return exitCode;
}

Declared Declare(CLI::App& app) {
  const auto paths = std::make_shared<std::vector<std::string>>();
  app.add_option("FILE", *paths, "TaskLog files")->required()->type_name("");
  return {[paths] { return VerifyAll(*paths); }};
}

}  // namespace

const Command verifyCommand{"verify", "Check that files are whole, and name the first fault",
                            "The exit code is 0 when all files are sound, else 1.\n\n"
                            "Examples:\n"
                            "  tasklog verify demo.tasklog\n"
                            "  tasklog verify demo-logs/*.tasklog",
                            Declare};

}  // namespace cli
