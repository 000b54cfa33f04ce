#include "platform/linux/dbus/SessionBusConnection.h"

#include <array>
#include <filesystem>
#include <utility>

#include <sys/inotify.h>
#include <unistd.h>

#include <glib-unix.h>

#include "platform/linux/dbus/SessionBusAddress.h"

namespace tavo {
namespace {

// A bus makes its socket's file before it listens there.
constexpr int kTries = 8;
constexpr std::chrono::milliseconds kFirstPause{5};

}  // namespace

SessionBusConnection::SessionBusConnection(GLibThread& thread, std::string address, Events events)
    : thread_(thread), address_(std::move(address)), events_(std::move(events)) {}

void SessionBusConnection::connect() {
    if (address_.empty()) {
        events_.none();
        return;
    }
    attempt();
}

void SessionBusConnection::leave() {
    ended_ = true;
    retry_.end();
    folderChanges_.end();
    folder_.close();
    if (bus_) {
        g_signal_handler_disconnect(bus_.get(), closedHandler_);
        g_dbus_connection_close_sync(bus_.get(), nullptr, nullptr);
        bus_.reset();
    }
}

void SessionBusConnection::attempt() {
    // A second connection would find the first one's name taken.
    if (bus_ || std::exchange(attempting_, true)) {
        return;
    }
    thread_.beginCall();
    g_dbus_connection_new_for_address(
        address_.c_str(),
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, thread_.cancellable(), &SessionBusConnection::connected, this);
}

void SessionBusConnection::connected(GObject* /*source*/, GAsyncResult* result, gpointer data) {
    SessionBusConnection& self = *static_cast<SessionBusConnection*>(data);
    self.thread_.endCall();
    self.attempting_ = false;
    std::unique_ptr<GDBusConnection, Unref> bus(
        g_dbus_connection_new_for_address_finish(result, nullptr));
    if (self.ended_) {
        return;
    }
    if (!bus) {
        if (self.triesLeft_ > 0) {
            self.tryAgainSoon();
        } else {
            self.watch();
            self.events_.none();
        }
        return;
    }
    self.retry_.end();
    self.folderChanges_.end();
    self.folder_.close();
    self.triesLeft_ = 0;
    g_dbus_connection_set_exit_on_close(bus.get(), FALSE);
    self.bus_ = std::move(bus);
    self.closedHandler_ = g_signal_connect(self.bus_.get(), "closed",
                                           G_CALLBACK(&SessionBusConnection::closed), data);
    self.events_.connected(self.bus_.get());
}

void SessionBusConnection::closed(GDBusConnection* bus, gboolean /*vanished*/, GError* /*error*/,
                                  gpointer data) {
    SessionBusConnection& self = *static_cast<SessionBusConnection*>(data);
    g_signal_handler_disconnect(bus, self.closedHandler_);
    const auto kept = std::exchange(self.bus_, nullptr);
    self.watch();
    self.events_.none();
}

void SessionBusConnection::watch() {
    const std::filesystem::path file = socketFileOf(address_);
    if (file.empty() || folder_.valid()) {
        return;
    }
    folder_ = FileDescriptor(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
    if (::inotify_add_watch(folder_.get(), file.parent_path().c_str(), IN_CREATE | IN_MOVED_TO) <
        0) {
        folder_.close();
        return;
    }
    GSource* const source = g_unix_fd_source_new(folder_.get(), G_IO_IN);
    g_source_set_callback(source, G_SOURCE_FUNC(&SessionBusConnection::folderChanged), this,
                          nullptr);
    g_source_attach(source, g_main_context_get_thread_default());
    folderChanges_ = ScopedSource(source);
    // It may have come back before anybody watched.
    if (::access(file.c_str(), F_OK) == 0) {
        triesLeft_ = kTries;
        tryAgainSoon();
    }
}

gboolean SessionBusConnection::folderChanged(gint descriptor, GIOCondition /*condition*/,
                                             gpointer data) {
    SessionBusConnection& self = *static_cast<SessionBusConnection*>(data);
    const std::string name = std::filesystem::path(socketFileOf(self.address_)).filename();
    bool came = false;
    alignas(inotify_event) std::array<char, 4096> bytes;
    for (ssize_t size = 0; (size = ::read(descriptor, bytes.data(), bytes.size())) > 0;) {
        for (ssize_t at = 0; at < size;) {
            const auto* const event = reinterpret_cast<const inotify_event*>(bytes.data() + at);
            came = came || (event->len > 0 && name == event->name);
            at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
        }
    }
    if (came) {
        self.triesLeft_ = kTries;
        self.tryAgainSoon();
    }
    return G_SOURCE_CONTINUE;
}

void SessionBusConnection::tryAgainSoon() {
    // Each pause is twice the last one; all of them come to a second and a bit.
    const auto pause = kFirstPause * (1 << (kTries - triesLeft_));
    --triesLeft_;
    retry_ = thread_.after(pause, [this] { attempt(); });
}

}  // namespace tavo
