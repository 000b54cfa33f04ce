// Starts a command on the X display and prints when its window showed what, as the X server sees
// it:
//
//   tavo_frame_watch [--inset LEFT,TOP,RIGHT,BOTTOM] [--quiet MS] [--timeout MS] [--settle MS]
//                    [--pictures PREFIX] [--resident PID] -- COMMAND [ARGUMENT...]
//
// The window is the largest one that is mapped after the start. A picture of its part within the
// insets is taken whenever the server reports a drawing. The output is one line of JSON with times
// in milliseconds from the command's exec. "map" is the mapping of the window. "first" is the first
// picture with text or icons, not only flat colours. "full" is the last change of the picture
// before it stays the same for the quiet time (400). "looks" is the number of pictures taken,
// "worstLook" the longest time that one took, which is the precision of the other times. "damages"
// has [time, pixels of its bounds, pixels changed] for each drawing in the part. With --settle,
// "pss" and "privateDirty" are the command's memory in kB that long after "full". --pictures keeps
// the two pictures as PREFIX-first.ppm and PREFIX-full.ppm.
//
// With --resident the command ends by itself and has that running process show its window; "exit"
// is when the command had ended.
//
// The command is ended by its process id. Exit status: 0 when all was measured, 1 when something
// could not be, 2 on wrong arguments.
#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/shm.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <xcb/damage.h>
#include <xcb/shm.h>
#include <xcb/xcb.h>

namespace tavo {
namespace {

// A picture with fewer edges counts as bare: it shows neither text nor icon. An edge is two unlike
// pixels side by side. One short name has more edges, a thin line or a corner has fewer.
constexpr int kLeastEdges = 100;

// Masks out the unused fourth byte of a pixel of 24 bits.
constexpr std::uint32_t kColour = 0x00FFFFFF;

constexpr int kSmallestWindow = 200;

template<typename Reply>
struct FreeReply {
    void operator()(Reply* reply) const { std::free(reply); }
};

template<typename Reply>
using ReplyPointer = std::unique_ptr<Reply, FreeReply<Reply>>;

double now() {
    timespec time = {};
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

struct Options {
    std::array<int, 4> inset = {};
    double quiet = 400;
    double timeout = 20'000;
    std::optional<double> settle;
    std::string pictures;
    std::optional<pid_t> resident;
    char** command = nullptr;
};

struct Box {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    [[nodiscard]] int area() const { return width * height; }
    [[nodiscard]] Box within(const Box& other) const {
        const int left = std::max(x, other.x);
        const int top = std::max(y, other.y);
        return {left, top, std::max(0, std::min(x + width, other.x + other.width) - left),
                std::max(0, std::min(y + height, other.y + other.height) - top)};
    }
};

std::optional<int> number(std::string_view text) {
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc{} && end == text.data() + text.size() && value >= 0
               ? std::optional(value)
               : std::nullopt;
}

bool readInset(const std::string& text, std::array<int, 4>& inset) {
    std::istringstream parts(text);
    std::string part;
    for (int& side : inset) {
        const auto value = std::getline(parts, part, ',') ? number(part) : std::nullopt;
        if (!value) {
            return false;
        }
        side = *value;
    }
    return parts.eof();
}

std::optional<Options> readArguments(int argc, char** argv) {
    Options options;
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string_view name = argv[i];
        if (name == "--") {
            options.command = argv + i + 1;
            return options;
        }
        const auto value = number(argv[i + 1]);
        if (name == "--inset" && readInset(argv[i + 1], options.inset)) {
            continue;
        }
        if (name == "--pictures") {
            options.pictures = argv[i + 1];
        } else if (name == "--quiet" && value) {
            options.quiet = *value;
        } else if (name == "--timeout" && value) {
            options.timeout = *value;
        } else if (name == "--settle" && value) {
            options.settle = *value;
        } else if (name == "--resident" && value) {
            options.resident = *value;
        } else {
            return std::nullopt;
        }
    }
    return std::nullopt;
}

// A running command. The destructor ends it.
class Command {
public:
    explicit Command(char** arguments) {
        std::array<int, 2> pipe = {};
        if (::pipe2(pipe.data(), O_CLOEXEC) != 0) {
            return;
        }
        process_ = ::fork();
        if (process_ == 0) {
            // Standard output is for our line of JSON alone.
            ::dup2(STDERR_FILENO, STDOUT_FILENO);
            const double time = now();
            if (::write(pipe[1], &time, sizeof time) == sizeof time) {
                ::execvp(arguments[0], arguments);
            }
            std::perror(arguments[0]);
            ::_exit(127);
        }
        ::close(pipe[1]);
        double time = 0;
        if (::read(pipe[0], &time, sizeof time) == sizeof time) {
            started_ = time;
        }
        ::close(pipe[0]);
        ending_ = static_cast<int>(::syscall(SYS_pidfd_open, process_, 0));
    }
    Command(const Command&) = delete;
    Command& operator=(const Command&) = delete;
    ~Command() {
        end();
        ::close(ending_);
    }

