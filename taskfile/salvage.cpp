// What of the header stands, which sections there are, and what of them is kept.
#include "taskfile/salvage.h"

#include <utility>

#include "taskfile/keeper.h"

namespace taskfile {
namespace {

void Join(std::vector<LostTime>& times) {
  std::sort(times.begin(), times.end(), [](const LostTime& a, const LostTime& b) { return a.from < b.from; });
  std::vector<LostTime> joined;
  for (const LostTime& time : times) {
    if (!joined.empty() && time.from <= joined.back().to)
      joined.back().to = std::max(joined.back().to, time.to);
    else
      joined.push_back(time);
  }
  times.swap(joined);
}

void NoteMended(std::vector<std::string>& mended, const char* field, u64 was, u64 is) {
  mended.push_back(std::string(field) + " " + std::to_string(was) + " is now " + std::to_string(is));
}

// Testpoints and timing issues have a section in every file whose version knows them.
void CompleteSections(Salvage& salvage) {
  const auto has = [&](Kind kind) {
    return std::any_of(salvage.sections.begin(), salvage.sections.end(),
                       [&](const KeptSection& kept) { return kept.section.kind == kind; });
  };
  const Layout layout(salvage.header.Version());
  if (layout.hasStamps && !has(Kind::stamps)) {
    const auto place = salvage.sections.begin() + static_cast<std::ptrdiff_t>(salvage.foundTasks);
    salvage.sections.insert(place, KeptSection{.section = {.kind = Kind::stamps}});
  }
  if (layout.hasEvents && !has(Kind::events)) salvage.sections.push_back({.section = {.kind = Kind::events}});
}

// The header as far as it makes sense, and why it is not as it stands.
Header MendedHeader(std::string_view bytes, std::vector<std::string>& mended) {
  Header header = Header::In(bytes);
  if (!bytes.starts_with(magic)) mended.push_back("magic is now '" + std::string(magic) + "'");
  const u16 base = header.baseVersion;
  const auto isWhole = [&](u32 version) {
    const auto sections = SectionsOf(bytes, Layout(version), header.taskCount);
    return sections && sections->end == bytes.size();
  };
  // Of two versions that differ the older one may be the true one of both.
  const u16 older = std::min(header.baseVersion, header.fileVersion);
  if (Layout(older).EventSections() < 2 && !isWhole(header.Version()) && isWhole(older)) {
    NoteMended(mended, "version", header.Version(), older);
    header.baseVersion = header.fileVersion = older;
  } else if (base > newestBaseVersion) {
    header.baseVersion = newestBaseVersion;
    NoteMended(mended, "base version", base, header.baseVersion);
  }
  if (header.divisor == 0) {
    header.divisor = 1;
    NoteMended(mended, "tick rate divisor", 0, 1);
  }
  return header;
}

u64 BytesOf(const std::vector<FoundSection>& sections) {
  u64 bytes = 0;
  for (const FoundSection& found : sections)
    for (const Span& area : found.areas) bytes += area.Size();
  return bytes;
}

// Where the newest version finds more than an older one that the header states, the header is wrong.
std::vector<FoundSection> FindInBestVersion(std::string_view bytes, Salvage& salvage, std::vector<Span>& lost,
                                            const Progress& progress) {
  Header& header = salvage.header;
  auto found = FindSections(bytes, header, lost, progress);
  if (Layout(header.Version()).hasEvents) return found;
  Header newest = header;
  newest.baseVersion = newestBaseVersion;
  newest.fileVersion = newestVersion;
  std::vector<Span> lostOfNewest;
  auto ofNewest = FindSections(bytes, newest, lostOfNewest, progress);
  if (BytesOf(ofNewest) <= BytesOf(found)) return found;
  NoteMended(salvage.mended, "version", header.Version(), newest.Version());
  header = newest;
  lost.swap(lostOfNewest);
  return ofNewest;
}

// The time of the first record, as far as there is one: with the prolog every section begins at the start.
std::optional<u64> TimeOfFirst(std::string_view bytes) {
  if (!LiesIn(bytes, headerSize, sizeof(u32))) return std::nullopt;
  const u32 nameSize = Load<u32>(bytes, headerSize);
  const u64 at = headerSize + u64{sectionHeaderSize} + nameSize;
  if (nameSize > longestName || !LiesIn(bytes, at, recordSize)) return std::nullopt;
  return RecordAt(bytes, static_cast<std::size_t>(at), Layout(0)).time;
}

class Saver {
 public:
  Saver(std::string_view bytes, const Progress& progress) : bytes_(bytes), progress_(progress) {}

