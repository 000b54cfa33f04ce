// Data folders and programs of one test, in a temporary folder.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>

#include "platform/linux/XdgEnvironment.h"

namespace tavo {

// A name is a path below the tree's root. "user" and "system" are data folders, the first the more
// important one; "bin" holds programs, of which "program" is there from the start.
class EntryTree {
public:
    EntryTree() {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "tavo-entries-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("no temporary folder");
        }
        root_ = pattern;
        // Tests that give up root's rights must still reach it.
        std::filesystem::permissions(root_, std::filesystem::perms(0755));
        makeFolder("user/applications");
        makeFolder("system/applications");
        makeProgram("bin/program");
    }

    ~EntryTree() {
        std::error_code ignored;
        std::filesystem::remove_all(root_, ignored);
    }

    EntryTree(const EntryTree&) = delete;
    EntryTree& operator=(const EntryTree&) = delete;

    [[nodiscard]] std::string path(const std::string& name) const { return root_ + '/' + name; }

    std::string makeFolder(const std::string& name) const {
        std::filesystem::create_directories(path(name));
        return path(name);
    }

    std::string write(const std::string& name, std::string_view bytes) const {
        std::filesystem::create_directories(std::filesystem::path(path(name)).parent_path());
        std::ofstream(path(name), std::ios::binary) << bytes;
        return path(name);
    }

    std::string makeProgram(const std::string& name) const {
        write(name, "#!/bin/sh\n");
        std::filesystem::permissions(path(name), std::filesystem::perms(0755));
        return path(name);
    }

    void link(const std::string& name, const std::string& target) const {
        std::filesystem::create_symlink(target, path(name));
    }

    void remove(const std::string& name) const { std::filesystem::remove_all(path(name)); }

    [[nodiscard]] XdgEnvironment environment() const {
        XdgEnvironment environment;
        environment.dataDirs = {path("user"), path("system")};
        environment.languages = {"C"};
        environment.path = path("bin");
        return environment;
    }

private:
    std::string root_;
};

// The file of an entry that is shown everywhere, and `more` lines.
inline std::string entryText(const std::string& name, const std::string& more = {}) {
    return "[Desktop Entry]\nType=Application\nExec=program\nName=" + name + '\n' + more;
}

}  // namespace tavo
