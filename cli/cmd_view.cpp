// tasklog view: the timeline page with recordings in it.
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <set>

#include "bounds.h"
#include "commandline.h"
#include "failure.h"
#include "outputplace.h"
#include "recording.h"
#include "stdoutwriter.h"
#include "taskfile/base64.h"
#include "taskfile/pack.h"
#include "tempfile.h"
#include "text.h"

extern char** environ;

namespace cli {
namespace {

namespace fs = std::filesystem;

struct Options {
  std::vector<std::string> logs;
  std::optional<std::string> from;
  std::optional<std::string> to;
  std::string output = "timeline.html";
  bool open = false;
};

// Where the page takes what is behind it; viewer/page.html has it once.
constexpr std::string_view place = "<!-- recording -->";

// Installed in share/tasklog beside the folder of the command; the build tree is arranged likewise.
std::string Template() {
  std::error_code error;
  const fs::path program = fs::read_symlink("/proc/self/exe", error);
  const fs::path path = program.parent_path().parent_path() / "share" / "tasklog" / "tasklog-viewer.html";
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    throw Failure("view: the page " + Quoted(path.string()) +
                  " is missing; it comes with the package, or with a build with -DTASKLOG_VIEWER=ON "
                  "(./dev demo makes one)");
  }
  std::string text{std::istreambuf_iterator<char>(file), {}};
  if (text.find(place) == std::string::npos)
    throw Failure("view: " + Quoted(path.string()) + " is not the page of this program; build it anew");
  return text;
}

// The files of all lanes and the metadata that lies beside them, each once.
std::vector<std::string> FilesOf(const std::vector<std::string>& logs) {
  std::set<std::string> files;
  std::set<std::string> beside;
  for (const Lane& lane : FindLanes(logs)) {
    if (lane.files.empty()) LoadLane(lane);  // says what is wrong
    for (const LaneFile& file : lane.files) {
      files.insert(file.path);
      beside.insert(MetadataOfFile(file.path));
      beside.insert(MetadataOfFolder(fs::path(file.path).parent_path().string()));
    }
  }
  for (const std::string& path : beside)
    if (IsMetadata(path)) files.insert(path);
  return {files.begin(), files.end()};
}

// As JSON in a script element: nothing ends the element early.
std::string InScript(std::string_view text) {
  std::string json = JsonString(text);
  for (std::size_t at = 0; (at = json.find('<', at)) != std::string::npos;) json.replace(at, 1, "\\u003c");
  return json;
}

std::string Arguments(const Options& options) {
  std::string json = "<script type=\"application/json\" id=\"recording\">{\"arguments\":[";
  const char* separator = "";
  for (const std::string& log : options.logs) json += std::exchange(separator, ",") + InScript(log);
  json += "]";
  if (options.from) json += ",\"from\":" + InScript(*options.from);
  if (options.to) json += ",\"to\":" + InScript(*options.to);
  return json + "}</script>\n";
}

// The name of a file in an attribute.
std::string Escaped(std::string_view bytes) {
  std::string text;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    const bool isPlain = std::isalnum(byte) || std::string_view("/._-").find(c) != std::string_view::npos;
    text += isPlain && byte < 0x80 ? std::string(1, c) : fmt::format("%{:02X}", byte);
  }
  return text;
}

class Page {
 public:
  explicit Page(const std::string& output)
      : template_(Template()), place_(PlaceOfFile(output)), file_(TempFile::InFolder(FolderOf(place_))) {}

  void Write(const Options& options) {
    const std::size_t at = template_.find(place);
    const std::vector<std::string> files = FilesOf(options.logs);
    for (const std::string& path : files) {
      std::error_code error;
      if (fs::equivalent(path, place_, error)) throw InTheWay(options.output, "it is one of the logs");
    }
    file_.Write(std::string_view(template_).substr(0, at));
    file_.Write(Arguments(options));
    for (const std::string& path : files) WriteFile(path);
    file_.Write(std::string_view(template_).substr(at + place.size()));
    file_.Finish(place_);
    file_.RenameTo(place_);
    SyncFolder(FolderOf(place_));
  }

 private:
  // A portion is a line of the element.
  void WriteFile(const std::string& path) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) throw Failure::System("reading " + Quoted(path), errno);
    std::error_code unknown;
    file_.Write(fmt::format("<script type=\"text/plain\" data-path=\"{}\" data-size=\"{}\">\n", Escaped(path),
                            fs::file_size(path, unknown)));
    taskfile::Packer packer;
    ssize_t count = 0;
    while ((count = ::read(fd, portion_.data(), portion_.size())) > 0) {
      const std::string_view bytes(portion_.data(), static_cast<std::size_t>(count));
      file_.Write(taskfile::Base64Of(packer.Pack(bytes)));
      file_.Write("\n");
    }
    const int error = errno;
    ::close(fd);
    if (count < 0) throw Failure::System("reading " + Quoted(path), error);
    file_.Write("</script>\n");
  }

  std::string template_;
  std::string place_;
  TempFile file_;
  std::vector<char> portion_ = std::vector<char>(std::size_t{1} << 20);
};

// By the program that the desktop opens files with.
void OpenPage(const std::string& path) {
  std::string program = "xdg-open";
  std::string argument = fs::absolute(path).string();
  char* arguments[] = {program.data(), argument.data(), nullptr};
  pid_t child = 0;
  const int error = ::posix_spawnp(&child, program.c_str(), nullptr, nullptr, arguments, environ);
  if (error != 0) throw Failure::System("opening " + Quoted(path) + " with xdg-open", error);
  int status = 0;
  ::waitpid(child, &status, 0);
  if (status != 0) throw Failure("opening " + Quoted(path) + ": xdg-open failed; open it by hand");
}

int View(const Options& options) {
  CheckedBound("--from", options.from);
  CheckedBound("--to", options.to);
  Page(options.output).Write(options);
  StdoutWriter out;
  out.Print("{}\n", SafeText(options.output));
  out.Finish();
  if (options.open) OpenPage(options.output);
  return exitSuccess;
}

Declared Declare(OptionList& list) {
  const auto options = std::make_shared<Options>();
  list.AddRequired("LOG", &options->logs, "TaskLog files, or folders of recordings");
  list.Add("--from", &options->from,
           "The first time that the page shows at first: 1.5s from the\nstart, or raw ticks", "TIME");
  list.Add("--to", &options->to, "The last time, written likewise", "TIME");
  list.Add("-o,--output", &options->output, "The page (default: timeline.html)", "FILE");
  list.Add("--open", &options->open, "Open it in the browser");
  return {[options] { return View(*options); }};
}

}  // namespace

const Command viewCommand{
    "view", "Write a page for the browser that shows what ran when",
    "The page is one file and needs no network: attach it, send it, open it anywhere.\n\n"
    "Examples:\n"
    "  tasklog view demo-logs -o timeline.html --open\n"
    "  tasklog view demo.tasklog --from 1.5s --to 1.6s",
    Declare};

}  // namespace cli