    // A descriptor that is readable once the command has ended.
    [[nodiscard]] int ending() const { return ending_; }

    [[nodiscard]] bool runs() {
        if (process_ > 0 && ::waitpid(process_, nullptr, WNOHANG) == process_) {
            process_ = -1;
        }
        return process_ > 0;
    }

    // The time of the command's exec, on the clock of now().
    [[nodiscard]] double started() const { return started_; }

    // A field of the command's /proc/PID/smaps_rollup by its name, such as "Pss"; in kB.
    [[nodiscard]] std::optional<double> memory(std::string_view name) const {
        std::ifstream file("/proc/" + std::to_string(process_) + "/smaps_rollup");
        for (std::string line; std::getline(file, line);) {
            if (line.starts_with(name) && line[name.size()] == ':') {
                return std::strtod(line.c_str() + name.size() + 1, nullptr);
            }
        }
        return std::nullopt;
    }

    void end() {
        constexpr int kPatience = 200;
        if (runs()) {
            ::kill(process_, SIGTERM);
        }
        for (int i = 0; i < kPatience && runs(); ++i) {
            ::usleep(10'000);
        }
        if (runs()) {
            ::kill(process_, SIGKILL);
            ::waitpid(process_, nullptr, 0);
            process_ = -1;
        }
    }

private:
    pid_t process_ = -1;
    int ending_ = -1;
    double started_ = 0;
};

// The root window's pixels, read through memory shared with the server.
class Screen {
public:
    explicit Screen(xcb_connection_t* connection) : connection_(connection) {
        screen_ = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
        size_ = {0, 0, screen_->width_in_pixels, screen_->height_in_pixels};
        const auto bytes = static_cast<std::size_t>(size_.area()) * sizeof(std::uint32_t);
        const int id = ::shmget(IPC_PRIVATE, bytes, IPC_CREAT | 0600);
        if (id < 0) {
            return;
        }
        void* const memory = ::shmat(id, nullptr, 0);
        segment_ = xcb_generate_id(connection);
        const ReplyPointer<xcb_generic_error_t> refused(xcb_request_check(
            connection,
            xcb_shm_attach_checked(connection, segment_, static_cast<std::uint32_t>(id), 0)));
        ::shmctl(id, IPC_RMID, nullptr);
        if (!refused && memory != reinterpret_cast<void*>(-1)) {
            pixels_ = static_cast<const std::uint32_t*>(memory);
        }
    }
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;
    ~Screen() {
        if (pixels_ != nullptr) {
            ::shmdt(pixels_);
        }
    }

    [[nodiscard]] bool valid() const { return pixels_ != nullptr && screen_->root_depth == 24; }
    [[nodiscard]] xcb_window_t root() const { return screen_->root; }
    [[nodiscard]] const Box& size() const { return size_; }

