#include "platform/linux/dbus/BusDaemonCalls.h"

namespace tavo {

void callBus(GDBusConnection* bus, const char* method, GVariant* parameters) {
    g_dbus_connection_call(bus, kBusName, kBusPath, kBusName, method, parameters, nullptr,
                           G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr, nullptr);
}

void askBus(GLibThread& thread, GDBusConnection* bus, const char* method, GVariant* parameters,
            const char* answer, GAsyncReadyCallback answered, gpointer data,
            std::chrono::milliseconds patience) {
    thread.beginCall();
    g_dbus_connection_call(bus, kBusName, kBusPath, kBusName, method, parameters,
                           G_VARIANT_TYPE(answer), G_DBUS_CALL_FLAGS_NONE,
                           static_cast<int>(patience.count()), thread.cancellable(), answered,
                           data);
}

}  // namespace tavo
