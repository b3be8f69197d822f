// The model saves and reads TaskLog files, field by field.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <new>

#include "support/plainlog.h"
#include "tasklog/tasklog.h"

namespace plain {
namespace {

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

// Thrown where reading or writing fails.
struct Stop {
  Status status;
};

constexpr char magic[] = {'T', 'a', 's', 'k', 'L', 'o', 'g', 'g', 'e', 'r'};
constexpr std::uint16_t baseVersion = 0x0103;
constexpr std::uint16_t fileVersion = 0x0104;

// ---- Writing ----

void Put(std::FILE* file, const void* bytes, std::size_t count) {
  if (std::fwrite(bytes, 1, count, file) != count) throw Stop{TLErrFileWrite};
}

template <class Integer>
void Put(std::FILE* file, Integer value) {
  unsigned char bytes[sizeof value];
  for (std::size_t i = 0; i < sizeof value; ++i) bytes[i] = static_cast<unsigned char>(value >> 8 * i);
  Put(file, bytes, sizeof bytes);
}

void Put(std::FILE* file, const std::string& text) {
  Put(file, static_cast<std::uint32_t>(text.size() + 1));
  Put(file, text.c_str(), text.size() + 1);
}

// A section while it is written. `owner` is its task, or null in the last two sections.
class Section {
 public:
  Section(std::FILE* file, const Log& log, const Category* owner, const std::string& name)
      : file_(file), log_(log), owner_(owner) {
    Put(file, name);
    Put(file, owner ? owner->priority : 0);
    Put(file, owner ? static_cast<std::uint32_t>(owner->timeSlice) : 0);
    if (std::fgetpos(file, &countAt_) != 0) throw Stop{TLErrFileWrite};
    Put(file, count_);
  }

  void Add(const Entry& entry) {
    koType_ = KoType(entry);
    constexpr std::uint32_t prologs[] = {3, 3, 4, 3, 2, 2, 2, 3, 3};
    if (count_ == 0 && entry.timestamp != log_.startTime) Record(prologs[koType_], 0, log_.startTime);
    Record(koType_, entry.slots[0] ? entry.slots[0]->id : 0, entry.timestamp);
    if (entry.type >= 6) Put(file_, entry.slots[0] ? entry.slots[0]->name : std::string());
  }

  void Close() {
    if (owner_) PutEpilog();
    if (std::fsetpos(file_, &countAt_) != 0) throw Stop{TLErrFileWrite};
    Put(file_, count_);
    if (std::fseek(file_, 0, SEEK_END) != 0) throw Stop{TLErrFileWrite};
  }

 private:
  std::uint32_t KoType(const Entry& entry) const {
    constexpr std::uint32_t ofSlot0[] = {2, 2, 0, 1, 2, 2};
    constexpr std::uint32_t ofOthers[] = {5, 3, 0, 4, 4, 6, 7, 8};
    return owner_ && entry.slots[0] == owner_ ? ofSlot0[entry.type] : ofOthers[entry.type];
  }

  void PutEpilog() {
    if (count_ == 0) Record(koType_ = 3, 0, log_.startTime);
    constexpr std::uint32_t epilogs[] = {2, 3, 3, 1, 2, 2, 2};
    Record(epilogs[koType_], 0, log_.stopTime);
  }

  void Record(std::uint32_t koType, std::uint32_t id, std::uint64_t timestamp) {
    Put(file_, koType);
    Put(file_, id);
    Put(file_, timestamp);
    ++count_;
  }

