#include "platform/linux/opening/ExecKey.h"

#include <string_view>

#include <glib.h>

namespace tavo {
namespace {

// The shell quotation in which a part of a command stands.
enum class Quotes { none, simple, twofold };

// `text` escaped so that a shell reads it unchanged inside such quotes.
std::string escaped(const std::string& text, Quotes quotes) {
    if (quotes == Quotes::none) {
        char* const quoted = g_shell_quote(text.c_str());
        std::string result = quoted;
        g_free(quoted);
        return result;
    }
    std::string result;
    for (const char c : text) {
        if (quotes == Quotes::simple && c == '\'') {
            result += R"('\'')";
        } else if (quotes == Quotes::twofold &&
                   std::string_view(R"("\$`)").find(c) != std::string_view::npos) {
            result += {'\\', c};
        } else {
            result += c;
        }
    }
    return result;
}

Quotes after(char c, Quotes quotes) {
    if (c == '\'' && quotes != Quotes::twofold) {
        return quotes == Quotes::none ? Quotes::simple : Quotes::none;
    }
    if (c == '"' && quotes != Quotes::simple) {
        return quotes == Quotes::none ? Quotes::twofold : Quotes::none;
    }
    return quotes;
}

std::vector<std::string> shellWords(const std::string& line) {
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

}  // namespace

std::vector<std::string> commandWords(const DesktopEntry& entry, const std::string& path,
                                      const std::string& address) {
    const auto expanded = [&](char code, Quotes quotes) -> std::string {
        switch (code) {
            case '%':
                return "%";
            case 'c':
                return escaped(entry.name, quotes);
            case 'i':
                return entry.icon.empty() ? "" : "--icon " + escaped(entry.icon, quotes);
            case 'k':
                return escaped(path, quotes);
            case 'u':
            case 'U':
                return address.empty() ? "" : escaped(address, quotes);
            default:
                return {};
        }
    };
    const std::string& command = entry.exec;
    std::string line;
    Quotes quotes = Quotes::none;
    for (std::size_t at = 0; at < command.size(); ++at) {
        const bool last = at + 1 == command.size();
        if (command[at] == '%' && !last) {
            line += expanded(command[++at], quotes);
        } else if (command[at] == '\\' && quotes != Quotes::simple && !last &&
                   command[at + 1] != '%') {
            line += {'\\', command[++at]};
        } else {
            quotes = after(command[at], quotes);
            line += command[at];
        }
    }
    return shellWords(line);
}

}  // namespace tavo
