#include "platform/linux/opening/ExecKey.h"

#include <glib.h>

namespace tavo {
namespace {

std::string quoted(const std::string& word) {
    char* const text = g_shell_quote(word.c_str());
    std::string result = text;
    g_free(text);
    return result;
}

std::string expanded(char code, const std::string& path, const EntryKeys& keys) {
    switch (code) {
        case '%':
            return "%";
        case 'c':
            return quoted(keys.name);
        case 'i':
            return keys.icon.empty() ? std::string() : "--icon " + quoted(keys.icon);
        case 'k':
            return quoted(path);
        default:
            return {};
    }
}

}  // namespace

std::vector<std::string> commandWords(const std::string& path, const EntryKeys& keys) {
    const std::string& command = keys.command;
    std::string line;
    for (std::size_t at = 0; at < command.size(); ++at) {
        if (command[at] == '%' && at + 1 < command.size()) {
            line += expanded(command[++at], path, keys);
        } else {
            line += command[at];
        }
    }
    char** parsed = nullptr;
    std::vector<std::string> words;
    if (g_shell_parse_argv(line.c_str(), nullptr, &parsed, nullptr) != FALSE) {
        for (char** word = parsed; *word != nullptr; ++word) {
            words.emplace_back(*word);
        }
        g_strfreev(parsed);
    }
    return words;
}

}  // namespace tavo