    // The pixels of `box`, row by row; null if the server refused.
    const std::uint32_t* read(const Box& box) {
        const auto cookie = xcb_shm_get_image(
            connection_, screen_->root, static_cast<std::int16_t>(box.x),
            static_cast<std::int16_t>(box.y), static_cast<std::uint16_t>(box.width),
            static_cast<std::uint16_t>(box.height), ~0U, XCB_IMAGE_FORMAT_Z_PIXMAP, segment_, 0);
        const ReplyPointer<xcb_shm_get_image_reply_t> reply(
            xcb_shm_get_image_reply(connection_, cookie, nullptr));
        return reply ? pixels_ : nullptr;
    }

private:
    xcb_connection_t* connection_;
    xcb_screen_t* screen_ = nullptr;
    Box size_;
    xcb_shm_seg_t segment_ = XCB_NONE;
    const std::uint32_t* pixels_ = nullptr;
};

// The latest picture of the watched part of the window.
class Picture {
public:
    // Replaces the picture; returns how many pixels have changed.
    int take(const std::uint32_t* pixels, std::size_t count) {
        int changed = 0;
        if (pixels_.size() == count) {
            if (std::memcmp(pixels_.data(), pixels, count * sizeof *pixels) == 0) {
                return 0;
            }
            for (std::size_t i = 0; i < count; ++i) {
                changed += ((pixels_[i] ^ pixels[i]) & kColour) != 0 ? 1 : 0;
            }
        } else {
            changed = static_cast<int>(count);
        }
        pixels_.assign(pixels, pixels + count);
        return changed;
    }

    // Empties the picture without freeing its memory.
    void forget() { pixels_.clear(); }

    // Whether the picture has neither text nor icon. Flat colours and vertical gradients have
    // hardly an edge in a row.
    [[nodiscard]] bool bare(int width) const {
        int edges = 0;
        for (std::size_t i = 1; i < pixels_.size() && edges < kLeastEdges; ++i) {
            const bool inRow = i % static_cast<std::size_t>(width) != 0;
            edges += inRow && ((pixels_[i] ^ pixels_[i - 1]) & kColour) != 0 ? 1 : 0;
        }
        return edges < kLeastEdges;
    }

    void save(const std::string& path, int width) const {
        std::ofstream file(path, std::ios::binary);
        file << "P6\n" << width << ' ' << pixels_.size() / static_cast<std::size_t>(width);
        file << "\n255\n";
        for (const std::uint32_t pixel : pixels_) {
            file.put(static_cast<char>(pixel >> 16U));
            file.put(static_cast<char>(pixel >> 8U));
            file.put(static_cast<char>(pixel));
        }
    }

private:
    std::vector<std::uint32_t> pixels_;
};

struct Damage {
    double time;
    int bounds;
    int changed;
};

struct Findings {
    std::optional<double> map;
    std::optional<double> first;
    std::optional<double> full;
    std::optional<double> exit;
    int looks = 0;
    double worstLook = 0;
    std::vector<Damage> damages;
};

class FrameWatch {
public:
    FrameWatch(xcb_connection_t* connection, const Options& options)
        : connection_(connection), options_(options), screen_(connection) {}

    // Whether the server has the extensions needed. Called once, before anything else.
    bool prepare() {
        const xcb_query_extension_reply_t* const extension =
            xcb_get_extension_data(connection_, &xcb_damage_id);
        if (!screen_.valid() || extension == nullptr || extension->present == 0) {
            return false;
        }
        damageEvent_ = static_cast<std::uint8_t>(extension->first_event + XCB_DAMAGE_NOTIFY);
        const ReplyPointer<xcb_damage_query_version_reply_t> version(xcb_damage_query_version_reply(
            connection_, xcb_damage_query_version(connection_, 1, 1), nullptr));
        const std::uint32_t mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
        xcb_change_window_attributes(connection_, screen_.root(), XCB_CW_EVENT_MASK, &mask);
        damage_ = xcb_generate_id(connection_);
        xcb_damage_create(connection_, damage_, screen_.root(), XCB_DAMAGE_REPORT_LEVEL_NON_EMPTY);
        // Moves the pointer away, because a pointer over the window would change its picture.
        xcb_warp_pointer(connection_, XCB_NONE, screen_.root(), 0, 0, 0, 0, 0, 0);
        // A first picture of the whole screen, so that page faults do not slow down later ones.
        if (const std::uint32_t* const pixels = screen_.read(screen_.size())) {
            picture_.take(pixels, static_cast<std::size_t>(screen_.size().area()));
            picture_.forget();
        }
        return version != nullptr;
    }

