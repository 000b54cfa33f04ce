// Whether the programs that desktop entries name exist, by the rules of GIO.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace tavo {

// The program in the command line of an Exec key: its first word, unquoted as a shell would.
// Absent when the line is empty or cannot be split into words.
std::optional<std::string> programOf(const std::string& exec);

// Looks programs up in a search path and remembers the answers: one object a scan. One thread.
class ExecutableLookup {
public:
    // `path` as in PATH; an empty item is the working folder. Its folders are opened here once,
    // which halves the cost of each look-up.
    explicit ExecutableLookup(std::string_view path);
    ~ExecutableLookup();

    ExecutableLookup(const ExecutableLookup&) = delete;
    ExecutableLookup& operator=(const ExecutableLookup&) = delete;

    // Whether `program` can be run: a name is looked for along the path, anything with a slash
    // is a file.
    [[nodiscard]] bool finds(const std::string& program);

private:
    [[nodiscard]] bool look(const std::string& program);

    std::vector<int> folders_;
    std::unordered_map<std::string, bool> known_;
};

}  // namespace tavo
