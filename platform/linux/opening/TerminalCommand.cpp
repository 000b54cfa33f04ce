#include "platform/linux/opening/TerminalCommand.h"

#include <array>

namespace tavo {
namespace {

// A terminal and its option that comes before the command; nullptr: it takes the command alone.
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

std::optional<std::vector<std::string>> terminalCommand(const ExecutableLookup& lookup,
                                                        bool wayland) {
    for (const Terminal& terminal : kTerminals) {
        const ExecutableMatch program = lookup.find(terminal.program);
        if (program.state == ExecutableMatch::State::executable &&
            (wayland || !terminal.onlyWayland)) {
            std::vector<std::string> words = {program.path};
            if (terminal.option != nullptr) {
                words.emplace_back(terminal.option);
            }
            return words;
        }
    }
    return std::nullopt;
}

}  // namespace tavo