    // Watches until the picture stays the same for the quiet time, the process that owns the window
    // ends, or the time is up.
    const Findings& watch(Command& command) {
        start_ = command.started();
        const double deadline = start_ + options_.timeout;
        double quietUntil = deadline;
        while (now() < std::min(deadline, quietUntil) && shows(command)) {
            waitUntil(std::min({deadline, quietUntil, now() + 100}), command);
            while (xcb_generic_event_t* const event = xcb_poll_for_event(connection_)) {
                const ReplyPointer<xcb_generic_event_t> owner(event);
                take(*event, now());
            }
            if (xcb_connection_has_error(connection_) != 0) {
                break;
            }
            if (findings_.full) {
                quietUntil = start_ + *findings_.full + options_.quiet;
            }
        }
        if (now() < quietUntil) {
            findings_.full.reset();
        }
        return findings_;
    }

    void savePictures(const std::string& prefix) const {
        first_.save(prefix + "-first.ppm", part_.width);
        picture_.save(prefix + "-full.ppm", part_.width);
    }

private:
    [[nodiscard]] bool shows(Command& command) const {
        return options_.resident ? ::kill(*options_.resident, 0) == 0 : command.runs();
    }

    void waitUntil(double time, const Command& command) {
        // poll() ignores a negative descriptor: the command's end is waited for only once.
        std::array<pollfd, 2> sources = {{{xcb_get_file_descriptor(connection_), POLLIN, 0},
                                          {findings_.exit ? -1 : command.ending(), POLLIN, 0}}};
        ::poll(sources.data(), sources.size(), std::max(0, static_cast<int>(time - now() + 1)));
        if ((sources[1].revents & POLLIN) != 0) {
            findings_.exit = now() - start_;
        }
    }

    void take(const xcb_generic_event_t& event, double time) {
        const std::uint8_t type = event.response_type & 0x7FU;
        if (type == damageEvent_) {
            const auto& drawn = reinterpret_cast<const xcb_damage_notify_event_t&>(event);
            xcb_damage_subtract(connection_, damage_, XCB_NONE, XCB_NONE);
            look(time, {drawn.area.x, drawn.area.y, drawn.area.width, drawn.area.height});
        } else if (type == XCB_MAP_NOTIFY) {
            takeMap(reinterpret_cast<const xcb_map_notify_event_t&>(event).window, time);
        } else if (type == XCB_CONFIGURE_NOTIFY) {
            const auto& moved = reinterpret_cast<const xcb_configure_notify_event_t&>(event);
            if (moved.window == window_) {
                place({moved.x, moved.y, moved.width, moved.height});
            }
        }
    }

    void takeMap(xcb_window_t window, double time) {
        const ReplyPointer<xcb_get_geometry_reply_t> geometry(
            xcb_get_geometry_reply(connection_, xcb_get_geometry(connection_, window), nullptr));
        if (!geometry || geometry->width < kSmallestWindow || geometry->height < kSmallestWindow) {
            return;
        }
        const Box box = {geometry->x, geometry->y, geometry->width, geometry->height};
        if (box.area() > windowBox_.area()) {
            window_ = window;
            findings_.map = time - start_;
            place(box);
        }
    }

    void place(const Box& box) {
        const auto [left, top, right, bottom] = options_.inset;
        windowBox_ = box;
        part_ = Box{box.x + left, box.y + top, std::max(0, box.width - left - right),
                    std::max(0, box.height - top - bottom)}
                    .within(screen_.size());
        picture_.forget();
    }

