// A log of the library and the model of it, led through the same operations. Each operation is a check: both
// give the same status, call the target alike, report the same progress and write the same bytes.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "support/dump.h"
#include "support/plainlog.h"
#include "support/scriptedtarget.h"
#include "support/taskfile.h"

namespace fuzz {

// Sets a target up; once for the library and once for the model, so that both meet the same.
using Script = std::function<void(ScriptedTarget&)>;

// How a target is asked.
struct Request {
  std::string target = "ctl";
  std::int32_t kernel = -1;
  bool reports = true;                  // with a progress callback
  std::optional<std::size_t> cancelAt;  // the report, counted from 0, that cancels
};

// What a query asks for. A category is named by its place in the log; none means any.
struct Question {
  std::optional<std::size_t> category;
  std::uint64_t types = 0;
  std::uint64_t from = 0;
  std::uint64_t to = UINT64_MAX;
};

class Mirror {
 public:
  std::uint32_t AppendFromTarget(const Script& script, const Request& request);
  std::uint32_t AppendFromFile(const char* path);
  std::uint32_t AppendFromFile(const Bytes& file);
  Bytes Save() const;

  // Both hold the same times, categories and entries, and the entries lie in time order. Due after each
  // append, before questions are asked.
  void RequireSame();

  // The entries and their count.
  void Ask(const Question& question) const;
  void AskForCategories(std::uint64_t kinds, const char* name) const;
  // A round of questions around the entries that the log holds.
  void AskAround() const;

  const plain::Log& Model() const { return model_; }

 private:
  void RequireSame(TLEntry library, const plain::Entry* model) const;  // null behind the last one

  LogPtr library_ = NewLog();
  plain::Log model_;
  std::vector<TLCategory> handles_;  // the library's categories, in the order of the model's
};

}  // namespace fuzz
