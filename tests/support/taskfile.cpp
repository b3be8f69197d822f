// Builds TaskLog files and keeps them in temporary places.
#include "support/taskfile.h"

#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

ByteWriter& ByteWriter::Integer(std::uint64_t value, int size) {
  for (int i = 0; i < size; ++i) bytes_.push_back(static_cast<std::uint8_t>(value >> 8 * i));
  return *this;
}

ByteWriter& ByteWriter::Raw(const std::string& text) {
  bytes_.insert(bytes_.end(), text.begin(), text.end());
  return *this;
}

ByteWriter& ByteWriter::Text(const std::string& text) {
  U32(static_cast<std::uint32_t>(text.size() + 1)).Raw(text);
  return Integer(0, 1);
}

ByteWriter& ByteWriter::Header(const FileHeader& header, std::uint32_t taskSections) {
  Raw("TaskLogger").U16(header.baseVersion).U16(header.fileVersion);
  U64(header.startTime).U64(header.stopTime);
  return U32(header.tickRate).U32(header.divisor).U32(taskSections);
}

ByteWriter& ByteWriter::Section(const FileSection& section) {
  Text(section.name).U32(section.priority).U32(static_cast<std::uint32_t>(section.timeSlice));
  U32(static_cast<std::uint32_t>(section.records.size()));
  for (const FileRecord& record : section.records) {
    U32(record.koType).U32(record.id).U64(record.timestamp);
    if (record.name) Text(record.name);
  }
  return *this;
}

Bytes TaskFile(const FileHeader& header, const std::vector<FileSection>& tasks,
               const std::optional<std::vector<FileRecord>>& stamps,
               const std::optional<std::vector<FileRecord>>& events) {
  ByteWriter writer;
  writer.Header(header, static_cast<std::uint32_t>(tasks.size()));
  for (const FileSection& task : tasks) writer.Section(task);
  if (stamps) writer.Section({"Stamps", 0, 0, *stamps});
  if (events) writer.Section({"Events", 0, 0, *events});
  return writer.Result();
}

TempFile::TempFile() {
  static std::atomic<int> count = 0;
  const std::string name = "tasklog_" + std::to_string(getpid()) + "_" + std::to_string(++count);
  path_ = (std::filesystem::temp_directory_path() / name).string();
}

TempFile::TempFile(const Bytes& content) : TempFile() {
  std::ofstream stream(path_, std::ios::binary);
  stream.write(reinterpret_cast<const char*>(content.data()), static_cast<std::streamsize>(content.size()));
  if (!stream.flush()) throw std::runtime_error("cannot write " + path_);
}

TempFile::~TempFile() {
  std::error_code ignored;
  std::filesystem::remove(path_, ignored);
}

Bytes ReadBytes(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  if (!stream) throw std::runtime_error("cannot read " + path);
  return Bytes(std::istreambuf_iterator<char>(stream), {});
}

Bytes ReadHex(const std::string& pathBelowTests) {
  const Bytes text = ReadBytes(TASKLOG_TESTS_DIR "/" + pathBelowTests);
  Bytes bytes;
  for (auto at = text.begin(); at != text.end(); ++at) {
    if (*at == '#') {
      while (*at != '\n') ++at;
    } else if (*at == '"') {
      while (*++at != '"') bytes.push_back(*at);
    } else if (*at > ' ') {
      bytes.push_back(static_cast<std::uint8_t>(std::stoi(std::string(at, at + 2), nullptr, 16)));
      ++at;
    }
  }
  return bytes;
}