    void look(double time, const Box& drawn) {
        const int bounds = drawn.within(part_).area();
        if (bounds == 0) {
            xcb_flush(connection_);
            return;
        }
        const std::uint32_t* const pixels = screen_.read(part_);
        if (pixels == nullptr) {
            return;
        }
        const int changed = picture_.take(pixels, static_cast<std::size_t>(part_.area()));
        findings_.damages.push_back({time - start_, bounds, changed});
        if (changed > 0) {
            if (!findings_.first && !picture_.bare(part_.width)) {
                findings_.first = time - start_;
                if (!options_.pictures.empty()) {
                    first_ = picture_;
                }
            }
            if (findings_.first) {
                findings_.full = time - start_;
            }
        }
        ++findings_.looks;
        findings_.worstLook = std::max(findings_.worstLook, now() - time);
    }

    xcb_connection_t* connection_;
    const Options& options_;
    Screen screen_;
    xcb_damage_damage_t damage_ = XCB_NONE;
    std::uint8_t damageEvent_ = 0;
    double start_ = 0;
    xcb_window_t window_ = XCB_NONE;
    Box windowBox_;
    Box part_;
    Picture picture_;
    Picture first_;
    Findings findings_;
};

void print(const char* name, const std::optional<double>& value) {
    if (value) {
        std::printf("\"%s\": %.2f, ", name, *value);
    } else {
        std::printf("\"%s\": null, ", name);
    }
}

void print(const Findings& findings, const std::optional<double>& pss,
           const std::optional<double>& privateDirty) {
    std::printf("{");
    print("map", findings.map);
    print("first", findings.first);
    print("full", findings.full);
    print("exit", findings.exit);
    print("pss", pss);
    print("privateDirty", privateDirty);
    std::printf("\"looks\": %d, \"worstLook\": %.2f, \"damages\": [", findings.looks,
                findings.worstLook);
    const char* separator = "";
    for (const Damage& damage : findings.damages) {
        std::printf("%s[%.2f, %d, %d]", separator, damage.time, damage.bounds, damage.changed);
        separator = ", ";
    }
    std::printf("]}\n");
}

int run(const Options& options) {
    const std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection(
        xcb_connect(nullptr, nullptr), xcb_disconnect);
    if (xcb_connection_has_error(connection.get()) != 0) {
        std::fprintf(stderr, "tavo_frame_watch: no X display\n");
        return 1;
    }
    FrameWatch watch(connection.get(), options);
    if (!watch.prepare()) {
        std::fprintf(stderr,
                     "tavo_frame_watch: the display lacks Damage, shared memory or 24 bits\n");
        return 1;
    }
    ::fcntl(xcb_get_file_descriptor(connection.get()), F_SETFD, FD_CLOEXEC);
    Command command(options.command);
    const Findings findings = watch.watch(command);
    std::optional<double> pss;
    std::optional<double> privateDirty;
    if (options.settle && findings.full) {
        const double until = command.started() + *findings.full + *options.settle;
        ::usleep(static_cast<useconds_t>(std::max(0.0, until - now()) * 1000));
        pss = command.memory("Pss");
        privateDirty = command.memory("Private_Dirty");
    }
    print(findings, pss, privateDirty);
    if (!options.pictures.empty() && findings.full) {
        watch.savePictures(options.pictures);
    }
    return findings.full && (!options.settle || (pss && privateDirty)) &&
                   (!options.resident || findings.exit)
               ? 0
               : 1;
}

}  // namespace
}  // namespace tavo

int main(int argc, char** argv) {
    const auto options = tavo::readArguments(argc, argv);
    if (!options) {
        std::fprintf(stderr,
                     "Usage: tavo_frame_watch [--inset LEFT,TOP,RIGHT,BOTTOM] [--quiet MS]"
                     " [--timeout MS] [--settle MS] [--pictures PREFIX] [--resident PID]"
                     " -- COMMAND [ARGUMENT...]\n");
        return 2;
    }
    return tavo::run(*options);
}
