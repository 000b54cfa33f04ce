#include "tests/contracts/FileManagerContract.h"
#include "tests/fakes/FakeFileManager.h"

namespace tavo {
namespace {

class FakeWorld final : public FileManagerWorld {
public:
    FileManager& files() override { return files_; }

    std::string makeFolder(const std::string& name,
                           const std::vector<std::string>& entries) override {
        files_.setFolder("/" + name, entries);
        return "/" + name;
    }
    std::string makeFile(const std::string& name) override { return "/" + name; }
    bool makeUnreadable(const std::string& folder) override {
        files_.setUnreadable(folder);
        return true;
    }
    std::string missing(const std::string& name) override { return "/" + name; }

private:
    FakeFileManager files_;
};

INSTANTIATE_TEST_SUITE_P(Fake, FileManagerContract,
                         testing::Values(FileManagerCase{
                             "fake", [] { return std::make_unique<FakeWorld>(); }}),
                         nameOfCase);

TEST(FakeFileManager, a_removed_folder_is_missing_again) {
    FakeFileManager files;
    files.setFolder("/a", {"b"});
    files.remove("/a");
    EXPECT_EQ(files.contentsOfDirectory("/a"), std::nullopt);
}

}  // namespace
}  // namespace tavo
