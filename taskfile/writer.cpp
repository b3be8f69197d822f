#include "taskfile/writer.h"

namespace taskfile {

void Writer::Put(const Header& header) {
  Put(magic);
  PutLittle(header.baseVersion);
  PutLittle(header.fileVersion);
  PutLittle(header.startTime);
  PutLittle(header.stopTime);
  PutLittle(header.tickRate);
  PutLittle(header.divisor);
  PutLittle(header.taskCount);
}

void Writer::BeginSection(std::string_view name, u32 priority, u32 timeSlice, u32 count) {
  PutLittle(static_cast<u32>(name.size() + 1));
  Put(name);
  block_ += '\0';
  PutLittle(priority);
  PutLittle(timeSlice);
  PutLittle(count);
  FlushFull();
}

void Writer::PutRecord(u32 koType, u32 id, u64 time) {
  PutLittle(koType);
  PutLittle(id);
  PutLittle(time);
  FlushFull();
}

void Writer::Put(std::string_view bytes) {
  if (bytes.size() >= fullBytes) {
    Flush();
    return sink_(bytes);
  }
  block_ += bytes;
  FlushFull();
}

void Writer::Flush() {
  sink_(block_);
  block_.clear();
}

}  // namespace taskfile
