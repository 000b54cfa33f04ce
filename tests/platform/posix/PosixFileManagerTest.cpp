#include <optional>

#include "platform/posix/PosixFileManager.h"
#include "tests/contracts/FileManagerContract.h"
#include "tests/platform/linux/fixtures/EntryTree.h"
#include "tests/platform/linux/fixtures/OrdinaryUser.h"

namespace tavo {
namespace {

class PosixWorld final : public FileManagerWorld {
public:
    ~PosixWorld() override {
        ordinary_.reset();
        if (!unreadable_.empty()) {
            std::filesystem::permissions(unreadable_, std::filesystem::perms(0755));
        }
    }

    FileManager& files() override { return *files_; }

    std::string makeFolder(const std::string& name,
                           const std::vector<std::string>& entries) override {
        tree_.remove(name);
        for (const std::string& entry : entries) {
            tree_.write(name + '/' + entry, "");
        }
        return tree_.makeFolder(name);
    }
    std::string makeFile(const std::string& name) override { return tree_.write(name, ""); }
    bool makeUnreadable(const std::string& folder) override {
        std::filesystem::permissions(folder, std::filesystem::perms::none);
        unreadable_ = folder;
        return ordinary_.emplace().succeeded();
    }
    std::string missing(const std::string& name) override { return tree_.path(name); }

private:
    EntryTree tree_;
    std::unique_ptr<FileManager> files_ = makePosixFileManager();
    std::optional<OrdinaryUser> ordinary_;
    std::string unreadable_;
};

INSTANTIATE_TEST_SUITE_P(Posix, FileManagerContract,
                         testing::Values(FileManagerCase{
                             "posix", [] { return std::make_unique<PosixWorld>(); }}),
                         nameOfCase);

}  // namespace
}  // namespace tavo