  // The period says what is plausible, and what is found says what the period is.
  Salvage Run() {
    salvage_.header = MendedHeader(bytes_, salvage_.mended);
    Find();
    if (!lost_.empty() || found_.empty()) TryOtherStart();
    if (found_.empty() && bytes_.size() > headerSize) throw NothingLeft();
    constexpr int mostRounds = 3;
    for (int round = 1; !Keep() && round < mostRounds; ++round) Find();
    Finish();
    return std::move(salvage_);
  }

 private:
  void Find() {
    lost_.clear();
    found_ = FindInBestVersion(bytes_, salvage_, lost_, [this](double done) { progress_(done * 0.75); });
  }
  bool BeginsAtStart() const {
    return std::any_of(found_.begin(), found_.end(), [this](const FoundSection& found) {
      return !found.areas.empty() &&
             RecordAt(bytes_, found.areas.front().begin, Layout(0)).time == salvage_.header.startTime;
    });
  }
  // Keeps what finds more.
  void TryOtherStart() {
    const auto start = TimeOfFirst(bytes_);
    if (!start || *start == salvage_.header.startTime || BeginsAtStart()) return;
    const Salvage before = salvage_;
    const auto foundBefore = found_;
    const auto lostBefore = lost_;
    Mend("start time", salvage_.header.startTime, *start);
    Find();
    if (BytesOf(found_) > BytesOf(foundBefore)) return;
    salvage_ = before;
    found_ = foundBefore;
    lost_ = lostBefore;
  }
  // False when the header is not the one by which the records were judged.
  bool Keep() {
    salvage_.sections.clear();
    salvage_.lostTimes.clear();
    PeriodVotes votes(salvage_.header, isDamaged_);
    Keeper keeper(bytes_, salvage_.header, votes, salvage_.lostTimes);
    for (const FoundSection& section : found_) {
      salvage_.sections.push_back(keeper.Keep(section));
      progress_(0.75);
    }
    const auto start = votes.Start();
    const auto stop = votes.Stop();
    if (start) Mend("start time", salvage_.header.startTime, *start);
    if (stop) Mend("stop time", salvage_.header.stopTime, *stop);
    return !start && !stop;
  }
  void Mend(const char* field, u64& value, u64 is) {
    NoteMended(salvage_.mended, field, std::exchange(value, is), is);
  }
  void Finish();

  std::string_view bytes_;
  const Progress& progress_;
  Salvage salvage_;
  bool isDamaged_ = Check(bytes_, [](double) {}).fault.has_value();
  std::vector<Span> lost_;
  std::vector<FoundSection> found_;
};

void Saver::Finish() {
  Header& header = salvage_.header;
  salvage_.keptBytes = headerSize;
  for (const KeptSection& kept : salvage_.sections) {
    salvage_.foundTasks += kept.section.kind == Kind::task ? 1 : 0;
    if (kept.section.at > 0) salvage_.keptBytes += kept.section.recordsAt - kept.section.at;
    for (const Span& span : kept.spans) salvage_.keptBytes += span.Size();
  }
  const u32 stated = std::exchange(header.taskCount, static_cast<u32>(salvage_.foundTasks));
  if (stated != header.taskCount) NoteMended(salvage_.mended, "task count", stated, header.taskCount);
  const bool isLost =
      std::any_of(lost_.begin(), lost_.end(), [](const Span& span) { return span.Size() >= recordSize; });
  if (isLost || stated > header.taskCount) salvage_.lostTimes.push_back({header.startTime, header.stopTime});
  Join(salvage_.lostTimes);
  CompleteSections(salvage_);
}

}  // namespace

Salvage Save(std::string_view bytes, const Progress& progress) {
  if (bytes.size() < headerSize) throw NothingLeft();
  return Saver(bytes, progress).Run();
}

}  // namespace taskfile
