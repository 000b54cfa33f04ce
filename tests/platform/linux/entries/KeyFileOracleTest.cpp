// The reader of desktop entries against GLib's GKeyFile: well-formed files, files with bytes
// changed at random, and odd lines of groups. TAVO_THOROUGH=1 tries more of the latter two.
#include <random>

#include <glib.h>
#include <gtest/gtest.h>

#include "platform/linux/entries/DesktopEntry.h"
#include "tests/Thorough.h"

namespace tavo {
namespace {

constexpr const char* kGroup = "Desktop Entry";
const std::vector<std::string> kLanguages = {"it_IT", "it", "sr@latin", "C"};

std::optional<std::string> taken(char* text) {
    if (text == nullptr) {
        return std::nullopt;
    }
    std::string copy = text;
    g_free(text);
    return copy;
}

// One file as GLib reads it.
class Oracle {
public:
    explicit Oracle(const std::string& bytes) : file_(g_key_file_new()) {
        isEntry_ = g_key_file_load_from_data(file_, bytes.data(), bytes.size(),
                                             G_KEY_FILE_KEEP_TRANSLATIONS, nullptr) != FALSE &&
                   taken(g_key_file_get_start_group(file_)) == kGroup;
    }
    ~Oracle() { g_key_file_unref(file_); }
    Oracle(const Oracle&) = delete;
    Oracle& operator=(const Oracle&) = delete;

    [[nodiscard]] bool isEntry() const { return isEntry_; }

