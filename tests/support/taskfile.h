// TaskLog files, byte by byte, of any version and with any mistake: docs/file-format.md.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

using Bytes = std::vector<std::uint8_t>;

struct FileHeader {
  std::uint16_t baseVersion = 0x0103;
  std::uint16_t fileVersion = 0x0104;
  std::uint64_t startTime = 1000;
  std::uint64_t stopTime = 5000;
  std::uint32_t tickRate = 1000000;
  std::uint32_t divisor = 1;
};

struct FileRecord {
  std::uint32_t koType;
  std::uint32_t id;
  std::uint64_t timestamp;
  const char* name = nullptr;  // written unless null, whatever the Ko type
};

struct FileSection {
  std::string name;
  std::uint32_t priority = 0;
  std::int32_t timeSlice = 0;
  std::vector<FileRecord> records = {};
};

// Appends little-endian integers and strings.
class ByteWriter {
 public:
  ByteWriter& U16(std::uint16_t value) { return Integer(value, 2); }
  ByteWriter& U32(std::uint32_t value) { return Integer(value, 4); }
  ByteWriter& U64(std::uint64_t value) { return Integer(value, 8); }
  ByteWriter& Raw(const std::string& text);
  ByteWriter& Text(const std::string& text);  // length with the NUL, characters, NUL
  ByteWriter& Header(const FileHeader& header, std::uint32_t taskSections);
  ByteWriter& Section(const FileSection& section);

  const Bytes& Result() const { return bytes_; }

 private:
  ByteWriter& Integer(std::uint64_t value, int size);

  Bytes bytes_;
};

// A file of task sections; the Stamps and the Events section follow when given.
Bytes TaskFile(const FileHeader& header, const std::vector<FileSection>& tasks,
               const std::optional<std::vector<FileRecord>>& stamps = std::vector<FileRecord>{},
               const std::optional<std::vector<FileRecord>>& events = std::vector<FileRecord>{});

// A file in the temporary folder, removed with this object.
class TempFile {
 public:
  TempFile();  // not yet existing
  explicit TempFile(const Bytes& content);
  ~TempFile();
  TempFile(const TempFile&) = delete;
  TempFile& operator=(const TempFile&) = delete;

  const std::string& Path() const { return path_; }
  const char* CPath() const { return path_.c_str(); }

 private:
  std::string path_;
};

Bytes ReadBytes(const std::string& path);

// Reads a file below tests/ that spells bytes: pairs of hexadecimal digits and "text", with comments from #
// to the end of the line.
Bytes ReadHex(const std::string& pathBelowTests);
