// Temporary folders, real programs in them, and ways to wait for what those do.
#pragma once

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "platform/linux/FileDescriptor.h"

namespace tavo::processes {

// Longer than anything takes on a busy machine, so that it is reached only by a failure.
inline constexpr std::chrono::seconds kPatience{60};

// A folder that goes with everything in it.
class Folder {
public:
    Folder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "tavo.XXXXXX").string();
        if (::mkdtemp(pattern.data()) == nullptr) {
            ADD_FAILURE() << "no temporary folder";
        }
        path_ = pattern;
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    [[nodiscard]] std::string path(const std::string& name = {}) const {
        return name.empty() ? path_ : path_ + '/' + name;
    }

    // Writes `content` to the file `name`, making its folders, and answers its path.
    std::string write(const std::string& name, const std::string& content,
                      mode_t mode = 0644) const {
        const std::string file = path(name);
        std::filesystem::create_directories(std::filesystem::path(file).parent_path());
        std::ofstream(file, std::ios::binary) << content;
        ::chmod(file.c_str(), mode);
        return file;
    }

    std::string script(const std::string& name, const std::string& body) const {
        return write(name, "#!/bin/sh\n" + body + "\n", 0755);
    }

private:
    std::string path_;
};

// A named pipe into which programs write lines and from which the test waits for them.
class Report {
public:
    explicit Report(const Folder& folder, const std::string& name = "report")
        : path_(folder.path(name)) {
        EXPECT_EQ(::mkfifo(path_.c_str(), 0600), 0);
        // Open for both, so that it never ends between two writers.
        pipe_ = FileDescriptor(::open(path_.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC));
        EXPECT_TRUE(pipe_.valid());
    }

    [[nodiscard]] const std::string& path() const { return path_; }

    // The next line, without its end; none when nothing comes.
    std::optional<std::string> line() {
        const auto giveUp = std::chrono::steady_clock::now() + kPatience;
        for (;;) {
            if (const std::size_t end = read_.find('\n'); end != std::string::npos) {
                const std::string first = read_.substr(0, end);
                read_.erase(0, end + 1);
                return first;
            }
            pollfd wanted = {pipe_.get(), POLLIN, 0};
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                giveUp - std::chrono::steady_clock::now());
            if (left.count() <= 0 || ::poll(&wanted, 1, static_cast<int>(left.count())) <= 0) {
                return std::nullopt;
            }
            char block[4096];
            const ssize_t got = ::read(pipe_.get(), block, sizeof block);
            if (got > 0) {
                read_.append(block, static_cast<std::size_t>(got));
            }
        }
    }

private:
    std::string path_;
    FileDescriptor pipe_;
    std::string read_;
};

// The process ids of this process's children, zombies included, whichever thread made them.
inline std::set<pid_t> children() {
    std::set<pid_t> all;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
        std::ifstream list(task.path() / "children");
        for (pid_t child = 0; list >> child;) {
            all.insert(child);
        }
    }
    return all;
}

inline std::set<std::string> openDescriptors() {
    std::set<std::string> all;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        all.insert(entry.path().filename().string());
    }
    return all;
}

// For what happens in another thread or in the kernel and cannot be waited for.
inline bool becomesTrue(const std::function<bool()>& condition) {
    const auto giveUp = std::chrono::steady_clock::now() + kPatience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= giveUp) {
            return false;
        }
        ::poll(nullptr, 0, 2);
    }
    return true;
}

}  // namespace tavo::processes
