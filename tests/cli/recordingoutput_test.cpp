#include "recordingoutput.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "failure.h"

namespace cli {
namespace {

namespace fs = std::filesystem;

class RecordingOutputTest : public ::testing::Test {
 protected:
  RecordingOutputTest() : folder_(FolderOf(ResolvedPlace(::testing::TempDir() + "x"))) {}

  std::string In(const std::string& name) const { return folder_.Path() + "/" + name; }
  static void Fill(const RecordingOutput& output, const std::string& content) {
    for (std::size_t i = 0; i < output.Count(); ++i) std::ofstream(output.SavePath(i)) << content;
  }
  static std::string Read(const std::string& path) {
    std::string text;
    std::getline(std::ifstream(path), text, '\0');
    return text;
  }
  std::size_t Count() const {
    return static_cast<std::size_t>(std::distance(fs::recursive_directory_iterator(folder_.Path()), {}));
  }
  void TearDown() override { fs::remove_all(folder_.Path()); }

  TempFolder folder_;
};

TEST_F(RecordingOutputTest, TakesItsPlaceOnlyWhenCommitted) {
  std::ofstream(In("a")) << "old";
  {
    const RecordingOutput output = RecordingOutput::File(In("a"));
    Fill(output, "new");
    EXPECT_EQ(Read(In("a")), "old");
  }
  EXPECT_EQ(Count(), 1u);  // nothing is left beside it
  RecordingOutput output = RecordingOutput::File(In("a"));
  Fill(output, "new");
  output.Commit();
  EXPECT_EQ(Read(In("a")), "new");
  EXPECT_EQ(Count(), 1u);
}

TEST_F(RecordingOutputTest, FollowsLinksAndKeepsPermissions) {
  fs::create_directory(In("sub"));
  fs::create_symlink("sub/real", In("link"));
  RecordingOutput first = RecordingOutput::File(In("link"));
  first.Commit();
  EXPECT_TRUE(fs::is_symlink(In("link")));
  ::chmod(In("sub/real").c_str(), 0640);
  RecordingOutput second = RecordingOutput::File(In("link"));
  second.Commit();
  EXPECT_EQ(fs::status(In("sub/real")).permissions(), fs::perms{0640});
  fs::create_symlink("loop", In("loop"));
  EXPECT_THROW(RecordingOutput::File(In("loop")), Failure);
}

TEST_F(RecordingOutputTest, RefusesWhatIsInTheWay) {
  std::ofstream(In("file")) << "old";
  fs::create_directories(In("folder/a"));
  EXPECT_THROW(RecordingOutput::File(In("folder")), Failure);
  EXPECT_THROW(RecordingOutput::File(In("new/")), Failure);
  EXPECT_THROW(RecordingOutput::File(In("missing/new")), Failure);
  EXPECT_THROW(RecordingOutput::File("/dev/null"), Failure);
  EXPECT_THROW(RecordingOutput::Folder(In("file"), {"a"}), Failure);
  EXPECT_THROW(RecordingOutput::Folder(In("folder"), {"b", "a"}), Failure);
  EXPECT_THROW(RecordingOutput::Folder(In("missing/new"), {"a"}), Failure);
  EXPECT_EQ(Count(), 3u);
}

TEST_F(RecordingOutputTest, PutsAFolderInPlaceAsAWhole) {
  {
    const RecordingOutput output = RecordingOutput::Folder(In("out/"), {"a", "b"});
    Fill(output, "x");
    EXPECT_FALSE(fs::exists(In("out")));
  }
  EXPECT_EQ(Count(), 0u);
  RecordingOutput output = RecordingOutput::Folder(In("out/"), {"a", "b"});
  Fill(output, "x");
  output.Commit();
  EXPECT_EQ(Read(In("out/a")) + Read(In("out/b")), "xx");
  EXPECT_EQ(Count(), 3u);
}

TEST_F(RecordingOutputTest, MovesIntoAFolderThatCameMeanwhile) {
  RecordingOutput first = RecordingOutput::Folder(In("out"), {"a", "b"});
  RecordingOutput second = RecordingOutput::Folder(In("out"), {"a", "b"});
  Fill(first, "1");
  Fill(second, "2");
  first.Commit();
  second.Commit();
  EXPECT_EQ(Read(In("out/a")) + Read(In("out/b")), "22");
}

TEST_F(RecordingOutputTest, LeavesOtherFilesOfAnExistingFolderAlone) {
  fs::create_directory(In("out"));
  std::ofstream(In("out/notes")) << "mine";
  RecordingOutput output = RecordingOutput::Folder(In("out"), {"a"});
  Fill(output, "x");
  EXPECT_FALSE(fs::exists(In("out/a")));
  output.Commit();
  EXPECT_EQ(Read(In("out/a")), "x");
  EXPECT_EQ(Read(In("out/notes")), "mine");
  EXPECT_EQ(Count(), 3u);
}

}  // namespace
}  // namespace cli
