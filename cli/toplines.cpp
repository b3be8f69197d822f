// The pictures of `tasklog top` as lines, one behind the other.
#include "signals.h"
#include "stdoutwriter.h"
#include "topscreen.h"

namespace cli {
namespace {

class TopLines : public TopOutput {
 public:
  explicit TopLines(const TopOrder& order) : order_(order) {}

  void Show(const std::deque<TopLogger>& loggers) override {
    table_.Take(loggers);
    StdoutWriter out;
    for (const TopLine& line : table_.Lines(order_)) out.Print("{}\n", line.text);
    out.Print("\n");
    out.Finish();
  }

  bool WaitUntil(std::chrono::steady_clock::time_point time) override {
    cli::WaitUntil(time);
    return StopRequests() == 0;
  }

 private:
  TopOrder order_;
  TopTable table_;
};

}  // namespace

std::unique_ptr<TopOutput> MakeTopLines(const TopOrder& order) { return std::make_unique<TopLines>(order); }

}  // namespace cli
