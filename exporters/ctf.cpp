#include "ctf.h"

#include "ctfpackets.h"
#include "entries.h"
#include "labels.h"

namespace exporters {
namespace {

constexpr const char* eventNames[] = {"switch0", "switch1", "event",     "switch3",
                                      "switch4", "switch5", "testpoint", "issue"};

class Ctf : public Exporter {
 public:
  explicit Ctf(Files& files) : files_(files) {}

  void Add(const Source& source) override {
    rate_.Enter(source);
    const std::vector<std::uint32_t> numbers = NumberNames(source.lane.Names());
    const auto numberOf = [&](analysis::SubjectIndex subject) {
      return subject < numbers.size() ? numbers[subject] : CtfNames::none;
    };
    CtfPackets packets(files_.Create(fmt::format("stream{}", lanes_)), lanes_);
    ++lanes_;
    const auto onEntry = [&](const analysis::Cursor& cursor) {
      char* fields = packets.Event(static_cast<std::uint8_t>(cursor.Type()), cursor.Time(), 8);
      fields = PutLittleEndian(fields, numberOf(cursor.Slot(0)));
      PutLittleEndian(fields, numberOf(cursor.Slot(1)));
    };
    ForEachEntry(source, onEntry, [&](const analysis::Gap& gap) { packets.Gap(gap.from, gap.to); });
    packets.Finish();
  }

  void End() override {
    std::string text = CtfHead(rate_.TicksPerSecond(), "  tracer_name = \"tasklog\";\n");
    text += names_.Description("category");
    for (std::size_t type = 0; type < std::size(eventNames); ++type)
      text += fmt::format(
          "event {{ name = \"{}\"; id = {}; stream_id = 0; fields := struct {{ enum category subject; enum "
          "category running; }}; }};\n",
          eventNames[type], type);
    WriteCtfDescription(files_, text);
  }

 private:
  std::vector<std::uint32_t> NumberNames(const analysis::Subjects& subjects) {
    std::vector<std::uint32_t> numbers;
    for (const analysis::Task& task : subjects.Tasks()) numbers.push_back(names_.NumberOf(task.name));
    for (const analysis::MarkSubject& mark : subjects.MarkSubjects())
      numbers.push_back(names_.NumberOf(mark.name));
    return numbers;
  }

  Files& files_;
  CtfRate rate_;
  CtfNames names_;
  std::uint32_t lanes_ = 0;
};

}  // namespace

std::unique_ptr<Exporter> MakeCtf(Files& files) { return std::make_unique<Ctf>(files); }

}  // namespace exporters
