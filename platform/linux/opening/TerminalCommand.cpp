#include "platform/linux/opening/TerminalCommand.h"

#include <array>

#include "platform/linux/opening/ProgramCheck.h"

namespace tavo {
namespace {

// A terminal and the option that comes before the command; nullptr: none does.
struct Terminal {
    const char* program;
    const char* option;
    bool onlyWayland = false;
};

constexpr std::array<Terminal, 16> kTerminals = {{
    {"xdg-terminal-exec", nullptr},
    {"gnome-terminal", "--"},
    {"mate-terminal", "-x"},
    {"xfce4-terminal", "-x"},
    {"kgx", "-e"},
    {"tilix", "-e"},
    {"konsole", "-e"},
    {"foot", nullptr, true},
    {"kitty", nullptr},
    {"alacritty", "-e"},
    {"x-terminal-emulator", "-e"},
    {"nxterm", "-e"},
    {"color-xterm", "-e"},
    {"rxvt", "-e"},
    {"dtterm", "-e"},
    {"xterm", "-e"},
}};

}  // namespace

std::optional<std::vector<std::string>> terminalCommand(const std::string& searchPath,
                                                        bool wayland) {
    for (const Terminal& terminal : kTerminals) {
        const auto program = findProgram(terminal.program, searchPath, "");
        if (program && (wayland || !terminal.onlyWayland)) {
            std::vector<std::string> words = {program.value()};
            if (terminal.option != nullptr) {
                words.emplace_back(terminal.option);
            }
            return words;
        }
    }
    return std::nullopt;
}

}  // namespace tavo