  std::FILE* file_;
  const Log& log_;
  const Category* owner_;
  std::fpos_t countAt_ = {};
  std::uint32_t count_ = 0;
  std::uint32_t koType_ = 0;  // of the last entry
};

void WriteSection(std::FILE* file, const Log& log, const char* name, std::uint64_t types) {
  Section section(file, log, nullptr, name);
  Cursor cursor = log.Entries({nullptr, types});
  while (const Entry* entry = cursor.Next()) section.Add(*entry);
  section.Close();
}

void WriteSections(std::FILE* file, const Log& log) {
  for (const Category* owner : log.Categories(TL_CATS_TASKS)) {
    Section section(file, log, owner, owner->name);
    Cursor cursor = log.Entries({owner, TL_LOGS_SWITCHES | TL_LOGS_TASK_EVENTS});
    while (const Entry* entry = cursor.Next()) {
      if (entry->type != TLLogTaskEvent || entry->slots[0] == owner) section.Add(*entry);
    }
    section.Close();
  }
  WriteSection(file, log, "Stamps", TL_LOGS_TESTPOINTS);
  WriteSection(file, log, "Events", TL_LOGS_TIMING_ISSUES);
}

// ---- Reading ----

void Get(std::FILE* file, void* bytes, std::size_t count) {
  if (std::fread(bytes, 1, count, file) == count) return;
  throw Stop{std::ferror(file) ? TLErrFileRead : TLErrFileInvalid};
}

template <class Integer>
Integer Get(std::FILE* file) {
  unsigned char bytes[sizeof(Integer)];
  Get(file, bytes, sizeof bytes);
  Integer value = 0;
  for (std::size_t i = sizeof bytes; i-- > 0;) value = static_cast<Integer>(value << 8 | bytes[i]);
  return value;
}

std::string GetText(std::FILE* file) {
  char bytes[256];
  const auto length = Get<std::uint32_t>(file);
  if (length > sizeof bytes) throw Stop{TLErrFileInvalid};
  Get(file, bytes, length);
  const std::size_t most = std::min<std::size_t>(length, 255);
  return std::string(bytes, strnlen(bytes, most));
}

}  // namespace

Status Log::SaveAsFile(const char* path) const try {
  const File file(path ? std::fopen(path, "wb") : nullptr, std::fclose);
  if (!file) return TLErrFileOpen;
  Put(file.get(), magic, sizeof magic);
  Put(file.get(), baseVersion);
  Put(file.get(), fileVersion);
  Put(file.get(), startTime);
  Put(file.get(), stopTime);
  Put(file.get(), static_cast<std::uint32_t>(ticksPerSecond));
  Put(file.get(), std::uint32_t{1});
  Put(file.get(), static_cast<std::uint32_t>(Categories(TL_CATS_TASKS).size()));
  WriteSections(file.get(), *this);
  return TL_OK;
} catch (const Stop& stop) {
  return stop.status;
} catch (const std::bad_alloc&) {
  return TLErrOutOfMemory;
}

// One append from a file. What it reads gathers in a map, by time, before any of it reaches the log.
class Log::FileAppend {
 public:
  FileAppend(Log& log, std::FILE* file) : log_(log), file_(file) {}

  void Run() {
    const std::uint32_t tasks = ReadHeader();
    for (std::uint32_t i = 0; i < tasks; ++i) ReadSection(task);
    if (version_ > 0x0100) ReadSection(testpoint);
    if (version_ > 0x0102) ReadSection(timingIssue);
    std::vector<Entry> read;
    for (const auto& [time, entry] : map_) read.push_back(entry);
    std::vector<Entry> merged;
    std::merge(log_.entries.begin(), log_.entries.end(), read.begin(), read.end(), std::back_inserter(merged),
               [](const Entry& a, const Entry& b) { return a.timestamp < b.timestamp; });
    log_.entries = std::move(merged);
    log_.FillInOldTasks();
  }

 private:
  struct Record {
    std::uint8_t koType;
    std::uint32_t id;
    std::uint64_t timestamp;
    std::string name;
  };

