// The time to list 5,000 desktop entries: with the launcher's reader, with the least code that
// reads the same files and splits them into keys and values, and with GIO.
//
// The entries are generated: 1 to 6 KB, most of it translations, as on a desktop with many
// applications. Three in five have a program of their own in the third folder of the search path,
// the others share a few. One in four has a TryExec too.
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <benchmark/benchmark.h>
#include <gio/gdesktopappinfo.h>

#include "platform/linux/entries/XdgApplicationSource.h"

namespace tavo {
namespace {

namespace fs = std::filesystem;

constexpr int kEntries = 5000;

constexpr std::array kLanguages = {
    "af", "ar", "ast", "be", "bg", "bn", "ca", "cs",    "cy",      "da", "de", "el", "en_GB",
    "eo", "es", "et",  "eu", "fa", "fi", "fr", "ga",    "gl",      "he", "hi", "hr", "hu",
    "id", "is", "it",  "ja", "ka", "kk", "ko", "lt",    "lv",      "mk", "ml", "nb", "nl",
    "nn", "pa", "pl",  "pt", "ro", "ru", "sk", "pt_BR", "sl",      "sq", "sr", "sv", "ta",
    "te", "th", "tr",  "uk", "vi", "zh", "uz", "yi",    "sr@latin"};

class Tree {
public:
    Tree() {
        std::string pattern = (fs::temp_directory_path() / "tavo-reload-XXXXXX").string();
        root_ = mkdtemp(pattern.data());
        for (const char* const folder : {"share/applications", "bin1", "bin2", "bin3", "none"}) {
            fs::create_directories(root_ / folder);
        }
        for (int i = 0; i < kEntries; ++i) {
            writeEntry(i);
        }
    }
    ~Tree() { fs::remove_all(root_); }
    Tree(const Tree&) = delete;
    Tree& operator=(const Tree&) = delete;

    [[nodiscard]] std::string in(const std::string& name) const { return (root_ / name).string(); }
    [[nodiscard]] std::string path() const {
        return in("bin1") + ':' + in("bin2") + ':' + in("bin3");
    }
    [[nodiscard]] std::uintmax_t bytes() const { return bytes_; }

private:
    void writeEntry(int number) {
        const std::string program = number % 5 < 3 ? "program" + std::to_string(number)
                                                   : "shared" + std::to_string(number % 20);
        const fs::path file = root_ / "bin3" / program;
        if (!fs::exists(file)) {
            std::ofstream(file) << "#!/bin/sh\n";
            fs::permissions(file, fs::perms::owner_all);
        }
        std::string text = "[Desktop Entry]\nVersion=1.0\nType=Application\nTerminal=false\n";
        text += "Name=Application " + std::to_string(number) + "\nExec=" + program + " %U\n";
        if (number % 4 == 0) {
            text += "TryExec=" + program + '\n';
        }
        text += "Icon=application-" + std::to_string(number) +
                "\nCategories=GTK;Utility;Office;\nMimeType=text/plain;text/html;image/png;\n"
                "StartupNotify=true\nKeywords=one;two;three;four;\n";
        const std::size_t languages = random_() % kLanguages.size();
        for (std::size_t i = 0; i < languages; ++i) {
            const std::string locale = std::string("[") + kLanguages[i] + "]=";
            text += "Name" + locale + "Aplicación número " + std::to_string(number) + '\n';
            text += "Comment" + locale + "Näyttää ja muokkaa kaikkia tiedostoja\n";
        }
        text +=
            "Actions=new-window;\n\n[Desktop Action new-window]\nName=New Window\nExec=" + program +
            " --new-window\n";
        std::ofstream(root_ / "share/applications" /
                      ("org.example.App" + std::to_string(number) + ".desktop"))
            << text;
        bytes_ += text.size();
    }

    fs::path root_;
    std::uintmax_t bytes_ = 0;
    std::mt19937 random_{1};
};

const Tree* theTree = nullptr;

// The bare cost: reads every file whole and splits it into keys and values.
void readAndSplit(benchmark::State& state) {
    const std::string folder = theTree->in("share/applications");
    std::string buffer(1 << 20, '\0');
    std::vector<std::pair<std::string_view, std::string_view>> pairs;
    for (auto _ : state) {
        for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
            const int file = open(entry.path().c_str(), O_RDONLY | O_CLOEXEC);
            const ssize_t length = read(file, buffer.data(), buffer.size());
            close(file);
            std::string_view rest(buffer.data(), static_cast<std::size_t>(length));
            pairs.clear();
            while (!rest.empty()) {
                const std::size_t end = rest.find('\n');
                const std::string_view line = rest.substr(0, end);
                if (const std::size_t equals = line.find('='); equals != std::string_view::npos) {
                    pairs.emplace_back(line.substr(0, equals), line.substr(equals + 1));
                }
                rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
            }
            benchmark::DoNotOptimize(pairs.data());
        }
    }
}

void listApplications(benchmark::State& state) {
    const auto source = makeXdgApplicationSource(DesktopEntryEnvironment::fromProcess());
    for (auto _ : state) {
        const std::vector<FoundApplication> found = source->applications();
        if (found.size() < kEntries) {
            state.SkipWithError("not every entry was found");
        }
    }
}

void listByGio(benchmark::State& state) {
    for (auto _ : state) {
        GList* const all = g_app_info_get_all();
        if (g_list_length(all) < kEntries) {
            state.SkipWithError("not every entry was found");
        }
        g_list_free_full(all, g_object_unref);
    }
}

BENCHMARK(readAndSplit)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime();
BENCHMARK(listApplications)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime();
BENCHMARK(listByGio)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime();

}  // namespace
}  // namespace tavo

int main(int argc, char** argv) {
    const tavo::Tree tree;
    tavo::theTree = &tree;
    setenv("XDG_DATA_HOME", tree.in("none").c_str(), 1);
    setenv("XDG_DATA_DIRS", tree.in("share").c_str(), 1);
    setenv("PATH", tree.path().c_str(), 1);
    setenv("LANGUAGE", "it", 1);
    std::cout << tavo::kEntries << " entries, " << tree.bytes() / 1024 << " KiB\n";
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