    // Absent where the value has an unknown escape and this GLib, unlike that of Debian 12, reads
    // no such value.
    [[nodiscard]] std::optional<std::string> string(const std::string& key) const {
        auto text = taken(g_key_file_get_string(file_, kGroup, key.c_str(), nullptr));
        if (!text) {
            const auto raw = taken(g_key_file_get_value(file_, kGroup, key.c_str(), nullptr));
            if (raw && g_utf8_validate(raw->c_str(), -1, nullptr) != FALSE) {
                return std::nullopt;
            }
        }
        return text.value_or("");
    }
    [[nodiscard]] std::optional<std::string> localized(const std::string& key) const {
        for (const std::string& language : kLanguages) {
            if (auto text = string(key + '[' + language + ']'); !text || !text->empty()) {
                return text;
            }
        }
        return string(key);
    }
    [[nodiscard]] std::optional<std::vector<std::string>> list(const char* key) const {
        gsize count = 0;
        char** const pieces = g_key_file_get_string_list(file_, kGroup, key, &count, nullptr);
        if (pieces == nullptr) {
            return std::nullopt;
        }
        std::vector<std::string> copy(pieces, pieces + count);
        g_strfreev(pieces);
        return copy;
    }
    [[nodiscard]] bool boolean(const char* key) const {
        return g_key_file_get_boolean(file_, kGroup, key, nullptr) != FALSE;
    }
    // Whether the value of the key Name is not UTF-8. There GLib's reader and ours differ by
    // design.
    [[nodiscard]] bool nameIsIllFormed() const {
        const auto raw = taken(g_key_file_get_value(file_, kGroup, "Name", nullptr));
        return raw && g_utf8_validate(raw->c_str(), -1, nullptr) == FALSE;
    }

private:
    GKeyFile* file_;
    bool isEntry_ = false;
};

void expectSame(const std::string& ours, const std::optional<std::string>& theirs) {
    if (theirs) {
        EXPECT_EQ(ours, *theirs);
    }
}

void expectSame(const std::string& bytes) {
    const Oracle oracle(bytes);
    const auto entry = parseDesktopEntry(bytes, kLanguages);
    ASSERT_EQ(entry.has_value(), oracle.isEntry());
    if (!entry) {
        return;
    }
    if (const auto name = oracle.localized("Name");
        name && name->empty() && oracle.nameIsIllFormed()) {
        EXPECT_NE(entry->name.find("\xef\xbf\xbd"), std::string::npos);
    } else {
        expectSame(entry->name, name);
    }
    expectSame(entry->icon, oracle.localized("Icon"));
    expectSame(entry->type, oracle.string("Type"));
    expectSame(entry->exec, oracle.string("Exec"));
    expectSame(entry->tryExec, oracle.string("TryExec"));
    expectSame(entry->path, oracle.string("Path"));
    EXPECT_EQ(entry->onlyShowIn, oracle.list("OnlyShowIn"));
    EXPECT_EQ(entry->notShowIn, oracle.list("NotShowIn"));
    EXPECT_EQ(entry->hidden, oracle.boolean("Hidden"));
    EXPECT_EQ(entry->noDisplay, oracle.boolean("NoDisplay"));
    EXPECT_EQ(entry->terminal, oracle.boolean("Terminal"));
    EXPECT_EQ(entry->startupNotify, oracle.boolean("StartupNotify"));
    EXPECT_EQ(entry->dbusActivatable, oracle.boolean("DBusActivatable"));
    EXPECT_EQ(entry->singleMainWindow, oracle.boolean("SingleMainWindow"));
}

const std::string kEntry =
    "# comment\n"
    "[Desktop Entry]\n"
    "Encoding=UTF-8\n"
    "Type=Application\n"
    "Name=Files \\s\n"
    "Name[it]=Archivi\n"
    "Name[it_IT]=Caff\xc3\xa8\n"
    "Name[sr@latin]=Datoteke\n"
    "Icon=files\n"
    "Icon[it]=files-it\n"
    "Exec=files --new \"%U\"\n"
    "TryExec = files\n"
    "Path=/srv\\\\x\n"
    "StartupWMClass=Files\n"
    "OnlyShowIn=GNOME;KDE\\;;\n"
    "NotShowIn=XFCE\n"
    "Hidden=false\n"
    "NoDisplay=1 \n"
    "Terminal=true\n"
    "StartupNotify=0\n"
    "DBusActivatable=true\n"
    "SingleMainWindow=true\n"
    "\n"
    "[Desktop Action a]\n"
    "Name=New\n";

// Makes one change of a kind that is found in damaged or odd files.
void mutate(std::string& bytes, std::mt19937& random) {
    static const std::vector<std::string> pieces = {"[",
                                                    "]",
                                                    "=",
                                                    "\\",
                                                    "\\q",
                                                    ";",
                                                    "#",
                                                    "\n",
                                                    "\r\n",
                                                    "\r",
                                                    " ",
                                                    "\t",
                                                    "\xe9",
                                                    "\xc3\xa9",
                                                    "\x80",
                                                    "\x01",
                                                    "\\\n",
                                                    "[it]",
                                                    "\n[",
                                                    "]\n",
                                                    "\n=",
                                                    "\nName=",
                                                    "\v",
                                                    "\xef\xbb\xbf",
                                                    "\nHidden=true",
                                                    "\n[Desktop Entry]\n"};
    const std::size_t at = random() % (bytes.size() + 1);
    switch (random() % 5) {
        case 0:
        case 1:
            bytes.insert(at, pieces[random() % pieces.size()]);
            break;
        case 2:
            bytes.erase(at, 1 + random() % 3);
            break;
        case 3: {  // inserts a stretch of the bytes once more, somewhere else
            const std::string stretch = bytes.substr(at, random() % 40);
            bytes.insert(random() % (bytes.size() + 1), stretch);
            break;
        }
        default:
            if (at < bytes.size()) {
                bytes[at] = static_cast<char>(random() % 256);
            }
    }
}

TEST(KeyFileOracle, a_common_entry_reads_as_GLib_reads_it) {
    ASSERT_TRUE(Oracle(kEntry).isEntry());
    expectSame(kEntry);
}

// Tries each group line that can be made of a few pieces, as the first one of a file and as a later
// one.
TEST(KeyFileOracle, group_lines_read_as_GLib_reads_them) {
    const std::vector<std::string> pieces = {
        "[Desktop Entry",    "[", "]", " ", "\t", "\r", "\x80", "\xc3", "\x01", "a",
        std::string(1, '\0')};
    const std::size_t longest = isThorough() ? 5 : 4;  // pieces
    std::vector<std::string> lines = {""};
    std::size_t entries = 0;
    std::size_t files = 0;
    for (std::size_t length = 1; length <= longest; ++length) {
        std::vector<std::string> longer;
        for (const std::string& line : lines) {
            for (const std::string& piece : pieces) {
                longer.push_back(line + piece);
            }
        }
        lines = std::move(longer);
        for (const std::string& line : lines) {
            for (const std::string& bytes :
                 {line + "\nName=A\n", "[Desktop Entry]\nName=A\n" + line + "\nName=B\n"}) {
                SCOPED_TRACE(testing::PrintToString(bytes));
                expectSame(bytes);
                entries += parseDesktopEntry(bytes, kLanguages) ? 1 : 0;
                ++files;
            }
            if (HasFailure()) {
                return;
            }
        }
    }
    EXPECT_GT(entries, files / 100);
    EXPECT_LT(entries, files / 2);
}

TEST(KeyFileOracle, entries_changed_at_random_read_as_GLib_reads_them) {
    std::mt19937 random(20240501);
    const int runs = isThorough() ? 20'000 : 4'000;
    int entries = 0;
    for (int i = 0; i < runs && !testing::Test::HasFailure(); ++i) {
        std::string bytes = kEntry;
        for (auto changes = random() % 4 + 1; changes > 0; --changes) {
            mutate(bytes, random);
        }
        SCOPED_TRACE("change " + std::to_string(i) + ":\n" + bytes);
        expectSame(bytes);
        entries += Oracle(bytes).isEntry() ? 1 : 0;
    }
    // The comparison proves nothing unless both many files are entries and many are not.
    EXPECT_GT(entries, runs / 6);
    EXPECT_LT(entries, runs * 5 / 6);
}

}  // namespace
}  // namespace tavo