  // Returns the number of task sections.
  std::uint32_t ReadHeader() {
    char bytes[sizeof magic];
    Get(file_, bytes, sizeof bytes);
    if (std::memcmp(bytes, magic, sizeof magic) != 0) throw Stop{TLErrFileInvalid};
    const auto base = Get<std::uint16_t>(file_);
    version_ = std::max(base, Get<std::uint16_t>(file_));
    if (base > baseVersion) throw Stop{TLErrFileVersion};
    log_.startTime = Get<std::uint64_t>(file_);
    log_.stopTime = Get<std::uint64_t>(file_);
    const std::uint64_t rate = Get<std::uint32_t>(file_);
    const auto divisor = Get<std::uint32_t>(file_);
    if (divisor == 0) throw Stop{TLErrFileInvalid};
    log_.ticksPerSecond = rate / divisor;
    return Get<std::uint32_t>(file_);
  }

  void ReadSection(Kind kind) {
    const std::string name = GetText(file_);
    const auto priority = Get<std::uint32_t>(file_);
    const auto timeSlice = static_cast<std::int32_t>(Get<std::uint32_t>(file_));
    const auto count = Get<std::uint32_t>(file_);
    Category* owner = kind == task ? log_.FindOrCreate({task, name, 0, priority, timeSlice}) : nullptr;
    for (std::uint32_t i = 0; i < count; ++i) {
      const Record record = ReadRecord();
      const bool prolog =
          i == 0 && record.timestamp == log_.startTime && record.koType >= 3 && record.koType <= 6;
      const bool epilog = i > 0 && i == count - 1 && record.timestamp == log_.stopTime;
      if (prolog || epilog) continue;
      if (kind == task && record.koType <= 6) AddTaskRecord(record, owner);
      if (kind == testpoint && record.koType == 7) {
        New(record.timestamp, 6).slots[0] = log_.FindOrCreate({testpoint, record.name, record.id});
      }
      if (kind == timingIssue && record.koType == 8) {
        New(record.timestamp, 7).slots[0] =
            log_.FindOrCreate({timingIssue, record.name, TimingIssueId(record.name)});
      }
    }
  }

  Record ReadRecord() {
    Record record;
    record.koType = Get<std::uint8_t>(file_);
    char ignored[3];
    Get(file_, ignored, sizeof ignored);
    record.id = Get<std::uint32_t>(file_);
    record.timestamp = Get<std::uint64_t>(file_);
    const bool named = (record.koType == 7 && version_ > 0x0101) || (record.koType == 8 && version_ > 0x0102);
    if (named) record.name = GetText(file_);
    return record;
  }

  void AddTaskRecord(const Record& record, Category* owner) {
    const bool inSlot0 = record.koType <= 2;
    Entry& entry = record.koType == 0 ? New(record.timestamp, 2) : Find(record.timestamp, inSlot0 ? 0 : 1);
    if (record.koType == 1 && entry.type == 4) entry.type = 3;
    if (record.koType == 3) entry.type = 1;
    if (record.koType == 5) entry.type = 0;
    if (record.koType == 6) entry.type = 5;
    entry.slots[inSlot0 ? 0 : 1] = owner;
    Category* subject = entry.slots[0];
    if (version_ > 0x0103 && record.id != 0 && subject && subject->kind == task) subject->id = record.id;
  }

  Entry& New(std::uint64_t time, std::uint32_t type) { return map_.emplace(time, Entry{type, time})->second; }

  // The first entry of that time with the slot still empty, or a new one.
  Entry& Find(std::uint64_t time, int slot) {
    const auto [begin, end] = map_.equal_range(time);
    for (auto known = begin; known != end; ++known) {
      if (!known->second.slots[slot]) return known->second;
    }
    return New(time, 4);
  }

  Log& log_;
  std::FILE* file_;
  std::uint16_t version_ = 0;  // the larger of the two
  std::multimap<std::uint64_t, Entry> map_;
};

Status Log::AppendFromFile(const char* path) try {
  const File file(path ? std::fopen(path, "rb") : nullptr, std::fclose);
  if (!file) return TLErrFileOpen;
  FileAppend(*this, file.get()).Run();
  return TL_OK;
} catch (const Stop& stop) {
  return stop.status;
} catch (const std::bad_alloc&) {
  return TLErrOutOfMemory;
}

}  // namespace plain
